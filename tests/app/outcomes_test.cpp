// Outcomes of actions in the status bar.
#include "app/mainwindow.h"
#include "app/statusline.h"
#include "dialogs/doorop.h"
#include "dialogs/setcameralocation.h"
#include "dialogs/setcapturedegree.h"
#include "dialogs/setpwmheat.h"
#include "dialogs/setsn.h"
#include "linkaccess/cameratext.h"
#include "pictures/piclist.h"
#include "tests/support/guitest.h"
#include "tests/support/printing.h"
#include "tests/support/scriptedcamera.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QInputDialog>
#include <QLabel>
#include <QMessageBox>
#include <QRegularExpression>
#include <QStatusBar>
#include <QThreadPool>

#include <algorithm>

using namespace guitest;
using namespace std::chrono_literals;

namespace {

class Outcomes : public scripted::PictureTest {
protected:
    struct OnePort {
        OnePort() { fake_serial::setPorts({{"COM9", "", ""}}); }
    };

    Outcomes() {
        window->show();
        click(*window, "btn_open");
    }
    ~Outcomes() override {
        window.reset();
        QThreadPool::globalInstance()->waitForDone();
    }

    [[nodiscard]] QString status() const {
        QString text = statusText(*window);
        return text.remove(QRegularExpression("（用时 .* 秒）$"));
    }
    [[nodiscard]] bool comesToSay(const QString& text, int timeoutMs = 5000) const {
        return eventually([&] { return status() == text; }, timeoutMs);
    }
    template <typename Window>
    Window* open(const char* entry) {
        trigger(*window, entry);
        return openWindows<Window>().at(0);
    }
    void takePicture() { click(*window, "btn_takepic"); }

    OnePort onePort;
    DebugLog log;
    std::unique_ptr<MainWindow> window = std::make_unique<MainWindow>();
};

/// Every message of the status bar, in order.
struct Messages {
    explicit Messages(const QWidget& window) {
        QObject::connect(find<QStatusBar>(window, "statusbar"), &QStatusBar::messageChanged, &listener,
                         [this](const QString& text) { texts.append(text); });
    }

    QStringList texts;
    QObject listener;
};

constexpr const char* adviceNoAnswer = "没有应答，请检查接线、从机地址和波特率";

} // namespace

// --- versions --------------------------------------------------------------------------------------------

TEST_F(Outcomes, VersionQueryReportsThatNothingWasRead) {
    click(*window, "btn_appversion");
    EXPECT_TRUE(comesToSay(QString("读取版本号：") + adviceNoAnswer)) << status().toStdString();
}

TEST_F(Outcomes, VersionQueryNamesMissingVersions) {
    camera.will(0x02, answers::property(0x02, 0x02, "1.0"));
    camera.will(0x02, answers::property(0x02, 0x15, "", 1));
    camera.will(0xC2, answers::property(0xC2, 0xD4, "3.0"));
    click(*window, "btn_appversion");
    EXPECT_TRUE(comesToSay("读取版本号：缺少 系统版本（摄像头拒绝执行，请检查摄像头类型和设置值）"))
        << status().toStdString();
}

TEST_F(Outcomes, WholeVersionQueryIsDone) {
    camera.will(0x02, answers::property(0x02, 0x02, "1.0"));
    camera.will(0x02, answers::property(0x02, 0x15, "2.0"));
    camera.will(0xC2, answers::property(0xC2, 0xD4, "3.0"));
    click(*window, "btn_appversion");
    EXPECT_TRUE(comesToSay("读取版本号：完成")) << status().toStdString();
}

// --- taking a picture ------------------------------------------------------------------------------------

TEST_F(Outcomes, CaptureIsShownBeforeItStarts) {
    const Messages messages(*window);
    takePicture();
    ASSERT_GE(messages.texts.size(), 2);
    EXPECT_EQ(messages.texts.front(), "正在拍照…");
}

TEST_F(Outcomes, CaptureReportsAnUnansweredDeletion) {
    takePicture();
    EXPECT_EQ(status(), QString("拍照：旧图片没有删除（%1）").arg(adviceNoAnswer));
}

