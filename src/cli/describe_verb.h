// What a layout holds, as JSON.

#pragma once

#include <string>
#include <string_view>

#include "host/model/document_model.h"

namespace tarnova {

/// One part ("pages", "layers", "items", "stories", "tags", "itemData") as an object with a member of that name; empty
/// when there is no such part.
[[nodiscard]] std::string describeAsJson(DocumentModel& layout, std::string_view what);

}  // namespace tarnova
