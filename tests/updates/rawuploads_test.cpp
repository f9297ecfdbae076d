// Application image, system image and model, in raw chunks, to a virtual camera that checks them.
#include "tests/support/stdoutcapture.h"
#include "tests/updates/uploadcells.h"

#include <algorithm>
#include <array>
#include <sys/resource.h>

using namespace std::chrono_literals;
using namespace uploadcells;
using emulator::UploadRecord;
using emulator::VirtualCamera;

namespace {

using Clock = std::chrono::steady_clock;

enum class Kind { app, system, model };
constexpr std::array everyKind{Kind::app, Kind::system, Kind::model};

/// As the virtual camera calls its announcement.
std::string nameOf(Kind kind) {
    return kind == Kind::app ? "appUpdate" : kind == Kind::system ? "systemUpdate" : "modelUpdate";
}

std::ostream& operator<<(std::ostream& out, Kind kind) {
    return out << nameOf(kind);
}

bool upload(CameraSp& client, Kind kind) {
    switch (kind) {
    case Kind::app:
        client.setAppFilePath(filePath);
        return client.appUpdate();
    case Kind::system:
        client.setFirewareFilePath(filePath);
        return client.firewareUpdate();
    case Kind::model:
        client.setModelNameAndPath("模型 v1", filePath);
        return client.modelUpdate();
    }
    return false;
}

/// Data that the camera receives after the announcement.
enum class Sent { everything, nothing, some };

struct Cell {
    Kind kind = Kind::app;
    std::string fault{}; ///< of the announcement; empty: none
    bool result = false; ///< of the upload
    Sent sent = Sent::nothing;
    std::size_t held = 0; ///< bytes that the camera holds from before
    std::string verdictFault{};
    std::uint32_t pace = 0; ///< bytes per second
};

Bytes storedFile() {
    return files::read(std::filesystem::path(u8"新 固件 v2.bin")).value();
}

void storeFile(const Bytes& bytes) {
    files::write(std::filesystem::path(u8"新 固件 v2.bin"), bytes);
}

/// A camera that restarts at once after an update and soon gives up a broken upload.
void prepare(TestFront& front, const Cell& cell, const Bytes& file) {
    front.setPace(cell.pace);
    front.withCamera([&](VirtualCamera& camera) {
        camera.settings().updateRestartTime = 0s;
        camera.settings().uploadSilence = 4s;
        camera.state().heldUpload.assign(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(cell.held));
        for (const std::string& fault : {cell.fault, cell.verdictFault}) {
            if (!fault.empty())
                camera.addFault(fault + "@" + nameOf(cell.kind));
        }
    });
}

void requireSent(Complaints& complaints, const Cell& cell, const UploadRecord& record, const Bytes& file) {
    const auto from = static_cast<std::ptrdiff_t>(std::min<std::size_t>(record.offset, file.size()));
    const Bytes wanted(file.begin() + from, file.end());
    const std::string amount =
        std::to_string(record.received.size()) + " of " + std::to_string(wanted.size());
    switch (cell.sent) {
    case Sent::everything:
        complaints.require(record.received == wanted, "other bytes than the file's rest, " + amount);
        complaints.require(record.digestRight, "the digest is wrong");
        break;
    case Sent::nothing:
        complaints.require(record.received.empty(), "sends " + amount);
        break;
    case Sent::some:
        complaints.require(record.received.size() < wanted.size(), "sends all");
        break;
    }
    complaints.require(record.earlyBytes == 0, "bytes come too early");
    complaints.require(!record.firstByteAt || *record.firstByteAt - record.answeredAt >= 2s,
                       "bytes come sooner than 2 s after the answer");
    complaints.require(record.name == (cell.kind == Kind::model ? "模型 v1" : ""), "the name is wrong");
    complaints.require(record.fileSize == file.size(), "the size is wrong");
}

/// The camera's record after the last byte has arrived.
emulator::CameraRecord settledRecord(TestFront& front, Sent sent) {
    const auto longest = Clock::now() + 2s;
    while (sent == Sent::everything && Clock::now() < longest) {
        const emulator::CameraRecord record = recordOf(front);
        if (!record.uploads.empty() && record.uploads.back().finished)
            return record;
        std::this_thread::sleep_for(5ms);
    }
    std::this_thread::sleep_for(200ms);
    return recordOf(front);
}

Complaints runCell(const Cell& cell) {
    Complaints complaints(nameOf(cell.kind) + " " + cell.fault + " " + cell.verdictFault + " holding " +
                          std::to_string(cell.held));
    const Bytes file = storedFile();
    TestFront front;
    prepare(front, cell, file);
    const auto client = connect(front);
    const bool result = upload(*client, cell.kind);
    complaints.require(result == cell.result, result ? "is called a success" : "is called a failure");
    const emulator::CameraRecord record = settledRecord(front, cell.sent);
    complaints.require(record.badFrames == 0, "the camera received a bad frame");
    if (cell.sent == Sent::nothing)
        complaints.require(record.frames.size() == 1 && record.garbageBytes == 0,
                           "more than the announcement arrived");
    for (const UploadRecord& each : record.uploads)
        requireSent(complaints, cell, each, file);
    // The camera takes an unanswered announcement for no upload.
    const bool counted = cell.sent == Sent::nothing || record.uploads.size() == 1;
    complaints.require(counted, std::to_string(record.uploads.size()) + " uploads arrived");
    return complaints;
}

class RawUploads : public testing::Test {
protected:
    StdoutCapture out;

