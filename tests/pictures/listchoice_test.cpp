// Several chosen pictures of a list, and its menu by keyboard.
#include "tests/pictures/picturelisttest.h"
#include "tests/support/guitest.h"

#include <QContextMenuEvent>

namespace picturelist {
namespace {

using scripted::bytes;

class ListChoice : public PictureListTest {
protected:
    /// Chooses these rows as clicks with Ctrl do.
    void choose(const std::vector<int>& rows) const {
        for (const int row : rows) {
            const QPoint middle = list()->visualRect(model()->index(row, 0)).center();
            QTest::mouseClick(list()->viewport(), Qt::LeftButton, Qt::ControlModifier, middle);
        }
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const {
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
        list()->setFocus();
        QTest::keyClick(list(), key, modifiers);
    }
    void answer(QMessageBox::StandardButton button) const {
        ASSERT_NE(box(), nullptr);
        box()->button(button)->click();
    }
    [[nodiscard]] bool comesTo(int rows) const {
        return guitest::eventually([this, rows] { return model()->rowCount() == rows; });
    }
};

INSTANTIATE_TEST_SUITE_P(Generations, ListChoice, testing::Values(origin, v1),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(ListChoice, DeleteKeyDeletesAllChosenAfterAQuestion) {
    fill({bytes(generation.record), record(9), record(7)});
    choose({0, 2});
    press(Qt::Key_Delete);
    ASSERT_NE(box(), nullptr);
    EXPECT_EQ(box()->text(), "要从摄像头删除选中的 2 张图片吗？");
    EXPECT_TRUE(box()->informativeText().isEmpty());
    EXPECT_TRUE(newRequests().empty());
    camera.willSay(generation.deletion, 0);
    camera.willSay(generation.deletion, 0);
    answer(QMessageBox::Yes);
    EXPECT_TRUE(comesTo(1));
    ASSERT_EQ(newRequests().size(), 2U);
    EXPECT_EQ(newRequests()[0], generation.deleteFrame);
    EXPECT_EQ(model()->pictureId(0) & 0xFFU, 9U);
}

TEST_P(ListChoice, MenuAsksForSeveral) {
    fill({record(9), record(7)});
    choose({0, 1});
    emit list()->customContextMenuRequested(QPoint(30, 12));
    ASSERT_EQ(menu()->actions().size(), 2);
    action("删除")->trigger();
    ASSERT_NE(box(), nullptr);
    answer(QMessageBox::No);
    EXPECT_TRUE(newRequests().empty());
    EXPECT_EQ(model()->rowCount(), 2);
}

TEST_P(ListChoice, ARefusedDeletionKeepsTheRest) {
    fill({record(9), record(5), record(7)});
    choose({0, 1, 2});
    press(Qt::Key_Delete);
    camera.willSay(generation.deletion, 0);
    camera.willSay(generation.deletion, 1);
    answer(QMessageBox::Yes);
    EXPECT_TRUE(comesTo(2));
    QTest::qWait(20);
    EXPECT_EQ(newRequests().size(), 2U);
    EXPECT_EQ(list()->selectionModel()->selectedIndexes().size(), 2);
}

TEST_P(ListChoice, DeletesNothingOfARefreshedList) {
    fill({record(9), record(5)});
    choose({0, 1});
    press(Qt::Key_Delete);
    fill({record(9), record(5)});
    answer(QMessageBox::Yes);
    QTest::qWait(20);
    EXPECT_TRUE(newRequests().empty());
}

TEST_P(ListChoice, NextLinkDeletesNothing) {
    fill({record(9), record(5), record(7)});
    choose({0, 1, 2});
    press(Qt::Key_Delete);
    camera.willSay(generation.deletion, 0);
    answer(QMessageBox::Yes);
    EXPECT_EQ(newRequests().size(), 1U) << "the others follow as events";
    CameraSp next("COM9", 460800, clock);
    window->attachClient(nullptr);
    window->attachClient(&next);
    QTest::qWait(20);
    EXPECT_EQ(newRequests().size(), 1U);
    window->attachClient(nullptr);
}

TEST_P(ListChoice, WarnsOfTheIdOfAll) {
    protocol::Bytes highest = record(0xFF);
    if (generation.deletion == 0xC8)
        highest[1] = 0xFF;
    fill({record(9), highest});
    choose({1});
    press(Qt::Key_Delete);
    ASSERT_NE(box(), nullptr);
    const QString id = generation.deletion == 0xC8 ? "65535" : "255";
    EXPECT_EQ(box()->text(), "要从摄像头删除图片 " + id + " 吗？");
    EXPECT_EQ(box()->informativeText(), "编号 " + id + " 就是“全部”的编号：摄像头会删除全部图片");
    answer(QMessageBox::No);
}

TEST_P(ListChoice, EnterViewsTheRowOfTheKeyboard) {
    fill({record(9), bytes(generation.record)});
    choose({0, 1});
    camera.willSend(generation.download, 0, protocol::Bytes(20, 0x55));
    press(Qt::Key_Return);
    ASSERT_NE(viewer(), nullptr);
    ASSERT_EQ(newRequests().size(), 1U);
    EXPECT_NE(newRequests()[0].find(generation.downloadPayload), std::string::npos);
}

TEST_P(ListChoice, KeysOpenTheMenuAtTheRow) {
    fill({record(9), record(5)});
    choose({1});
    press(Qt::Key_F10, Qt::ShiftModifier);
    ASSERT_NE(menu(), nullptr);
    const QRect row = list()->visualRect(model()->index(1, 0));
    EXPECT_TRUE(row.contains(list()->viewport()->mapFromGlobal(menu()->pos()))) << "without a screen's end";
    menu()->close();
    ASSERT_TRUE(guitest::eventually([this] { return menu() == nullptr; }));

    // As Qt sends it for the menu key.
    const QPoint place = list()->inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, place, list()->mapToGlobal(place));
    QApplication::sendEvent(list(), &event);
    ASSERT_NE(menu(), nullptr);
    EXPECT_TRUE(row.contains(list()->viewport()->mapFromGlobal(menu()->pos())));
}

TEST_P(ListChoice, NextWindowHasTheSizeOfTheLast) {
    QWidget parent;
    auto* const first = generation.make(&parent, nullptr);
    first->show();
    first->resize(1100, 600);
    first->close();
    auto* const second = generation.make(&parent, nullptr);
    EXPECT_EQ(second->size(), QSize(1100, 600));
}

} // namespace
} // namespace picturelist
