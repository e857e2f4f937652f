// What the data folder keeps from call to call. The session's own record derives from dataStateRec and installs itself,
// so that this folder needs to know nothing else of a session.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "data/translation_table.h"
#include "engine/toolkit/files.h"
#include "engine/toolkit/memory.h"
#include "engine/toolkit/pm_string.h"
#include "engine/toolkit/types.h"

namespace tarnova {

struct dataSourceRec;

/// Closes and frees every source of a circular list; null does nothing.
struct dataSourceListDeleter {
    void operator()(dataSourceRec* list) const;
};

struct dataStateRec {
    /// First of the circular list of sources that are open side by side; it owns them.
    std::unique_ptr<dataSourceRec, dataSourceListDeleter> dataSourceList;
    /// Data file of the text source opened last; empty after an open of another kind.
    char currentDataFilePath[pathCapacity] = {};
    /// Index files that wait to be deleted, see runIndexDeleteQueue.
    std::vector<std::string> indexDeleteQueue;
    /// The file that chooseDataFile takes while nobody watches; empty: none is preset.
    char presetDataFilePath[pathCapacity] = {};
    /// Folder of the index files, UTF-8. Empty: indexFolderPath() gives the default.
    std::string indexFolder;
    /// The record that a merge pass is at, counted from 1; 0 outside of passes. The date of a data file is asked once a
    /// record then, not for each of its links.
    std::uint32_t recordOfPass = 0;
    /// What is done to the bytes of values that are read, and of those that are written.
    transTableRec importTable = identityTransTable();
    transTableRec exportTable = identityTransTable();
    /// One index header, shared by all who look at an index without loading it. Made at the first use.
    blockPtr<> indexHeaderBuffer;

    /// Whether the companion module of an access mode (1 ODBC, 2 HTTP) answers; null: neither does.
    bool (*sourceModuleAnswers)(std::int16_t accessMode) = nullptr;
    /// The host's file chooser: shows `prompt`, accepts any file, gives its path. False, or no chooser: cancelled.
    bool (*pickDataFile)(const PMString& prompt, std::string& outPath) = nullptr;
    /// Puts the current definitions into the front document after one was changed here; null while there is none.
    errorWord (*saveDefinitionToDocument)(errorWord priorError) = nullptr;
};

/// The installed state, or a built-in one when nothing is installed.
[[nodiscard]] dataStateRec& dataState();

/// Makes `state` the one that dataState gives; null puts the built-in one back. `state` stays the caller's and must
/// outlive its installation.
void installDataState(dataStateRec* state);

}  // namespace tarnova
