// Pictures from the main window: button, menu, closing during a capture.
#include "app/mainwindow.h"
#include "pictures/imgdialog.h"
#include "pictures/piclist.h"
#include "pictures/piclistv1.h"
#include "tests/support/debuglog.h"
#include "tests/support/scriptedcamera.h"

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>
#include <QTest>

namespace {

using scripted::jpeg;

class MainWindowPictures : public scripted::PictureTest {
protected:
    struct OnePort {
        OnePort() {
            serial::PortInfo port;
            port.port = "COM9";
            fake_serial::setPorts({port});
        }
    };

    ~MainWindowPictures() override {
        window.reset();
        QThreadPool::globalInstance()->waitForDone();
    }

    [[nodiscard]] QPushButton* button(const char* name) const {
        return window->findChild<QPushButton*>(name);
    }
    [[nodiscard]] QAction* action(const char* name) const { return window->findChild<QAction*>(name); }
    [[nodiscard]] QLabel* picture() const { return window->findChild<QLabel*>("label"); }

    /// Deletion and capture succeed, the catalogue lists a picture of this size.
    void willTake(std::uint32_t size) {
        camera.willSay(0x08, 0);
        camera.willSay(0x06, 0);
        camera.willList(0x07, {scripted::record(scripted::originRecord, 7, 5, size)});
    }

    void takePicture(const protocol::Bytes& data) {
        willTake(static_cast<std::uint32_t>(data.size()));
        camera.willSend(0x09, 0, data);
        button("btn_takepic")->click();
        ASSERT_TRUE(QTest::qWaitFor([this] { return button("btn_takepic")->isEnabled(); }, 5000));
    }
    [[nodiscard]] bool downloadHasStarted() const {
        return QTest::qWaitFor([] { return DebugLog::hasStart("pic start"); }, 5000);
    }
    void startEndlessDownload() {
        willTake(0xFFFFFFFF);
        button("btn_takepic")->click();
        ASSERT_TRUE(downloadHasStarted());
    }

    OnePort onePort;
    DebugLog debug;
    std::unique_ptr<MainWindow> window = std::make_unique<MainWindow>();
};

} // namespace

TEST_F(MainWindowPictures, DisablesItsControlsDuringACapture) {
    window->show();
    button("btn_open")->click();
    const protocol::Bytes data = jpeg(400, 300, Qt::red);
    willTake(static_cast<std::uint32_t>(data.size()));
    camera.willSend(0x09, 0, data);
    EXPECT_EQ(picture()->text(), "图片显示区");
    button("btn_takepic")->click();
    EXPECT_EQ(picture()->text(), "");
    for (const char* name : {"btn_takepic", "btn_heartbeat", "btn_appversion", "btn_modelinfo", "btn_gyro"})
        EXPECT_FALSE(button(name)->isEnabled()) << name;
    EXPECT_FALSE(action("actionPicInfo")->isEnabled());
    EXPECT_TRUE(button("btn_open")->isEnabled()); // closing stays possible
    ASSERT_TRUE(QTest::qWaitFor([this] { return button("btn_takepic")->isEnabled(); }, 5000));
    EXPECT_FALSE(picture()->pixmap().isNull());
    EXPECT_EQ(picture()->pixmap().height(), picture()->height());
    EXPECT_TRUE(button("btn_gyro")->isEnabled());
}

TEST_F(MainWindowPictures, ShowsAndOpensThePictureItself) {
    window->show();
    button("btn_open")->click();
    takePicture(jpeg(400, 300, Qt::red));
    const QString caption = picture()->accessibleDescription();
    EXPECT_TRUE(caption.startsWith("图片 5，")) << caption.toStdString();
    EXPECT_TRUE(caption.contains("400 × 300")) << caption.toStdString();
    ASSERT_TRUE(QFile::remove("5.jpg")); // it is kept
    QTest::mouseDClick(picture(), Qt::LeftButton);
    const auto* const viewer = window->findChild<ImgDialog*>();
    ASSERT_NE(viewer, nullptr);
    EXPECT_TRUE(viewer->isVisible());
    EXPECT_FALSE(viewer->findChild<QLabel*>()->pixmap().isNull());
}

TEST_F(MainWindowPictures, MarksThePictureOfAnEarlierLink) {
    window->show();
    button("btn_open")->click();
    takePicture(jpeg(40, 30, Qt::red));
    button("btn_open")->click();
    EXPECT_TRUE(picture()->accessibleDescription().startsWith("图片 5，"));
    button("btn_open")->click();
    EXPECT_TRUE(picture()->accessibleDescription().startsWith("上一台摄像头：图片 5，"));
    button("btn_takepic")->click();
    EXPECT_EQ(picture()->accessibleDescription(), "");
    button("btn_open")->click();
}

