// Ranges of records as people write them: "1-5,8,10-12".
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "engine/toolkit/pm_string.h"

namespace tarnova {

/// The most records that a list holds. A longer one is refused as one with a number that can't be read.
inline constexpr std::size_t recordListLimit = 10'000'000;

/// Why a range text is refused.
enum class rangeFault : std::uint8_t {
    none,
    empty,
    characters,  // other than digits, commas, hyphens and blanks
    sequence,    // a sequence without its first or last number
    order,       // numbers that don't rise
    number,      // one that can't be read
    duplicate,
    noNumbers,
    recordZero
};

/// What a range text says. Numbers count from 1, values of the list from 0.
struct recordRangeRec {
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    std::vector<std::int32_t> list;  // empty for a plain range; else `first` is 1 and `last` its length
};

/// Reads a range text: numbers and sequences, in rising order without repeats. One item without a comma is a plain
/// range, unless `forceList`. After a fault `range` stays as it is.
[[nodiscard]] rangeFault readRangeText(std::string_view text, recordRangeRec& range, bool forceList = false);

/// The same, and shows the fault.
[[nodiscard]] rangeFault parseRangeText(std::string_view text, recordRangeRec& range, bool forceList = false);

/// String key of what a fault says to people.
[[nodiscard]] const char* rangeFaultKey(rangeFault fault);

/// The values of a list as a range text, as they stand: three or more in a row as a sequence.
[[nodiscard]] PMString rangeTextOf(const std::vector<std::int32_t>& list);

}  // namespace tarnova
