// The members of a link in a layout file, on a run of text or on a frame.

#pragma once

#include <string>
#include <string_view>

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

/// Reads the link of a frame: the item data block that holds its record and nothing else. Throws LayoutFault.
[[nodiscard]] std::string readFrameTag(const JsonValue& value);

/// Writes a block as the link that `readFrameTag` makes it of. False, with nothing written, when the block holds
/// anything else.
[[nodiscard]] bool writeFrameTag(JsonWriter& out, const char* name, std::string_view block);

/// Writes a link with all that it holds: as fields where they say everything, else with its record in base64.
void writeTag(JsonWriter& out, const TagAttribute& tag);

}  // namespace tarnova
