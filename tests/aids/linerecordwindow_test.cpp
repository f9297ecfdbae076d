// The window of the line's log and the mark, on the recording library.
#include "aids/linerecordwindow.h"
#include "dialogs/setsn.h"
#include "pictures/piclist.h"
#include "tests/support/printing.h"
#include "tests/support/recordedwindow.h"
#include "tests/support/stdoutcapture.h"
#include "tests/support/windowactions.h"
#include "trace/recordingfile.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QFile>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTableView>

#include <gtest/gtest.h>

using namespace guitest;

namespace {

const char* const heartbeatAnswer = "AA 5A 01 01 01 00 00 00 01 7F EA";
const char* const badAnswer = "AA 5A 01 01 01 00 00 00 01 00 00";

class LineRecord : public RecordedWindow {
protected:
    LineRecord() { QApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }

    void openLink() { click(*window, "btn_open"); }
    void heartbeat(const char* answer = heartbeatAnswer) {
        if (answer != nullptr)
            fake_serial::willRead(fake_serial::bytes(answer));
        click(*window, "btn_heartbeat");
    }
    /// Opens the link and reads a serial number.
    void readSerialNumber() {
        openLink();
        fake_serial::willRead(fake_serial::bytes("AA 5A 01 02 04 00 00 00 03 00 41 31 8A EF"));
        trigger(*window, "actionSnSet");
        click(*openWindows<SetSN>().at(0), "btn_getsn");
    }
    LineRecordWindow& openWindow() {
        trigger(*window, "actionLineRecord");
        return *openWindows<LineRecordWindow>().at(0);
    }
    static QTableView& table(const QWidget& record) { return *find<QTableView>(record, "table"); }
    static int rows(const QWidget& record) { return table(record).model()->rowCount(); }
    static QString cell(const QWidget& record, int row, int column) {
        return table(record).model()->index(row, column).data().toString();
    }
    /// Saves the shown record and returns the message.
    static QString saveTo(const QWidget& record, const char* name) {
        const QString path = QDir::current().filePath(name);
        const FileChooser chooser(path);
        click(record, "btn_save");
        const QString message = "已保存 " + path;
        EXPECT_TRUE(eventually([&] { return text(record, "label_summary") == message; }));
        return message;
    }
    static bool waitForRows(const QWidget& record, int count) {
        return eventually([&] { return rows(record) == count; });
    }
    QString mark() const { return text(*window, "label_quality"); }

    StdoutCapture out;
};

} // namespace

TEST_F(LineRecord, ShowsWhatPassedBeforeItWasOpened) {
    openLink();
    heartbeat();
    LineRecordWindow& record = openWindow();
    ASSERT_EQ(rows(record), 2);
    EXPECT_EQ(cell(record, 0, LineRecordModel::directionColumn), "发送");
    EXPECT_EQ(cell(record, 0, LineRecordModel::wordsColumn),
              "心跳（01），地址 01，数据 1 字节，校验正确：00");
    EXPECT_EQ(cell(record, 0, LineRecordModel::sizeColumn), "11");
    EXPECT_EQ(cell(record, 1, LineRecordModel::directionColumn), "接收");
    EXPECT_EQ(cell(record, 1, LineRecordModel::wordsColumn),
              "应答：心跳（01），地址 01，数据 1 字节，校验正确：摄像头在线");
    EXPECT_EQ(cell(record, 1, LineRecordModel::oddColumn), "");
}

TEST_F(LineRecord, SendsNothing) {
    openLink();
    openWindow();
    QTest::qWait(500);
    EXPECT_TRUE(fake_serial::writes().empty());
}

TEST_F(LineRecord, OpensOnce) {
    openWindow();
    trigger(*window, "actionLineRecord");
    EXPECT_EQ(openWindows<LineRecordWindow>().size(), 1U);
}

