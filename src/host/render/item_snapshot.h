// An item drawn to a picture in memory.

#pragma once

#include <string>

#include "host/model/document_model.h"

namespace tarnova {

/// For `setItemDrawing`: what the item, with all that is in it, shows within its bounds, on white, as the page shows
/// it. `errFailed`: no such item, it has no area, its text can't be composed, or the resolution isn't one that a
/// picture of its size can have.
[[nodiscard]] errorWord drawItemTiff(const DocumentModel& document, UID item, double pixelsPerInch,
                                     std::string& outTiff);

}  // namespace tarnova
