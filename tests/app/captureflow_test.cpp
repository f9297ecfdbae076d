// The take-picture flow: frames, pictures, log lines, controls, links that end during a capture.
#include "app/captureflow.h"
#include "tests/support/debuglog.h"
#include "tests/support/scriptedcamera.h"
#include "tests/support/testclock.h"
#include "tests/support/workingdirectory.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QTest>

#include <set>

namespace {

using scripted::bytes;
using scripted::jpeg;

constexpr std::uint32_t firstGeneration = 0;
constexpr std::uint32_t json = 3;
constexpr std::uint32_t secondGeneration = 4;

constexpr int enoughMs = 5000;
constexpr int speed = 10;
constexpr std::chrono::milliseconds captureDelay{100};
constexpr std::chrono::milliseconds catalogueDelay{800};
constexpr std::chrono::milliseconds stateRound{500};
constexpr std::chrono::milliseconds downloadDelay{100};
constexpr int afterCatalogueMs = 1500 / speed; // the catalogue is read after 800 ms

const std::string v1DeletionBefore = "AA 5A 01 C8 07 00 00 00 FF 00 00 00 00 00 00 9D F6";

/// A piece of a picture behind its text.
protocol::Bytes jsonPicture(const std::string& text, const protocol::Bytes& picture) {
    return answers::json(text + "<<BINARY>>" + std::string(picture.begin(), picture.end()));
}

class CaptureFlowTest : public scripted::PictureTest {
protected:
    CaptureFlowTest() {
        label.setText("图片显示区");
        label.resize(200, 100);
        clock.speedUp(speed);
        link();
    }
    ~CaptureFlowTest() override {
        unlink();
        flow.reset();
        QThreadPool::globalInstance()->waitForDone();
    }

    void link() {
        client = std::make_unique<CameraSp>("COM9", 460800, clock);
        flow->attachClient(client.get());
    }

    /// Detaches, stops, waits, deletes.
    void unlink() {
        if (client == nullptr)
            return;
        if (flow != nullptr)
            flow->attachClient(nullptr);
        client->requestStop();
        client->waitUntilUnused();
        client.reset();
    }

    /// The camera lists one picture of this record and sends it.
    void willTakeOrigin(const protocol::Bytes& picture, std::uint8_t id = 5) {
        camera.willSay(0x08, 0);
        camera.willSay(0x06, 0);
        camera.willList(0x07, {scripted::record(scripted::originRecord, 7, id,
                                                static_cast<std::uint32_t>(picture.size()))});
        camera.willSend(0x09, 0, picture);
    }

    [[nodiscard]] bool waitForControls() const {
        return QTest::qWaitFor([this] { return !controls.empty() && controls.back(); }, enoughMs);
    }
    [[nodiscard]] bool waitForLine(const QString& line) const {
        return QTest::qWaitFor([&] { return DebugLog::hasStart(line); }, enoughMs);
    }
    [[nodiscard]] bool waitForRequest(int code) const {
        return QTest::qWaitFor(
            [&] {
                const std::vector<int> codes = camera.codes();
                return std::find(codes.begin(), codes.end(), code) != codes.end();
            },
            enoughMs);
    }
    [[nodiscard]] bool labelIsEmpty() const { return label.text().isEmpty() && label.pixmap().isNull(); }

    QLabel label;
    std::vector<bool> controls;
    DebugLog debug;
    TestClock clock;
    std::unique_ptr<CameraSp> client;
    std::unique_ptr<CaptureFlow> flow =
        std::make_unique<CaptureFlow>(&label, [this](bool allowed) { controls.push_back(allowed); });
};

} // namespace

