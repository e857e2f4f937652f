// Where the session's definitions live: one DDF file below the data folder, read at the start, written at the end and
// after an import. Errors are those of ddf.h and record_def_set.h besides the ones named here.

#pragma once

#include <string>
#include <string_view>

#include "definitions/record_def_set.h"
#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr errorWord errStoreDelete = 48;  // an export's old target can't be deleted,
inline constexpr errorWord errStoreCreate = 49;  // its new one can't be created

/// Path of the file; empty while the session has no data folder, and then the set lives in memory only.
[[nodiscard]] std::string definitionStorePath();

/// Reads the file into a new set, which becomes the current one, makes sure of the default definition with its records,
/// and selects: the default definition with the preference `alwaysUseDocumentDDF`, else the first. A file that doesn't
/// exist gives the defaults. After an error the session keeps the set that it had.
[[nodiscard]] errorWord openDefinitionStore(errorWord priorError);

/// Writes the current set when it has changes.
[[nodiscard]] errorWord saveDefinitionStore(errorWord priorError);

/// Makes the definition of that name the current one; an empty name means the first. `found` is false, and nothing
/// changes, when there is none.
[[nodiscard]] errorWord selectDefinition(std::string_view name, bool& found, errorWord priorError);

/// Replaces all definitions by those of a DDF file, without their data paths, which are of no use on another machine,
/// and saves and selects as above. The default definition stays when the file has none. After an error the old set
/// stands.
[[nodiscard]] errorWord importDefinitions(const char* path, errorWord priorError);

/// Writes the current set to a DDF file. Errors: errStoreDelete, errStoreCreate.
[[nodiscard]] errorWord exportDefinitionsToPath(const char* path, errorWord priorError);

/// Forgets all definitions for the default one. With `deleteFile` the file goes first.
[[nodiscard]] errorWord resetDefinitions(bool deleteFile, errorWord priorError);

}  // namespace tarnova
