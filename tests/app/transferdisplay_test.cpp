// Progress in the status bar: numbers, texts, a running upload.
#include "app/transferdisplay.h"
#include "tests/support/uploadwindow.h"

#include <QLabel>
#include <QProgressBar>
#include <QStatusBar>
#include <QToolButton>

using namespace guitest;
using namespace std::chrono_literals;
using Phase = TransferProgress::Phase;

namespace {

TransferSnapshot sending(std::uint64_t startOffset, std::uint64_t done, std::uint64_t total,
                         double seconds = 0) {
    return {Phase::sending, startOffset, done, total, seconds};
}

TEST(TransferPercent, CountsFromTheOffset) {
    EXPECT_EQ(transferPercent(sending(0, 0, 1000)), 0);
    EXPECT_EQ(transferPercent(sending(0, 999, 1000)), 99);
    EXPECT_EQ(transferPercent(sending(0, 1000, 1000)), 100);
    EXPECT_EQ(transferPercent(sending(500, 500, 1000)), 0);
    EXPECT_EQ(transferPercent(sending(500, 750, 1000)), 50);
    EXPECT_EQ(transferPercent(sending(999, 1000, 1000)), 100);
}

TEST(TransferPercent, StaysWithinItsBounds) {
    EXPECT_EQ(transferPercent(sending(0, 0, 0)), 100);
    EXPECT_EQ(transferPercent(sending(1000, 1000, 1000)), 100);
    EXPECT_EQ(transferPercent(sending(0x7FFFFFFF, 0x7FFFFFFF, 3)), 100);
    EXPECT_EQ(transferPercent(sending(500, 0, 1000)), 0) << "numbers of two moments";
    EXPECT_EQ(transferPercent(sending(0, 2000, 1000)), 100);
    EXPECT_EQ(transferPercent(sending(0, 0x7FFFFFFE, 0x7FFFFFFF)), 99);
}

TEST(TransferText, NamesThePhase) {
    EXPECT_EQ(transferText({Phase::announcing, 0, 0, 1000, 0}), "正在通知摄像头准备升级…");
    EXPECT_EQ(transferText({Phase::awaitingVerdict, 0, 1000, 1000, 9}), "文件已发送，等待摄像头确认…");
    EXPECT_EQ(transferText({Phase::downloading, 0, 512, 1000, 0}), "已接收 512 / 1000 字节");
    EXPECT_EQ(transferText({Phase::idle, 0, 0, 0, 0}), "请稍候…");
}

TEST(TransferText, ShowsRateAndTimeLeftAfterASecond) {
    EXPECT_EQ(transferText(sending(0, 512, 4000, 0.5)), "已发送 512 / 4000 字节");
    EXPECT_EQ(transferText(sending(0, 46080, 4000000, 1)),
              "已发送 46080 / 4000000 字节，46.1 KB/s，剩余 1:26");
    EXPECT_EQ(transferText(sending(0, 1000, 1000, 2)), "已发送 1000 / 1000 字节，0.5 KB/s，剩余 0:00");
    EXPECT_EQ(transferText(sending(0, 0, 1000, 5)), "已发送 0 / 1000 字节") << "nothing to reckon with yet";
}

TEST(TransferText, CountsAResumedUploadFromItsOffset) {
    EXPECT_EQ(transferText(sending(3000, 5000, 9000, 2)),
              "已发送 5000 / 9000 字节，1.0 KB/s，剩余 0:04（从第 3000 字节继续）");
}

TEST(TransferDisplay, ShowsADownloadOnlyWhileItReceives) {
    TransferProgress progress;
    TransferDisplay display;
    display.followDownload(progress);
    EXPECT_FALSE(display.isVisible()) << "the flow takes the picture first";
    {
        const TransferScope download(progress, Phase::downloading, 2000);
        progress.done = 500;
        const auto* const bar = find<QProgressBar>(display, "bar_transfer");
        ASSERT_TRUE(eventually([&] { return display.isVisible(); }));
        EXPECT_EQ(text(display, "label_transfer"), "已接收 500 / 2000 字节");
        EXPECT_EQ(bar->value(), 25);
        EXPECT_EQ(bar->maximum(), 100);
    }
    EXPECT_TRUE(eventually([&] { return !display.isVisible(); }));
    display.finish();
}

TEST(TransferText, LimitsTheTimeLeft) {
    EXPECT_EQ(transferText(sending(0, 1, 0x7FFFFFFF, 1e6)),
              "已发送 1 / 2147483647 字节，0.0 KB/s，剩余 5999:59");
}

class LiveProgress : public UploadWindow {
protected:
    /// Every text and percentage until the result box, in order.
    void watch() {
        const BoxAnswerer boxes;
        EXPECT_TRUE(eventually(
            [&] {
                if (find<QWidget>(*window, "transferDisplay")->isVisible())
                    note();
                return !boxes.seen().empty();
            },
            30000));
    }
    [[nodiscard]] QStringList textsWith(const QString& begin) const { return texts.filter(begin); }

