// The window of the line's log with a virtual camera: faults, uploads, ends of the link, replay.
#include "aids/linerecordwindow.h"
#include "emulator/line/replayfront.h"
#include "emulator/line/toolline.h"
#include "tests/support/uploadwindow.h"
#include "tests/support/windowactions.h"
#include "trace/recordingfile.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTableView>
#include <QThreadPool>

#include <gtest/gtest.h>

#include <fstream>
#include <random>

using namespace guitest;

namespace {

class RecordAndCamera : public UploadWindow {
protected:
    LineRecordWindow& openRecord() {
        trigger(*window, "actionLineRecord");
        return *openWindows<LineRecordWindow>().at(0);
    }
    static int rows(const QWidget& record) { return find<QTableView>(record, "table")->model()->rowCount(); }
    static QString cell(const QWidget& record, int row, int column) {
        return find<QTableView>(record, "table")->model()->index(row, column).data().toString();
    }
    /// The column's texts, without empty ones.
    static QStringList texts(const QWidget& record, int column) {
        QStringList all;
        for (int row = 0; row < rows(record); ++row) {
            if (const QString text = cell(record, row, column); !text.isEmpty())
                all.append(text);
        }
        return all;
    }
    static bool has(const QWidget& record, int column, const QString& beginning) {
        for (const QString& text : texts(record, column)) {
            if (text.startsWith(beginning))
                return true;
        }
        return false;
    }
    void heartbeatWith(const char* description) {
        fault(description);
        click(*window, "btn_heartbeat");
        clearFaults();
    }
};

struct OddAnswer {
    const char* fault;
    const char* words;

    friend void PrintTo(const OddAnswer& odd, std::ostream* out) { *out << odd.fault; }
};

class OddAnswers : public RecordAndCamera, public testing::WithParamInterface<OddAnswer> {};

} // namespace

TEST_P(OddAnswers, AreToldAndMarked) {
    open();
    LineRecordWindow& record = openRecord();
    find<QCheckBox>(record, "cb_odd")->click();
    heartbeatWith(GetParam().fault);
    click(*window, "btn_heartbeat");
    EXPECT_TRUE(eventually([&] { return has(record, LineRecordModel::oddColumn, GetParam().words); }))
        << texts(record, LineRecordModel::oddColumn).join("; ").toStdString();
}

INSTANTIATE_TEST_SUITE_P(Faults, OddAnswers,
                         testing::Values(OddAnswer{"bad-check@heartbeat", "校验码错误"},
                                         OddAnswer{"zero-check@heartbeat", "校验码错误"},
                                         OddAnswer{"command=5@heartbeat", "命令不符"},
                                         OddAnswer{"before=EEEEEE@heartbeat", "前有 3 个杂散字节"},
                                         OddAnswer{"stray=2@heartbeat", "杂散字节"},
                                         OddAnswer{"silent@heartbeat", "没有应答"},
                                         OddAnswer{"truncate=4@heartbeat", "不完整"}),
                         [](const auto& test) { return "Fault" + std::to_string(test.index); });

TEST_F(RecordAndCamera, UploadIsAnnouncementDataAndVerdict) {
    open();
    LineRecordWindow& record = openRecord();
    start(appUpload, 30000);
    EXPECT_EQ(outcome(), "升级已完成，结果:true");
    EXPECT_TRUE(eventually([&] {
        return has(record, LineRecordModel::wordsColumn, "升级数据 30000 / 30000 字节") &&
               has(record, LineRecordModel::wordsColumn, "App 固件升级请求") &&
               has(record, LineRecordModel::wordsColumn, "应答：App 固件升级请求");
    })) << texts(record, LineRecordModel::wordsColumn).join("\n").toStdString();
}

TEST_F(RecordAndCamera, UploadShowsItsProgress) {
    camera.setPace(46080);
    open();
    LineRecordWindow& record = openRecord();
    BoxAnswerer boxes(QMessageBox::Yes);
    start(appUpload, 100000);
    EXPECT_TRUE(
        eventually([&] { return text(record, "label_summary").contains("；正在发送升级数据"); }, 20000));
    EXPECT_TRUE(record.isEnabled()) << "it does not use the line";
    close();
    EXPECT_TRUE(eventually([&] { return has(record, LineRecordModel::oddColumn, "没有发完"); }));
}

TEST_F(RecordAndCamera, SurvivesEndsOfTheLinkAtRandomMoments) {
    std::mt19937 source(20261122);
    camera.setPace(46080);
    for (int i = 0; i < 6; ++i) {
        open();
        LineRecordWindow& record = openRecord();
        for (const char* const button : {"btn_modelinfo", i % 2 == 0 ? "btn_appversion" : "btn_takepic"})
            click(*window, button);
        QTest::qWait(static_cast<int>(source() % 700));
        close();
        EXPECT_TRUE(eventually([&] { return rows(record) > 0; }));
        QTest::qWait(300);
        if (i % 2 == 0)
            record.close();
    }
    QThreadPool::globalInstance()->waitForDone();
    open();
    EXPECT_TRUE(eventually([this] {
        click(*window, "btn_heartbeat");
        return text(*window, "label_quality") == "信号良好";
    }));
}

TEST_F(RecordAndCamera, MainWindowMayEndAtRandomMoments) {
    std::mt19937 source(20261123);
    for (int i = 0; i < 4; ++i) {
        open();
        openRecord();
        click(*window, "btn_appversion");
        QTest::qWait(static_cast<int>(source() % 300));
        renewWindow();
        EXPECT_TRUE(openWindows<LineRecordWindow>().empty());
    }
}

TEST_F(RecordAndCamera, RemovedAdapterLeavesTheRecord) {
    open();
    LineRecordWindow& record = openRecord();
    click(*window, "btn_heartbeat");
    ASSERT_TRUE(eventually([&] { return rows(record) == 2; }));
    camera.vanish();
    click(*window, "btn_heartbeat");
    click(*window, "btn_open");
    EXPECT_GE(rows(record), 2);
}

TEST_F(RecordAndCamera, ReplayOfASavedRecordingAnswersAlike) {
    open();
    click(*window, "btn_heartbeat");
    click(*window, "btn_modelinfo");
    const QString model = text(*window, "label_modelinfo");
    EXPECT_NE(model, "模型信息:");
    LineRecordWindow& record = openRecord();
    const QString path = QDir::current().filePath("line.rec");
    {
        const FileChooser chooser(path);
        click(record, "btn_save");
        ASSERT_TRUE(eventually([&] { return QFile::exists(path); }));
    }
    close();

    emulator::ReplayCamera replay(trace::loadRecording(path.toStdString()));
    const auto line = emulator::openToolLine({});
    const emulator::ReplayFront front(replay, *line);
    choosePort(*window, QString::fromStdString(line->name()));
    click(*window, "btn_open");
    find<QLabel>(*window, "label_modelinfo")->clear();
    click(*window, "btn_heartbeat");
    click(*window, "btn_modelinfo");
    EXPECT_EQ(text(*window, "label_modelinfo"), model);
    click(*window, "btn_open");
}
