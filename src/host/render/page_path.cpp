#include "host/render/page_path.h"

#include <fmt/format.h>

#include <algorithm>

namespace tarnova {

std::string pageFilePath(const std::string& path, std::int32_t pageNumber, std::int32_t pageCount, bool single) {
    if (single) return path;
    const std::size_t slash = path.rfind('/');
    const std::size_t dot = path.rfind('.');
    const bool hasExtension = dot != std::string::npos && (slash == std::string::npos || dot > slash);
    const std::size_t stem = hasExtension ? dot : path.size();
    const std::size_t digits = std::max<std::size_t>(3, fmt::formatted_size("{}", pageCount));
    return fmt::format("{}-{:0{}}{}", path.substr(0, stem), pageNumber, digits, path.substr(stem));
}

}  // namespace tarnova
