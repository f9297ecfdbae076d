// The virtual camera's request decoder: bytes in any pieces, well-formed requests, time, faults.
#include "emulator/camera/virtualcamera.h"
#include "link/protocol/jsonenvelope.h"

#include <algorithm>
#include <array>

namespace {

using namespace std::chrono_literals;
using emulator::Time;
using emulator::VirtualCamera;
using protocol::Bytes;
using protocol::ByteView;

// What an operation byte means; smaller ones are that many raw bytes.
enum Operation : std::uint8_t {
    frame = 240,
    json = 241,
    fault = 242,
    shortWait = 243,
    longWait = 244,
    reopen = 245
};

constexpr std::array faults{
    "silent",
    "late",
    "glue",
    "truncate=3",
    "stray=1",
    "before=AA33",
    "split=4,20",
    "length=+1",
    "bad-check",
    "payload=0",
    "result=1",
    "records=20",
    "count=200",
    "picture-size=-1",
    "refuse",
    "offset=size+1",
    "offset=512",
    "no-verdict",
    "verdict=1",
    "stall=40,50",
    "upload-hang-up=50",
    "stay-down",
    "back-at=2",
    "no-marker",
    "no-size",
    "size-text=x",
    "invalid-json",
    "short-json=9",
    "hang-up=4",
    "stop-reading=30",
    "hide-newest",
    "value-size=49",
    "zero-inside=1",
    "delay=60",
};

class Reader {
public:
    explicit Reader(ByteView bytes) : m_rest(bytes) {}
    [[nodiscard]] bool empty() const { return m_rest.empty(); }
    std::uint8_t byte() {
        const Bytes one = take(1);
        return one.empty() ? std::uint8_t{0} : one.front();
    }
    Bytes take(std::size_t most) {
        const Bytes taken = m_rest.range(0, most).toBytes();
        m_rest = m_rest.range(taken.size(), m_rest.size());
        return taken;
    }

private:
    ByteView m_rest;
};

emulator::CameraSettings settingsFrom(Reader& input) {
    auto settings = emulator::settingsForType(static_cast<emulator::CameraType>(input.byte() % 5));
    const std::uint8_t switches = input.byte();
    settings.answersEveryGeneration = (switches & 1U) != 0;
    settings.answersAllAddresses = true;
    settings.deleteOfAbsentFails = (switches & 2U) != 0;
    settings.holdsAnnouncedImage = (switches & 4U) != 0;
    settings.v1ReadMatchesLowByte = (switches & 8U) != 0;
    settings.drawPicture = [](std::uint16_t, std::uint32_t variation) { return Bytes(variation % 700, 7); };
    return settings;
}

void step(VirtualCamera& camera, Reader& input, Time& now) {
    const std::uint8_t operation = input.byte();
    switch (operation) {
    case frame: {
        const std::uint8_t command = input.byte();
        const Bytes payload = input.take(input.byte());
        camera.receive(protocol::buildFrame(command, payload, 1), now);
        break;
    }
    case json:
        camera.receive(protocol::buildJsonRequest(ByteView(input.take(input.byte())).toText()), now);
        break;
    case fault:
        camera.addFault(faults.at(input.byte() % faults.size()));
        break;
    case shortWait:
        now += 10ms;
        break;
    case longWait:
        now += 3s;
        break;
    case reopen:
        camera.lineReopened(now);
        break;
    default:
        camera.receive(input.take(operation), now);
    }
    static_cast<void>(camera.takeDue(now));
    static_cast<void>(camera.hangUpDue(now));
    static_cast<void>(camera.nextDue());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Reader input(ByteView(std::span(data, size)));
    VirtualCamera camera(settingsFrom(input));
    Time now{0};
    while (!input.empty())
        step(camera, input, now);
    return 0;
}
