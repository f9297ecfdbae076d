// Traits of an imperfect line, and their names.
#pragma once

#include "emulator/camera/camerasettings.h"

#include <span>
#include <stdexcept>
#include <string_view>

namespace emulator {

/// Chances are of each bit or byte, in both directions. Without any, the line is perfect.
struct LineTraits {
    static constexpr std::size_t packetBytes = 62; ///< of 64, two are the adapter's own
    static constexpr std::size_t fifoBytes = 16;   ///< of a receiver
    static constexpr unsigned longestBurst = 16;   ///< bytes
    static constexpr unsigned longestBreak = 40;
    static constexpr unsigned longestOverrun = 8;

    double bitErrors = 0;
    double lost = 0;
    double doubled = 0;
    double bursts = 0; ///< a quarter of the bits of some bytes change
    double breaks = 0; ///< the contact opens: a zero byte, then some bytes are lost
    double overruns =
        0; ///< behind the first bytes of a piece, which the receiver's queue takes, some are lost

    Time latency{0};
    Time jitter{0};      ///< longest addition to the latency
    Time packetTimer{0}; ///< the adapter keeps an incomplete packet for so long; 0: it has no packets
    bool echoes = false; ///< the tool receives what it sends
    /// The adapter expects even parity, which the camera does not send: of the bytes with an even number of
    /// ones the tool reads zeros, and the camera takes none.
    bool wrongParity = false;

    bool operator==(const LineTraits&) const = default;
};

/// A line with a name. Its figures are assumptions.
struct LinePreset {
    std::string_view name;
    std::string_view description;
    LineTraits traits;
};

/// A trait that can be set by itself; one of the three members is set.
struct LineTrait {
    std::string_view form; ///< example: name, or name=value
    std::string_view description;
    double LineTraits::*chance = nullptr;
    Time LineTraits::*time = nullptr; ///< ms
    bool LineTraits::*flag = nullptr;

    [[nodiscard]] std::string_view name() const { return form.substr(0, form.find('=')); }
};

[[nodiscard]] std::span<const LinePreset> linePresets();
[[nodiscard]] std::span<const LineTrait> lineTraits();

/// Unusable text of a line; what() is for people.
class LineTextError : public std::invalid_argument {
public:
    using std::invalid_argument::invalid_argument;
};

/// A preset, traits, or a preset and changes of it, separated by commas: "ftdi,bits=1e-5". Throws
/// LineTextError.
[[nodiscard]] LineTraits parseLine(std::string_view text);

} // namespace emulator
