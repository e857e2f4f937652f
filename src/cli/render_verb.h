// Drawing the pages of a layout to a file, by the extension of its name.

#pragma once

#include <cstdint>
#include <string>

#include "host/model/document_model.h"

namespace tarnova {

/// Draws pages ("1-3,5"; empty: all) to PDF, PostScript, or a file a page. False with the reason in `error`.
[[nodiscard]] bool exportPages(const DocumentModel& layout, const std::string& path, const std::string& pageRange,
                               std::int32_t& pageCount, std::string& error);

}  // namespace tarnova
