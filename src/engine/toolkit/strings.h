// The texts of all string keys: resources/strings/<language>.txt, read at the first look-up. One key a line: the key, a
// tab or "=", the text. "#" begins a comment line; "\n", "\t" and "\\" are the escapes of the text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarnova {

inline constexpr std::size_t stringFileMaxBytes = 16 << 20;

/// Folder that holds "strings/". Without one: share/tarnova beside the folder of the running program, else the folder
/// of the build. The texts are read anew.
void setResourceFolder(std::string_view folder);
/// The folder in use.
std::string resourceFolder();

/// Language of the texts, "en-US" at first. The texts are read anew.
void setStringLanguage(std::string_view language);
/// The language in use.
std::string stringLanguage();

/// The text of a key; the key itself when it has none. A hexadecimal prefix in front of the key ("0x1B9E00k...") is not
/// part of it. Valid as long as `key` and until the texts are read anew.
std::string_view stringOfKey(std::string_view key);
/// Whether the key has a text.
bool hasString(std::string_view key);
/// All keys that have a text, in byte order.
std::vector<std::string> stringKeys();

/// Why the texts could not be read, with file and line; empty when they could.
const std::string& stringLoadError();

struct stringLine {
    std::string key;
    std::string text;
};
/// Reads the text of a string file. On failure the list is empty and `error` says line and reason: a line without a
/// separator, an empty key, a key that comes twice, an unknown escape, bytes that are no UTF-8.
std::vector<stringLine> parseStringFile(std::string_view bytes, std::string& error);

}  // namespace tarnova
