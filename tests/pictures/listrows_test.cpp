// Painting of rows and position of header labels.
#include "pictures/listcolumns.h"
#include "pictures/piclistmodel.h"
#include "pictures/piclistmodeldelegate.h"
#include "pictures/piclistv1.h"
#include "pictures/piclistv1model.h"
#include "pictures/piclistv1modeldelegate.h"

#include <QApplication>
#include <QDateTime>
#include <QHelpEvent>
#include <QIdentityProxyModel>
#include <QLabel>
#include <QListView>
#include <QPainter>
#include <QScrollBar>
#include <QTest>
#include <QToolTip>

#include <gtest/gtest.h>

namespace {

std::vector<int> widths(int rowWidth, const PictureGeneration& generation) {
    std::vector<int> found;
    for (const QRect& rect : columnRects(QRect(7, 3, rowWidth, 24), generation.columns))
        found.push_back(rect.width());
    return found;
}

QImage painted(const QStyledItemDelegate& delegate, const QAbstractItemModel& model, int width,
               QStyle::State state) {
    QImage image(width, 24, QImage::Format_RGB32);
    image.fill(Qt::white);
    QStyleOptionViewItem option;
    option.rect = image.rect();
    option.state = state;
    option.font = QApplication::font();
    option.fontMetrics = QFontMetrics(option.font);
    option.palette.setColor(QPalette::Highlight, Qt::blue);
    option.palette.setColor(QPalette::Text, Qt::black);
    QPainter painter(&image);
    delegate.paint(&painter, option, model.index(0, 0));
    return image;
}

/// First and last column of pixels that is not white; -1 if there is none.
std::pair<int, int> inkSpan(const QImage& image) {
    std::pair<int, int> span{-1, -1};
    for (int x = 0; x < image.width(); ++x) {
        for (int y = 0; y < image.height(); ++y) {
            if (image.pixelColor(x, y) == QColor(Qt::white))
                continue;
            span.first = span.first < 0 ? x : span.first;
            span.second = x;
        }
    }
    return span;
}

QStringList onlyCell(int column, int columns, const QString& text) {
    QStringList cells(columns);
    cells[column] = text;
    return cells;
}

/// Where a label starts, in the coordinates of the list's rows.
int leftOverRows(const QLabel* label, const QListView* list) {
    return list->viewport()->mapFromGlobal(label->mapToGlobal(QPoint(0, 0))).x();
}

QLabel* labelOf(const QWidget& window, const QString& text) {
    for (QLabel* label : window.findChildren<QLabel*>()) {
        if (label->text() == text)
            return label;
    }
    return nullptr;
}

/// Counts reads of row texts.
class CountingModel final : public QIdentityProxyModel {
public:
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
        asked += role == Qt::DisplayRole ? 1 : 0;
        return QIdentityProxyModel::data(index, role);
    }
    mutable int asked = 0;
};

} // namespace

TEST(ListColumns, CutWidthsOffAndGiveTheRestToTheLastColumn) {
    EXPECT_EQ(widths(1000, originPictures), (std::vector{100, 100, 100, 100, 200, 400}));
    EXPECT_EQ(widths(609, originPictures), (std::vector{60, 60, 60, 60, 121, 248}));
    EXPECT_EQ(widths(1000, v1Pictures), (std::vector{100, 100, 100, 100, 100, 100, 400}));
    EXPECT_EQ(widths(609, v1Pictures), (std::vector{60, 60, 60, 60, 60, 60, 249}));
    EXPECT_EQ(widths(0, originPictures), (std::vector{0, 0, 0, 0, 0, 0}));
}

TEST(ListColumns, StandSideBySideInTheRow) {
    const std::vector<QRect> rects = columnRects(QRect(7, 3, 609, 24), originPictures.columns);
    EXPECT_EQ(rects.front(), QRect(7, 3, 60, 24));
    EXPECT_EQ(rects[4], QRect(247, 3, 121, 24));
    EXPECT_EQ(rects.back(), QRect(368, 3, 248, 24));
}

TEST(PicListModelDelegate, MakesRowsAsWideAsOfferedAnd24PixelsHigh) {
    QStyleOptionViewItem option;
    option.rect = QRect(0, 0, 321, 99);
    EXPECT_EQ(PicListModelDelegate().sizeHint(option, {}), QSize(321, 24));
    EXPECT_EQ(PicListV1ModelDelegate().sizeHint(option, {}), QSize(321, 24));
}

TEST(PicListModelDelegate, FillsASelectedRowWithTheSelectionColour) {
    PicListModel model;
    model.appendRow({});
    const PicListModelDelegate delegate;
    const QImage selected = painted(delegate, model, 600, QStyle::State_Enabled | QStyle::State_Selected);
    for (const QPoint& corner : {QPoint(0, 0), QPoint(599, 0), QPoint(0, 23), QPoint(599, 23)})
        EXPECT_EQ(selected.pixelColor(corner), QColor(Qt::blue));
    EXPECT_EQ(inkSpan(painted(delegate, model, 600, QStyle::State_Enabled)), std::pair(-1, -1));
}

