// The reference job of the benchmarks: a one-page letter with a vector logo, a static text, three rules and six links,
// one of which stands twice in a wrapped paragraph; and the same job for pdfTeX.

#pragma once

#include <cstdint>
#include <string>

namespace tarnova::bench {

/// Writes letters.csv (a header and `records` records), letter.tvd and letter.tex into the folder.
void writeLetterJob(const std::string& folder, std::uint32_t records);

}  // namespace tarnova::bench