TEST_F(Outcomes, RefusedCaptureReportsAnOlderPicture) {
    const fake_serial::Bytes old = scripted::jpeg(40, 30, Qt::blue);
    camera.willSay(0x08, 0);
    camera.willSay(0x06, 1);
    camera.willList(0x07,
                    {scripted::record(scripted::originRecord, 7, 5, static_cast<std::uint32_t>(old.size()))});
    camera.willSend(0x09, 0, old);
    takePicture();
    EXPECT_TRUE(comesToSay("拍照：摄像头拒绝执行，请检查摄像头类型和设置值")) << status().toStdString();
    EXPECT_TRUE(comesToSay("查找以前的图片：拍照没有成功，显示的是以前的图片，请再拍一次"))
        << status().toStdString();
    EXPECT_FALSE(find<QLabel>(*window, "label")->pixmap().isNull());
}

TEST_F(Outcomes, CaptureReportsAnEmptyList) {
    camera.willSay(0x08, 0);
    camera.willSay(0x06, 0);
    camera.willList(0x07, {});
    camera.willList(0x07, {});
    takePicture();
    EXPECT_TRUE(comesToSay("拍照：没有图片")) << status().toStdString();
}

TEST_F(Outcomes, CaptureReportsAnUnreadList) {
    camera.willSay(0x08, 0);
    camera.willSay(0x06, 0);
    takePicture();
    EXPECT_TRUE(comesToSay(QString("拍照：没有读到图片列表（%1）").arg(adviceNoAnswer)))
        << status().toStdString();
}

TEST_F(Outcomes, CaptureReportsARefusedDownload) {
    camera.willSay(0x08, 0);
    camera.willSay(0x06, 0);
    camera.willList(0x07, {scripted::record(scripted::originRecord, 7, 5, 3)});
    camera.willSend(0x09, 1, {1, 2, 3});
    takePicture();
    EXPECT_TRUE(comesToSay("拍照：图片没有下载（摄像头拒绝执行，请检查摄像头类型和设置值）"))
        << status().toStdString();
}

TEST_F(Outcomes, CaptureReportsABrokenPicture) {
    camera.willSay(0x08, 0);
    camera.willSay(0x06, 0);
    camera.willList(0x07, {scripted::record(scripted::originRecord, 7, 5, 3)});
    camera.willSend(0x09, 0, {1, 2, 3});
    takePicture();
    EXPECT_TRUE(comesToSay("拍照：图片已下载，但数据错误，无法显示，请再拍一次")) << status().toStdString();
}

TEST_F(Outcomes, CaptureIsDoneWhenANewPictureIsShown) {
    const fake_serial::Bytes data = scripted::jpeg(40, 30, Qt::red);
    camera.willSay(0x08, 0);
    camera.willSay(0x06, 0);
    camera.willList(
        0x07, {scripted::record(scripted::originRecord, 7, 5, static_cast<std::uint32_t>(data.size()))});
    camera.willSend(0x09, 0, data);
    takePicture();
    EXPECT_TRUE(comesToSay("拍照：完成")) << status().toStdString();
}

// --- lists -----------------------------------------------------------------------------------------------

TEST_F(Outcomes, EmptyCatalogueIsNoFault) {
    const auto* const list = open<PicList>("actionPicInfo");
    camera.willList(0x07, {});
    click(*list, "btn_refresh");
    EXPECT_EQ(status(), "读取图片列表：没有图片");
}

TEST_F(Outcomes, DeletingAllEndsWithAnEmptyList) {
    const auto* const list = open<PicList>("actionPicInfo");
    camera.willSay(0x08, 0);
    camera.willList(0x07, {});
    click(*list, "btn_delete_all");
    EXPECT_EQ(status(), "删除全部图片：完成");
    EXPECT_TRUE(comesToSay("读取图片列表：没有图片")) << status().toStdString();
}

TEST_F(Outcomes, RefusedViewIsNotDone) {
    auto* const list = open<PicList>("actionPicInfo");
    files::write("7.jpg", scripted::jpeg(40, 30, Qt::blue));
    camera.willList(0x07, {scripted::record(scripted::originRecord, 7, 7, 3)});
    click(*list, "btn_refresh");
    camera.willSend(0x09, 1, {1, 2, 3});
    chooseForRow(*list, 0, "查看");
    EXPECT_EQ(status(), "下载图片 7：摄像头拒绝执行，请检查摄像头类型和设置值");
}

// --- commands --------------------------------------------------------------------------------------------

