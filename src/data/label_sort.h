// Label sort: the order of records in which sheets of labels, printed, cut and stacked, give piles that stand in order.
#pragma once

#include <cstdint>
#include <vector>

#include "document/uid.h"
#include "engine/session/preference_records.h"
#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr errorWord errLabelSort = errorOfCode(-6082);  // the settings can't be read or used

/// The settings that a document holds. errLabelSort when it has none, or none that a sheet can have: a side of 0, or
/// more labels on a sheet than recordListLimit.
[[nodiscard]] errorWord documentLabelSort(UIDRef document, labelSortRec& sort, errorWord priorError);

/// `list` in the order of its sheets, with recordListPad for blank labels. The length is a whole number of sheets, and
/// each value of `list` comes once. `sort` must be one that documentLabelSort gives.
[[nodiscard]] std::vector<std::int32_t> labelSorted(const std::vector<std::int32_t>& list, const labelSortRec& sort);

/// Sorts the session's record list by `sort`, by the preferences' settings when it is null. Without a list the range
/// becomes one; it must be fitted to the data. Error: errLabelSort.
[[nodiscard]] errorWord applyLabelSort(const labelSortRec* sort, errorWord priorError);

}  // namespace tarnova
