#include "host/text/line_layout.h"

#include <unicode/ubidi.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <string_view>

#include "host/text/line_stretch.h"
#include "host/text/tab_gap.h"

namespace tarnova {

namespace {

bool isStretchable(char32_t c) {
    return c == U' ' || c == 0xA0;
}

/// Adds what justification may change of a piece, `dropped` glyphs at its end left out; of its letters only when
/// `withLetters` is set.
void addSums(const Paragraph& paragraph, const Piece& piece, std::u32string_view text, std::uint32_t dropped,
             bool withLetters, LineSums& sums) {
    const TextStyle& style = paragraph.styleOf(piece);
    const float scale = style.scale();
    for (std::uint32_t g = 0; g + dropped < piece.glyphCount; ++g) {
        const PlacedGlyph& glyph = paragraph.glyphs[piece.firstGlyph + g];
        if (isStretchable(text[glyph.position])) {
            ++sums.spaceCount;
            sums.spaces += glyph.advance * scale;
        }
        if (!withLetters) continue;
        sums.text += glyph.advance * scale;
        if (piece.takesLetterSpace && glyph.advance != 0) sums.letters += scale * 1000;
    }
}

/// Finds the end of a line, piece by piece. Where the limits of word spaces have a say, that is the opportunity with
/// which the spaces come closest to what is wanted, among those whose spaces aren't less than the least.
class LineBreaker {
 public:
    LineBreaker(Paragraph& paragraph, std::size_t first, const LineMeasure& measure, const ParaFormat& format,
                std::u32string_view text)
        : paragraph_(paragraph),
          measure_(measure),
          format_(format),
          text_(text),
          stretch_(format),
          extent_{first, first, false, false} {}

    LineExtent run() {
        for (std::size_t at = extent_.first; at < paragraph_.pieces.size(); ++at) {
            if (!add(at)) return extent_;
            if (paragraph_.pieces[at].breakAfter == LineBreak::mandatory) return endAt(at + 1, true);
            noteOpportunity(at);
        }
        return endAt(paragraph_.pieces.size(), true);
    }

 private:
    LineExtent endAt(std::size_t limit, bool isForced) {
        closeTab(limit);
        if (limit > extent_.first) extent_.leaves = paragraph_.pieces[limit - 1].leaves;
        extent_.limit = limit;
        extent_.isForced = isForced;
        return extent_;
    }

    /// Adds a piece. False when the line ended in front of it or inside; `extent_` is then complete.
    bool add(std::size_t at) {
        Piece& piece = paragraph_.pieces[at];
        if (piece.isTab) {
            closeTab(at);
            openTab(at);
            return true;
        }
        const float end = x_ + (tab_ ? tab_->gapWith(paragraph_, piece) : 0.0F) + piece.width;
        if (end <= room() || (stretch_.touchesLetters() && end <= roomWith(piece))) {
            take(piece);
            return true;
        }
        if (hyphenate(at)) return false;
        if (opportunity_) {
            endAt(*opportunity_, false);
            extent_.showsHyphen = opportunityHyphenates_;
        } else {
            cutWord(at);
        }
        return false;
    }

    /// The width that text can take, when all that may shrink is at its least.
    [[nodiscard]] float room() const {
        return measure_.width + widthTolerance + (stretch_.choosesLines() ? stretch_.shrink(sums_) : 0.0F);
    }

    /// The same when the piece stands on the line and its letters give too.
    [[nodiscard]] float roomWith(const Piece& piece) const {
        LineSums sums = sums_;
        addSums(paragraph_, piece, text_, piece.hangingGlyphs, true, sums);
        return measure_.width + widthTolerance + stretch_.shrink(sums);
    }

    /// Ends the line with a hyphen in the word that doesn't fit whole, as far behind as it can; `at` is the piece at
    /// which the line is full. False when there is no such place.
    bool hyphenate(std::size_t at) {
        const bool enough = format_.hyphensInARow > 0 && measure_.hyphensAbove >= format_.hyphensInARow;
        if (!format_.hyphenate || enough) return false;
        if (stretch_.choosesLines() && deviation_ <= 1) return false;  // the line is good without
        const std::size_t start = opportunity_.value_or(extent_.first);
        float x = x_;
        for (std::size_t index = at;; --index) {
            if (hyphenatePiece(index, x, index < at)) return true;
            // The gap of an open tab is known for the text up to here only.
            if (tab_ || index == start) return false;
            const Piece& before = paragraph_.pieces[index - 1];
            x -= before.width + paragraph_.gapAfter(before);
        }
    }

