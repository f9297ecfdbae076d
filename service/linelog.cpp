#include "service/linelog.h"

#include <limits>

namespace service {

namespace {

std::size_t roomOf(const trace::Recording& recording) {
    std::size_t room = 0;
    for (const trace::RecordingEntry& entry : recording.entries)
        room += LineRecord::roomOf(entry.bytes);
    return room;
}

/// Chunk and number of its bytes to leave out.
struct Start {
    LineRecord::Position position = 0;
    trace::Side from = trace::Side::tool;
    std::size_t skip = 0;
};

Start startOf(const LineLog& log) {
    const LineRecord::Position oldest = log.record.begin();
    for (std::uint64_t number = log.rows.begin(); number < log.rows.end(); ++number) {
        const LineRow& row = log.rows.row(number);
        if (row.kind == LineRow::Kind::item && row.first >= oldest)
            return {row.first, row.from, row.skip};
    }
    return {oldest, trace::Side::tool, 0};
}

} // namespace

LineLog::LineLog(const trace::Recording& recording)
    : LineLog(recording.head, Clock::Time{}, service::roomOf(recording),
              std::numeric_limits<std::size_t>::max()) {
    trace::Time last{0};
    for (const trace::RecordingEntry& entry : recording.entries) {
        record.add(entry.from, entry.bytes, entry.at);
        last = entry.at;
    }
    rows.finish(last);
}

void writeRecording(const LineLog& log, bool blankSerials, const trace::Recorder::Sink& sink) {
    trace::RecordingHead head = log.head;
    head.serialsBlanked = head.serialsBlanked || blankSerials;
    trace::Recorder recorder(head, sink);
    recorder.note(trace::Time{0}, "times of the camera's bytes are the earliest possible");
    const Start start = startOf(log);
    std::size_t skip = start.skip;
    LineRecord::Batch batch;
    for (LineRecord::Position at = start.position;; at = batch.next) {
        log.record.read(at, batch);
        if (batch.chunks.empty())
            break;
        for (const LineRecord::Chunk& chunk : batch.chunks) {
            const std::size_t left = chunk.from == start.from ? std::min(skip, chunk.size) : 0;
            skip -= left;
            recorder.pass(chunk.from, batch.bytesOf(chunk).range(left, chunk.size), chunk.at - chunk.slack);
        }
    }
    recorder.finish();
}

} // namespace service
