// Values of text links that are imported: texts with formats of their own, and articles that the value names.

#pragma once

#include <cstdint>
#include <string_view>

#include "document/uid.h"
#include "engine/toolkit/types.h"
#include "merge/tag_value.h"

namespace tarnova {

/// Imports a value, `text` its characters, in place of `count` characters, through the filter of its link: tagged text
/// with its head, RTF, XPress Tags, the first filter that takes it, or plain text. `outLength` gets how many characters
/// it is now. Errors: errImportFilter.
[[nodiscard]] errorWord importFormattedValue(UIDRef story, std::int32_t start, std::int32_t count,
                                             const tagValueRec& value, std::u32string_view text,
                                             std::int32_t& outLength);

/// Whether a value is imported: it was found, and its link has a filter or names files. Tests of lines show the path.
[[nodiscard]] bool importsValue(const tagValueRec& value);

/// Imports such a value, `text` its characters, in place of `count` characters. `imported` is false when nothing took
/// their place: the article isn't there and the user, if asked, goes on without it. Bit 0 of `cancel` is set when he
/// doesn't. Errors: errImportFilter.
[[nodiscard]] errorWord importValue(UIDRef story, std::int32_t start, std::int32_t count, const tagValueRec& value,
                                    std::u32string_view text, bool& imported, std::uint16_t& cancel);

}  // namespace tarnova
