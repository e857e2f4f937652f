#include "host/text/story_flow.h"

#include <algorithm>

#include "host/text/line_layout.h"

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
        return baseline_ + space + height.leading;
    }

    [[nodiscard]] bool fits(float baseline, const LineHeight& height) const {
        return baseline + height.descent <= static_cast<float>(box().bottom) + heightTolerance;
    }

    void add(const ComposedLine& line) {
        ComposedColumn& column = story_.columns[index_];
        if (column.lineCount == 0) {
            column.firstLine = static_cast<std::uint32_t>(story_.lines.size());
            column.start = line.start;
        }
        ++column.lineCount;
        column.limit = line.limit;
        baseline_ = line.baseline;
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
        if (!isPastEnd() && isUnusable()) next();
    }

    /// Moves the column's lines down as its vertical alignment wants them.
    void alignLines() {
        const VerticalAlignment alignment = input_.columns[index_].verticalAlignment;
        const ComposedColumn& column = story_.columns[index_];
        if (alignment == VerticalAlignment::top || column.lineCount == 0) return;
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

/// Sets the next line in this column or a later one, and moves the place behind it. False: no column has room.
bool setLine(const ParagraphFlow& flow, ColumnCursor& cursor, ComposedStory& story, ParagraphPlace& place) {
    const bool isFirst = place.piece == 0;
    for (; !cursor.isPastEnd(); cursor.next()) {
        const LineMeasure measure = measureIn(cursor, flow.format, isFirst, place.hyphensAbove);
        const LineExtent extent = breakLine(flow.paragraph, place.piece, measure, flow.format, flow.input.text);
        LineHeight height = heightOf(flow.paragraph, extent);
        if (flow.emptyStyle != nullptr) height.include(*flow.emptyStyle);
        const float baseline = cursor.baselineFor(height, isFirst ? flow.spaceBefore : 0);
        if (!cursor.fits(baseline, height)) continue;
        ComposedLine line;
        line.start = place.position;
        line.limit = limitOf(flow, extent);
        line.baseline = baseline;
        line.ascent = height.ascent;
        line.descent = height.descent;
        placeLine(flow.paragraph, extent, measure, flow.format, flow.input.text, static_cast<float>(cursor.box().left),
                  baseline, story, line);
        cursor.add(line);
        place = {line.limit, extent.limit, extent.showsHyphen ? place.hyphensAbove + 1 : 0};
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
