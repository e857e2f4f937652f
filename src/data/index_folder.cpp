// The folder of the index files: where it lies, how a new index gets its name, and how old ones go.

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include <fmt/format.h>

#include "data/data_state.h"
#include "data/error_place.h"
#include "data/key_index.h"
#include "definitions/definition_state.h"
#include "definitions/record_def_set.h"
#include "engine/session/preferences.h"

namespace tarnova {

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t defaultIndexLimit = 100;
constexpr std::size_t stableStemBytes = 48;  // of the data file's name in a stable index name

// A name as a file name: what a name may hold and a file name may not becomes "_".
std::string fileNameOf(std::string_view name) {
    std::string text(name);
    std::replace(text.begin(), text.end(), '/', '_');
    std::replace(text.begin(), text.end(), '\0', '_');
    if (!text.empty() && text[0] == '.') text[0] = '_';
    return text;
}

std::uint64_t hashed(std::uint64_t hash, std::string_view bytes) {
    for (const char byte : bytes)  // FNV-1a
        hash = (hash ^ static_cast<std::uint8_t>(byte)) * 0x100000001B3u;
    return hash * 0x100000001B3u;
}
constexpr std::uint64_t hashStart = 0xCBF29CE484222325u;

std::string machineIdentifier() {
    std::ifstream file("/etc/machine-id");
    std::string line;
    std::getline(file, line);
    return std::to_string(hashed(hashStart, line) >> 32);
}

std::string uniqueName() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return machineIdentifier() + std::to_string(std::chrono::nanoseconds(now).count());
}

std::string newIndexName(const recordDefRec& definition) {
    Str31 defaultName;
    defaultDefName(defaultName);
    const bool isDefault = pstrEqualNoCase(definition.name, defaultName) == 0;
    if (definition.name[0] == 0 || isDefault || appPrefs().alwaysUseDocumentDDF != 0) return uniqueName();
    return fileNameOf(pstrView(definition.name));
}

bool makeFolders(const std::string& folder) {
    std::error_code failure;
    fs::create_directories(folder, failure);
    return fs::is_directory(folder, failure);
}

errorWord writePlaceholder(const char* path, const char* dataFilePath, errorWord priorError) {
    if (priorError != 0) return priorError;
    const auto header = newRecord<indexHeader>();
    if (header == nullptr) return errIndexHeaderWrite;
    std::memcpy(header->dataFilePath, dataFilePath, std::strlen(dataFilePath));
    fileHandle file = noFile;
    if (fileOpen(path, fileWriteOnly, &file, nullptr, 0) != 0) return errorAt(errIndexHeaderOpen, path);
    std::size_t count = sizeof *header;
    errorWord err = fileSetSize(file, 0, nullptr, 0);
    err = fileWrite(file, header.get(), &count, nullptr, err);
    fileClose(file);
    return fileErrorAs(err, errIndexHeaderWrite, path);
}

struct datedFile {
    fs::path path;
    bool hasDate;
    fs::file_time_type date;
};

std::vector<datedFile> plainFilesOf(const std::string& folder) {
    std::vector<datedFile> files;
    std::error_code failure;
    for (fs::directory_iterator it(folder, failure), end; !failure && it != end; it.increment(failure)) {
        std::error_code statFailure;
        if (!it->is_regular_file(statFailure) || it->path().filename().native().starts_with('.')) continue;
        datedFile file{it->path(), false, {}};
        file.date = fs::last_write_time(it->path(), statFailure);
        file.hasDate = !statFailure;
        files.push_back(std::move(file));
    }
    return files;
}

}  // namespace

std::string indexFolderPath() {
    if (!dataState().indexFolder.empty()) return dataState().indexFolder;
    const char* const data = std::getenv("XDG_DATA_HOME");
    const char* const home = std::getenv("HOME");
    std::string folder;
    if (data != nullptr && *data == '/')
        folder = data;
    else
        folder = std::string(home != nullptr ? home : "") + "/.local/share";
    return folder + "/Tarnova/Ostreon Tag Display/Index Files";
}

