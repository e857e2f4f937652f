// Finds the bytes that matter to a scan, 64 at a time. Own to this folder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tarnova {

inline constexpr std::size_t maskBlockSize = 64;

/// Up to three bytes to look for; fewer are given by naming one twice.
struct byteTriple {
    std::uint8_t first, second, third;
};

/// One bit for each of 64 bytes that is one of the three, the first in the lowest bit.
inline std::uint64_t maskOfBlock(const std::uint8_t* block, const byteTriple& bytes) {
    std::uint64_t mask = 0;
#if defined(__SSE2__)
    const __m128i first = _mm_set1_epi8(static_cast<char>(bytes.first));
    const __m128i second = _mm_set1_epi8(static_cast<char>(bytes.second));
    const __m128i third = _mm_set1_epi8(static_cast<char>(bytes.third));
    for (std::size_t i = 0; i < maskBlockSize / 16; ++i) {
        const __m128i piece = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + 16 * i));
        const __m128i hit = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(piece, first), _mm_cmpeq_epi8(piece, second)),
                                         _mm_cmpeq_epi8(piece, third));
        mask |= static_cast<std::uint64_t>(static_cast<std::uint32_t>(_mm_movemask_epi8(hit))) << (16 * i);
    }
#else
    for (std::size_t i = 0; i < maskBlockSize; ++i) {
        const bool hit = block[i] == bytes.first || block[i] == bytes.second || block[i] == bytes.third;
        mask |= static_cast<std::uint64_t>(hit) << i;
    }
#endif
    return mask;
}

/// The same for fewer than 64 bytes.
inline std::uint64_t maskOfTail(const std::uint8_t* tail, std::size_t size, const byteTriple& bytes) {
    std::uint8_t block[maskBlockSize] = {};
    std::memcpy(block, tail, size);
    return maskOfBlock(block, bytes) & ((std::uint64_t{1} << size) - 1);
}

/// Calls `visit` with the place of each such byte, in order.
template <typename Visit>
void forEachByteOf(const std::uint8_t* bytes, std::size_t size, const byteTriple& wanted, Visit visit) {
    for (std::size_t base = 0; base < size; base += maskBlockSize) {
        const std::size_t left = size - base;
        std::uint64_t mask =
            left < maskBlockSize ? maskOfTail(bytes + base, left, wanted) : maskOfBlock(bytes + base, wanted);
        for (; mask != 0; mask &= mask - 1)
            visit(base + static_cast<std::size_t>(__builtin_ctzll(mask)));
    }
}

}  // namespace tarnova
