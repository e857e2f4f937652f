// Which records a run takes: the session's range values and its record list. Positions count from `skipFirst`, as the
// numbers of records in a file do; a list says which record stands at each.
#pragma once

#include <cstdint>
#include <vector>

#include "data/record_range.h"
#include "engine/toolkit/types.h"

namespace tarnova {

struct dataSourceRec;

inline constexpr errorWord errRangeBehindFile = errorOfCode(-6020);  // no record of the range lies in the file
inline constexpr errorWord errListWithStack = 371;                   // a list can't be stacked over the range

/// Makes a range, or its list, the session's; both ends 0 for all records.
void useRecordRange(recordRangeRec range);

/// Number of the record at a position, from 0 in the file; recordListPad for a place without one. Without a list, and
/// outside of it, the position is the number.
[[nodiscard]] std::int32_t recordOfPosition(std::int32_t position, std::uint32_t skipFirst);

/// Records of the file without its header, and those selected: the length of the list, else all of them.
[[nodiscard]] errorWord rangeRecordCount(const dataSourceRec* source, std::uint32_t skipFirst,
                                         std::uint32_t& selectedCount, std::uint32_t& fileCount, errorWord priorError);

/// Fits the session's range or list to a file of `fileCount` records at the start of a run, and sets `totalRecords`.
/// Error: errRangeBehindFile.
[[nodiscard]] errorWord fitRangeToData(std::uint32_t fileCount, errorWord priorError);

}  // namespace tarnova
