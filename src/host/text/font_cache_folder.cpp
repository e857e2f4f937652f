#include "host/text/font_cache_folder.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace tarnova {

namespace {

namespace fs = std::filesystem;

/// True for a folder that can be written, or made below one that can: fontconfig makes its own.
bool canBeWritten(const std::string& folder) {
    std::error_code unreadable;
    for (fs::path at = folder; !at.empty(); at = at.parent_path()) {
        if (fs::exists(at, unreadable)) return fs::is_directory(at, unreadable) && ::access(at.c_str(), W_OK) == 0;
        if (at == at.parent_path()) return false;
    }
    return false;
}

}  // namespace

std::vector<std::string> usualFontCacheFolders() {
    std::vector<std::string> out = {"/var/cache/fontconfig"};
    const char* const cache = std::getenv("XDG_CACHE_HOME");
    const char* const home = std::getenv("HOME");
    if (cache != nullptr && *cache != 0) {
        out.push_back(std::string(cache) + "/fontconfig");
    } else if (home != nullptr && *home != 0) {
        out.push_back(std::string(home) + "/.cache/fontconfig");
    }
    return out;
}

FontCacheFolder::FontCacheFolder(const std::vector<std::string>& usual) {
    if (std::any_of(usual.begin(), usual.end(), canBeWritten)) return;
    std::error_code none;
    const fs::path parent = fs::temp_directory_path(none);
    if (none) return;
    std::string name = (parent / "tarnova-fonts-XXXXXX").string();
    if (::mkdtemp(name.data()) != nullptr) own = name;
}

FontCacheFolder::~FontCacheFolder() {
    std::error_code ignored;
    if (!own.empty()) fs::remove_all(own, ignored);
}

}  // namespace tarnova
