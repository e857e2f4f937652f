// What a run counts. A driver that merges parts of a run in forks of the program adds their counts to the program's.

#pragma once

#include <cstdint>

namespace tarnova {

struct runCountersRec {
    std::uint32_t fillerCount = 0;
    std::uint32_t noDataCount = 0;
    std::uint32_t badTagCount = 0;
    std::uint32_t pageTotal = 0;  // pages that count in printed numbering
    std::uint32_t pageTotalOfFile = 0;
    std::uint32_t paddingUsed = 0;  // 1 once a slot asked for a record behind the range
};

/// The session's counts.
[[nodiscard]] runCountersRec runCounters();

/// Adds to the session's counts what was counted elsewhere from `begin` to `end`.
void addRunCounters(const runCountersRec& begin, const runCountersRec& end);

}  // namespace tarnova
