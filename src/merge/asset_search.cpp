#include "merge/asset_search.h"

#include <algorithm>
#include <filesystem>

#include "definitions/definition_state.h"
#include "engine/toolkit/files.h"
#include "engine/toolkit/id_file.h"

namespace tarnova {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view documentExtensions[] = {"indd", "gp", "tvd"};

std::uint64_t foldersRead = 0;

bool isFile(const std::string& path) {
    return fileIsPlain(path.c_str()) != 0;
}

bool hasDrive(std::string_view name) {
    const bool startsWithLetter = name.size() >= 3 && ascii::lower(name[0]) >= 'a' && ascii::lower(name[0]) <= 'z';
    return startsWithLetter && name[1] == ':' && name[2] == '\\';
}

std::string withSlashes(std::string name) {
    std::replace(name.begin(), name.end(), '\\', '/');
    return name;
}

std::uint32_t kindOfFile(const std::string& path, bool generated) {
    return generated ? assetKindGenerated : kindOfAsset(path);
}

/// The one place that a name from the root, with a drive or beside the document stands for; empty for any other name.
std::string placeOf(const assetSearchRec& search) {
    std::string name = withSlashes(search.name);
    if (name.starts_with("./"))
        return search.document == nullptr ? name : search.document->documentFolder() + name.substr(1);
    if (hasDrive(search.name)) return name;
    if (!name.starts_with('/')) return {};
    if (isFile(name)) return name;
    char converted[pathCapacity];
    macPathToPosix(name.c_str(), converted);
    return *converted != 0 ? std::string(converted) : name;
}

struct searchStageRec {
    std::string folder;  // empty: the stage is passed over
    bool below = false;
};

/// In the order of the search. Where a flag is off, the stage looks into the folder of the stage in front.
std::vector<searchStageRec> stagesOf(const assetSearchRec& search, std::string_view folderOfName) {
    const appPrefsRec& prefs = appPrefs();
    const bool below = prefs.searchSubfolders != 0;
    std::vector<searchStageRec> stages = {{std::string(folderOfName), false}};
    const bool besideDocument = prefs.searchDocumentFolder != 0;
    const std::string documentFolder = search.document == nullptr ? std::string() : search.document->documentFolder();
    stages.push_back({besideDocument ? documentFolder : stages.back().folder, below});
    const bool besideData = prefs.searchDataFolder != 0;
    const std::string dataFolder(IDFile(session().currentDataFilePath).folder());
    stages.push_back({besideData ? dataFolder : stages.back().folder, below});
    stages.push_back({search.searchFolder, search.searchBelow});
    for (const char* const path : prefs.searchPaths)
        stages.push_back({path, below});
    return stages;
}

bool hasMaster(const Document& document, const std::string& name) {
    for (std::int32_t i = 0; i < document.masterCount(); ++i)
        if (document.masterName(document.masterAt(i)) == name) return true;
    return false;
}

assetMemoRec searchStages(const assetSearchRec& search) {
    assetMemoRec asset;
    const std::string name = withSlashes(search.name);
    const IDFile file(name);
    const std::string fileName(file.fileName());
    for (const searchStageRec& stage : stagesOf(search, file.folder())) {
        if (stage.folder.empty()) continue;
        const std::string path = searchFolder(fileName, stage.folder, stage.below);
        if (path.empty()) continue;
        asset.assetPath.set(path);
        asset.assetKind = kindOfFile(path, search.generated);
        return asset;
    }
    asset.assetKind = search.generated ? assetKindGenerated : assetKindFile;
    if (search.useMasters && search.document != nullptr && hasMaster(*search.document, fileName)) {
        asset.assetPath.set(fileName);
        asset.assetKind = assetKindMaster;
    }
    return asset;
}

assetMemoRec lookAt(const assetSearchRec& search, const std::string& place) {
    assetMemoRec asset;
    if (isFile(place)) asset.assetPath.set(place);
    asset.assetKind = kindOfFile(place, search.generated);
    return asset;
}

/// A name that names one place is looked at anew each time, which costs no search; only a file that the user chose in
/// its stead is remembered.
assetMemoRec resolve(const assetSearchRec& search) {
    auto& memo = session().assetMemo;
    const bool usesMemo = search.useMemo && session().engineMode == modeMerge;
    const std::string place = placeOf(search);
    const auto known = usesMemo ? memo.find(search.name) : memo.end();
    if (known != memo.end() && place.empty()) return known->second;
    assetMemoRec asset = place.empty() ? searchStages(search) : lookAt(search, place);
    if (known != memo.end() && asset.assetPath.empty()) return known->second;
    asset.assetEncoding = search.encoding;
    if (usesMemo) memo[search.name] = asset;
    return asset;
}

}  // namespace

std::uint32_t kindOfAsset(const std::string& path) {
    const IDFile file(path);
    const std::string_view extension = file.extension();
    const bool isDocument =
        std::any_of(std::begin(documentExtensions), std::end(documentExtensions),
                    [extension](std::string_view known) { return ascii::equalNoCase(known, extension); });
    return isDocument ? assetKindDocument : assetKindFile;
}

void rememberAsset(const std::string& name, const std::string& path) {
    assetMemoRec& entry = session().assetMemo[name];
    entry.assetPath.set(path);
    entry.assetKind = kindOfAsset(path);
}

std::uint64_t assetFoldersRead() {
    return foldersRead;
}

std::string searchFolder(const std::string& fileName, const std::string& folder, bool below) {
    const auto fileIn = [&fileName](const fs::path& place) { return (place / fileName).string(); };
    if (fileName.empty()) return {};
    ++foldersRead;
    if (isFile(fileIn(folder))) return fileIn(folder);
    if (!below) return {};
    std::error_code failure;
    for (fs::recursive_directory_iterator it(folder, failure), end; !failure && it != end; it.increment(failure)) {
        std::error_code ignored;
        if (!it->is_directory(ignored)) continue;
        ++foldersRead;
        if (isFile(fileIn(it->path()))) return fileIn(it->path());
    }
    return {};
}

assetSearchRec assetSearchOf(const Document& document, std::string_view name, std::uint16_t encoding) {
    assetSearchRec search;
    search.document = &document;
    search.name = name;
    search.encoding = encoding;
    if (const recordDefRec* const definition = definitionState().currentRecordDef) {
        const pictureSearchRec& folder = definition->pictureSearch;
        if (folder.enable != 0) search.searchFolder = folder.searchPath;
        search.searchBelow = folder.subDirs != 0;
    }
    return search;
}

errorWord findAsset(const assetSearchRec& search, std::string& outPath, bool& outFound, std::uint32_t& outKind,
                    errorWord priorError) {
    outPath.clear();
    outFound = false;
    outKind = assetKindFile;
    if (priorError != 0 || search.name.empty()) return priorError;
    // Without the module of downloads a web address leads nowhere.
    if (search.name.starts_with("http:") || search.name.starts_with("https:")) return 0;
    const assetMemoRec asset = resolve(search);
    outPath = asset.assetPath.bytes();
    outFound = !outPath.empty();
    outKind = asset.assetKind;
    return 0;
}

}  // namespace tarnova
