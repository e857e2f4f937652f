// The clip of a picture from its content: what of it stays visible.
//
// Detected edges: a pixel is visible when it is darker than white by more than the threshold, so that its lightness
// (0 to 255, over white) is below 255 - threshold. Pixels that are joined only by a corner aren't joined. The outline
// runs along their sides and is then straightened by at most `tolerance` pixels. It is found on a raster of at most
// `traceSideLimit` pixels a side, to which larger pictures are averaged. A positive inset moves it inward by so many
// points, a negative one outward.
//
// `invert` shows what the outline leaves out. `insideEdges` keeps holes; without it only the outermost outlines count.

#pragma once

#include "document/document_pictures.h"
#include "host/pictures/picture.h"

namespace tarnova {

inline constexpr std::uint32_t traceSideLimit = 1024;

/// The outline in the picture's coordinates, to be filled even-odd; of settings with detected edges or an embedded
/// path. False: the picture can't be decoded, nothing of it would be visible, or it has no such path.
[[nodiscard]] bool makeClipOutline(const Picture& picture, const clipSettingsRec& settings, PictureOutline& out);

}  // namespace tarnova
