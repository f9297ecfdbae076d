// Byte buffers and the bounds-checked reading of fields from them.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace protocol {

/// Frames, payloads, answers, picture data and property values.
using Bytes = std::vector<std::uint8_t>;

/// MD5 digest of a picture or an upload file, bytes.
inline constexpr std::size_t digestSize = 16;

/// Place of one unsigned little-endian field inside a frame, payload or record. Layouts are constants of this
/// type; no code indexes bytes by hand.
template <std::unsigned_integral T>
struct Field {
    std::size_t offset;

    static constexpr std::size_t size = sizeof(T);
    [[nodiscard]] constexpr std::size_t end() const { return offset + size; }
};

/// Thrown by ByteView::get when the bytes end before the field does.
struct ShortAnswer : std::runtime_error {
    ShortAnswer() : std::runtime_error("answer too short") {}
};

/// Borrowed, read-only, bounds-checked bytes. Reading a field past the end throws; a slice past the end is
/// empty.
class ByteView {
public:
    constexpr ByteView() = default;
    constexpr ByteView(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}
    ByteView(const Bytes& bytes) : m_bytes(bytes) {}

    [[nodiscard]] constexpr std::size_t size() const { return m_bytes.size(); }
    [[nodiscard]] constexpr bool empty() const { return m_bytes.empty(); }
    [[nodiscard]] constexpr const std::uint8_t* begin() const { return m_bytes.data(); }
    [[nodiscard]] constexpr const std::uint8_t* end() const { return m_bytes.data() + m_bytes.size(); }

    template <std::unsigned_integral T>
    [[nodiscard]] constexpr bool has(Field<T> field) const {
        return field.end() <= m_bytes.size();
    }

    /// The field's value; throws ShortAnswer when the bytes end before it.
    template <std::unsigned_integral T>
    [[nodiscard]] constexpr T get(Field<T> field) const {
        if (!has(field))
            throw ShortAnswer();
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < sizeof(T); ++i)
            value |= static_cast<std::uint64_t>(m_bytes[field.offset + i]) << (8 * i);
        return static_cast<T>(value);
    }

    /// Bytes [first, last), cut at the end; empty when first is at or beyond the end.
    [[nodiscard]] constexpr ByteView range(std::size_t first, std::size_t last) const {
        last = std::min(last, m_bytes.size());
        return first < last ? ByteView(m_bytes.subspan(first, last - first)) : ByteView();
    }

    [[nodiscard]] Bytes toBytes() const { return {m_bytes.begin(), m_bytes.end()}; }
    [[nodiscard]] std::string toText() const { return {m_bytes.begin(), m_bytes.end()}; }

private:
    std::span<const std::uint8_t> m_bytes;
};

/// Appends zero bytes up to this size; a longer buffer stays as it is.
void growTo(Bytes& bytes, std::size_t size);

/// Writes a value at its field; the buffer grows with zero bytes when it is too short.
template <std::unsigned_integral T>
void put(Bytes& bytes, Field<T> field, T value) {
    growTo(bytes, field.end());
    for (std::size_t i = 0; i < sizeof(T); ++i)
        bytes[field.offset + i] =
            static_cast<std::uint8_t>((static_cast<std::uint64_t>(value) >> (8 * i)) & 0xFFU);
}

inline void append(Bytes& bytes, ByteView more) {
    const std::size_t before = bytes.size();
    growTo(bytes, before + more.size());
    std::copy(more.begin(), more.end(), bytes.begin() + static_cast<std::ptrdiff_t>(before));
}

inline Bytes bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

} // namespace protocol
