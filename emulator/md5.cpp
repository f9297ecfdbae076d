#include "emulator/md5.h"

#include <array>
#include <bit>

namespace emulator {

namespace {

using protocol::Bytes;
using protocol::ByteView;
using Words = std::array<std::uint32_t, 4>;

constexpr std::size_t blockSize = 64;

constexpr std::array<std::uint32_t, 64> constants = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};

constexpr std::array<std::array<int, 4>, 4> rotations = {
    {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}}};

/// Mixing function of a round and the index of the word that its step takes.
std::uint32_t mixed(std::size_t round, const Words& w) {
    switch (round) {
    case 0:
        return (w[1] & w[2]) | (~w[1] & w[3]);
    case 1:
        return (w[1] & w[3]) | (w[2] & ~w[3]);
    case 2:
        return w[1] ^ w[2] ^ w[3];
    default:
        return w[2] ^ (w[1] | ~w[3]);
    }
}

std::size_t wordIndex(std::size_t step) {
    constexpr std::array<std::size_t, 4> factor = {1, 5, 3, 7};
    constexpr std::array<std::size_t, 4> start = {0, 1, 5, 0};
    const std::size_t round = step / 16;
    return (step * factor[round] + start[round]) % 16;
}

void addBlock(Words& state, ByteView block) {
    Words w = state;
    for (std::size_t step = 0; step < constants.size(); ++step) {
        const std::size_t round = step / 16;
        const std::uint32_t word = block.get(protocol::Field<std::uint32_t>{wordIndex(step) * 4});
        const std::uint32_t sum = w[0] + mixed(round, w) + constants[step] + word;
        w = {w[3], w[1] + std::rotl(sum, rotations[round][step % 4]), w[1], w[2]};
    }
    for (std::size_t i = 0; i < state.size(); ++i)
        state[i] += w[i];
}

} // namespace

Bytes md5(ByteView bytes) {
    Bytes padded = bytes.toBytes();
    padded.push_back(0x80);
    while (padded.size() % blockSize != blockSize - 8)
        padded.push_back(0);
    protocol::put(padded, protocol::Field<std::uint64_t>{padded.size()}, std::uint64_t{bytes.size()} * 8);

    Words state = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
    const ByteView all(padded);
    for (std::size_t at = 0; at < padded.size(); at += blockSize)
        addBlock(state, all.range(at, at + blockSize));

    Bytes digest;
    for (std::size_t i = 0; i < state.size(); ++i)
        protocol::put(digest, protocol::Field<std::uint32_t>{i * 4}, state[i]);
    return digest;
}

} // namespace emulator
