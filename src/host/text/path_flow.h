// A story set along a path: one line, glyph by glyph.

#pragma once

#include <optional>

#include "host/model/page_item.h"
#include "host/model/story.h"
#include "host/text/compose_input.h"
#include "host/text/composed_story.h"
#include "host/text/line_layout.h"
#include "host/text/paragraph.h"
#include "host/text/shaper.h"

namespace tarnova {

/// Composes stories on paths one after the other; what it learned of fonts and words stays. Belongs to one thread.
class PathFlow {
 public:
    PathFlow() : paragraph_(shaper_) {}

    /// Fills an empty `story` with the first line of the text along the path, which `input` has as its one column. What
    /// stands behind the line's end is overset: what doesn't fit, and what follows a forced line end or a return.
    void compose(const ComposeInput& input, const SubPath& path, const PathTextOptions& options, ComposedStory& story);

 private:
    /// Sets the first line straight, on the baseline 0 from `start` on; gives its height. Nothing, and nothing is set,
    /// when an item in it is wider than the line.
    std::optional<LineHeight> setLine(const ComposeInput& input, float start, float room, ComposedStory& story);

    Shaper shaper_;
    Paragraph paragraph_;
};

}  // namespace tarnova
