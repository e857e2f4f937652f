// The two entries by which a document holds its definition. Own to this folder.

#pragma once

#include <cstdint>

#include "definitions/document_settings.h"
#include "document/uid.h"
#include "engine/toolkit/memory.h"

namespace tarnova {

inline constexpr std::uint16_t storeOfCopies = 0;  // all writing goes there, and reading for a copy

/// The settings that the document stores; false when it has none. A name that can't be one reads as empty.
[[nodiscard]] bool readDocumentSettings(UIDRef document, std::uint16_t store, documentSettingsRec& settings);

/// Names a definition in the document's settings. One that is named already costs no command. False when the document
/// refuses it.
[[nodiscard]] bool nameDocumentDefinition(UIDRef document, const std::uint8_t* name);

/// The slug; null when there is none.
[[nodiscard]] handlePtr readSlug(UIDRef document, std::uint16_t store);

/// Writes the slug, or takes it away when `text` is null or empty. False when the document refuses it.
[[nodiscard]] bool writeSlug(UIDRef document, blockHandle text);

}  // namespace tarnova
