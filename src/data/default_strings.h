// The texts that stand in for a value that can't be had. The preferences keep two sets: one for links in text, one for
// links on frames.
#pragma once

#include <cstdint>

#include "engine/toolkit/pstring.h"

namespace tarnova {

/// One stand-in text, in the host's UTF-8. With the flag 0 nothing is delivered.
struct defaultStringRec {
    std::uint8_t enable;
    Str255 string;
};

/// One set, 1,542 bytes, stored whole in the preferences.
struct defaultStringSet {
    defaultStringRec noData;        // the field is empty or missing
    defaultStringRec noMatch;       // no record has this key or number
    defaultStringRec badTag;        // the tag names what doesn't exist
    defaultStringRec missingAsset;  // for links in text a missing article, for links on frames a missing picture
    defaultStringRec endOfFile;
    defaultStringRec stackPad;
};
static_assert(sizeof(defaultStringRec) == 257);
static_assert(sizeof(defaultStringSet) == 1542);

// Values of fetchRequest::defaultSet.
inline constexpr std::uint16_t defaultSetText = 0;
inline constexpr std::uint16_t defaultSetFrame = 1;

/// Fills a set with the texts of its string keys, all flags on. `which` is one of the two above; they differ in the
/// text for a missing asset.
void resetDefaultStrings(defaultStringSet& set, std::uint16_t which);

}  // namespace tarnova