    /// The same in one piece, which begins at `x`; at its end only when it `fits`.
    bool hyphenatePiece(std::size_t index, float x, bool fits) {
        static thread_local std::vector<std::int32_t> borders;
        const Piece piece = paragraph_.pieces[index];
        paragraph_.findHyphens(piece, format_, borders);
        if (borders.empty()) return false;
        const float hyphen = paragraph_.hyphenFor(piece).advance * paragraph_.styleOf(piece).scale();
        const float left = room() - x - hyphen;
        const auto within = static_cast<std::int32_t>(paragraph_.charactersWithin(piece, left));
        for (; !borders.empty() && !extent_.showsHyphen; borders.pop_back()) {
            const std::int32_t border = borders.back();
            const bool isWhole = border == piece.limit - piece.start;
            if (border > within || (isWhole && !fits)) continue;
            if (!isWhole) paragraph_.hyphenatePiece(index, border);
            const Piece& front = paragraph_.pieces[index];
            extent_.showsHyphen = (tab_ ? tab_->gapWith(paragraph_, front) : 0.0F) + front.width <= left;
            if (!isWhole && !extent_.showsHyphen) paragraph_.rejoin(index);
        }
        if (extent_.showsHyphen) endAt(index + 1, false);
        return extent_.showsHyphen;
    }

    void take(const Piece& piece) {
        if (tab_) tab_->add(paragraph_, piece);
        if (stretch_.choosesLines()) takeSums(piece);
        x_ += piece.width + paragraph_.gapAfter(piece);
    }

    /// Counts what may change in a piece; spaces that would hang at the line's end count from the next word on.
    void takeSums(const Piece& piece) {
        if (piece.width > 0) {
            setWidth_ = x_ + piece.width;
            setSums_ = sums_;
            addSums(paragraph_, piece, text_, piece.hangingGlyphs, stretch_.touchesLetters(), setSums_);
        }
        addSums(paragraph_, piece, text_, 0, stretch_.touchesLetters(), sums_);
    }

    /// A word that is longer than the line ends it wherever it must.
    void cutWord(std::size_t at) {
        const bool isFirst = at == extent_.first;
        const float left = measure_.width + widthTolerance - x_ - (tab_ ? tab_->gap() : 0.0F);
        const bool wasCut = paragraph_.splitPiece(at, left, isFirst);
        endAt(wasCut || isFirst ? at + 1 : at, false);
        extent_.isForced = extent_.limit == paragraph_.pieces.size();
        extent_.cutsWord = true;
    }

    void noteOpportunity(std::size_t at) {
        const Piece& piece = paragraph_.pieces[at];
        if (piece.breakAfter == LineBreak::none) return;
        float hyphen = 0;
        if (piece.hyphenates) {
            hyphen = paragraph_.hyphenFor(piece).advance * paragraph_.styleOf(piece).scale();
            const float end = x_ + (tab_ ? tab_->gap() : 0.0F) + hyphen;
            if (end > room()) return;
        }
        if (stretch_.choosesLines() && !improvesSpaces(hyphen)) return;
        opportunity_ = at + 1;
        opportunityHyphenates_ = piece.hyphenates;
    }

    /// True when a line that ends here, `hyphen` points shown behind it, comes closer to what is wanted than the one
    /// noted before, or as close.
    bool improvesSpaces(float hyphen) {
        const float slack = measure_.width - setWidth_ - (tab_ ? tab_->gap() : 0.0F) - hyphen;
        const float deviation = stretch_.deviation(slack, setSums_);
        if (opportunity_ && deviation > deviation_) return false;
        deviation_ = deviation;
        return true;
    }

    void openTab(std::size_t at) {
        sums_ = setSums_ = {};  // what stands in front of a tab isn't stretched
        Piece& piece = paragraph_.pieces[at];
        const TabTarget stop =
            piece.reachesRight ? farTabStop(format_, measure_) : nextTabStop(format_, measure_, measure_.start + x_);
        const float room = std::min(stop.position - measure_.start, measure_.width) - x_;
        piece.tabStop = stop.index;
        tab_.emplace(stop, std::max(room, 0.0F), at);
    }

