// The hyperlinks of a page: which areas of its text lead where.

#pragma once

#include <string>
#include <vector>

#include "document/geometry.h"
#include "host/model/link_target.h"
#include "host/render/display_list.h"

namespace tarnova {

/// The text of one link on one line.
struct PageLink {
    LinkTarget target;
    PMPoint corners[4];  // points from the page's top left, y downward: bottom left, bottom right, top right, top left
};

/// The links in the order of the page's items and lines; none cost nothing.
[[nodiscard]] std::vector<PageLink> linksOf(const DisplayList& page);

/// The upright rectangle around the corners.
[[nodiscard]] PMRect boundsOf(const PageLink& link);
/// True when the corners are those of that rectangle.
[[nodiscard]] bool isUpright(const PageLink& link);

}  // namespace tarnova
