#include "definitions/definition_store.h"

#include <filesystem>

#include "definitions/ddf.h"
#include "definitions/definition_state.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/choosers.h"
#include "engine/toolkit/files.h"
#include "engine/toolkit/messages.h"

namespace tarnova {

namespace {

namespace fs = std::filesystem;

constexpr char storeFileName[] = "Record Definitions";
constexpr std::uint16_t messageImportPrompt = 15;
constexpr std::uint16_t messageExportTitle = 37;
constexpr std::uint16_t messageExportName = 38;

/// Puts `set`, which lies in a list of its own, in the place of the current one.
void installSet(recordDefSetRec* set) {
    definitionStateRec& state = definitionState();
    recordDefSetRec* old = state.currentDefSet;
    state.currentRecordDef = nullptr;
    state.currentDefSet = set;
    recordDefSetDiscard(old, old);
}

errorWord selectByPreference(errorWord priorError) {
    if (priorError != 0) return priorError;
    Str31 name = {};
    if (appPrefs().alwaysUseDocumentDDF != 0) defaultDefName(name);
    bool found = false;
    return selectDefinition(pstrView(name), found, 0);
}

/// An empty set that stands for the store's file.
errorWord newStoreSet(const std::string& path, recordDefSetRec*& list, recordDefSetRec*& set) {
    Str255 name;
    pstrSet(name, storeFileName);
    return recordDefSetNew(name, path.c_str(), list, set, 0);
}

void makeFolderOf(const char* path) {
    std::error_code ignored;
    fs::create_directories(fs::path(path).parent_path(), ignored);
}

/// Sees to it that the file is there. One without a byte has never been saved into.
errorWord settleStoreFile(const std::string& path, bool forceNew, bool& newlyCreated) {
    makeFolderOf(path.c_str());
    const bool isThere = !forceNew && fileIsPlain(path.c_str()) != 0;
    newlyCreated = !isThere || fileSizeOfPath(path.c_str(), nullptr) == 0;
    if (isThere) return 0;
    const errorWord err = fileDelete(path.c_str(), nullptr, 0);
    return fileCreate(path.c_str(), err) == 0 ? errorWord{0} : errStoreNewFile;
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
    return set.setPath[0] == 0 ? priorError : writeSetToPath(set, set.setPath, priorError);
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

errorWord exportSet(const char* path, recordDefSetRec* set) {
    if (set == nullptr) return 0;
    if (fileDelete(path, nullptr, 0) != 0) return errStoreDelete;
    if (fileCreate(path, 0) != 0) return errStoreCreate;
    const std::uint8_t dirty = set->dirty;
    const errorWord err = ddfWriteFile(path, *set, 0);
    set->dirty = dirty;  // the store itself isn't written
    return err;
}

}  // namespace

std::string definitionStorePath() {
    const std::string& folder = session().dataFolder;
    return folder.empty() ? std::string() : folder + "/" + prefsOwnerName + "/" + storeFileName;
}

errorWord loadDefinitionFile(bool forceNew, recordDefSetRec*& list, recordDefSetRec*& set, bool& newlyCreated,
                             errorWord priorError) {
    if (priorError != 0) return priorError;
    definitionState().importingDefinitions = 0;
    const std::string path = definitionStorePath();
    newlyCreated = true;
    errorWord err = path.empty() ? errorWord{0} : settleStoreFile(path, forceNew, newlyCreated);
    if (err != 0) return err;
    err = newlyCreated ? newStoreSet(path, list, set) : ddfReadFile(path.c_str(), list, set, nullptr, 0);
    if (err != 0) return err;
    err = ensureDefaultDefinition(set, err);
    if (err == 0) return 0;
    recordDefSetDiscard(list, set);
    set = nullptr;
    return err;
}

errorWord openDefinitionStore(bool forceNew, bool* newlyCreated, errorWord priorError) {
    recordDefSetRec *list = nullptr, *set = nullptr;
    bool isNew = false;
    errorWord err = loadDefinitionFile(forceNew, list, set, isNew, priorError);
    if (err != 0) return err;
    if (newlyCreated != nullptr) *newlyCreated = isNew;
    err = ensureDefaultRecords(set, err);
    installSet(set);
    return selectByPreference(err);
}

errorWord saveDefinitionStore(errorWord priorError) {
    recordDefSetRec* const set = definitionState().currentDefSet;
    if (priorError != 0 || set == nullptr || set->dirty == 0) return priorError;
    return writeStore(*set, 0);
}

errorWord writeSetToPath(recordDefSetRec& set, const char* path, errorWord priorError) {
    if (priorError != 0) return priorError;
    makeFolderOf(path);
    return ddfWriteFile(path, set, 0);
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
    const errorWord selected = reselectCurrentRecordDef(0);
    if (selected == 0 && state.putDefinitionRules != nullptr) state.putDefinitionRules(state.currentRecordDef);
    return selected;
}

errorWord importDefinitions(const char* path, bool& cancelled, errorWord priorError) {
    cancelled = false;
    if (priorError != 0) return priorError;
    std::string chosen = path != nullptr ? path : "";
    if (path == nullptr) {
        fileChoiceRec choice;
        choice.title = messageString(messageImportPrompt);
        cancelled = !chooserService().chooseFile(choice, chosen);
        if (cancelled) return 0;
    }
    definitionState().importingDefinitions = 1;
    recordDefSetRec *list = nullptr, *set = nullptr;
    errorWord err = ddfReadFile(chosen.c_str(), list, set, nullptr, 0);
    definitionState().importingDefinitions = 0;
    if (err != 0) return err;
    // The default definition goes into the file with the others, so that the file is all there is.
    err = ensureDefaultDefinition(set, keepDefaultDefinition(*set, 0));
    err = moveToStore(*set, ensureDefaultRecords(set, err));
    if (err != 0) {
        recordDefSetDiscard(list, set);
        return err;
    }
    installSet(set);
    return selectByPreference(0);
}

errorWord exportDefinitions(bool& cancelled, errorWord priorError) {
    if (priorError != 0) return priorError;
    fileChoiceRec choice;
    choice.title = messageString(messageExportTitle);
    choice.kind = PMString("DDF Filter");
    choice.extension = "ddf";
    choice.name = messageString(messageExportName);
    choice.forSaving = true;
    std::string path;
    cancelled = !chooserService().chooseFile(choice, path);
    return cancelled ? errorWord{0} : exportDefinitionsToPath(path.c_str(), 0);
}

errorWord exportDefinitionsToPath(const char* path, errorWord priorError) {
    errorWord err = saveDefinitionStore(priorError);
    if (err != 0) return err;
    if (definitionStorePath().empty()) return exportSet(path, definitionState().currentDefSet);
    recordDefSetRec *list = nullptr, *set = nullptr;
    bool isNew = false;
    err = loadDefinitionFile(false, list, set, isNew, 0);
    if (err == 0) err = exportSet(path, set);
    recordDefSetDiscard(list, set);
    return err;
}

errorWord resetDefinitions(errorWord priorError) {
    recordDefSetRec* const set = definitionState().currentDefSet;
    if (priorError != 0 || set == nullptr) return priorError;
    while (set->definitions != nullptr)
        recordDefRemove(*set, &set->definitions->definition);
    set->dirty = 1;
    const errorWord err = saveDefinitionStore(ensureDefaultRecords(set, ensureDefaultDefinition(set, 0)));
    return selectByPreference(err);
}

}  // namespace tarnova
