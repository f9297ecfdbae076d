// The application image by the second protocol, to a virtual camera: five announcements, eleven packets.
#include "tests/support/stdoutcapture.h"
#include "tests/updates/uploadcells.h"

using namespace std::chrono_literals;
using namespace uploadcells;
using emulator::VirtualCamera;

namespace {

struct ImageCell {
    std::vector<std::string> faults{};
    bool result = false;
    std::uint32_t closingPackets = 0;
    bool holdsImage = true;
};

Complaints runImageCell(const ImageCell& cell) {
    std::string name = cell.holdsImage ? "held image" : "image not held";
    for (const std::string& fault : cell.faults)
        name += " " + fault;
    Complaints complaints(name);
    TestFront front(emulator::CameraType::salesDynamic);
    front.withCamera([&cell](VirtualCamera& camera) {
        camera.settings().holdsAnnouncedImage = cell.holdsImage;
        camera.settings().updateRestartTime = 0s;
        for (const std::string& fault : cell.faults)
            camera.addFault(fault);
    });
    const auto client = connect(front);
    const bool result = client->appUpdateV1(filePath, filePath);
    complaints.require(result == cell.result, result ? "is called a success" : "is called a failure");
    const emulator::CameraRecord record = recordOf(front);
    const auto count = [&](std::uint8_t code) { return static_cast<std::uint32_t>(record.count(code)); };
    complaints.require(count(0x1D) == 5, std::to_string(count(0x1D)) + " announcements");
    complaints.require(!record.appV1.changedWithinRun, "the announcements differ");
    complaints.require(count(0x1E) == cell.closingPackets, std::to_string(count(0x1E)) + " packets");
    complaints.require(record.appV1.dataPackets == 0, "a data packet is sent");
    complaints.require(record.badFrames == 0 && record.garbageBytes == 0, "bytes outside of frames");
    return complaints;
}

class SecondProtocolUploads : public testing::Test {
protected:
    static void storeFile(std::size_t size) {
        files::write(std::filesystem::path(u8"新 固件 v2.bin"), content(size));
    }
    StdoutCapture out;
};

TEST_F(SecondProtocolUploads, TakeTheLastOfElevenPackageResults) {
    storeFile(2000);
    runSideBySide<ImageCell>(
        {
            {{}, true, 11},
            {{"result=1@packetV1"}, true, 11},
            {{"result=2@packetV1"}, false, 11},
            {{"result=2@packetV1#1-10"}, true, 11},
            {{"result=2@packetV1#11"}, false, 11},
            {{"silent@packetV1#10-11"}, true, 11},
            {{"result=2@packetV1#10", "silent@packetV1#11"}, false, 11},
            {{"result=1@packetV1#1", "silent@packetV1#2", "result=2@packetV1#3", "truncate=4@packetV1#4"},
             true,
             11},
        },
        &runImageCell);
    EXPECT_TRUE(out.has("continue last cmd"));
    EXPECT_TRUE(out.has("now packageResult:2"));
    EXPECT_TRUE(out.has("packageResult:1"));
}

TEST_F(SecondProtocolUploads, CountTheFifthAnnouncementAnswerOnly) {
    storeFile(2000);
    runSideBySide<ImageCell>(
        {
            {{"result=1@appUpdateV1#1-4"}, true, 11},
            {{"offset=0@appUpdateV1#1-4"}, true, 11},
            {{"silent@appUpdateV1#2"}, true, 11},
            {{"result=1@appUpdateV1#5"}, false, 0},
            {{"silent@appUpdateV1#5"}, false, 0},
            {{"payload=3@appUpdateV1#5"}, false, 0},
            {{"bad-check@appUpdateV1", "before=33@appUpdateV1"}, true, 11},
        },
        &runImageCell);
    EXPECT_TRUE(out.has("cant update"));
    EXPECT_TRUE(out.has("appupdateV1 queryCanUpdate checkfailed"));
}

TEST_F(SecondProtocolUploads, SendNoPacketUnlessTheCameraHoldsTheFile) {
    storeFile(2000);
    std::vector<ImageCell> cells{{{}, false, 0, false}};
    for (const char* const offset : {"size-1", "size+1", "0x7FFFFFFF", "0x80000000", "0xFFFFFFFF"})
        cells.push_back({{std::string("offset=") + offset + "@appUpdateV1"}, false, 0});
    runSideBySide(cells, &runImageCell);
}

TEST_F(SecondProtocolUploads, TakeAnEmptyFile) {
    storeFile(0);
    runSideBySide<ImageCell>({{{}, true, 11, false}}, &runImageCell);
}

TEST_F(SecondProtocolUploads, FailWhenTheDeviceVanishes) {
    storeFile(2000);
    runSideBySide<ImageCell>(
        {{{"hang-up=0@packetV1#11"}, false, 11}, {{"hang-up=0@appUpdateV1#5"}, false, 0}}, &runImageCell);
}

TEST_F(SecondProtocolUploads, FailOnAFileThatCannotBeOpened) {
    TestFront front(emulator::CameraType::salesDynamic);
    const auto client = connect(front);
    EXPECT_FALSE(client->appUpdateV1("missing.bin", "missing.bin"));
    EXPECT_TRUE(out.has("appupdate2 file cant open"));
    EXPECT_EQ(recordOf(front).byteCount, 0U);
}

} // namespace
