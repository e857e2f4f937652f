// The PDF options of a frame: which page of a placed PDF it shows, how that is cropped, and whether its ground is
// transparent. They lie in the frame's item data as JSON.

#pragma once

#include "document/document_pictures.h"
#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// The frame's options. Without any, or with ones that can't be read: page 1, with crop and ground as the preferences
/// have them. The older form of an entry, 4 bytes, holds the page alone.
[[nodiscard]] pdfPlacePrefsRec framePdfOptions(UIDRef frame);

/// Stores the options with the frame. errFailed when the document refuses.
[[nodiscard]] errorWord setFramePdfOptions(UIDRef frame, const pdfPlacePrefsRec& options, errorWord priorError);

}  // namespace tarnova
