#include "emulator/line/linetraits.h"

#include "emulator/camera/requestselector.h"
#include "language/language.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace emulator {

namespace {

using namespace std::chrono_literals;
using language::sentence;

constexpr std::int64_t longestTimeMs = 10000;

// clang-format off
constexpr std::array presets = {
    LinePreset{"good", "changes nothing", {}},
    LinePreset{"long-cable", "single bits and bursts change",
               {.bitErrors = 1e-5, .bursts = 2e-5}},
    LinePreset{"ftdi", "packets of 64 bytes, incomplete ones after 16 ms",
               {.latency = 1ms, .packetTimer = 16ms}},
    LinePreset{"cheap-adapter", "irregular latency, bytes lost and doubled under load",
               {.lost = 1e-5, .doubled = 1e-5, .overruns = 1e-4, .latency = 2ms, .jitter = 12ms}},
    LinePreset{"loose-plug", "the contact opens, bytes around it change",
               {.bursts = 5e-3, .breaks = 5e-3}},
};

constexpr std::array traits = {
    LineTrait{"bits=1e-5", "chance of each bit to change", &LineTraits::bitErrors},
    LineTrait{"lost=1e-4", "chance of each byte to be lost", &LineTraits::lost},
    LineTrait{"doubled=1e-4", "chance of each byte to come twice", &LineTraits::doubled},
    LineTrait{"burst=1e-4", "chance, with each byte, that up to 16 bytes change", &LineTraits::bursts},
    LineTrait{"break=1e-4", "the same of a break: a zero byte, then up to 40 bytes are lost", &LineTraits::breaks},
    LineTrait{"overrun=1e-3", "the same behind 16 bytes without a pause: up to 8 bytes are lost", &LineTraits::overruns},
    LineTrait{"latency=5", "ms for each byte", nullptr, &LineTraits::latency},
    LineTrait{"jitter=10", "up to so many ms more", nullptr, &LineTraits::jitter},
    LineTrait{"timer=16", "to the tool: packets of 62 bytes, incomplete ones after so many ms", nullptr, &LineTraits::packetTimer},
    LineTrait{"echo", "the tool receives what it sends", nullptr, nullptr, &LineTraits::echoes},
    LineTrait{"parity", "the adapter expects even parity, which the camera does not send", nullptr, nullptr, &LineTraits::wrongParity},
};
// clang-format on

std::string known() {
    std::string names;
    for (const LinePreset& preset : presets)
        names.append(names.empty() ? "" : ", ").append(preset.name);
    for (const LineTrait& trait : traits)
        names.append(", ").append(trait.form);
    return names;
}

std::optional<double> chanceIn(std::string_view text) {
    double chance = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), chance);
    const bool whole = parsed.ec == std::errc() && parsed.ptr == text.data() + text.size();
    return whole && chance >= 0 && chance <= 1 ? std::optional(chance) : std::nullopt;
}

std::optional<Time> timeIn(std::string_view text) {
    const auto number = parseNumber(text);
    if (!number || *number < 0 || *number > longestTimeMs)
        return std::nullopt;
    return std::chrono::milliseconds(*number);
}

/// False for a value that the trait cannot have.
bool setTrait(LineTraits& line, const LineTrait& trait, std::string_view value) {
    if (trait.flag != nullptr) {
        line.*trait.flag = true;
        return value.empty();
    }
    if (trait.time != nullptr) {
        const auto time = timeIn(value);
        line.*trait.time = time.value_or(Time{0});
        return time.has_value();
    }
    const auto chance = chanceIn(value);
    line.*trait.chance = chance.value_or(0);
    return chance.has_value();
}

void apply(LineTraits& line, std::string_view word) {
    const auto preset = std::find_if(presets.begin(), presets.end(),
                                     [word](const LinePreset& each) { return each.name == word; });
    if (preset != presets.end()) {
        line = preset->traits;
        return;
    }
    const std::size_t equals = word.find('=');
    const auto trait = std::find_if(traits.begin(), traits.end(), [&](const LineTrait& each) {
        return each.name() == word.substr(0, equals);
    });
    if (trait == traits.end())
        throw LineTextError(
            sentence("--line: there is no line \"%1\"; known: %2", {std::string(word), known()}));
    const std::string_view value = equals == std::string_view::npos ? "" : word.substr(equals + 1);
    const bool flagged = trait->flag != nullptr && equals != std::string_view::npos;
    if (flagged || !setTrait(line, *trait, value))
        throw LineTextError(sentence("--line: \"%1\" cannot be used; write it like %2",
                                     {std::string(word), std::string(trait->form)}));
}

} // namespace

std::span<const LinePreset> linePresets() {
    return presets;
}

std::span<const LineTrait> lineTraits() {
    return traits;
}

LineTraits parseLine(std::string_view text) {
    LineTraits line;
    while (true) {
        const std::size_t comma = text.find(',');
        apply(line, text.substr(0, comma));
        if (comma == std::string_view::npos)
            return line;
        text.remove_prefix(comma + 1);
    }
}

} // namespace emulator
