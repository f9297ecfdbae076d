// Check-ups in the window, with a virtual camera.
#include "aids/checkupwindow.h"
#include "late/late.h"
#include "service/readings.h"
#include "tests/aids/findertest.h"
#include "tests/support/camerawindow.h"
#include "tests/support/printing.h"
#include "tests/support/windowactions.h"
#include "tests/support/workingdirectory.h"

#include <QCheckBox>
#include <QClipboard>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QThreadPool>

#include <gtest/gtest.h>

#include <random>

using namespace guitest;
using namespace findertest;
using namespace std::chrono_literals;

namespace {

class CheckupTest : public testing::Test, protected CameraWindow {
protected:
    CheckupTest() : CameraWindow(emulator::settingsForType(emulator::CameraType::ostra)) { open(); }
    ~CheckupTest() override {
        window.reset();
        QThreadPool::globalInstance()->waitForDone();
    }

    CheckupWindow& openCheckup() const {
        trigger(*window, "actionCheckup");
        return *openWindows<CheckupWindow>().at(0);
    }
    static void check(const CheckupWindow& checkup) {
        click(checkup, "btn_start");
        ASSERT_TRUE(hasEnded(checkup));
    }
    static QString verdict(const QWidget& checkup) { return text(checkup, "label_verdict"); }
    /// Verdict column of the row of this title.
    static QString verdictOf(const QWidget& checkup, const QString& title) {
        const auto* const table = find<QTableWidget>(checkup, "table_lines");
        for (int row = 0; row < table->rowCount(); ++row) {
            if (table->item(row, 0)->text() == title)
                return table->item(row, 2)->text();
        }
        return "(no such row)";
    }
    /// Chooses an application image; the camera will restart quickly after the upload.
    void chooseImage() {
        QFile image("app.bin");
        ASSERT_TRUE(image.open(QIODevice::WriteOnly) && image.write(QByteArray(3000, 'x')) == 3000);
        image.close();
        camera.withCamera([](emulator::VirtualCamera& each) { each.settings().updateRestartTime = 200ms; });
        const FileChooser chooser(QDir::current().filePath("app.bin"));
        click(*window, "btn_apppath");
        ASSERT_TRUE(eventually([&] { return text(*window, "label_apppath").endsWith("app.bin"); }));
    }
    void nameCamera(const std::string& serial) {
        camera.withCamera([&](emulator::VirtualCamera& each) { each.state().serialNumber = serial; });
    }
    QByteArray savedBy(const CheckupWindow& checkup, const char* button, const QString& name) const {
        const QString path = QDir::current().filePath(name);
        {
            const FileChooser chooser(path);
            click(checkup, button);
            EXPECT_TRUE(eventually([&] { return text(checkup, "label_saved").contains(name); }))
                << text(checkup, "label_saved").toStdString();
        }
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }
};

} // namespace

TEST_F(CheckupTest, ShowsEveryReadingAndOneVerdict) {
    const CheckupWindow& checkup = openCheckup();
    check(checkup);
    const auto* const table = find<QTableWidget>(checkup, "table_lines");
    EXPECT_EQ(static_cast<std::size_t>(table->rowCount()), service::readings().size() + 1) << "and the line";
    EXPECT_EQ(verdict(checkup), "结论：正常");
    EXPECT_EQ(verdictOf(checkup, "序列号"), "正常");
    EXPECT_EQ(verdictOf(checkup, "通信"), "正常");
    EXPECT_TRUE(statusText(*window).startsWith("一键检查：正常"));
    EXPECT_FALSE(table->item(0, 2)->icon().isNull());
}

TEST_F(CheckupTest, ShowsLinesWhileItReads) {
    fault("delay=150");
    const CheckupWindow& checkup = openCheckup();
    click(checkup, "btn_start");
    const auto* const table = find<QTableWidget>(checkup, "table_lines");
    EXPECT_TRUE(eventually([&] { return table->rowCount() == 2; }));
    EXPECT_FALSE(isEnabled(checkup, "btn_start"));
    EXPECT_FALSE(isEnabled(checkup, "btn_save"));
    EXPECT_TRUE(hasEnded(checkup));
}

