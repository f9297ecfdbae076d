// The picture list windows of both generations: texts, frames, files and what is safe to close when.
#include "pictures/imgdialog.h"
#include "pictures/piclist.h"
#include "pictures/piclistv1.h"
#include "pictures/picturelistmodel.h"
#include "tests/support/debuglog.h"
#include "tests/support/recordingobserver.h"
#include "tests/support/scriptedcamera.h"
#include "tests/support/unwritabledirectory.h"

#include <QApplication>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

namespace {

using scripted::bytes;
using scripted::jpeg;

constexpr int reloadDelayMs = 1000;
constexpr int afterReloadMs = reloadDelayMs + 200;
const QString missingText = QStringLiteral("图片不存在或者图片数据错误");

/// What the two generations differ in, as the user and the camera see it.
struct Generation {
    const char* name;
    PictureListWindow* (*make)(QWidget* parent, CameraSp* client);
    QString title;
    QString captureButton;
    QStringList headers;
    std::uint8_t capture;
    std::uint8_t catalogue;
    std::uint8_t deletion;
    std::uint8_t download;
    std::string record;
    std::size_t sizeAt;
    QString file;
    std::string deleteAllFrame;
    std::string deleteFrame; ///< of `record`
    std::string deleteFrameOfHighestId;
    std::string downloadPayload; ///< of `record` with a size of 0
};

void PrintTo(const Generation& generation, std::ostream* out) {
    *out << generation.name;
}

template <typename Window>
PictureListWindow* make(QWidget* parent, CameraSp* client) {
    return new Window(parent, client);
}

const Generation origin{
    .name = "Origin",
    .make = &make<PicList>,
    .title = "查看排面图片",
    .captureButton = "btn_takepic",
    .headers = {"图片id", "触发方式", "触发角度", "创建时间", "文件大小", "MD5"},
    .capture = 0x06,
    .catalogue = 0x07,
    .deletion = 0x08,
    .download = 0x09,
    .record = scripted::originRecord,
    .sizeAt = 7,
    .file = "5.jpg",
    .deleteAllFrame = "AA 5A 01 08 01 00 00 00 FF 4C AC",
    .deleteFrame = "AA 5A 01 08 01 00 00 00 05 19 E2",
    .deleteFrameOfHighestId = "AA 5A 01 08 01 00 00 00 FF 4C AC",
    .downloadPayload = "05 00 00 00 00",
};

const Generation v1{
    .name = "V1",
    .make = &make<PicListV1>,
    .title = "查看动销图片",
    .captureButton = "btn_capture",
    .headers = {"图片id", "actionid", "触发方式", "触发角度", "创建时间", "图片大小", "MD5"},
    .capture = 0xC6,
    .catalogue = 0xC7,
    .deletion = 0xC8,
    .download = 0xC9,
    .record = scripted::v1Record,
    .sizeAt = 13,
    .file = "258.jpg",
    .deleteAllFrame = "AA 5A 01 C8 02 00 00 00 FF FF 63 9E",
    .deleteFrame = "AA 5A 01 C8 07 00 00 00 02 01 03 D7 34 01 07 E0 3B",
    .deleteFrameOfHighestId = "AA 5A 01 C8 02 00 00 00 FF FF 63 9E",
    .downloadPayload = "02 01 00 00 00 00",
};

class PictureListTest : public scripted::PictureTest, public testing::WithParamInterface<Generation> {
protected:
    PictureListTest() {
        CameraSp::replaceSleep([](std::chrono::nanoseconds) {});
        window = generation.make(nullptr, &client);
        window->show();
    }
    ~PictureListTest() override {
        delete window.data();
        CameraSp::replaceSleep({});
    }

    [[nodiscard]] QPushButton* button(const QString& name) const {
        return window->findChild<QPushButton*>(name);
    }
    [[nodiscard]] QListView* list() const { return window->findChild<QListView*>("listview"); }
    [[nodiscard]] PictureListModel* model() const { return window->findChild<PictureListModel*>(); }
    [[nodiscard]] QMessageBox* box() const { return window->findChild<QMessageBox*>(); }
    [[nodiscard]] QMenu* menu() const { return window->findChild<QMenu*>(); }
    [[nodiscard]] ImgDialog* viewer() const { return window->findChild<ImgDialog*>(); }

    [[nodiscard]] protocol::Bytes record(std::uint8_t idLow, std::uint32_t size = 20) const {
        return scripted::record(generation.record, generation.sizeAt, idLow, size);
    }