TEST_F(CaptureFlowTest, DeletesCapturesListsDownloadsAndShows) {
    const protocol::Bytes picture = jpeg(400, 300, Qt::red);
    willTakeOrigin(picture);
    files::write("5.jpg", jpeg(400, 300, Qt::blue));
    flow->start(firstGeneration);
    EXPECT_TRUE(labelIsEmpty());
    EXPECT_EQ(controls, std::vector{false});
    EXPECT_EQ(camera.requests(), std::vector<std::string>{"AA 5A 01 08 01 00 00 00 FF 4C AC"});
    ASSERT_TRUE(waitForControls());
    EXPECT_EQ(camera.codes(), (std::vector{0x08, 0x06, 0x07, 0x09}));
    EXPECT_EQ(files::read("5.jpg"), picture);
    // To the label's width first, 200 x 150, and that to its height.
    EXPECT_EQ(label.pixmap().height(), 100);
    EXPECT_EQ(label.pixmap().width(), 133);
    EXPECT_GT(scripted::middle(label.pixmap()).red(), 240);
    EXPECT_EQ(controls, (std::vector{false, true}));
    const std::string size = std::to_string(picture.size());
    EXPECT_EQ(DebugLog::plainLines(),
              (std::vector<std::string>{"picture infos: 5 size: " + size, "pic start 5 " + size, "pic end",
                                        "in timer"}));
}

TEST_F(CaptureFlowTest, KeepsItsTimes) {
    willTakeOrigin(jpeg(40, 30, Qt::red));
    flow->start(firstGeneration);
    EXPECT_EQ(clock.timers(), (std::vector{captureDelay, catalogueDelay}));
    EXPECT_EQ(camera.codes().size(), 1U);
    ASSERT_TRUE(waitForControls());
    const std::vector<std::chrono::nanoseconds> pauses = clock.pauses();
    ASSERT_GE(pauses.size(), 2U);
    EXPECT_EQ(std::set(pauses.begin(), pauses.end() - 1), std::set<std::chrono::nanoseconds>{stateRound});
    EXPECT_EQ(pauses.back(), downloadDelay);
}

TEST_F(CaptureFlowTest, EveryOtherCameraTypeIsTheFirstGeneration) {
    for (const std::uint32_t type : {1U, 2U, 5U, 0xFFFFFFFFU}) {
        flow->start(type);
        EXPECT_EQ(camera.requests().back(), "AA 5A 01 08 01 00 00 00 FF 4C AC") << type;
    }
}

TEST_F(CaptureFlowTest, AppliesThePictureCommandOffset) {
    client->setOriginPicCmdExtraAdd(0xFA); // wraps: a deletion becomes code 2
    flow->start(firstGeneration);
    EXPECT_EQ(camera.codes(), std::vector{0x02});
}

TEST_F(CaptureFlowTest, UsesTheLowByteOfASecondGenerationId) {
    const protocol::Bytes picture = jpeg(40, 30, Qt::red);
    camera.willSay(0xC8, 0);
    camera.willSay(0xC6, 0);
    camera.willList(
        0xC7, {scripted::record(scripted::v1Record, 13, 2, static_cast<std::uint32_t>(picture.size()))});
    camera.willSend(0xC9, 1, picture); // the read result is not looked at
    flow->start(secondGeneration);
    EXPECT_EQ(camera.requests(), std::vector{v1DeletionBefore});
    ASSERT_TRUE(waitForControls());
    EXPECT_EQ(camera.codes(), (std::vector{0xC8, 0xC6, 0xC7, 0xC9}));
    EXPECT_EQ(camera.requests().back().substr(24, 17), "02 00 00 00 00 00");
    EXPECT_EQ(files::read("2.jpg"), picture);
    EXPECT_FALSE(QFile::exists("258.jpg"));
    EXPECT_FALSE(label.pixmap().isNull());
    EXPECT_TRUE(DebugLog::hasStart("pic start  2"));
}

TEST_F(CaptureFlowTest, AFailedDeletionEndsIt) {
    camera.willSay(0x08, 1);
    flow->start(firstGeneration);
    EXPECT_EQ(controls, (std::vector{false, true}));
    camera.willSay(0xC8, 1);
    flow->start(secondGeneration);
    flow->start(firstGeneration); // and one without an answer
    QTest::qWait(afterCatalogueMs);
    EXPECT_EQ(camera.codes(), (std::vector{0x08, 0xC8, 0x08}));
    EXPECT_TRUE(labelIsEmpty());
    EXPECT_EQ(controls, (std::vector{false, true, false, true, false, true}));
}

