// Finding the file behind the name of a picture or an article, as the data gives it: a fixed order of folders, and a
// memo of the names that were looked for since the last start of a run, whether found or not. So a name that isn't
// there costs one search, however many records have it.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "document/document.h"
#include "engine/session/session.h"
#include "engine/toolkit/types.h"

namespace tarnova {

struct assetSearchRec {
    const Document* document = nullptr;  // whose folder and masters count; may be null
    std::string name;                    // UTF-8; "/" and "\" both separate folders
    std::uint16_t encoding = 1;          // in which the data gave it, for the memo
    std::string searchFolder;            // of the definition; empty: none
    bool searchBelow = false;            // in its folders below too
    bool useMasters = false;             // the last stage looks among the document's master spreads
    bool useMemo = true;
    bool generated = false;  // the file was made for this run
};

/// A search for a name that the data gave, with the folder of the current definition.
[[nodiscard]] assetSearchRec assetSearchOf(const Document& document, std::string_view name, std::uint16_t encoding);

/// Looks for an asset. A name from the root, with a drive, or with "./" (beside the document) names one place. Any
/// other is looked for by its last part: in the folder that it names, that of the document, of the data file, the
/// definition's `searchFolder` and the ten of the preferences, as the preferences' search flags say. `outPath` is empty
/// without `outFound`; of a master spread it is the name. An absent name isn't an error.
[[nodiscard]] errorWord findAsset(const assetSearchRec& search, std::string& outPath, bool& outFound,
                                  std::uint32_t& outKind, errorWord priorError);

/// Makes `path` the answer to all later searches for `name` in the run.
void rememberAsset(const std::string& name, const std::string& path);

/// `assetKindDocument` for a layout, else `assetKindFile`, by the extension.
[[nodiscard]] std::uint32_t kindOfAsset(const std::string& path);

/// Folders that searches have looked into since the program began.
[[nodiscard]] std::uint64_t assetFoldersRead();

/// The file of that name in a folder or, with `below`, in the first of the folders below it that has it; empty when
/// there is none or the folders can't be read.
[[nodiscard]] std::string searchFolder(const std::string& fileName, const std::string& folder, bool below);

}  // namespace tarnova
