// How a price looks: cents and currency symbol raised, resized, kerned and underlined.

#pragma once

#include <cstdint>

#include "definitions/record_def.h"
#include "document/uid.h"
#include "engine/toolkit/types.h"
#include "merge/price_format.h"

namespace tarnova {

/// The number attributes of a text that a price replaces.
struct priceAttributesRec {
    double pointSize = 0;
    double baselineShift = 0;  // points
    double kerning = 0;        // thousandths of an em
};

/// Reads them at the text's first digit or radix, or at its first character. The range isn't empty.
[[nodiscard]] priceAttributesRec notePriceAttributes(UIDRef story, std::int32_t start, std::int32_t length);

/// Takes off a text what an earlier price left there: the noted numbers, the normal position, no underline. Its first
/// character is enough, as the text that takes the place of all of it looks like that one.
[[nodiscard]] errorWord resetPriceAttributes(UIDRef story, std::int32_t start, const priceAttributesRec& noted,
                                             errorWord priorError);

/// Lays out a price that stands in the story from `start` on. What doesn't count as a price stays as it is. Sizes keep
/// within 2 to 720 points.
[[nodiscard]] errorWord layoutPrice(UIDRef story, std::int32_t start, const formattedPriceRec& price,
                                    const styleRec& style, const priceAttributesRec& noted, errorWord priorError);

}  // namespace tarnova
