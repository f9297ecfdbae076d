// Faults of the line, over a real device.
#include "emulator/line/ptyfront.h"
#include "tests/emulator/line/ptyclient.h"

namespace emulatortest {
namespace {

TEST(LineFault, DeviceReturnsAfterVanishingInAnAnswer) {
    PtyFront front;
    front.withCamera([](VirtualCamera& camera) { camera.addFault("hang-up=4@heartbeat#1"); });
    PtyClient client(front.portName());
    client.write(hex(heartbeatRequest));
    EXPECT_EQ(client.read(4), hex("AA 5A 01 01"));
    EXPECT_TRUE(comesTrue([&] { return !front.lineOpen(); }));
    EXPECT_TRUE(client.read(1).empty());
    EXPECT_TRUE(client.gone());
    front.comeBack();
    PtyClient again(front.portName());
    again.write(hex(heartbeatRequest));
    EXPECT_EQ(again.read(11), hex(heartbeatAnswer));
}

TEST(LineFault, AFarEndThatStopsReadingBlocksTheWriter) {
    PtyFront front;
    front.withCamera([](VirtualCamera& camera) { camera.addFault("stop-reading@heartbeat"); });
    PtyClient client(front.portName());
    client.write(hex(heartbeatRequest));
    EXPECT_EQ(client.read(11), hex(heartbeatAnswer));
    const Bytes many(200000, 0x33);
    EXPECT_LT(client.write(many, 200ms), many.size());
}

TEST(LineFault, AFarEndThatStopsForAWhileReadsOn) {
    PtyFront front;
    front.withCamera([](VirtualCamera& camera) { camera.addFault("stop-reading=300@heartbeat"); });
    PtyClient client(front.portName());
    client.write(hex(heartbeatRequest));
    EXPECT_EQ(client.read(11), hex(heartbeatAnswer));
    const auto start = std::chrono::steady_clock::now();
    const Bytes many(100000, 0x33);
    EXPECT_EQ(client.write(many), many.size());
    EXPECT_GE(std::chrono::steady_clock::now() - start, 200ms);
}

TEST(LineFault, CameraKeepsUploadDataOfAVanishedDevice) {
    PtyFront front;
    front.withCamera([](VirtualCamera& camera) { camera.addFault("upload-hang-up=50@appUpdate#1"); });
    PtyClient client(front.portName());
    const Bytes file = countingBytes(1300);
    client.write(
        hex("AA 5A 01 1B 14 00 00 00 14 05 00 00 9F 04 FA 44 F3 CC 4A 6C 92 DA E6 7B 41 50 0F C7 55 3D"));
    EXPECT_EQ(client.read(15).size(), 15U);
    client.write(ByteView(file).range(0, 700).toBytes());
    EXPECT_TRUE(comesTrue([&] { return !front.lineOpen(); }));
    front.comeBack();
    EXPECT_EQ(front.withCamera([](VirtualCamera& camera) { return camera.state().heldUpload; }),
              ByteView(file).range(0, 700).toBytes());
}

TEST(LineFault, EchoingLineReturnsTheRequest) {
    PtyFront front;
    front.setTraits(parseLine("echo"));
    PtyClient client(front.portName());
    client.write(hex(heartbeatRequest));
    EXPECT_EQ(client.read(22), hex(std::string(heartbeatRequest) + heartbeatAnswer));
}

TEST(LineFault, BusyDeviceIsExclusive) {
    // A privileged user may still open it, so the mark itself is looked at.
    PtyFront front;
    const PtyClient client(front.portName());
    front.setBusy(true);
    EXPECT_TRUE(client.exclusive());
    EXPECT_EQ(PtyClient(front.portName()).isOpen(), ::geteuid() == 0);
    front.setBusy(false);
    EXPECT_FALSE(client.exclusive());
    EXPECT_TRUE(PtyClient(front.portName()).isOpen());
}

} // namespace
} // namespace emulatortest
