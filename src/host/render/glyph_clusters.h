// Which characters of a story the glyphs of a line stand for.

#pragma once

#include <cstdint>
#include <string>

#include "host/text/composed_story.h"

namespace tarnova {

/// Glyphs of one run that stand together for some characters.
struct GlyphCluster {
    std::uint32_t glyphCount = 1;
    std::u32string text;  // as it is searched for; may be empty
};

/// The character that a single glyph stands for, or 0 when the question isn't that simple (ligatures, marks, ends of
/// lines): then `clusterAt` tells. `index` counts in the run.
[[nodiscard]] char32_t singleCharacter(const ComposedStory& composed, const GlyphRun& run, std::uint32_t index,
                                       const StoryText& story);

/// The cluster that begins at a glyph of the run.
[[nodiscard]] GlyphCluster clusterAt(const ComposedStory& composed, const ComposedLine& line, const GlyphRun& run,
                                     std::uint32_t index, const StoryText& story);

/// A character as it is searched for: in capitals when the run sets it so, spaces of any width as a space.
[[nodiscard]] char32_t searchedCharacter(char32_t character, const CharFormat& format);

}  // namespace tarnova
