// The record ranges that were used lately, as the preferences keep them for people to choose again.
#pragma once

#include <string_view>

#include "engine/session/preference_records.h"
#include "engine/toolkit/pm_string.h"

namespace tarnova {

inline constexpr std::size_t rangeTextLimit = 1024;  // characters of a range text that is kept or read from a file

/// Puts a range in front of the ten; one that is among them moves there, and else the tenth falls away. `used` is set.
void rememberRange(const recentRangeRec& range);

/// Keeps the text of a record list with what goes with it. A text of more than rangeTextLimit bytes is cut behind its
/// last whole item.
void rememberRangeText(std::string_view text, const recentRangeRec& settings);

/// What a range says, for a list of choices: "Records 1 to 50, step 2, first record skipped".
[[nodiscard]] PMString rangeSummary(const recentRangeRec& range);

}  // namespace tarnova