TEST_F(Outcomes, DoorCommandIsOnlySent) {
    const auto* const door = open<DoorOp>("actionOpenCloseDoor");
    click(*door, "btn_open");
    EXPECT_EQ(status(), "模拟开门：已发送");
}

TEST_F(Outcomes, RefusedWriteDiffersFromNoAnswer) {
    const auto* const heat = open<SetPwmHeat>("actionPwmHeatSet");
    camera.will(0x03, answers::property(0x03, 15, "", 1));
    click(*heat, "btn_setheat");
    EXPECT_EQ(status(), "写入设置：摄像头拒绝执行，请检查摄像头类型和设置值");
    click(*heat, "btn_setheat");
    EXPECT_EQ(status(), QString("写入设置：") + adviceNoAnswer);
}

TEST_F(Outcomes, BrokenAnswerDiffersFromNone) {
    camera.will(0xC2, {0xAA, 0x5A, 0x01});
    click(*window, "btn_modelinfo");
    EXPECT_EQ(status(), "读取模型信息：应答不完整或无法识别，请重试，仍然如此请检查接线");
}

TEST_F(Outcomes, OffsetInputShowsTheOffset) {
    const auto enter = [this](int value, bool accepted) {
        QTimer::singleShot(50, window.get(), [=] {
            auto* const dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            dialog->setIntValue(value);
            accepted ? dialog->accept() : dialog->reject();
        });
        trigger(*window, "actionOriginCmdExtraAdd");
    };
    enter(5, true);
    EXPECT_EQ(status(), "图片命令附加值：5");
    enter(5, false);
    EXPECT_EQ(status(), "已取消输入，图片命令附加值恢复为 0");
    click(*window, "btn_open");
    enter(5, true);
    EXPECT_EQ(status(), "请先打开串口，图片命令附加值没有设置");
}

TEST_F(Outcomes, FirstReadingOfAWindowIsReported) {
    open<SetCameraLocation>("actionInstallLocation");
    EXPECT_TRUE(comesToSay(QString("读取设置：") + adviceNoAnswer)) << status().toStdString();
}

TEST_F(Outcomes, PartlyReadSettingsAreReported) {
    camera.will(0x02, answers::property(0x02, 10, "ab"));
    open<SetCaptureDegree>("actionCaptureDegree");
    EXPECT_TRUE(comesToSay(QString("读取设置：部分没有读到（%1）").arg(adviceNoAnswer)))
        << status().toStdString();
}

TEST_F(Outcomes, OtherGyroAnswerIsNotDone) {
    BoxAnswerer box;
    camera.will(0x0F, {'2', 'f', 'a', 'i', 'l'});
    click(*window, "btn_gyro");
    EXPECT_EQ(status(), "测试陀螺仪：没有通过，请放稳摄像头后重试");
    ASSERT_EQ(box.seen().size(), 1U);
    EXPECT_EQ(box.seen().front().text, "陀螺仪测试失败:2fail");
}

TEST_F(Outcomes, GyroAnswerAfterAByteOrderMarkFails) {
    BoxAnswerer box;
    camera.will(0x0F, {0xEF, 0xBB, 0xBF, '3', 's', 'u', 'c', 'c', 'e', 's', 's'});
    click(*window, "btn_gyro");
    ASSERT_EQ(box.seen().size(), 1U);
    EXPECT_TRUE(box.seen().front().text.startsWith("陀螺仪测试失败:"));
}

// --- texts from the camera -------------------------------------------------------------------------------

TEST_F(Outcomes, CameraTextIsPlainAndEndsAtTheFirstZero) {
    camera.will(0xC2, answers::property(0xC2, 0xCC, std::string("<b>m</b>\0rest", 13)));
    click(*window, "btn_modelinfo");
    const auto* const label = find<QLabel>(*window, "label_modelinfo");
    EXPECT_EQ(label->text(), "模型信息:<b>m</b>");
    EXPECT_EQ(label->textFormat(), Qt::PlainText);
    EXPECT_TRUE(label->textInteractionFlags().testFlag(Qt::TextSelectableByMouse));
    EXPECT_EQ(label->toolTip(), "");
}

TEST_F(Outcomes, LongCameraTextIsCutWithAToolTip) {
    const std::string name(130, 'x');
    camera.will(0xC2, answers::property(0xC2, 0xCC, name));
    click(*window, "btn_modelinfo");
    const auto* const label = find<QLabel>(*window, "label_modelinfo");
    EXPECT_EQ(label->text().size(), 120);
    EXPECT_TRUE(label->text().endsWith(QChar(u'…')));
    EXPECT_TRUE(label->toolTip().contains(QString::fromStdString(name)));
}

