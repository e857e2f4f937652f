// Finds the delimiters of a data file by counting, and compares them with what its definition says.
#pragma once

#include <cstdint>

#include "definitions/record_def.h"
#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr std::size_t scanFieldCandidateCount = 5;   // tab, comma, blank, semicolon, caret: as fileType 0 to 4
inline constexpr std::size_t scanRecordCandidateCount = 3;  // CR, CR LF, LF: as osType 0 to 2
inline constexpr std::uint32_t scanFallbackBytes = 10000;   // read when the size of the file can't be told

inline constexpr errorWord errScanMemory = 111;

/// What scanDelimiters counts outside of double quotes.
struct delimiterCounts {
    std::uint32_t field[scanFieldCandidateCount];
    std::uint32_t record[scanRecordCandidateCount];
    /// For each record candidate, the fewest and most matches of a field candidate between two of its matches.
    std::uint32_t fieldMinimum[scanRecordCandidateCount][scanFieldCandidateCount];
    std::uint32_t fieldMaximum[scanRecordCandidateCount][scanFieldCandidateCount];
    bool endOfFile;  // the scan came to the end of the file
};

/// What the counts say about a file.
struct delimiterDecision {
    std::int16_t osType;       // -1: none found
    std::int16_t fileType;     // -1: none found
    std::uint32_t fieldCount;  // most fields in a record
};

/// Counts the candidates in a file. Errors: 13, 16, errScanMemory; pendingErrorParam names the file.
[[nodiscard]] errorWord scanDelimiters(const char* path, delimiterCounts& counts, errorWord priorError);

/// Counts the record delimiters only, which is much faster; all other counts are 0. Errors: as scanDelimiters.
[[nodiscard]] errorWord scanRecordDelimiters(const char* path, delimiterCounts& counts, errorWord priorError);

/// osType of the record delimiter with the highest count, the first of a tie; -1 when none was found.
[[nodiscard]] std::int16_t mostFrequentRecordDelimiter(const delimiterCounts& counts);

/// What the counts say. Error: errNoFieldDelimiter (96) when `definition` wants a custom delimiter, has none, and no
/// other was found.
[[nodiscard]] errorWord decideDelimiters(const delimiterCounts& counts, const recordDefRec& definition,
                                         delimiterDecision& decision, errorWord priorError);

/// Compares the file with the definition, when the preference verifyDataFiles is on; otherwise `goOn` is true and
/// nothing else is touched. Differences are asked about when `interactive`. `openStatus` becomes 1, or -4 when `goOn`
/// is false; `report` (a Str255, may be null) gets a text for each difference appended.
[[nodiscard]] errorWord verifyDataFile(const recordDefRec& definition, std::uint8_t interactive, const char* path,
                                       bool& goOn, std::int16_t& openStatus, std::uint8_t* report,
                                       errorWord priorError);

}  // namespace tarnova
