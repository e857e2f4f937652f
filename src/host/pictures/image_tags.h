// The few tags of an Exif block that say how a picture is shown (TIFF 6.0, section 8; Exif 2.3).

#pragma once

#include <string_view>

#include "host/pictures/picture.h"

namespace tarnova {

/// Takes orientation and, when the block has it, resolution. A block that can't be read changes nothing: it is a remark
/// on the picture and not the picture.
void readExif(std::string_view block, RasterInfo& out, bool withResolution);

}  // namespace tarnova
