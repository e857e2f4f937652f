// Pages as SVG 1.1 pictures: the shapes and the outlines of the glyphs, from the same display list as the other
// outputs. Lengths are points, colours RGB as in the PNG; the ground stays transparent. Text is outlines, so the file
// shows the same everywhere and holds no characters. Text with links to the web has areas that lead there. Coordinates
// are rounded to 1/256 point.

#pragma once

#include <string>
#include <vector>

#include "document/uid.h"
#include "host/render/display_list.h"
#include "host/render/shown_picture.h"

namespace tarnova {

/// Draws one page and writes it to `path` through a temporary file. The same page gives the same bytes. Text that
/// doesn't fit isn't drawn and is told in `notes`, which may be null, beside pictures that can't be drawn. False:
/// `error` has a message for people, and an older file is still there.
[[nodiscard]] bool writePageSvg(const DocumentModel& document, UID page, const std::string& path, PageNotes* notes,
                                std::string& error);
[[nodiscard]] bool writePageSvg(const DisplayList& page, const std::string& path, std::string& error);

}  // namespace tarnova