TEST_F(CaptureFlowTest, ShowsAPictureAfterAFailedCapture) {
    camera.willSay(0x06, 1);
    willTakeOrigin(jpeg(40, 30, Qt::red));
    flow->start(firstGeneration);
    ASSERT_TRUE(waitForControls());
    EXPECT_TRUE(DebugLog::hasStart("take failed"));
    EXPECT_EQ(camera.codes(), (std::vector{0x08, 0x06}));
    ASSERT_TRUE(waitForLine("in timer"));
    EXPECT_EQ(camera.codes(), (std::vector{0x08, 0x06, 0x07, 0x09}));
    EXPECT_FALSE(label.pixmap().isNull());
    EXPECT_EQ(controls, (std::vector{false, true})); // only once: another action may have locked them since
}

TEST_F(CaptureFlowTest, AnEmptyCatalogueIsAskedForTwice) {
    camera.willList(0x07, {});
    willTakeOrigin(jpeg(40, 30, Qt::red));
    flow->start(firstGeneration);
    ASSERT_TRUE(waitForControls());
    EXPECT_EQ(camera.codes(), (std::vector{0x08, 0x06, 0x07, 0x07, 0x09}));
    EXPECT_FALSE(label.pixmap().isNull());
}

TEST_F(CaptureFlowTest, EndsWhenTheCatalogueIsEmptyTwice) {
    camera.willSay(0x08, 0);
    camera.willSay(0x06, 0);
    camera.willList(0x07, {});
    camera.willList(0x07, {});
    files::write("0.jpg", jpeg(40, 30, Qt::blue));
    flow->start(firstGeneration);
    ASSERT_TRUE(waitForControls());
    ASSERT_TRUE(QThreadPool::globalInstance()->waitForDone(enoughMs));
    QTest::qWait(50);
    EXPECT_EQ(camera.codes(), (std::vector{0x08, 0x06, 0x07, 0x07}));
    EXPECT_TRUE(labelIsEmpty());
    EXPECT_FALSE(DebugLog::hasStart("in timer"));
    EXPECT_TRUE(QFile::exists("0.jpg"));
}

TEST_F(CaptureFlowTest, DownloadsTheKnownPictureAfterTenRounds) {
    clock.speedUp(1);
    clock.skipPauses();
    camera.willSay(0x08, 0);
    camera.willSend(0x09, 0, {});
    flow->start(firstGeneration);
    ASSERT_TRUE(waitForLine("pic end"));
    EXPECT_EQ(clock.pauses(), std::vector<std::chrono::nanoseconds>(10, stateRound));
    EXPECT_TRUE(DebugLog::hasStart("pic start  0    0"));
    EXPECT_EQ(camera.requests().back().substr(0, 50), "AA 5A 01 09 09 00 00 00 00 00 00 00 00 00 00 00 00");
    EXPECT_TRUE(QFile::exists("0.jpg"));
    ASSERT_TRUE(waitForControls());
    EXPECT_TRUE(labelIsEmpty());
}

TEST_F(CaptureFlowTest, AMissingOrBrokenPictureLeavesTheLabelEmpty) {
    willTakeOrigin(protocol::Bytes(300, 0x55));
    files::write("5.jpg", jpeg(40, 30, Qt::blue));
    flow->start(firstGeneration);
    ASSERT_TRUE(waitForControls());
    EXPECT_TRUE(DebugLog::hasStart("in timer"));
    EXPECT_TRUE(labelIsEmpty());
}

TEST_F(CaptureFlowTest, ARefusedReadShowsNoOldPicture) {
    camera.willSend(0x09, 1, protocol::Bytes(20, 0));
    willTakeOrigin(protocol::Bytes(20, 0));
    files::write("5.jpg", jpeg(40, 30, Qt::blue));
    flow->start(firstGeneration);
    ASSERT_TRUE(waitForControls());
    EXPECT_TRUE(labelIsEmpty());
    EXPECT_FALSE(QFile::exists("5.jpg"));
}