    /// Lists these and forgets the frames it took.
    void fill(const std::vector<protocol::Bytes>& records) {
        camera.willList(generation.catalogue, records);
        button("btn_refresh")->click();
        ASSERT_EQ(model()->rowCount(), static_cast<int>(records.size()));
        asked = camera.codes().size();
    }

    /// Frames since `fill`.
    [[nodiscard]] std::vector<std::string> newRequests() const {
        std::vector<std::string> all = camera.requests();
        all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(asked));
        return all;
    }

    void rightClick(int row) const {
        list()->setCurrentIndex(model()->index(row, 0));
        emit list()->customContextMenuRequested(QPoint(30, 24 * row + 12));
    }

    [[nodiscard]] QAction* action(const QString& text) const {
        for (QAction* each : menu()->actions()) {
            if (each->text() == text)
                return each;
        }
        return nullptr;
    }

    void closeWindow() {
        window->close();
        ASSERT_TRUE(QTest::qWaitFor([this] { return window == nullptr; }));
    }

    const Generation& generation = GetParam();
    CameraSp client{"COM9", 460800};
    QPointer<PictureListWindow> window;
    std::size_t asked = 0;
    DebugLog debug;
};

INSTANTIATE_TEST_SUITE_P(Generations, PictureListTest, testing::Values(origin, v1),
                         [](const auto& each) { return std::string(each.param.name); });

} // namespace

TEST_P(PictureListTest, HasItsTextsAndNames) {
    EXPECT_TRUE(window->isWindow());
    EXPECT_TRUE(window->testAttribute(Qt::WA_DeleteOnClose));
    EXPECT_EQ(window->windowTitle(), generation.title);
    EXPECT_EQ(button("btn_delete_all")->text(), "删除全部图片");
    EXPECT_EQ(button("btn_refresh")->text(), "刷新列表");
    EXPECT_EQ(button(generation.captureButton)->text(), "拍照");
    EXPECT_EQ(window->findChildren<QPushButton*>().size(), 3);
    EXPECT_EQ(list()->contextMenuPolicy(), Qt::CustomContextMenu);
    QStringList labels;
    for (const QLabel* label : window->findChildren<QLabel*>())
        labels.append(label->text());
    EXPECT_EQ(labels, generation.headers);
    EXPECT_TRUE(newRequests().empty()); // opening it sends nothing
}

TEST_P(PictureListTest, RefreshListsTheCatalogueInItsOrder) {
    fill({record(9), record(5), record(7)});
    EXPECT_EQ(model()->pictureId(0) & 0xFFU, 9U);
    EXPECT_EQ(model()->pictureId(1) & 0xFFU, 5U);
    EXPECT_EQ(model()->pictureId(2) & 0xFFU, 7U);
    fill({record(1)}); // replaces, does not append
    EXPECT_EQ(model()->pictureId(0) & 0xFFU, 1U);
}

TEST_P(PictureListTest, EmptiesTheListOnAFailedRefresh) {
    fill({record(9), record(5)});
    button("btn_refresh")->click();
    EXPECT_EQ(model()->rowCount(), 0);
    EXPECT_EQ(newRequests().size(), 1U);
}

TEST_P(PictureListTest, AnEmptyCatalogueLeavesTheListEmpty) {
    fill({record(9)});
    camera.willList(generation.catalogue, {});
    button("btn_refresh")->click();
    EXPECT_EQ(model()->rowCount(), 0);
}

TEST_P(PictureListTest, ReadsTheListASecondAfterDeletingAll) {
    fill({record(9), record(5)});
    camera.willSay(generation.deletion, 0);
    camera.willList(generation.catalogue, {record(1)});
    button("btn_delete_all")->click();
    EXPECT_EQ(newRequests(), std::vector{generation.deleteAllFrame});
    EXPECT_EQ(model()->rowCount(), 0);
    QTest::qWait(reloadDelayMs - 300);
    EXPECT_EQ(newRequests().size(), 1U);
    QTest::qWait(500);
    EXPECT_EQ(newRequests().size(), 2U);
    EXPECT_EQ(model()->rowCount(), 1);
    EXPECT_EQ(DebugLog::hasStart("delV1 result ui: true"), generation.deletion == 0xC8);
}

TEST_P(PictureListTest, ARefusedDeletionOfAllChangesNothing) {
    fill({record(9), record(5)});
    camera.willSay(generation.deletion, 1);
    button("btn_delete_all")->click();
    button("btn_delete_all")->click(); // and one without an answer
    QTest::qWait(afterReloadMs);
    EXPECT_EQ(model()->rowCount(), 2);
    EXPECT_EQ(newRequests().size(), 2U);
    EXPECT_EQ(DebugLog::countStarts("delV1 result ui: false"), generation.deletion == 0xC8 ? 2 : 0);
}

