// The members of a link in a layout file, on a run of text or on a frame.

#pragma once

#include "document/text_attributes.h"
#include "host/files/json_values.h"
#include "host/files/json_writer.h"

namespace tarnova {

/// What a link of the store says when nothing else is written.
[[nodiscard]] TagAttribute::Content defaultTagContent(TextAttributeClass store);

struct ReadTag {
    TagAttribute::Content content;
    bool hasId = false;  // else the file leaves it to the reader
};

/// Reads a link. Throws LayoutFault.
[[nodiscard]] ReadTag readTag(const JsonValue& value, TextAttributeClass store);

/// Writes a link with all that it holds: as fields where they say everything, else with its record in base64.
void writeTag(JsonWriter& out, const TagAttribute& tag);

}  // namespace tarnova
