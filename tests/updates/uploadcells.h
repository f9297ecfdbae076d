// Uploads to virtual cameras over pseudo-terminals, many at once: they mostly wait.
#pragma once

#include "link/camerasp.h"
#include "tests/support/testfront.h"
#include "tests/support/workingdirectory.h"

#include <gtest/gtest.h>

#include <future>
#include <optional>
#include <string>
#include <vector>

namespace uploadcells {

using Bytes = std::vector<std::uint8_t>;
using std::chrono::milliseconds;

/// Blanks and Chinese characters in the name of every file.
inline constexpr const char* filePath = "新 固件 v2.bin";

/// Bytes without a period, so that a shifted slice differs.
inline Bytes content(std::size_t size) {
    Bytes bytes(size);
    std::uint32_t value = 12345;
    for (std::uint8_t& byte : bytes) {
        value = value * 1664525U + 1013904223U;
        byte = static_cast<std::uint8_t>(value >> 24U);
    }
    return bytes;
}

inline std::unique_ptr<CameraSp> connect(TestFront& front) {
    auto client = std::make_unique<CameraSp>(front.portName(), 460800);
    client->setSlaveAddress(
        front.withCamera([](emulator::VirtualCamera& camera) { return camera.settings().address; }));
    return client;
}

inline emulator::CameraRecord recordOf(TestFront& front) {
    return front.withCamera([](emulator::VirtualCamera& camera) { return camera.record(); });
}

/// Failures of one cell.
class Complaints {
public:
    explicit Complaints(std::string cell) : m_cell(std::move(cell)) {}
    void require(bool holds, const std::string& what) {
        if (!holds)
            m_texts.push_back(m_cell + ": " + what);
    }
    [[nodiscard]] const std::vector<std::string>& texts() const { return m_texts; }

private:
    std::string m_cell;
    std::vector<std::string> m_texts;
};

/// Runs each cell on its own thread and reports all failures.
template <typename Cell>
void runSideBySide(const std::vector<Cell>& cells, Complaints (*run)(const Cell&)) {
    std::vector<std::future<Complaints>> running;
    running.reserve(cells.size());
    for (const Cell& cell : cells)
        running.push_back(std::async(std::launch::async, [&cell, run] { return run(cell); }));
    for (auto& each : running) {
        const Complaints complaints = each.get();
        for (const std::string& text : complaints.texts())
            ADD_FAILURE() << text;
    }
}

} // namespace uploadcells
