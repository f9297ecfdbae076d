// Uploads: announcements, raw data, verdicts, and the packets of the second protocol.
#include "emulator/camera/commandrow.h"
#include "emulator/camera/md5.h"
#include "link/protocol/exchangetable.h"
#include "link/protocol/uploads.h"
#include "trace/hextext.h"

#include <algorithm>
#include <array>

namespace emulator {

namespace {

using protocol::Command;
using std::chrono::milliseconds;
namespace image_answer = protocol::image_answer;
namespace named_answer = protocol::named_answer;

/// The tool's pause after the announcement answer, with 0.1 s of tolerance: data earlier than the first are
/// too early; a verdict without data at the second finds the tool listening.
constexpr Time leastQuietTime = milliseconds(protocol::pauseAfterAnnouncementMs - 100);
constexpr Time verdictWithoutData = milliseconds(protocol::pauseAfterAnnouncementMs + 100);
/// The tool abandons an announcement after this time.
constexpr std::int64_t longestAnnouncementDelayMs =
    std::int64_t{*protocol::rules::appUpdate.timeoutMs} * protocol::rules::appUpdate.tries;
static_assert(longestAnnouncementDelayMs == 10000);

std::optional<UploadRecord> parseAnnouncement(ByteView payload, bool named, std::uint8_t code) {
    using namespace protocol;
    if (named ? payload.size() < named_announcement::name : payload.size() != announcement::size)
        return std::nullopt;
    UploadRecord upload;
    upload.code = code;
    upload.fileSize = payload.get(named ? named_announcement::fileSize : announcement::fileSize);
    const std::size_t digest = named ? named_announcement::digest : announcement::digest;
    upload.digest = payload.range(digest, digest + digestSize).toBytes();
    if (named)
        upload.name = payload.range(named_announcement::name, payload.size()).toText();
    return upload;
}

Bytes announcementAnswer(bool named, std::uint32_t offset) {
    Bytes payload;
    if (named) {
        put(payload, named_answer::type, named_answer::announcementType);
        put(payload, named_answer::result, protocol::answer_result::success);
        put(payload, named_answer::offset, offset);
    } else {
        put(payload, image_answer::status, protocol::answer_result::success);
        put(payload, image_answer::offset, offset);
    }
    return payload;
}

Bytes verdictPayload(bool named, std::uint8_t verdict) {
    Bytes payload;
    if (named)
        put(payload, named_answer::type, named_answer::verdictType);
    put(payload, named ? named_answer::result : image_answer::status, verdict);
    return payload;
}

/// True when the tool accepts the answer; else it sends no data. The tool reads 15 bytes at a time: exactly
/// an image's answer, with or without bytes behind it, and all of a model's but its last byte.
bool answerArrives(const FaultSet& faults, bool named) {
    constexpr std::array spoilt = {FaultKind::silent, FaultKind::late, FaultKind::raw, FaultKind::truncate,
                                   FaultKind::hangUp};
    const auto has = [&faults](FaultKind kind) { return faults.has(kind); };
    const Fault* delay = faults.find(FaultKind::delay);
    const Fault* length = faults.find(FaultKind::length);
    const bool oneLess = length != nullptr && length->relative && length->number == -1;
    const bool followed = faults.has(FaultKind::glue) || faults.has(FaultKind::stray);
    return std::none_of(spoilt.begin(), spoilt.end(), has) && !(named && followed) &&
           (length == nullptr || (named && oneLess)) &&
           (delay == nullptr || delay->number < longestAnnouncementDelayMs);
}

} // namespace

const VirtualCamera::UploadKind* VirtualCamera::uploadKindOf(std::uint16_t code) {
    static constexpr std::array kinds = {
        UploadKind{Command::appAnnounce, true, true},
        UploadKind{Command::firewareAnnounce, false, true},
        UploadKind{Command::modelAnnounce, true, false},
    };
    const auto* const found = std::find_if(kinds.begin(), kinds.end(), [code](const UploadKind& kind) {
        return protocol::code(kind.command) == code;
    });
    return found == kinds.end() ? nullptr : found;
}

Bytes VirtualCamera::heldPrefix(const UploadRecord& upload) const {
    const bool fits = m_state.heldUploadDigest.empty() || m_state.heldUploadDigest == upload.digest;
    return fits ? m_state.heldUpload : Bytes();
}

std::uint32_t VirtualCamera::resumeOffset(const UploadRecord& upload, const FaultSet& faults) const {
    if (const Fault* fault = faults.find(FaultKind::offset)) {
        const std::int64_t base = fault->relative ? std::int64_t{upload.fileSize} : 0;
        return static_cast<std::uint32_t>(base + fault->number);
    }
    return static_cast<std::uint32_t>(heldPrefix(upload).size());
}

void VirtualCamera::announceUpload(const Request& request, Reply& reply) {
    const UploadKind& kind = *uploadKindOf(request.key.code);
    auto record = parseAnnouncement(request.payload, kind.named(), request.lineCode);
    if (!record) {
        note(request.at, Event::Kind::noted, "announcement of a wrong length, no answer");
        reply.silent = true;
        return;
    }
    record->offset = resumeOffset(*record, request.faults);
    record->answeredAt = reply.at;
    reply.payload = announcementAnswer(kind.named(), record->offset);
    reply.resultAt = kind.named() ? named_answer::result.offset : image_answer::status.offset;
    note(request.at, Event::Kind::noted,
         "upload of " + std::to_string(record->fileSize) + " bytes" +
             (record->name.empty() ? "" : " named " + record->name) + ", to go on from byte " +
             std::to_string(record->offset));

    const std::size_t wholeAnswer = reply.payload.size();
    reply.onAnswer = [this, &kind, &request, wholeAnswer, record = *record](ByteView payload) mutable {
        // The tool sends an image after any status, a model only after success.
        record.refused =
            kind.named() && (payload.size() < wholeAnswer ||
                             payload.get(named_answer::type) != named_answer::announcementType ||
                             payload.get(named_answer::result) != protocol::answer_result::success);
        if (payload.size() < wholeAnswer || record.refused || !answerArrives(request.faults, kind.named())) {
            record.finished = true;
            m_record.uploads.push_back(std::move(record));
            return;
        }
        ActiveUpload upload;
        upload.kind = &kind;
        upload.kept = heldPrefix(record);
        upload.faults = request.faults;
        startTransfer(std::move(upload), std::move(record));
    };
}

void VirtualCamera::startTransfer(ActiveUpload upload, UploadRecord record) {
    upload.recordIndex = m_record.uploads.size();
    upload.expected = record.offset < record.fileSize ? record.fileSize - record.offset : 0;
    upload.deadline = record.answeredAt + m_settings.uploadSilence;
    m_record.uploads.push_back(std::move(record));
    m_upload = std::move(upload);
    strikeTransfer(*m_upload, 0, 0, m_record.uploads.back().answeredAt);
    if (m_upload->expected == 0)
        finishTransfer(m_record.uploads.back().answeredAt + verdictWithoutData);
}

void VirtualCamera::receiveRaw(ByteView bytes, Time now) {
    UploadRecord& record = m_record.uploads[m_upload->recordIndex];
    const std::size_t before = record.received.size();
    const ByteView taken = bytes.range(0, m_upload->expected - before);
    const ByteView rest = bytes.range(taken.size(), bytes.size());
    if (!record.firstByteAt)
        record.firstByteAt = now;
    if (now - record.answeredAt < leastQuietTime) {
        if (record.earlyBytes == 0)
            note(now, Event::Kind::noted, "data sooner than 2 s after the announcement answer");
        record.earlyBytes += static_cast<std::uint32_t>(taken.size());
    }
    record.chunkSizes.push_back(taken.size());
    protocol::append(record.received, taken);
    m_upload->deadline = std::max(now, record.answeredAt) + m_settings.uploadSilence;
    strikeTransfer(*m_upload, before, record.received.size(), now);
    if (record.received.size() < m_upload->expected)
        return;
    finishTransfer(now);
    m_scanner.add(rest);
    readItems(now);
}

/// Faults and progress lines of the percentages between `before` and `after` bytes.
void VirtualCamera::strikeTransfer(ActiveUpload& upload, std::size_t before, std::size_t after, Time now) {
    const auto percentOf = [&upload](std::size_t bytes) {
        return upload.expected == 0 ? 0 : static_cast<std::int64_t>(bytes * 100 / upload.expected);
    };
    const auto reached = [&](const Fault* fault) {
        const bool atStart = after == 0 && fault != nullptr && fault->number == 0;
        return fault != nullptr &&
               (atStart || (percentOf(before) < fault->number && percentOf(after) >= fault->number));
    };
    if (const Fault* fault = upload.faults.find(FaultKind::stall); reached(fault)) {
        m_readingPausedUntil = fault->second == 0 ? Time::max() : now + milliseconds(fault->second);
        note(now, Event::Kind::noted, "stops reading");
        if (fault->second != 0)
            upload.deadline = m_readingPausedUntil + m_settings.uploadSilence;
    }
    if (reached(upload.faults.find(FaultKind::uploadHangUp)))
        m_hangUpAt = now;
    constexpr std::int64_t step = 10;
    if (percentOf(after) / step > percentOf(before) / step)
        note(now, Event::Kind::received, "upload " + std::to_string(percentOf(after)) + " %");
}

void VirtualCamera::finishTransfer(Time now) {
    const ActiveUpload upload = std::move(*m_upload);
    m_upload.reset();
    UploadRecord& record = m_record.uploads[upload.recordIndex];
    Bytes whole = upload.kept;
    protocol::append(whole, record.received);
    record.finished = true;
    record.complete = true;
    record.digestRight = whole.size() == record.fileSize && md5(whole) == record.digest;
    m_state.heldUpload.clear();
    m_state.heldUploadDigest.clear();
    note(now, Event::Kind::received,
         std::string("upload complete, digest ") + (record.digestRight ? "right" : "wrong"));

    std::uint8_t verdict = resultOf(record.digestRight);
    if (const Fault* fault = upload.faults.find(FaultKind::verdict))
        verdict = static_cast<std::uint8_t>(fault->number & 0xFF);
    Time at = now + m_settings.answerDelay;
    if (const Fault* fault = upload.faults.find(FaultKind::verdictDelay))
        at += milliseconds(fault->number);
    if (upload.kind->hasVerdict && !upload.faults.has(FaultKind::noVerdict)) {
        const Bytes payload = verdictPayload(upload.kind->named(), verdict);
        m_queue.add(at, protocol::buildFrame(record.code, payload, m_settings.address));
        note(now, Event::Kind::answered, "verdict " + trace::hexText(payload));
    }
    if (upload.kind->restarts && verdict == protocol::answer_result::success)
        restart(at, m_settings.updateRestartTime, upload.faults);
}

void VirtualCamera::breakOffTransfer(Time now) {
    const ActiveUpload upload = std::move(*m_upload);
    m_upload.reset();
    UploadRecord& record = m_record.uploads[upload.recordIndex];
    record.finished = true;
    note(now, Event::Kind::noted,
         "upload broken off after " + std::to_string(record.received.size()) + " of " +
             std::to_string(upload.expected) + " bytes");
    // Data after a gap cannot be resumed.
    if (!m_settings.keepsInterruptedUploads || upload.kept.size() != record.offset)
        return;
    m_state.heldUpload = upload.kept;
    protocol::append(m_state.heldUpload, record.received);
    m_state.heldUploadDigest = record.digest;
}

void VirtualCamera::announceAppV1(const Request& request, Reply& reply) {
    auto record = parseAnnouncement(request.payload, true, request.lineCode);
    if (!record) {
        note(request.at, Event::Kind::noted, "announcement of a wrong length, no answer");
        reply.silent = true;
        return;
    }
    AppV1Record& run = m_record.appV1;
    if (request.payload != m_lastAppV1Announcement || run.closingPackets > 0) {
        const bool cutShort = run.announcements % protocol::appV1Announcements != 0;
        run = {};
        run.changedWithinRun = cutShort;
        m_lastAppV1Announcement = request.payload;
    }
    ++run.announcements;
    record->offset = m_settings.holdsAnnouncedImage && !request.faults.has(FaultKind::offset)
                         ? record->fileSize
                         : resumeOffset(*record, request.faults);
    reply.payload = announcementAnswer(true, record->offset);
    reply.resultAt = named_answer::result.offset;
}

void VirtualCamera::packetV1(const Request& request, Reply& reply) {
    reply.payload = {protocol::packetLastGoodResult + 1};
    reply.resultAt = protocol::status_answer::status.offset;
    if (request.payload.size() > protocol::packet_layout::data) {
        ++m_record.appV1.dataPackets;
        note(request.at, Event::Kind::noted, "data packet: this camera takes closing packets only");
        return;
    }
    if (request.payload.size() != protocol::packet_layout::data)
        return;
    reply.setStatus(true);
    reply.onAnswer = [this, &request, at = reply.at](ByteView) {
        if (m_record.appV1.closingPackets == protocol::appV1ClosingPackets)
            restart(at, m_settings.updateRestartTime, request.faults);
    };
    ++m_record.appV1.closingPackets;
}

} // namespace emulator
