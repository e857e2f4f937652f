// Page ranges as a person writes them: "1-3,5".

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarnova {

/// Reads numbers and ranges, which count from 1 and are separated by commas; "4-" goes to the last page. `pages` gets
/// indexes from 0, each once, in document order. False: `error` says for people what is wrong with which part, and
/// `pages` is empty.
[[nodiscard]] bool parsePageRange(std::string_view text, std::int32_t pageCount, std::vector<std::int32_t>& pages,
                                  std::string& error);

}  // namespace tarnova
