#include "host/text/composed_story.h"

#include <algorithm>

namespace tarnova {

std::int32_t ComposedStory::columnOf(std::int32_t position) const {
    if (position < 0 || position >= shownLimit) return -1;
    const auto behind =
        std::upper_bound(columns.begin(), columns.end(), position,
                         [](std::int32_t at, const ComposedColumn& column) { return at < column.limit; });
    return behind == columns.end() ? -1 : static_cast<std::int32_t>(behind - columns.begin());
}

}  // namespace tarnova
