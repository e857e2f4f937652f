// A story after composition: positioned glyphs in lines, by column. Drawing reads it and changes nothing.
//
// Coordinates are the inner ones of the frame that holds the column, those of its shape's bounds, in points, y
// downward; a glyph's pen position is the sum of the run's origin and the advances in front of it, along the run's
// direction. The story of a path has one column and at most one line; its runs are single clusters, each with a
// direction. Spaces at a line's end, soft hyphens inside a line, tabs, returns and the closing mark have no glyphs.
// Runs and glyphs are in visual order.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "document/geometry.h"
#include "document/uid.h"
#include "host/model/story.h"

namespace tarnova {

class Font;

/// One glyph. Advances are in thousandths of an em, as a PDF's TJ counts (ISO 32000-2, 9.4.3).
struct PlacedGlyph {
    std::uint16_t glyph = 0;
    float advance = 0;           // to the next glyph, with kerning, tracking and justification
    float offsetX = 0;           // of a mark, thousandths of an em
    float offsetY = 0;           // upward
    std::uint32_t position = 0;  // of the first character of its cluster in the story
};

/// What a page character shows in a composed story.
struct ShownText {
    std::uint32_t position = 0;  // of the character in the story
    std::u32string text;
};

/// Glyphs of one font, size and colour that follow each other on a line.
struct GlyphRun {
    const Font* font = nullptr;
    const CharFormat* format = nullptr;  // colour, decorations; interned
    float size = 0;                      // points, after superscript and small caps
    float horizontalScale = 1;
    float x = 0;           // of the first glyph's origin
    float y = 0;           // baseline, baseline shift included
    float directionX = 1;  // of the baseline, a vector of length 1: text on a path turns
    float directionY = 0;
    float width = 0;               // points
    std::uint32_t firstGlyph = 0;  // into ComposedStory::glyphs
    std::uint32_t glyphCount = 0;
};

struct ComposedLine {
    std::int32_t start = 0;  // characters of the story
    std::int32_t limit = 0;
    float baseline = 0;
    float ascent = 0;
    float descent = 0;
    float left = 0;  // of what is set
    float right = 0;
    std::uint32_t firstRun = 0;
    std::uint32_t runCount = 0;
};

/// Where an anchored item stands in its line.
struct PlacedAnchor {
    std::int32_t position = 0;  // of its character in the story
    std::uint32_t line = 0;     // into ComposedStory::lines
    float x = 0;                // of its left side; of a custom item, of its character
    float above = 0;            // of an item above the line: from its top to the baseline
    float y = 0;                // how far the baseline there lies below the line's: on a path
    float directionX = 1;       // of the baseline there, a vector of length 1
    float directionY = 0;
};

struct ComposedColumn {
    UID frame = kInvalidUID;       // in the story that was composed; a copy's frame has the same index
    std::int32_t frameIndex = 0;   // in Story::frames
    std::int32_t columnIndex = 0;  // in the frame
    PMRect box;                    // of the column in the frame's coordinates
    std::uint32_t firstLine = 0;
    std::uint32_t lineCount = 0;
    std::int32_t start = 0;  // characters shown
    std::int32_t limit = 0;
};

class ComposedStory final : public StoryLayout {
 public:
    std::vector<ComposedColumn> columns;
    std::vector<ComposedLine> lines;
    std::vector<GlyphRun> runs;
    std::vector<PlacedGlyph> glyphs;
    std::vector<PlacedAnchor> anchors;  // by position
    std::vector<ShownText> shown;       // by position
    std::int32_t composedLimit = 0;
    std::int32_t shownLimit = 0;  // characters from here on are overset
    bool overset = false;
    bool hasLinks = false;              // some run's format has a link
    bool isUnfinished = false;          // composition was stopped in front of a column
    bool dependsOnFramePlaces = false;  // where frames lie on their pages had a say
    std::string fault;  // for people: why nothing could be composed, as a font that can't be read; else empty

    [[nodiscard]] std::int32_t composedThrough() const override { return composedLimit; }
    [[nodiscard]] std::int32_t columnOf(std::int32_t position) const override;
    [[nodiscard]] bool isOverset() const override { return overset; }
    [[nodiscard]] std::optional<AnchorPoint> anchorAt(std::int32_t position) const override;
    void addBounds(std::int32_t start, std::int32_t limit, std::vector<LineBounds>& out) const override {
        addBoundsOf(0, columns.size(), 0, start, limit, out);
    }
    /// The same for some of the columns, when positions here count from `textStart` of the story.
    void addBoundsOf(std::size_t firstColumn, std::size_t columnCount, std::int32_t textStart, std::int32_t start,
                     std::int32_t limit, std::vector<LineBounds>& out) const;
    [[nodiscard]] bool dependsOnPlaces() const override { return dependsOnFramePlaces; }
};

}  // namespace tarnova
