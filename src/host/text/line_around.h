// One line of a column in which items stand that text runs around: how far down it goes, and its parts beside them.

#pragma once

#include <cstddef>
#include <vector>

#include "host/text/column_cursor.h"
#include "host/text/compose_input.h"
#include "host/text/line_layout.h"
#include "host/text/line_room.h"
#include "host/text/paragraph.h"

namespace tarnova {

/// The next line of a paragraph.
struct LineTask {
    const ComposeInput& input;
    Paragraph& paragraph;
    const ParaFormat& format;
    const TextStyle* emptyStyle;  // of the return, when the paragraph has no text
    LineMeasure measure;          // in the whole width of the column
    std::size_t piece;            // with which it begins
    float spaceBefore;            // from the line above, beside its leading
    bool onGrid;
};

/// A line, or the part of one that stands in one stretch beside items, before it is placed.
struct LinePart {
    LineMeasure measure;
    LineExtent extent;
};

class LineAround {
 public:
    LineAround(const LineTask& task, ColumnCursor& cursor) : task_(task), cursor_(cursor) {}

    std::vector<LinePart> parts;
    LineHeight height;
    float baseline = 0;

    /// False: the column has no room. The line is tried as high as its first word, then as high as what it takes; and
    /// where nothing is free, behind the next item. So each step makes it higher or moves it down.
    [[nodiscard]] bool find();

 private:
    static constexpr int tryLimit = 1000;

    [[nodiscard]] float left() const { return static_cast<float>(cursor_.box().left); }
    [[nodiscard]] LineMeasure measureOf(const LineRoom& room, std::int32_t hyphensAbove) const;
    void fill(const std::vector<LineRoom>& rooms);
    [[nodiscard]] LineHeight heightOfParts(const std::vector<LinePart>& of) const;

    const LineTask& task_;
    ColumnCursor& cursor_;
};

}  // namespace tarnova
