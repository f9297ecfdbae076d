// Fixture for the link on the recording library.
#pragma once

#include "link/camerasp.h"
#include "tests/fake/fakeserial.h"
#include "tests/support/stdoutcapture.h"
#include "tests/support/testclock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

using fake_serial::bytes;
using fake_serial::hex;
using Lines = std::vector<std::string>;

/// A client on the recording library, whose pauses end at once.
class LinkTest : public testing::Test {
protected:
    LinkTest() { clock.skipPauses(); }

    /// The calls since the client was made.
    [[nodiscard]] static Lines calls() {
        Lines all = fake_serial::calls();
        all.erase(all.begin());
        return all;
    }

    static void answer(const std::string& hexText) { fake_serial::willRead(bytes(hexText)); }

    struct FreshLibrary {
        FreshLibrary() { fake_serial::reset(); }
    };

    FreshLibrary fresh; // before the client, whose construction is the first call
    StdoutCapture out;
    TestClock clock;
    CameraSp camera{"COM9", 460800, clock};
};

/// `count` lines of the same text.
inline Lines times(int count, const std::string& line) {
    return Lines(static_cast<std::size_t>(count), line);
}

inline Lines operator+(Lines first, const Lines& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// "setTimeout" in the words of the recording library.
inline std::string timeouts(unsigned readMs, unsigned writeMs) {
    return "setTimeout 4294967295," + std::to_string(readMs) + ",0," + std::to_string(writeMs) + ",0";
}
inline std::string timeouts(unsigned ms) {
    return timeouts(ms, ms);
}
