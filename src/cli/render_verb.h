// Drawing the pages of a layout to a file, by the extension of its name.

#pragma once

#include <cstdint>
#include <string>

#include "host/model/document_model.h"

namespace tarnova {

struct verbContext;

/// Draws pages ("1-3,5"; empty: all) to PDF, PostScript, or a file a page. False with the reason in `error`.
[[nodiscard]] bool exportPages(const DocumentModel& layout, const std::string& path, const std::string& pageRange,
                               std::int32_t& pageCount, std::string& error);

/// Whether an output's name ends in `.tvd` or in an extension of the pages' outputs. The verb has failed when not.
[[nodiscard]] bool outputFits(const std::string& path, verbContext& context);
/// Saves a layout as a `.tvd`, or draws all its pages. False after telling why on standard error.
[[nodiscard]] bool writeOutput(DocumentModel& layout, const std::string& path);

}  // namespace tarnova
