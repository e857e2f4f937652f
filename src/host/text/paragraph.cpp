#include "host/text/paragraph.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <utility>

#include "host/model/special_characters.h"

namespace tarnova {

namespace {

constexpr char32_t anchorCharacter = 0xFFFC;

/// Longer text without an opportunity to end a line is cut, so that each line that cuts it again shapes little anew.
constexpr std::size_t longestPiece = 256;

/// Characters that act on lines instead of being set, or that aren't set at all.
bool isControl(char32_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == softHyphen || c == forcedLineEnd || c == 0x2029 ||
           c == anchorCharacter;
}

bool forcesLine(char32_t c) {
    return c == forcedLineEnd || c == 0x2029 || c == '\n' || c == 0x0B || c == 0x85;
}

ParagraphStart placeBehind(char32_t c) {
    switch (c) {
        case columnBreak:
            return ParagraphStart::nextColumn;
        case frameBreak:
            return ParagraphStart::nextFrame;
        case pageBreak:
            return ParagraphStart::nextPage;
        default:
            return ParagraphStart::anywhere;
    }
}

/// Lets lines end behind the characters that act on them, which the general rules know nothing of.
void addOwnBreaks(std::u32string_view text, std::vector<LineBreak>& breaks) {
    for (std::size_t i = 0; i + 1 < text.size(); ++i)
        if (text[i] == rightIndentTab) breaks[i] = LineBreak::allowed;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (placeBehind(text[i]) != ParagraphStart::anywhere) breaks[i] = LineBreak::mandatory;
}

/// A mark that stands over its base has no advance and gets no distance of its own.
void spreadOut(std::span<PlacedGlyph> glyphs, float spread) {
    for (PlacedGlyph& glyph : glyphs)
        if (glyph.advance != 0) glyph.advance += spread;
}

float sumOfAdvances(std::span<const PlacedGlyph> glyphs) {
    float sum = 0;
    for (const PlacedGlyph& glyph : glyphs)
        sum += glyph.advance;
    return sum;
}

/// Advances of a piece of plain text, in thousandths of an em, summed up from its start; spaces at its end apart.
struct PieceSums {
    float all = 0, visible = 0, hanging = 0;
    std::uint32_t hangingGlyphs = 0;

