// Pixels to a TIFF file.

#pragma once

#include <string>

#include "host/pictures/picture.h"

namespace tarnova {

/// The bytes of a TIFF file, packed without loss, of any samples but bilevel ones. Empty when there are no pixels.
[[nodiscard]] std::string writeTiff(const PictureSamples& samples, double pixelsPerInch);

}  // namespace tarnova
