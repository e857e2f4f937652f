// A story poured into its columns.

#pragma once

#include "host/text/compose_input.h"
#include "host/text/composed_story.h"
#include "host/text/paragraph.h"
#include "host/text/shaper.h"

namespace tarnova {

/// Composes stories one after the other; what it learned of fonts and words stays. Belongs to one thread.
class StoryFlow {
 public:
    explicit StoryFlow(ShapingWays ways = {}) : shaper_(ways), paragraph_(shaper_) {}

    /// Fills an empty `story`. All text is placed, or known to be overset: what doesn't fit the last column is told by
    /// `shownLimit` and `overset`.
    void compose(const ComposeInput& input, ComposedStory& story);

 private:
    Shaper shaper_;
    Paragraph paragraph_;
};

}  // namespace tarnova
