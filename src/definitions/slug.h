// The slug: the DDF text of one definition, as a document carries it.

#pragma once

#include <cstdint>

#include "definitions/record_def_set.h"
#include "engine/toolkit/memory.h"
#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr errorWord errSlugMemory = 134;  // no memory for a copy of a slug

/// The text of a definition of the current set; null, and no error, when there is none of that name. Errors:
/// errDdfGrowHandle, as ddfWriteDefinition.
[[nodiscard]] errorWord definitionToText(const std::uint8_t* name, handlePtr& text, errorWord priorError);

/// Name of the definition at `index` (from 0) of a slug, which stays as it is; empty when there is none. `name` has
/// room for 31 characters. Errors: errSlugMemory, as ddfReadStream.
[[nodiscard]] errorWord slugDefinitionName(blockHandle text, std::int32_t index, std::uint8_t* name,
                                           errorWord priorError);

/// Puts the definition `sourceName` of a slug into the current set as `targetName`, in the place of one of that name,
/// and makes the set dirty. Its data path goes with `clearPath`, and when it is foreign. Errors: errDefinitionMissing
/// when the slug doesn't hold it, errSlugMemory, as ddfReadStream and recordDefCopy; the set is then as before.
[[nodiscard]] errorWord adoptSlug(const std::uint8_t* sourceName, const std::uint8_t* targetName, blockHandle text,
                                  bool clearPath, errorWord priorError);

/// Whether the path of an index file was written on another machine: one with a "/" that isn't an index file of this
/// one, or with a ":" that isn't the one behind a drive letter.
[[nodiscard]] bool isForeignDatabasePath(const char* path);

}  // namespace tarnova
