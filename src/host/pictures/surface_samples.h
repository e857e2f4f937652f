// Pixels that cairo drew.

#pragma once

#include <cairo.h>

#include "host/pictures/picture.h"

namespace tarnova {

/// The pixels of an image surface of 32 bits a pixel without transparency.
[[nodiscard]] PictureSamples samplesOfSurface(cairo_surface_t* surface);

}  // namespace tarnova