TEST_F(CaptureFlowTest, ShowsNoOldPictureInAnUnwritableFolder) {
    files::write("5.jpg", jpeg(40, 30, Qt::blue));
    const UnwritableDirectory here;
    willTakeOrigin(jpeg(40, 30, Qt::red));
    flow->start(firstGeneration);
    ASSERT_TRUE(waitForControls());
    EXPECT_TRUE(labelIsEmpty());
    EXPECT_TRUE(out.has("can't write picture:5.jpg"));
    EXPECT_EQ(files::names(), std::vector<std::string>{"5.jpg"});
}

TEST_F(CaptureFlowTest, EndsWhenTheDeviceVanishes) {
    willTakeOrigin({});
    camera.willList(0x07, {bytes(scripted::originRecord)});
    client->setSlaveAddress(1);
    fake_serial::onWrite([](const protocol::Bytes& request) {
        const std::uint8_t code = request.at(3);
        if (code == 0x09)
            fake_serial::willThrowOnRead();
        else
            fake_serial::willRead(code == 0x07
                                      ? answers::frame(7, scripted::joined(1, bytes(scripted::originRecord)))
                                      : answers::frame(code, {0}));
    });
    flow->start(firstGeneration);
    ASSERT_TRUE(waitForControls());
    EXPECT_TRUE(DebugLog::hasStart("pic end"));
    EXPECT_TRUE(labelIsEmpty());
}

TEST_F(CaptureFlowTest, EndsAnEndlessDownloadWithTheLink) {
    camera.willSay(0x08, 0);
    camera.willSay(0x06, 0);
    camera.willList(0x07, {scripted::record(scripted::originRecord, 7, 5, 0xFFFFFFFF)});
    fake_serial::willTimeOut(0);
    flow->start(firstGeneration);
    ASSERT_TRUE(waitForRequest(0x09));
    QTest::qWait(50);
    EXPECT_EQ(controls, std::vector{false});
    QElapsedTimer closing;
    closing.start();
    unlink();
    EXPECT_LT(closing.elapsed(), 500);
    QTest::qWait(100);
    EXPECT_FALSE(DebugLog::hasStart("in timer"));
    EXPECT_TRUE(labelIsEmpty());
    EXPECT_TRUE(files::names().empty());
    EXPECT_EQ(controls, std::vector{false}); // closing the link enables them
}

TEST_F(CaptureFlowTest, MayLoseItsLinkAtAnyStep) {
    for (const int atMs : {0, 60, 150, 700, 850, 950}) {
        willTakeOrigin(jpeg(40, 30, Qt::red));
        flow->start(firstGeneration);
        QTest::qWait(atMs / speed);
        QElapsedTimer closing;
        closing.start();
        unlink();
        EXPECT_LT(closing.elapsed(), 500) << atMs;
        const std::size_t asked = camera.codes().size();
        link(); // what was started on the old link must not go on with the new one
        QTest::qWait(afterCatalogueMs);
        EXPECT_EQ(camera.codes().size(), asked) << atMs;
        EXPECT_TRUE(labelIsEmpty()) << atMs;
        EXPECT_FALSE(DebugLog::hasStart("in timer")) << atMs;
    }
}

TEST_F(CaptureFlowTest, MayBeDestroyedAtAnyStep) {
    for (const int atMs : {0, 150, 850}) {
        willTakeOrigin(jpeg(40, 30, Qt::red));
        flow->start(firstGeneration);
        QTest::qWait(atMs / speed);
        flow.reset();
        QTest::qWait(afterCatalogueMs);
        EXPECT_TRUE(labelIsEmpty());
        unlink();
        flow = std::make_unique<CaptureFlow>(&label, [this](bool allowed) { controls.push_back(allowed); });
        link();
    }
    EXPECT_EQ(controls, (std::vector{false, false, false}));
}

