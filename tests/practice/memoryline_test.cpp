// The line in memory in real time: threads, timeouts, the time that bytes take. tests/simulation compares it
// with a pseudo-terminal.
#include "emulator/memory/memoryfront.h"
#include "link/camerasp.h"
#include "tests/support/stdoutcapture.h"

#include <gtest/gtest.h>
#include <serial/serial.h>

#include <thread>

using namespace std::chrono_literals;
using emulator::MemoryFront;
using emulator::VirtualCamera;
using std::chrono::steady_clock;

namespace {

constexpr std::uint32_t usualRate = 460800;

serial::Timeout timeoutOf(std::uint32_t ms) {
    return serial::Timeout(serial::Timeout::max(), ms, 0, ms, 0);
}

TEST(MemoryLine, ReadWaitsForItsTimeout) {
    MemoryFront front;
    serial::Serial port(front.portName(), usualRate, timeoutOf(50));
    const auto began = steady_clock::now();
    std::vector<std::uint8_t> bytes;
    EXPECT_EQ(port.read(bytes, 1), 0U);
    EXPECT_GE(steady_clock::now() - began, 50ms);
}

TEST(MemoryLine, FlushWaitsForTheTimeOfTheBytes) {
    constexpr std::size_t count = 480;
    MemoryFront front;
    front.followRate();
    serial::Serial port(front.portName(), 9600, timeoutOf(1000));
    const std::vector<std::uint8_t> bytes(count, 0x20);
    const auto began = steady_clock::now();
    EXPECT_EQ(port.write(bytes.data(), count), count);
    EXPECT_EQ(port.available(), 0U);
    port.flush();
    EXPECT_GE(steady_clock::now() - began, 500ms);
    EXPECT_EQ(front.withCamera([](VirtualCamera& camera) { return camera.record().byteCount; }), count);
}

TEST(MemoryLine, WriteTimesOutWhenTheCameraDoesNotRead) {
    constexpr std::size_t count = 10000;
    MemoryFront front;
    front.withCamera([](VirtualCamera& camera) { camera.addFault("stop-reading=0@heartbeat"); });
    CameraSp client(front.portName(), usualRate);
    EXPECT_TRUE(client.testHeartBeat());
    serial::Serial port(front.portName(), usualRate, timeoutOf(50));
    const std::vector<std::uint8_t> bytes(count, 0x20);
    EXPECT_EQ(port.write(bytes.data(), count), emulator::WriteQueue().size);
}

TEST(MemoryLine, VanishingEndsAWaitingRead) {
    MemoryFront front;
    serial::Serial port(front.portName(), usualRate, timeoutOf(60000));
    std::thread pulls([&front] { front.vanish(); });
    std::vector<std::uint8_t> bytes{0x20};
    EXPECT_THROW(port.read(bytes, 1), serial::IOException);
    pulls.join();
    EXPECT_THROW(port.write(bytes.data(), bytes.size()), serial::SerialException);
}

TEST(MemoryLine, ListsItsPortWhileItIsThere) {
    const auto names = [] {
        std::vector<std::string> all;
        for (const serial::PortInfo& port : serial::list_ports())
            all.push_back(port.port + ' ' + port.description);
        return all;
    };
    MemoryFront front(VirtualCamera(), "port", {"camera", "id"});
    EXPECT_EQ(names(), std::vector<std::string>{"port camera"});
    front.vanish();
    EXPECT_TRUE(names().empty());
    EXPECT_THROW(CameraSp("port", usualRate), serial::IOException);
    front.comeBack();
    EXPECT_EQ(names(), std::vector<std::string>{"port camera"});
}

TEST(MemoryLine, SeveralThreadsUseTheirLines) {
    constexpr int times = 3; // each lasts its timeout
    const StdoutCapture log;
    MemoryFront shared;
    const auto ask = [](const std::string& port) {
        CameraSp client(port, usualRate);
        for (int i = 0; i < times; ++i)
            client.testHeartBeat();
    };
    std::thread first([&] { ask(shared.portName()); });
    std::thread second([&ask] {
        MemoryFront own;
        ask(own.portName());
    });
    const auto record = [&shared] {
        return shared.withCamera([](VirtualCamera& camera) { return camera.record(); });
    };
    while (record().count(1) < times) {
        EXPECT_TRUE(serial::list_ports().empty());
        std::this_thread::sleep_for(1ms);
    }
    first.join();
    second.join();
    EXPECT_EQ(record().badFrames, 0U);
}

} // namespace
