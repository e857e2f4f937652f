// Prices: a number in a value taken apart and put together again as a price style has it.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "definitions/record_def.h"

namespace tarnova {

/// Which group of a style a value takes, by what its dollars and cents are.
inline constexpr int priceCaseOther = 0;
inline constexpr int priceCaseOnlyCents = 1;    // "0.99"
inline constexpr int priceCaseOnlyDollars = 2;  // "12.00"

/// A value as a style has it. Lengths are in characters.
struct formattedPriceRec {
    std::u32string text;
    bool isPrice = false;            // it counts as a price, so that it is laid out as one
    int valueCase = priceCaseOther;  // the style's group
    std::int32_t trailing = 0;       // characters behind the number that aren't part of it
    std::int32_t symbol = 0;         // of the currency symbol in front of or behind the number; 0 without one
};

/// Formats a value. With `findTrailing` what stands behind two digits of cents is told from the number. A text that
/// hasn't the form of a price comes back as it was.
[[nodiscard]] formattedPriceRec formatPrice(std::u32string_view value, const styleRec& style, bool findTrailing);

/// Where the parts of a formatted price lie in its text: [start, limit).
struct priceRangeRec {
    std::int32_t start = 0;
    std::int32_t limit = 0;
};
/// The number, without a symbol on either side.
[[nodiscard]] priceRangeRec numberOfPrice(const formattedPriceRec& price, const styleRec& style);
/// The cents of a price with format `priceFormatAll`, with the radix where that goes with them; else an empty range.
[[nodiscard]] priceRangeRec centsOfPrice(const formattedPriceRec& price, const styleRec& style);
/// The symbol; one behind the number takes what trails it along. An empty range without one.
[[nodiscard]] priceRangeRec symbolOfPrice(const formattedPriceRec& price, const styleRec& style);

}  // namespace tarnova
