// Placed pictures in a layout file.

#pragma once

#include <string>

#include "host/files/json_values.h"
#include "host/files/json_writer.h"
#include "host/model/page_item.h"

namespace tarnova {

inline constexpr std::size_t pictureFileBytesLimit = 4096;

// Readers of the members of a picture. Throw LayoutFault.
/// The path of a picture's file.
[[nodiscard]] std::string pictureFileOf(const JsonValue& value);
/// The page of a PDF file, from 0; in the layout it counts from 1.
[[nodiscard]] std::int32_t pictureFilePageOf(const JsonValue& value);
[[nodiscard]] clipSettingsRec readClip(const JsonValue& value);

/// Writes what was placed: the file, its bounds, page and clip.
void writeGraphic(JsonWriter& out, const PlacedGraphic& graphic);

}  // namespace tarnova