TEST_F(CheckupTest, ChangesNothingInTheCamera) {
    const emulator::CameraState before = state();
    check(openCheckup());
    const emulator::CameraState after = state();
    EXPECT_EQ(before.serialNumber, after.serialNumber);
    EXPECT_EQ(before.properties, after.properties);
    EXPECT_EQ(before.pictures.size(), after.pictures.size());
    EXPECT_EQ(record().badFrames, 0U);
}

TEST_F(CheckupTest, WritesNoFileByItself) {
    const CheckupWindow& checkup = openCheckup();
    find<QCheckBox>(checkup, "cb_picture")->setChecked(true);
    check(checkup);
    EXPECT_EQ(QDir::current().entryList(QDir::Files), QStringList());
}

TEST_F(CheckupTest, TakesAPictureOnRequest) {
    const CheckupWindow& checkup = openCheckup();
    find<QCheckBox>(checkup, "cb_picture")->setChecked(true);
    check(checkup);
    EXPECT_EQ(verdict(checkup), "结论：正常");
    EXPECT_FALSE(find<QLabel>(checkup, "label_picture")->pixmap().isNull());
    EXPECT_EQ(state().pictures.size(), 1U);
}

TEST_F(CheckupTest, RefusedPictureIsOdd) {
    fault("refuse@capture");
    const CheckupWindow& checkup = openCheckup();
    find<QCheckBox>(checkup, "cb_picture")->setChecked(true);
    check(checkup);
    EXPECT_EQ(verdict(checkup), "结论：异常");
    EXPECT_TRUE(text(checkup, "label_picture").startsWith("没有拍到图片："));
}

TEST_F(CheckupTest, RefusedReadingFails) {
    fault("result=1@getSn");
    const CheckupWindow& checkup = openCheckup();
    check(checkup);
    EXPECT_EQ(verdict(checkup), "结论：失败");
    EXPECT_TRUE(verdictOf(checkup, "序列号").startsWith("失败："))
        << verdictOf(checkup, "序列号").toStdString();
}

TEST_F(CheckupTest, BrokenAnswerIsOdd) {
    fault("bad-check@getModelInfo");
    const CheckupWindow& checkup = openCheckup();
    check(checkup);
    EXPECT_EQ(verdictOf(checkup, "通信"), "异常");
    EXPECT_EQ(verdict(checkup), "结论：异常");
}

TEST_F(CheckupTest, SilentCameraIsNotInTheVisit) {
    fault("silent");
    const CheckupWindow& checkup = openCheckup();
    check(checkup);
    EXPECT_EQ(verdict(checkup), "没有应答，请检查接线、从机地址和波特率");
    EXPECT_EQ(text(checkup, "label_visit"), "本次服务：0 台");
    EXPECT_TRUE(find<QWidget>(*window, "link_search")->isVisible());
}

// --- the visit ---------------------------------------------------------------------------------------------

TEST_F(CheckupTest, VisitCollectsCameras) {
    const CheckupWindow& checkup = openCheckup();
    for (const char* const serial : {"A1", "B2", "C3"}) {
        nameCamera(serial);
        check(checkup);
    }
    EXPECT_EQ(text(checkup, "label_visit"), "本次服务：3 台");
    EXPECT_EQ(find<QTableWidget>(checkup, "table_visit")->item(2, 1)->text(), "C3");
}

TEST_F(CheckupTest, VisitKeepsTheLastOfASerialNumber) {
    const CheckupWindow& checkup = openCheckup();
    nameCamera("A1");
    check(checkup);
    nameCamera("B2");
    check(checkup);
    nameCamera("A1");
    fault("result=1@getModelInfo");
    check(checkup);
    EXPECT_EQ(text(checkup, "label_visit"), "本次服务：2 台");
    EXPECT_EQ(rows(checkup, "table_visit").size(), 2);
    EXPECT_EQ(find<QTableWidget>(checkup, "table_visit")->item(0, 2)->text(), "失败");
}

