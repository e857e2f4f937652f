// Gives links another key: those of a range of text, or those of a page item with all that it holds.

#pragma once

#include <string_view>

#include "document/text_span.h"
#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// Gives each link of the engine mode's store in the range the key `key` (UTF-8, cut to 63 bytes). errFailed when the
/// document refuses.
[[nodiscard]] errorWord changeTextKeys(UIDRef story, textSpanRec range, std::string_view key, errorWord priorError);

/// The same for an item's own link, those of its text, and those of what it holds or what is anchored in it.
[[nodiscard]] errorWord changeFrameTreeKeys(UIDRef item, std::string_view key, errorWord priorError);

}  // namespace tarnova