    /// Settles the width of the open tab by the pieces behind it up to `limit`, which may be fewer than were tried.
    void closeTab(std::size_t limit) {
        if (!tab_) return;
        tab_->restart();
        for (std::size_t i = tab_->piece() + 1; i < limit; ++i)
            tab_->add(paragraph_, paragraph_.pieces[i]);
        paragraph_.pieces[tab_->piece()].width = tab_->gap();
        x_ += tab_->gap();
        tab_.reset();
    }

    Paragraph& paragraph_;
    const LineMeasure& measure_;
    const ParaFormat& format_;
    std::u32string_view text_;
    LineStretch stretch_;
    LineExtent extent_;
    float x_ = 0;  // behind the last piece, without the gap of an open tab
    // Counted only where the limits of justified lines have a say.
    LineSums sums_;       // of the text behind the last tab
    float setWidth_ = 0;  // as x_ and sums_, without what hangs at a line's end
    LineSums setSums_;
    float deviation_ = std::numeric_limits<float>::max();  // of the line that ends at `opportunity_`
    std::optional<TabGap> tab_;
    std::optional<std::size_t> opportunity_;  // the piece behind it
    bool opportunityHyphenates_ = false;
};

constexpr float leastLeaderWidth = 0.1F;  // points; what is smaller can't be told apart

/// What is set of a line: the pieces without those that hang at its end.
struct VisiblePart {
    std::size_t limit = 0;      // pieces
    std::uint32_t dropped = 0;  // glyphs at the end of the last one
    float width = 0;
    std::size_t stretchFrom = 0;  // first piece behind the last tab
    float stretchWidth = 0;       // of the pieces from there on
    bool isHyphenated = false;
};

VisiblePart visiblePart(const Paragraph& paragraph, const LineExtent& extent) {
    VisiblePart part{extent.limit, 0, 0, extent.first};
    const auto hangs = [](const Piece& piece) {
        return piece.glyphCount == piece.hangingGlyphs && !piece.isTab && piece.anchor == nullptr;
    };
    while (part.limit > extent.first && hangs(paragraph.pieces[part.limit - 1]))
        --part.limit;
    for (std::size_t i = extent.first; i < part.limit; ++i) {
        const Piece& piece = paragraph.pieces[i];
        const float width = piece.width + (i + 1 < part.limit ? paragraph.gapAfter(piece) : 0);
        part.width += width;
        if (piece.anchor == nullptr) part.stretchWidth += width;
        if (!piece.isTab) continue;
        part.stretchFrom = i + 1;
        part.stretchWidth = 0;
    }
    if (part.limit > extent.first) part.dropped = paragraph.pieces[part.limit - 1].hangingGlyphs;
    if (extent.showsHyphen) {
        const Piece& last = paragraph.pieces[extent.limit - 1];
        const float hyphen = paragraph.hyphenFor(last).advance * paragraph.styleOf(last).scale();
        part.isHyphenated = true;
        part.width += hyphen;
        part.stretchWidth += hyphen;
    }
    return part;
}

/// Writes the pieces of a line into a story.
class LinePlacer {
 public:
    LinePlacer(const Paragraph& paragraph, const VisiblePart& part, ComposedStory& story)
        : paragraph_(paragraph), part_(part), story_(story) {}

    float x = 0;
    float baseline = 0;
    LineChange change;
    float columnLeft = 0;
    const ParaFormat* format = nullptr;
    std::u32string_view text;
    std::optional<float> indentAt;  // x of an "indent to here"

    void placeAll(std::size_t first) {
        const bool hasLevels = std::any_of(paragraph_.pieces.begin() + static_cast<std::ptrdiff_t>(first),
                                           paragraph_.pieces.begin() + static_cast<std::ptrdiff_t>(part_.limit),
                                           [](const Piece& piece) { return piece.level != 0; });
        if (hasLevels) {
            placeReordered(first);
            return;
        }
        for (std::size_t i = first; i < part_.limit; ++i)
            place(i);
    }

    /// Takes the letter space behind the last letter away again.
    void trimLetterSpace() {
        if (change.letterSpace == 0 || !letterIsSpaced_ || !open_ || story_.glyphs.back().advance == 0) return;
        const float by = change.letterSpace / change.glyphScale;
        story_.glyphs.back().advance -= by;
        grow(story_.runs.back(), -by * style_->scale() * glyphScale_);
    }

    void placeHyphen(const Piece& piece) {
        const PlacedGlyph hyphen = paragraph_.hyphenFor(piece);
        GlyphRun& run = runFor(paragraph_.styleOf(piece));
        append(run, &hyphen, 1);
    }

