// Lessons through the window that lists them and the main windows that it opens.
#include "aids/manual.h"
#include "app/mainwindow.h"
#include "practice/practicewindow.h"
#include "tests/support/guitest.h"
#include "tests/support/printing.h"
#include "tests/support/stdoutcapture.h"

#include <QApplication>
#include <QComboBox>
#include <QDesktopServices>
#include <QFile>
#include <QListWidget>
#include <QMessageBox>
#include <QRadioButton>
#include <QTextBrowser>
#include <QTimer>
#include <QUrl>

#include <gtest/gtest.h>

using namespace guitest;
using emulator::VirtualCamera;

namespace {

const QString port = QStringLiteral("练习摄像头");

class Practice : public testing::Test {
protected:
    Practice() {
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        window.show();
    }

    void startLesson(int number) {
        find<QListWidget>(window, "list_lessons")->setCurrentRow(number - 1);
        click(window, "btn_start");
        ASSERT_NE(window.tool(), nullptr);
        ASSERT_TRUE(window.tool()->isVisible());
    }
    [[nodiscard]] MainWindow& tool() const { return *window.tool(); }
    void openPort() const {
        click(tool(), "btn_open");
        ASSERT_EQ(text(tool(), "btn_open"), "关闭串口");
    }
    void closePort() const {
        click(tool(), "btn_open");
        ASSERT_EQ(text(tool(), "btn_open"), "打开串口");
    }
    [[nodiscard]] bool heartbeat() const {
        click(tool(), "btn_heartbeat");
        return find<QRadioButton>(tool(), "rb_heartbeat")->isChecked();
    }
    void readVersion() const {
        click(tool(), "btn_appversion");
        ASSERT_TRUE(eventually([this] { return text(tool(), "tv_appversion").startsWith("SDK版本:"); }));
        ASSERT_TRUE(eventually([this] { return isEnabled(tool(), "btn_appupdate"); }));
    }
    void startUpload(int size) const {
        QFile file("image.bin");
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(size, 'x'));
        file.close();
        const FileChooser chooser(QFileInfo(file).absoluteFilePath());
        click(tool(), "btn_apppath");
        click(tool(), "btn_appupdate");
    }
    /// Waits for the words in the lesson's steps.
    [[nodiscard]] bool hears(const QString& words) const {
        return eventually([&] { return steps().contains(words); }, 20000);
    }
    [[nodiscard]] QString steps() const { return find<QTextBrowser>(window, "text_steps")->toPlainText(); }
    [[nodiscard]] bool showsList() const { return find<QListWidget>(window, "list_lessons")->isVisible(); }
    [[nodiscard]] QStringList listedPorts() const {
        QStringList ports;
        const auto* const choice = find<QComboBox>(tool(), "sel_ports");
        for (int row = 0; row < choice->count(); ++row)
            ports.append(choice->itemText(row));
        return ports;
    }

    StdoutCapture output;
    DebugLog log;
    PracticeWindow window;
};

} // namespace

TEST_F(Practice, ListsLessonsAndWhatOneLearns) {
    const auto* const list = find<QListWidget>(window, "list_lessons");
    ASSERT_EQ(list->count(), static_cast<int>(emulator::lessons().size()) + 1);
    for (int row = 0; row + 1 < list->count(); ++row) {
        const emulator::Lesson& lesson = emulator::lessons()[static_cast<std::size_t>(row)];
        EXPECT_EQ(list->item(row)->text(),
                  QStringLiteral("第 %1 课：%2\n%3").arg(row + 1).arg(lesson.title, lesson.learns));
    }
    EXPECT_TRUE(list->item(list->count() - 1)->text().startsWith("自由练习"));
}

TEST_F(Practice, EveryLessonStarts) {
    const int count = static_cast<int>(emulator::lessons().size());
    for (int number = 1; number <= count; ++number) {
        startLesson(number);
        EXPECT_EQ(listedPorts(), QStringList(port));
        const QString introduction = emulator::lessons()[static_cast<std::size_t>(number - 1)].introduction;
        EXPECT_EQ(steps(), introduction);
        openPort();
        tool().close();
        ASSERT_TRUE(eventually([this] { return showsList(); }));
    }
}

TEST_F(Practice, UploadOfALessonEndsIt) {
    startLesson(8);
    openPort();
    readVersion();
    ASSERT_TRUE(hears("再点击“App固件升级”"));
    BoxAnswerer boxes;
    startUpload(100000);
    ASSERT_TRUE(hears("文件完整到达"));
    ASSERT_TRUE(boxes.waitFor(1, 60000));
    EXPECT_EQ(boxes.seen()[0].text, "升级已完成，结果:true");
    readVersion();
    EXPECT_TRUE(hears("这一课完成了。"));
}

TEST_F(Practice, UploadTakesTheTimeOfTheRate) {
    constexpr int seconds = 3;
    startLesson(1);
    openPort();
    startUpload(seconds * 46080);
    const auto uploads = [this] {
        return window.camera()->withCamera([](VirtualCamera& camera) { return camera.record().uploads; });
    };
    ASSERT_TRUE(eventually([&] { return !uploads().empty() && uploads().back().firstByteAt; }, 10000));
    const emulator::Time began = *uploads().back().firstByteAt;
    ASSERT_TRUE(eventually([&] { return uploads().back().digestRight; }, 20000));
    EXPECT_GE(window.camera()->now() - began, std::chrono::milliseconds(seconds * 1000 - 100));
    BoxAnswerer boxes;
    EXPECT_TRUE(boxes.waitFor(1, 60000));
}