TEST_F(CheckupTest, VisitOutlivesItsWindow) {
    CheckupWindow& first = openCheckup();
    check(first);
    first.close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const CheckupWindow& second = openCheckup();
    EXPECT_EQ(text(second, "label_visit"), "本次服务：1 台");
    find<QTableWidget>(second, "table_visit")->selectRow(0);
    EXPECT_EQ(verdict(second), "结论：正常");
    EXPECT_TRUE(isEnabled(second, "btn_save"));
}

// --- handing over ------------------------------------------------------------------------------------------

TEST_F(CheckupTest, SavesTheFormatOfTheName) {
    const CheckupWindow& checkup = openCheckup();
    check(checkup);
    EXPECT_TRUE(savedBy(checkup, "btn_save", "one.pdf").startsWith("%PDF-"));
    EXPECT_TRUE(savedBy(checkup, "btn_save", "one.html").contains("结论：正常"));
    EXPECT_TRUE(savedBy(checkup, "btn_save", "one.csv").contains("SHELF000001"));
}

TEST_F(CheckupTest, SavesPdfWithoutAnExtension) {
    const CheckupWindow& checkup = openCheckup();
    check(checkup);
    const FileChooser chooser(QDir::current().filePath("plain"));
    click(checkup, "btn_save");
    EXPECT_TRUE(eventually([] { return QFileInfo("plain.pdf").size() > 0; }));
}

TEST_F(CheckupTest, TellsAFileThatCannotBeWritten) {
    const CheckupWindow& checkup = openCheckup();
    check(checkup);
    const FileChooser chooser(QDir::current().filePath("one.txt"));
    click(checkup, "btn_save");
    EXPECT_TRUE(eventually([&] {
        return text(checkup, "label_saved") == "报告文件的扩展名必须是 .html、.pdf、.json 或 .csv";
    })) << text(checkup, "label_saved").toStdString();
}

TEST_F(CheckupTest, SavesAVisitInOneFile) {
    const CheckupWindow& checkup = openCheckup();
    for (const char* const serial : {"A1", "B2"}) {
        nameCamera(serial);
        check(checkup);
    }
    const QByteArray page = savedBy(checkup, "btn_save_visit", "visit.html");
    EXPECT_TRUE(page.contains(">A1<"));
    EXPECT_TRUE(page.contains(">B2<"));
    const QByteArray table = savedBy(checkup, "btn_save_visit", "visit.csv");
    EXPECT_EQ(table.count("\"时间\""), 1);
    EXPECT_EQ(table.count("\"序列号\""), 2);
}

TEST_F(CheckupTest, CopiesATable) {
    const CheckupWindow& checkup = openCheckup();
    check(checkup);
    click(checkup, "btn_copy");
    const QString text = QGuiApplication::clipboard()->text();
    EXPECT_TRUE(text.contains("序列号\tSHELF000001\t正常\n")) << text.toStdString();
    EXPECT_TRUE(text.endsWith("结论：正常\n"));
}

// --- ends --------------------------------------------------------------------------------------------------

TEST_F(CheckupTest, PrintingAsksForThePrinter) {
    const CheckupWindow& checkup = openCheckup();
    check(checkup);
    click(checkup, "btn_print");
    const auto* const dialog = checkup.findChild<QDialog*>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_STREQ(dialog->metaObject()->className(), late::canPrint() ? "QPrintDialog" : "");
    EXPECT_TRUE(dialog->isVisible());
}

