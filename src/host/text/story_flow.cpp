#include "host/text/story_flow.h"

#include <algorithm>

#include "host/text/line_layout.h"
#include "host/text/line_room.h"

namespace tarnova {

namespace {

constexpr char32_t returnMark = U'\r';

/// The column being filled and the height that is used of it.
class ColumnCursor {
 public:
    ColumnCursor(const ComposeInput& input, ComposedStory& story) : input_(input), story_(story) { openColumns(); }

    [[nodiscard]] bool isPastEnd() const { return index_ >= input_.columns.size(); }
    [[nodiscard]] const PMRect& box() const { return input_.columns[index_].box; }
    [[nodiscard]] float width() const { return static_cast<float>(box().width()); }

    /// Baseline of a next line of this height, `space` points further down than leading alone would have it.
    [[nodiscard]] float baselineFor(const LineHeight& height, float space) const {
        if (isEmpty()) return static_cast<float>(box().top) + height.ascent;
        return baseline_ + below_ + space + height.leading;
    }
    /// What is free of the column.
    [[nodiscard]] LineRooms& rooms() { return rooms_; }

    [[nodiscard]] bool fits(float baseline, const LineHeight& height) const {
        return baseline + height.descent <= static_cast<float>(box().bottom) + heightTolerance;
    }

    /// Adds a line, or the next part of one with the same baseline; items in it reach `below` deeper than its text.
    void add(const ComposedLine& line, float below) {
        ComposedColumn& column = story_.columns[index_];
        if (column.lineCount == 0) {
            column.firstLine = static_cast<std::uint32_t>(story_.lines.size());
            column.start = line.start;
        }
        ++column.lineCount;
        column.limit = line.limit;
        baseline_ = line.baseline;
        below_ = below;
        story_.lines.push_back(line);
    }

    /// Closes the column and goes to the next one that has room for text at all.
    void next() {
        alignLines();
        const std::int32_t limit = story_.columns[index_].limit;
        do {
            ++index_;
            if (isPastEnd()) return;
            ComposedColumn& column = story_.columns[index_];
            column.start = column.limit = limit;
            column.firstLine = static_cast<std::uint32_t>(story_.lines.size());
        } while (isUnusable());
        enter();
    }

    /// Closes the last column; those behind it stay empty.
    void finish() {
        while (!isPastEnd())
            next();
    }

 private:
    [[nodiscard]] bool isEmpty() const { return story_.columns[index_].lineCount == 0; }
    [[nodiscard]] bool isUnusable() const { return !(box().width() > 0) || !(box().height() > 0); }

    void openColumns() {
        story_.columns.reserve(input_.columns.size());
        for (const ColumnBox& source : input_.columns) {
            ComposedColumn column;
            column.frame = source.frame;
            column.frameIndex = source.frameIndex;
            column.columnIndex = source.columnIndex;
            column.box = source.box;
            story_.columns.push_back(column);
        }
        if (isPastEnd()) return;
        if (isUnusable()) {
            next();
        } else {
            enter();
        }
    }

    void enter() { rooms_.enter(input_.wraps, input_.columns[index_]); }

    /// Moves the column's lines down as its vertical alignment wants them. Lines beside items stay beside them.
    void alignLines() {
        const VerticalAlignment alignment = input_.columns[index_].verticalAlignment;
        const ComposedColumn& column = story_.columns[index_];
        if (alignment == VerticalAlignment::top || column.lineCount == 0 || !rooms_.isWhole()) return;
        const ComposedLine& last = story_.lines.back();
        const float room = static_cast<float>(box().bottom) - (last.baseline + last.descent);
        const float shift = alignment == VerticalAlignment::center ? room / 2 : room;
        for (std::size_t i = column.firstLine; i < story_.lines.size(); ++i) {
            ComposedLine& line = story_.lines[i];
            line.baseline += shift;
            for (std::uint32_t run = 0; run < line.runCount; ++run)
                story_.runs[line.firstRun + run].y += shift;
        }
    }

