// Sorting of a picture list, and which pictures its actions then use.
#include "pictures/picturelistheader.h"
#include "tests/pictures/picturelisttest.h"

#include <QClipboard>
#include <QToolButton>

namespace picturelist {
namespace {

using scripted::bytes;

class ListOrder : public PictureListTest {
protected:
    [[nodiscard]] QLabel* title(const QString& text) const {
        for (QLabel* const label : window->findChildren<QLabel*>()) {
            if (label->text() == text)
                return label;
        }
        return nullptr;
    }
    void clickTitle(const QString& text) const { QTest::mouseClick(title(text), Qt::LeftButton); }
    [[nodiscard]] QString sizeTitle() const {
        return generation.headers.contains("文件大小") ? "文件大小" : "图片大小";
    }

    /// Low bytes, from top to bottom.
    [[nodiscard]] std::vector<unsigned> shownIds() const {
        std::vector<unsigned> ids;
        for (int row = 0; row < model()->rowCount(); ++row)
            ids.push_back(model()->pictureId(row) & 0xFFU);
        return ids;
    }
    [[nodiscard]] static QImage pictureOf(QWidget* header) { return header->grab().toImage(); }
};

INSTANTIATE_TEST_SUITE_P(Generations, ListOrder, testing::Values(origin, v1),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(ListOrder, ClicksSortUpDownAndBack) {
    fill({record(9), record(5), record(7)});
    clickTitle("图片id");
    EXPECT_EQ(shownIds(), (std::vector{5U, 7U, 9U}));
    clickTitle("图片id");
    EXPECT_EQ(shownIds(), (std::vector{9U, 7U, 5U}));
    clickTitle("图片id");
    EXPECT_EQ(shownIds(), (std::vector{9U, 5U, 7U}));
}

TEST_P(ListOrder, AnotherColumnSortsUpFirst) {
    fill({record(9, 20), record(5, 300), record(7, 100)});
    clickTitle("图片id");
    clickTitle("图片id");
    clickTitle(sizeTitle());
    EXPECT_EQ(shownIds(), (std::vector{9U, 7U, 5U})) << "20, 100, 300: numbers, not texts";
}

TEST_P(ListOrder, EqualCellsKeepTheFirstOrder) {
    fill({record(9), record(5), record(7)});
    for (int i = 0; i < 2; ++i) {
        clickTitle("触发方式");
        EXPECT_EQ(shownIds(), (std::vector{9U, 5U, 7U}));
    }
}

TEST_P(ListOrder, KeysSortAsClicksDo) {
    fill({record(9), record(5), record(7)});
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    QTest::keyClick(list(), Qt::Key_1, Qt::ControlModifier);
    EXPECT_EQ(shownIds(), (std::vector{5U, 7U, 9U}));
    EXPECT_TRUE(title("图片id")->toolTip().contains("Ctrl+1"));
}

TEST_P(ListOrder, MarkShowsColumnAndDirection) {
    fill({record(9), record(5)});
    auto* const header = window->findChild<PictureListHeader*>();
    const QImage none = pictureOf(header);
    clickTitle("图片id");
    const QImage up = pictureOf(header);
    clickTitle("图片id");
    const QImage down = pictureOf(header);
    EXPECT_NE(up, none);
    EXPECT_NE(down, none);
    EXPECT_NE(up, down);
    clickTitle("图片id");
    EXPECT_EQ(pictureOf(header), none);
}

TEST_P(ListOrder, RefreshKeepsTheColumn) {
    fill({record(9), record(5)});
    clickTitle("图片id");
    fill({record(8), record(3), record(6)});
    EXPECT_EQ(shownIds(), (std::vector{3U, 6U, 8U}));
    clickTitle("图片id");
    clickTitle("图片id");
    EXPECT_EQ(shownIds(), (std::vector{8U, 3U, 6U}));
}

TEST_P(ListOrder, DeletesTheShownPicture) {
    fill({record(9), bytes(generation.record), record(7)});
    clickTitle("图片id");
    camera.willSay(generation.deletion, 0);
    rightClick(0);
    action("删除")->trigger();
    EXPECT_EQ(newRequests(), std::vector{generation.deleteFrame});
    EXPECT_EQ(shownIds(), (std::vector{7U, 9U}));
    clickTitle("图片id");
    clickTitle("图片id");
    EXPECT_EQ(shownIds(), (std::vector{9U, 7U}));
}

TEST_P(ListOrder, ViewsTheShownPicture) {
    fill({record(9), bytes(generation.record)});
    clickTitle("图片id");
    camera.willSend(generation.download, 0, protocol::Bytes(20, 0x55));
    rightClick(0);
    action("查看")->trigger();
    ASSERT_EQ(newRequests().size(), 1U);
    EXPECT_NE(newRequests()[0].find(generation.downloadPayload), std::string::npos) << newRequests()[0];
}

TEST_P(ListOrder, AnOpenMenuStaysWithItsPicture) {
    fill({record(9), bytes(generation.record)});
    camera.willSay(generation.deletion, 0);
    rightClick(1);
    clickTitle("图片id");
    action("删除")->trigger();
    EXPECT_EQ(newRequests(), std::vector{generation.deleteFrame});
}

TEST_P(ListOrder, ChosenPicturesStayChosen) {
    fill({record(9), record(5), record(7)});
    list()->setCurrentIndex(model()->index(1, 0));
    clickTitle("图片id");
    const QModelIndexList chosen = list()->selectionModel()->selectedIndexes();
    ASSERT_EQ(chosen.size(), 1);
    EXPECT_EQ(chosen[0].row(), 0);
}

TEST_P(ListOrder, ViewerGoesOnInTheShownOrder) {
    fill({record(9), record(5), record(7)});
    camera.willSend(generation.download, 0, protocol::Bytes(20, 0x55));
    rightClick(1);
    action("查看")->trigger();
    auto* const previous = viewer()->findChild<QToolButton*>("btn_previous");
    EXPECT_TRUE(previous->isEnabled());
    clickTitle("图片id");
    EXPECT_FALSE(previous->isEnabled());
    camera.willSend(generation.download, 0, protocol::Bytes(20, 0x55));
    viewer()->findChild<QToolButton*>("btn_next")->click();
    EXPECT_EQ(DebugLog::plainLines().back(), std::to_string(model()->pictureId(1)));
    EXPECT_EQ(shownIds()[1], 7U);
}

TEST_P(ListOrder, CopiesTheShownOrder) {
    fill({record(9), record(5)});
    clickTitle("图片id");
    window->findChild<QToolButton*>("btn_copy_list")->click();
    const QStringList lines = QGuiApplication::clipboard()->text().split('\n');
    ASSERT_EQ(lines.size(), 3);
    EXPECT_TRUE(lines[1].startsWith(QString::number(model()->pictureId(0)) + '\t'));
}

} // namespace
} // namespace picturelist
