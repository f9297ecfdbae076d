// A recorder fed with bytes and times.
#pragma once

#include "link/protocol/frame.h"
#include "tests/trace/linebytes.h"
#include "trace/recorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>

namespace tracetest {

using namespace linetest;
using namespace trace;
using namespace std::chrono_literals;

class TapBench {
public:
    explicit TapBench(bool blanked = false) : recorder(headFor(blanked), sink()) {
        recorder.onEvent([this](const Event& event) { words.push_back(event.text); });
    }

    void tool(const Bytes& bytes, Time pause = 10ms) { pass(Side::tool, bytes, pause); }
    void tool(std::string_view bytes, Time pause = 10ms) { tool(hex(bytes), pause); }
    void camera(const Bytes& bytes, Time pause = 10ms) { pass(Side::camera, bytes, pause); }
    void camera(std::string_view bytes, Time pause = 10ms) { camera(hex(bytes), pause); }

    [[nodiscard]] Recording recording() const {
        std::istringstream lines(*text);
        return readRecording(lines);
    }
    [[nodiscard]] std::string lastWords() const { return words.empty() ? std::string() : words.back(); }

    Time now{0};
    std::shared_ptr<std::string> text = std::make_shared<std::string>();
    std::vector<std::string> words;
    Recorder recorder;

private:
    static RecordingHead headFor(bool blanked) {
        RecordingHead head;
        head.start = "2026-01-02T03:04:05.006Z";
        head.device = "/dev/ttyUSB0";
        head.serialsBlanked = blanked;
        return head;
    }
    Recorder::Sink sink() {
        return [kept = text](const std::string& lines) { *kept += lines; };
    }
    void pass(Side from, const Bytes& bytes, Time pause) {
        now += pause;
        recorder.pass(from, bytes, now);
    }
};

} // namespace tracetest
