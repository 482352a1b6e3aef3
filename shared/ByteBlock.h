#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Sixteen bytes that are compared at once. A comparison gives a block with 0xFF where it holds and 0 elsewhere. Written
// with the compiler's vector types, so that the same lines serve x86-64 and arm64.

using ByteBlock = unsigned char __attribute__((vector_size(16)));

inline constexpr std::size_t byteBlockSize = sizeof(ByteBlock);

inline ByteBlock loadBlock(const char* bytes) {
    ByteBlock block;
    std::memcpy(&block, bytes, byteBlockSize);
    return block;
}

template <typename Comparison>
bool holdsAnywhere(Comparison comparison) {
    const auto halves = std::bit_cast<std::array<std::uint64_t, 2>>(comparison);
    return (halves[0] | halves[1]) != 0;
}

// One bit for each byte, the first byte's lowest.
template <typename Comparison>
std::uint64_t bitsOf(Comparison comparison) {
    static_assert(sizeof(Comparison) == byteBlockSize && std::endian::native == std::endian::little);
    const auto halves = std::bit_cast<std::array<std::uint64_t, 2>>(comparison);
    // The multiplication gathers the lowest bits of eight bytes in the highest byte.
    const auto gather = [](std::uint64_t half) { return (half & 0x0101010101010101) * 0x0102040810204080 >> 56; };
    return gather(halves[0]) | gather(halves[1]) << 8;
}
