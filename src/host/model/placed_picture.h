// From a picture in a document to the file behind it.

#pragma once

#include <string>

#include "host/model/page_item.h"
#include "host/pictures/picture_library.h"

namespace tarnova {

/// The file's path from the root; a relative one is taken from `documentFolder`. Empty for a picture that the document
/// holds.
[[nodiscard]] std::string pathOfGraphic(const PlacedGraphic& graphic, const std::string& documentFolder);

/// The picture to draw, from the shared library; or why there is none.
[[nodiscard]] OpenedPicture openGraphic(const PlacedGraphic& graphic, const std::string& documentFolder);

/// An outline of a picture as the path of an item, by such a matrix.
[[nodiscard]] std::vector<SubPath> subPathsOf(const PictureOutline& outline, const PMMatrix& toItem);

/// Maps the coordinates of a picture of this size to those of the item that shows it.
[[nodiscard]] PMMatrix pictureToItem(const PlacedGraphic& graphic, PMPoint pictureSize);

/// How the file stands to what was placed. A picture that the document holds, or of whose file it knows no date, is
/// never out of date.
[[nodiscard]] LinkStatus linkStatusOf(const PlacedGraphic& graphic, const std::string& documentFolder);

}  // namespace tarnova
