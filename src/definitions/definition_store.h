// Where the session's definitions live: one DDF file below the data folder, read at the start, written at the end and
// after an import. Errors are those of ddf.h and record_def_set.h besides the ones named here.

#pragma once

#include <string>
#include <string_view>

#include "definitions/record_def_set.h"
#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr errorWord errStoreDelete = 48;   // an export's old target can't be deleted,
inline constexpr errorWord errStoreCreate = 49;   // its new one can't be created
inline constexpr errorWord errStoreNewFile = 54;  // the store's own file can't be created

/// Path of the file; empty while the session has no data folder, and then the set lives in memory only.
[[nodiscard]] std::string definitionStorePath();

/// Reads the file into a new set of `list`, which has the default definition then. A file that isn't there is made, and
/// so is one with `forceNew`; `newlyCreated` tells. So does an empty file: nobody has saved into it yet. Error:
/// errStoreNewFile.
[[nodiscard]] errorWord loadDefinitionFile(bool forceNew, recordDefSetRec*& list, recordDefSetRec*& set,
                                           bool& newlyCreated, errorWord priorError);

/// Makes the file's set the current one, with the default records, and selects: the default definition with the
/// preference `alwaysUseDocumentDDF`, else the first. `newlyCreated` may be null. After an error the session keeps the
/// set that it had.
[[nodiscard]] errorWord openDefinitionStore(bool forceNew, bool* newlyCreated, errorWord priorError);

/// Writes the current set when it has changes.
[[nodiscard]] errorWord saveDefinitionStore(errorWord priorError);

/// Writes `set` to `path`, as ddfWriteFile, and makes its folder.
[[nodiscard]] errorWord writeSetToPath(recordDefSetRec& set, const char* path, errorWord priorError);

/// Makes the definition of that name the current one, and hands its rules over; an empty name means the first. `found`
/// is false, and nothing changes, when there is none.
[[nodiscard]] errorWord selectDefinition(std::string_view name, bool& found, errorWord priorError);

/// Replaces all definitions by those of a DDF file, without their data paths, which are of no use on another machine,
/// and saves and selects as above. A null `path` lets the user choose. The default definition stays when the file has
/// none. After an error the old set stands.
[[nodiscard]] errorWord importDefinitions(const char* path, bool& cancelled, errorWord priorError);

/// Writes the definitions to a file that the user chooses.
[[nodiscard]] errorWord exportDefinitions(bool& cancelled, errorWord priorError);

/// Writes the definitions to a DDF file, as the store's file gives them, into which changes go first. Errors:
/// errStoreDelete, errStoreCreate.
[[nodiscard]] errorWord exportDefinitionsToPath(const char* path, errorWord priorError);

/// Forgets all definitions for the default one, and saves.
[[nodiscard]] errorWord resetDefinitions(errorWord priorError);

}  // namespace tarnova
