// The names of files that hold a page each.

#pragma once

#include <cstdint>
#include <string>

namespace tarnova {

/// Name of a page's file: `path` itself for a single page, else the page's number before the extension ("out-007.png"),
/// with at least three digits and as many as the document's last number has. Numbers count from 1.
[[nodiscard]] std::string pageFilePath(const std::string& path, std::int32_t pageNumber, std::int32_t pageCount,
                                       bool single);

}  // namespace tarnova
