#include "fuzz/targets.h"

#include "cli/jobwords.h"
#include "emulator/line/cameraprofile.h"
#include "link/protocol/jsonenvelope.h"
#include "link/protocol/picturerecords.h"
#include "link/protocol/uploads.h"
#include "trace/jsontext.h"
#include "trace/recording.h"

#include <QJsonDocument>
#include <QStringList>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <sstream>

namespace fuzz {

namespace {

using protocol::Bytes;
using protocol::ByteView;
using protocol::Field;
using trace::FrameScanner;
using Kind = FrameScanner::Item::Kind;

void hold(bool rule) {
    if (!rule)
        std::abort();
}

/// Takes the input from its front; missing bytes are zero.
class Source {
public:
    explicit Source(ByteView bytes) : m_rest(bytes) {}
    [[nodiscard]] bool empty() const { return m_rest.empty(); }
    ByteView take(std::size_t most) {
        const ByteView taken = m_rest.range(0, most);
        m_rest = m_rest.range(taken.size(), m_rest.size());
        return taken;
    }
    std::uint8_t byte() {
        const ByteView one = take(1);
        return one.empty() ? std::uint8_t{0} : *one.begin();
    }

private:
    ByteView m_rest;
};

// --- pieces ------------------------------------------------------------------------------------------------

struct Scanned {
    std::vector<FrameScanner::Item> items;
    Bytes rest;
};

void takeItems(FrameScanner& scanner, Scanned& scanned) {
    while (auto item = scanner.next()) {
        const bool joins = item->kind == Kind::garbage && !scanned.items.empty() &&
                           scanned.items.back().kind == Kind::garbage;
        if (joins)
            protocol::append(scanned.items.back().bytes, item->bytes);
        else
            scanned.items.push_back(std::move(*item));
    }
}

/// In one piece, or in pieces of changing sizes by a seed. Neighbouring garbage is one item.
Scanned scan(FrameScanner::Side side, ByteView stream, std::optional<std::uint8_t> seed) {
    constexpr std::uint32_t longestPiece = 31;
    FrameScanner scanner(side);
    Scanned scanned;
    std::uint32_t number = seed.value_or(0);
    for (std::size_t at = 0; at < stream.size();) {
        number = number * 1664525U + 1013904223U;
        const std::size_t size = seed ? 1 + (number >> 16U) % longestPiece : stream.size();
        scanner.add(stream.range(at, at + size));
        takeItems(scanner, scanned);
        at += size;
    }
    scanned.rest = scanner.takeRest();
    return scanned;
}

bool isSame(const Scanned& a, const Scanned& b) {
    const auto equal = [](const auto& x, const auto& y) { return x.kind == y.kind && x.bytes == y.bytes; };
    return a.rest == b.rest &&
           std::equal(a.items.begin(), a.items.end(), b.items.begin(), b.items.end(), equal);
}

/// The items of a stream, the same in any pieces, which joined give the stream again.
Scanned scanInPieces(FrameScanner::Side side, ByteView stream, std::uint8_t seed) {
    Scanned whole = scan(side, stream, std::nullopt);
    hold(isSame(whole, scan(side, stream, seed)));
    const std::uint8_t* at = stream.begin();
    const auto continues = [&](const Bytes& bytes) {
        hold(bytes.size() <= static_cast<std::size_t>(stream.end() - at) &&
             std::equal(bytes.begin(), bytes.end(), at));
        at += bytes.size();
    };
    for (const FrameScanner::Item& item : whole.items)
        continues(item.bytes);
    continues(whole.rest);
    hold(at == stream.end());
    return whole;
}

// --- frames ------------------------------------------------------------------------------------------------

enum Operation : std::uint8_t { frame = 240, envelope = 241, damagedFrame = 242 };

/// Raw bytes, short frames and envelopes in a row; not many, which would take time and show nothing new.
Bytes streamOf(Source& input) {
    constexpr int mostOperations = 5;
    constexpr std::size_t payloads = 16; // sizes
    Bytes stream;
    for (int i = 0; i < mostOperations && !input.empty(); ++i) {
        const std::uint8_t operation = input.byte();
        if (operation == frame || operation == damagedFrame) {
            const std::uint8_t command = input.byte();
            const std::uint8_t address = input.byte();
            const std::size_t size = input.byte() % payloads;
            Bytes bytes = protocol::buildFrame(command, input.take(size), address);
            if (operation == damagedFrame)
                bytes[input.byte() % bytes.size()] ^= 1U;
            protocol::append(stream, bytes);
        } else if (operation == envelope) {
            const std::size_t size = input.byte();
            protocol::append(stream, protocol::buildJsonRequest(input.take(size).toText()));
        } else {
            protocol::append(stream, input.take(operation));
        }
    }
    return stream;
}

void frames(Source& input) {
    using namespace protocol::frame_layout;
    const std::uint8_t seed = input.byte();
    const auto side = seed % 2 == 0 ? FrameScanner::Side::tool : FrameScanner::Side::camera;
    for (const FrameScanner::Item& item : scanInPieces(side, streamOf(input), seed).items) {
        const ByteView bytes(item.bytes);
        if (item.kind == Kind::frame)
            hold(protocol::buildFrame(bytes.get(command), protocol::payloadOf(bytes), bytes.get(address)) ==
                 item.bytes);
        else if (item.kind == Kind::json && side == FrameScanner::Side::tool)
            hold(protocol::buildJsonRequest(protocol::jsonText(bytes).toText()) == item.bytes);
    }
}

// --- catalogues --------------------------------------------------------------------------------------------

void catalogues(Source& input) {
    const std::uint8_t seed = input.byte();
    const bool v1 = seed % 2 != 0;
    const protocol::RecordForm& form = v1 ? protocol::v1RecordForm : protocol::originRecordForm;
    const std::uint8_t code =
        protocol::code(v1 ? protocol::Command::catalogueV1 : protocol::Command::originCatalogue);
    const Bytes payload = input.take(SIZE_MAX).toBytes();
    const Bytes answer = protocol::buildFrame(code, payload, 1);
    const Scanned scanned = scanInPieces(FrameScanner::Side::camera, answer, seed);
    hold(scanned.items.size() == 1 && scanned.items.front().bytes == answer);
    hold(protocol::isWholeAnswer(answer, protocol::frameForm));
    // The last record may reach into the check code: its size counts, not what it is made of.
    Bytes again;
    for (const ByteView record : protocol::catalogueRecords(answer, form.size)) {
        const protocol::PictureInfo info = form.parse(record);
        protocol::append(again, v1 ? protocol::buildV1Record(info) : protocol::buildOriginRecord(info));
    }
    const ByteView records = ByteView(answer).range(protocol::catalogueRecordsAt, answer.size());
    hold(again == records.range(0, again.size()).toBytes());
    hold(records.size() - again.size() < form.size);
}

// --- the JSON envelope -------------------------------------------------------------------------------------

void envelopes(Source& input) {
    const std::uint8_t seed = input.byte();
    const Bytes body = input.take(SIZE_MAX).toBytes();
    const Bytes answer = protocol::buildJsonAnswer(body);
    hold(protocol::isWholeAnswer(answer, protocol::jsonForm));
    hold(protocol::jsonBody(answer).toBytes() == body);
    const Scanned scanned = scanInPieces(FrameScanner::Side::camera, answer, seed);
    hold(scanned.items.size() == 1 && scanned.items.front().kind == Kind::json);
    static_cast<void>(protocol::jsonPictureSize(body));
    const Bytes data = protocol::jsonPictureData(body).toBytes();
    hold(data.size() <= body.size() && std::equal(data.rbegin(), data.rend(), body.rbegin()));
    const auto values = trace::readJsonObject(ByteView(body).toText());
    if (!values)
        return;
    const QByteArray text(reinterpret_cast<const char*>(body.data()), static_cast<qsizetype>(body.size()));
    const QByteArray again = QJsonDocument::fromJson(text).toJson(QJsonDocument::Compact);
    hold(trace::readJsonObject(again.toStdString()) == values);
}

// --- announcements -----------------------------------------------------------------------------------------

void announcements(Source& input) {
    const std::uint8_t seed = input.byte();
    const bool named = seed % 2 != 0;
    const std::size_t payloadSize = input.byte() % 32;
    const Bytes answer = protocol::buildFrame(
        protocol::code(named ? protocol::Command::modelAnnounce : protocol::Command::appAnnounce),
        input.take(payloadSize), 1);
    const Scanned scanned = scanInPieces(FrameScanner::Side::camera, answer, seed);
    hold(scanned.items.size() == 1 && scanned.items.front().bytes == answer);
    const Bytes payload = protocol::payloadOf(answer).toBytes();
    const ByteView view(payload);
    Bytes again = payload;
    const auto copy = [&](auto field) {
        if (view.has(field))
            put(again, field, view.get(field));
    };
    if (named) {
        copy(protocol::named_answer::type);
        copy(protocol::named_answer::result);
        copy(protocol::named_answer::offset);
    } else {
        copy(protocol::image_answer::status);
        copy(protocol::image_answer::offset);
    }
    hold(again == payload);
    const Bytes digest = input.take(protocol::digestSize).toBytes();
    Bytes size = input.take(sizeof(std::uint32_t)).toBytes();
    size.resize(sizeof(std::uint32_t));
    const std::uint32_t fileSize = ByteView(size).get(Field<std::uint32_t>{0});
    const Bytes announcement =
        named ? protocol::buildNamedAnnouncement(fileSize, digest, input.take(SIZE_MAX).toText())
              : protocol::buildAnnouncement(fileSize, digest);
    hold(ByteView(announcement)
             .get(named ? protocol::named_announcement::fileSize : protocol::announcement::fileSize) ==
         fileSize);
}

// --- recordings --------------------------------------------------------------------------------------------

std::string textOf(const trace::Recording& recording) {
    std::string text = headText(recording.head);
    for (const trace::RecordingEntry& entry : recording.entries)
        text += entryText(entry);
    return text;
}

void recordings(Source& input) {
    std::istringstream text(input.take(SIZE_MAX).toText());
    try {
        const std::string once = textOf(trace::readRecording(text));
        std::istringstream again(once);
        hold(textOf(trace::readRecording(again)) == once);
    } catch (const trace::RecordingError&) {
    }
}

// --- profiles ----------------------------------------------------------------------------------------------

void profiles(Source& input) {
    try {
        const trace::Profile profile = trace::readProfile(input.take(SIZE_MAX).toText());
        const std::string once = trace::profileText(profile);
        const trace::Profile again = trace::readProfile(once);
        hold(trace::profileText(again) == once && again.entries.size() == profile.entries.size());
        static_cast<void>(emulator::cameraProfileOf(profile));
    } catch (const trace::ProfileError&) {
    }
}

// --- option files ------------------------------------------------------------------------------------------

/// Words in quotes, each quote inside three times.
QString quoted(const std::vector<std::string>& words) {
    QStringList all;
    for (const std::string& word : words)
        all.append(QLatin1Char('"') +
                   QString::fromStdString(word).replace(QLatin1String("\""), QLatin1String("\"\"\"")) +
                   QLatin1Char('"'));
    return all.join(QLatin1Char(' '));
}

std::string textOf(const emulator::RequestSelector& selector) {
    std::string text = selector.lineCode ? std::to_string(*selector.lineCode) : "any";
    for (const protocol::RequestName& name : protocol::requestNames()) {
        if (selector.code == name.code && !name.detail)
            text = name.name;
    }
    return selector.detail ? text + ':' + std::to_string(*selector.detail) : text;
}

std::string parameterOf(const emulator::Fault& fault) {
    const std::string number = std::to_string(fault.number);
    const std::string signedNumber = (fault.number < 0 ? "" : "+") + number;
    switch (emulator::infoOf(fault.kind).parameter) {
    case emulator::FaultParameter::none:
        return {};
    case emulator::FaultParameter::number:
    case emulator::FaultParameter::optionalNumber:
        return '=' + number;
    case emulator::FaultParameter::numberPair:
        return '=' + number + ',' + std::to_string(fault.second);
    case emulator::FaultParameter::relative:
        return '=' + (fault.relative ? signedNumber : number);
    case emulator::FaultParameter::fileOffset:
        return '=' + (fault.relative ? "size" + signedNumber : number);
    case emulator::FaultParameter::bytes:
        return '=' + protocol::paddedHexText(fault.bytes);
    case emulator::FaultParameter::text:
        return '=' + fault.text;
    }
    return {};
}

std::string textOf(const emulator::Fault& fault) {
    std::string text = std::string(emulator::infoOf(fault.kind).name) + parameterOf(fault) + '@' +
                       textOf(fault.selector) + '#' + std::to_string(fault.first);
    if (fault.last == emulator::Fault::always)
        return text + '+';
    return text + '-' + std::to_string(fault.last);
}

std::string textOf(const emulator::LineTraits& line) {
    std::string text = "good";
    for (const emulator::LineTrait& trait : emulator::lineTraits()) {
        const std::string name = ',' + std::string(trait.name());
        std::array<char, 32> chance{};
        if (trait.flag != nullptr) {
            text += line.*trait.flag ? name : "";
        } else if (trait.time != nullptr) {
            text += name + '=' + std::to_string(line.*trait.time / std::chrono::milliseconds(1));
        } else {
            std::snprintf(chance.data(), chance.size(), "=%.17g", line.*trait.chance);
            text += name + chance.data();
        }
    }
    return text;
}

/// A line of a job file, whose first word may be a fault or a bad line: refusals are slow.
void options(Source& input) {
    enum Use : std::uint8_t { fault = 0, line = 1, uses = 4 };
    constexpr std::size_t longest = 64;
    const std::uint8_t use = input.byte() % uses;
    const std::string text = input.take(longest).toText();
    const std::vector<std::string> words = cli::jobWords(QString::fromStdString(text));
    hold(cli::jobWords(quoted(words)) == words);
    if (words.empty())
        return;
    try {
        if (use == line) {
            const emulator::LineTraits traits = emulator::parseLine(words.front());
            hold(emulator::parseLine(textOf(traits)) == traits);
        } else if (use == fault) {
            const std::string once = textOf(emulator::parseFault(words.front()));
            hold(textOf(emulator::parseFault(once)) == once);
        }
    } catch (const std::invalid_argument&) {
    }
}

struct Target {
    std::string_view name;
    void (*run)(Source& input);
};

constexpr std::array targets{
    Target{"frames", &frames},         Target{"records", &catalogues},
    Target{"envelopes", &envelopes},   Target{"announcements", &announcements},
    Target{"recordings", &recordings}, Target{"profiles", &profiles},
    Target{"options", &options},
};

} // namespace

void runTarget(std::string_view name, ByteView input) {
    static const auto* const target = std::find_if(targets.begin(), targets.end(),
                                                   [name](const Target& each) { return each.name == name; });
    hold(target != targets.end());
    Source source(input);
    target->run(source);
}

} // namespace fuzz
