// Stored numbers are big-endian; in memory they are in machine order.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace tarnova {

constexpr std::uint16_t swap16(std::uint16_t value) {
    return static_cast<std::uint16_t>(value << 8 | value >> 8);
}
constexpr std::uint32_t swap32(std::uint32_t value) {
    return __builtin_bswap32(value);
}

/// A number of the machine in big-endian order, and back (it is the same step).
constexpr std::uint16_t big16(std::uint16_t value) {
    return std::endian::native == std::endian::big ? value : swap16(value);
}
constexpr std::uint32_t big32(std::uint32_t value) {
    return std::endian::native == std::endian::big ? value : swap32(value);
}

/// Reads and writes of big-endian numbers at any address, aligned or not. The caller has checked that the bytes are
/// there.
inline std::uint16_t loadBig16(const void* at) {
    std::uint16_t value;
    std::memcpy(&value, at, sizeof value);
    return big16(value);
}
inline std::uint32_t loadBig32(const void* at) {
    std::uint32_t value;
    std::memcpy(&value, at, sizeof value);
    return big32(value);
}
inline void storeBig16(void* at, std::uint16_t value) {
    value = big16(value);
    std::memcpy(at, &value, sizeof value);
}
inline void storeBig32(void* at, std::uint32_t value) {
    value = big32(value);
    std::memcpy(at, &value, sizeof value);
}

}  // namespace tarnova
