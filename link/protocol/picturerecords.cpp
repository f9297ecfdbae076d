#include "link/protocol/picturerecords.h"

namespace protocol {

namespace {

constexpr std::size_t firstRecord = answer_layout::status.end(); // after the count byte
constexpr std::size_t originLeastAnswer = 36;

} // namespace

PictureInfo parseOriginRecord(ByteView record) {
    PictureInfo info;
    info.id = record.get(origin_record::id);
    info.triggerType = record.get(origin_record::triggerType);
    info.triggerAngle = record.get(origin_record::triggerAngle);
    info.creationTime = record.get(origin_record::creationTime);
    info.fileSize = record.get(origin_record::fileSize);
    info.digest = record.range(origin_record::digest, origin_record::size).toBytes();
    return info;
}

PictureInfo parseV1Record(ByteView record) {
    PictureInfo info;
    info.id = record.get(v1_record::id);
    info.date = record.get(v1_record::date);
    info.gid = record.get(v1_record::gid);
    info.triggerType = record.get(v1_record::triggerType);
    info.triggerAngle = record.get(v1_record::triggerAngle);
    info.creationTime = record.get(v1_record::creationTime);
    info.fileSize = record.get(v1_record::fileSize);
    info.digest = record.range(v1_record::digest, v1_record::size).toBytes();
    return info;
}

Bytes buildOriginRecord(const PictureInfo& info) {
    Bytes record;
    put(record, origin_record::id, static_cast<std::uint8_t>(info.id & 0xFFU));
    put(record, origin_record::triggerType, info.triggerType);
    put(record, origin_record::triggerAngle, info.triggerAngle);
    put(record, origin_record::creationTime, info.creationTime);
    put(record, origin_record::fileSize, info.fileSize);
    append(record, info.digest);
    record.resize(origin_record::size, 0);
    return record;
}

Bytes buildV1Record(const PictureInfo& info) {
    Bytes record;
    put(record, v1_record::id, info.id);
    put(record, v1_record::date, info.date);
    put(record, v1_record::gid, info.gid);
    put(record, v1_record::triggerType, info.triggerType);
    put(record, v1_record::triggerAngle, info.triggerAngle);
    put(record, v1_record::creationTime, info.creationTime);
    put(record, v1_record::fileSize, info.fileSize);
    append(record, info.digest);
    record.resize(v1_record::size, 0);
    return record;
}

std::vector<ByteView> catalogueRecords(ByteView answer, std::size_t recordSize) {
    std::vector<ByteView> records;
    for (std::size_t at = firstRecord; at + recordSize - 1 < answer.size(); at += recordSize)
        records.push_back(answer.range(at, at + recordSize));
    return records;
}

Bytes pictureSizeBytes(ByteView answer, std::uint8_t id) {
    if (answer.size() < originLeastAnswer)
        return {1, 1, 1, 1};
    std::uint8_t at = firstRecord;
    // The index wraps at 256 and visits each of its values at most once.
    for (int steps = 0; steps < 256 && at + origin_record::size - 1 < answer.size(); ++steps) {
        const ByteView record = answer.range(at, at + origin_record::size);
        if (record.get(origin_record::id) == id)
            return record.range(origin_record::fileSize.offset, origin_record::fileSize.end()).toBytes();
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
