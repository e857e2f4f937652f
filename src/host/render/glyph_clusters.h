// Which characters of a story the glyphs of a line stand for.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/text/composed_story.h"

namespace tarnova {

/// Glyphs of one run that stand together for some characters.
struct GlyphCluster {
    std::uint32_t glyphCount = 1;
    std::u32string text;  // as it is searched for; may be empty
};

/// Reads one line after another; its buffers are used again.
class ClusterReader {
 public:
    /// Begins a line. All three outlive the questions about it.
    void begin(const ComposedStory& composedStory, const ComposedLine& itsLine, const StoryText& characters);

    /// The character that a single glyph stands for, or 0 when the question isn't that simple (ligatures, marks, ends
    /// of lines): then `at` tells. `index` counts in the run.
    [[nodiscard]] char32_t single(const GlyphRun& run, std::uint32_t index) const;

    /// The cluster that begins at a glyph of the run; valid until the next call.
    [[nodiscard]] const GlyphCluster& at(const GlyphRun& run, std::uint32_t index);

 private:
    void appendShown(std::uint32_t position, const CharFormat& format);
    [[nodiscard]] std::uint32_t limitOf(std::uint32_t position);
    void readStarts();

    const ComposedStory* composed = nullptr;
    const ComposedLine* line = nullptr;
    std::u32string_view text;     // of the chunk that holds the line
    std::uint32_t textStart = 0;  // in the story
    bool startsAreRead = false;
    std::vector<std::uint32_t> starts;  // of all clusters of the line, ascending
    GlyphCluster cluster;
};

}  // namespace tarnova
