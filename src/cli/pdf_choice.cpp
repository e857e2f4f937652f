#include "cli/pdf_choice.h"

#include <fmt/format.h>

#include <filesystem>
#include <map>

namespace tarnova {

namespace {

/// Points in each unit that a layout knows too.
const std::map<std::string, double> lengthUnits = {
    {"pt", 1}, {"mm", 72 / 25.4}, {"cm", 72 / 2.54}, {"in", 72}, {"pc", 12}};

}  // namespace

void addPdfFlags(CLI::App& verb, pdfChoiceRec& choice) {
    verb.add_option("--bleed", choice.bleed,
                    "Paper beyond each edge of the page, for .pdf: 3mm, 0.125in or points (0)")
        ->transform(CLI::AsNumberWithUnit(lengthUnits))
        ->check(CLI::Range(0.0, pdfMaximumBleed));
    verb.add_flag("--bookmarks", choice.bookmarks, "A bookmark for each page, by its printed name, for .pdf");
}

bool pdfChoiceFits(const pdfChoiceRec& choice, const std::string& outputPath, verbContext& context) {
    if (choice.bleed <= 0 && !choice.bookmarks) return true;
    if (std::filesystem::path(outputPath).extension() == ".pdf") return true;
    failVerb(context, fmt::format("{}: --bleed and --bookmarks are for .pdf", outputPath), exitUsage);
    return false;
}

PdfOptions pdfOptionsOf(const pdfChoiceRec& choice, const DocumentModel& layout) {
    PdfOptions options;
    options.title = layout.title();
    options.bleed = choice.bleed;
    options.bookmarks = choice.bookmarks;
    return options;
}

}  // namespace tarnova
