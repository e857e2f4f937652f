// Code points as the UTF-16 that ICU reads, with the way back.

#pragma once

#include <unicode/utypes.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace tarnova {

struct IcuText {
    std::vector<UChar> units;
    std::vector<std::int32_t> characterOf;  // by unit, and one more for the limit

    /// Takes the place of what was there. A surrogate code point becomes U+FFFD, so that units stay pairs.
    void assign(std::u32string_view text);
    [[nodiscard]] std::int32_t unitCount() const { return static_cast<std::int32_t>(units.size()); }
};

}  // namespace tarnova
