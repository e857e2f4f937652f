// A page as pixels.

#pragma once

#include <string>
#include <vector>

#include "host/render/cairo_target.h"
#include "host/render/shown_picture.h"

namespace tarnova {

/// Draws a page on white. Null, with a reason for people, when the resolution isn't one that pictures have
/// (png_output.h), or the page has no area or too much of it. Pictures that can't be drawn are appended to `problems`.
[[nodiscard]] SurfacePtr pageSurface(const DisplayList& page, double dpi, std::vector<PictureProblem>& problems,
                                     std::string& reason);

}  // namespace tarnova
