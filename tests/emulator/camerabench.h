// A virtual camera on a bench: requests in, answers out, with a time that the test turns on.
#pragma once

#include "emulator/virtualcamera.h"
#include "link/protocol/frame.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <string>

namespace emulatortest {

using namespace emulator;
using namespace std::chrono_literals;

/// "AA 5A 01"; blanks do not matter.
inline Bytes hex(std::string_view text) {
    const auto digit = [](char c) {
        return std::isdigit(static_cast<unsigned char>(c)) != 0 ? c - '0' : std::toupper(c) - 'A' + 10;
    };
    std::string digits;
    for (const char c : text) {
        if (c != ' ')
            digits += c;
    }
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(digit(digits[i]) * 16 + digit(digits[i + 1])));
    return bytes;
}

inline Bytes countingBytes(std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<std::uint8_t>(i % 256);
    return bytes;
}

class CameraBench {
public:
    explicit CameraBench(CameraType type = CameraType::ostra) : camera(type) {
        camera.onEvent([this](const Event& event) { events.push_back(event); });
    }

    /// What the camera says within the time, from now on.
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
    /// A request that no literal exists for.
    Bytes askFrame(std::uint8_t code, const Bytes& payload, Time patience = 400ms) {
        return ask(protocol::buildFrame(code, payload, camera.settings().address), patience);
    }

    VirtualCamera camera;
    Time now{1s};
    bool hungUp = false;
    std::vector<Event> events;
};

inline const char* const heartbeatRequest = "AA 5A 01 01 01 00 00 00 00 5E FA";
inline const char* const heartbeatAnswer = "AA 5A 01 01 01 00 00 00 01 7F EA";
inline const char* const getSnRequest = "AA 5A 01 02 01 00 00 00 03 DD 04";
inline const char* const snAnswerA1 = "AA 5A 01 02 04 00 00 00 03 00 41 31 8A EF";
inline const char* const jsonPropertyQuery = "01 17 00 00 00 00 00 00 00 00 00 3A FD FC FB FA 64 00 32 00 7B "
                                             "22 74 69 6D 65 73 74 61 6D 70 22 3A 31 2C "
                                             "22 73 65 71 4E 75 6D 22 3A 31 2C 22 63 6D 64 54 79 70 65 22 3A "
                                             "31 34 35 2C 22 69 6E 66 6F 22 3A 22 22 7D "
                                             "2B 55";

/// Emulated time is cheap; real time is not: how long a test waits for something that must come.
inline constexpr std::chrono::seconds longEnough{10};

} // namespace emulatortest
