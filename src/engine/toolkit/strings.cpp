#include "engine/toolkit/strings.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <optional>
#include <unordered_map>

#include "engine/toolkit/files.h"
#include "engine/toolkit/text_encoding.h"

namespace tarnova {

namespace {

struct keyHash : std::hash<std::string_view> {
    using is_transparent = void;
};
using stringTable = std::unordered_map<std::string, std::string, keyHash, std::equal_to<>>;

struct stringsState {
    std::string folder;  // empty: look for it
    std::string language = "en-US";
    std::optional<stringTable> table;  // nothing: not read yet
    std::string error;
};

stringsState& state() {
    static stringsState strings;
    return strings;
}

std::string foundResourceFolder() {
    std::error_code ignored;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    const std::filesystem::path shared = program.parent_path().parent_path() / "share" / "tarnova";
    if (!program.empty() && std::filesystem::is_directory(shared / "strings", ignored)) return shared.string();
    return TARNOVA_RESOURCE_FOLDER;
}

std::string readStringFile(const std::string& path, stringTable& table) {
    std::string bytes;
    if (fileReadWhole(path.c_str(), bytes, stringFileMaxBytes, 0) != 0) {
        return path + ": the message texts can't be read. Install the folder \"strings\" there.";
    }
    std::string error;
    for (stringLine& line : parseStringFile(bytes, error))
        table.emplace(std::move(line.key), std::move(line.text));
    return error.empty() ? std::string() : path + ":" + error;
}

const stringTable& table() {
    stringsState& strings = state();
    if (!strings.table) {
        strings.table.emplace();
        strings.error = readStringFile(resourceFolder() + "/strings/" + strings.language + ".txt", *strings.table);
    }
    return *strings.table;
}

std::string_view withoutHexPrefix(std::string_view key) {
    if (!key.starts_with("0x")) return key;
    const std::size_t end = key.find_first_not_of("0123456789ABCDEFabcdef", 2);
    return end == std::string_view::npos || key[end] != 'k' ? key : key.substr(end);
}

// The text with its escapes resolved; nothing for an escape that isn't known.
std::optional<std::string> unescaped(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            out.push_back(text[i]);
            continue;
        }
        const char escape = ++i < text.size() ? text[i] : '\0';
        if (escape != 'n' && escape != 't' && escape != '\\') return std::nullopt;
        out.push_back(escape == 'n' ? '\n' : escape == 't' ? '\t' : '\\');
    }
    return out;
}

// Takes one line apart; the reason when it can't.
std::string parseLine(std::string_view line, stringLine& out) {
    const std::size_t separator = line.find_first_of("\t=");
    if (separator == std::string_view::npos) return "a tab or \"=\" must stand between key and text";
    std::string_view key = line.substr(0, separator);
    key = key.substr(0, key.find_last_not_of(' ') + 1);
    if (key.empty()) return "the key is empty";
    std::optional<std::string> text = unescaped(line.substr(separator + 1));
    if (!text) return "a \"\\\" must be followed by n, t or \"\\\"";
    out = {std::string(key), std::move(*text)};
    return {};
}

}  // namespace

void setResourceFolder(std::string_view folder) {
    state().folder = folder;
    state().table.reset();
}

std::string resourceFolder() {
    return state().folder.empty() ? foundResourceFolder() : state().folder;
}

void setStringLanguage(std::string_view language) {
    state().language = language;
    state().table.reset();
}

std::string stringLanguage() {
    return state().language;
}

std::string_view stringOfKey(std::string_view key) {
    const auto found = table().find(withoutHexPrefix(key));
    return found == table().end() ? key : std::string_view(found->second);
}

bool hasString(std::string_view key) {
    return table().contains(withoutHexPrefix(key));
}

std::vector<std::string> stringKeys() {
    std::vector<std::string> keys;
    for (const auto& entry : table())
        keys.push_back(entry.first);
    std::sort(keys.begin(), keys.end());
    return keys;
}

const std::string& stringLoadError() {
    table();
    return state().error;
}

std::vector<stringLine> parseStringFile(std::string_view bytes, std::string& error) {
    std::vector<stringLine> lines;
    std::unordered_map<std::string, std::size_t> lineOfKey;
    error.clear();
    for (std::size_t number = 1; !bytes.empty() && error.empty(); ++number) {
        const std::size_t end = std::min(bytes.find('\n'), bytes.size());
        std::string_view line = bytes.substr(0, end);
        bytes.remove_prefix(std::min(end + 1, bytes.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.empty() || line.starts_with('#')) continue;

        stringLine entry;
        std::string reason = isUtf8(line) ? parseLine(line, entry) : "the text is no UTF-8";
        if (reason.empty()) {
            const auto [earlier, isNew] = lineOfKey.emplace(entry.key, number);
            if (!isNew) reason = "the key " + entry.key + " stands in line " + std::to_string(earlier->second) + " too";
        }
        if (!reason.empty()) error = std::to_string(number) + ": " + reason;
        lines.push_back(std::move(entry));
    }
    if (!error.empty()) lines.clear();
    return lines;
}

}  // namespace tarnova
