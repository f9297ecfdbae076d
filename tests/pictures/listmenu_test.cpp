// The menu of a picture list: deleting and viewing a picture.
#include "tests/pictures/picturelisttest.h"
#include "tests/support/workingdirectory.h"

#include <QApplication>

namespace picturelist {
namespace {

using scripted::bytes;
using scripted::jpeg;

class PictureListMenu : public PictureListTest {
protected:
    /// Presses a key of the list with this row chosen.
    void pressOn(int row, Qt::Key key) const {
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
        list()->setFocus();
        list()->setCurrentIndex(model()->index(row, 0));
        QTest::keyClick(list(), key);
    }
};

INSTANTIATE_TEST_SUITE_P(Generations, PictureListMenu, testing::Values(origin, v1),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(PictureListMenu, HasAMenuOnlyWithASelectedRow) {
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

TEST_P(PictureListMenu, DeletesTheChosenPictureAndItsRow) {
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

TEST_P(PictureListMenu, DeleteKeyAsksBeforeItDeletes) {
    fill({record(9), bytes(generation.record)});
    pressOn(1, Qt::Key_Delete);
    ASSERT_NE(box(), nullptr);
    EXPECT_EQ(box()->windowTitle(), "删除图片");
    EXPECT_EQ(box()->defaultButton(), box()->button(QMessageBox::No));
    EXPECT_TRUE(newRequests().empty());
    camera.willSay(generation.deletion, 0);
    box()->button(QMessageBox::Yes)->click();
    EXPECT_EQ(newRequests(), std::vector{generation.deleteFrame});
    EXPECT_EQ(model()->rowCount(), 1);
}

TEST_P(PictureListMenu, DeleteKeyKeepsThePictureAfterNo) {
    fill({record(9)});
    pressOn(0, Qt::Key_Delete);
    ASSERT_NE(box(), nullptr);
    box()->button(QMessageBox::No)->click();
    EXPECT_TRUE(newRequests().empty());
    EXPECT_EQ(model()->rowCount(), 1);
}

TEST_P(PictureListMenu, EnterAndDoubleClickView) {
    const protocol::Bytes picture = jpeg(30, 20, Qt::red);
    fill({scripted::record(generation.record, generation.sizeAt, bytes(generation.record)[0],
                           static_cast<std::uint32_t>(picture.size()))});
    camera.willSend(generation.download, 0, picture);
    pressOn(0, Qt::Key_Return);
    ASSERT_NE(viewer(), nullptr);
    EXPECT_EQ(newRequests().size(), 1U);
    camera.willSend(generation.download, 0, picture);
    const QPoint row = list()->visualRect(model()->index(0, 0)).center();
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, row);
    QTest::mouseDClick(list()->viewport(), Qt::LeftButton, {}, row);
    EXPECT_EQ(newRequests().size(), 2U);
}

TEST_P(PictureListMenu, KeysDoNothingWithoutAChosenPicture) {
    fill({record(9)});
    pressOn(-1, Qt::Key_Delete);
    pressOn(-1, Qt::Key_Return);
    EXPECT_EQ(box(), nullptr);
    EXPECT_EQ(viewer(), nullptr);
    EXPECT_TRUE(newRequests().empty());
}

TEST_P(PictureListMenu, KeepsTheRowOfAPictureThatIsNotDeleted) {
    fill({record(9)});
    camera.willSay(generation.deletion, 1);
    rightClick(0);
    action("删除")->trigger();
    EXPECT_EQ(model()->rowCount(), 1);
    EXPECT_EQ(newRequests().size(), 1U);
}

TEST_P(PictureListMenu, DeletesAllWithThePictureOfTheHighestId) {
    protocol::Bytes highest = record(0xFF);
    if (generation.deletion == 0xC8)
        highest[1] = 0xFF;
    fill({highest});
    rightClick(0);
    action("删除")->trigger();
    EXPECT_EQ(newRequests(), std::vector{generation.deleteFrameOfHighestId});
}

TEST_P(PictureListMenu, IgnoresMenuEntriesOfARemovedRow) {
    fill({record(9), record(5)});
    rightClick(1);
    model()->clear();
    action("删除")->trigger();
    action("查看")->trigger();
    EXPECT_TRUE(newRequests().empty());
    EXPECT_EQ(viewer(), nullptr);
}

TEST_P(PictureListMenu, AppliesMenuEntriesToAMovedRow) {
    fill({record(9), bytes(generation.record)});
    rightClick(1);
    model()->removeRow(0);
    action("删除")->trigger();
    EXPECT_EQ(newRequests(), std::vector{generation.deleteFrame});
}

TEST_P(PictureListMenu, MayBeDestroyedWhileItsMenuIsOpen) {
    fill({record(9)});
    rightClick(0);
    const QPointer<QMenu> open = menu();
    delete window.data();
    EXPECT_EQ(open, nullptr);
    QTest::qWait(50);
    EXPECT_TRUE(newRequests().empty());
}

TEST_P(PictureListMenu, IgnoresMenuEntriesWhileTheClientIsBusy) {
    fill({record(9)});
    rightClick(0);
    window->setExchangeAllowed(false);
    action("删除")->trigger();
    action("查看")->trigger();
    EXPECT_TRUE(newRequests().empty());
}

TEST_P(PictureListMenu, ViewsTheChosenPicture) {
    const protocol::Bytes picture = jpeg(300, 200, Qt::red);
    protocol::Bytes listed = bytes(generation.record);
    listed = scripted::record(generation.record, generation.sizeAt, listed[0],
                              static_cast<std::uint32_t>(picture.size()));
    fill({listed});
    camera.willSend(generation.download, 0, picture);
    files::write(generation.file, jpeg(300, 200, Qt::blue));
    rightClick(0);
    action("查看")->trigger();
    ASSERT_EQ(newRequests().size(), 1U);
    EXPECT_NE(newRequests()[0].find(generation.downloadPayload), std::string::npos) << newRequests()[0];
    EXPECT_EQ(files::read(generation.file), picture);
    ASSERT_NE(viewer(), nullptr);
    EXPECT_EQ(viewer()->parentWidget(), window);
    const QPixmap shown = viewer()->findChild<QLabel*>()->pixmap();
    EXPECT_EQ(shown.size(), QSize(600, 400));
    EXPECT_GT(scripted::middle(shown).red(), 240);
    EXPECT_TRUE(DebugLog::hasStart(QStringLiteral("get picture: 0   size: %1").arg(picture.size())));
    EXPECT_TRUE(DebugLog::hasStart("get picture end"));
    EXPECT_TRUE(DebugLog::hasStart(QString(generation.file).remove(".jpg")));
}

TEST_P(PictureListMenu, ShowsNoOldPictureWhenTheDownloadFails) {
    fill({bytes(generation.record)});
    files::write(generation.file, jpeg(30, 20, Qt::blue));
    fake_serial::willThrowOnRead(); // the device vanishes: nothing else ends a download
    rightClick(0);
    action("查看")->trigger();
    ASSERT_NE(viewer(), nullptr);
    EXPECT_EQ(viewer()->findChild<QLabel*>()->text(), missingText);
    EXPECT_FALSE(QFile::exists(generation.file));
}

TEST_P(PictureListMenu, ReportsABrokenPicture) {
    fill({bytes(generation.record)});
    camera.willSend(generation.download, 0, protocol::Bytes(20, 0x55));
    rightClick(0);
    action("查看")->trigger();
    ASSERT_NE(viewer(), nullptr);
    EXPECT_EQ(viewer()->findChild<QLabel*>()->text(), missingText);
    EXPECT_EQ(files::read(generation.file), protocol::Bytes(20, 0x55));
}

TEST_P(PictureListMenu, ARefusedReadShowsAPictureInTheSecondGenerationOnly) {
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

TEST_P(PictureListMenu, ShowsNoOldPictureInAnUnwritableFolder) {
    const protocol::Bytes picture = jpeg(30, 20, Qt::red);
    fill({scripted::record(generation.record, generation.sizeAt, bytes(generation.record)[0],
                           static_cast<std::uint32_t>(picture.size()))});
    camera.willSend(generation.download, 0, picture);
    files::write(generation.file, jpeg(30, 20, Qt::blue));
    const UnwritableDirectory here;
    rightClick(0);
    action("查看")->trigger();
    ASSERT_NE(viewer(), nullptr);
    EXPECT_EQ(viewer()->findChild<QLabel*>()->text(), missingText);
    EXPECT_TRUE(out.has(std::string("can't write picture:") + generation.file));
}

TEST_P(PictureListMenu, MayBeClosedWithItsViewerOpen) {
    fill({bytes(generation.record)});
    camera.willSend(generation.download, 0, protocol::Bytes(20, 0x55));
    rightClick(0);
    action("查看")->trigger();
    closeWindow();
    EXPECT_TRUE(DebugLog::hasStart("imgDialog destroyed"));
}

} // namespace
} // namespace picturelist