TEST_F(LineRecord, FollowsTheLine) {
    LineRecordWindow& record = openWindow();
    EXPECT_EQ(text(record, "label_summary"), "还没有记录，请打开串口");
    openLink();
    heartbeat();
    EXPECT_TRUE(waitForRows(record, 2));
    EXPECT_TRUE(
        eventually([&] { return text(record, "label_summary") == "COM3，460800：共 2 条，显示 2 条"; }));
}

TEST_F(LineRecord, HoldsWhileTheRecordGoesOn) {
    openLink();
    heartbeat();
    LineRecordWindow& record = openWindow();
    click(record, "cb_follow");
    heartbeat();
    EXPECT_TRUE(eventually([&] { return text(record, "label_summary").contains("共 4 条"); }));
    EXPECT_EQ(rows(record), 2);
    click(record, "cb_follow");
    EXPECT_EQ(rows(record), 4);
}

TEST_F(LineRecord, ScrollingUpHolds) {
    openLink();
    for (int i = 0; i < 40; ++i)
        heartbeat();
    LineRecordWindow& record = openWindow();
    QTest::keyClick(&table(record), Qt::Key_Home);
    table(record).verticalScrollBar()->triggerAction(QAbstractSlider::SliderPageStepSub);
    EXPECT_FALSE(find<QCheckBox>(record, "cb_follow")->isChecked());
}

TEST_F(LineRecord, ScrollsToTheNewestRow) {
    openLink();
    LineRecordWindow& record = openWindow();
    for (int i = 0; i < 40; ++i)
        heartbeat();
    EXPECT_TRUE(waitForRows(record, 80));
    const QScrollBar* const bar = table(record).verticalScrollBar();
    EXPECT_GT(bar->maximum(), 0);
    EXPECT_EQ(bar->value(), bar->maximum());
    EXPECT_TRUE(find<QCheckBox>(record, "cb_follow")->isChecked());
}

TEST_F(LineRecord, ShowsEachKindOfOddAnswer) {
    openLink();
    LineRecordWindow& record = openWindow();
    heartbeat(badAnswer);
    heartbeat("AA 5A 01 05 01 00 00 00 00 FF FC");
    heartbeat("EE EE AA 5A 01 01 01 00 00 00 01 7F EA");
    heartbeat(nullptr);
    heartbeat("AA 5A 01 01 01 00 00 00 01 7F EA AA 5A 01 01 01 00 00 00 01 7F EA");
    find<QCheckBox>(record, "cb_odd")->click();
    ASSERT_TRUE(waitForRows(record, 6));
    const QStringList expected{"校验码错误",        "命令不符", "杂散字节",
                               "前有 2 个杂散字节", "没有应答", "迟到或重复"};
    for (int row = 0; row < 6; ++row)
        EXPECT_EQ(cell(record, row, LineRecordModel::oddColumn), expected.at(row));
}

TEST_F(LineRecord, FiltersByText) {
    openLink();
    heartbeat();
    click(*window, "btn_modelinfo");
    LineRecordWindow& record = openWindow();
    const int all = rows(record);
    find<QLineEdit>(record, "et_filter")->setText("模型");
    ASSERT_TRUE(waitForRows(record, 1));
    EXPECT_TRUE(cell(record, 0, LineRecordModel::wordsColumn).startsWith("读取模型信息"));
    find<QLineEdit>(record, "et_filter")->setText("nothing like it");
    EXPECT_TRUE(waitForRows(record, 0));
    find<QLineEdit>(record, "et_filter")->clear();
    EXPECT_TRUE(waitForRows(record, all));
}

TEST_F(LineRecord, FilterAppliesToNewRows) {
    openLink();
    LineRecordWindow& record = openWindow();
    find<QCheckBox>(record, "cb_odd")->click();
    heartbeat();
    heartbeat(badAnswer);
    EXPECT_TRUE(waitForRows(record, 1));
    EXPECT_EQ(cell(record, 0, LineRecordModel::oddColumn), "校验码错误");
}

