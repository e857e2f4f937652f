// What is left to do on a built document when its slots are merged.

#pragma once

#include <cstdint>

#include "document/document.h"
#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// Deletes the pages that a driver marked, counts the placed links of each page into the page map, notes the
/// fonts that the run uses, and composes the document. Pages are only deleted while the document still has those of the
/// page map.
[[nodiscard]] errorWord finishMergedPages(UIDRef document, errorWord priorError);

/// Adds the fonts of a document to those that the run uses, and to the report.
void noteUsedFonts(const Document& document);

/// Printed pages up to page entry `limit` (not with it), each as often as its slot has copies. Flagged pages and slots
/// with a merge error print nothing.
[[nodiscard]] std::uint32_t printedPages(std::int32_t limit);

/// Adds the printed pages of the build to the two running totals, which go from chunk to chunk.
void advancePageTotals();

}  // namespace tarnova
