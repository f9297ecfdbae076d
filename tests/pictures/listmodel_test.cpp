// The rows of the picture lists.
#include "pictures/piclistmodel.h"
#include "pictures/piclistv1model.h"
#include "tests/support/debuglog.h"
#include "tests/support/scriptedcamera.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

namespace {

using scripted::bytes;
using scripted::digestText;

std::vector<protocol::RecordBytes> records(const std::vector<protocol::Bytes>& all) {
    std::vector<protocol::RecordBytes> made;
    for (const protocol::Bytes& each : all) {
        made.push_back(std::make_unique<std::uint8_t[]>(each.size()));
        std::copy(each.begin(), each.end(), made.back().get());
    }
    return made;
}

QStringList rowTexts(const QAbstractItemModel& model, int row) {
    QStringList texts;
    for (int column = 0; column < model.columnCount(); ++column)
        texts.append(model.index(row, column).data().toString());
    return texts;
}

} // namespace

TEST(PicListModel, ShowsARecordAsSixTexts) {
    PicListModel model;
    model.appendPictures(records({bytes(scripted::originRecord)}));
    EXPECT_EQ(rowTexts(model, 0), QStringList({"5", "1", "45", "1700000000", "20", digestText}));
    EXPECT_EQ(model.pictureId(0), 5U);
    EXPECT_EQ(model.pictureSize(0), 20);
}

TEST(PicListV1Model, ShowsARecordAsSevenTexts) {
    PicListV1Model model;
    model.appendPictures(records({bytes(scripted::v1Record)}));
    EXPECT_EQ(rowTexts(model, 0),
              QStringList({"258", "20240131-7", "1", "45", "1700000000", "20", digestText}));
    EXPECT_EQ(model.pictureId(0), 258U);
    EXPECT_EQ(model.pictureSize(0), 20);
    EXPECT_EQ(model.date(0), 20240131U);
    EXPECT_EQ(model.gid(0), 7);
}

TEST(PicListModel, ShowsAllNumbersUnsignedAndTheDigestZeroFilled) {
    PicListModel model;
    model.appendPictures(records({protocol::Bytes(27, 0xFF), protocol::Bytes(27, 0x00)}));
    EXPECT_EQ(rowTexts(model, 0), QStringList({"255", "255", "255", "4294967295", "4294967295",
                                               "ffffffffffffffffffffffffffffffff"}));
    EXPECT_EQ(rowTexts(model, 1), QStringList({"0", "0", "0", "0", "0", "00000000000000000000000000000000"}));
    EXPECT_EQ(model.pictureSize(0), 4294967295);
}

TEST(PicListV1Model, ShowsAllNumbersUnsigned) {
    PicListV1Model model;
    model.appendPictures(records({protocol::Bytes(33, 0xFF)}));
    EXPECT_EQ(rowTexts(model, 0), QStringList({"65535", "4294967295-255", "255", "255", "4294967295",
                                               "4294967295", "ffffffffffffffffffffffffffffffff"}));
    EXPECT_EQ(model.date(0), 4294967295U);
    EXPECT_EQ(model.gid(0), 255);
    EXPECT_EQ(model.pictureSize(0), 4294967295);
}

TEST(PicListModel, GivesMinusOneAsTheSizeOfARowThatIsNotThere) {
    PicListModel model;
    PicListV1Model v1;
    for (const int row : {-1, 0, 7}) {
        EXPECT_EQ(model.pictureSize(row), -1);
        EXPECT_EQ(v1.pictureSize(row), -1);
        EXPECT_EQ(model.pictureId(row), 0U);
        EXPECT_EQ(v1.date(row), 0U);
        EXPECT_EQ(v1.gid(row), 0);
    }
}

TEST(PicListModel, AnswersDisplayEditAndToolTipOnly) {
    PicListModel model;
    model.appendRow({"5", "1", "45", "1700000000", "20", digestText});
    const QModelIndex index = model.index(0, 3);
    EXPECT_EQ(model.data(index, Qt::DisplayRole), QVariant("1700000000"));
    EXPECT_EQ(model.data(index, Qt::EditRole), QVariant("1700000000"));
    EXPECT_EQ(model.data(index, Qt::ToolTipRole), QVariant("项目:1700000000"));
    for (const int role :
         {int{Qt::DecorationRole}, int{Qt::TextAlignmentRole}, int{Qt::CheckStateRole}, int{Qt::UserRole}})
        EXPECT_FALSE(model.data(index, role).isValid()) << role;
}