errorWord makeIndexFile(const recordDefRec& definition, const char* dataFilePath, char* indexPath,
                        errorWord priorError) {
    if (priorError != 0) return priorError;
    const std::string folder = indexFolderPath();
    const std::string path = folder + "/" + newIndexName(definition);
    if (path.size() >= pathCapacity || std::strlen(dataFilePath) >= pathCapacity || !makeFolders(folder))
        return errorAt(errIndexCreate, path);
    if (fileIsPlain(path.c_str()) == 0 && fileCreate(path.c_str(), 0) != 0) return errorAt(errIndexCreate, path);
    const errorWord err = writePlaceholder(path.c_str(), dataFilePath, 0);
    if (err != 0) return err;
    std::memcpy(indexPath, path.c_str(), path.size() + 1);
    const std::uint32_t limit = appPrefs().dataAccessLimit;
    pruneIndexFolder(folder, limit == 0 ? defaultIndexLimit : limit);
    return 0;
}

void pruneIndexFolder(const std::string& folder, std::size_t limit) {
    std::vector<datedFile> files = plainFilesOf(folder);
    if (files.size() <= limit) return;
    std::sort(files.begin(), files.end(), [](const datedFile& a, const datedFile& b) {
        if (a.hasDate != b.hasDate) return !a.hasDate;
        return a.hasDate ? a.date > b.date : a.path < b.path;
    });
    for (; files.size() > limit; files.pop_back()) {
        std::error_code failure;
        fs::remove(files.back().path, failure);
    }
}

std::string stableIndexPath(const recordDefRec& definition, std::string_view dataPath) {
    std::error_code failure;
    const fs::path data = fs::canonical(fs::path(dataPath), failure);
    if (failure) return {};
    const auto text = [](const flaggedStr31Rec& field) {
        return field.enable != 0 ? "+" + pstrString(field.string) : std::string();
    };
    const std::string reading =
        fmt::format("{} {} {} {} {} ", fieldNumberOf(definition, definition.keyField), definition.useKeyfieldCase != 0,
                    definition.fileType, definition.osType, definition.dataType);
    std::uint64_t hash = hashed(hashStart, data.native());
    hash = hashed(hash, reading);
    hash = hashed(hash, definition.fileType == fileTypeCustom ? pstrView(definition.fDelimiter) : std::string_view{});
    hash = hashed(hash, text(definition.textQualifier));
    const std::string stem = data.stem().native().substr(0, stableStemBytes);
    return fmt::format("{}/{}-{:016x}", indexFolderPath(), fileNameOf(stem), hash);
}

namespace {

/// Whether the index was surely built from the data file as it is now. Dates count whole seconds, so data that changed in
/// the second in which its index was built shows no later date; and a file put back from elsewhere may show an earlier
/// one. Such an index is built anew once.
bool indexMatchesData(const indexHeader& header, const std::string& indexPath, const std::string& dataPath) {
    std::uint32_t indexDate = 0;
    std::uint32_t dataDate = 0;
    if (fileModDate(indexPath.c_str(), &indexDate, 0) != 0) return false;
    if (fileModDate(dataPath.c_str(), &dataDate, 0) != 0) return false;
    return header.dataFileDate == dataDate && indexDate > dataDate;
}

}  // namespace

bool prepareIndexFile(std::string_view indexPath, std::string_view dataPath) {
    std::error_code failure;
    const std::string data = fs::canonical(fs::path(dataPath), failure).native();
    const std::string path(indexPath);
    if (failure || path.empty() || path.size() >= pathCapacity || data.size() >= pathCapacity) return false;
    const auto header = newRecord<indexHeader>();
    if (header == nullptr) return false;
    std::size_t got = 0;
    const bool isWhole = readIndexHeader(path.c_str(), *header, got, 0) == 0 && got == indexHeaderSize;
    if (isWhole && data == header->dataFilePath && indexMatchesData(*header, path, data)) return true;
    *header = {};
    std::memcpy(header->dataFilePath, data.c_str(), data.size() + 1);
    const std::string_view bytes{reinterpret_cast<const char*>(header.get()), sizeof *header};
    return makeFolders(fs::path(path).parent_path().native()) && fileWriteWhole(path.c_str(), bytes, 0) == 0;
}

}  // namespace tarnova