    const ComposeInput& input_;
    ComposedStory& story_;
    std::size_t index_ = 0;
    float baseline_ = 0;
    float below_ = 0;
    LineRooms rooms_;
};

/// One paragraph on its way through the columns.
struct ParagraphFlow {
    const ComposeInput& input;
    Paragraph& paragraph;
    const ParaFormat& format;
    const TextStyle* emptyStyle;  // of the return, when the paragraph has no text
    std::int32_t limit;           // in the story, its return included
    float spaceBefore;            // from the paragraph in front
};

LineMeasure measureIn(const ColumnCursor& cursor, const ParaFormat& format, bool isFirst, std::int32_t hyphensAbove) {
    const double left = format.leftIndent + (isFirst ? format.firstLineIndent : 0);
    const float width = cursor.width() - static_cast<float>(left + format.rightIndent);
    return {static_cast<float>(left), width, isFirst, hyphensAbove};
}

std::int32_t limitOf(const ParagraphFlow& flow, const LineExtent& extent) {
    if (extent.limit >= flow.paragraph.pieces.size()) return flow.limit;
    return flow.paragraph.storyPosition(flow.paragraph.pieces[extent.limit].start);
}

/// How far a paragraph is set.
struct ParagraphPlace {
    std::int32_t position = 0;  // in the story
    std::size_t piece = 0;
    std::int32_t hyphensAbove = 0;  // lines directly above that end in a hyphen
};

/// A line, or the part of one that stands in one stretch beside items, before it is placed.
struct LinePart {
    LineMeasure measure;
    LineExtent extent;
};

/// Finds what one line takes of a column in which items stand: how far down it goes and its parts.
class LineAround {
 public:
    LineAround(const ParagraphFlow& flow, ColumnCursor& cursor, const ParagraphPlace& place)
        : flow_(flow), cursor_(cursor), place_(place), whole_(measureIn(cursor, flow.format, place.piece == 0, 0)) {}

    std::vector<LinePart> parts;
    LineHeight height;
    float baseline = 0;

    /// False: the column has no room. The line is tried as high as its first word, then as high as what it takes; and
    /// where nothing is free, behind the next item. So each step makes it higher or moves it down.
    [[nodiscard]] bool find() {
        height = heightOfParts({{whole_, {place_.piece, std::min(place_.piece + 1, pieceCount()), false, false}}});
        float moved = 0;
        for (int tries = 0; tries < tryLimit; ++tries) {
            baseline = cursor_.baselineFor(height, place_.piece == 0 ? flow_.spaceBefore : 0) + moved;
            const float top = baseline - height.ascent, bottom = baseline + height.descent;
            if (!cursor_.fits(baseline, height) || cursor_.rooms().isOverAt(bottom)) return false;
            fill(cursor_.rooms().between(top, bottom, left() + whole_.left, left() + whole_.left + whole_.width));
            if (parts.empty()) {
                const float next = cursor_.rooms().below(top, bottom);
                if (next <= top) return false;
                moved += next - top;
                continue;
            }
            const LineHeight needed = heightOfParts(parts);
            const bool isEnough = needed.ascent <= height.ascent && needed.descent <= height.descent &&
                                  needed.leading <= height.leading;
            height = {std::max(height.ascent, needed.ascent), std::max(height.descent, needed.descent),
                      std::max(height.leading, needed.leading), needed.above, needed.below};
            if (isEnough) return true;
        }
        return false;
    }

 private:
    static constexpr int tryLimit = 1000;

    [[nodiscard]] float left() const { return static_cast<float>(cursor_.box().left); }
    [[nodiscard]] std::size_t pieceCount() const { return flow_.paragraph.pieces.size(); }

    /// Puts as much as fits into the stretches, in reading order. A stretch too narrow for a word stays empty, unless
    /// it is the whole width.
    void fill(const std::vector<LineRoom>& rooms) {
        parts.clear();
        ParagraphPlace at = place_;
        for (std::size_t i = 0; i < rooms.size(); ++i) {
            const LineRoom& room = rooms[flow_.paragraph.isRightToLeft() ? rooms.size() - 1 - i : i];
            const LineMeasure measure{room.left - left(), room.right - room.left, whole_.isFirst, at.hyphensAbove};
            const LineExtent extent = breakLine(flow_.paragraph, at.piece, measure, flow_.format, flow_.input.text);
            const bool isNarrowed = measure.width < whole_.width;
            if (isNarrowed && extent.cutsWord) continue;
            if (widestAnchor(flow_.paragraph, extent) > measure.width + widthTolerance) continue;
            parts.push_back({measure, extent});
            if (extent.isForced) return;
            at.piece = extent.limit;
            at.hyphensAbove = extent.showsHyphen ? at.hyphensAbove + 1 : 0;
        }
        if (!parts.empty()) flow_.paragraph.rejoin(parts.back().extent.limit);
    }

    [[nodiscard]] LineHeight heightOfParts(const std::vector<LinePart>& of) const {
        LineHeight out;
        if (flow_.emptyStyle != nullptr) out.include(*flow_.emptyStyle);
        for (const LinePart& part : of) {
            const LineHeight its = heightOf(flow_.paragraph, part.extent);
            out = {std::max(out.ascent, its.ascent), std::max(out.descent, its.descent),
                   std::max(out.leading, its.leading), std::max(out.above, its.above), std::max(out.below, its.below)};
        }
        return out;
    }

