// What a document is made of and what it lacks: pages, fonts and pictures.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "document/document.h"
#include "engine/toolkit/types.h"

namespace tarnova {

struct documentAnalysisRec {
    std::int32_t pages = 0;
    std::vector<usedFontRec> fonts;
    std::vector<std::string> pictures;         // paths of the placed files, each once, in the order of the walk
    std::vector<std::string> missingPictures;  // those of them that aren't there
    /// Pictures that are missing or can't be brought up to date, fonts that are missing and stories that don't fit.
    std::uint32_t problems = 0;
};

/// Brings the pictures whose files have changed up to date, in one step of undo, and looks the document over, masters
/// and hidden layers included.
[[nodiscard]] errorWord analyseDocument(UIDRef document, documentAnalysisRec& out, errorWord priorError);

}  // namespace tarnova
