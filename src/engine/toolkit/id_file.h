// A reference to a file or folder by its path.
#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace tarnova {

class IDFile {
 public:
    IDFile() = default;
    /// `path` is UTF-8; nothing says that the file exists.
    explicit IDFile(std::string_view path) : path_(path) {}

    const std::string& path() const { return path_; }
    const char* cstr() const { return path_.c_str(); }
    bool empty() const { return path_.empty(); }
    void clear() { path_.clear(); }

    /// Name with extension; the path up to the last separator (empty when it has none); extension without its dot.
    std::string_view fileName() const;
    std::string_view folder() const;
    std::string_view extension() const;

    bool exists() const;
    bool isFolder() const;

    /// The file `name` in this folder. An absolute `name` is taken as it stands.
    IDFile child(std::string_view name) const;

    friend bool operator==(const IDFile& a, const IDFile& b) { return a.path_ == b.path_; }
    friend bool operator<(const IDFile& a, const IDFile& b) { return a.path_ < b.path_; }

 private:
    std::string path_;
};

}  // namespace tarnova