TEST(PicListModel, LogsAnInvalidIndexAndGivesNothing) {
    const DebugLog debug;
    PicListModel model;
    EXPECT_FALSE(model.data({}, Qt::DisplayRole).isValid());
    EXPECT_EQ(DebugLog::plainLines(), std::vector<std::string>{"invilidddd"});
    model.appendRow({"5"});
    const QModelIndex stale = model.index(0, 0);
    model.removeRow(0);
    EXPECT_FALSE(model.data(stale, Qt::DisplayRole).isValid());
    EXPECT_EQ(DebugLog::countStarts("invilidddd"), 2);
}

TEST(PicListModel, HasAnEmptyTextWhereARowHasNoSuchCell) {
    const DebugLog debug;
    PicListV1Model model;
    model.appendRow({"5", "1"});
    EXPECT_EQ(model.index(0, 6).data().toString(), "");
    EXPECT_EQ(model.date(0), 1U);
    EXPECT_EQ(model.gid(0), 0);
    EXPECT_EQ(model.pictureSize(0), 0);
    EXPECT_FALSE(DebugLog::hasStart("invilidddd"));
}

TEST(PicListModel, NotifiesViewsOfEveryChange) {
    PicListModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    model.appendRow({"1"});
    model.appendPictures(records({3, protocol::Bytes(27, 1)}));
    ASSERT_EQ(inserted.count(), 2);
    EXPECT_EQ(inserted.at(1).at(1).toInt(), 1);
    EXPECT_EQ(inserted.at(1).at(2).toInt(), 3);
    EXPECT_TRUE(model.removeRow(1));
    EXPECT_EQ(removed.count(), 1);
    EXPECT_EQ(model.rowCount(), 3);
    model.clear();
    EXPECT_EQ(reset.count(), 1);
    EXPECT_EQ(model.rowCount(), 0);
}

TEST(PicListV1Model, SortsActionsByDateAndGroup) {
    PicListV1Model model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    for (const char* const action : {"20240131-10", "20240131-9", "9-200"})
        model.appendRow({"1", action});
    const QPersistentModelIndex last(model.index(2, 1));
    model.sort(1);
    EXPECT_EQ(model.index(0, 1).data(), "9-200");
    EXPECT_EQ(model.index(1, 1).data(), "20240131-9");
    EXPECT_EQ(last.row(), 0);
    model.appendRow({"1", "20240131-1"});
    EXPECT_EQ(model.index(1, 1).data(), "20240131-1");
    model.sort(-1);
    EXPECT_EQ(last.row(), 2);
    EXPECT_EQ(model.index(3, 1).data(), "20240131-1");
}

TEST(PicListModel, RemovesOnlyRowsThatAreThere) {
    PicListModel model;
    model.appendRow({"1"});
    model.appendRow({"2"});
    EXPECT_FALSE(model.removeRow(-1));
    EXPECT_FALSE(model.removeRow(2));
    EXPECT_FALSE(model.removeRows(1, 2));
    EXPECT_FALSE(model.removeRows(0, 0));
    EXPECT_EQ(model.rowCount(), 2);
    EXPECT_TRUE(model.removeRow(0));
    EXPECT_EQ(model.pictureId(0), 2U);
}

TEST(PicListV1Model, TakesTheLargestCatalogueWithOneNotification) {
    constexpr std::size_t mostRecords = 1551;
    PicListV1Model model;
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    model.appendPictures(records({mostRecords, bytes(scripted::v1Record)}));
    EXPECT_EQ(inserted.count(), 1);
    EXPECT_EQ(model.rowCount(), int{mostRecords});
    EXPECT_EQ(model.pictureId(mostRecords - 1), 258U);
    model.appendPictures({});
    EXPECT_EQ(inserted.count(), 1);
}