TEST_F(CaptureFlowTest, OverlappingRunsAreIndependent) {
    clock.speedUp(1); // the second catalogue has to come before the first download, 200 ms later
    camera.willSay(0x06, 1);
    willTakeOrigin(jpeg(40, 30, Qt::red));
    willTakeOrigin(jpeg(40, 30, Qt::blue), 6);
    flow->start(firstGeneration);
    ASSERT_TRUE(waitForControls());
    flow->start(firstGeneration);
    EXPECT_FALSE(controls.back());
    ASSERT_TRUE(QTest::qWaitFor([] { return DebugLog::countStarts("in timer") == 2; }, enoughMs));
    EXPECT_EQ(DebugLog::countStarts("pic end"), 2);
    EXPECT_EQ(controls, (std::vector{false, true, false, true}));
}

TEST_F(CaptureFlowTest, WithoutALinkItOnlyClearsTheLabel) {
    unlink();
    flow->start(firstGeneration);
    flow->start(json);
    QTest::qWait(150);
    EXPECT_TRUE(labelIsEmpty());
    EXPECT_TRUE(controls.empty());
    EXPECT_TRUE(camera.codes().empty());
}

TEST_F(CaptureFlowTest, AJsonCameraGivesItsPictureAtOnce) {
    const protocol::Bytes picture = jpeg(40, 30, Qt::red);
    ASSERT_LT(picture.size(), 7000U);
    const std::size_t first = std::min<std::size_t>(picture.size(), 500);
    const auto middle = picture.begin() + static_cast<std::ptrdiff_t>(first);
    camera.willSayJson(
        jsonPicture("{\"size\":" + std::to_string(picture.size()) + "}", {picture.begin(), middle}));
    camera.willSayJson(jsonPicture("{}", {middle, picture.end()}));
    files::write("1.jpg", jpeg(40, 30, Qt::blue));
    flow->start(json);
    EXPECT_TRUE(labelIsEmpty());
    EXPECT_EQ(controls, std::vector{false});
    ASSERT_TRUE(waitForControls());
    EXPECT_EQ(files::read("1.jpg"), picture);
    EXPECT_EQ(label.pixmap().size(), QSize(133, 100));
    EXPECT_GT(scripted::middle(label.pixmap()).red(), 240);
    EXPECT_EQ(DebugLog::plainLines(),
              (std::vector<std::string>{"quenta pic start", "quenta pic end", "in quenta timer"}));
    for (const int code : camera.codes())
        EXPECT_EQ(code, 0x17);
}

TEST_F(CaptureFlowTest, AFailedJsonPictureShowsNothing) {
    files::write("1.jpg", jpeg(40, 30, Qt::blue));
    flow->start(json);
    ASSERT_TRUE(waitForControls());
    EXPECT_TRUE(labelIsEmpty());
    EXPECT_FALSE(DebugLog::hasStart("in quenta timer"));
    EXPECT_FALSE(QFile::exists("1.jpg"));
    camera.willSayJson(jsonPicture("{\"result\":0}", {1, 2, 3})); // no size
    controls.clear();
    flow->start(json);
    ASSERT_TRUE(waitForControls());
    EXPECT_TRUE(labelIsEmpty());
}

TEST_F(CaptureFlowTest, WaitsForALostJsonChunkUntilTheLinkEnds) {
    CameraSp* const current = client.get();
    camera.willSayJson(jsonPicture("{\"size\":60000}", protocol::Bytes(500, 0)));
    fake_serial::onWrite({});
    fake_serial::willRead(jsonPicture("{\"size\":60000}", protocol::Bytes(500, 0)));
    flow->start(json);
    ASSERT_TRUE(QTest::qWaitFor([] { return fake_serial::writes().size() == 2; }, enoughMs));
    EXPECT_FALSE(current->stopRequested());
    unlink();
    QTest::qWait(50);
    EXPECT_FALSE(DebugLog::hasStart("in quenta timer"));
    EXPECT_TRUE(files::names().empty());
}
