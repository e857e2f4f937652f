// A paragraph cut into pieces that are shaped and measured, ready to be laid into lines of any width.

#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "host/text/compose_input.h"
#include "host/text/composed_story.h"
#include "host/text/hyphenation.h"
#include "host/text/line_breaks.h"
#include "host/text/text_style.h"

namespace tarnova {

/// Text of one style between two borders at which a line may end, or at which the style or direction changes. In Latin
/// text the spaces behind a word belong to its piece; in other text they are a piece of their own.
struct Piece {
    std::int32_t start = 0;  // characters of the paragraph's shaped text
    std::int32_t limit = 0;
    std::uint32_t firstGlyph = 0;
    std::uint32_t glyphCount = 0;
    std::uint32_t hangingGlyphs = 0;  // of these the last ones, spaces, hang at a line's end
    float width = 0;                  // points without them; of a tab as the line decides
    float hangingWidth = 0;
    float kernAfter = 0;      // thousandths of an em, to the piece behind, when that stands on the same line
    std::uint32_t style = 0;  // into Paragraph::styles
    std::uint8_t level = 0;   // of UAX 9; odd is right to left
    LineBreak breakAfter = LineBreak::none;
    bool isTab = false;
    bool reachesRight = false;                         // a tab to the line's far side
    bool takesLetterSpace = true;                      // its script doesn't join its letters
    bool setsIndent = false;                           // the paragraph's further lines begin where it stands
    std::int16_t tabStop = -1;                         // of a tab, as the line decides: into ParaFormat::tabs
    ParagraphStart leaves = ParagraphStart::anywhere;  // behind it text goes on there
    bool hyphenates = false;                           // a line that ends here shows a hyphen
    const AnchorBox* anchor = nullptr;                 // of an item; wide only when that stands in the line
};

/// The paragraph in work. One object is used again and again, so that its buffers stay.
class Paragraph {
 public:
    explicit Paragraph(Shaper& shaper) : shaper_(shaper), styles_(shaper) {}

    /// Takes the paragraph `text` (its return left out) that starts at `position` of the story; `formats` are the
    /// spans over the whole text and `firstSpan`, `spanOffset` say where in them it starts. `shown` has what the
    /// story's page characters are set as, by position.
    void assign(std::u32string_view text, std::int32_t position, const std::vector<FormatSpan>& formats,
                std::size_t firstSpan, std::int32_t spanOffset, std::span<const ShownText> shown);

    /// Items anchored in the story, for the paragraphs that are assigned from here on.
    std::span<const AnchorBox> anchors;

    std::vector<Piece> pieces;
    std::vector<PlacedGlyph> glyphs;
    std::vector<TextStyle> styles;

    [[nodiscard]] bool isRightToLeft() const { return rightToLeft_; }
    /// Position in the story of a character of the shaped text; the limit is allowed too.
    [[nodiscard]] std::int32_t storyPosition(std::int32_t character) const {
        return sources_.empty() ? position_ + character : position_ + sources_[static_cast<std::size_t>(character)];
    }
    [[nodiscard]] std::u32string_view textOf(const Piece& piece) const {
        return text_.substr(static_cast<std::size_t>(piece.start), static_cast<std::size_t>(piece.limit - piece.start));
    }
    [[nodiscard]] const TextStyle& styleOf(const Piece& piece) const { return styles[piece.style]; }
    /// Points between what is seen of a piece and the piece behind it on the same line.
    [[nodiscard]] float gapAfter(const Piece& piece) const {
        return piece.hangingWidth + piece.kernAfter * styleOf(piece).scale();
    }

