// The pseudo-terminal front in real time.
#include "emulator/line/devicefront.h"
#include "emulator/line/ptyfront.h"
#include "tests/emulator/line/ptyclient.h"

#include <filesystem>
#include <fstream>
#include <thread>

namespace emulatortest {
namespace {

namespace fs = std::filesystem;

TEST(PtyFront, AnswersOverTheDevice) {
    PtyFront front;
    PtyClient client(front.portName());
    client.write(hex(heartbeatRequest));
    EXPECT_EQ(client.read(11), hex(heartbeatAnswer));
    EXPECT_TRUE(client.read(1, 50ms).empty());
}

TEST(PtyFront, TheToolMayCloseAndOpenThePortAgain) {
    PtyFront front;
    for (int i = 0; i < 3; ++i) {
        PtyClient client(front.portName());
        client.write(hex(heartbeatRequest));
        EXPECT_EQ(client.read(11), hex(heartbeatAnswer)) << i;
    }
}

TEST(PtyFront, EveryByteValuePassesUnchanged) {
    PtyFront front;
    front.withCamera([](VirtualCamera& camera) {
        camera.state().pictures = {makePicture(5, countingBytes(3000))};
        camera.addFault("raw=" + [] {
            std::string digits;
            for (int i = 0; i < 256; ++i)
                digits += std::string(1, "0123456789ABCDEF"[i / 16]) + "0123456789ABCDEF"[i % 16];
            return digits;
        }());
    });
    PtyClient client(front.portName());
    client.write(hex(heartbeatRequest));
    EXPECT_EQ(client.read(256), countingBytes(256));
    client.write(countingBytes(256));
    EXPECT_TRUE(comesTrue([&] {
        return front.withCamera([](VirtualCamera& camera) { return camera.record().byteCount; }) == 256 + 11;
    }));
    Bytes heard;
    front.withCamera([&](VirtualCamera& camera) {
        for (const ReceivedChunk& chunk : camera.record().chunks)
            protocol::append(heard, chunk.bytes);
    });
    EXPECT_EQ(ByteView(heard).range(11, heard.size()).toBytes(), countingBytes(256));
}

TEST(PtyFront, AnswersLongerThanTheTerminalsBufferArriveWhole) {
    PtyFront front;
    const Bytes picture = countingBytes(60000);
    front.withCamera([&](VirtualCamera& camera) { camera.state().pictures = {makePicture(5, picture)}; });
    PtyClient client(front.portName());
    client.write(protocol::buildFrame(0x09, hex("05 00 00 00 00 60 EA 00 00"), 1));
    const Bytes answer = client.read(60011);
    ASSERT_EQ(answer.size(), 60011U);
    EXPECT_EQ(ByteView(answer).range(9, 60009).toBytes(), picture);
}

TEST(PtyFront, AnswersComeAtTheSetPace) {
    PtyFront front;
    front.withCamera(
        [](VirtualCamera& camera) { camera.state().pictures = {makePicture(5, countingBytes(4000))}; });
    front.setPace(20000);
    PtyClient client(front.portName());
    client.write(protocol::buildFrame(0x09, hex("05 00 00 00 00 A0 0F 00 00"), 1));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.read(2000).size(), 2000U);
    const auto half = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(client.read(2011).size(), 2011U);
    const auto whole = std::chrono::steady_clock::now() - start;
    EXPECT_GE(half, 70ms); // 100 ms at the pace
    EXPECT_GE(whole, 170ms);
    EXPECT_LT(whole, 2s);
}

TEST(PtyFront, TheToolsBytesAreReadAtTheSetPace) {
    PtyFront front;
    front.setPace(20000);
    PtyClient client(front.portName());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.write(Bytes(30000, 0x33)), 30000U);
    // Bytes in the terminal's buffer need no wait.
    EXPECT_GE(std::chrono::steady_clock::now() - start, 300ms);
}

