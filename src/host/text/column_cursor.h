// The column being filled: where its next line stands, and what is done when it is full.

#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "host/text/compose_input.h"
#include "host/text/composed_story.h"
#include "host/text/line_layout.h"
#include "host/text/line_room.h"

namespace tarnova {

/// What is known of a line in the column while that is open.
struct LineMark {
    std::size_t paragraph = 0;      // index into ComposeInput::paragraphs
    std::int32_t line = 0;          // of its paragraph
    std::size_t piece = 0;          // of the paragraph, with which it begins
    std::int32_t hyphensAbove = 0;  // lines directly above that end in a hyphen
    float indent = noIndent;        // from an "indent to here" above
    bool continuesLine = false;     // it is a further part of the line in front, beside an item
};

class ColumnCursor {
 public:
    ColumnCursor(const ComposeInput& input, ComposedStory& story) : input_(input), story_(story) { openColumns(); }

    [[nodiscard]] bool isPastEnd() const { return index_ >= input_.columns.size(); }
    [[nodiscard]] const PMRect& box() const { return input_.columns[index_].box; }
    [[nodiscard]] float width() const { return static_cast<float>(box().width()); }
    [[nodiscard]] std::size_t column() const { return index_; }
    /// The lines of the column so far.
    [[nodiscard]] const std::vector<LineMark>& marks() const { return marks_; }

    /// What is free of the column.
    [[nodiscard]] LineRooms& rooms() { return rooms_; }

    /// Baseline of a next line of this height, `space` points further down than leading alone would have it, and
    /// `moved` by what stands in its way.
    [[nodiscard]] float baselineFor(const LineHeight& height, float space, bool onGrid, float moved = 0);
    [[nodiscard]] bool fits(float baseline, const LineHeight& height) const {
        return baseline + height.descent <= static_cast<float>(box().bottom) + heightTolerance;
    }
    /// Adds a line, or the next part of one with the same baseline; items in it reach `below` deeper than its text.
    void add(const ComposedLine& line, const LineMark& mark, float below, bool onGrid);
    /// Takes the column's lines from `count` on away again, one at least, and gives the position where they began.
    std::int32_t keepLines(std::size_t count);

    /// Closes the column and goes to the next one that has room for text at all.
    void next();
    /// Leaves the column, or the columns up to the next frame or page.
    void leave(ParagraphStart where);
    /// True when text stands in the column, or in front of it in its frame or on its page.
    [[nodiscard]] bool isUsed(ParagraphStart where) const;
    /// Closes the last column; those behind it stay empty.
    void finish();

 private:
    [[nodiscard]] const TextFrameOptions& options() const { return *input_.columns[index_].options; }
    [[nodiscard]] bool isEmpty() const { return marks_.empty(); }
    [[nodiscard]] bool isUnusable() const { return !(box().width() > 0) || !(box().height() > 0); }
    [[nodiscard]] bool belongTogether(std::size_t a, std::size_t b, ParagraphStart where) const;
    void openColumns();
    void enter() { rooms_.enter(input_.wraps, input_.columns[index_]); }
    [[nodiscard]] float firstOffset(const LineHeight& height) const;
    [[nodiscard]] const BaselineGrid* grid();
    [[nodiscard]] float onGrid(float baseline);
    void alignLines();
    void spreadLines(float room);
    void move(ComposedLine& line, float down);

    const ComposeInput& input_;
    ComposedStory& story_;
    std::size_t index_ = 0;
    float baseline_ = 0;
    float below_ = 0;  // of the last line, items in it reach deeper than its text
    LineRooms rooms_;
    std::vector<LineMark> marks_;
    bool usesGrid_ = false;  // a line of the column stands on it
    bool gridIsRead_ = false;
    std::optional<BaselineGrid> grid_;  // of the column, once read
};

}  // namespace tarnova
