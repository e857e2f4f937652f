// Numbers from a file's bytes, each checked before it is read.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "host/pictures/picture_format.h"

namespace tarnova {

class ByteReader {
 public:
    explicit ByteReader(std::string_view itsBytes, bool isBigEndian = true) : bytes(itsBytes), bigEndian(isBigEndian) {}

    [[nodiscard]] std::size_t size() const { return bytes.size(); }
    [[nodiscard]] bool has(std::size_t at, std::size_t count) const {
        return at <= bytes.size() && count <= bytes.size() - at;
    }
    /// The bytes in this place. Throws PictureFault when the file ends in front of their end.
    [[nodiscard]] std::string_view span(std::size_t at, std::size_t count) const {
        if (!has(at, count)) throw PictureFault("The file is cut off.");
        return bytes.substr(at, count);
    }
    [[nodiscard]] std::string_view from(std::size_t at) const { return span(at, size() - std::min(at, size())); }
    [[nodiscard]] std::uint8_t u8(std::size_t at) const { return static_cast<std::uint8_t>(span(at, 1)[0]); }
    [[nodiscard]] std::uint16_t u16(std::size_t at) const { return static_cast<std::uint16_t>(number(at, 2)); }
    [[nodiscard]] std::uint32_t u32(std::size_t at) const { return number(at, 4); }
    [[nodiscard]] std::int32_t i32(std::size_t at) const { return static_cast<std::int32_t>(number(at, 4)); }

 private:
    [[nodiscard]] std::uint32_t number(std::size_t at, std::size_t count) const {
        std::uint32_t value = 0;
        const std::string_view digits = span(at, count);
        for (std::size_t i = 0; i < count; ++i)
            value = value << 8 | static_cast<std::uint8_t>(digits[bigEndian ? i : count - 1 - i]);
        return value;
    }

    std::string_view bytes;
    bool bigEndian;
};

}  // namespace tarnova
