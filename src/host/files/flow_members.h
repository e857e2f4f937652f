// What text has to do with items, in a layout file: how one stands in its text, and how text runs around one.

#pragma once

#include "host/files/json_values.h"
#include "host/files/json_writer.h"
#include "host/model/page_item.h"

namespace tarnova {

/// A word, or an object with a "kind" and lengths. Both throw LayoutFault.
[[nodiscard]] AnchorOptions readAnchor(const JsonValue& value);
[[nodiscard]] TextWrap readWrap(const JsonValue& value);

/// Writes what isn't as usual.
void writeFlow(JsonWriter& out, const ItemFlow& flow);

}  // namespace tarnova
