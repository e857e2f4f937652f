// Draws placed pictures with cairo: pixels as they are, pages of PDF as vectors where the surface has them.

#pragma once

#include <cairo.h>

#include "host/pictures/picture.h"

namespace tarnova {

/// Draws a picture on a context whose units are the picture's own points. What is made for it is kept, within a bound,
/// for the next page. False: its contents can't be read, and nothing is drawn.
[[nodiscard]] bool drawPicture(cairo_t* context, const Picture& picture);

}  // namespace tarnova
