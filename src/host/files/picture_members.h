// Placed pictures in a layout file.

#pragma once

#include <string>

#include "host/files/json_values.h"
#include "host/files/json_writer.h"
#include "host/model/page_item.h"

namespace tarnova {

// Readers of the members of a picture. Throw LayoutFault.
/// The path of a picture's file.
[[nodiscard]] std::string pictureFileOf(const JsonValue& value);
/// The page of a PDF file, from 0; in the layout it counts from 1.
[[nodiscard]] std::int32_t pictureFilePageOf(const JsonValue& value);
[[nodiscard]] std::uint32_t pictureCropOf(const JsonValue& value);
/// Settings and outline.
void readClip(const JsonValue& value, PlacedGraphic& out);
/// What the layout leaves out and the file says: its bounds (unless `hasBounds`), and the outline of a clip. Without
/// the file the bounds are `frame`, those of the frame's shape.
void completeGraphic(PlacedGraphic& graphic, bool hasBounds, const PMRect& frame, const std::string& folder);

/// Writes what was placed: the file by this path, its bounds, page and clip.
void writeGraphic(JsonWriter& out, const PlacedGraphic& graphic, const std::string& path);

}  // namespace tarnova
