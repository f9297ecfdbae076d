#include "link/protocol/crc16.h"

#include <array>

namespace protocol {

namespace {

constexpr std::array<std::uint16_t, 256> xmodemTable = [] {
    std::array<std::uint16_t, 256> table{};
    for (std::size_t index = 0; index < table.size(); ++index) {
        auto crc = static_cast<std::uint32_t>(index << 8);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 0x8000U) != 0 ? (crc << 1) ^ 0x1021U : crc << 1;
        table[index] = static_cast<std::uint16_t>(crc & 0xFFFFU);
    }
    return table;
}();

constexpr std::array<std::uint16_t, 256> modbusTable = [] {
    std::array<std::uint16_t, 256> table{};
    for (std::size_t index = 0; index < table.size(); ++index) {
        auto crc = static_cast<std::uint32_t>(index);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1U) != 0 ? (crc >> 1) ^ 0xA001U : crc >> 1;
        table[index] = static_cast<std::uint16_t>(crc);
    }
    return table;
}();

} // namespace

std::uint16_t crc16Xmodem(ByteView bytes) {
    std::uint32_t crc = 0;
    for (const std::uint8_t byte : bytes)
        crc = ((crc << 8) & 0xFFFFU) ^ xmodemTable[((crc >> 8) ^ byte) & 0xFFU];
    return static_cast<std::uint16_t>(crc);
}

std::uint16_t crc16Modbus(ByteView bytes) {
    std::uint32_t crc = 0xFFFFU;
    for (const std::uint8_t byte : bytes)
        crc = (crc >> 8) ^ modbusTable[(crc ^ byte) & 0xFFU];
    return static_cast<std::uint16_t>(crc);
}

} // namespace protocol