TEST_F(MainWindowPictures, GiveTheFocusBackAfterACapture) {
    window->show();
    button("btn_open")->click();
    action("actionPicInfo")->trigger();
    auto* const list = window->findChild<PicList*>();
    auto* const refresh = list->findChild<QPushButton*>("btn_refresh");
    refresh->setFocus();
    window->activateWindow();
    QWindow* const screen = window->windowHandle();
    ASSERT_TRUE(QTest::qWaitFor([screen] { return QGuiApplication::focusWindow() == screen; }));
    const protocol::Bytes data = jpeg(40, 30, Qt::red);
    willTake(static_cast<std::uint32_t>(data.size()));
    camera.willSend(0x09, 0, data);
    button("btn_takepic")->setFocus();
    QTest::keyClick(screen, Qt::Key_Space);
    EXPECT_EQ(window->focusWidget(), window.get());
    EXPECT_EQ(list->focusWidget(), nullptr);
    QTest::keyClick(screen, Qt::Key_Space);
    EXPECT_EQ(button("btn_open")->text(), "关闭串口");
    ASSERT_TRUE(QTest::qWaitFor([this] { return button("btn_takepic")->isEnabled(); }, 5000));
    EXPECT_EQ(window->focusWidget(), button("btn_takepic"));
    EXPECT_EQ(list->focusWidget(), refresh);
}

TEST_F(MainWindowPictures, ClosingTheLinkEndsAnEndlessDownload) {
    button("btn_open")->click();
    startEndlessDownload();
    QElapsedTimer closing;
    closing.start();
    button("btn_open")->click();
    EXPECT_LT(closing.elapsed(), 1000);
    EXPECT_EQ(button("btn_open")->text(), "打开串口");
    EXPECT_FALSE(button("btn_takepic")->isEnabled());
    EXPECT_TRUE(action("actionPicInfo")->isEnabled());
    button("btn_open")->click();
    EXPECT_TRUE(button("btn_takepic")->isEnabled());
    QTest::qWait(50);
    EXPECT_FALSE(DebugLog::hasStart("in timer"));
}

TEST_F(MainWindowPictures, ClosingTheWindowEndsAnEndlessDownload) {
    window->show();
    button("btn_open")->click();
    startEndlessDownload();
    QElapsedTimer closing;
    closing.start();
    window->close();
    window.reset();
    EXPECT_LT(closing.elapsed(), 1000);
    EXPECT_TRUE(QThreadPool::globalInstance()->waitForDone(1000));
    QTest::qWait(50);
}

TEST_F(MainWindowPictures, OpensBothListsForAnyCameraType) {
    button("btn_open")->click();
    action("actionPicInfo")->trigger();
    action("actionPicInfoV1")->trigger();
    auto* const list = window->findChild<PicList*>();
    auto* const listV1 = window->findChild<PicListV1*>();
    ASSERT_NE(list, nullptr);
    ASSERT_NE(listV1, nullptr);
    EXPECT_TRUE(list->isVisible());
    EXPECT_TRUE(listV1->isVisible());
    camera.willList(0x07, {});
    list->findChild<QPushButton*>("btn_refresh")->click();
    listV1->findChild<QPushButton*>("btn_refresh")->click();
    EXPECT_EQ(camera.codes(), (std::vector{0x07, 0xC7}));
}

TEST_F(MainWindowPictures, DisablesOpenListsDuringACapture) {
    button("btn_open")->click();
    action("actionPicInfo")->trigger();
    auto* const list = window->findChild<PicList*>();
    willTake(0xFFFFFFFF);
    button("btn_takepic")->click();
    EXPECT_FALSE(list->isEnabled());
    ASSERT_TRUE(downloadHasStarted());
    button("btn_open")->click();
    EXPECT_TRUE(list->isEnabled());
}

TEST_F(MainWindowPictures, ClosingTheLinkDetachesOpenLists) {
    button("btn_open")->click();
    action("actionPicInfo")->trigger();
    auto* const list = window->findChild<PicList*>();
    startEndlessDownload();
    button("btn_open")->click();
    const std::size_t asked = camera.codes().size();
    list->findChild<QPushButton*>("btn_refresh")->click();
    EXPECT_EQ(camera.codes().size(), asked);
}

TEST_F(MainWindowPictures, ClosesWithAMessageBoxOfAListOpen) {
    window->show();
    button("btn_open")->click();
    action("actionPicInfo")->trigger();
    auto* const list = window->findChild<PicList*>();
    camera.willSay(0x06, 0);
    list->findChild<QPushButton*>("btn_takepic")->click();
    window->close();
    window.reset();
    QTest::qWait(50);
    EXPECT_EQ(camera.codes(), std::vector{0x06});
}