TEST_P(PictureListTest, SendsNothingWhenClosedAfterDeletingAll) {
    camera.willSay(generation.deletion, 0);
    button("btn_delete_all")->click();
    closeWindow();
    QTest::qWait(afterReloadMs);
    EXPECT_EQ(newRequests().size(), 1U);
}

TEST_P(PictureListTest, SendsNothingWhenHiddenAfterDeletingAll) {
    camera.willSay(generation.deletion, 0);
    button("btn_delete_all")->click();
    window->hide();
    QTest::qWait(afterReloadMs);
    EXPECT_EQ(newRequests().size(), 1U);
}

TEST_P(PictureListTest, OmitsADelayedReadWhileTheClientIsBusy) {
    camera.willSay(generation.deletion, 0);
    button("btn_delete_all")->click();
    window->setExchangeAllowed(false);
    QTest::qWait(afterReloadMs);
    EXPECT_EQ(newRequests().size(), 1U);
}

TEST_P(PictureListTest, RefreshesASecondAfterTheCaptureBox) {
    camera.willSay(generation.capture, 0);
    camera.willList(generation.catalogue, {record(1)});
    button(generation.captureButton)->click();
    ASSERT_NE(box(), nullptr);
    EXPECT_TRUE(box()->isVisible());
    EXPECT_EQ(box()->windowTitle(), "拍照");
    EXPECT_EQ(box()->text(), "拍照成功");
    EXPECT_EQ(box()->icon(), QMessageBox::Information);
    EXPECT_EQ(box()->standardButtons(), QMessageBox::Yes);
    EXPECT_EQ(camera.codes(), std::vector<int>{generation.capture});
    box()->button(QMessageBox::Yes)->click();
    QTest::qWait(reloadDelayMs - 300);
    EXPECT_EQ(camera.codes().size(), 1U);
    QTest::qWait(500);
    EXPECT_EQ(camera.codes(), (std::vector<int>{generation.capture, generation.catalogue}));
    EXPECT_EQ(model()->rowCount(), 1);
    EXPECT_EQ(box(), nullptr);
}

TEST_P(PictureListTest, RefreshesAfterAFailedCapture) {
    camera.willSay(generation.capture, 1);
    camera.willList(generation.catalogue, {record(1)});
    button(generation.captureButton)->click();
    ASSERT_NE(box(), nullptr);
    EXPECT_EQ(box()->text(), "拍照失败");
    box()->close();
    QTest::qWait(afterReloadMs);
    EXPECT_EQ(model()->rowCount(), 1);
}

TEST_P(PictureListTest, MayBeDestroyedWhileItsMessageBoxIsOpen) {
    camera.willSay(generation.capture, 0);
    button(generation.captureButton)->click();
    const QPointer<QMessageBox> open = box();
    delete window.data();
    EXPECT_EQ(open, nullptr);
    QTest::qWait(afterReloadMs);
    EXPECT_EQ(camera.codes().size(), 1U);
}

TEST_P(PictureListTest, SendsNothingWhenClosedAfterACapture) {
    camera.willSay(generation.capture, 0);
    button(generation.captureButton)->click();
    box()->close();
    closeWindow();
    QTest::qWait(afterReloadMs);
    EXPECT_EQ(camera.codes().size(), 1U);
}

TEST_P(PictureListTest, HasAMenuOnlyWithASelectedRow) {
    fill({record(9), record(5)});
    emit list()->customContextMenuRequested(QPoint(3, 4));
    EXPECT_EQ(menu(), nullptr);
    EXPECT_TRUE(DebugLog::hasStart("pos: QPoint(3,4)"));
    rightClick(1);
    ASSERT_NE(menu(), nullptr);
    EXPECT_TRUE(menu()->isVisible());
    ASSERT_EQ(menu()->actions().size(), 2);
    EXPECT_EQ(menu()->actions()[0]->text(), "删除");
    EXPECT_EQ(menu()->actions()[1]->text(), "查看");
    menu()->close();
    EXPECT_TRUE(QTest::qWaitFor([this] { return menu() == nullptr; }));
}

