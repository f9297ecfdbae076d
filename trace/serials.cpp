#include "trace/serials.h"

#include "link/protocol/commands.h"
#include "link/protocol/crc16.h"
#include "link/protocol/jsonenvelope.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace trace {

namespace {

using namespace protocol;

constexpr std::uint8_t blank = 'X';

/// Names of serial numbers in JSON texts, in lower case. The protocol defines none; cameras may use them.
constexpr std::array<std::string_view, 9> serialNames = {
    "sn", "serial", "serialno", "serialnumber", "serial_number", "deviceid", "device_id", "devicesn", "mac"};

bool isFrame(ByteView bytes) {
    return bytes.has(frame_layout::start2) && startsAs(bytes, frameForm);
}

std::uint8_t serialCommand(Side from) {
    return code(from == Side::tool ? Command::setProperty : Command::getProperty);
}

void blankAll(Bytes& bytes, std::size_t first, std::size_t last) {
    for (std::size_t at = first; at < std::min(last, bytes.size()); ++at)
        bytes[at] = bytes[at] == 0 ? 0 : blank; // keeps terminators
}

/// Recomputes the trailing check code; a wrong one stays wrong by the same bits.
void mendCheckCode(Bytes& bytes, ByteView before, std::uint16_t (*crc)(ByteView)) {
    if (bytes.size() < frame_layout::checkCodeSize)
        return;
    const auto check = checkCodeOf(bytes.size());
    const std::uint16_t wrongBy = before.get(check) ^ crc(before.range(0, check.offset));
    put(bytes, check, static_cast<std::uint16_t>(crc(ByteView(bytes).range(0, check.offset)) ^ wrongBy));
}

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// Blanks the text values of the names: "name" : "value". The text may be cut off anywhere.
void blankJson(Bytes& bytes, Side from) {
    const std::string text = ByteView(bytes).toText();
    const std::size_t object =
        text.find('{', from == Side::tool ? json_request::head.body : json_answer::head.body);
    for (std::size_t open = text.find('"', std::min(object, text.size())); open != std::string::npos;) {
        const std::size_t close = text.find('"', open + 1);
        if (close == std::string::npos)
            return;
        const std::string name = lowerCase(text.substr(open + 1, close - open - 1));
        const std::size_t colon = text.find_first_not_of(' ', close + 1);
        const bool isName = colon != std::string::npos && text[colon] == ':';
        const std::size_t value = isName ? text.find_first_not_of(' ', colon + 1) : std::string::npos;
        if (value == std::string::npos || text[value] != '"') {
            open = text.find('"', close + 1);
            continue;
        }
        const std::size_t end = std::min(text.find('"', value + 1), text.size());
        if (std::find(serialNames.begin(), serialNames.end(), name) != serialNames.end())
            blankAll(bytes, value + 1, end);
        open = end == text.size() ? std::string::npos : text.find('"', end + 1);
    }
}

void blankFrame(Bytes& bytes, Side from, bool whole) {
    const ByteView before(bytes);
    const bool holdsOne = before.has(answer_layout::propertyId) &&
                          before.get(frame_layout::command) == serialCommand(from) &&
                          before.get(answer_layout::propertyId) == code(PropertyId::serialNumber);
    if (!holdsOne)
        return;
    const Bytes original = bytes;
    const std::size_t first =
        from == Side::tool ? answer_layout::propertyId.end() : answer_layout::propertyValue;
    blankAll(bytes, first, whole ? bytes.size() - frame_layout::checkCodeSize : bytes.size());
    if (whole)
        mendCheckCode(bytes, original, &crc16Xmodem);
}

} // namespace

Bytes withoutSerials(const LineItem& item) {
    Bytes bytes = item.bytes;
    switch (item.kind) {
    case LineItem::Kind::frame:
    case LineItem::Kind::badFrame:
        if (bytes.size() >= frameOverhead)
            blankFrame(bytes, item.from, true);
        break;
    case LineItem::Kind::json:
    case LineItem::Kind::badJson:
        blankJson(bytes, item.from);
        mendCheckCode(bytes, item.bytes, &crc16Modbus);
        break;
    case LineItem::Kind::brokenOff:
        if (isFrame(bytes))
            blankFrame(bytes, item.from, false);
        else
            blankJson(bytes, item.from);
        break;
    case LineItem::Kind::stray:
    case LineItem::Kind::data:
        break;
    }
    return bytes;
}

bool mayCarrySerial(Side from, ByteView beginning) {
    if (beginning.empty())
        return false;
    if (*beginning.begin() != frameStart1)
        return true; // an envelope
    const bool otherCommand =
        beginning.has(frame_layout::command) && beginning.get(frame_layout::command) != serialCommand(from);
    const bool otherId = beginning.has(answer_layout::propertyId) &&
                         beginning.get(answer_layout::propertyId) != code(PropertyId::serialNumber);
    return !otherCommand && !otherId;
}

} // namespace trace
