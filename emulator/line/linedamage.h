// Damage of the bytes of one direction of a line.
#pragma once

#include "emulator/line/linetraits.h"

#include <random>
#include <vector>

namespace emulator {

/// Strikes with the same chance at every step, as the seed draws it.
class Chance {
public:
    Chance(double chance, std::uint64_t seed);

    /// One step.
    [[nodiscard]] bool strikes();
    /// A number from 1 to the limit, for a strike.
    [[nodiscard]] unsigned amount(unsigned limit) { return 1 + static_cast<unsigned>(m_random() % limit); }
    /// A byte with each bit set once in four times.
    [[nodiscard]] std::uint8_t quarterOfBits() { return static_cast<std::uint8_t>(m_random() & m_random()); }

private:
    void drawGap();

    double m_chance;
    std::uint64_t m_gap = 0; ///< steps before the next strike
    std::mt19937_64 m_random;
};

/// Damage at a chosen place.
struct LineStrike {
    enum class Kind : std::uint8_t { flip, lose, repeat };

    Kind kind = Kind::flip;
    std::uint32_t after = 0;  ///< bytes that still pass before it
    std::uint32_t amount = 1; ///< flip: number of the bit; lose: bytes
};

/// Bytes changed so far.
struct LineDamageCounts {
    std::uint64_t bits = 0;
    std::uint64_t lostBytes = 0;
    std::uint64_t addedBytes = 0;

    bool operator==(const LineDamageCounts&) const = default;
};

/// The same bytes come out damaged in the same way, however they are divided (but for overruns). No clock.
class LineDamage {
public:
    enum class Receiver : std::uint8_t { tool, camera };

    LineDamage(Receiver receiver, const LineTraits& traits, std::uint64_t seed);

    [[nodiscard]] Bytes pass(ByteView bytes);
    void add(const LineStrike& strike) { m_strikes.push_back(strike); }
    [[nodiscard]] const LineDamageCounts& counts() const { return m_counts; }

private:
    void passByte(std::uint8_t byte, bool overrunPossible, Bytes& out);
    /// Chosen damage at this byte.
    void strike(std::uint8_t& errors, bool& doubled);
    [[nodiscard]] bool parityFails(std::uint8_t byte) const;
    [[nodiscard]] std::uint8_t bitErrors();

    Receiver m_receiver;
    bool m_wrongParity;
    bool m_perfect; ///< nothing is drawn
    Chance m_bits;
    Chance m_losses;
    Chance m_repeats;
    Chance m_bursts;
    Chance m_breaks;
    Chance m_overruns;
    std::vector<LineStrike> m_strikes;
    unsigned m_burstLeft = 0; ///< bytes
    unsigned m_lossLeft = 0;
    LineDamageCounts m_counts;
};

} // namespace emulator
