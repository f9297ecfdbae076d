#include "link/protocol/uploads.h"

namespace protocol {

Bytes buildAnnouncement(std::uint32_t fileSize, ByteView digest) {
    Bytes payload;
    put(payload, announcement::fileSize, fileSize);
    append(payload, digest);
    return payload;
}

Bytes buildNamedAnnouncement(std::uint32_t fileSize, ByteView digest, std::string_view name) {
    Bytes payload;
    put(payload, named_announcement::constantOne, std::uint8_t{1});
    put(payload, named_announcement::fileSize, fileSize);
    append(payload, digest);
    append(payload, bytesOf(name));
    return payload;
}

Bytes buildPacket(std::uint32_t offset, ByteView data) {
    Bytes payload;
    put(payload, packet_layout::offset, offset);
    put(payload, packet_layout::length, static_cast<std::uint32_t>(data.size()));
    append(payload, data);
    return payload;
}

} // namespace protocol
