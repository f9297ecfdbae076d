// The log of one link: bytes, rows, and the head of a recording.
#pragma once

#include "service/linerows.h"
#include "trace/recorder.h"

namespace service {

/// Others may only add to the record; the rest is for one thread.
class LineLog {
public:
    /// `start` is the time of the head's start.
    LineLog(trace::RecordingHead logHead, Clock::Time start, std::size_t capacity = LineRecord::usualCapacity,
            std::size_t rowLimit = LineRows::usualLimit)
        : head(std::move(logHead)), record(start, capacity), rows(record, rowLimit) {}

    /// A whole recording.
    explicit LineLog(const trace::Recording& recording);

    trace::RecordingHead head;
    LineRecord record;
    LineRows rows;
};

/// Gives the sink all that the log holds, from its oldest whole row on. The camera's bytes get the earliest
/// time at which they may have come: a replay is then in time. Exceptions of the sink leave it.
void writeRecording(const LineLog& log, bool blankSerials, const trace::Recorder::Sink& sink);

} // namespace service
