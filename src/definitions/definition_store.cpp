#include "definitions/definition_store.h"

#include <filesystem>

#include "definitions/ddf.h"
#include "definitions/definition_state.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/files.h"

namespace tarnova {

namespace {

namespace fs = std::filesystem;

constexpr char storeFileName[] = "Record Definitions";

/// Puts `set`, which lies in a list of its own, in the place of the current one.
void installSet(recordDefSetRec* set) {
    definitionStateRec& state = definitionState();
    recordDefSetRec* old = state.currentDefSet;
    state.currentRecordDef = nullptr;
    state.currentDefSet = set;
    recordDefSetDiscard(old, old);
}

errorWord ensureDefaults(recordDefSetRec* set, errorWord priorError) {
    return ensureDefaultRecords(set, ensureDefaultDefinition(set, priorError));
}

errorWord selectByPreference(errorWord priorError) {
    if (priorError != 0) return priorError;
    Str31 name = {};
    if (appPrefs().alwaysUseDocumentDDF != 0) defaultDefName(name);
    bool found = false;
    return selectDefinition(pstrView(name), found, 0);
}

/// Reads the file at `path` into a set of its own.
errorWord readSet(const std::string& path, recordDefSetRec*& set) {
    recordDefSetRec* list = nullptr;
    return ddfReadFile(path.c_str(), list, set, nullptr, 0);
}

errorWord newStoreSet(const std::string& path, recordDefSetRec*& set) {
    Str255 name;
    pstrSet(name, storeFileName);
    recordDefSetRec* list = nullptr;
    return recordDefSetNew(name, path.c_str(), list, set, 0);
}

/// Copies the default definition of the current set into `set` when that has none.
errorWord keepDefaultDefinition(recordDefSetRec& set, errorWord priorError) {
    Str31 name;
    defaultDefName(name);
    recordDefRec *there = nullptr, *kept = nullptr;
    errorWord err = findRecordDef(&set, name, there, priorError);
    err = findRecordDef(definitionState().currentDefSet, name, kept, err);
    if (err != 0 || there != nullptr || kept == nullptr) return err;
    return recordDefCopy(set, *kept, name, there, err);
}

errorWord writeStore(recordDefSetRec& set, errorWord priorError) {
    if (priorError != 0 || set.setPath[0] == 0) return priorError;
    std::error_code ignored;
    fs::create_directories(fs::path(set.setPath).parent_path(), ignored);
    return ddfWriteFile(set.setPath, set, 0);
}

/// Gives an imported set the place of the store's file.
errorWord moveToStore(recordDefSetRec& set, errorWord priorError) {
    Str255 name;
    pstrSet(name, storeFileName);
    const errorWord err = recordDefSetRename(set, name, priorError);
    if (err != 0) return err;
    const std::string path = definitionStorePath();
    set.setPath[path.copy(set.setPath, sizeof set.setPath - 1)] = 0;
    return writeStore(set, 0);
}

}  // namespace

std::string definitionStorePath() {
    const std::string& folder = session().dataFolder;
    return folder.empty() ? std::string() : folder + "/" + prefsOwnerName + "/" + storeFileName;
}

errorWord openDefinitionStore(errorWord priorError) {
    if (priorError != 0) return priorError;
    const std::string path = definitionStorePath();
    recordDefSetRec* set = nullptr;
    const bool isThere = !path.empty() && fileIsPlain(path.c_str()) != 0;
    errorWord err = isThere ? readSet(path, set) : newStoreSet(path, set);
    if (err != 0) return err;
    err = ensureDefaults(set, err);
    installSet(set);
    return selectByPreference(err);
}

errorWord saveDefinitionStore(errorWord priorError) {
    recordDefSetRec* const set = definitionState().currentDefSet;
    if (priorError != 0 || set == nullptr || set->dirty == 0) return priorError;
    return writeStore(*set, 0);
}

errorWord selectDefinition(std::string_view name, bool& found, errorWord priorError) {
    found = false;
    if (priorError != 0) return priorError;
    definitionStateRec& state = definitionState();
    recordDefRec* definition = nullptr;
    Str255 wanted;
    pstrSet(wanted, name);
    const errorWord err = name.empty() ? recordDefAt(state.currentDefSet, 0, definition, 0)
                                       : findRecordDef(state.currentDefSet, wanted, definition, 0);
    if (err != 0 || definition == nullptr) return err;
    found = true;
    pstrSet(state.currentDefName, pstrView(definition->name));
    return reselectCurrentRecordDef(0);
}

errorWord importDefinitions(const char* path, errorWord priorError) {
    if (priorError != 0) return priorError;
    definitionState().importingDefinitions = 1;
    recordDefSetRec* set = nullptr;
    errorWord err = readSet(path, set);
    definitionState().importingDefinitions = 0;
    if (err != 0) return err;
    err = ensureDefaults(set, keepDefaultDefinition(*set, 0));
    err = moveToStore(*set, err);
    if (err != 0) {
        recordDefSetDiscard(set, set);
        return err;
    }
    installSet(set);
    return selectByPreference(0);
}

errorWord exportDefinitionsToPath(const char* path, errorWord priorError) {
    recordDefSetRec* const set = definitionState().currentDefSet;
    if (priorError != 0 || set == nullptr) return priorError;
    if (fileDelete(path, nullptr, 0) != 0) return errStoreDelete;
    if (fileCreate(path, 0) != 0) return errStoreCreate;
    const std::uint8_t dirty = set->dirty;
    const errorWord err = ddfWriteFile(path, *set, 0);
    set->dirty = dirty;  // the store itself isn't written
    return err;
}

errorWord resetDefinitions(bool deleteFile, errorWord priorError) {
    if (priorError != 0) return priorError;
    const std::string path = definitionStorePath();
    errorWord err = deleteFile && !path.empty() ? fileDelete(path.c_str(), nullptr, 0) : errorWord{0};
    recordDefSetRec* set = nullptr;
    if (err == 0) err = newStoreSet(path, set);
    if (err != 0) return err;
    err = writeStore(*set, ensureDefaults(set, 0));
    installSet(set);
    return selectByPreference(err);
}

}  // namespace tarnova