    /// Characters of a piece, in reading order, whose glyphs stay within a width.
    [[nodiscard]] std::size_t charactersWithin(const Piece& piece, float width) const;
    /// Cuts a piece at the last grapheme border that keeps its front within `width`, or behind the first grapheme when
    /// none does and `atLeastOne` is set. False when nothing was cut: the piece is one grapheme or nothing fits.
    [[nodiscard]] bool splitPiece(std::size_t index, float width, bool atLeastOne);
    /// The piece that begins at a position of the story, which must lie in the paragraph's text. It is cut there when
    /// no piece begins there.
    [[nodiscard]] std::size_t seek(std::int32_t storyPosition);
    /// Cuts a piece behind `border` characters, which lies inside of it; its front is hyphenated.
    void hyphenatePiece(std::size_t index, std::int32_t border);
    /// Puts together again what was cut of the pieces from `first` on.
    void rejoin(std::size_t first) {
        while (!cuts_.empty() && cuts_.back().index >= first)
            undoCut();
    }
    /// Sets `borders` to where words may be hyphenated in a piece or at its end, in characters from its start,
    /// ascending.
    void findHyphens(const Piece& piece, const ParaFormat& format, std::vector<std::int32_t>& borders);
    /// The hyphen that a line shows behind the piece.
    [[nodiscard]] PlacedGlyph hyphenFor(const Piece& piece) const;
    /// Sets `out` to the glyphs of a tab's leader, once, and gives the style they are set in: that of the tab, in a
    /// font that has the leader's characters.
    [[nodiscard]] TextStyle shapeLeader(const Piece& tab, std::u32string_view leader,
                                        std::vector<PlacedGlyph>& out) const;

    /// The style of an empty paragraph's return.
    [[nodiscard]] const TextStyle& styleOfFormat(const CharFormat& format) { return styles_.of(format); }

 private:
    struct Mark {  // what a character is set with, where text isn't plain
        std::uint32_t style = 0;
        hb_script_t script = HB_SCRIPT_LATIN;
        std::uint8_t level = 0;
        friend bool operator==(const Mark&, const Mark&) = default;
    };

    void clear();
    [[nodiscard]] std::uint32_t styleIndex(const TextStyle& style);
    void addControl(std::size_t at, std::uint32_t style);
    void addAnchor(std::size_t at, std::uint32_t style);
    void closeUnit(LineBreak behind);
    void kernBorder(std::size_t start, std::uint32_t style);
    void measure(Piece& piece);
    [[nodiscard]] std::int32_t shapedIndex(std::uint32_t storyPosition) const;
    [[nodiscard]] bool mayHyphenate(const Piece& piece) const;
    void replacePiece(std::size_t index, const Piece& front, const Piece& rest);
    void undoCut();
    [[nodiscard]] std::pair<Piece, Piece> cut(const Piece& whole, std::int32_t border);
    void reshape(Piece& piece);

    // Text that is all plain Latin: by the tables of its fonts where it has no controls,
    [[nodiscard]] bool cutFromTables();
    [[nodiscard]] bool addFromTables(std::size_t start, std::size_t limit, std::uint32_t style, std::size_t firstGlyph);
    void forgetPieces();
    // else word by word.
    [[nodiscard]] bool cutLatin();
    [[nodiscard]] bool addLatinPiece(std::size_t start, std::size_t limit, std::uint32_t style);
    [[nodiscard]] bool setLatin(Piece& piece);

    // All other text: each character is marked first (paragraph_marks.cpp).
    void cutMarked(bool isLatin);
    [[nodiscard]] static bool joinsLetters(hb_script_t script);
    [[nodiscard]] bool belongTogether(std::size_t left, std::size_t right) const;
    void addMarkedPiece(std::size_t start, std::size_t limit);
    void setMarked(Piece& piece);
    [[nodiscard]] std::u32string_view shownText(const Piece& piece);
    [[nodiscard]] bool hasCapitals() const;
    void changeText(std::span<const ShownText> shown);
    void appendChanged(char32_t c, std::size_t source, const CharFormat& format);
    [[nodiscard]] bool isInsideCharacter(std::size_t border) const;
    void keepCharactersWhole();
    void markStyles();
    [[nodiscard]] static const Font& fontFor(std::u32string_view cluster, const Font& wanted,
                                             const Font*& lastFallback);
    void markScripts();
    void markLevels();

    Shaper& shaper_;
    mutable TextStyles styles_;
    Hyphenator hyphenator_;
    std::u32string_view text_;  // as it is shaped
    std::int32_t position_ = 0;
    bool rightToLeft_ = false;
    std::vector<FormatSpan> spans_;  // of this paragraph's shaped text
    std::vector<LineBreak> breaks_;
    struct Cut {
        std::size_t index;
        Piece whole;
    };
    std::vector<Cut> cuts_;  // in the order in which they were made
    std::vector<Mark> marks_;
    std::u32string shownText_;           // when a font lacks a character that has a stand-in
    std::u32string changedText_;         // when a format changes case, or page characters show something else
    std::vector<std::int32_t> sources_;  // by character of it: index in the paragraph
    std::vector<bool> reduced_;          // by character of it: a small capital
};

}  // namespace tarnova
