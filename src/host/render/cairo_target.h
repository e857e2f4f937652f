// What the outputs that draw with cairo have in common.

#pragma once

#include <cairo.h>

#include <memory>
#include <string>
#include <vector>

#include "host/render/display_list.h"
#include "host/render/shown_picture.h"

namespace tarnova {

using SurfacePtr = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using ContextPtr = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;

/// "path" can't be written: reason.
[[nodiscard]] std::string cantBeWritten(const std::string& path, const std::string& reason);

/// The list of a page that shall be drawn to `path`. Text that doesn't fit is appended to `notes`, which may be null.
/// False: `error` has a message for people.
[[nodiscard]] bool listForFile(const DocumentModel& document, UID page, const std::string& path, DisplayList& list,
                               PageNotes* notes, std::string& error);

}  // namespace tarnova
