// Pages as PNG pictures, for proofs and previews: drawn with cairo from the same display list and the same positioned
// glyphs as the PDF. Colours are RGB; CMYK is converted as R = (1 - C)(1 - K), without a profile.

#pragma once

#include <string>
#include <vector>

#include "document/uid.h"
#include "host/render/display_list.h"
#include "host/render/shown_picture.h"

namespace tarnova {

inline constexpr double pngDefaultDpi = 150;
inline constexpr double pngMinimumDpi = 1;
inline constexpr double pngMaximumDpi = 2400;

/// Draws one page and writes it to `path` through a temporary file. Text that doesn't fit isn't drawn and is told
/// in `notes`, which may be null, beside pictures that can't be drawn. False: `error` has a message for people, and an
/// older file is still there.
[[nodiscard]] bool writePagePng(const DocumentModel& document, UID page, const std::string& path, double dpi,
                                PageNotes* notes, std::string& error);
[[nodiscard]] bool writePagePng(const DisplayList& page, const std::string& path, double dpi, std::string& error);

}  // namespace tarnova
