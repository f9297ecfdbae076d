// A virtual camera fed with requests, on the clock of the test.
#pragma once

#include "emulator/camera/virtualcamera.h"
#include "link/protocol/frame.h"
#include "tests/trace/linebytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace emulatortest {

using namespace emulator;
using namespace linetest;
using namespace trace;
using namespace std::chrono_literals;

class CameraBench {
public:
    explicit CameraBench(CameraType type = CameraType::ostra) : camera(type) {
        camera.onEvent([this](const Event& event) { events.push_back(event); });
    }

    /// Bytes of the camera within the time.
    Bytes listen(Time duration) {
        const Time end = now + duration;
        Bytes heard;
        while (camera.nextDue() && *camera.nextDue() <= end) {
            now = std::max(now, *camera.nextDue());
            protocol::append(heard, camera.takeDue(now));
            hungUp = camera.hangUpDue(now) || hungUp;
        }
        now = end;
        return heard;
    }

    Bytes ask(const Bytes& request, Time patience = 400ms) {
        camera.receive(request, now);
        return listen(patience);
    }
    Bytes ask(std::string_view request, Time patience = 400ms) { return ask(hex(request), patience); }
    /// For requests without a literal.
    Bytes askFrame(std::uint8_t code, const Bytes& payload, Time patience = 400ms) {
        return ask(protocol::buildFrame(code, payload, camera.settings().address), patience);
    }

    VirtualCamera camera;
    Time now{1s};
    bool hungUp = false;
    std::vector<Event> events;
};

/// Limit of waits in real time.
inline constexpr std::chrono::seconds longEnough{10};

} // namespace emulatortest
