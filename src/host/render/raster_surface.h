// Decoded pixels as a picture for cairo.

#pragma once

#include "host/pictures/picture.h"
#include "host/render/cairo_target.h"

namespace tarnova {

/// The pixels in sRGB: through the picture's profile where it has one, else CMYK as (1 - C)(1 - K) and the other
/// colours as they are. A picture larger than cairo takes is made smaller by a whole factor. Null when there is no
/// memory for it.
[[nodiscard]] SurfacePtr rasterSurface(const PictureSamples& samples, const std::string& iccProfile);

}  // namespace tarnova