TEST_F(CheckupTest, StopEndsIt) {
    fault("delay=100");
    const CheckupWindow& checkup = openCheckup();
    click(checkup, "btn_start");
    ASSERT_TRUE(eventually([&] { return find<QTableWidget>(checkup, "table_lines")->rowCount() > 0; }));
    click(checkup, "btn_stop");
    ASSERT_TRUE(hasEnded(checkup));
    EXPECT_EQ(verdict(checkup), "检查没有做完：已中断");
    EXPECT_EQ(text(checkup, "label_visit"), "本次服务：0 台");
    EXPECT_FALSE(isEnabled(checkup, "btn_save"));
}

TEST_F(CheckupTest, StopEndsAnEndlessDownload) {
    fault("picture-size=-100@read");
    const CheckupWindow& checkup = openCheckup();
    find<QCheckBox>(checkup, "cb_picture")->setChecked(true);
    click(checkup, "btn_start");
    ASSERT_TRUE(eventually([&] { return record().count(0x09) > 0; }, 20000));
    click(checkup, "btn_stop");
    ASSERT_TRUE(hasEnded(checkup));
    EXPECT_EQ(verdict(checkup), "结论：异常");
    EXPECT_EQ(text(checkup, "label_picture"), "没有拍到图片：已中断");
}

TEST_F(CheckupTest, ClosingTheLinkEndsItAtAnyMoment) {
    fault("delay=20");
    std::mt19937 random(7);
    const CheckupWindow& checkup = openCheckup();
    find<QCheckBox>(checkup, "cb_picture")->setChecked(true);
    for (int round = 0; round < 8; ++round) {
        SCOPED_TRACE(round);
        click(checkup, "btn_start");
        QTest::qWait(static_cast<int>(random() % 1500));
        close();
        EXPECT_TRUE(isEnabled(checkup, "btn_start"));
        open();
    }
    clearFaults();
    check(checkup);
    EXPECT_EQ(verdict(checkup), "结论：正常");
}

TEST_F(CheckupTest, ClosingItsWindowEndsIt) {
    fault("delay=50");
    CheckupWindow& checkup = openCheckup();
    click(checkup, "btn_start");
    QTest::qWait(200);
    checkup.close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QThreadPool::globalInstance()->waitForDone();
    clearFaults();
    EXPECT_TRUE(eventually([this] {
        click(*window, "btn_heartbeat");
        return statusText(*window) == "测试心跳：完成";
    }));
}

TEST_F(CheckupTest, EndsForAnUpload) {
    fault("delay=100");
    ASSERT_NO_FATAL_FAILURE(chooseImage());
    const CheckupWindow& checkup = openCheckup();
    click(checkup, "btn_start");
    ASSERT_TRUE(eventually([&] { return find<QTableWidget>(checkup, "table_lines")->rowCount() > 0; }));
    BoxAnswerer boxes;
    click(*window, "btn_appupdate");
    EXPECT_TRUE(
        eventually([&] { return verdict(checkup).startsWith("检查没有做完：线路正忙（正在升级）"); }, 10000))
        << verdict(checkup).toStdString();
    ASSERT_TRUE(boxes.waitFor(1, 30000));
    EXPECT_EQ(boxes.seen()[0].text, "升级已完成，结果:true");
}

TEST_F(CheckupTest, GivesAnEndlessDownloadUpForAnUpload) {
    fault("picture-size=-100@read");
    ASSERT_NO_FATAL_FAILURE(chooseImage());
    const CheckupWindow& checkup = openCheckup();
    find<QCheckBox>(checkup, "cb_picture")->setChecked(true);
    click(checkup, "btn_start");
    ASSERT_TRUE(eventually([&] { return record().count(0x09) > 0; }, 20000));
    BoxAnswerer boxes;
    click(*window, "btn_appupdate");
    ASSERT_TRUE(boxes.waitFor(1, 30000));
    EXPECT_EQ(boxes.seen()[0].text, "升级已完成，结果:true");
    EXPECT_EQ(text(checkup, "label_picture"), "没有拍到图片：已中断");
}
