// Files of running numbers, as data for jobs that print nothing else.

#pragma once

#include <string>

#include "engine/toolkit/types.h"
#include "merge/keyword_links.h"

namespace tarnova {

/// Makes the file anew: a header line, then a line for each number from `options.start` to `options.end`, both of them
/// too, upward or downward, in the form of the options. Lines end in CR LF; the text is UTF-8. Shows its progress where
/// the preferences want that. Errors: 72 (it can't be made), 73 (not opened), those of writing; what was written stays.
[[nodiscard]] errorWord writeNumberFile(const std::string& path, const numberingOptionsRec& options,
                                        std::string_view pad, errorWord priorError);

}  // namespace tarnova
