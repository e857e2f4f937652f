#include "engine/session/preferences_file.h"

#include <bit>
#include <cstring>
#include <filesystem>
#include <memory>

#include "engine/session/session.h"
#include "engine/toolkit/files.h"
#include "engine/toolkit/messages.h"

namespace tarnova {

namespace {

namespace fs = std::filesystem;

// The file's numbers are little-endian and lie in the record as the file has them.
static_assert(std::endian::native == std::endian::little);

constexpr errorWord errPreferencesVersion = 201;
constexpr std::uintmax_t prefsFileLimit = 1 << 20;  // a longer file isn't even read

template <std::size_t size>
void holdIn(std::uint8_t (&field)[size]) {
    if (field[0] >= size) field[0] = size - 1;
}

template <std::size_t size>
void terminate(char (&field)[size]) {
    field[size - 1] = 0;
}

void holdNewRecords(appPrefsRec& prefs) {
    extractionRec& link = prefs.linkDefaults;
    holdIn(link.name);
    holdIn(link.reservedName);
    holdIn(link.field);
    holdIn(link.nodatastring);
    holdIn(link.dataFunction);
    holdIn(link.dataFormat);
    terminate(link.missingassetstring);
    searchCriteriaRec& criteria = prefs.criteriaDefaults;
    holdIn(criteria.name);
    holdIn(criteria.prefix.string);
    holdIn(criteria.suffix.string);
    for (fieldSearchRec& test : criteria.fieldSearch) {
        holdIn(test.field);
        holdIn(test.string);
    }
    holdIn(prefs.priceStyleDefaults.name);
}

/// Cuts each string to its field. A string of 255 characters can't leave its field.
void holdStrings(appPrefsRec& prefs) {
    holdNewRecords(prefs);
    for (fileExtensionRec& entry : prefs.extensionTable)
        holdIn(entry.extension);
    for (outputDriverRec& entry : prefs.driverTable)
        holdIn(entry.driverName);
    for (auto& path : prefs.searchPaths)
        terminate(path);
    for (reservedTextRec& text : prefs.reservedTexts)
        terminate(text.text);
    holdIn(prefs.fileAffixSeparator);
    holdIn(prefs.reportExtension);
    holdIn(prefs.processDefinitionName);
    holdIn(prefs.reportCreator);
    holdIn(prefs.saveSuffix);
    holdIn(prefs.reserved22048);
    holdIn(prefs.reserved22419);
    holdIn(prefs.reserved22484);
    holdIn(prefs.reserved22549);
    holdIn(prefs.numberingPad);
    terminate(prefs.rangeTextLong);
    terminate(prefs.duplicationFieldName);
}

bool isOurs(const appPrefsRec& prefs) {
    return prefs.prefsOwner[0] < sizeof prefs.prefsOwner &&
           ascii::equalNoCase(pstrView(prefs.prefsOwner), prefsOwnerName) && prefs.prefsVersion == prefsVersionCurrent;
}

enum class ReadResult : std::uint8_t { absent, forgotten, notOurs, taken };

/// Reads the file into `prefs` when it is one of ours.
ReadResult readPreferences(const std::string& path, appPrefsRec& prefs) {
    std::string bytes;
    if (fileReadWhole(path.c_str(), bytes, prefsFileLimit, 0) != 0 || bytes.empty()) return ReadResult::absent;
    const auto read = std::make_unique<appPrefsRec>();
    std::memset(read.get(), 0, sizeof *read);
    std::memcpy(read.get(), bytes.data(), std::min(bytes.size(), sizeof *read));
    if (read->prefsVersion == prefsVersionForgotten) return ReadResult::forgotten;
    if (bytes.size() != sizeof *read || !isOurs(*read)) return ReadResult::notOurs;
    holdStrings(*read);
    prefs = *read;
    return ReadResult::taken;
}

bool isProtected(const std::string& path) {
    std::error_code failure;
    const fs::file_status status = fs::status(path, failure);
    return fs::is_regular_file(status) && (status.permissions() & fs::perms::owner_write) == fs::perms::none;
}

}  // namespace

void settleDataFolder(std::string_view applicationFolder, std::string_view roamingFolder) {
    sessionRec& current = session();
    current.applicationFolder = applicationFolder;
    const fs::path inApplication = fs::path(applicationFolder) / "Plug-Ins" / "Tarnova";
    std::error_code failure;
    current.dataFolderInApp = fs::is_directory(inApplication / "Config", failure) ? 1 : 0;
    const fs::path folder = current.dataFolderInApp != 0 ? inApplication : fs::path(roamingFolder) / "Tarnova";
    current.dataFolder = folder.string();
    current.indexFolder = (folder / prefsOwnerName / "Index Files").string();
}

std::string tempFilesFolder() {
    const std::string& folder = session().dataFolder;
    return folder.empty() ? std::string() : folder + "/" + prefsOwnerName + "/TempFiles";
}

std::string preferencesPath() {
    const std::string& folder = session().dataFolder;
    return folder.empty() ? std::string() : folder + "/Config/" + prefsFileName;
}

void loadPreferences() {
    const std::string path = preferencesPath();
    std::error_code ignored;
    fs::create_directories(fs::path(path).parent_path(), ignored);
    const ReadResult result = readPreferences(path, appPrefs());
    if (result == ReadResult::taken) return;
    if (result == ReadResult::notOurs) reportError(nullptr, errPreferencesVersion);
    resetPreferences(false);
    appPrefs().loadStamp = prefsLoadStamp;
    savePreferences();
}

void savePreferences() {
    const std::string path = preferencesPath();
    if (session().prefsAreTemporary != 0 || path.empty() || isProtected(path)) return;
    const auto* const bytes = reinterpret_cast<const char*>(&appPrefs());
    static_cast<void>(fileWriteWhole(path.c_str(), {bytes, sizeof(appPrefsRec)}, 0));
}

}  // namespace tarnova