    const ParagraphFlow& flow_;
    ColumnCursor& cursor_;
    ParagraphPlace place_;
    LineMeasure whole_;
};

/// Appends a line or a part of one.
void appendLine(const ParagraphFlow& flow, ColumnCursor& cursor, ComposedStory& story, const LinePart& part,
                const LineHeight& height, float baseline, ParagraphPlace& place) {
    ComposedLine line;
    line.start = place.position;
    line.limit = limitOf(flow, part.extent);
    line.baseline = baseline;
    line.ascent = height.ascent;
    line.descent = height.descent;
    placeLine(flow.paragraph, part.extent, part.measure, flow.format, flow.input.text,
              static_cast<float>(cursor.box().left), baseline, story, line);
    cursor.add(line, height.below);
    place = {line.limit, part.extent.limit, part.extent.showsHyphen ? place.hyphensAbove + 1 : 0};
}

/// The same as `setLine` in one column in which items stand.
bool setLineAround(const ParagraphFlow& flow, ColumnCursor& cursor, ComposedStory& story, ParagraphPlace& place) {
    LineAround line(flow, cursor, place);
    if (!line.find()) return false;
    for (const LinePart& part : line.parts)
        appendLine(flow, cursor, story, part, line.height, line.baseline, place);
    return true;
}

/// Sets the next line in this column or a later one, and moves the place behind it. False: no column has room.
bool setLine(const ParagraphFlow& flow, ColumnCursor& cursor, ComposedStory& story, ParagraphPlace& place) {
    const bool isFirst = place.piece == 0;
    for (; !cursor.isPastEnd(); cursor.next()) {
        if (!cursor.rooms().isWhole()) {
            if (setLineAround(flow, cursor, story, place)) return true;
            continue;
        }
        const LineMeasure measure = measureIn(cursor, flow.format, isFirst, place.hyphensAbove);
        const LineExtent extent = breakLine(flow.paragraph, place.piece, measure, flow.format, flow.input.text);
        LineHeight height = heightOf(flow.paragraph, extent);
        if (flow.emptyStyle != nullptr) height.include(*flow.emptyStyle);
        const float baseline = cursor.baselineFor(height, isFirst ? flow.spaceBefore : 0);
        if (!cursor.fits(baseline, height)) continue;
        if (widestAnchor(flow.paragraph, extent) > measure.width + widthTolerance) continue;
        appendLine(flow, cursor, story, {measure, extent}, height, baseline, place);
        return true;
    }
    return false;
}

/// Sets a paragraph and gives the position behind what was shown of it.
std::int32_t setParagraph(const ParagraphFlow& flow, ColumnCursor& cursor, ComposedStory& story, std::int32_t start) {
    ParagraphPlace place{start};
    do {
        if (!setLine(flow, cursor, story, place)) break;
    } while (place.piece < flow.paragraph.pieces.size());
    return place.position;
}

/// The span of formats that a position lies in, moved along with the paragraphs.
struct SpanCursor {
    const std::vector<FormatSpan>& formats;
    std::size_t index = 0;
    std::int32_t offset = 0;

    void advance(std::int32_t length) {
        offset += length;
        while (index < formats.size() && offset >= formats[index].length)
            offset -= formats[index++].length;
    }
};

}  // namespace

void StoryFlow::compose(const ComposeInput& input, ComposedStory& story) {
    const auto length = static_cast<std::int32_t>(input.text.size());
    story.glyphs.reserve(input.text.size());
    paragraph_.anchors = input.anchors;
    ColumnCursor cursor(input, story);
    SpanCursor spans{input.formats};
    std::int32_t start = 0;
    double spaceAfter = 0;
    for (const ParagraphSpan& span : input.paragraphs) {
        const std::int32_t limit = start + span.length;
        if (cursor.isPastEnd() || spans.index >= input.formats.size() || limit > length || span.length <= 0) break;
        std::u32string_view text =
            input.text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(span.length));
        if (text.back() == returnMark) text.remove_suffix(1);
        paragraph_.assign(text, start, input.formats, spans.index, spans.offset, input.shown);
        const bool isEmpty = paragraph_.pieces.empty();
        const TextStyle* emptyStyle = isEmpty ? &paragraph_.styleOfFormat(*input.formats[spans.index].format) : nullptr;
        const ParagraphFlow flow{input,      paragraph_, *span.format,
                                 emptyStyle, limit,      static_cast<float>(spaceAfter + span.format->spaceBefore)};
        start = setParagraph(flow, cursor, story, start);
        if (start < limit) break;
        spans.advance(span.length);
        spaceAfter = span.format->spaceAfter;
    }
    cursor.finish();
    story.shownLimit = start;
    story.composedLimit = length;
    story.overset = start < length - 1;  // the closing mark alone is no text that could be missed
}

}  // namespace tarnova
