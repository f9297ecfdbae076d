// Tells what passes over a line: requests, answers, and the raw data of uploads.
#pragma once

#include "trace/event.h"
#include "trace/framescanner.h"

#include <vector>

namespace trace {

/// Whose bytes they are.
using Side = FrameScanner::Side;

/// Something whole, or something that will not become whole any more. The bytes of all items of a side, one
/// behind the other, are the bytes of that side.
struct LineItem {
    enum class Kind {
        frame,
        badFrame, ///< wrong check code or impossible length
        json,
        badJson,
        stray,     ///< outside any frame
        data,      ///< raw data of an upload
        brokenOff, ///< the beginning of a frame or envelope
    };

    Side from = Side::tool;
    Kind kind = Kind::stray;
    Bytes bytes;
    Time lastAt{0};              ///< when its last byte passed
    std::size_t expected = 0;    ///< data: bytes that were to come
    std::uint8_t uploadCode = 0; ///< data, and the frame behind it: command code of the announcement
};

/// Follows both directions of one line. No clock: the caller says what time it is.
class LineFollower {
public:
    /// What became whole with these bytes, in order.
    [[nodiscard]] std::vector<LineItem> receive(Side from, ByteView bytes, Time now);
    /// What broke off because nothing followed for a second.
    [[nodiscard]] std::vector<LineItem> passTime(Time now);
    /// The line has ended: whatever is not whole is broken off.
    [[nodiscard]] std::vector<LineItem> finish();

    /// Bytes that belong to no item yet; of an upload's data, none are shown.
    [[nodiscard]] ByteView waiting(Side from) const { return direction(from).scanner.waiting(); }

private:
    struct Direction {
        FrameScanner scanner;
        Time lastByteAt{0};
        bool otherSpoke = false; ///< the other side has since begun something
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

    Direction m_tool{FrameScanner(Side::tool)};
    Direction m_camera{FrameScanner(Side::camera)};
    std::optional<Announcement> m_announced;
    std::optional<LineItem> m_data;         ///< an upload's data, as far as it has come
    std::optional<std::uint8_t> m_uploaded; ///< a verdict may come
};

} // namespace trace
