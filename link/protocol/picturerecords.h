// Picture catalogue records of both generations, and the picture requests.
#pragma once

#include "link/protocol/frame.h"

#include <memory>

namespace protocol {

/// Fields in which the records of both generations end.
struct RecordTail {
    Field<std::uint8_t> triggerType;
    Field<std::uint8_t> triggerAngle;
    Field<std::uint32_t> creationTime;
    Field<std::uint32_t> fileSize;
    std::size_t digest;
    std::size_t end;
};
[[nodiscard]] constexpr RecordTail recordTailAt(std::size_t offset) {
    return {{offset}, {offset + 1}, {offset + 2}, {offset + 6}, offset + 10, offset + 10 + digestSize};
}

/// First-generation catalogue record, 27 bytes.
namespace origin_record {
inline constexpr Field<std::uint8_t> id{0};
inline constexpr RecordTail tail = recordTailAt(id.end());
inline constexpr std::size_t size = tail.end;
static_assert(size == 27);
} // namespace origin_record

/// V1 catalogue record, 33 bytes.
namespace v1_record {
inline constexpr Field<std::uint16_t> id{0};
inline constexpr Field<std::uint32_t> date{2};
inline constexpr Field<std::uint8_t> gid{6};
inline constexpr RecordTail tail = recordTailAt(gid.end());
inline constexpr std::size_t size = tail.end;
static_assert(size == 33);
} // namespace v1_record

/// Values of a catalogue record of either generation.
struct PictureInfo {
    std::uint16_t id = 0;
    std::uint32_t date = 0; ///< V1 only
    std::uint8_t gid = 0;   ///< V1 only
    std::uint8_t triggerType = 0;
    std::uint8_t triggerAngle = 0;
    std::uint32_t creationTime = 0; ///< unit not known; shown as a plain number
    std::uint32_t fileSize = 0;     ///< bytes
    Bytes digest;                   ///< MD5 of the picture, 16 bytes
};

/// Both throw ShortAnswer when the bytes end before a field.
[[nodiscard]] PictureInfo parseOriginRecord(ByteView record);
[[nodiscard]] PictureInfo parseV1Record(ByteView record);

/// The camera's side.
[[nodiscard]] Bytes buildOriginRecord(const PictureInfo& info);
[[nodiscard]] Bytes buildV1Record(const PictureInfo& info);

/// A copy of one catalogue record: 27 (first generation) or 33 (V1) bytes.
using RecordBytes = std::unique_ptr<std::uint8_t[]>;

/// Differences between the two generations of records.
struct RecordForm {
    std::size_t size; ///< bytes
    PictureInfo (*parse)(ByteView record);
};
inline constexpr RecordForm originRecordForm{origin_record::size, &parseOriginRecord};
inline constexpr RecordForm v1RecordForm{v1_record::size, &parseV1Record};

/// The records of a catalogue answer, in order. Their number follows from the answer's length, never from its
/// count byte; an incomplete last record is left out.
[[nodiscard]] std::vector<ByteView> catalogueRecords(ByteView answer, std::size_t recordSize);

/// The four bytes of the size field in the record with this id of a first-generation catalogue answer; four
/// times 1 without such a record (cameras then send what they have). The search counts its index modulo 256.
[[nodiscard]] Bytes pictureSizeBytes(ByteView answer, std::uint8_t id);

/// Ids of a deletion that mean every picture.
inline constexpr std::uint8_t originDeleteAll = 0xFF;
inline constexpr std::uint16_t v1DeleteAll = 0xFFFF;

[[nodiscard]] Bytes originReadRequest(std::uint8_t id, std::uint32_t size);
[[nodiscard]] Bytes v1ReadRequest(std::uint16_t id, std::uint32_t size);
/// Two bytes for v1DeleteAll, else id, date and gid of the record (7 bytes).
[[nodiscard]] Bytes v1DeleteRequest(std::uint16_t id, std::uint32_t date, std::uint8_t gid);

/// Payloads of the picture requests.
namespace origin_delete_request {
inline constexpr Field<std::uint8_t> id{0};
inline constexpr std::size_t size = id.end();
} // namespace origin_delete_request

namespace origin_read_request {
inline constexpr Field<std::uint8_t> id{0};
inline constexpr Field<std::uint32_t> startOffset{1};
inline constexpr Field<std::uint32_t> length{5};
inline constexpr std::size_t size = length.end();
static_assert(size == 9);
} // namespace origin_read_request

namespace v1_read_request {
inline constexpr Field<std::uint16_t> id{0};
inline constexpr Field<std::uint32_t> startOffset{2};
inline constexpr Field<std::uint32_t> length{6};
inline constexpr std::size_t size = length.end();
static_assert(size == 10);
} // namespace v1_read_request

namespace v1_delete_request {
inline constexpr Field<std::uint16_t> id{0};
inline constexpr Field<std::uint32_t> date{2};
inline constexpr Field<std::uint8_t> gid{6};
inline constexpr std::size_t size = gid.end();
inline constexpr std::size_t allSize = id.end();
static_assert(size == 7 && allSize == 2);
} // namespace v1_delete_request

/// Payload of a first-generation capture answer; V1 cameras send the status only.
namespace capture_answer {
inline constexpr Field<std::uint8_t> status = status_answer::status;
inline constexpr Field<std::uint8_t> id{1};
} // namespace capture_answer

/// Catalogue answer: frame header, count byte, records, check code.
inline constexpr std::size_t catalogueRecordsAt = answer_layout::status.end();

/// Transfer answer: frame header, read result, picture, check code.
inline constexpr std::size_t transferOverhead = frameOverhead + 1;
inline constexpr std::size_t transferData = answer_layout::status.end();

} // namespace protocol
