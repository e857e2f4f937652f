#include "data/translation_table.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "data/data_state.h"
#include "data/key_index.h"
#include "definitions/record_def.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/strings.h"

namespace tarnova {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t lineEndSearchBytes = 256;
constexpr char tableFolderName[] = "TransTable";
constexpr char templateName[] = "Standard Template";

/// Ends of stored text: control characters, blanks and the non-breaking space.
bool isTrimmed(char c) {
    const auto byte = static_cast<std::uint8_t>(c);
    return byte < 33 || byte == 0xCA;
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isTrimmed(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isTrimmed(text.back()))
        text.remove_suffix(1);
    return text;
}

int digitValue(char c, int base) {
    const char lower = ascii::lower(c);
    const int value = c >= '0' && c <= '9' ? c - '0' : lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : base;
    return value < base ? value : -1;
}

/// A byte as 65, $41 or <A>; -1 for anything else.
int byteOfToken(std::string_view token) {
    if (token.size() >= 3 && token[0] == '<' && token[2] == '>') return static_cast<std::uint8_t>(token[1]);
    const bool isHex = token.starts_with('$');
    if (isHex) token.remove_prefix(1);
    if (isHex ? token.size() != 2 : token.empty() || token.size() > 3) return -1;
    const int base = isHex ? 16 : 10;
    int value = 0;
    for (const char c : token) {
        const int digit = digitValue(c, base);
        if (digit < 0) return -1;
        value = value * base + digit;
    }
    return value <= 255 ? value : -1;
}

/// One line without its end. False when it can't be read.
bool takeLine(std::string_view line, transTableRec& table) {
    if (line.size() > transTableLineBytes) return false;
    if (line.starts_with(';')) return true;
    line = trimmed(line);
    if (line.empty()) return true;
    const std::size_t tab = line.rfind('\t');
    const int from = byteOfToken(tab == std::string_view::npos ? line : trimmed(line.substr(0, tab)));
    const int to = tab == std::string_view::npos ? 0 : byteOfToken(trimmed(line.substr(tab + 1)));
    if (from < 0 || to < 0) return false;
    table.map[from] = static_cast<std::uint8_t>(to);
    table.keep[from] = tab == std::string_view::npos ? 0 : 1;
    return true;
}

std::string_view withoutLineEnds(std::string_view line) {
    const auto isEnd = [](char c) { return c == '\r' || c == '\n'; };
    if (!line.empty() && isEnd(line.front())) line.remove_prefix(1);
    if (!line.empty() && isEnd(line.back())) line.remove_suffix(1);
    return line;
}

void showFault(std::string_view path, std::uint32_t lineNumber) {
    const PMString name(fs::path(path).filename().string()), number(std::to_string(lineNumber));
    reportErrorKey("kZavoErrorReadingTransTable", &name, &number);
}

std::int16_t readTableFile(const std::string& path, transTableRec& table) {
    std::string text;
    if (fileReadWhole(path.c_str(), text, transTableFileBytes, 0) != 0) {
        table = identityTransTable();
        return transTableUnreadable;
    }
    const std::uint32_t faultyLine = readTransTable(text, table);
    if (faultyLine == 0) return transTableLoaded;
    table = identityTransTable();
    showFault(path, faultyLine);
    return transTableLoaded;
}

std::int16_t loadTable(const std::uint8_t* name, transTableRec& table) {
    const std::string_view wanted = pstrView(name);
    std::string path;
    std::uint32_t date = 0;
    std::int16_t result = transTableLoaded;
    if (!wanted.empty()) result = transTablePath(name, path, nullptr);
    if (!wanted.empty() && result == transTableLoaded && fileModDate(path.c_str(), &date, 0) != 0) date = 0;
    if (wanted == pstrView(table.tableName) && date == table.tableDate) return result;
    table = identityTransTable();
    pstrSet(table.tableName, wanted);
    table.tableDate = date;
    return date == 0 ? result : readTableFile(path, table);
}

void apply(const transTableRec& table, std::uint8_t* bytes, std::uint32_t& length) {
    if (table.tableName[0] == 0) return;
    std::uint8_t* out = bytes;
    for (std::uint32_t i = 0; i < length; ++i) {
        const std::uint8_t byte = bytes[i];
        *out = table.map[byte];
        out += table.keep[byte];
    }
    length = static_cast<std::uint32_t>(out - bytes);
}

std::string templateText() {
    std::string text;
    for (const char c : stringOfKey("kZavoTransTableTemplate"))
        text += c == '\n' ? std::string("\r\n") : std::string(1, c);
    for (int byte = 0; byte < 256; ++byte)
        text += std::to_string(byte) + "\t" + std::to_string(byte) + "\r\n";
    return text;
}

}  // namespace

std::uint32_t readTransTable(std::string_view text, transTableRec& table) {
    const std::size_t firstEnd = text.substr(0, lineEndSearchBytes).find_first_of("\r\n");
    const char lineEnd = firstEnd == std::string_view::npos ? '\r' : text[firstEnd];
    for (std::uint32_t number = 1; !text.empty(); ++number) {
        const std::size_t limit = std::min(text.find(lineEnd), text.size());
        if (!takeLine(withoutLineEnds(text.substr(0, limit)), table)) return number;
        text.remove_prefix(std::min(limit + 1, text.size()));
    }
    return 0;
}

std::int16_t loadImportTable(const std::uint8_t* name) {
    return loadTable(name, dataState().importTable);
}

std::int16_t loadExportTable(const std::uint8_t* name) {
    return loadTable(name, dataState().exportTable);
}

errorWord loadTablesOf(const recordDefRec& definition, errorWord priorError) {
    if (priorError != 0) return priorError;
    static constexpr std::uint8_t noName[1] = {0};
    const auto nameOf = [](const flaggedStr255Rec& table) { return table.enable != 0 ? table.string : noName; };
    if (loadImportTable(nameOf(definition.importTransTable)) != transTableLoaded) return errImportTranslation;
    return loadExportTable(nameOf(definition.exportTransTable)) == transTableLoaded ? errorWord{0}
                                                                                    : errExportTranslation;
}

void applyImportTable(std::uint8_t* bytes, std::uint32_t& length) {
    apply(dataState().importTable, bytes, length);
}

void applyExportTable(std::uint8_t* bytes, std::uint32_t& length) {
    apply(dataState().exportTable, bytes, length);
}

std::int16_t transTablePath(const std::uint8_t* name, std::string& path, bool* folderCreated) {
    const fs::path folder = fs::path(indexFolderPath()).parent_path() / tableFolderName;
    std::error_code failure;
    const bool created = fs::create_directories(folder, failure) && !failure;
    if (folderCreated != nullptr) *folderCreated = created;
    path = (folder / pstrView(name)).string();
    return name[0] != 0 && fileIsPlain(path.c_str()) == 0 ? transTableMissing : transTableLoaded;
}

errorWord writeTransTableTemplate(errorWord priorError) {
    if (priorError != 0) return priorError;
    Str255 name;
    pstrSet(name, templateName);
    std::string path;
    bool folderCreated = false;
    static_cast<void>(transTablePath(name, path, &folderCreated));
    if (folderCreated) static_cast<void>(fileWriteWhole(path.c_str(), templateText(), 0));
    return 0;
}

}  // namespace tarnova
