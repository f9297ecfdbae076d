// Announcements, answers and packets of the uploads.
#pragma once

#include "link/protocol/commands.h"
#include "link/protocol/frame.h"

namespace protocol {

/// Announcements that carry a name. Their answers carry a type.
[[nodiscard]] constexpr bool isNamed(Command announcement) {
    return announcement == Command::modelAnnounce || announcement == Command::appV1Announce;
}

/// Announcements with raw data behind their answers.
[[nodiscard]] constexpr bool announcesRawData(Command command) {
    return command == Command::appAnnounce || command == Command::firewareAnnounce ||
           command == Command::modelAnnounce;
}

/// Announcement of an application or system image (20 bytes): size and digest.
namespace announcement {
inline constexpr Field<std::uint32_t> fileSize{0};
inline constexpr std::size_t digest = fileSize.end();
inline constexpr std::size_t size = digest + digestSize;
static_assert(size == 20);
} // namespace announcement

/// Announcement with a name (21 bytes and the name): model, and application image of the second protocol.
namespace named_announcement {
inline constexpr Field<std::uint8_t> constantOne{0};
inline constexpr Field<std::uint32_t> fileSize{1};
inline constexpr std::size_t digest = fileSize.end();
inline constexpr std::size_t name = digest + digestSize;
static_assert(name == 21);
} // namespace named_announcement

/// Payload of the answer to the announcement of an application or system image. The verdict ends after the
/// status.
namespace image_answer {
inline constexpr Field<std::uint8_t> status{0};
inline constexpr Field<std::uint32_t> offset{1}; ///< resume offset
} // namespace image_answer

/// Payload of the answer to a named announcement. A model's verdict ends after the result.
namespace named_answer {
inline constexpr Field<std::uint8_t> type{0};
inline constexpr Field<std::uint8_t> result{1};
inline constexpr Field<std::uint32_t> offset{2}; ///< resume offset
inline constexpr std::uint8_t announcementType = 1;
inline constexpr std::uint8_t verdictType = 2;
} // namespace named_answer

/// Packet of the second protocol: offset, length, data.
namespace packet_layout {
inline constexpr Field<std::uint32_t> offset{0};
inline constexpr Field<std::uint32_t> length{4};
inline constexpr std::size_t data = length.end();
} // namespace packet_layout

/// Highest result of an accepted packet.
inline constexpr std::uint8_t packetLastGoodResult = 1;

/// digest: 16 raw bytes; size in bytes.
[[nodiscard]] Bytes buildAnnouncement(std::uint32_t fileSize, ByteView digest);
[[nodiscard]] Bytes buildNamedAnnouncement(std::uint32_t fileSize, ByteView digest, std::string_view name);
/// A packet without data closes the upload.
[[nodiscard]] Bytes buildPacket(std::uint32_t offset, ByteView data);

inline constexpr std::size_t rawChunkSize = 512;
inline constexpr std::size_t packetDataSize = 1024;
/// Between the answer to an announcement and the first byte of raw data, or the wait for the verdict.
inline constexpr std::uint32_t pauseAfterAnnouncementMs = 2000;

/// Requests of one upload by the second protocol.
inline constexpr std::uint32_t appV1Announcements = 5;
inline constexpr std::uint32_t appV1ClosingPackets = 11;

} // namespace protocol
