// The fields of a link's stored record as a layout file shows them.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarnova {

// Bytes that the fields may have.
inline constexpr std::size_t tagKeyBytes = 64;
inline constexpr std::size_t tagNameBytes = 31;
inline constexpr std::size_t tagNotesBytes = 255;

inline constexpr std::uint16_t tagKindLast = 2;

struct TagFields {
    std::uint16_t kind = 0;  // 0 data, 1 media only, 2 data with media
    bool locked = false;
    bool associate = false;
    std::string key = "1";
    std::string link;
    std::string rule;
    std::string criteria;
    std::string style;
    std::string notes[3];
};

/// The stored record; the fields are within their limits.
[[nodiscard]] std::string encodeTagFields(const TagFields& fields);
/// The fields of a record that has these fields and nothing else, in the order in which they are written, as UTF-8;
/// nothing for any other record.
[[nodiscard]] std::optional<TagFields> decodeTagFields(std::string_view record);

}  // namespace tarnova
