#include "emulator/line/linedamage.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace emulator {

namespace {

/// A stream of its own for each kind of damage: one kind does not move another.
enum class Stream : std::uint64_t { bits, losses, repeats, bursts, breaks, overruns, count };

std::uint64_t streamSeed(std::uint64_t seed, LineDamage::Receiver receiver, Stream stream) {
    constexpr auto streams = static_cast<std::uint64_t>(Stream::count);
    return (seed * 2 + static_cast<std::uint64_t>(receiver)) * streams + static_cast<std::uint64_t>(stream);
}

bool isPerfect(const LineTraits& traits) {
    return traits.bitErrors == 0 && traits.lost == 0 && traits.doubled == 0 && traits.bursts == 0 &&
           traits.breaks == 0 && traits.overruns == 0 && !traits.wrongParity;
}

} // namespace

Chance::Chance(double chance, std::uint64_t seed) : m_chance(chance), m_random(seed) {
    drawGap();
}

/// The gaps between strikes have a geometric distribution.
void Chance::drawGap() {
    constexpr double steps = 1.0 / static_cast<double>(std::uint64_t{1} << 53U);
    constexpr auto longest = static_cast<double>(std::uint64_t{1} << 62U);
    if (m_chance <= 0 || m_chance >= 1) {
        m_gap = 0;
        return;
    }
    const double uniform = (static_cast<double>(m_random() >> 11U) + 1) * steps; // above 0, at most 1
    m_gap = static_cast<std::uint64_t>(std::min(longest, std::log(uniform) / std::log1p(-m_chance)));
}

bool Chance::strikes() {
    if (m_chance <= 0)
        return false;
    if (m_gap > 0) {
        --m_gap;
        return false;
    }
    drawGap();
    return true;
}

LineDamage::LineDamage(Receiver receiver, const LineTraits& traits, std::uint64_t seed)
    : m_receiver(receiver), m_wrongParity(traits.wrongParity), m_perfect(isPerfect(traits)),
      m_bits(traits.bitErrors, streamSeed(seed, receiver, Stream::bits)),
      m_losses(traits.lost, streamSeed(seed, receiver, Stream::losses)),
      m_repeats(traits.doubled, streamSeed(seed, receiver, Stream::repeats)),
      m_bursts(traits.bursts, streamSeed(seed, receiver, Stream::bursts)),
      m_breaks(traits.breaks, streamSeed(seed, receiver, Stream::breaks)),
      m_overruns(traits.overruns, streamSeed(seed, receiver, Stream::overruns)) {}

Bytes LineDamage::pass(ByteView bytes) {
    if (m_perfect && m_strikes.empty() && m_lossLeft == 0)
        return bytes.toBytes();
    Bytes out;
    out.reserve(bytes.size());
    std::size_t index = 0;
    for (const std::uint8_t byte : bytes)
        passByte(byte, ++index > LineTraits::fifoBytes, out);
    return out;
}

void LineDamage::passByte(std::uint8_t byte, bool overrunPossible, Bytes& out) {
    // Every stream moves on with every byte.
    std::uint8_t errors = bitErrors();
    bool lost = m_losses.strikes();
    bool doubled = m_repeats.strikes();
    const bool opens = m_breaks.strikes();
    const bool overrun = m_overruns.strikes() && overrunPossible;
    if (m_lossLeft == 0 && opens) {
        m_lossLeft = m_breaks.amount(LineTraits::longestBreak);
        out.push_back(0);
        ++m_counts.addedBytes;
    }
    if (m_lossLeft == 0 && overrun)
        m_lossLeft = m_overruns.amount(LineTraits::longestOverrun);
    strike(errors, doubled);
    if (parityFails(byte)) {
        lost = lost || m_receiver == Receiver::camera;
        byte = 0;
    }
    if (m_lossLeft > 0) {
        --m_lossLeft;
        lost = true;
    }
    if (lost) {
        ++m_counts.lostBytes;
        return;
    }
    m_counts.bits += static_cast<unsigned>(std::popcount(errors));
    out.push_back(static_cast<std::uint8_t>(byte ^ errors));
    if (!doubled)
        return;
    out.push_back(out.back());
    ++m_counts.addedBytes;
}

std::uint8_t LineDamage::bitErrors() {
    unsigned errors = 0;
    for (unsigned bit = 0; bit < 8; ++bit)
        errors |= (m_bits.strikes() ? 1U : 0U) << bit;
    if (m_bursts.strikes())
        m_burstLeft = m_bursts.amount(LineTraits::longestBurst);
    if (m_burstLeft > 0) {
        --m_burstLeft;
        errors ^= m_bursts.quarterOfBits();
    }
    return static_cast<std::uint8_t>(errors);
}

void LineDamage::strike(std::uint8_t& errors, bool& doubled) {
    for (const LineStrike& each : m_strikes) {
        if (each.after > 0)
            continue;
        switch (each.kind) {
        case LineStrike::Kind::flip:
            errors = static_cast<std::uint8_t>(errors ^ (1U << (each.amount % 8)));
            break;
        case LineStrike::Kind::lose:
            m_lossLeft = std::max(m_lossLeft, each.amount);
            break;
        case LineStrike::Kind::repeat:
            doubled = true;
            break;
        }
    }
    std::erase_if(m_strikes, [](const LineStrike& each) { return each.after == 0; });
    for (LineStrike& each : m_strikes)
        --each.after;
}

bool LineDamage::parityFails(std::uint8_t byte) const {
    return m_wrongParity && std::popcount(byte) % 2 == 0;
}

} // namespace emulator