TEST_P(PictureListTest, DeletesTheChosenPictureAndItsRow) {
    fill({record(9), bytes(generation.record), record(7)});
    camera.willSay(generation.deletion, 0);
    rightClick(1);
    action("删除")->trigger();
    EXPECT_EQ(newRequests(), std::vector{generation.deleteFrame});
    ASSERT_EQ(model()->rowCount(), 2);
    EXPECT_EQ(model()->pictureId(0) & 0xFFU, 9U);
    EXPECT_EQ(model()->pictureId(1) & 0xFFU, 7U);
    EXPECT_TRUE(DebugLog::hasStart(
        generation.deletion == 0x08 ? "dele?: 1   pid 5" : "dele?: 1   pid 258  date: 20240131  gid: 7"));
}

TEST_P(PictureListTest, KeepsTheRowOfAPictureThatIsNotDeleted) {
    fill({record(9)});
    camera.willSay(generation.deletion, 1);
    rightClick(0);
    action("删除")->trigger();
    EXPECT_EQ(model()->rowCount(), 1);
    EXPECT_EQ(newRequests().size(), 1U);
}

TEST_P(PictureListTest, DeletesAllWithThePictureOfTheHighestId) {
    protocol::Bytes highest = record(0xFF);
    if (generation.deletion == 0xC8)
        highest[1] = 0xFF;
    fill({highest});
    rightClick(0);
    action("删除")->trigger();
    EXPECT_EQ(newRequests(), std::vector{generation.deleteFrameOfHighestId});
}

TEST_P(PictureListTest, IgnoresMenuEntriesOfARemovedRow) {
    fill({record(9), record(5)});
    rightClick(1);
    model()->clear();
    action("删除")->trigger();
    action("查看")->trigger();
    EXPECT_TRUE(newRequests().empty());
    EXPECT_EQ(viewer(), nullptr);
}

TEST_P(PictureListTest, AppliesMenuEntriesToAMovedRow) {
    fill({record(9), bytes(generation.record)});
    rightClick(1);
    model()->removeRow(0);
    action("删除")->trigger();
    EXPECT_EQ(newRequests(), std::vector{generation.deleteFrame});
}

TEST_P(PictureListTest, MayBeDestroyedWhileItsMenuIsOpen) {
    fill({record(9)});
    rightClick(0);
    const QPointer<QMenu> open = menu();
    delete window.data();
    EXPECT_EQ(open, nullptr);
    QTest::qWait(50);
    EXPECT_TRUE(newRequests().empty());
}

TEST_P(PictureListTest, IgnoresMenuEntriesWhileTheClientIsBusy) {
    fill({record(9)});
    rightClick(0);
    window->setExchangeAllowed(false);
    action("删除")->trigger();
    action("查看")->trigger();
    EXPECT_TRUE(newRequests().empty());
}

TEST_P(PictureListTest, ViewsTheChosenPicture) {
    const protocol::Bytes picture = jpeg(300, 200, Qt::red);
    protocol::Bytes listed = bytes(generation.record);
    listed = scripted::record(generation.record, generation.sizeAt, listed[0],
                              static_cast<std::uint32_t>(picture.size()));
    fill({listed});
    camera.willSend(generation.download, 0, picture);
    scripted::writeFile(generation.file, jpeg(300, 200, Qt::blue));
    rightClick(0);
    action("查看")->trigger();
    ASSERT_EQ(newRequests().size(), 1U);
    EXPECT_NE(newRequests()[0].find(generation.downloadPayload), std::string::npos) << newRequests()[0];
    EXPECT_EQ(scripted::fileContent(generation.file), picture);
    ASSERT_NE(viewer(), nullptr);
    EXPECT_EQ(viewer()->parentWidget(), window);
    const QPixmap shown = viewer()->findChild<QLabel*>()->pixmap();
    EXPECT_EQ(shown.size(), QSize(600, 400));
    EXPECT_GT(scripted::middle(shown).red(), 240);
    EXPECT_TRUE(DebugLog::hasStart(QStringLiteral("get picture: 0   size: %1").arg(picture.size())));
    EXPECT_TRUE(DebugLog::hasStart("get picture end"));
    EXPECT_TRUE(DebugLog::hasStart(QString(generation.file).remove(".jpg")));
}

TEST_P(PictureListTest, ShowsNoOldPictureWhenTheDownloadFails) {
    fill({bytes(generation.record)});
    scripted::writeFile(generation.file, jpeg(30, 20, Qt::blue));
    fake_serial::willThrowOnRead(); // the device vanishes: nothing else ends a download
    rightClick(0);
    action("查看")->trigger();
    ASSERT_NE(viewer(), nullptr);
    EXPECT_EQ(viewer()->findChild<QLabel*>()->text(), missingText);
    EXPECT_FALSE(QFile::exists(generation.file));
}

