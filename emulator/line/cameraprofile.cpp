#include "emulator/line/cameraprofile.h"

#include "language/language.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <limits>

namespace emulator {

namespace {

using language::sentence;

constexpr std::int64_t longestDelayMs = 600'000;
constexpr std::int64_t mostPictures = 200;
constexpr std::uint32_t secondsBetweenPictures = 60;

using Words = std::vector<std::string_view>;

Words wordsIn(std::string_view text) {
    Words words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        if (end > 0)
            words.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

[[noreturn]] void refuseValue(const char* what, std::string_view value) {
    throw std::invalid_argument(sentence(what, {std::string(value)}));
}

std::int64_t valueIn(std::string_view text, std::int64_t most) {
    const auto number = parseNumber(text);
    if (!number || *number < 0 || *number > most)
        throw std::invalid_argument(
            sentence("\"%1\" is not a number from 0 to %2", {std::string(text), std::to_string(most)}));
    return *number;
}

Time msIn(std::string_view text) {
    return std::chrono::milliseconds(valueIn(text, longestDelayMs));
}

RequestSelector requestIn(std::string_view text) {
    const auto selector = parseSelector(text);
    if (!selector)
        refuseValue("\"%1\" is no request; see --list-faults", text);
    return *selector;
}

Bytes bytesIn(std::string_view text) {
    const std::optional<Bytes> bytes = parseBytes(text);
    if (!bytes)
        refuseValue("\"%1\" is no pairs of hexadecimal digits", text);
    return *bytes;
}

template <std::size_t count>
std::array<std::string_view, count> exactly(std::string_view value) {
    const Words words = wordsIn(value);
    if (words.size() != count)
        throw std::invalid_argument(
            sentence("%1 words are needed, not \"%2\"", {std::to_string(count), std::string(value)}));
    std::array<std::string_view, count> result;
    std::copy(words.begin(), words.end(), result.begin());
    return result;
}

// --- the keys ----------------------------------------------------------------------------------------------

void setType(CameraProfile& profile, std::string_view value) {
    const auto number = parseNumber(value);
    for (const protocol::CameraTypeInfo& type : protocol::cameraTypes) {
        if (value == type.optionName || number == static_cast<std::int64_t>(type.type)) {
            profile.settings = settingsForType(type.type);
            return;
        }
    }
    refuseValue("there is no type \"%1\"", value);
}

void setAddress(CameraProfile& profile, std::string_view value) {
    profile.settings.address =
        static_cast<std::uint8_t>(valueIn(value, std::numeric_limits<std::uint8_t>::max()));
}

void setBaud(CameraProfile& profile, std::string_view value) {
    constexpr std::int64_t fastest = 4'000'000;
    profile.settings.baudRate =
        static_cast<std::uint32_t>(std::max<std::int64_t>(valueIn(value, fastest), 1));
}

void addDelay(CameraProfile& profile, std::string_view value) {
    constexpr std::size_t words = 4;
    const auto parts = exactly<words>(value);
    const DelayRange range{requestIn(parts[0]), msIn(parts[1]), msIn(parts[2]), msIn(parts[3])};
    if (range.median < range.least || range.most < range.median)
        refuseValue("the times of \"%1\" fall", value);
    profile.settings.delays.push_back(range);
}

void addFault(CameraProfile& profile, std::string_view value) {
    profile.faults.push_back(parseFault(value));
}

void setLine(CameraProfile& profile, std::string_view value) {
    profile.line = parseLine(value);
}

template <bool CameraSettings::*flag>
void setFlag(CameraProfile& profile, std::string_view value) {
    if (value != "on" && value != "off")
        refuseValue("\"%1\" is neither on nor off", value);
    profile.settings.*flag = value == "on";
}

template <Time CameraSettings::*time>
void setTime(CameraProfile& profile, std::string_view value) {
    profile.settings.*time = msIn(value);
}

void setBootBytes(CameraProfile& profile, std::string_view value) {
    profile.settings.bootBytes = bytesIn(value);
}

void setOrientation(CameraProfile& profile, std::string_view value) {
    const auto words = exactly<protocol::orientation_value::quantities>(value);
    for (std::size_t i = 0; i < words.size(); ++i) {
        OrientationItem& item = profile.state.orientation.at(i);
        item = {};
        if (words.at(i) == "unknown")
            item.answer = OrientationItem::Answer::sentinel;
        else
            item.value =
                static_cast<std::uint32_t>(valueIn(words.at(i), std::numeric_limits<std::uint32_t>::max()));
    }
}

void setPictures(CameraProfile& profile, std::string_view value) {
    profile.pictures = static_cast<std::uint16_t>(valueIn(value, mostPictures));
}

struct TextOfRequest {
    std::string_view request;
    std::string CameraState::*text;
};

constexpr std::array textsOfRequests = {
    TextOfRequest{"getSn", &CameraState::serialNumber},
    TextOfRequest{"getAppVersion", &CameraState::appVersion},
    TextOfRequest{"getSystemVersion", &CameraState::systemVersion},
    TextOfRequest{"getQvVersion", &CameraState::qvVersion},
    TextOfRequest{"getModelInfo", &CameraState::modelInfo},
    TextOfRequest{"gyroTest", &CameraState::gyroText},
};

void setAnswer(CameraState& state, std::string_view request, const Bytes& bytes) {
    const std::string text(bytes.begin(), bytes.end());
    for (const TextOfRequest& row : textsOfRequests) {
        if (row.request == request) {
            state.*row.text = text;
            return;
        }
    }
    if (request == "jsonProperty") {
        state.jsonPropertyText = text;
        return;
    }
    const RequestSelector selector = requestIn(request);
    if (selector.code != protocol::code(protocol::Command::getProperty) || !selector.detail ||
        *selector.detail > std::numeric_limits<std::uint8_t>::max())
        refuseValue("\"%1\" has no value that can be set", request);
    state.properties[static_cast<std::uint8_t>(*selector.detail)] = bytes;
}

void setValue(CameraProfile& profile, std::string_view value) {
    const Words words = wordsIn(value);
    setAnswer(profile.state, words.front(), words.size() < 2 ? Bytes() : bytesIn(exactly<2>(value)[1]));
}

/// The text begins behind the first blank.
void setText(CameraProfile& profile, std::string_view value) {
    const std::size_t blank = value.find(' ');
    if (blank == std::string_view::npos)
        refuseValue("\"%1\" needs a text behind the request", value);
    setAnswer(profile.state, value.substr(0, blank), protocol::bytesOf(value.substr(blank + 1)));
}

// clang-format off
constexpr std::array keyTable = {
    ProfileKey{"type", "ostra", "camera type, number or name; comes first", &setType},
    ProfileKey{"address", "0x01", "slave address", &setAddress},
    ProfileKey{"baud", "460800", "rate", &setBaud},
    ProfileKey{"delay", "getSn 8 12 30", "ms until the answer: least, median, 95 %; request any: all others", &addDelay},
    ProfileKey{"fault", "bad-check@getSn", "a fault, as --fault takes it", &addFault},
    ProfileKey{"line", "ftdi,latency=2", "a bad line, as --line takes it", &setLine},
    ProfileKey{"value", "getProperty:15 1E", "answered value of a request, hexadecimal", &setValue},
    ProfileKey{"text", "getSn SHELF000001", "the same as text", &setText},
    ProfileKey{"orientation", "45 3 unknown 981", "pitch, roll, yaw, acceleration", &setOrientation},
    ProfileKey{"orientation-pause", "2000", "ms without a read, then pitch again", &setTime<&CameraSettings::orientationPause>},
    ProfileKey{"pictures", "3", "pictures held at the start", &setPictures},
    ProfileKey{"newest-first", "on", "order of the catalogue", &setFlag<&CameraSettings::newestPictureFirst>},
    ProfileKey{"all-addresses", "on", "answers requests to any address", &setFlag<&CameraSettings::answersAllAddresses>},
    ProfileKey{"unknown-ids", "off", "refuses reads of unknown ids; off: silent", &setFlag<&CameraSettings::answersUnknownIds>},
    ProfileKey{"short-requests", "on", "refuses reads without id; off: silent", &setFlag<&CameraSettings::answersShortRequests>},
    ProfileKey{"wrong-check-codes", "on", "serves requests with a wrong check code", &setFlag<&CameraSettings::takesWrongCheckCodes>},
    ProfileKey{"rest", "20", "ms behind an answer in which requests are lost, as those before it; 0: none are", &setTime<&CameraSettings::rest>},
    ProfileKey{"capture-time", "200", "ms until a picture is listed", &setTime<&CameraSettings::captureTime>},
    ProfileKey{"restart-time", "3000", "ms of silence after an image", &setTime<&CameraSettings::updateRestartTime>},
    ProfileKey{"boot-bytes", "4F4B0D0A", "sent when a restart is over", &setBootBytes},
};
// clang-format on

std::string knownKeys() {
    std::string names;
    for (const ProfileKey& key : keyTable)
        names.append(names.empty() ? "" : ", ").append(key.name);
    return names;
}

const ProfileKey& keyNamed(const trace::ProfileEntry& entry) {
    const auto* const found = std::find_if(keyTable.begin(), keyTable.end(),
                                           [&entry](const ProfileKey& key) { return key.name == entry.key; });
    if (found == keyTable.end())
        throw trace::profileError(entry.line,
                                  sentence("there is no key \"%1\"; known: %2", {entry.key, knownKeys()}));
    return *found;
}

} // namespace

std::span<const ProfileKey> profileKeys() {
    return keyTable;
}

CameraProfile cameraProfileOf(const trace::Profile& profile) {
    constexpr std::size_t firstLine = 2;
    if (profile.entries.empty() || profile.entries.front().key != keyTable.front().name)
        throw trace::profileError(
            profile.entries.empty() ? firstLine : profile.entries.front().line,
            sentence("a profile begins with the key \"%1\"", {std::string(keyTable.front().name)}));
    CameraProfile result;
    for (const trace::ProfileEntry& entry : profile.entries) {
        const ProfileKey& key = keyNamed(entry);
        if (&key == keyTable.data() && &entry != profile.entries.data())
            throw trace::profileError(entry.line, sentence("\"%1\" stands here again", {entry.key}));
        try {
            key.set(result, entry.value);
        } catch (const std::invalid_argument& error) {
            throw trace::profileError(entry.line, entry.key + ": " + error.what());
        }
    }
    return result;
}

CameraProfile loadCameraProfile(const std::string& path) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    const int reason = errno;
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad())
        throw trace::ProfileError(sentence("cannot read %1: %2", {path, language::reasonOf(reason)}));
    try {
        return cameraProfileOf(trace::readProfile(text));
    } catch (const trace::ProfileError& error) {
        throw trace::ProfileError(path + ": " + error.what());
    }
}

VirtualCamera cameraOf(const CameraProfile& profile, const CameraSettings& settings) {
    VirtualCamera camera(settings);
    camera.state() = profile.state;
    for (const Fault& fault : profile.faults)
        camera.faults().add(fault);
    for (std::uint16_t i = 0; i < profile.pictures; ++i) {
        const std::uint16_t id = camera.takePicture(Time::zero()).info.id;
        for (Picture& picture : camera.state().pictures) {
            if (picture.info.id == id)
                picture.info.creationTime += i * secondsBetweenPictures;
        }
    }
    return camera;
}

} // namespace emulator
