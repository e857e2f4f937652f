// What a document stores about itself beside its copy of a definition: the name of the definition that it was made
// with.

#pragma once

#include <cstddef>
#include <cstdint>

namespace tarnova {

/// The document entry itemDataDocumentSettings, 620 bytes. Its unused numbers would be big-endian; all are 0.
struct documentSettingsRec {
    std::uint8_t reserved0[60];   // four 16-bit words, a 32-bit word, 48 bytes
    std::uint8_t docDefName[48];  // Pascal string; empty: none
    std::uint8_t reserved108[512];
};
static_assert(sizeof(documentSettingsRec) == 620);
static_assert(offsetof(documentSettingsRec, docDefName) == 60);

}  // namespace tarnova
