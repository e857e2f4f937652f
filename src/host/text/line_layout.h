// One line: which pieces of a paragraph it takes, and where their glyphs stand.

#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "host/text/compose_input.h"
#include "host/text/composed_story.h"
#include "host/text/paragraph.h"

namespace tarnova {

inline constexpr double defaultTabStop = 36;  // points between the stops behind the last one that is set
// Points that rounding may add to what just fits.
inline constexpr float widthTolerance = 0.001F;
inline constexpr float heightTolerance = 0.01F;

/// Where a line lies in its column, in points.
struct LineMeasure {
    float left = 0;  // of the text, indents taken off, from the column's left edge
    float width = 0;
    float start = 0;                // of the text, from the column's edge at which its paragraph's lines begin
    bool isFirst = false;           // of its paragraph
    std::int32_t hyphensAbove = 0;  // lines directly above that end in a hyphen
};

/// The pieces of a line.
struct LineExtent {
    std::size_t first = 0;
    std::size_t limit = 0;
    bool showsHyphen = false;
    bool isForced = false;                             // it ends at a forced line end or with its paragraph
    bool cutsWord = false;                             // not even one word fits
    ParagraphStart leaves = ParagraphStart::anywhere;  // what follows goes on there
};

/// Height of a line in points: the largest of what stands on it.
struct LineHeight {
    float ascent = 0;
    float descent = 0;
    float leading = 0;
    float above = 0;  // of the ascent, what items above the line take
    float below = 0;  // by which items in the line reach deeper than its text
    float capHeight = 0;
    float xHeight = 0;

    void include(const TextStyle& style);
    void include(const LineHeight& other);
};

/// Takes as many pieces from `first` on as fit, one grapheme at least; a word that doesn't fit is hyphenated where the
/// format wants it, and one longer than the line is cut. What an earlier try cut from `first` on is put together
/// before. Sets the width of tabs. `text` is the story's, to tell its spaces.
[[nodiscard]] LineExtent breakLine(Paragraph& paragraph, std::size_t first, const LineMeasure& measure,
                                   const ParaFormat& format, std::u32string_view text);

/// Items that stand in the line or above it make it higher, and its distance to the line above larger.
[[nodiscard]] LineHeight heightOf(const Paragraph& paragraph, const LineExtent& extent);
/// The widest item that stands in the line or above it; 0 without any.
[[nodiscard]] float widestAnchor(const Paragraph& paragraph, const LineExtent& extent);

/// Appends the glyphs, runs and anchored items of a line whose column begins at `columnLeft`, and sets the line's sides
/// and runs. The line itself is appended next. `text` is the story's, to tell its spaces. Gives where the paragraph's
/// further lines begin, from the column's edge as in LineMeasure::start, when the line holds an "indent to here"; else
/// `noIndent`.
float placeLine(const Paragraph& paragraph, const LineExtent& extent, const LineMeasure& measure,
                const ParaFormat& format, std::u32string_view text, float columnLeft, float baseline,
                ComposedStory& story, ComposedLine& line);

}  // namespace tarnova