TEST(PicListModelDelegate, PaintsTextsLeftAndElided) {
    const std::vector<std::pair<int, int>> columns{{0, 60},   {60, 60},   {120, 60},
                                                   {180, 60}, {240, 120}, {360, 240}};
    for (std::size_t column = 0; column < columns.size(); ++column) {
        PicListModel model;
        model.appendRow(onlyCell(static_cast<int>(column), 6, QString(200, QLatin1Char('M'))));
        const auto [first, last] =
            inkSpan(painted(PicListModelDelegate(), model, 600, QStyle::State_Enabled));
        const auto [left, width] = columns[column];
        EXPECT_GE(first, left + 2) << column;
        EXPECT_LE(first, left + 6) << column;
        EXPECT_LT(last, left + width - 2) << column;
        EXPECT_GT(last, left + width / 2) << column;
    }
}

TEST(PicListV1ModelDelegate, PaintsTheDigestIntoTheRestOfTheRow) {
    PicListV1Model model;
    model.appendRow(onlyCell(6, 7, QStringLiteral("M")));
    const auto [first, last] = inkSpan(painted(PicListV1ModelDelegate(), model, 600, QStyle::State_Enabled));
    EXPECT_GE(first, 362);
    EXPECT_LE(last, 382);
}

TEST(PicListModelDelegate, ShowsTheToolTipOfTheColumnUnderTheMouse) {
    PicListModel model;
    model.appendRow({"5", "1", "45", "1700000000", "20", "abc"});
    QListView list;
    PicListModelDelegate delegate;
    list.setModel(&model);
    list.setItemDelegate(&delegate);
    list.resize(620, 200);
    list.show();
    const int width = list.viewport()->width();
    const QString time = QDateTime::fromSecsSinceEpoch(1700000000).toString("yyyy-MM-dd HH:mm:ss");
    const std::vector<std::pair<int, QString>> tips{
        {width / 20, "项目:5"},
        {width * 35 / 100, "项目:1700000000\n按秒数换算：" + time},
        {width * 9 / 10, "项目:abc"}};
    for (const auto& [x, tip] : tips) {
        const QPoint at(x, 10);
        QHelpEvent help(QEvent::ToolTip, at, list.viewport()->mapToGlobal(at));
        QApplication::sendEvent(list.viewport(), &help);
        EXPECT_EQ(QToolTip::text(), tip);
    }
    QToolTip::hideText();
}

TEST(PictureListHeader, FollowsTheColumnsAtAnyWidth) {
    PicListV1 window(nullptr, nullptr);
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    auto* list = window.findChild<QListView*>("listview");
    auto* model = window.findChild<PicListV1Model*>();
    ASSERT_NE(list, nullptr);
    ASSERT_NE(model, nullptr);
    window.show();
    for (const int rows : {1, 1551}) { // without and with a scroll bar
        while (model->rowCount() < rows)
            model->appendRow({"1"});
        for (const int width : {700, 1040, 1333}) {
            window.resize(width, 400);
            EXPECT_TRUE(QTest::qWaitFor([&] {
                return list->verticalScrollBar()->isVisible() == (rows > 1) &&
                       list->visualRect(model->index(0, 0)).width() == list->viewport()->width();
            }));
            const QRect row = list->visualRect(model->index(0, 0));
            int column = 0;
            for (const QString& title :
                 QStringList{"图片id", "actionid", "触发方式", "触发角度", "创建时间", "图片大小", "MD5"}) {
                const QLabel* label = labelOf(window, title);
                ASSERT_NE(label, nullptr);
                EXPECT_EQ(leftOverRows(label, list), column++ * (row.width() / 10) + 2)
                    << title.toStdString() << " at " << width;
                EXPECT_GE(label->width(), label->sizeHint().width());
            }
        }
    }
}

TEST(PictureListHeader, KeepsTheWindowWideEnoughForItsTexts) {
    PicListV1 window(nullptr, nullptr);
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.resize(10, 10);
    window.show();
    QTest::qWait(20);
    for (const QLabel* label : window.findChildren<QLabel*>())
        EXPECT_GE(label->width(), label->sizeHint().width()) << label->text().toStdString();
}

TEST(PictureListWindow, ReadsTextsOfVisibleRowsOnly) {
    PicListV1 window(nullptr, nullptr);
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    auto* list = window.findChild<QListView*>("listview");
    auto* model = window.findChild<PicListV1Model*>();
    for (int row = 0; row < 1551; ++row)
        model->appendRow({"1"});
    CountingModel counting;
    counting.setSourceModel(model);
    list->setModel(&counting);
    window.show();
    QTest::qWait(50);
    const int visibleRows = list->viewport()->height() / 24 + 1;
    EXPECT_GE(counting.asked, visibleRows * 7);
    EXPECT_LE(counting.asked, visibleRows * 7 * 5);
    counting.asked = 0;
    list->verticalScrollBar()->setValue(800);
    list->viewport()->repaint();
    EXPECT_LE(counting.asked, visibleRows * 7 * 5);
}