TEST_F(LineRecord, CopiesSelectedRows) {
    openLink();
    heartbeat();
    LineRecordWindow& record = openWindow();
    EXPECT_FALSE(isEnabled(record, "btn_copytext"));
    table(record).selectAll();
    click(record, "btn_copyhex");
    EXPECT_EQ(QApplication::clipboard()->text(),
              "AA 5A 01 01 01 00 00 00 00 5E FA\nAA 5A 01 01 01 00 00 00 01 7F EA");
    click(record, "btn_copytext");
    const QStringList lines = QApplication::clipboard()->text().split('\n');
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[1].split('\t').size(), 6);
    EXPECT_EQ(lines[1].split('\t')[2], cell(record, 1, LineRecordModel::wordsColumn));
}

TEST_F(LineRecord, CopiesByKey) {
    openLink();
    heartbeat();
    LineRecordWindow& record = openWindow();
    record.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&record));
    table(record).selectRow(0);
    table(record).setFocus();
    QApplication::clipboard()->clear();
    QTest::keyClick(&table(record), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), "AA 5A 01 01 01 00 00 00 00 5E FA");
}

TEST_F(LineRecord, ShowsTheBytesOfTheCurrentRow) {
    openLink();
    heartbeat();
    LineRecordWindow& record = openWindow();
    table(record).selectRow(1);
    const QString shown = find<QPlainTextEdit>(record, "text_bytes")->toPlainText();
    EXPECT_TRUE(shown.startsWith("应答：心跳"));
    EXPECT_TRUE(shown.contains("0000  AA 5A 01 01 01 00 00 00 01 7F EA"));
}

TEST_F(LineRecord, SavesARecordingWithoutSerialNumbers) {
    readSerialNumber();
    LineRecordWindow& record = openWindow();
    ASSERT_TRUE(waitForRows(record, 2));
    const QString path = QDir::current().filePath("line.rec");
    {
        const FileChooser chooser(path);
        click(record, "btn_save");
        ASSERT_TRUE(eventually([&] { return text(record, "label_summary") == "已保存 " + path; }));
    }
    const trace::Recording saved = trace::loadRecording(path.toStdString());
    EXPECT_TRUE(saved.head.serialsBlanked);
    EXPECT_EQ(saved.head.device, "COM3");
    ASSERT_EQ(saved.entries.size(), 2U);
    EXPECT_EQ(saved.entries[1].bytes[10], 'X');
}

TEST_F(LineRecord, SavesSerialNumbersOnRequest) {
    readSerialNumber();
    LineRecordWindow& record = openWindow();
    ASSERT_TRUE(waitForRows(record, 2));
    find<QCheckBox>(record, "cb_blank")->click();
    const QString path = QDir::current().filePath("line.rec");
    const FileChooser chooser(path);
    click(record, "btn_save");
    ASSERT_TRUE(eventually([&] { return QFile::exists(path); }));
    const trace::Recording saved = trace::loadRecording(path.toStdString());
    EXPECT_FALSE(saved.head.serialsBlanked);
    EXPECT_EQ(saved.entries[1].bytes[10], 'A');
}

TEST_F(LineRecord, NewRowsLeaveTheSavedMessage) {
    openLink();
    heartbeat();
    LineRecordWindow& record = openWindow();
    const QString message = saveTo(record, "line.rec");
    heartbeat();
    ASSERT_TRUE(waitForRows(record, 4));
    QTest::qWait(1000);
    EXPECT_EQ(text(record, "label_summary"), message);
}

TEST_F(LineRecord, SavedMessageEndsAfterAWhile) {
    openLink();
    heartbeat();
    LineRecordWindow& record = openWindow();
    saveTo(record, "line.rec");
    EXPECT_TRUE(eventually(
        [&] { return text(record, "label_summary") == "COM3，460800：共 2 条，显示 2 条"; }, 20000));
}

