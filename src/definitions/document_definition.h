// Keeping a document and its definition together: a document holds the name of its definition and, as the slug, the
// definition itself, and brings both along when it is opened, comes to the front or is copied from. With the preference
// `alwaysUseDocumentDDF` the session works with the default definition, into which the slug of each document is poured;
// without it a document names a definition of the session's set. What is told to people is shown here, or left in
// `engineError` for the end of the command.

#pragma once

#include <cstdint>
#include <string>

#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr errorWord errDocumentDefinition = 64;  // the document's definition isn't in the set
inline constexpr errorWord errDocumentOpen = 94;        // another document can't be opened
inline constexpr errorWord errDocumentSlug = 346;       // the other document holds no definition
inline constexpr errorWord errNameTooShort = 86;        // or with a character that a name can't hold
inline constexpr errorWord errNameTooLong = 87;

inline constexpr std::uint16_t definitionChangedFlag = 1;  // in the flags that come out

// Codes of the operations that commands carry out.
inline constexpr std::int32_t documentDefinitionFailed = -1;
inline constexpr std::int32_t documentDefinitionMissing = -6002;
inline constexpr std::int32_t documentDefinitionUnread = -6003;  // no slug, or one that can't be taken
inline constexpr std::int32_t documentDefinitionNoDocument = -6005;
inline constexpr std::int32_t documentDefinitionTable = -6011;  // the import table can't be loaded

/// Stores the current name and definition in the document in front, if there is one: the end of every change to a
/// definition. Error: errFailed.
[[nodiscard]] errorWord saveDefinitionToDocument(errorWord priorError);

/// The step before a document is saved: as above, unless the document names another definition than the current one,
/// and never during a run. The slug goes with the preference `saveSlugWithDocument` only.
void documentDefinitionOnSave(UIDRef document);

/// Sees to it that the set has the definition of the document in front, asking whether to take it over from the slug.
/// 0, or documentDefinitionFailed when it can't be had.
[[nodiscard]] std::int32_t documentDefinitionOnOpen(std::uint16_t& flags);

/// Makes the definition of a document that has come to the front the current one. Nothing happens during a run and
/// while a batch works through documents.
void documentDefinitionOnFront(UIDRef document);

/// Takes the definition that `source` carries into the set and names it in `target`, which may be nothing. Without
/// `overwrite` one of that name stays. `name` gets it, 31 characters. 0, documentDefinitionMissing,
/// documentDefinitionFailed.
[[nodiscard]] std::int32_t copyDefinitionBetweenDocuments(UIDRef source, UIDRef target, bool overwrite,
                                                          std::uint8_t* name);

/// The same from a document's file, which is opened without a window, for the document in front, under a name that the
/// user may be asked for. `name` is empty when the user cancelled. Errors: errDocumentOpen, errDocumentSlug,
/// errNameTooShort, errNameTooLong, and those of adoptSlug.
[[nodiscard]] errorWord importDefinitionFromDocument(const std::string& path, bool saveToDocument, std::uint8_t* name,
                                                     errorWord priorError);

/// Chooses a definition of the set for a document, or with an empty name takes the one that the document carries. 0 or
/// one of the codes above.
[[nodiscard]] std::int32_t chooseDocumentDefinition(UIDRef document, const std::uint8_t* name, std::uint16_t& flags);

/// Whether the document in front carries a definition, and its name (31 characters; may be null).
[[nodiscard]] bool hasDocumentDefinition(std::uint8_t* name);

}  // namespace tarnova