 private:
    void placeReordered(std::size_t first) {
        static thread_local std::vector<UBiDiLevel> levels;
        static thread_local std::vector<std::int32_t> order;
        levels.clear();
        for (std::size_t i = first; i < part_.limit; ++i)
            levels.push_back(paragraph_.pieces[i].level);
        order.resize(levels.size());
        ubidi_reorderVisual(levels.data(), static_cast<std::int32_t>(levels.size()), order.data());
        for (std::int32_t index : order)
            place(first + static_cast<std::size_t>(index));
    }

    void place(std::size_t index) {
        const Piece& piece = paragraph_.pieces[index];
        if (piece.setsIndent) indentAt = x;
        if (piece.isTab) {
            placeTab(piece);
            return;
        }
        if (piece.anchor != nullptr) {
            story_.anchors.push_back({piece.anchor->position, static_cast<std::uint32_t>(story_.lines.size()), x});
            x += piece.width;
            open_ = false;
            return;
        }
        const bool isLast = index + 1 == part_.limit;
        const std::uint32_t count = piece.glyphCount - (isLast ? part_.dropped : 0);
        if (count == 0) return;
        glyphScale_ = index < part_.stretchFrom ? 1 : change.glyphScale;
        GlyphRun& run = runFor(paragraph_.styleOf(piece));
        const std::size_t from = story_.glyphs.size();
        append(run, paragraph_.glyphs.data() + piece.firstGlyph, count);
        if (!isLast && piece.kernAfter != 0) {
            story_.glyphs.back().advance += piece.kernAfter;
            grow(run, piece.kernAfter * style_->scale() * glyphScale_);
        }
        if (index < part_.stretchFrom) return;
        if (change.letterSpace != 0 && piece.takesLetterSpace) {
            widen(run, from, change.letterSpace / change.glyphScale,
                  [](const PlacedGlyph& glyph) { return glyph.advance != 0; });
        }
        letterIsSpaced_ = piece.takesLetterSpace;
        if (change.perSpace != 0) {
            widen(run, from, change.perSpace / (style_->scale() * change.glyphScale),
                  [this](const PlacedGlyph& glyph) { return isStretchable(text[glyph.position]); });
        }
    }

    void placeTab(const Piece& piece) {
        open_ = false;
        const float end = x + piece.width;
        if (piece.tabStop >= 0) placeLeader(piece, format->tabs[static_cast<std::size_t>(piece.tabStop)].leader, end);
        x = end;
        open_ = false;
    }

    /// Fills the gap of a tab from `x` to `end`. Leaders of all lines in a column stand in step.
    void placeLeader(const Piece& piece, std::u32string_view leader, float end) {
        static thread_local std::vector<PlacedGlyph> glyphs;
        if (leader.empty()) return;
        const TextStyle style = paragraph_.shapeLeader(piece, leader, glyphs);
        float width = 0;
        for (const PlacedGlyph& glyph : glyphs)
            width += glyph.advance * style.scale();
        if (!(width > leastLeaderWidth)) return;
        const float first = std::ceil((x - columnLeft - widthTolerance) / width);
        const auto count = static_cast<std::int32_t>(std::floor((end - columnLeft + widthTolerance) / width) - first);
        if (count <= 0) return;
        x = columnLeft + first * width;
        GlyphRun& run = runFor(style);
        for (std::int32_t i = 0; i < count; ++i)
            append(run, glyphs.data(), static_cast<std::uint32_t>(glyphs.size()));
    }

    /// The run that goes on at `x` with a style: the last one, or a new one.
    GlyphRun& runFor(const TextStyle& style) {
        if (open_ && style_ == &style) return story_.runs.back();
        style_ = &style;
        GlyphRun run;
        run.font = &style.font();
        run.format = style.format;
        story_.hasLinks |= !style.format->link.empty();
        run.size = style.size;
        run.horizontalScale = style.horizontalScale * glyphScale_;
        run.x = x;
        run.y = baseline - style.shift;
        run.firstGlyph = static_cast<std::uint32_t>(story_.glyphs.size());
        open_ = true;
        return story_.runs.emplace_back(run);
    }

