// The question before a link without data takes away what it stands on.

#pragma once

#include <cstdint>

#include "document/document.h"
#include "tags/tag_record.h"

namespace tarnova {

enum class DeleteAnswer : std::uint8_t {
    keep = 1,
    remove = 2,
    notice = 3,  // a notice stands in its place
};

/// Asks when the run asks at all (`askBeforeDelete`), the preferences want it (`confirmDeletes`) and somebody watches;
/// otherwise it is removed. A preview that is taken back anyway doesn't ask. `pageEntry` is the position of the
/// link's page in the document.
[[nodiscard]] DeleteAnswer askDelete(const Document& document, std::int32_t pageEntry, const tagDataRec& tag);

}  // namespace tarnova
