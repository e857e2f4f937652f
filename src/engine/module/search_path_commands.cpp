// Commands about the folders in which pictures are looked for.

#include <cstring>

#include "engine/module/command_rows.h"
#include "engine/module/preference_access.h"
#include "engine/session/session.h"

namespace tarnova {

namespace {

constexpr preferenceByte addFlags[] = {{1, &appPrefsRec::searchOwnFolder},
                                       {2, &appPrefsRec::searchDocumentFolder},
                                       {3, &appPrefsRec::searchDataFolder},
                                       {4, &appPrefsRec::searchSubfolders}};
constexpr preferenceByte getFlags[] = {{0, &appPrefsRec::searchOwnFolder},
                                       {1, &appPrefsRec::searchDocumentFolder},
                                       {2, &appPrefsRec::searchDataFolder},
                                       {3, &appPrefsRec::searchSubfolders}};

std::int32_t clearSearchPaths(commandCall&) {
    appPrefsRec& prefs = appPrefs();
    std::memset(prefs.searchPaths, 0, sizeof prefs.searchPaths);
    for (const preferenceByte& flag : getFlags)
        prefs.*flag.field = 0;
    return saved(commandDone);
}

/// Enters a folder in the first free slot, unless it is there.
std::int32_t enterFolder(const IDFile& folder) {
    appPrefsRec& prefs = appPrefs();
    if (!folder.isFolder() || folder.path().size() >= sizeof prefs.searchPaths[0]) return commandFolder;
    char* freeSlot = nullptr;
    for (char* const slot : prefs.searchPaths) {
        if (ascii::equalNoCase(slot, folder.path())) return commandDone;
        if (slot[0] == 0 && freeSlot == nullptr) freeSlot = slot;
    }
    if (freeSlot == nullptr) return commandPathsFull;
    std::memcpy(freeSlot, folder.cstr(), folder.path().size() + 1);
    return commandDone;
}

std::int32_t addSearchPath(commandCall& call) {
    const IDFile* const folder = call.item<IDFile>(0);
    const std::int32_t status = folder == nullptr ? commandDone : enterFolder(*folder);
    if (status != commandDone) return status;
    takeBytes(call, addFlags);
    return saved(commandDone);
}

std::int32_t getSearchPaths(commandCall& call) {
    giveBytes(call, getFlags);
    auto* const list = call.item<std::vector<PMString>>(4);
    if (list == nullptr) return commandDone;
    for (const char* const path : appPrefs().searchPaths)
        if (path[0] != 0) list->emplace_back(path);
    return commandDone;
}

using enum commandStage;
constexpr auto merge = commandMode::merge;
constexpr auto price = commandMode::price;
using enum argumentType;

constexpr commandArgument addArgs[] = {
    itemIn(0, file, "the folder"),
    itemIn(1, u8, "looks in the link's own folder"),
    itemIn(2, u8, "looks in the document's folder"),
    itemIn(3, u8, "looks in the data file's folder"),
    itemIn(4, u8, "looks in folders below them"),
};
constexpr commandArgument getArgs[] = {
    itemOut(0, u8, "looks in the link's own folder"),
    itemOut(1, u8, "looks in the document's folder"),
    itemOut(2, u8, "looks in the data file's folder"),
    itemOut(3, u8, "looks in folders below them"),
    itemOut(4, strings, "the folders"),
};

constexpr commandRow rows[] = {
    {1221, "kKelvaneCmdClearSearchPaths", merge, second, clearSearchPaths, {}, "Empties the picture search folders."},
    {1266, "kKelvaneCmdClearSearchPaths", price, second, clearSearchPaths, {}, "Empties the picture search folders."},
    {1222, "kKelvaneCmdAddSearchPath", merge, second, addSearchPath, addArgs, "Adds a picture search folder."},
    {1265, "kKelvaneCmdAddSearchPath", price, second, addSearchPath, addArgs, "Adds a picture search folder."},
    {1255, "kKelvaneCmdGetSearchPaths", merge, second, getSearchPaths, getArgs, "The picture search folders."},
    {1269, "kKelvaneCmdGetSearchPaths", price, second, getSearchPaths, getArgs, "The picture search folders."},
};

}  // namespace

std::span<const commandRow> searchPathRows() {
    return rows;
}

}  // namespace tarnova
