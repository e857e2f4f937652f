// A picture as the bytes of a TIFF file (TIFF 6.0).

#pragma once

#include <cairo.h>

#include <string>

namespace tarnova {

/// The pixels of an image surface without transparency, as RGB in one deflated strip.
[[nodiscard]] std::string tiffBytes(cairo_surface_t* pixels, double pixelsPerInch);

}  // namespace tarnova
