// What a virtual camera has received.
#pragma once

#include "emulator/camera/camerasettings.h"

#include <vector>

namespace emulator {

using trace::Event;

struct ReceivedFrame {
    Time at{0};
    Bytes bytes;       ///< whole, with header and check code
    bool json = false; ///< an envelope with JSON text instead of a frame
    std::uint8_t address = 0;
    std::uint8_t code = 0;  ///< as on the line
    Bytes payload;          ///< JSON: the text
    bool wellFormed = true; ///< length and check code right
    bool addressRight = true;
    bool heard = true; ///< false while booting
};

struct ReceivedChunk {
    Time at{0};
    Bytes bytes;
};

struct UploadRecord {
    std::uint8_t code = 0; ///< of the announcement
    std::string name;      ///< empty for images announced without one
    std::uint32_t fileSize = 0;
    Bytes digest;
    std::uint32_t offset = 0; ///< as answered
    bool refused = false;
    Time answeredAt{0}; ///< when the announcement answer went out
    std::optional<Time> firstByteAt;
    Bytes received;                      ///< raw data
    std::vector<std::size_t> chunkSizes; ///< as the line showed them
    std::uint32_t earlyBytes = 0;        ///< came sooner than 1.9 s after the answer
    bool finished = false;               ///< complete, or given up after the silence
    bool complete = false;               ///< every byte from the offset on came
    bool digestRight = false;
};

/// The second application-update protocol, since the last different announcement.
struct AppV1Record {
    std::uint32_t announcements = 0; ///< identical ones
    bool changedWithinRun = false;   ///< a different announcement came before five of the previous one
    std::uint32_t closingPackets = 0;
    std::uint32_t dataPackets = 0; ///< the tool must never send one
};

struct CameraRecord {
    std::vector<ReceivedFrame> frames; ///< good, bad and foreign ones
    std::vector<ReceivedChunk> chunks; ///< every byte, as it came
    std::uint64_t byteCount = 0;
    std::uint32_t badFrames = 0;     ///< wrong check code, impossible length, or broken off
    std::uint32_t foreignFrames = 0; ///< for another address
    std::uint64_t garbageBytes = 0;  ///< outside any frame
    std::vector<UploadRecord> uploads;
    AppV1Record appV1;

    /// Well-formed frames with this code.
    [[nodiscard]] std::size_t count(std::uint8_t code) const {
        std::size_t found = 0;
        for (const ReceivedFrame& frame : frames)
            found += frame.wellFormed && !frame.json && frame.code == code ? 1 : 0;
        return found;
    }
};

} // namespace emulator
