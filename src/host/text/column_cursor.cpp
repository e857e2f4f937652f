#include "host/text/column_cursor.h"

#include <algorithm>
#include <cmath>

namespace tarnova {

float ColumnCursor::baselineFor(const LineHeight& height, float space, bool gridded, float moved) {
    const float wanted =
        isEmpty() ? static_cast<float>(box().top) + firstOffset(height) : baseline_ + below_ + space + height.leading;
    return gridded ? onGrid(wanted + moved) : wanted + moved;
}

float ColumnCursor::firstOffset(const LineHeight& height) const {
    const auto least = static_cast<float>(options().leastFirstBaseline);
    switch (options().firstBaseline) {
        case FirstBaseline::capHeight:
            return std::max(height.capHeight, least);
        case FirstBaseline::xHeight:
            return std::max(height.xHeight, least);
        case FirstBaseline::leading:
            return std::max(height.leading, least);
        case FirstBaseline::fixed:
            return least;
        default:
            return std::max(height.ascent, least);
    }
}

/// The grid of the column's frame, or null where none can be.
const BaselineGrid* ColumnCursor::grid() {
    if (!gridIsRead_) {
        const ColumnBox& column = input_.columns[index_];
        gridIsRead_ = true;
        grid_ = options().grid;
        if (grid_) {
            grid_->start += box().top;
        } else if (input_.places != nullptr) {
            grid_ = input_.places->gridOf(column.frame);
            story_.dependsOnFramePlaces = true;
        }
    }
    return grid_ ? &*grid_ : nullptr;
}

/// The first height of the grid that isn't above the baseline.
float ColumnCursor::onGrid(float baseline) {
    const BaselineGrid* its = grid();
    if (its == nullptr) return baseline;
    const double steps = std::ceil((static_cast<double>(baseline - heightTolerance) - its->start) / its->step);
    return static_cast<float>(its->start + steps * its->step);
}

void ColumnCursor::add(const ComposedLine& line, const LineMark& mark, float below, bool gridded) {
    ComposedColumn& column = story_.columns[index_];
    if (column.lineCount == 0) {
        column.firstLine = static_cast<std::uint32_t>(story_.lines.size());
        column.start = line.start;
    }
    ++column.lineCount;
    column.limit = line.limit;
    baseline_ = line.baseline;
    below_ = below;
    usesGrid_ = usesGrid_ || gridded;
    story_.lines.push_back(line);
    marks_.push_back(mark);
}

std::int32_t ColumnCursor::keepLines(std::size_t count) {
    ComposedColumn& column = story_.columns[index_];
    const std::size_t first = column.firstLine + count;
    const ComposedLine& dropped = story_.lines[first];
    column.limit = dropped.start;
    column.lineCount = static_cast<std::uint32_t>(count);
    while (!story_.anchors.empty() && story_.anchors.back().position >= dropped.start)
        story_.anchors.pop_back();
    if (dropped.firstRun < story_.runs.size()) {
        story_.glyphs.resize(story_.runs[dropped.firstRun].firstGlyph);
        story_.runs.resize(dropped.firstRun);
    }
    story_.lines.resize(first);
    marks_.resize(count);
    return column.limit;
}

void ColumnCursor::next() {
    alignLines();
    const std::int32_t limit = story_.columns[index_].limit;
    marks_.clear();
    usesGrid_ = gridIsRead_ = false;
    do {
        ++index_;
        if (isPastEnd()) return;
        ComposedColumn& column = story_.columns[index_];
        column.start = column.limit = limit;
        column.firstLine = static_cast<std::uint32_t>(story_.lines.size());
    } while (isUnusable());
    enter();
}

void ColumnCursor::leave(ParagraphStart where) {
    const std::size_t from = index_;
    do {
        next();
    } while (!isPastEnd() && where != ParagraphStart::nextColumn && belongTogether(from, index_, where));
}

bool ColumnCursor::isUsed(ParagraphStart where) const {
    for (std::size_t at = index_ + 1; at-- > 0 && belongTogether(at, index_, where);)
        if (story_.columns[at].lineCount > 0) return true;
    return false;
}

/// Two columns are one column, lie in one frame, or on one page.
bool ColumnCursor::belongTogether(std::size_t a, std::size_t b, ParagraphStart where) const {
    const ColumnBox &first = input_.columns[a], &second = input_.columns[b];
    if (a == b || where == ParagraphStart::nextColumn) return a == b;
    if (first.frameIndex == second.frameIndex) return true;
    if (where != ParagraphStart::nextPage || input_.places == nullptr) return false;
    story_.dependsOnFramePlaces = true;
    const UID page = input_.places->pageOf(first.frame);
    return page != kInvalidUID && page == input_.places->pageOf(second.frame);
}

void ColumnCursor::finish() {
    while (!isPastEnd())
        next();
}

void ColumnCursor::openColumns() {
    constexpr std::size_t usualLines = 64;
    marks_.reserve(usualLines);
    story_.columns.reserve(input_.columns.size());
    for (const ColumnBox& source : input_.columns) {
        ComposedColumn column;
        column.frame = source.frame;
        column.frameIndex = source.frameIndex;
        column.columnIndex = source.columnIndex;
        column.box = source.box;
        story_.columns.push_back(column);
    }
    index_ = input_.start.column;
    for (std::size_t i = 0; i < input_.linesInFront.size(); ++i)
        story_.columns[i].lineCount = input_.linesInFront[i];
    if (isPastEnd()) return;
    story_.columns[index_].start = story_.columns[index_].limit = input_.start.position;
    if (isUnusable()) {
        next();
    } else {
        enter();
    }
}

/// Moves the column's lines down as its vertical alignment wants them, and no line off its grid or away from an item
/// that it stands beside.
void ColumnCursor::alignLines() {
    const VerticalAlignment alignment = options().verticalAlignment;
    if (alignment == VerticalAlignment::top || isEmpty() || !rooms_.isWhole()) return;
    const ComposedLine& last = story_.lines.back();
    const float room = static_cast<float>(box().bottom) - (last.baseline + last.descent);
    if (alignment == VerticalAlignment::justify) {
        if (!usesGrid_) spreadLines(room);
        return;
    }
    float shift = alignment == VerticalAlignment::center ? room / 2 : room;
    if (usesGrid_ && grid() != nullptr) {
        const auto step = static_cast<float>(grid()->step);
        shift = std::floor((shift + heightTolerance) / step) * step;
    }
    for (std::size_t i = story_.columns[index_].firstLine; i < story_.lines.size(); ++i)
        move(story_.lines[i], shift);
}

/// Puts `room` between the lines: between paragraphs as far as the frame allows it, what is left between all lines.
void ColumnCursor::spreadLines(float room) {
    if (marks_.size() < 2 || !(room > 0)) return;
    const auto gaps = static_cast<float>(marks_.size() - 1);
    const auto borders = static_cast<float>(
        std::count_if(marks_.begin() + 1, marks_.end(), [](const LineMark& mark) { return mark.line == 0; }));
    const float perBorder =
        borders > 0 ? std::min(static_cast<float>(options().paragraphSpaceLimit), room / borders) : 0.0F;
    const float perGap = (room - perBorder * borders) / gaps;
    float shift = 0;
    for (std::size_t i = 1; i < marks_.size(); ++i) {
        shift += perGap + (marks_[i].line == 0 ? perBorder : 0);
        move(story_.lines[story_.columns[index_].firstLine + i], shift);
    }
}

void ColumnCursor::move(ComposedLine& line, float down) {
    line.baseline += down;
    for (std::uint32_t run = 0; run < line.runCount; ++run)
        story_.runs[line.firstRun + run].y += down;
}

}  // namespace tarnova
