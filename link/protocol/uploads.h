// Announcements, answers and packets of the uploads.
#pragma once

#include "link/protocol/frame.h"

namespace protocol {

/// Announcement of an application or system image (20 bytes): size and digest.
namespace announcement {
inline constexpr Field<std::uint32_t> fileSize{0};
inline constexpr std::size_t digest = 4;
inline constexpr std::size_t size = 20;
} // namespace announcement

/// Announcement with a name (21 bytes and the name): model, and application image of the second protocol.
namespace named_announcement {
inline constexpr Field<std::uint8_t> constantOne{0};
inline constexpr Field<std::uint32_t> fileSize{1};
inline constexpr std::size_t digest = 5;
inline constexpr std::size_t name = 21;
} // namespace named_announcement

/// Packet of the second protocol: offset, length, data.
namespace packet_layout {
inline constexpr Field<std::uint32_t> offset{0};
inline constexpr Field<std::uint32_t> length{4};
inline constexpr std::size_t data = 8;
} // namespace packet_layout

/// Answer to the announcement of an application or system image, by place in the whole frame.
namespace image_answer {
inline constexpr Field<std::uint8_t> status = inPayload<std::uint8_t>(0);
inline constexpr Field<std::uint32_t> offset = inPayload<std::uint32_t>(1);
static_assert(status.offset == 8 && offset.offset == 9);
} // namespace image_answer

/// Answer to a named announcement, by place in the whole frame.
namespace named_answer {
inline constexpr Field<std::uint8_t> type = inPayload<std::uint8_t>(0);
inline constexpr Field<std::uint8_t> result = inPayload<std::uint8_t>(1);
inline constexpr Field<std::uint32_t> offset = inPayload<std::uint32_t>(2);
static_assert(type.offset == 8 && result.offset == 9 && offset.offset == 10);
} // namespace named_answer

/// digest: 16 raw bytes; size in bytes.
[[nodiscard]] Bytes buildAnnouncement(std::uint32_t fileSize, ByteView digest);
[[nodiscard]] Bytes buildNamedAnnouncement(std::uint32_t fileSize, ByteView digest, std::string_view name);
/// A packet without data closes the upload.
[[nodiscard]] Bytes buildPacket(std::uint32_t offset, ByteView data);

inline constexpr std::size_t rawChunkSize = 512;
inline constexpr std::size_t packetDataSize = 1024;

} // namespace protocol