    [[nodiscard]] std::ptrdiff_t linesWith(const std::string& begin, const std::string& end) const {
        const auto lines = out.lines();
        return std::count_if(lines.begin(), lines.end(), [&](const std::string& line) {
            return line.starts_with(begin) && line.ends_with(end);
        });
    }
};

TEST_F(RawUploads, ArriveWholeAtAnySize) {
    for (const std::size_t size : {0U, 1U, 511U, 512U, 513U, 40000U}) {
        storeFile(content(size));
        std::vector<Cell> cells;
        for (const Kind kind : everyKind)
            cells.push_back({kind, "", true, Sent::everything});
        runSideBySide(cells, &runCell);
    }
}

TEST_F(RawUploads, ContinueWhereTheCameraStopped) {
    storeFile(content(1300));
    std::vector<Cell> cells;
    for (const Kind kind : everyKind) {
        for (const std::size_t held : {1U, 511U, 512U, 700U, 1299U, 1300U})
            cells.push_back({kind, "", true, Sent::everything, held});
    }
    runSideBySide(cells, &runCell);
}

TEST_F(RawUploads, SendNothingForOffsetsAtOrBeyondTheEnd) {
    storeFile(content(1300));
    std::vector<Cell> cells;
    for (const Kind kind : everyKind) {
        for (const char* const offset : {"size", "size+1", "0x7FFFFFFF"})
            cells.push_back({kind, std::string("offset=") + offset, true, Sent::nothing, 0, "verdict=0"});
    }
    runSideBySide(cells, &runCell);
}

TEST_F(RawUploads, FailForOffsetsBeyond31Bits) {
    storeFile(content(1300));
    std::vector<Cell> cells;
    for (const Kind kind : everyKind) {
        for (const char* const offset : {"0x80000000", "0xFFFFFFFF"})
            cells.push_back({kind, std::string("offset=") + offset, false, Sent::nothing, 0, "verdict=0"});
    }
    runSideBySide(cells, &runCell);
}

TEST_F(RawUploads, FollowTheVerdictWhereThereIsOne) {
    storeFile(content(1300));
    std::vector<Cell> cells;
    for (const Kind kind : everyKind) {
        // The system image is called a success as soon as its last byte has been written.
        const bool noVerdictNeeded = kind == Kind::system;
        cells.push_back({kind, "verdict=1", noVerdictNeeded, Sent::everything});
        cells.push_back({kind, "verdict=0xFF", noVerdictNeeded, Sent::everything});
        cells.push_back({kind, "no-verdict", noVerdictNeeded, Sent::everything});
        cells.push_back({kind, "verdict-delay=3300", true, Sent::everything});
        // Ten reads of a second for an application image, thirty for a model.
        cells.push_back({kind, "verdict-delay=12000", kind != Kind::app, Sent::everything});
        // An image continues after a refusal; a model does not.
        const bool model = kind == Kind::model;
        cells.push_back({kind, "result=1", !model, model ? Sent::nothing : Sent::everything});
    }
    runSideBySide(cells, &runCell);
    EXPECT_EQ(linesWith("appupdate update-end failed", ""), 2) << "no verdict, and one too late";
    EXPECT_EQ(linesWith("modelupdate update-end failed2", ""), 1);
}

#ifndef __SANITIZE_ADDRESS__ // its shadow exceeds the limited address space
TEST_F(RawUploads, SendNothingWhenTheFileDoesNotFitIntoMemory) {
    storeFile({});
    std::filesystem::resize_file(std::filesystem::path(u8"新 固件 v2.bin"), std::uintmax_t{0x7FFFFFFF});
    TestFront front;
    const auto client = connect(front);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
    const rlimit narrow{std::uintmax_t{1} << 30U, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &narrow), 0);
    for (const Kind kind : everyKind)
        EXPECT_FALSE(upload(*client, kind)) << kind;
    EXPECT_FALSE(client->appUpdateV1(filePath, filePath));
    setrlimit(RLIMIT_AS, &before);
    EXPECT_EQ(linesWith("fsize:2147483647", ""), 4);
    EXPECT_EQ(linesWith("command failed:", ""), 4);
    EXPECT_EQ(recordOf(front).byteCount, 0U);
}
#endif

