// Exceptions that leave a handler: texts, one box at a time, no end of the program. Also the start, the
// program's icon and Qt's own texts.
#include "app/application.h"
#include "app/mainwindow.h"
#include "service/failuretext.h"
#include "tests/support/guitest.h"
#include "tests/support/printing.h"

#include <QAbstractButton>
#include <QFile>
#include <QIcon>
#include <QJsonDocument>
#include <QLabel>
#include <QLibraryInfo>

#include <gtest/gtest.h>
#include <serial/serial.h>

#include <stdexcept>

using namespace guitest;

namespace {

template <typename Failure>
FailureText textOf(const Failure& failure) {
    return failureText(std::make_exception_ptr(failure));
}

/// Throws from an event handler, as a slot may.
template <typename Failure>
void throwFromTheEventLoop(Failure failure) {
    QTimer::singleShot(0, qApp, [failure] { throw failure; });
}

/// True if Qt's Chinese texts are installed, by Qt or beside the program.
bool chineseIsInstalled() {
    const QString name = QStringLiteral("/qtbase_zh_CN.qm");
    return QFile::exists(QLibraryInfo::path(QLibraryInfo::TranslationsPath) + name) ||
           QFile::exists(QCoreApplication::applicationDirPath() + "/translations" + name);
}

QString buttonText(QMessageBox::StandardButton button) {
    const QMessageBox box(QMessageBox::Question, "title", "text", button);
    return box.button(button)->text().remove('&');
}

} // namespace

#ifdef __linux__
// First, before a test needs a picture.
TEST(ApplicationStart, LoadsNoLibraryOfPictureFormats) {
    MainWindow window;
    window.show();
    ASSERT_TRUE(eventually([&window] { return window.findChild<QLabel*>("label")->isVisible(); }));
    window.grab();
    QFile libraries("/proc/self/maps");
    ASSERT_TRUE(libraries.open(QIODevice::ReadOnly));
    const QByteArray loaded = libraries.readAll();
    EXPECT_TRUE(loaded.contains("libQt6Gui"));
    EXPECT_FALSE(loaded.contains("/imageformats/"));
}
#endif

TEST(ApplicationWindows, BearTheProgramsIconSoonAfterTheStart) {
    ASSERT_TRUE(eventually([] { return !QApplication::windowIcon().isNull(); }));
    const QList<QSize> sizes = QApplication::windowIcon().availableSizes();
    EXPECT_TRUE(sizes.contains(QSize(16, 16)));
    EXPECT_TRUE(sizes.contains(QSize(256, 256)));
    for (const QSize size : sizes)
        EXPECT_EQ(QApplication::windowIcon().pixmap(size).size(), size) << "a picture, not only a promise";
    EXPECT_EQ(QGuiApplication::desktopFileName(), "shelf-camera-tool");
}

TEST(QtsOwnTexts, AreChineseWithInstalledTranslation) {
    const bool chinese = chineseIsInstalled();
    EXPECT_EQ(buttonText(QMessageBox::Ok), chinese ? "确定" : "OK");
    EXPECT_EQ(buttonText(QMessageBox::Yes), chinese ? "是(Y)" : "Yes");
    EXPECT_EQ(buttonText(QMessageBox::No), chinese ? "否(N)" : "No");
}

TEST(QtsOwnTexts, KeepJsonParserMessages) {
    QJsonParseError error{};
    QJsonDocument::fromJson("{]", &error);
    EXPECT_EQ(error.errorString(), "unterminated object");
    QJsonDocument::fromJson("no json", &error);
    EXPECT_EQ(error.errorString(), "illegal value");
}

TEST(FailureWords, DistinguishPortFailuresOnWindows) {
    const FailureText missing =
        textOf(serial::IOException("win.cc", 1, "Specified port, COM7, does not exist."));
    EXPECT_TRUE(missing.advice.contains("串口不存在或已拔出"));
    const FailureText inUse = textOf(serial::IOException("serialport.cpp", 1, EBUSY));
    EXPECT_TRUE(inUse.advice.contains("串口正被其他程序占用"));
    const FailureText other =
        textOf(serial::IOException("win.cc", 1, "Unknown error opening the serial port: 16"));
    EXPECT_FALSE(other.advice.contains("占用"));
    EXPECT_EQ(other.what, "打开串口失败：");
    EXPECT_FALSE(other.inShort().contains("Unknown error"));
}

TEST(FailureWords, DescribeEveryKindOfException) {
    EXPECT_EQ(textOf(static_cast<const char*>("serial port size>1")).details, "serial port size>1");
    EXPECT_EQ(textOf(std::runtime_error("no more")).inFull(),
              "操作失败：no more 请关闭串口，重新打开后再试。");
    EXPECT_EQ(textOf(42).details, "未知错误");
    EXPECT_FALSE(textOf(42).advice.isEmpty());
}

TEST(ApplicationFailures, AreShownOneAfterTheOther) {
    QStringList reported;
    auto* const application = qobject_cast<Application*>(qApp);
    ASSERT_NE(application, nullptr);
    QObject context;
    QObject::connect(application, &Application::failureReported, &context,
                     [&reported](const QString& text) { reported.append(text); });
    BoxAnswerer boxes;
    throwFromTheEventLoop(static_cast<const char*>("first"));
    throwFromTheEventLoop(std::runtime_error("second"));
    throwFromTheEventLoop(std::runtime_error("second"));
    throwFromTheEventLoop(3);
    ASSERT_TRUE(boxes.waitFor(3));
    EXPECT_EQ(reported.size(), 4) << "each is reported, the same box is not shown twice";
    ASSERT_EQ(boxes.seen().size(), 3U);
    const QStringList details{"first", "second", "未知错误"};
    for (int i = 0; i < 3; ++i) {
        const SeenBox& box = boxes.seen()[static_cast<std::size_t>(i)];
        EXPECT_EQ(box.text, "操作失败：请关闭串口，重新打开后再试。");
        EXPECT_EQ(box.details, details[i]);
    }
}

TEST(ApplicationFailures, MayHappenWhileABoxIsOpen) {
    throwFromTheEventLoop(std::runtime_error("first"));
    ASSERT_TRUE(eventually([] { return QApplication::activeModalWidget() != nullptr; }));
    throwFromTheEventLoop(std::runtime_error("second"));
    QTest::qWait(50);
    EXPECT_EQ(openWindows<QMessageBox>().size(), 1U) << "boxes do not pile up";
    BoxAnswerer boxes;
    ASSERT_TRUE(boxes.waitFor(2));
    EXPECT_EQ(boxes.seen()[1].details, "second");
}
