// Finding records by what one variable link gives in them.
#pragma once

#include <cstdint>
#include <string_view>

#include "engine/toolkit/pm_string.h"

namespace tarnova {

enum class filterType : std::uint16_t { noData = 0, data = 1, contains = 2 };

/// Walks the records of the current definition's data (those of the record list where one is active) and notes those in
/// which the link gives no data, gives data, or gives a value that contains `wanted` whatever the case. `rangeText`
/// gets their numbers as people count, from 1 behind a skipped header. Gives how many there are. A failure is shown;
/// one on the way ends the walk, and what was found so far stands. `cancelled`: the user was asked for a data file and
/// chose none. The definition's import table is in force afterwards.
[[nodiscard]] std::uint32_t filterRecords(std::string_view linkName, filterType type, std::string_view wanted,
                                          std::uint32_t skipFirst, PMString& rangeText, bool& cancelled);

}  // namespace tarnova
