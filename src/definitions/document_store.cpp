#include "definitions/document_store.h"

#include <cstring>
#include <string_view>

#include "document/item_data.h"
#include "engine/toolkit/pstring.h"

namespace tarnova {

namespace {

constexpr auto onDocument = ItemDataPlace::document;

/// A document's own store is looked in where that of the mode has nothing.
std::optional<std::string_view> entryOf(UIDRef document, std::uint32_t type, std::uint16_t store) {
    const auto stored = itemDataView(document, onDocument, type, store);
    return stored ? stored : itemDataView(document, onDocument, type, storeOfCopies);
}

/// Writes an entry unless it stands there already, so that looking at a document doesn't change it.
bool writeEntry(UIDRef document, std::uint32_t type, std::string_view bytes) {
    const auto stored = itemDataView(document, onDocument, type, storeOfCopies);
    if (stored && *stored == bytes) return true;
    return itemDataSet(document, onDocument, type, bytes.data(), bytes.size(), storeOfCopies) != 0;
}

}  // namespace

bool readDocumentSettings(UIDRef document, std::uint16_t store, documentSettingsRec& settings) {
    settings = {};
    const auto stored = entryOf(document, itemDataDocumentSettings, store);
    if (!stored || stored->size() != sizeof settings) return false;
    std::memcpy(&settings, stored->data(), sizeof settings);
    if (settings.docDefName[0] >= sizeof(Str31)) settings.docDefName[0] = 0;
    return true;
}

bool nameDocumentDefinition(UIDRef document, const std::uint8_t* name) {
    documentSettingsRec settings{};
    pstrCopyBounded(settings.docDefName, name, sizeof(Str31));
    return writeEntry(document, itemDataDocumentSettings, {reinterpret_cast<const char*>(&settings), sizeof settings});
}

handlePtr readSlug(UIDRef document, std::uint16_t store) {
    const auto stored = entryOf(document, itemDataSlug, store);
    if (!stored || stored->empty()) return nullptr;
    handlePtr text(newHandle(stored->size()));
    if (text != nullptr) std::memcpy(*text, stored->data(), stored->size());
    return text;
}

bool writeSlug(UIDRef document, blockHandle text) {
    const std::size_t size = handleSize(text);
    if (size == 0) return itemDataSet(document, onDocument, itemDataSlug, nullptr, 0, storeOfCopies) != 0;
    return writeEntry(document, itemDataSlug, {reinterpret_cast<const char*>(*text), size});
}

}  // namespace tarnova