TEST_F(LineRecord, HoldingReplacesTheSavedMessage) {
    openLink();
    heartbeat();
    LineRecordWindow& record = openWindow();
    saveTo(record, "line.rec");
    click(record, "cb_follow");
    EXPECT_TRUE(text(record, "label_summary").endsWith("画面已停住，勾选“跟随”看最新"));
}

TEST_F(LineRecord, FilteringReplacesTheSavedMessage) {
    openLink();
    heartbeat();
    LineRecordWindow& record = openWindow();
    saveTo(record, "line.rec");
    click(record, "cb_odd");
    EXPECT_EQ(text(record, "label_summary"), "COM3，460800：共 2 条，显示 0 条");
}

TEST_F(LineRecord, TellsThatItCannotSave) {
    openLink();
    heartbeat();
    LineRecordWindow& record = openWindow();
    BoxAnswerer boxes;
    const FileChooser chooser("/proc/line.rec");
    click(record, "btn_save");
    ASSERT_TRUE(boxes.waitFor(1));
    EXPECT_EQ(boxes.seen().at(0).text, "没有保存，请换一个文件夹");
    EXPECT_FALSE(boxes.seen().at(0).details.isEmpty());
}

TEST_F(LineRecord, OpensARecordingAndReturnsToTheLine) {
    openLink();
    heartbeat();
    LineRecordWindow& record = openWindow();
    const QString path = QDir::current().filePath("two.rec");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("camera line recording 1\nstart 2026-11-21T09:00:05.123Z\ndevice COM9\nbaud 9600\noffset 0\n"
               "serials kept\n  5.000 tool AA 5A 01 01 01 00 00 00 00 5E FA\n");
    file.close();
    {
        const FileChooser chooser(path);
        click(record, "btn_openfile");
        ASSERT_TRUE(eventually([&] { return record.windowTitle() == "通信记录 - two.rec"; }));
    }
    EXPECT_EQ(rows(record), 2) << "the request and its missing answer";
    EXPECT_EQ(text(record, "label_summary"), "COM9，9600：共 2 条，显示 2 条");
    EXPECT_EQ(cell(record, 0, LineRecordModel::timeColumn),
              QDateTime::fromString("2026-11-21T09:00:05.128Z", Qt::ISODateWithMs)
                  .toLocalTime()
                  .toString("HH:mm:ss.zzz"));
    EXPECT_FALSE(isEnabled(record, "cb_follow"));
    heartbeat();
    QTest::qWait(400);
    EXPECT_EQ(rows(record), 2) << "the line does not change a recording";
    click(record, "btn_live");
    EXPECT_EQ(record.windowTitle(), "通信记录");
    EXPECT_EQ(rows(record), 4);
}

TEST_F(LineRecord, TellsThatAFileIsNoRecording) {
    LineRecordWindow& record = openWindow();
    const QString path = QDir::current().filePath("other.rec");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("something else\n");
    file.close();
    BoxAnswerer boxes;
    const FileChooser chooser(path);
    click(record, "btn_openfile");
    ASSERT_TRUE(boxes.waitFor(1));
    EXPECT_EQ(boxes.seen().at(0).text, "这不是完整的录制文件，请重新选择");
    EXPECT_FALSE(boxes.seen().at(0).details.isEmpty());
    EXPECT_EQ(record.windowTitle(), "通信记录");
}

TEST_F(LineRecord, ClosedLinkKeepsItsRecord) {
    openLink();
    heartbeat();
    LineRecordWindow& record = openWindow();
    click(*window, "btn_open");
    QTest::qWait(300);
    EXPECT_EQ(rows(record), 2);
}

TEST_F(LineRecord, NextLinkBeginsANewRecord) {
    openLink();
    heartbeat();
    LineRecordWindow& record = openWindow();
    click(*window, "btn_open");
    openLink();
    EXPECT_TRUE(waitForRows(record, 0));
    heartbeat();
    EXPECT_TRUE(waitForRows(record, 2));
}

