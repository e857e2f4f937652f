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

/// Reads one line after another, run by run; its buffers are used again.
class ClusterReader {
 public:
    /// Begins a line of a text whose positions count from `start` in the characters. All outlive the questions about
    /// it.
    void begin(const ComposedStory& composedStory, const ComposedLine& itsLine, const StoryText& characters,
               std::int32_t start);
    /// Begins a run of the line.
    void beginRun(const GlyphRun& itsRun);

    /// The character that a single glyph of the run stands for, or 0 when the question isn't that simple (ligatures,
    /// marks): then `at` tells. `index` counts in the run.
    [[nodiscard]] char32_t single(std::uint32_t index) const {
        const PlacedGlyph& glyph = glyphs[index];
        const std::uint32_t inText = glyph.position - textStart;
        if (inText >= text.size() || !standsAlone(index)) return 0;
        const char32_t character = text[inText];
        const bool isAsItIs = character >= U' ' && character < 0x7F && keepsCase;
        return isAsItIs ? character : searched(character);
    }

    /// The cluster that begins at a glyph of the run; valid until the next call.
    [[nodiscard]] const GlyphCluster& at(std::uint32_t index);

 private:
    /// True when the character behind that of the glyph begins a cluster of its own, or leaves no glyph on the line.
    [[nodiscard]] bool standsAlone(std::uint32_t index) const {
        const PlacedGlyph* const glyph = glyphs + index;
        const std::uint32_t position = glyph->position;
        const bool sharesFront = index > 0 && glyph[-1].position == position;
        if (index + 1 == run->glyphCount) {
            const bool backward = index > 0 && glyph[-1].position == position + 1;
            return backward || (!sharesFront && position == aloneAtEnd);
        }
        if (glyph[1].position == position + 1) return !sharesFront;
        return index > 0 && glyph[-1].position == position + 1 && glyph[1].position != position;
    }
    [[nodiscard]] char32_t searched(char32_t character) const;
    void appendShown(std::uint32_t position, const CharFormat& format);
    [[nodiscard]] std::uint32_t limitOf(std::uint32_t position);
    void readStarts();

    const ComposedStory* composed = nullptr;
    const ComposedLine* line = nullptr;
    const GlyphRun* run = nullptr;
    const PlacedGlyph* glyphs = nullptr;    // of the run
    bool keepsCase = true;                  // of the run
    std::uint32_t aloneAtEnd = noPosition;  // the last glyph of the run stands for the one character there
    static constexpr std::uint32_t noPosition = UINT32_MAX;
    std::u32string_view text;     // of the chunk that holds the line
    std::uint32_t textStart = 0;  // as positions count; one in front of 0 wraps around
    bool startsAreRead = false;
    std::vector<std::uint32_t> starts;  // of all clusters of the line, ascending
    GlyphCluster cluster;
};

}  // namespace tarnova
