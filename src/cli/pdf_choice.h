// What a person may ask of a PDF, whichever verb writes it.

#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "cli/verb.h"
#include "host/render/pdf_writer.h"

namespace tarnova {

struct pdfChoiceRec {
    double bleed = 0;  // points
    bool bookmarks = false;
};

/// Adds --bleed and --bookmarks to a verb.
void addPdfFlags(CLI::App& verb, pdfChoiceRec& choice);

/// False when they were asked for an output that is no PDF; the verb has then failed.
[[nodiscard]] bool pdfChoiceFits(const pdfChoiceRec& choice, const std::string& outputPath, verbContext& context);

/// Options with these choices and the layout's title.
[[nodiscard]] PdfOptions pdfOptionsOf(const pdfChoiceRec& choice, const DocumentModel& layout);

}  // namespace tarnova