TEST_F(Practice, LoosePlugTakesThePortAway) {
    startLesson(4);
    openPort();
    EXPECT_TRUE(heartbeat());
    EXPECT_FALSE(heartbeat());
    EXPECT_TRUE(heartbeat());
    EXPECT_FALSE(heartbeat());
    ASSERT_TRUE(hears("插头现在完全脱开了"));
    EXPECT_FALSE(heartbeat());
    ASSERT_TRUE(hears("插头已经插紧"));
    closePort();
    openPort();
    EXPECT_TRUE(heartbeat());
    EXPECT_TRUE(hears("这一课完成了。"));
}

TEST_F(Practice, WrongRateIsNoiseForTheCamera) {
    startLesson(3);
    openPort();
    EXPECT_FALSE(heartbeat());
    EXPECT_TRUE(hears("摄像头收到的是乱码"));
    closePort();
    find<QComboBox>(tool(), "sel_baund")->setCurrentText("230400");
    openPort();
    EXPECT_TRUE(heartbeat());
    EXPECT_TRUE(hears("这一课完成了。"));
}

TEST_F(Practice, NextLessonHasAMainWindowOfItsOwn) {
    startLesson(1);
    openPort();
    EXPECT_TRUE(heartbeat());
    click(window, "btn_next");
    EXPECT_EQ(openWindows<MainWindow>().size(), 1U);
    EXPECT_EQ(text(tool(), "btn_open"), "打开串口");
    EXPECT_EQ(text(window, "label_title"), "第 2 课：从机地址不对");
    openPort();
    EXPECT_FALSE(heartbeat());
}

TEST_F(Practice, LessonStartsAgain) {
    startLesson(1);
    openPort();
    EXPECT_TRUE(heartbeat());
    ASSERT_TRUE(hears("灯是绿的"));
    click(window, "btn_again");
    EXPECT_EQ(steps(), emulator::lessons()[0].introduction);
}

TEST_F(Practice, OtherLessonIsChosenFromTheListWhileOneRuns) {
    startLesson(1);
    click(window, "btn_list");
    EXPECT_TRUE(showsList());
    EXPECT_TRUE(tool().isVisible());
    startLesson(5);
    EXPECT_EQ(text(window, "label_title"), "第 5 课：摄像头拒绝设置");
    EXPECT_EQ(openWindows<MainWindow>().size(), 1U);
}

TEST_F(Practice, FreePracticeHasTheChosenType) {
    const int row = static_cast<int>(emulator::lessons().size());
    EXPECT_FALSE(isEnabled(window, "sel_type"));
    find<QListWidget>(window, "list_lessons")->setCurrentRow(row);
    EXPECT_TRUE(isEnabled(window, "sel_type"));
    find<QComboBox>(window, "sel_type")->setCurrentText("Quenta静态");
    click(window, "btn_start");
    EXPECT_EQ(window.camera()->withCamera([](VirtualCamera& camera) { return camera.settings().type; }),
              emulator::CameraType::quenta);
    EXPECT_TRUE(steps().contains("选择“Quenta静态”"));
    EXPECT_FALSE(isEnabled(window, "btn_next"));
}

TEST_F(Practice, ClosingTheMainWindowShowsTheList) {
    startLesson(2);
    tool().close();
    EXPECT_TRUE(eventually([this] { return showsList(); }));
    EXPECT_EQ(window.tool(), nullptr);
    EXPECT_EQ(window.camera(), nullptr);
}

TEST_F(Practice, ClosingTheListEndsTheProgram) {
    startLesson(1);
    openPort();
    QTimer::singleShot(0, &window, &QWidget::close);
    QTimer::singleShot(5000, &window, [] { QApplication::exit(1); });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_EQ(openWindows<MainWindow>().size(), 0U);
}

TEST_F(Practice, RunningUploadIsKeptIfTheUserWantsIt) {
    startLesson(1);
    openPort();
    startUpload(300000);
    ASSERT_TRUE(eventually([this] {
        return window.camera()->withCamera([](VirtualCamera& camera) { return camera.uploading(); });
    }));
    {
        BoxAnswerer boxes(QMessageBox::No);
        EXPECT_FALSE(window.close());
        click(window, "btn_next");
        EXPECT_EQ(boxes.seen().size(), 2U);
    }
    EXPECT_EQ(text(window, "label_title"), "第 1 课：正常的摄像头");
    BoxAnswerer boxes(QMessageBox::Yes);
    EXPECT_TRUE(window.close());
}

namespace {

/// Takes the place of the system's program for pages.
class PageViewer final : public QObject {
    Q_OBJECT

public:
    PageViewer() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "show"); }
    ~PageViewer() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    QStringList shown;

public slots:
    void show(const QUrl& url) { shown.append(url.toLocalFile()); }
};

} // namespace

TEST_F(Practice, ManualOpensByKeyAndButton) {
    const QString guide = firstFile(manualPlaces(QCoreApplication::applicationDirPath()));
    if (guide.isEmpty())
        GTEST_SKIP() << "built outside of the sources";
    PageViewer viewer;
    QApplication::setActiveWindow(&window);
    QTest::keyClick(&window, Qt::Key_F1);
    click(window, "btn_manual");
    EXPECT_EQ(viewer.shown, QStringList(2, guide));
}

#include "practicewindow_test.moc"
