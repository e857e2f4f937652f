// Underlines and strike-throughs as rectangles, by the metrics of the format's font.

#pragma once

#include "document/geometry.h"
#include "host/text/composed_story.h"

namespace tarnova {

struct TextRules {
    int count = 0;
    PMRect rules[2];  // in the coordinates of the frame, before the run is turned
};

[[nodiscard]] inline bool isTurned(const GlyphRun& run) {
    return run.directionY != 0 || run.directionX != 1;
}
/// The matrix that turns a run, set to the right from its origin, into its direction.
[[nodiscard]] PMMatrix turnOf(const GlyphRun& run);

/// The rules of a run; none when its format asks for none.
[[nodiscard]] TextRules textRulesOf(const GlyphRun& run);

}  // namespace tarnova