// --- counting --------------------------------------------------------------------------------------------

TEST(StatusLine, CountsTheSecondsOfABlockingCommand) {
    QStatusBar bar;
    StatusLine line(&bar);
    const auto use = std::make_shared<const LinkUse>(
        LinkUse{"读取图片列表", std::chrono::steady_clock::now() - 3200ms, true});
    line.useBegan(use);
    EXPECT_EQ(bar.currentMessage(), "正在读取图片列表…");
    line.keepCounting();
    EXPECT_EQ(bar.currentMessage(), "正在读取图片列表…（3 秒）");
}

TEST(StatusLine, DoesNotCountShortCommands) {
    QStatusBar bar;
    StatusLine line(&bar);
    const auto use = std::make_shared<const LinkUse>(
        LinkUse{"读取图片列表", std::chrono::steady_clock::now() - 300ms, true});
    line.useBegan(use);
    line.keepCounting();
    EXPECT_EQ(bar.currentMessage(), "正在读取图片列表…");
}

// --- an upload while a download has the line ------------------------------------------------------------

namespace {

/// The camera refuses a capture; the download of the older picture never ends.
class WaitingUpload : public Outcomes {
protected:
    WaitingUpload() {
        files::write("app.bin", {'a', 'b', 'c'});
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        const FileChooser chooser(QDir::current().absoluteFilePath("app.bin"));
        click(*window, "btn_apppath");
        camera.willSay(0x08, 0);
        camera.willSay(0x06, 1);
        camera.willList(0x07, {scripted::record(scripted::originRecord, 7, 5, 1000)});
        takePicture();
        EXPECT_TRUE(eventually([] { return DebugLog::has("pic start  5    1000"); }));
        click(*window, "btn_appupdate");
    }

    [[nodiscard]] QString progress() const { return text(*window, "label_transfer"); }
    static QMessageBox* question() {
        for (QMessageBox* const box : openWindows<QMessageBox>()) {
            if (box->windowTitle() == "图片下载没有结束")
                return box;
        }
        return nullptr;
    }
    /// After three seconds without a byte.
    static bool asks() {
        return eventually([] { return question() != nullptr; }, 8000);
    }
    [[nodiscard]] bool announced() const {
        const std::vector<int> codes = camera.codes();
        return std::count(codes.begin(), codes.end(), 0x1B) == 1;
    }
};

} // namespace

TEST_F(WaitingUpload, IsShownWithTheHolderOfTheLine) {
    EXPECT_TRUE(eventually([this] { return progress() == "等待线路空闲（正在下载图片）"; }));
    EXPECT_FALSE(announced());
}

TEST_F(WaitingUpload, EndsAnEndlessDownloadAfterAQuestion) {
    ASSERT_TRUE(asks());
    const Messages messages(*window);
    question()->button(QMessageBox::Yes)->click();
    BoxAnswerer result;
    ASSERT_TRUE(result.waitFor(1));
    EXPECT_EQ(result.seen().front().text, "升级已完成，结果:失败！");
    EXPECT_TRUE(announced());
    EXPECT_FALSE(messages.texts.filter(QString("升级没有成功：") + adviceNoAnswer).isEmpty());
}

TEST_F(WaitingUpload, WarningStaysWhileOtherActionsEnd) {
    EXPECT_EQ(statusText(*window), "正在升级，请勿断电、勿拔线");
    QTimer::singleShot(50, window.get(), [] {
        if (auto* const dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget()))
            dialog->accept();
    });
    trigger(*window, "actionOriginCmdExtraAdd"); // stays enabled during an upload
    EXPECT_EQ(statusText(*window), "正在升级，请勿断电、勿拔线");
}

TEST_F(WaitingUpload, KeepsWaitingOnNo) {
    ASSERT_TRUE(asks());
    question()->button(QMessageBox::No)->click();
    EXPECT_TRUE(eventually([] { return question() == nullptr; }));
    EXPECT_EQ(progress(), "等待线路空闲（正在下载图片）");
    EXPECT_FALSE(announced());
    EXPECT_TRUE(asks()) << "asked again while the download stands still";
}