TEST_F(LineRecord, HeldWindowKeepsTheOldRecord) {
    openLink();
    heartbeat();
    LineRecordWindow& record = openWindow();
    click(record, "cb_follow");
    click(*window, "btn_open");
    openLink();
    QTest::qWait(300);
    EXPECT_EQ(rows(record), 2);
    table(record).selectAll();
    click(record, "btn_copyhex");
    EXPECT_EQ(QApplication::clipboard()->text().count('\n'), 1);
}

TEST_F(LineRecord, ScreenReaderReadsRows) {
    openLink();
    heartbeat();
    LineRecordWindow& record = openWindow();
    QAccessibleInterface* const all = QAccessible::queryAccessibleInterface(&table(record));
    ASSERT_NE(all, nullptr);
    EXPECT_EQ(all->text(QAccessible::Name), "通信记录");
    ASSERT_NE(all->tableInterface(), nullptr);
    EXPECT_EQ(all->tableInterface()->rowCount(), 2);
    EXPECT_EQ(all->tableInterface()->cellAt(1, LineRecordModel::wordsColumn)->text(QAccessible::Name),
              cell(record, 1, LineRecordModel::wordsColumn));
}

TEST_F(LineRecord, SubtractsThePictureOffset) {
    openLink();
    LineRecordWindow& record = openWindow();
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, &answer, [] {
        if (auto* const input = qobject_cast<QInputDialog*>(QApplication::activeModalWidget())) {
            input->setIntValue(10);
            input->accept();
        }
    });
    answer.start(10);
    trigger(*window, "actionOriginCmdExtraAdd");
    trigger(*window, "actionPicInfo");
    click(*openWindows<PicList>().at(0), "btn_refresh");
    ASSERT_TRUE(eventually([&] { return rows(record) > 0; }));
    EXPECT_TRUE(cell(record, 0, LineRecordModel::wordsColumn).startsWith("图片列表（11）"));
}

class QualityMarkTest : public LineRecord {};

TEST_F(QualityMarkTest, IsEmptyBeforeTheFirstAnswer) {
    EXPECT_FALSE(find<QLabel>(*window, "label_quality")->isVisible());
    openLink();
    EXPECT_FALSE(find<QLabel>(*window, "label_quality")->isVisible());
}

TEST_F(QualityMarkTest, TellsOfGoodAnswers) {
    openLink();
    heartbeat();
    EXPECT_TRUE(eventually([this] { return mark() == "信号良好"; }));
    EXPECT_TRUE(find<QLabel>(*window, "label_quality")->isVisible());
    EXPECT_TRUE(
        find<QLabel>(*window, "label_quality")->toolTip().startsWith("最近 1 次命令：应答 1，没有应答 0，"));
}

TEST_F(QualityMarkTest, TellsOfBrokenAnswers) {
    openLink();
    heartbeat();
    heartbeat(badAnswer);
    EXPECT_TRUE(eventually([this] { return mark() == "有干扰"; }));
    EXPECT_TRUE(find<QLabel>(*window, "label_quality")->toolTip().contains("损坏 1"));
}

TEST_F(QualityMarkTest, TellsOfMissingAnswers) {
    openLink();
    heartbeat(nullptr);
    EXPECT_TRUE(eventually([this] { return mark() == "无应答"; }));
}

TEST_F(QualityMarkTest, DoesNotChangeTheLinkText) {
    openLink();
    const QString before = text(*window, "label_link");
    heartbeat(badAnswer);
    EXPECT_TRUE(eventually([this] { return mark() == "有干扰"; }));
    EXPECT_EQ(text(*window, "label_link"), before);
    EXPECT_EQ(before, "COM3，460800，从机地址 1");
}

TEST_F(QualityMarkTest, ClosedLinkHasNone) {
    openLink();
    heartbeat();
    EXPECT_TRUE(eventually([this] { return mark() == "信号良好"; }));
    click(*window, "btn_open");
    EXPECT_FALSE(find<QLabel>(*window, "label_quality")->isVisible());
}
