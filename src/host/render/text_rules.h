// Underlines and strike-throughs as rectangles, by the metrics of the font.

#pragma once

#include "document/geometry.h"
#include "host/text/composed_story.h"

namespace tarnova {

struct TextRules {
    int count = 0;
    PMRect rules[2];  // in the coordinates of the frame
};

/// The rules of a run; none when its format asks for none.
[[nodiscard]] TextRules textRulesOf(const GlyphRun& run);

}  // namespace tarnova
