#include "tests/turn/linejudge.h"

#include "emulator/camera/virtualcamera.h"
#include "link/protocol/commands.h"
#include "link/protocol/requests.h"
#include "trace/hextext.h"

using namespace std::chrono_literals;
using emulator::CameraRecord;
using emulator::ReceivedFrame;
using emulator::Time;
using emulator::UploadRecord;
using protocol::code;
using protocol::Command;
using protocol::PropertyId;

namespace turn {

namespace {

/// Delay with which the camera may notice a request on a busy machine.
constexpr Time noticeLag = 100ms;

/// Timeout of a command's answer; a lower bound for other commands.
Time answerLimit(const ReceivedFrame& frame) {
    constexpr Time others = 500ms;
    if (frame.json || frame.payload.empty())
        return others;
    const std::uint8_t detail = frame.payload.front();
    switch (static_cast<Command>(frame.code)) {
    case Command::heartbeat:
        return 200ms;
    case Command::gyroTest:
        return 50ms;
    case Command::getProperty:
        return detail == code(PropertyId::appVersion) || detail == code(PropertyId::systemVersion) ? 200ms
                                                                                                   : others;
    case Command::getInfo:
        return detail == code(PropertyId::qvVersion) ? 250ms : others;
    case Command::appAnnounce:
    case Command::firewareAnnounce:
    case Command::modelAnnounce:
    case Command::appV1Announce:
        return 10s;
    default:
        return others;
    }
}

/// Shortest time from a request to the next one.
Time leastGap(const ReceivedFrame& frame, const LineRules& rules) {
    const Time patience = std::max<Time>(answerLimit(frame) - noticeLag, 0ms);
    const bool answered = frame.heard && !rules.silentCodes.contains(frame.code);
    return answered ? std::min(rules.answerDelay, patience) : patience;
}

QString inMilliseconds(Time time) {
    return QString::number(static_cast<double>(time.count()) / 1000, 'f', 1) + " ms";
}

QString describe(const ReceivedFrame& frame) {
    emulator::RequestKey key{frame.code, frame.code, std::nullopt};
    if (frame.json)
        key = {protocol::jsonCode, protocol::jsonCode, std::nullopt};
    else if (!frame.payload.empty())
        key.detail = frame.payload.front();
    const protocol::RequestName* const name = protocol::nameOf(key);
    QString text = name == nullptr ? "unknown request" : QString::fromStdString(std::string(name->words));
    if (key.detail)
        text += " (id " + QString::number(*key.detail) + ")";
    return text;
}

/// First difference of the received bytes and the file.
QStringList differences(const UploadRecord& upload, const Bytes& file, const QString& name) {
    const auto [got, wanted] =
        std::mismatch(upload.received.begin(), upload.received.end(), file.begin(), file.end());
    if (got == upload.received.end() && wanted == file.end() && upload.digestRight)
        return {};
    const auto place = static_cast<std::size_t>(got - upload.received.begin());
    const protocol::ByteView foreign = protocol::ByteView(upload.received).range(place, place + 12);
    return {name + "from byte " + QString::number(place) + " of " + QString::number(file.size()) +
            " on the camera got \"" + QString::fromStdString(trace::hexText(foreign)) +
            "\" in place of the file, " + QString::number(upload.received.size()) + " bytes in all, offset " +
            QString::number(upload.offset)};
}

} // namespace

QStringList overlaps(const CameraRecord& record, const LineRules& rules) {
    QStringList found;
    for (std::size_t i = 1; i < record.frames.size(); ++i) {
        const ReceivedFrame& before = record.frames[i - 1];
        const ReceivedFrame& frame = record.frames[i];
        if (frame.at - before.at < leastGap(before, rules))
            found += describe(frame) + " came " + inMilliseconds(frame.at - before.at) + " after " +
                     describe(before) + ", which was not over";
    }
    if (record.badFrames > 0)
        found += QString::number(record.badFrames) + " damaged frames";
    if (record.garbageBytes > 0)
        found += QString::number(record.garbageBytes) + " bytes outside any frame";
    return found;
}

QStringList uploadFaults(const CameraRecord& record, const LineRules& rules, bool mayFail) {
    QStringList found;
    std::size_t ended = 0;
    for (const UploadRecord& upload : record.uploads) {
        const QString name = "upload " + QString::number(upload.code, 16) + ": ";
        if (!(mayFail && upload.received.empty()))
            found += differences(upload, rules.files.at(upload.code), name);
        if (!upload.complete)
            continue;
        const Time end = rules.uploadEnds.at(ended++);
        const bool hasVerdict = upload.code != code(Command::firewareAnnounce);
        for (const ReceivedFrame& frame : record.frames) {
            if (hasVerdict && frame.at >= end && frame.at < end + rules.answerDelay)
                found += name + describe(frame) + " came between the last byte and the verdict";
        }
    }
    const bool secondProtocol = record.count(code(Command::appV1Announce)) > 0;
    const emulator::AppV1Record& run = record.appV1;
    if (secondProtocol && !mayFail &&
        (run.announcements != 5 || run.closingPackets != 11 || run.changedWithinRun))
        found += "second protocol: " + QString::number(run.announcements) + " announcements and " +
                 QString::number(run.closingPackets) + " closing packets in place of 5 and 11";
    return found;
}

} // namespace turn
