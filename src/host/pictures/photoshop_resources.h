// Image resource blocks ("8BIM"), which JPEG and TIFF files carry: the resolution and the paths in them.

#pragma once

#include <string_view>

#include "host/pictures/picture.h"

namespace tarnova {

/// Takes the paths, in a unit square around the picture, and the name of the one that clips. Blocks that can't be read
/// are left out.
void readPhotoshopPaths(std::string_view blocks, PictureInfo& info);

/// The resolution in the blocks; false when they have none.
bool readPhotoshopResolution(std::string_view blocks, RasterInfo& out);

}  // namespace tarnova
