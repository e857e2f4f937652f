// The drawing of items to pictures, which the model asks for and the outputs do.

#pragma once

#include <string>

#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

class DocumentModel;

/// Draws an item as `SnapshotUtils::snapshotItem` says.
using ItemDrawing = errorWord (*)(const DocumentModel& document, UID item, double pixelsPerInch, std::string& outTiff);

/// Who draws; said once by the program. Until then, and with null, items can't be drawn.
void setItemDrawing(ItemDrawing drawing);
[[nodiscard]] ItemDrawing itemDrawing();

}  // namespace tarnova
