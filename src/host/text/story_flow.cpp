#include "host/text/story_flow.h"

#include <algorithm>

#include "host/text/column_cursor.h"
#include "host/text/keep_rules.h"
#include "host/text/line_around.h"
#include "host/text/line_layout.h"

namespace tarnova {

namespace {

constexpr char32_t returnMark = U'\r';

/// Where a paragraph begins in the text and in its formats.
struct ParagraphPlace {
    std::int32_t start = 0;  // in the story
    std::size_t span = 0;    // index into ComposeInput::formats
    std::int32_t spanOffset = 0;
};

/// One story on its way through its columns.
class Pour {
 public:
    Pour(const ComposeInput& input, Paragraph& paragraph, ComposedStory& story)
        : input_(input), paragraph_(paragraph), story_(story), cursor_(input, story), position_(input.start.position) {
        line_ = {0, input.start.line, 0, input.start.hyphensAbove, input.start.indent};
    }

    /// Gives the position behind what is shown.
    std::int32_t run() {
        places_.reserve(usualParagraphs);
        places_.push_back({});
        while (!isOver() && isParagraph(line_.paragraph)) {
            if (line_.paragraph != assigned_) assign();
            if (isOver()) break;
            if (setLine() && line_.piece >= paragraph_.pieces.size()) endParagraph();
        }
        if (!story_.isUnfinished) cursor_.finish();
        return position_;
    }

 private:
    static constexpr std::size_t usualParagraphs = 32;  // of a column
    static constexpr std::size_t noParagraph = static_cast<std::size_t>(-1);

    [[nodiscard]] bool isOver() const { return story_.isUnfinished || cursor_.isPastEnd(); }

    /// False behind the last paragraph, and where the spans don't fit the text.
    [[nodiscard]] bool isParagraph(std::size_t index) const {
        const bool isThere =
            index < input_.paragraphs.size() || (input_.follower != nullptr && input_.follower->addParagraph());
        if (!isThere || placeOf(index).span >= input_.formats.size()) return false;
        const std::int32_t length = input_.paragraphs[index].length;
        return length > 0 && length <= static_cast<std::int32_t>(input_.text.size()) - placeOf(index).start;
    }

    [[nodiscard]] const ParagraphPlace& placeOf(std::size_t index) const { return places_[index - firstPlace_]; }
    [[nodiscard]] const ParaFormat& format() const { return *input_.paragraphs[line_.paragraph].format; }

    /// Takes up the paragraph of the next line, and finds the line's start in it.
    void assign() {
        const ParagraphPlace& place = placeOf(line_.paragraph);
        const ParagraphSpan& span = input_.paragraphs[line_.paragraph];
        std::u32string_view text =
            input_.text.substr(static_cast<std::size_t>(place.start), static_cast<std::size_t>(span.length));
        if (text.back() == returnMark) text.remove_suffix(1);
        paragraph_.assign(text, place.start, input_.formats, place.span, place.spanOffset, input_.shown);
        assigned_ = line_.paragraph;
        limit_ = place.start + span.length;
        emptyStyle_ =
            paragraph_.pieces.empty() ? &paragraph_.styleOfFormat(*input_.formats[place.span].format) : nullptr;
        if (line_.line > 0) {
            line_.piece = paragraph_.seek(position_);
        } else if (span.format->startIn != ParagraphStart::anywhere && cursor_.isUsed(span.format->startIn)) {
            leaveColumn(span.format->startIn);
        }
    }

    [[nodiscard]] LineMeasure measure() const {
        const bool isFirst = line_.line == 0;
        const bool backward = paragraph_.isRightToLeft();
        const float firstIndent = isFirst ? static_cast<float>(format().firstLineIndent) : 0.0F;
        float left = static_cast<float>(format().leftIndent) + (backward ? 0.0F : firstIndent);
        float right = static_cast<float>(format().rightIndent) + (backward ? firstIndent : 0.0F);
        if (line_.indent != noIndent) (backward ? right : left) = line_.indent;
        return {left, cursor_.width() - left - right, backward ? right : left, isFirst, line_.hyphensAbove};
    }

    /// Sets the next line in this column; false when it had no room and the column was ended.
    bool setLine() {
        const bool isFirst = line_.line == 0;
        const bool onGrid = format().gridLines == GridLines::all || (isFirst && format().gridLines == GridLines::first);
        const float space = isFirst ? static_cast<float>(spaceAfter() + format().spaceBefore) : 0.0F;
        const LineTask task{input_, paragraph_, format(), emptyStyle_, measure(), line_.piece, space, onGrid};
        const bool isSet = cursor_.rooms().isWhole() ? setWhole(task) : setAround(task);
        if (!isSet) {
            endColumn();
            return false;
        }
        ++line_.line;
        line_.continuesLine = false;
        if (leaves_ != ParagraphStart::anywhere) leaveColumn(leaves_);
        return true;
    }

    bool setWhole(const LineTask& task) {
        const LineExtent extent = breakLine(paragraph_, task.piece, task.measure, task.format, input_.text);
        LineHeight height = heightOf(paragraph_, extent);
        if (emptyStyle_ != nullptr) height.include(*emptyStyle_);
        const float baseline = cursor_.baselineFor(height, task.spaceBefore, task.onGrid);
        if (!cursor_.fits(baseline, height)) return false;
        const bool hasAnchors = !paragraph_.anchors.empty();
        if (hasAnchors && widestAnchor(paragraph_, extent) > task.measure.width + widthTolerance) return false;
        append({task.measure, extent}, task, height, baseline);
        return true;
    }

