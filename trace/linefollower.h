// Splits the traffic of a line into requests, answers and the raw data of uploads.
#pragma once

#include "trace/event.h"
#include "trace/framescanner.h"

#include <vector>

namespace trace {

/// Sender of the bytes.
using Side = FrameScanner::Side;

/// A complete frame, envelope or upload, or an abandoned one. The items of a side, joined in order, are all
/// bytes of that side.
struct LineItem {
    enum class Kind {
        frame,
        badFrame, ///< wrong check code or impossible length
        json,
        badJson,
        stray,     ///< outside any frame
        data,      ///< raw data of an upload
        brokenOff, ///< incomplete frame or envelope
    };

    Side from = Side::tool;
    Kind kind = Kind::stray;
    Bytes bytes;
    Time lastAt{0};              ///< time of its last byte
    std::size_t expected = 0;    ///< data: announced size
    std::size_t dataSize = 0;    ///< data: bytes that came
    std::uint8_t uploadCode = 0; ///< data, and the frame behind it: command code of the announcement
};

/// Follows both directions of one line. No clock: the caller gives the time.
class LineFollower {
public:
    /// Data of uploads may be as large as a file: an item without its bytes has their number only.
    enum class DataBytes { kept, counted };

    explicit LineFollower(DataBytes dataBytes = DataBytes::kept) : m_dataBytes(dataBytes) {}

    /// Items that these bytes complete, in order. The bytes came up to `slack` before now.
    [[nodiscard]] std::vector<LineItem> receive(Side from, ByteView bytes, Time now, Time slack = Time{0});
    /// Items abandoned after a second without bytes.
    [[nodiscard]] std::vector<LineItem> passTime(Time now);
    /// Ends the line: abandons incomplete items.
    [[nodiscard]] std::vector<LineItem> finish();

    /// Bytes that belong to no item yet, without those of an upload's data.
    [[nodiscard]] ByteView waiting(Side from) const { return direction(from).scanner.waiting(); }
    /// The received part of an upload's data; null while there is none.
    [[nodiscard]] const LineItem* dataUnderWay() const { return m_data ? &*m_data : nullptr; }

private:
    struct Direction {
        FrameScanner scanner;
        Time lastByteAt{0};
        bool otherSpoke = false; ///< since this side's last byte
    };
    struct Announcement {
        std::uint8_t code = 0;
        std::uint32_t fileSize = 0;
    };
    using Items = std::vector<LineItem>;

    [[nodiscard]] Direction& direction(Side side) { return side == Side::tool ? m_tool : m_camera; }
    [[nodiscard]] const Direction& direction(Side side) const {
        return side == Side::tool ? m_tool : m_camera;
    }
    void scan(Side from, Items& items);
    void breakOff(Side from, Items& items);
    void finishData(Items& items);
    [[nodiscard]] ByteView takeData(ByteView bytes, Time now, Items& items);
    void noteAnnouncement(const LineItem& frame);
    void answerAnnouncement(LineItem& frame);

    DataBytes m_dataBytes;
    Direction m_tool{FrameScanner(Side::tool)};
    Direction m_camera{FrameScanner(Side::camera)};
    std::optional<Announcement> m_announced;
    std::optional<LineItem> m_data;         ///< received part of an upload's data
    std::optional<std::uint8_t> m_uploaded; ///< code of an upload whose verdict may follow
};

} // namespace trace
