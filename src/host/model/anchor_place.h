// Where an anchored item lies in the frame that shows it.

#pragma once

#include "document/geometry.h"
#include "host/model/page_item.h"
#include "host/model/story.h"

namespace tarnova {

/// The top left corner of an item of this size, in the inner coordinates of the frame with these bounds.
[[nodiscard]] PMPoint placeOfAnchor(const AnchorOptions& options, const AnchorPoint& point, const PMRect& frame,
                                    PMPoint size);

}  // namespace tarnova