TEST_P(PictureListTest, ReportsABrokenPicture) {
    fill({bytes(generation.record)});
    camera.willSend(generation.download, 0, protocol::Bytes(20, 0x55));
    rightClick(0);
    action("查看")->trigger();
    ASSERT_NE(viewer(), nullptr);
    EXPECT_EQ(viewer()->findChild<QLabel*>()->text(), missingText);
    EXPECT_EQ(scripted::fileContent(generation.file), protocol::Bytes(20, 0x55));
}

TEST_P(PictureListTest, ARefusedReadShowsAPictureInTheSecondGenerationOnly) {
    const protocol::Bytes picture = jpeg(30, 20, Qt::red);
    protocol::Bytes listed = bytes(generation.record);
    listed = scripted::record(generation.record, generation.sizeAt, listed[0],
                              static_cast<std::uint32_t>(picture.size()));
    fill({listed});
    camera.willSend(generation.download, 1, picture);
    rightClick(0);
    action("查看")->trigger();
    ASSERT_NE(viewer(), nullptr);
    const bool shown = !viewer()->findChild<QLabel*>()->pixmap().isNull();
    EXPECT_EQ(shown, generation.download == 0xC9);
    EXPECT_EQ(viewer()->findChild<QLabel*>()->text(), shown ? QString() : missingText);
}

TEST_P(PictureListTest, ShowsNoOldPictureInAnUnwritableFolder) {
    const protocol::Bytes picture = jpeg(30, 20, Qt::red);
    fill({scripted::record(generation.record, generation.sizeAt, bytes(generation.record)[0],
                           static_cast<std::uint32_t>(picture.size()))});
    camera.willSend(generation.download, 0, picture);
    scripted::writeFile(generation.file, jpeg(30, 20, Qt::blue));
    const UnwritableDirectory here;
    rightClick(0);
    action("查看")->trigger();
    ASSERT_NE(viewer(), nullptr);
    EXPECT_EQ(viewer()->findChild<QLabel*>()->text(), missingText);
    EXPECT_TRUE(out.has("can't write picture:" + generation.file.toStdString()));
}

TEST_P(PictureListTest, MayBeClosedWithItsViewerOpen) {
    fill({bytes(generation.record)});
    camera.willSend(generation.download, 0, protocol::Bytes(20, 0x55));
    rightClick(0);
    action("查看")->trigger();
    closeWindow();
    EXPECT_TRUE(DebugLog::hasStart("imgDialog destroyed"));
}

TEST_P(PictureListTest, ReportsCommandsWithoutALink) {
    fill({record(9)});
    RecordingObserver observer;
    window->setObserver(&observer);
    window->attachClient(nullptr);
    button("btn_delete_all")->click();
    EXPECT_EQ(model()->rowCount(), 1);
    rightClick(0);
    action("删除")->trigger();
    EXPECT_EQ(model()->rowCount(), 1);
    action("查看")->trigger();
    EXPECT_EQ(viewer()->findChild<QLabel*>()->text(), missingText);
    button(generation.captureButton)->click();
    EXPECT_EQ(box()->text(), "拍照失败");
    button("btn_refresh")->click();
    EXPECT_EQ(model()->rowCount(), 0);
    EXPECT_EQ(observer.missing, 5);
    window->setObserver(nullptr);
    EXPECT_TRUE(newRequests().empty());
}

TEST_P(PictureListTest, UsesTheClientOfTheNextLink) {
    window->attachClient(nullptr);
    CameraSp next("COM9", 9600);
    window->attachClient(&next);
    fill({record(9)});
    window->attachClient(nullptr);
}

TEST_P(PictureListTest, SurvivesADeviceThatVanishesAtAnyCommand) {
    fill({record(9), record(5)});
    fake_serial::throwOn("read");
    rightClick(0);
    action("删除")->trigger();
    EXPECT_EQ(model()->rowCount(), 2);
    button("btn_delete_all")->click();
    EXPECT_EQ(model()->rowCount(), 2);
    action("查看")->trigger();
    EXPECT_EQ(viewer()->findChild<QLabel*>()->text(), missingText);
    button(generation.captureButton)->click();
    EXPECT_EQ(box()->text(), "拍照失败");
    button("btn_refresh")->click();
    EXPECT_EQ(model()->rowCount(), 0);
}

TEST_P(PictureListTest, ListsTheLargestCatalogue) {
    // What one answer can hold: tries times read size.
    const std::size_t most = generation.catalogue == 0xC7 ? 1551 : 378;
    camera.willList(generation.catalogue, {most, record(5)});
    button("btn_refresh")->click();
    EXPECT_EQ(model()->rowCount(), static_cast<int>(most));
}
