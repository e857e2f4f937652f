#include "host/render/cairo_target.h"

#include <fmt/format.h>

namespace tarnova {

std::string cantBeWritten(const std::string& path, const std::string& reason) {
    return fmt::format("\"{}\" can't be written: {}", path, reason);
}

bool listForFile(const DocumentModel& document, UID page, const std::string& path, DisplayList& list, PageNotes* notes,
                 std::string& error) {
    if (!buildDisplayList(document, page, list)) {
        error = cantBeWritten(path, whyNoDisplayList(document, page));
        return false;
    }
    if (notes != nullptr) notes->overset.insert(notes->overset.end(), list.overset.begin(), list.overset.end());
    return true;
}

}  // namespace tarnova