class RawUploadKinds : public RawUploads, public testing::WithParamInterface<Kind> {};

INSTANTIATE_TEST_SUITE_P(Every, RawUploadKinds, testing::ValuesIn(everyKind),
                         [](const auto& test) { return nameOf(test.param); });

TEST_P(RawUploadKinds, SendNothingWithoutAnAnnouncementAnswer) {
    storeFile(content(1300));
    std::vector<std::string> unanswered{"silent",     "late",      "raw=414243",  "truncate=1",
                                        "truncate=6", "length=+1", "delay=11000", "length=0xFFFFFFFF"};
    // One read takes 15 bytes: an image's answer and nothing behind it, or a model's but for its last byte.
    if (GetParam() == Kind::model)
        unanswered.insert(unanswered.end(), {"glue", "stray=1"});
    else
        unanswered.emplace_back("length=-1");
    unanswered.insert(unanswered.end(), {"hang-up=0", "hang-up=5"});
    std::vector<std::string> faults{"payload=0", "payload=2"};
    faults.insert(faults.end(), unanswered.begin(), unanswered.end());
    std::vector<Cell> cells;
    for (const std::string& fault : faults)
        cells.push_back({GetParam(), fault, false, Sent::nothing});
    runSideBySide(cells, &runCell);
    const std::string line = GetParam() == Kind::app      ? "appupdate queryCanUpdate checkfailed"
                             : GetParam() == Kind::system ? "firewareupdate queryfireware cmd checkfailed"
                                                          : "updateModel queryModelInfo checkfailed";
    EXPECT_EQ(linesWith(line, ""), static_cast<std::ptrdiff_t>(unanswered.size()))
        << "answers too short for an offset have none";
}

TEST_P(RawUploadKinds, FindTheAnnouncementAnswerOnABadLine) {
    storeFile(content(1300));
    std::vector<Cell> cells;
    for (const char* const fault :
         {"delay=1500", "before=33", "before=AA", "before=AA33", "before=335A00AA", "split=1,60",
          "split=9,60", "bad-check", "zero-check", "address=0x55", "command=0x21"})
        cells.push_back({GetParam(), fault, true, Sent::everything});
    runSideBySide(cells, &runCell);
}

TEST_P(RawUploadKinds, FailWhenTheDeviceVanishes) {
    storeFile(content(60000));
    constexpr std::uint32_t pace = 60000;
    std::vector<Cell> cells;
    for (const char* const percent : {"0", "1", "50"})
        cells.push_back(
            {GetParam(), std::string("upload-hang-up=") + percent, false, Sent::some, 0, "", pace});
    // All is written when the device vanishes: only a verdict reveals it.
    const bool noVerdictNeeded = GetParam() == Kind::system;
    cells.push_back({GetParam(), "upload-hang-up=100", noVerdictNeeded, Sent::everything, 0, "", pace});
    // Without a verdict, the cases between depend on the buffers of the line.
    if (!noVerdictNeeded)
        cells.push_back({GetParam(), "upload-hang-up=99", false, Sent::some, 0, "", pace});
    runSideBySide(cells, &runCell);
}

