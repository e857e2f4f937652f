#include "engine/toolkit/id_file.h"

#include <sys/stat.h>

namespace tarnova {

std::string_view IDFile::fileName() const {
    const std::string_view path = path_;
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view IDFile::folder() const {
    const std::string_view path = path_;
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos) return {};
    return path.substr(0, slash == 0 ? 1 : slash);
}

std::string_view IDFile::extension() const {
    const std::string_view name = fileName();
    const std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? std::string_view{} : name.substr(dot + 1);
}

bool IDFile::exists() const {
    struct stat info {};
    return ::stat(path_.c_str(), &info) == 0;
}

bool IDFile::isFolder() const {
    struct stat info {};
    return ::stat(path_.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

IDFile IDFile::child(std::string_view name) const {
    if (path_.empty() || name.starts_with('/')) return IDFile(name);
    std::string path = path_;
    if (!path.ends_with('/')) path += '/';
    path += name;
    return IDFile(path);
}

}  // namespace tarnova