    void append(GlyphRun& run, const PlacedGlyph* glyphs, std::uint32_t count) {
        story_.glyphs.insert(story_.glyphs.end(), glyphs, glyphs + count);
        run.glyphCount += count;
        float advance = 0;
        for (std::uint32_t i = 0; i < count; ++i)
            advance += glyphs[i].advance;
        grow(run, advance * style_->scale() * glyphScale_);
    }

    void grow(GlyphRun& run, float width) {
        run.width += width;
        x += width;
    }

    /// Adds thousandths of an em behind the glyphs of a run from one on that are of a kind.
    template <typename Kind>
    void widen(GlyphRun& run, std::size_t from, float by, Kind isKind) {
        const float points = by * style_->scale() * glyphScale_;
        for (std::size_t i = from; i < story_.glyphs.size(); ++i) {
            PlacedGlyph& glyph = story_.glyphs[i];
            if (!isKind(glyph)) continue;
            glyph.advance += by;
            grow(run, points);
        }
    }

    const Paragraph& paragraph_;
    const VisiblePart& part_;
    ComposedStory& story_;
    const TextStyle* style_ = nullptr;
    float glyphScale_ = 1;  // of the pieces in work
    bool letterIsSpaced_ = false;
    bool open_ = false;
};

LineSums sumsOf(const Paragraph& paragraph, const VisiblePart& part, std::u32string_view text, bool withLetters) {
    LineSums sums;
    for (std::size_t i = part.stretchFrom; i < part.limit; ++i) {
        const std::uint32_t dropped = i + 1 == part.limit ? part.dropped : 0;
        addSums(paragraph, paragraph.pieces[i], text, dropped, withLetters, sums);
    }
    sums.text = part.stretchWidth;
    if (part.isHyphenated || part.limit <= part.stretchFrom) return sums;
    const Piece& last = paragraph.pieces[part.limit - 1];  // no letter space behind it
    if (withLetters && last.takesLetterSpace && last.glyphCount > 0)
        sums.letters -= paragraph.styleOf(last).scale() * 1000;
    return sums;
}

bool isFilled(Alignment alignment, bool isForced) {
    return alignment == Alignment::justifyAll || (isJustified(alignment) && !isForced);
}

/// How far in the line begins, as its alignment says. What is justified but has no space to stretch begins like the
/// paragraph's last line.
float alignedStart(const Paragraph& paragraph, Alignment alignment, float slack) {
    switch (alignment) {
        case Alignment::center:
        case Alignment::justifyCenter:
            return slack / 2;
        case Alignment::right:
        case Alignment::justifyRight:
            return slack;
        case Alignment::left:
            return 0;
        default:
            return paragraph.isRightToLeft() ? slack : 0;
    }
}

}  // namespace

void LineHeight::include(const TextStyle& style) {
    ascent = std::max(ascent, style.ascent);
    descent = std::max(descent, style.descent);
    leading = std::max(leading, style.leading);
    capHeight = std::max(capHeight, style.capHeight);
    xHeight = std::max(xHeight, style.xHeight);
}

void LineHeight::include(const LineHeight& other) {
    ascent = std::max(ascent, other.ascent);
    descent = std::max(descent, other.descent);
    leading = std::max(leading, other.leading);
    above = std::max(above, other.above);
    below = std::max(below, other.below);
    capHeight = std::max(capHeight, other.capHeight);
    xHeight = std::max(xHeight, other.xHeight);
}

LineExtent breakLine(Paragraph& paragraph, std::size_t first, const LineMeasure& measure, const ParaFormat& format,
                     std::u32string_view text) {
    paragraph.rejoin(first);
    return LineBreaker(paragraph, first, measure, format, text).run();
}

namespace {

/// What items make of the height of a line's text.
void includeAnchors(const Paragraph& paragraph, const LineExtent& extent, LineHeight& height) {
    float rise = height.ascent, drop = height.descent;
    for (std::size_t i = extent.first; i < extent.limit; ++i) {
        const AnchorBox* anchor = paragraph.pieces[i].anchor;
        if (anchor == nullptr) continue;
        const AnchorOptions& options = anchor->options;
        if (options.kind == AnchorOptions::Kind::inLine) {
            rise = std::max(rise, anchor->height - static_cast<float>(options.y));
            drop = std::max(drop, static_cast<float>(options.y));
        } else if (options.kind == AnchorOptions::Kind::aboveLine) {
            height.above += anchor->height + static_cast<float>(options.spaceBefore + options.spaceAfter);
        }
    }
    height.above = std::max(height.above, 0.0F);
    height.below = drop - height.descent;
    height.leading += rise - height.ascent + height.above;
    height.ascent = rise + height.above;
    height.descent = drop;
}

/// Where the items above a line lie: the last one next to it.
void placeAbove(const Paragraph& paragraph, const LineExtent& extent, const LineHeight& height, float left, float width,
                std::span<PlacedAnchor> placed) {
    float top = height.ascent - height.above;
    for (std::size_t i = extent.limit; i-- > extent.first;) {
        const AnchorBox* anchor = paragraph.pieces[i].anchor;
        if (anchor == nullptr || anchor->options.kind != AnchorOptions::Kind::aboveLine) continue;
        const auto its = std::find_if(placed.begin(), placed.end(),
                                      [&](const PlacedAnchor& p) { return p.position == anchor->position; });
        const float room = width - anchor->width;
        its->x = left + (anchor->options.align == AnchorOptions::Align::left     ? 0
                         : anchor->options.align == AnchorOptions::Align::center ? room / 2
                                                                                 : room);
        its->above = top += anchor->height + static_cast<float>(anchor->options.spaceAfter);
        top += static_cast<float>(anchor->options.spaceBefore);
    }
}

}  // namespace

float widestAnchor(const Paragraph& paragraph, const LineExtent& extent) {
    float widest = 0;
    for (std::size_t i = extent.first; i < extent.limit; ++i) {
        const AnchorBox* anchor = paragraph.pieces[i].anchor;
        if (anchor == nullptr || anchor->options.kind == AnchorOptions::Kind::custom) continue;
        widest = std::max(widest, anchor->width);
    }
    return widest;
}

LineHeight heightOf(const Paragraph& paragraph, const LineExtent& extent) {
    LineHeight height;
    const TextStyle* last = nullptr;
    for (std::size_t i = extent.first; i < extent.limit; ++i) {
        const TextStyle& style = paragraph.styleOf(paragraph.pieces[i]);
        if (&style != last) height.include(style);
        last = &style;
    }
    if (!paragraph.anchors.empty()) includeAnchors(paragraph, extent, height);
    return height;
}

float placeLine(const Paragraph& paragraph, const LineExtent& extent, const LineMeasure& measure,
                const ParaFormat& format, std::u32string_view text, float columnLeft, float baseline,
                ComposedStory& story, ComposedLine& line) {
    const VisiblePart part = visiblePart(paragraph, extent);
    const float slack = measure.width - part.width;
    LinePlacer placer(paragraph, part, story);
    placer.text = text;
    placer.columnLeft = columnLeft;
    placer.format = &format;
    placer.baseline = baseline;
    placer.x = columnLeft + measure.left;
    const LineStretch stretch(format);
    const bool filled = isFilled(format.alignment, extent.isForced);
    LineSums sums;
    if (filled || stretch.choosesLines()) sums = sumsOf(paragraph, part, text, stretch.touchesLetters());
    if (sums.spaceCount > 0 || sums.letters > 0) {
        placer.change = filled ? stretch.filled(slack, sums) : stretch.unfilled(slack, sums);
    }
    if (sums.spaceCount == 0 || !filled) {
        placer.x += alignedStart(paragraph, format.alignment, slack - placer.change.total);
    }
    line.left = placer.x;
    line.firstRun = static_cast<std::uint32_t>(story.runs.size());
    const std::size_t firstAnchor = story.anchors.size();
    placer.placeAll(extent.first);
    if (story.anchors.size() > firstAnchor) {
        const std::span<PlacedAnchor> placed = std::span(story.anchors).subspan(firstAnchor);
        std::sort(placed.begin(), placed.end(),
                  [](const PlacedAnchor& a, const PlacedAnchor& b) { return a.position < b.position; });
        placeAbove(paragraph, extent, heightOf(paragraph, extent), columnLeft + measure.left, measure.width, placed);
    }
    if (part.isHyphenated) {
        placer.placeHyphen(paragraph.pieces[extent.limit - 1]);
    } else {
        placer.trimLetterSpace();
    }
    line.runCount = static_cast<std::uint32_t>(story.runs.size()) - line.firstRun;
    line.right = placer.x;
    if (!placer.indentAt) return noIndent;
    const float fromLeft = *placer.indentAt - columnLeft;
    return paragraph.isRightToLeft() ? measure.left + measure.width + measure.start - fromLeft : fromLeft;
}

}  // namespace tarnova
