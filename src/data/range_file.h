// Files of record numbers: text with numbers and sequences, a line or several, as people write ranges.
#pragma once

#include <string>

#include "engine/toolkit/pm_string.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// Reads the file at `path` as a range text: line ends become commas. A file with more than rangeTextLimit characters,
/// and one whose text parseRangeText refuses, is shown, gives errFailed and leaves `rangeText` alone. One that can't be
/// read gives the error of that.
[[nodiscard]] errorWord readRangeFile(const std::string& path, PMString& rangeText, errorWord priorError);

/// Lets the user choose such a file. Nothing is read when `cancelled`.
[[nodiscard]] errorWord importRangeFile(PMString& rangeText, bool& cancelled, errorWord priorError);

}  // namespace tarnova