    /// The same in a column in which items stand.
    bool setAround(const LineTask& task) {
        LineAround line(task, cursor_);
        if (!line.find()) return false;
        for (const LinePart& part : line.parts) {
            append(part, task, line.height, line.baseline);
            line_.continuesLine = true;
        }
        return true;
    }

    /// Appends a line or a part of one.
    void append(const LinePart& part, const LineTask& task, const LineHeight& height, float baseline) {
        ComposedLine line;
        line.start = position_;
        line.limit = limitOf(part.extent);
        line.baseline = baseline;
        line.ascent = height.ascent;
        line.descent = height.descent;
        const float indent = placeLine(paragraph_, part.extent, part.measure, task.format, input_.text,
                                       static_cast<float>(cursor_.box().left), baseline, story_, line);
        cursor_.add(line, line_, height.below, task.onGrid);
        position_ = line.limit;
        line_.piece = part.extent.limit;
        line_.hyphensAbove = part.extent.showsHyphen ? line_.hyphensAbove + 1 : 0;
        if (indent != noIndent) line_.indent = indent;
        leaves_ = part.extent.leaves;
    }

    [[nodiscard]] double spaceAfter() const {
        return line_.paragraph == 0 ? 0 : input_.paragraphs[line_.paragraph - 1].format->spaceAfter;
    }

    [[nodiscard]] std::int32_t limitOf(const LineExtent& extent) const {
        if (extent.limit >= paragraph_.pieces.size()) return limit_;
        return paragraph_.storyPosition(paragraph_.pieces[extent.limit].start);
    }

    void endParagraph() {
        ParagraphPlace place = places_.back();
        if (line_.paragraph + 1 - firstPlace_ == places_.size()) {
            place.start = limit_;
            place.spanOffset += input_.paragraphs[line_.paragraph].length;
            while (place.span < input_.formats.size() && place.spanOffset >= input_.formats[place.span].length)
                place.spanOffset -= input_.formats[place.span++].length;
            places_.push_back(place);
        }
        keeps_ = keeps_ || keepsLines(format());
        line_ = {line_.paragraph + 1};
    }

    /// The column has no room for the next line: takes back what must stay with it.
    void endColumn() {
        if (keeps_ || keepsLines(format())) {
            const std::vector<LineMark>& lines = cursor_.marks();
            const std::size_t stay = lines.empty() ? 0 : linesThatStay(input_, lines, line_, linesLeft());
            if (stay < lines.size()) {
                line_ = lines[stay];
                position_ = cursor_.keepLines(stay);
            }
        }
        leaveColumn(ParagraphStart::nextColumn);
    }

    void leaveColumn(ParagraphStart where) {
        cursor_.leave(where);
        places_.erase(places_.begin(), places_.begin() + static_cast<std::ptrdiff_t>(line_.paragraph - firstPlace_));
        firstPlace_ = line_.paragraph;
        keeps_ = false;
        if (input_.follower != nullptr && !cursor_.isPastEnd()) tellFollower();
    }

    /// A column that begins behind its paragraph's last line, after a break, is passed over: the next line isn't known.
    void tellFollower() {
        const bool isBehind = line_.paragraph == assigned_ && line_.line > 0 && line_.piece >= paragraph_.pieces.size();
        const FlowStart next{cursor_.column(), position_, line_.line, line_.hyphensAbove, line_.indent};
        if (!isBehind) story_.isUnfinished = !input_.follower->goesOn(next);
    }

    /// Lines of the paragraph from the next one on, counted no further than its format cares.
    [[nodiscard]] std::int32_t linesLeft() {
        LineMeasure measure = this->measure();
        std::size_t piece = line_.piece;
        std::int32_t count = 0;
        do {
            const LineExtent extent = breakLine(paragraph_, piece, measure, format(), input_.text);
            piece = extent.limit;
            ++count;
        } while (piece < paragraph_.pieces.size() && count < format().keepLastLines);
        return count;
    }

    const ComposeInput& input_;
    Paragraph& paragraph_;
    ComposedStory& story_;
    ColumnCursor cursor_;
    std::vector<ParagraphPlace> places_;     // of the column's paragraphs and of the next one
    std::size_t firstPlace_ = 0;             // the paragraph of the first of them
    std::size_t assigned_ = noParagraph;     // the paragraph in work
    const TextStyle* emptyStyle_ = nullptr;  // of its return, when it has no text
    std::int32_t limit_ = 0;                 // of it in the story, its return included
    LineMark line_;                          // the next line
    std::int32_t position_ = 0;              // with which it begins
    bool keeps_ = false;                     // a paragraph that ended in the column wants lines kept together
    ParagraphStart leaves_ = ParagraphStart::anywhere;  // where text goes on behind the line that was set
};

}  // namespace

void StoryFlow::compose(const ComposeInput& input, ComposedStory& story) {
    const auto length = static_cast<std::int32_t>(input.text.size());
    story.glyphs.reserve(input.text.size());
    paragraph_.anchors = input.anchors;
    story.shownLimit = Pour(input, paragraph_, story).run();
    story.composedLimit = length;
    story.overset = story.shownLimit < length - 1;  // the closing mark alone is no text that could be missed
}

}  // namespace tarnova
