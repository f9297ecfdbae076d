#include "link/protocol/picturerecords.h"

namespace protocol {

namespace {

constexpr std::size_t originLeastAnswer = 36;

void readTail(ByteView record, const RecordTail& tail, PictureInfo& info) {
    info.triggerType = record.get(tail.triggerType);
    info.triggerAngle = record.get(tail.triggerAngle);
    info.creationTime = record.get(tail.creationTime);
    info.fileSize = record.get(tail.fileSize);
    info.digest = record.range(tail.digest, tail.end).toBytes();
}

void putTail(Bytes& record, const RecordTail& tail, const PictureInfo& info) {
    put(record, tail.triggerType, info.triggerType);
    put(record, tail.triggerAngle, info.triggerAngle);
    put(record, tail.creationTime, info.creationTime);
    put(record, tail.fileSize, info.fileSize);
    append(record, info.digest);
    record.resize(tail.end, 0);
}

} // namespace

PictureInfo parseOriginRecord(ByteView record) {
    PictureInfo info;
    info.id = record.get(origin_record::id);
    readTail(record, origin_record::tail, info);
    return info;
}

PictureInfo parseV1Record(ByteView record) {
    PictureInfo info;
    info.id = record.get(v1_record::id);
    info.date = record.get(v1_record::date);
    info.gid = record.get(v1_record::gid);
    readTail(record, v1_record::tail, info);
    return info;
}

Bytes buildOriginRecord(const PictureInfo& info) {
    Bytes record;
    put(record, origin_record::id, static_cast<std::uint8_t>(info.id & 0xFFU));
    putTail(record, origin_record::tail, info);
    return record;
}

Bytes buildV1Record(const PictureInfo& info) {
    Bytes record;
    put(record, v1_record::id, info.id);
    put(record, v1_record::date, info.date);
    put(record, v1_record::gid, info.gid);
    putTail(record, v1_record::tail, info);
    return record;
}

std::vector<ByteView> catalogueRecords(ByteView answer, std::size_t recordSize) {
    std::vector<ByteView> records;
    for (std::size_t at = catalogueRecordsAt; at + recordSize - 1 < answer.size(); at += recordSize)
        records.push_back(answer.range(at, at + recordSize));
    return records;
}

Bytes pictureSizeBytes(ByteView answer, std::uint8_t id) {
    if (answer.size() < originLeastAnswer)
        return {1, 1, 1, 1};
    std::uint8_t at = catalogueRecordsAt;
    // The index wraps at 256 and takes each value at most once.
    for (int steps = 0; steps < 256 && at + origin_record::size - 1 < answer.size(); ++steps) {
        const ByteView record = answer.range(at, at + origin_record::size);
        if (record.get(origin_record::id) == id)
            return record.range(origin_record::tail.fileSize.offset, origin_record::tail.fileSize.end())
                .toBytes();
        at = static_cast<std::uint8_t>(at + origin_record::size);
    }
    return {1, 1, 1, 1};
}

Bytes originReadRequest(std::uint8_t id, std::uint32_t size) {
    Bytes payload;
    put(payload, origin_read_request::id, id);
    put(payload, origin_read_request::startOffset, 0U);
    put(payload, origin_read_request::length, size);
    return payload;
}

Bytes v1ReadRequest(std::uint16_t id, std::uint32_t size) {
    Bytes payload;
    put(payload, v1_read_request::id, id);
    put(payload, v1_read_request::startOffset, 0U);
    put(payload, v1_read_request::length, size);
    return payload;
}

Bytes v1DeleteRequest(std::uint16_t id, std::uint32_t date, std::uint8_t gid) {
    Bytes payload;
    put(payload, v1_delete_request::id, id);
    if (id == v1DeleteAll)
        return payload;
    put(payload, v1_delete_request::date, date);
    put(payload, v1_delete_request::gid, gid);
    return payload;
}

} // namespace protocol
