// A word through HarfBuzz: the one place where text becomes glyphs; the tables and the cache repeat what it says.

#pragma once

#include <hb.h>

#include <string>
#include <string_view>
#include <vector>

#include "host/text/composed_story.h"
#include "host/text/font.h"

namespace tarnova {

/// What of a font's features a format switches on or off; all others are as the script wants them.
struct FontFeatures {
    bool kerning = true;
    bool ligatures = true;
    std::string language;  // BCP 47
    friend bool operator==(const FontFeatures&, const FontFeatures&) = default;
};

/// Appends the word's glyphs in visual order, with positions counted from the word's start. Characters that are never
/// seen, such as direction marks, give no glyph.
void shapeByHarfBuzz(const Font& font, const FontFeatures& features, std::u32string_view word, hb_script_t script,
                     bool rightToLeft, std::vector<PlacedGlyph>& out);

}  // namespace tarnova
