#include "emulator/camera/fault.h"

#include <algorithm>
#include <array>

namespace emulator {

namespace {

using enum FaultParameter;
using Kind = FaultKind;

// clang-format off
constexpr std::array kinds = {
    FaultKindInfo{Kind::silent,       "silent",        none,           "",       "no answer at all"},
    FaultKindInfo{Kind::delay,        "delay",         number,         "700",    "the answer comes this many ms late"},
    FaultKindInfo{Kind::late,         "late",          none,           "",       "the answer is held back and comes just before the next request's answer"},
    FaultKindInfo{Kind::glue,         "glue",          none,           "",       "the answer comes twice without a pause"},
    FaultKindInfo{Kind::raw,          "raw",           bytes,          "414243", "these bytes instead of the answer, without a frame"},
    FaultKindInfo{Kind::truncate,     "truncate",      number,         "3",      "the last bytes of the answer are missing"},
    FaultKindInfo{Kind::stray,        "stray",         number,         "1",      "this many stray bytes follow the answer"},
    FaultKindInfo{Kind::before,       "before",        bytes,          "AA33",   "these bytes come before the answer"},
    FaultKindInfo{Kind::split,        "split",         numberPair,     "4,120",  "a pause after so many bytes of the answer: bytes,ms"},
    FaultKindInfo{Kind::length,       "length",        relative,       "+1",     "the answer's length field is wrong: a number, or +N or -N off"},
    FaultKindInfo{Kind::badCheck,     "bad-check",     none,           "",       "the answer's check code is wrong"},
    FaultKindInfo{Kind::zeroCheck,    "zero-check",    none,           "",       "the answer's check code is zero"},
    FaultKindInfo{Kind::address,      "address",       number,         "0x55",   "the answer carries this address"},
    FaultKindInfo{Kind::command,      "command",       number,         "0x21",   "the answer carries this command code"},
    FaultKindInfo{Kind::payload,      "payload",       number,         "0",      "a well-formed answer with only so many payload bytes"},
    FaultKindInfo{Kind::result,       "result",        number,         "1",      "the result code of the answer (announcements: the status)"},
    FaultKindInfo{Kind::echo,         "echo",          number,         "0x63",   "the first payload byte of the answer (properties: the id)"},
    FaultKindInfo{Kind::zeroInside,   "zero-inside",   number,         "3",      "a zero byte at this place of the answered value"},
    FaultKindInfo{Kind::valueSize,    "value-size",    number,         "49",     "the answered value is cut or filled to so many bytes"},
    FaultKindInfo{Kind::records,      "records",       number,         "378",    "the catalogue lists so many records"},
    FaultKindInfo{Kind::count,        "count",         number,         "200",    "the count byte of the catalogue says this"},
    FaultKindInfo{Kind::hideNewest,   "hide-newest",   none,           "",       "the catalogue leaves out the picture captured last"},
    FaultKindInfo{Kind::pictureSize,  "picture-size",  relative,       "-100",   "the transfer holds so many picture bytes, or +N or -N of those asked for"},
    FaultKindInfo{Kind::refuse,       "refuse",        none,           "",       "result 1 and nothing behind it"},
    FaultKindInfo{Kind::offset,       "offset",        fileOffset,     "size+1", "the resume offset answered: a number, size, size+N or size-N"},
    FaultKindInfo{Kind::noVerdict,    "no-verdict",    none,           "",       "no verdict after the upload (at its announcement)"},
    FaultKindInfo{Kind::verdict,      "verdict",       number,         "1",      "the verdict of the upload (at its announcement)"},
    FaultKindInfo{Kind::verdictDelay, "verdict-delay", number,         "12000",  "the verdict comes this many ms late (at the announcement)"},
    FaultKindInfo{Kind::stall,        "stall",         numberPair,     "40,8000","the camera stops reading at this percentage of the upload: percent,ms (0: for good)"},
    FaultKindInfo{Kind::uploadHangUp, "upload-hang-up",number,         "50",     "the device disappears at this percentage of the upload"},
    FaultKindInfo{Kind::stayDown,     "stay-down",     none,           "",       "the restart after this request never ends"},
    FaultKindInfo{Kind::backAt,       "back-at",       number,         "3",      "the restart ends with this heartbeat request, which is answered"},
    FaultKindInfo{Kind::noMarker,     "no-marker",     none,           "",       "JSON picture answer without the marker before the data"},
    FaultKindInfo{Kind::noSize,       "no-size",       none,           "",       "JSON picture answer without the total size"},
    FaultKindInfo{Kind::sizeText,     "size-text",     text,           "\"x\"",  "JSON picture answer with this text as the total size"},
    FaultKindInfo{Kind::invalidJson,  "invalid-json",  none,           "",       "the answer's JSON text is broken"},
    FaultKindInfo{Kind::shortJson,    "short-json",    number,         "9",      "a JSON answer of so many bytes whose count is right (9 to 13)"},
    FaultKindInfo{Kind::hangUp,       "hang-up",       optionalNumber, "4",      "the device disappears after so many bytes of the answer"},
    FaultKindInfo{Kind::stopReading,  "stop-reading",  optionalNumber, "3000",   "the camera answers and then stops reading for so many ms (0: for good)"},
};
// clang-format on

[[noreturn]] void fail(std::string_view text, const std::string& why) {
    throw FaultError("fault \"" + std::string(text) + "\": " + why);
}

std::int64_t numberIn(std::string_view whole, std::string_view text) {
    const auto number = parseNumber(text);
    if (!number)
        fail(whole, "\"" + std::string(text) + "\" is not a number");
    return *number;
}

/// Counts, times and codes.
std::int64_t amountIn(std::string_view whole, std::string_view text) {
    const std::int64_t amount = numberIn(whole, text);
    if (amount < 0 || amount > std::numeric_limits<std::uint32_t>::max())
        fail(whole, "\"" + std::string(text) + "\" is out of range");
    return amount;
}

Bytes bytesIn(std::string_view whole, std::string_view text) {
    const std::optional<Bytes> bytes = parseBytes(text);
    if (!bytes)
        fail(whole, "the parameter must be pairs of hexadecimal digits");
    return *bytes;
}

void readPair(Fault& fault, std::string_view whole, std::string_view text) {
    const std::size_t comma = text.find(',');
    fault.number = amountIn(whole, text.substr(0, comma));
    if (comma != std::string_view::npos)
        fault.second = amountIn(whole, text.substr(comma + 1));
}

/// Relative numbers: "+1", "-1"; with the prefix "size" also "size", "size+1".
void readRelative(Fault& fault, std::string_view whole, std::string_view text, std::string_view prefix) {
    if (!prefix.empty() && !text.starts_with(prefix)) {
        fault.number = numberIn(whole, text);
        return;
    }
    text.remove_prefix(prefix.size());
    fault.relative = !prefix.empty() || text.starts_with('+') || text.starts_with('-');
    if (text.empty() && !prefix.empty())
        return;
    if (!prefix.empty() && !text.starts_with('+') && !text.starts_with('-'))
        fail(whole, "write size, size+N or size-N");
    if (text.starts_with('+'))
        text.remove_prefix(1);
    fault.number = numberIn(whole, text);
}

void readParameter(Fault& fault, const FaultKindInfo& info, std::string_view whole, std::string_view text) {
    switch (info.parameter) {
    case none:
        if (!text.empty())
            fail(whole, "this kind takes no parameter");
        break;
    case number:
        fault.number = amountIn(whole, text);
        break;
    case optionalNumber:
        fault.number = text.empty() ? 0 : amountIn(whole, text);
        break;
    case numberPair:
        readPair(fault, whole, text);
        break;
    case relative:
        readRelative(fault, whole, text, "");
        break;
    case fileOffset:
        readRelative(fault, whole, text, "size");
        break;
    case bytes:
        fault.bytes = bytesIn(whole, text);
        break;
    case FaultParameter::text:
        fault.text = text;
        break;
    }
}

std::uint32_t occurrenceIn(std::string_view whole, std::string_view text) {
    const std::int64_t number = numberIn(whole, text);
    if (number < 1 || number >= Fault::always)
        fail(whole, "occurrences are counted from 1");
    return static_cast<std::uint32_t>(number);
}

void readOccurrence(Fault& fault, std::string_view whole, std::string_view text) {
    if (text.ends_with('+')) {
        fault.first = occurrenceIn(whole, text.substr(0, text.size() - 1));
        return;
    }
    const std::size_t dash = text.find('-');
    fault.first = occurrenceIn(whole, text.substr(0, dash));
    fault.last = dash == std::string_view::npos ? fault.first : occurrenceIn(whole, text.substr(dash + 1));
    if (fault.last < fault.first)
        fail(whole, "the occurrences end before they begin");
}

/// Cuts the text at the last mark and returns the part behind it; nothing without the mark.
std::optional<std::string_view> cutAtLast(std::string_view& text, char mark) {
    const std::size_t at = text.rfind(mark);
    if (at == std::string_view::npos)
        return std::nullopt;
    const std::string_view behind = text.substr(at + 1);
    text = text.substr(0, at);
    return behind;
}

template <typename Names>
std::string listed(const Names& rows) {
    std::string names;
    for (const auto& row : rows)
        names.append(names.empty() ? "" : ", ").append(row.name);
    return names;
}

} // namespace

std::span<const FaultKindInfo> faultKinds() {
    return kinds;
}

const FaultKindInfo& infoOf(FaultKind kind) {
    return kinds[static_cast<std::size_t>(kind)];
}

Fault parseFault(std::string_view text) {
    std::string_view rest = text;
    Fault fault;
    if (const auto occurrence = cutAtLast(rest, '#'))
        readOccurrence(fault, text, *occurrence);
    if (const auto request = cutAtLast(rest, '@')) {
        const auto selector = parseSelector(*request);
        if (!selector)
            fail(text, "\"" + std::string(*request) + "\" is no request; known: any, a code (0x02), " +
                           listed(protocol::requestNames()));
        fault.selector = *selector;
    }
    const std::size_t equals = rest.find('=');
    const std::string_view name = rest.substr(0, equals);
    const auto* const info =
        std::find_if(kinds.begin(), kinds.end(), [name](const auto& row) { return row.name == name; });
    if (info == kinds.end())
        fail(text, "there is no kind \"" + std::string(name) + "\"; known: " + listed(kinds));
    fault.kind = info->kind;
    readParameter(fault, *info, text,
                  equals == std::string_view::npos ? std::string_view() : rest.substr(equals + 1));
    return fault;
}

const Fault* FaultSet::find(FaultKind kind) const {
    const auto found = std::find_if(m_faults.begin(), m_faults.end(),
                                    [kind](const Fault& fault) { return fault.kind == kind; });
    return found == m_faults.end() ? nullptr : &*found;
}

std::string FaultSet::names() const {
    std::string names;
    for (const Fault& fault : m_faults)
        names.append(names.empty() ? "" : " ").append(infoOf(fault.kind).name);
    return names;
}

FaultSet FaultPlan::strike(const RequestKey& key) {
    FaultSet struck;
    for (Entry& entry : m_entries) {
        if (!entry.fault.selector.matches(key))
            continue;
        ++entry.seen;
        if (entry.seen >= entry.fault.first && entry.seen <= entry.fault.last)
            struck.add(entry.fault);
    }
    return struck;
}

} // namespace emulator
