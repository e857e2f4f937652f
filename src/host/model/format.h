// How text looks: character and paragraph formats as composition reads them, resolved from styles and overrides.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "document/text_attributes.h"

namespace tarnova {

/// A colour of the document by its index in the swatch list, and a tint of it.
struct Paint {
    std::int32_t swatch = 0;  // index into `DocumentModel::swatches()`; 0 is "None", 1 is "Black"
    double tint = 1;          // 0 to 1
    friend bool operator==(const Paint&, const Paint&) = default;
};
inline constexpr std::int32_t swatchNone = 0;
inline constexpr std::int32_t swatchBlack = 1;

struct Swatch {
    enum class Space : std::uint8_t { none, cmyk, rgb };
    std::string name;
    Space space = Space::cmyk;
    double values[4] = {0, 0, 0, 1};  // 0 to 1: C M Y K, or R G B
};

/// All that shapes and paints a character. Sizes in points.
struct CharFormat {
    std::string family = "Helvetica";
    std::string fontStyle = "Regular";  // "Regular", "Bold", "Italic", "Bold Italic", or a style name of the family
    double pointSize = 10;
    double leading = -1;  // below 0: auto, 1.2 times the size
    Paint color{swatchBlack, 1};
    double tracking = 0;  // thousandths of an em
    double kerning = 0;   // thousandths of an em, added behind the character
    bool pairKerning = true;
    bool ligatures = true;
    double baselineShift = 0;
    double horizontalScale = 1;
    double verticalScale = 1;
    TextPosition position = TextPosition::normal;
    bool underline = false;
    bool strikeThrough = false;
    // Of the rules, in points: the middle of each upward from the baseline, and its thickness. Absent: as the font
    // says.
    std::optional<double> underlineOffset{}, underlineWeight{}, strikeOffset{}, strikeWeight{};
    enum class Caps : std::uint8_t { normal, allCaps, smallCaps } caps = Caps::normal;
    std::string language = "en-US";  // BCP 47
    std::string link{};              // where the text leads (link_target.h); empty: nowhere
    friend bool operator==(const CharFormat&, const CharFormat&) = default;
};

/// What is behind "justify" says where last lines stand.
enum class Alignment : std::uint8_t { left, center, right, justifyLeft, justifyAll, justifyCenter, justifyRight };

inline constexpr std::size_t tabLeaderLimit = 8;

struct TabStop {
    double position = 0;  // from the column's left edge; from its right edge in text that runs from right to left
    enum class Kind : std::uint8_t { left, center, right, decimal } kind = Kind::left;
    std::u32string leader{};  // fills the gap, again and again; at most `tabLeaderLimit` characters
    char32_t alignedOn = 0;   // what a decimal tab stands on; 0: the decimal separator of the text's language
    friend bool operator==(const TabStop&, const TabStop&) = default;
};

/// Which lines of a paragraph must not be parted from each other by the end of a column.
enum class KeepLines : std::uint8_t { none, ends, all };

/// Where a paragraph begins, when it isn't the first there.
enum class ParagraphStart : std::uint8_t { anywhere, nextColumn, nextFrame, nextPage };

/// Which lines of a paragraph stand on the baseline grid.
enum class GridLines : std::uint8_t { none, first, all };

struct ParaFormat {
    Alignment alignment = Alignment::left;
    double leftIndent = 0;
    double rightIndent = 0;
    double firstLineIndent = 0;  // added to the left indent; may be negative
    double spaceBefore = 0;
    double spaceAfter = 0;
    std::vector<TabStop> tabs{};
    bool hyphenate = false;                // words at line ends, by the dictionary of their language
    std::int32_t hyphenWordLetters = 5;    // of a word that is hyphenated, at least
    std::int32_t hyphenLettersBefore = 2;  // at least, in front of the hyphen
    std::int32_t hyphenLettersAfter = 3;   // and behind it
    std::int32_t hyphensInARow = 3;        // lines that end in a hyphen one after the other, at most; 0: any number
    // Spaces of justified text, percent of the font's space.
    double wordSpaceLeast = 100;
    double wordSpaceWanted = 100;
    double wordSpaceGreatest = 133;
    // What is added between the letters of justified text, percent of the font's size.
    double letterSpaceLeast = 0;
    double letterSpaceWanted = 0;
    double letterSpaceGreatest = 0;
    // Width of the letters of justified text, percent.
    double glyphScaleLeast = 100;
    double glyphScaleWanted = 100;
    double glyphScaleGreatest = 100;
    KeepLines keepLines = KeepLines::none;
    std::int32_t keepFirstLines = 2;  // together, where `keepLines` is `ends`
    std::int32_t keepLastLines = 2;
    std::int32_t keepWithNext = 0;  // lines of the paragraph behind that stay with this one's last line
    ParagraphStart startIn = ParagraphStart::anywhere;
    GridLines gridLines = GridLines::none;
    friend bool operator==(const ParaFormat&, const ParaFormat&) = default;
};

/// What a style or a run says of its own; what is absent comes from below (paragraph style, its base, the default).
struct CharOverrides {
    std::optional<std::string> family, fontStyle, language, link;
    std::optional<double> pointSize, leading, tracking, kerning, baselineShift, horizontalScale, verticalScale;
    std::optional<double> underlineOffset, underlineWeight, strikeOffset, strikeWeight;
    std::optional<Paint> color;
    std::optional<bool> pairKerning, ligatures, underline, strikeThrough;
    std::optional<TextPosition> position;
    std::optional<CharFormat::Caps> caps;
    friend bool operator==(const CharOverrides&, const CharOverrides&) = default;
};

struct ParaOverrides {
    std::optional<Alignment> alignment;
    std::optional<double> leftIndent, rightIndent, firstLineIndent, spaceBefore, spaceAfter;
    std::optional<std::vector<TabStop>> tabs;
    std::optional<bool> hyphenate;
    std::optional<double> wordSpaceLeast, wordSpaceWanted, wordSpaceGreatest;
    std::optional<double> letterSpaceLeast, letterSpaceWanted, letterSpaceGreatest;
    std::optional<double> glyphScaleLeast, glyphScaleWanted, glyphScaleGreatest;
    std::optional<KeepLines> keepLines;
    std::optional<std::int32_t> keepFirstLines, keepLastLines, keepWithNext;
    std::optional<ParagraphStart> startIn;
    std::optional<GridLines> gridLines;
    std::optional<std::int32_t> hyphenWordLetters, hyphenLettersBefore, hyphenLettersAfter, hyphensInARow;
    friend bool operator==(const ParaOverrides&, const ParaOverrides&) = default;
};

struct CharacterStyle {
    std::string name;
    std::int32_t basedOn = -1;  // index into the same list, or -1
    CharOverrides format;
};

struct ParagraphStyle {
    std::string name;
    std::int32_t basedOn = -1;
    CharOverrides charFormat;
    ParaOverrides paraFormat;
};

}  // namespace tarnova