TEST(PtyFront, NewDeviceTakesTheLinkOfAVanishedOne) {
    PtyFront front;
    const std::string link = fs::absolute("camera-link").string();
    front.linkAt(link);
    PtyClient client(link);
    client.write(hex(heartbeatRequest));
    EXPECT_EQ(client.read(11).size(), 11U);
    front.vanish();
    EXPECT_FALSE(front.lineOpen());
    EXPECT_EQ(front.portName(), "");
    EXPECT_FALSE(fs::exists(fs::symlink_status(link)));
    client.read(1);
    EXPECT_TRUE(client.gone());
    client.close();
    EXPECT_FALSE(PtyClient(link).isOpen());

    front.comeBack();
    EXPECT_TRUE(front.lineOpen());
    PtyClient again(link);
    again.write(hex(heartbeatRequest));
    EXPECT_EQ(again.read(11), hex(heartbeatAnswer));
}

TEST(PtyFront, VanishingTwiceAndComingBackTwiceIsHarmless) {
    PtyFront front;
    front.vanish();
    front.vanish();
    front.comeBack();
    const std::string name = front.portName();
    front.comeBack();
    EXPECT_EQ(front.portName(), name);
    EXPECT_FALSE(name.empty());
}

TEST(PtyFront, ALinkReplacesALinkButNothingElse) {
    PtyFront front;
    fs::create_symlink("nowhere", "dangling");
    front.linkAt("dangling");
    EXPECT_EQ(fs::read_symlink("dangling"), front.portName());
    std::ofstream("file") << "kept";
    EXPECT_THROW(front.linkAt("file"), std::runtime_error);
    EXPECT_TRUE(fs::is_regular_file("file"));
}

TEST(PtyFront, RemovesItsLinkUnlessThePathWasTaken) {
    {
        PtyFront front;
        front.linkAt("mine");
        EXPECT_TRUE(fs::is_symlink("mine"));
    }
    EXPECT_FALSE(fs::is_symlink("mine"));
    {
        PtyFront first;
        first.linkAt("shared");
        fs::remove("shared");
        fs::create_symlink("elsewhere", "shared");
    }
    EXPECT_EQ(fs::read_symlink("shared"), "elsewhere");
}

TEST(PtyFront, TheRateOfTheToolIsSeen) {
    PtyFront front;
    front.withCamera([](VirtualCamera& camera) { camera.settings().mindsBaudRate = true; });
    PtyClient client(front.portName());
    client.setSpeed(B9600);
    client.write(hex(heartbeatRequest));
    EXPECT_TRUE(client.read(11, 150ms).empty());
    client.setSpeed(B460800);
    client.write(hex(heartbeatRequest));
    EXPECT_EQ(client.read(11), hex(heartbeatAnswer));
}

TEST(PtyFront, ManyThreadsMayUseTheCamera) {
    PtyFront front;
    PtyClient client(front.portName());
    std::atomic<bool> stop{false};
    std::thread reader([&] {
        while (!stop)
            front.withCamera([](VirtualCamera& camera) { camera.state().serialNumber = "A1"; });
    });
    for (int i = 0; i < 20; ++i) {
        client.write(hex(heartbeatRequest));
        EXPECT_EQ(client.read(11), hex(heartbeatAnswer));
    }
    stop = true;
    reader.join();
}

TEST(DeviceFront, ServesOnTheOtherEndOfAPair) {
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(master, 0);
    ASSERT_EQ(::grantpt(master), 0);
    ASSERT_EQ(::unlockpt(master), 0);
    {
        DeviceFront front(VirtualCamera(CameraType::ostra), ::ptsname(master));
        const Bytes request = hex(heartbeatRequest);
        ASSERT_EQ(::write(master, request.data(), request.size()), 11);
        Bytes answer(11);
        std::size_t got = 0;
        while (got < answer.size()) {
            const ssize_t count = ::read(master, answer.data() + got, answer.size() - got);
            ASSERT_GT(count, 0);
            got += static_cast<std::size_t>(count);
        }
        EXPECT_EQ(answer, hex(heartbeatAnswer));
        ::close(master);
        EXPECT_TRUE(comesTrue([&] { return !front.lineOpen(); }));
    }
}

TEST(DeviceFront, RefusesOtherFiles) {
    std::ofstream("plain") << "x";
    EXPECT_THROW(DeviceFront(VirtualCamera(), "plain"), std::runtime_error);
    EXPECT_THROW(DeviceFront(VirtualCamera(), "missing"), std::runtime_error);
}

} // namespace
} // namespace emulatortest
