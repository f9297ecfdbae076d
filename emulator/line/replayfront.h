// Serves a recorded camera on a serial line in real time.
#pragma once

#include "emulator/camera/replaycamera.h"
#include "emulator/line/byteline.h"
#include "emulator/line/linefront.h"

namespace emulator {

/// Runs until its destruction. The camera and the line are borrowed; only the front uses them meanwhile.
class ReplayFront final : public LineFront {
public:
    ReplayFront(ReplayCamera& camera, const ByteLine& line) : m_line(line) { start(camera, line.line()); }
    ~ReplayFront() override { stop(); }

protected:
    void closeLine() override {}
    [[nodiscard]] std::optional<std::uint32_t> lineSpeed() const override { return m_line.rate(); }

private:
    const ByteLine& m_line;
};

} // namespace emulator