    void add(float advance, bool isSpace) {
        all += advance;
        hanging = isSpace ? hanging + advance : 0;
        hangingGlyphs = isSpace ? hangingGlyphs + 1 : 0;
        if (!isSpace) visible = all;
    }
};

/// A piece of which each character is one glyph, its widths not yet scaled.
Piece pieceOf(std::size_t start, std::size_t limit, std::uint32_t style, const PieceSums& sums) {
    Piece piece;
    piece.start = static_cast<std::int32_t>(start);
    piece.limit = static_cast<std::int32_t>(limit);
    piece.glyphCount = static_cast<std::uint32_t>(limit - start);
    piece.hangingGlyphs = sums.hangingGlyphs;
    piece.width = sums.visible;
    piece.hangingWidth = sums.hanging;
    piece.style = style;
    return piece;
}

/// Those of the characters from `start` up to `limit`.
std::span<const ShownText> within(std::span<const ShownText> shown, std::size_t start, std::size_t limit) {
    const auto isInFront = [](const ShownText& text, std::size_t position) { return text.position < position; };
    const auto first = std::lower_bound(shown.begin(), shown.end(), start, isInFront);
    return {first, std::lower_bound(first, shown.end(), limit, isInFront)};
}

}  // namespace

void Paragraph::clear() {
    pieces.clear();
    glyphs.clear();
    styles.clear();
    spans_.clear();
    cuts_.clear();
    marks_.clear();
    sources_.clear();
    reduced_.clear();
    rightToLeft_ = false;
}

void Paragraph::assign(std::u32string_view text, std::int32_t position, const std::vector<FormatSpan>& formats,
                       std::size_t firstSpan, std::int32_t spanOffset, std::span<const ShownText> shown) {
    clear();
    text_ = text;
    position_ = position;
    auto left = static_cast<std::int32_t>(text.size());
    for (std::size_t i = firstSpan; left > 0 && i < formats.size(); ++i, spanOffset = 0) {
        const std::int32_t length = std::min(left, formats[i].length - spanOffset);
        spans_.push_back({length, formats[i].format});
        left -= length;
    }
    const std::span<const ShownText> shownHere =
        within(shown, static_cast<std::size_t>(position), static_cast<std::size_t>(position) + text.size());
    const bool isChanged = !shownHere.empty() || hasCapitals();
    if (isChanged) changeText(shownHere);
    const bool isLatin = isPlainLatin(text_);
    if (isLatin) {
        findLatinBreaks(text_, breaks_);
    } else {
        findBreaks(text_, breaks_);
        addOwnBreaks(text_, breaks_);
    }
    if (isChanged) keepCharactersWhole();
    if (!isLatin || isChanged || !(cutFromTables() || cutLatin())) cutMarked(isLatin);
    if (!pieces.empty() && pieces.back().breakAfter == LineBreak::mandatory) {
        // A forced line end closes the text: the paragraph ends in an empty line.
        const auto end = static_cast<std::int32_t>(text_.size());
        Piece& last = pieces.emplace_back(Piece{.start = end, .limit = end});
        last.style = pieces[pieces.size() - 2].style;
    }
}

void Paragraph::forgetPieces() {
    pieces.clear();
    glyphs.clear();
    styles.clear();
}

/// Cuts and shapes text that is all plain Latin and has no controls, most of it by tables. False when it has some or a
/// font lacks a character.
bool Paragraph::cutFromTables() {
    const auto steers = [](char32_t c) { return c < U' ' || c == softHyphen || c == forcedLineEnd; };
    if (!shaper_.usesTables() || std::any_of(text_.begin(), text_.end(), steers)) return false;
    glyphs.resize(text_.size());  // room for what comes from tables; behind `count` nothing is set yet
    std::size_t start = 0, count = 0;
    for (const FormatSpan& span : spans_) {
        const std::size_t limit = start + static_cast<std::size_t>(span.length);
        const std::uint32_t style = styleIndex(styles_.of(*span.format));
        while (start < limit) {
            std::size_t last = start;
            while (last + 1 < limit && breaks_[last] == LineBreak::none)
                ++last;
            if (addFromTables(start, last + 1, style, count)) {
                count += last + 1 - start;
            } else {
                glyphs.resize(count);
                if (!addLatinPiece(start, last + 1, style)) return false;
                count = glyphs.size();
                glyphs.resize(count + (text_.size() - last - 1));
            }
            closeUnit(breaks_[last]);
            start = last + 1;
        }
    }
    glyphs.resize(count);
    return true;
}

/// Adds a piece of which each character is one glyph, from `firstGlyph` on, where there is room. False when the tables
/// can't say that of all of it. A pair that a space is part of then keeps its distance.
bool Paragraph::addFromTables(std::size_t start, std::size_t limit, std::uint32_t style, std::size_t firstGlyph) {
    if (styles[style].spread != 0 || limit - start > longestPiece) return false;
    PairTable& table = styles[style].face->pairs();
    PlacedGlyph* glyph = glyphs.data() + firstGlyph;
    PieceSums sums;
    std::uint8_t slot = latinSlot(text_[start]);
    for (std::size_t at = start; at < limit; ++at, ++glyph) {
        const std::uint8_t next = at + 1 < limit ? latinSlot(text_[at + 1]) : 0;
        std::int16_t adjust = next != 0 ? table.pair(slot, next) : std::int16_t{0};
        const bool byHarfBuzz = adjust == PairTable::unlisted && slot != U' ' && next != U' ';
        if (slot == 0 || !table.isListed(slot) || byHarfBuzz) return false;
        if (adjust == PairTable::unlisted) adjust = 0;
        *glyph = {table.glyph(slot), table.advance(slot) + adjust, 0, 0,
                  static_cast<std::uint32_t>(position_) + static_cast<std::uint32_t>(at)};
        sums.add(glyph->advance, slot == U' ');
        slot = next;
    }
    kernBorder(start, style);
    Piece& piece = pieces.emplace_back(pieceOf(start, limit, style, sums));
    piece.firstGlyph = static_cast<std::uint32_t>(firstGlyph);
    piece.width *= styles[style].scale();
    piece.hangingWidth *= styles[style].scale();
    return true;
}

/// Cuts and shapes text that is all plain Latin. False when a font lacks a character.
bool Paragraph::cutLatin() {
    std::size_t start = 0, span = 0, spanLimit = 0;
    std::uint32_t style = 0;
    for (std::size_t at = 0; at < text_.size(); ++at) {
        if (at == spanLimit) {
            if (!addLatinPiece(start, at, style)) return false;
            start = at;
            spanLimit += static_cast<std::size_t>(spans_[span].length);
            style = styleIndex(styles_.of(*spans_[span++].format));
        }
        const char32_t c = text_[at];
        if (c == U'\t' || c == softHyphen || c == forcedLineEnd) {
            if (!addLatinPiece(start, at, style)) return false;
            addControl(at, style);
            start = at + 1;
        }
        if (breaks_[at] == LineBreak::none) continue;
        if (!addLatinPiece(start, at + 1, style)) return false;
        closeUnit(breaks_[at]);
        start = at + 1;
    }
    return addLatinPiece(start, text_.size(), style);
}

/// Tabs, forced ends and "indent to here" are pieces; a soft hyphen is a quality of the piece in front; others leave
/// nothing.
void Paragraph::addControl(std::size_t at, std::uint32_t style) {
    const char32_t c = text_[at];
    if (c == softHyphen) {
        if (!pieces.empty() && !pieces.back().isTab && pieces.back().glyphCount > 0) pieces.back().hyphenates = true;
        return;
    }
    if (c == anchorCharacter) addAnchor(at, style);
    const bool isTab = c == U'\t' || c == rightIndentTab;
    const ParagraphStart leaves = placeBehind(c);
    const bool ends = forcesLine(c) || leaves != ParagraphStart::anywhere;
    if (!isTab && !ends && c != indentToHere) return;
    Piece piece;
    piece.start = static_cast<std::int32_t>(at);
    piece.limit = piece.start + 1;
    piece.style = style;
    piece.level = rightToLeft_ ? 1 : 0;
    piece.isTab = isTab;
    piece.reachesRight = c == rightIndentTab;
    piece.setsIndent = c == indentToHere;
    piece.leaves = leaves;
    piece.breakAfter = ends ? LineBreak::mandatory : LineBreak::none;
    pieces.push_back(piece);
}

/// An anchored item stands like a character without glyphs.
void Paragraph::addAnchor(std::size_t at, std::uint32_t style) {
    const std::int32_t position = storyPosition(static_cast<std::int32_t>(at));
    const auto found = std::lower_bound(anchors.begin(), anchors.end(), position,
                                        [](const AnchorBox& box, std::int32_t where) { return box.position < where; });
    if (found == anchors.end() || found->position != position) return;
    Piece piece;
    piece.start = static_cast<std::int32_t>(at);
    piece.limit = piece.start + 1;
    piece.style = style;
    piece.level = marks_.empty() ? 0 : marks_[at].level;
    piece.anchor = &*found;
    if (found->options.kind == AnchorOptions::Kind::inLine) piece.width = found->width;
    pieces.push_back(piece);
}

void Paragraph::closeUnit(LineBreak behind) {
    if (!pieces.empty() && pieces.back().breakAfter == LineBreak::none) pieces.back().breakAfter = behind;
}

bool Paragraph::addLatinPiece(std::size_t start, std::size_t limit, std::uint32_t style) {
    while (start < limit) {
        kernBorder(start, style);
        Piece piece;
        piece.start = static_cast<std::int32_t>(start);
        piece.limit = static_cast<std::int32_t>(std::min(limit, start + longestPiece));
        piece.style = style;
        if (!setLatin(piece)) {
            forgetPieces();
            return false;
        }
        pieces.push_back(piece);
        start = static_cast<std::size_t>(piece.limit);
    }
    return true;
}

bool Paragraph::setLatin(Piece& piece) {
    const std::u32string_view text = textOf(piece);
    piece.firstGlyph = static_cast<std::uint32_t>(glyphs.size());
    if (!shaper_.shapeLatin(*styleOf(piece).face, text, static_cast<std::uint32_t>(position_ + piece.start), glyphs)) {
        return false;
    }
    const std::size_t lastVisible = text.find_last_not_of(U' ');
    piece.hangingGlyphs = static_cast<std::uint32_t>(text.size() - (lastVisible + 1));  // npos + 1 is 0
    measure(piece);
    return true;
}

/// Kerning between the piece in front and the character that follows it, over a soft hyphen too.
void Paragraph::kernBorder(std::size_t start, std::uint32_t style) {
    if (pieces.empty()) return;
    Piece& before = pieces.back();
    if (before.glyphCount == 0 || before.style != style || before.level % 2 != 0) return;
    const std::size_t gap = start - static_cast<std::size_t>(before.limit);
    if (gap != 0 && !(gap == 1 && before.hyphenates)) return;
    before.kernAfter =
        shaper_.pairAdjust(*styles[style].face, text_[static_cast<std::size_t>(before.limit) - 1], text_[start]);
}

/// Adds tracking to the glyphs of a piece that was just shaped, and sums up its widths.
void Paragraph::measure(Piece& piece) {
    piece.glyphCount = static_cast<std::uint32_t>(glyphs.size()) - piece.firstGlyph;
    const TextStyle& style = styleOf(piece);
    const std::span<PlacedGlyph> all(glyphs.data() + piece.firstGlyph, piece.glyphCount);
    if (style.spread != 0) spreadOut(all, style.spread);
    const std::size_t visible = piece.glyphCount - piece.hangingGlyphs;
    piece.width = sumOfAdvances(all.first(visible)) * style.scale();
    piece.hangingWidth = sumOfAdvances(all.subspan(visible)) * style.scale();
}

std::uint32_t Paragraph::styleIndex(const TextStyle& style) {
    const auto same = [&](const TextStyle& known) {
        return known.format == style.format && known.face == style.face && known.size == style.size;
    };
    const auto found = std::find_if(styles.begin(), styles.end(), same);
    const auto index = static_cast<std::uint32_t>(found - styles.begin());
    if (found == styles.end()) styles.push_back(style);
    return index;
}

void Paragraph::cutMarked(bool isLatin) {
    markStyles();
    if (!isLatin) {
        markScripts();
        markLevels();
    }
    std::size_t start = 0;
    for (std::size_t at = 0; at < text_.size(); ++at) {
        if (isControl(text_[at])) {
            addMarkedPiece(start, at);
            addControl(at, marks_[at].style);
            start = at + 1;
        } else if (at > start && !belongTogether(at - 1, at)) {
            addMarkedPiece(start, at);
            start = at;
        }
        if (breaks_[at] == LineBreak::none) continue;
        addMarkedPiece(start, at + 1);
        closeUnit(breaks_[at]);
        start = at + 1;
    }
    addMarkedPiece(start, text_.size());
}

/// Scripts whose letters hang together; spaces between them would tear words apart.
bool Paragraph::joinsLetters(hb_script_t script) {
    constexpr hb_script_t scripts[] = {HB_SCRIPT_ARABIC,   HB_SCRIPT_SYRIAC,  HB_SCRIPT_MANDAIC,    HB_SCRIPT_MONGOLIAN,
                                       HB_SCRIPT_NKO,      HB_SCRIPT_ADLAM,   HB_SCRIPT_DEVANAGARI, HB_SCRIPT_BENGALI,
                                       HB_SCRIPT_GURMUKHI, HB_SCRIPT_PHAGS_PA};
    return std::find(std::begin(scripts), std::end(scripts), script) != std::end(scripts);
}

bool Paragraph::belongTogether(std::size_t left, std::size_t right) const {
    return marks_[left] == marks_[right] && (text_[left] == U' ') == (text_[right] == U' ');
}

void Paragraph::addMarkedPiece(std::size_t start, std::size_t limit) {
    while (start < limit) {
        const Mark& mark = marks_[start];
        if (mark.level % 2 == 0) kernBorder(start, mark.style);
        std::size_t length = limit - start;
        if (length > longestPiece) length = graphemeBorder(text_.substr(start, longestPiece), longestPiece - 1);
        Piece piece;
        piece.start = static_cast<std::int32_t>(start);
        piece.limit = static_cast<std::int32_t>(start + length);
        piece.style = mark.style;
        piece.level = mark.level;
        piece.takesLetterSpace = !joinsLetters(mark.script);
        setMarked(piece);
        if (piece.glyphCount > 0) pieces.push_back(piece);
        start += length;
    }
}

void Paragraph::setMarked(Piece& piece) {
    const Mark& mark = marks_[static_cast<std::size_t>(piece.start)];
    piece.firstGlyph = static_cast<std::uint32_t>(glyphs.size());
    shaper_.shapeWord(*styleOf(piece).face, shownText(piece), mark.script, mark.level % 2 != 0, glyphs);
    for (std::size_t i = piece.firstGlyph; i < glyphs.size(); ++i) {
        const std::int32_t character = piece.start + static_cast<std::int32_t>(glyphs[i].position);
        glyphs[i].position = static_cast<std::uint32_t>(storyPosition(character));
    }
    const bool isSpace = text_[static_cast<std::size_t>(piece.start)] == U' ';
    piece.hangingGlyphs = isSpace ? static_cast<std::uint32_t>(glyphs.size()) - piece.firstGlyph : 0;
    measure(piece);
}

/// The text of a piece in characters that its font has: a hyphen that doesn't break may have to be a plain one.
std::u32string_view Paragraph::shownText(const Piece& piece) {
    const std::u32string_view text = textOf(piece);
    if (text.find(noBreakHyphen) == text.npos) return text;
    const Font& font = styleOf(piece).font();
    if (font.glyphOf(noBreakHyphen) != 0) return text;
    shownText_ = text;
    std::replace(shownText_.begin(), shownText_.end(), noBreakHyphen, font.glyphOf(0x2010) != 0 ? U'\u2010' : U'-');
    return shownText_;
}

bool Paragraph::splitPiece(std::size_t index, float width, bool atLeastOne) {
    const Piece whole = pieces[index];
    if (whole.glyphCount == 0) return false;
    const std::u32string_view text = textOf(whole);
    std::size_t border = 0;
    for (std::size_t fitting = charactersWithin(whole, width);; fitting = border - 1) {
        border = graphemeBorder(text, fitting);
        const bool nothingFits = border > fitting;
        if (border >= text.size() || (nothingFits && !atLeastOne)) return false;
        const auto [front, rest] = cut(whole, static_cast<std::int32_t>(border));
        // Cut off, the front may have lost kerning or a joined form that made it narrower.
        if (front.width > width && !nothingFits) continue;
        replacePiece(index, front, rest);
        return true;
    }
}

std::size_t Paragraph::seek(std::int32_t position) {
    const std::int32_t at = shapedIndex(static_cast<std::uint32_t>(position));
    const auto behind = std::upper_bound(pieces.begin(), pieces.end(), at,
                                         [](std::int32_t its, const Piece& piece) { return its < piece.start; });
    if (behind == pieces.begin()) return 0;
    const auto index = static_cast<std::size_t>(behind - pieces.begin()) - 1;
    const Piece whole = pieces[index];
    if (whole.start >= at || whole.limit <= at) return whole.limit <= at ? index + 1 : index;
    const auto [front, rest] = cut(whole, at - whole.start);
    replacePiece(index, front, rest);
    return index + 1;
}

void Paragraph::hyphenatePiece(std::size_t index, std::int32_t border) {
    auto [front, rest] = cut(pieces[index], border);
    front.hyphenates = true;
    replacePiece(index, front, rest);
}

void Paragraph::replacePiece(std::size_t index, const Piece& front, const Piece& rest) {
    cuts_.push_back({index, pieces[index]});
    pieces[index] = front;
    pieces.insert(pieces.begin() + static_cast<std::ptrdiff_t>(index) + 1, rest);
}

void Paragraph::undoCut() {
    const Cut& last = cuts_.back();
    pieces[last.index] = last.whole;
    pieces.erase(pieces.begin() + static_cast<std::ptrdiff_t>(last.index) + 1);
    cuts_.pop_back();
}

/// The two parts of a piece, shaped for themselves.
std::pair<Piece, Piece> Paragraph::cut(const Piece& whole, std::int32_t border) {
    Piece front = whole, rest = whole;
    front.limit = rest.start = whole.start + border;
    front.breakAfter = LineBreak::none;
    front.hyphenates = false;
    front.kernAfter = 0;
    reshape(front);
    reshape(rest);
    return {front, rest};
}

std::size_t Paragraph::charactersWithin(const Piece& piece, float width) const {
    const bool backward = piece.level % 2 != 0;
    const float scale = styleOf(piece).scale();
    float reached = 0;
    for (std::uint32_t i = 0; i < piece.glyphCount; ++i) {
        const PlacedGlyph& glyph = glyphs[piece.firstGlyph + (backward ? piece.glyphCount - 1 - i : i)];
        reached += glyph.advance * scale;
        if (reached > width) return static_cast<std::size_t>(shapedIndex(glyph.position) - piece.start);
    }
    return textOf(piece).size();
}

/// The character of the shaped text that stands for a position of the story.
std::int32_t Paragraph::shapedIndex(std::uint32_t storyPosition) const {
    const std::int32_t inParagraph = static_cast<std::int32_t>(storyPosition) - position_;
    if (sources_.empty()) return inParagraph;
    return static_cast<std::int32_t>(std::lower_bound(sources_.begin(), sources_.end(), inParagraph) -
                                     sources_.begin());
}

/// Shapes a part of a piece anew; what was learned of the whole piece shows that its font has all characters.
void Paragraph::reshape(Piece& piece) {
    if (!marks_.empty()) {
        setMarked(piece);
        return;
    }
    [[maybe_unused]] const bool complete = setLatin(piece);
}

TextStyle Paragraph::shapeLeader(const Piece& tab, std::u32string_view leader, std::vector<PlacedGlyph>& out) const {
    out.clear();
    const Font* fallback = nullptr;
    const Font& font = fontFor(leader, styleOf(tab).font(), fallback);
    const TextStyle style = styles_.variant(styleOf(tab), font, false);
    shaper_.shapeWord(*style.face, leader, HB_SCRIPT_LATIN, false, out);
    for (PlacedGlyph& glyph : out)
        glyph.position = static_cast<std::uint32_t>(storyPosition(tab.start));
    spreadOut(out, style.spread);
    return style;
}

PlacedGlyph Paragraph::hyphenFor(const Piece& piece) const {
    const TextStyle& style = styleOf(piece);
    std::uint16_t glyph = style.font().glyphOf(0x2010);
    if (glyph == 0) glyph = style.font().glyphOf(U'-');
    return {glyph, style.font().nominalAdvance(glyph) + style.spread, 0, 0,
            static_cast<std::uint32_t>(storyPosition(piece.limit))};
}

}  // namespace tarnova
