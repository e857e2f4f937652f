#include "host/text/font_cache_folder.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace tarnova {

namespace {

namespace fs = std::filesystem;

/// True when a file can be made in the folder, which is made too, as fontconfig would. Permissions alone don't tell:
/// the superuser has all of them, even where the file system takes nothing.
bool canBeWritten(const std::string& folder) {
    std::error_code refused;
    fs::create_directories(folder, refused);
    std::string name = folder + "/tarnova-XXXXXX";
    const int file = ::mkstemp(name.data());
    if (file < 0) return false;
    ::close(file);
    return ::unlink(name.c_str()) == 0;
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
