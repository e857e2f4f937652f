// Where a full column may end, as its paragraphs want their lines kept together.

#pragma once

#include <cstdint>
#include <vector>

#include "host/text/column_cursor.h"
#include "host/text/compose_input.h"

namespace tarnova {

[[nodiscard]] inline bool keepsLines(const ParaFormat& format) {
    return format.keepLines != KeepLines::none || format.keepWithNext > 0;
}

/// How many of a column's lines stay in it. `next` is the line that has no room, and `linesLeft` says how many lines
/// its paragraph has from it on (as many as `leastLinesLeft` told are enough). What can't be had is given up: first the
/// whole paragraphs and those kept with others, then the first and last lines. At least one line stays, and all when
/// nothing is to be kept.
[[nodiscard]] std::size_t linesThatStay(const ComposeInput& input, const std::vector<LineMark>& lines,
                                        const LineMark& next, std::int32_t linesLeft);

}  // namespace tarnova
