// Where fontconfig keeps what it found out about font files.

#pragma once

#include <string>
#include <vector>

namespace tarnova {

/// The folders in which fontconfig keeps its caches for everybody and for this user, as `<cachedir>` names them: plain
/// paths. The user's is left out where the environment doesn't say where it would be.
[[nodiscard]] std::vector<std::string> usualFontCacheFolders();

/// A folder of our own for caches, for as long as the object lives, where none of the usual ones can be written:
/// fontconfig would complain on standard error of each font folder that it reads.
class FontCacheFolder {
 public:
    explicit FontCacheFolder(const std::vector<std::string>& usual);
    ~FontCacheFolder();
    FontCacheFolder(const FontCacheFolder&) = delete;
    FontCacheFolder& operator=(const FontCacheFolder&) = delete;

    /// Empty when it isn't needed, or can't be made.
    [[nodiscard]] const std::string& path() const { return own; }

 private:
    std::string own;
};

}  // namespace tarnova