TEST_P(RawUploadKinds, AreResumedWhereTheDeviceVanished) {
    const Bytes file = content(60000);
    storeFile(file);
    TestFront front;
    prepare(front, {GetParam(), "upload-hang-up=50", false, Sent::some, 0, "", 60000}, file);
    auto client = connect(front);
    EXPECT_FALSE(upload(*client, GetParam()));
    client.reset();
    front.comeBack();
    front.withCamera([](VirtualCamera& camera) { camera.faults().clear(); });
    client = connect(front);
    EXPECT_TRUE(upload(*client, GetParam()));
    const auto uploads = settledRecord(front, Sent::everything).uploads;
    ASSERT_EQ(uploads.size(), 2U);
    EXPECT_GE(uploads[1].offset, file.size() / 2);
    EXPECT_EQ(uploads[1].offset + uploads[1].received.size(), file.size());
    EXPECT_TRUE(uploads[1].digestRight);
    EXPECT_EQ(uploads[1].digest, uploads[0].digest) << "the same announcement again";
}

/// The camera pauses longer than the write timeout: cut slices are logged and not repeated.
TEST_P(RawUploadKinds, ContinueAfterShortWrites) {
    const Bytes file = content(60000);
    storeFile(file);
    TestFront front;
    prepare(front, {GetParam(), "stall=50,3500", false, Sent::some, 0, "", 0}, file);
    const auto client = connect(front);
    const bool system = GetParam() == Kind::system;
    EXPECT_EQ(upload(*client, GetParam()), system) << "only the system image needs no verdict";
    const auto warnings = system ? linesWith("warning:::::: writeLength:", "")
                                 : linesWith("Warning :write length !=targetGap  writeLength:", "");
    EXPECT_GE(warnings, 2);
    EXPECT_LE(warnings, 5);
    const std::string target = system ? "  targetGap:512" : " targetgap:200"; // decimal, and hexadecimal
    EXPECT_EQ(linesWith("", target), warnings);
    EXPECT_TRUE(front.withCamera([](VirtualCamera& camera) { return camera.record().uploads.size() == 1; }));
    const UploadRecord record = settledRecord(front, Sent::everything).uploads.at(0);
    EXPECT_LT(record.received.size(), file.size()) << "what was cut off is missing";
    EXPECT_GT(record.received.size(), file.size() / 2 + 20000) << "and what came behind it is there";
    EXPECT_FALSE(record.digestRight);
}

TEST_P(RawUploadKinds, ArriveWholeAfterAShortReadingPause) {
    storeFile(content(60000));
    runSideBySide<Cell>({{GetParam(), "stall=50,600", true, Sent::everything}}, &runCell);
    EXPECT_EQ(linesWith("", " targetgap:200"), 0);
}

TEST_P(RawUploadKinds, EndWithinOneTimeoutOfAStop) {
    const Bytes file = content(60000);
    storeFile(file);
    struct Moment {
        const char* fault;
        milliseconds after;   ///< since the announcement
        milliseconds longest; ///< one library timeout and 100 ms
    };
    // During the announcement's reads, the pause behind it, a write that waits, and the verdict's reads.
    for (const Moment& moment : {Moment{"silent", 500ms, 1100ms}, Moment{"offset=0", 1000ms, 100ms},
                                 Moment{"stall=0,0", 3500ms, 1100ms}, Moment{"no-verdict", 3500ms, 1100ms}}) {
        if (GetParam() == Kind::system && std::string(moment.fault) == "no-verdict")
            continue;
        TestFront front;
        prepare(front, {GetParam(), moment.fault, false, Sent::some, 0, "", 0}, file);
        const auto client = connect(front);
        auto running = std::async(std::launch::async, [&] { return upload(*client, GetParam()); });
        std::this_thread::sleep_for(moment.after);
        const auto start = Clock::now();
        client->requestStop();
        EXPECT_FALSE(running.get()) << moment.fault;
        constexpr milliseconds machineSlack = 400ms;
        EXPECT_LT(Clock::now() - start, moment.longest + machineSlack) << moment.fault;
    }
}

} // namespace
