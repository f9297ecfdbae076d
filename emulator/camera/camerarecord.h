// Record of the bytes that a virtual camera has received.
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
    std::uint8_t code = 0;  ///< on the line
    Bytes payload;          ///< JSON: the text
    bool wellFormed = true; ///< right length and check code
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
    std::uint32_t offset = 0; ///< resume offset of the answer
    bool refused = false;
    Time answeredAt{0}; ///< send time of the announcement answer
    std::optional<Time> firstByteAt;
    Bytes received;                      ///< raw data
    std::vector<std::size_t> chunkSizes; ///< sizes of the reads
    std::uint32_t earlyBytes = 0;        ///< received within 1.9 s of the answer
    bool finished = false;               ///< complete or abandoned
    bool complete = false;               ///< all bytes from the offset on received
    bool digestRight = false;
};

/// The second application-update protocol, since the announcement last changed.
struct AppV1Record {
    std::uint32_t announcements = 0; ///< identical ones
    bool changedWithinRun = false;   ///< the announcement changed before its fifth repetition
    std::uint32_t closingPackets = 0;
    std::uint32_t dataPackets = 0; ///< the tool must never send one
};

struct CameraRecord {
    std::vector<ReceivedFrame> frames; ///< good, bad and foreign ones
    std::vector<ReceivedChunk> chunks; ///< all reads
    std::uint64_t byteCount = 0;
    std::uint32_t badFrames = 0;     ///< wrong check code, impossible length, or abandoned
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
