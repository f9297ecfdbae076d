// The picture list windows of both generations: texts, frames, closing at any time.
#include "tests/pictures/picturelisttest.h"
#include "tests/support/recordingobserver.h"

namespace picturelist {
namespace {

constexpr std::chrono::milliseconds reloadDelay{1000};
constexpr int afterReloadMs = 2000 / speed;

INSTANTIATE_TEST_SUITE_P(Generations, PictureListTest, testing::Values(origin, v1),
                         [](const auto& each) { return std::string(each.param.name); });

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

TEST_P(PictureListTest, CountsPicturesAndTheirBytes) {
    const auto* const summary = window->findChild<QWidget*>("summary");
    EXPECT_EQ(summary->accessibleName(), "共 0 张，0 字节");
    fill({record(9, 20), record(5, 300)});
    EXPECT_EQ(summary->accessibleName(), "共 2 张，320 字节");
    model()->removeRow(0);
    EXPECT_EQ(summary->accessibleName(), "共 1 张，300 字节");
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
    EXPECT_EQ(newRequests().size(), 1U);
    EXPECT_EQ(clock.timers(), std::vector{reloadDelay});
    QTest::qWait(afterReloadMs);
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
    EXPECT_EQ(camera.codes().size(), 1U);
    EXPECT_EQ(clock.timers(), std::vector{reloadDelay});
    QTest::qWait(afterReloadMs);
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
    // Limit of one answer: tries times read size.
    const std::size_t most = generation.catalogue == 0xC7 ? 1551 : 378;
    camera.willList(generation.catalogue, {most, record(5)});
    button("btn_refresh")->click();
    EXPECT_EQ(model()->rowCount(), static_cast<int>(most));
}

} // namespace
} // namespace picturelist