    QStringList texts;
    std::vector<int> percents;

private:
    void note() {
        const QString line = text(*window, "label_transfer");
        if (texts.isEmpty() || texts.last() != line)
            texts.append(line);
        const auto* const bar = find<QProgressBar>(*window, "bar_transfer");
        EXPECT_EQ(bar->maximum(), line.startsWith("已发送") ? 100 : 0)
            << "busy while there is nothing to count";
        if (bar->maximum() > 0)
            percents.push_back(bar->value());
    }
};

TEST_F(LiveProgress, ShowsEveryPhaseOfAPacedResumedUpload) {
    realPauses();
    const int size = 200000;
    const int held = 50000;
    camera.setPace(60000);
    open();
    choose(appUpload, writeFile("image.bin", size));
    QFile file("image.bin");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray prefix = file.read(held);
    camera.withCamera(
        [&](emulator::VirtualCamera& each) { each.state().heldUpload.assign(prefix.begin(), prefix.end()); });
    fault("verdict-delay=1500@appUpdate");
    click(*window, "btn_appupdate");
    watch();

    EXPECT_EQ(textsWith("正在通知摄像头准备升级…").size(), 1);
    EXPECT_EQ(textsWith("文件已发送，等待摄像头确认…").size(), 1);
    EXPECT_EQ(textsWith("等待摄像头重启…（第 1 次，共 8 次）").size(), 1);
    const QStringList counted = textsWith("已发送 ");
    ASSERT_GE(counted.size(), 4);
    for (const QString& line : counted)
        EXPECT_TRUE(line.endsWith("（从第 50000 字节继续）")) << line.toStdString();
    EXPECT_EQ(counted.filter(" KB/s，剩余 0:0").isEmpty(), false) << counted.last().toStdString();
    EXPECT_TRUE(std::is_sorted(percents.begin(), percents.end()));
    ASSERT_FALSE(percents.empty());
    EXPECT_LT(percents.front(), 40) << "counted from the offset";
    EXPECT_GT(percents.back(), 60);
    EXPECT_TRUE(record().uploads.at(0).digestRight);
    EXPECT_EQ(record().uploads.at(0).offset, 50000U);
    EXPECT_FALSE(find<QWidget>(*window, "transferDisplay")->isVisible());
}

TEST_F(LiveProgress, NeverShowsMoreThanTheFileHas) {
    camera.setPace(20000);
    open();
    fault("offset=0x7FFFFFFF@modelUpdate");
    start(modelUpload, 1300);
    watch();
    for (const QString& line : textsWith("已发送 "))
        EXPECT_FALSE(line.contains("2147483647")) << line.toStdString();
    EXPECT_EQ(textsWith("文件已发送，等待摄像头确认…").size(), 1);
}

class NarrowProgress : public LiveProgress {
protected:
    /// The longest text: a resumed upload with its rate.
    void resumeUpload() {
        realPauses();
        camera.setPace(60000);
        open();
        choose(appUpload, writeFile("image.bin", 1200000));
        QFile file("image.bin");
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray prefix = file.read(1000000);
        camera.withCamera([&](emulator::VirtualCamera& each) {
            each.state().heldUpload.assign(prefix.begin(), prefix.end());
        });
        click(*window, "btn_appupdate");
        ASSERT_TRUE(eventually([this] { return progress().text().contains("KB/s"); }));
        ASSERT_TRUE(progress().text().endsWith("（从第 1000000 字节继续）"));
    }
    void resizeTo(int width) {
        window->resize(width, window->height());
        QTest::qWait(300); // a refresh
        EXPECT_EQ(window->width(), width);
        EXPECT_EQ(statusText(*window), "正在升级，请勿断电、勿拔线");
    }
    [[nodiscard]] QLabel& progress() const { return *find<QLabel>(*window, "label_transfer"); }
    /// Pixels between the message's end and the progress.
    [[nodiscard]] int gap() const {
        const auto* const bar = window->findChild<QStatusBar*>();
        const int begin = 6; // of a message in a status bar
        return find<QWidget>(*window, "transferDisplay")->x() - begin -
               bar->fontMetrics().horizontalAdvance(statusText(*window));
    }
    void expectRoomForAll() const {
        EXPECT_GT(gap(), 0) << "the message is cut";
        const auto* const display = find<QWidget>(*window, "transferDisplay");
        for (const char* const name : {"btn_stop_transfer", "bar_transfer"}) {
            const auto* const part = find<QWidget>(*window, name);
            EXPECT_TRUE(part->isVisible()) << name;
            EXPECT_TRUE(display->rect().contains(part->geometry())) << name << " is cut";
        }
        const auto* const stop = find<QToolButton>(*window, "btn_stop_transfer");
        EXPECT_GE(stop->width(), stop->sizeHint().width());
        EXPECT_LE(display->geometry().right(), find<QWidget>(*window, "label_link")->x());
    }
};

TEST_F(NarrowProgress, LeavesRoomForTheMessage) {
    resumeUpload();
    resizeTo(1120);
    expectRoomForAll();
    const int atFirst = progress().width();
    resizeTo(window->minimumSizeHint().width());
    expectRoomForAll();
    EXPECT_LT(progress().width(), atFirst);
}

TEST_F(NarrowProgress, ShowsItsWholeTextInAWideWindow) {
    resumeUpload();
    resizeTo(1120);
    resizeTo(1800);
    EXPECT_GE(progress().width(), progress().fontMetrics().horizontalAdvance(progress().text()));
    EXPECT_EQ(find<QWidget>(*window, "bar_transfer")->width(), 120);
    expectRoomForAll();
}

TEST_F(NarrowProgress, ToolTipHoldsTheWholeText) {
    resumeUpload();
    resizeTo(1120);
    EXPECT_EQ(progress().toolTip(), progress().text());
}

} // namespace
