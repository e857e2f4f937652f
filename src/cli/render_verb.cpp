// `tarnova render`: the pages of a layout as they are, to a PDF or to pictures.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <numeric>

#include "cli/job_setup.h"
#include "cli/verb.h"
#include "host/render/page_range.h"
#include "host/render/pdf_writer.h"
#include "host/render/png_output.h"

namespace tarnova {
namespace {

struct renderOptionsRec {
    std::string layoutPath;
    std::string outputPath;
    std::string pages;
    double dpi = pngDefaultDpi;
};

/// Indexes of pages, from 0.
using PageList = std::vector<std::int32_t>;

bool choosePages(const DocumentModel& layout, const renderOptionsRec& options, PageList& pages, std::string& error) {
    if (!options.pages.empty()) return parsePageRange(options.pages, layout.pageCount(), pages, error);
    pages.resize(static_cast<std::size_t>(layout.pageCount()));
    std::iota(pages.begin(), pages.end(), 0);
    if (pages.empty()) error = "it has no pages";
    return !pages.empty();
}

void tellOverset(DocumentModel& layout, const renderOptionsRec& options, const std::vector<OversetText>& places) {
    for (const OversetText& place : places) {
        const PageItem* const frame = layout.item(place.frame);
        const bool named = frame != nullptr && !frame->name.empty();
        sayError(fmt::format("{}: page {}: the text of story {} doesn't fit; its last frame is {}{}",
                             options.layoutPath, layout.pageIndex(place.page) + 1, place.story, place.frame,
                             named ? fmt::format(" \"{}\"", frame->name) : ""));
    }
}

bool renderPdf(const DocumentModel& layout, const renderOptionsRec& options, const PageList& pages,
               std::vector<OversetText>& overset, std::string& error) {
    PdfOptions pdf;
    pdf.title = layout.title();
    PdfWriter writer;
    bool good = writer.open(options.outputPath, pdf);
    for (std::size_t i = 0; good && i < pages.size(); ++i) {
        good = writer.addPage(layout, layout.pageAt(pages[i]));
        const auto& onPage = writer.oversetOnLastPage();
        overset.insert(overset.end(), onPage.begin(), onPage.end());
    }
    good = good && writer.finish();
    if (!good) error = writer.error();
    return good;
}

bool renderPng(const DocumentModel& layout, const renderOptionsRec& options, const PageList& pages,
               std::vector<OversetText>& overset, std::string& error) {
    return std::all_of(pages.begin(), pages.end(), [&](std::int32_t index) {
        const std::string path = pngPagePath(options.outputPath, index + 1, layout.pageCount(), pages.size() == 1);
        return writePagePng(layout, layout.pageAt(index), path, options.dpi, &overset, error);
    });
}

void runRender(const renderOptionsRec& options, verbContext& context) {
    const std::string extension = std::filesystem::path(options.outputPath).extension().string();
    if (extension != ".pdf" && extension != ".png") {
        return failVerb(context, fmt::format("{}: the output's name must end in .pdf or .png", options.outputPath),
                        exitUsage);
    }
    const std::unique_ptr<DocumentModel> layout = openLayoutForVerb(options.layoutPath);
    if (!layout) {
        context.exitStatus = exitFailed;
        return;
    }
    PageList pages;
    std::string error;
    if (!choosePages(*layout, options, pages, error)) {
        return failVerb(context, fmt::format("{}: {}", options.layoutPath, error),
                        options.pages.empty() ? exitFailed : exitUsage);
    }
    std::vector<OversetText> overset;
    const bool good = extension == ".pdf" ? renderPdf(*layout, options, pages, overset, error)
                                          : renderPng(*layout, options, pages, overset, error);
    tellOverset(*layout, options, overset);
    if (!good) failVerb(context, error);
}

}  // namespace

void addRenderVerb(CLI::App& app, verbContext& context) {
    auto options = std::make_shared<renderOptionsRec>();
    CLI::App* const verb = app.add_subcommand("render", "Draw the pages of a layout as a PDF or as pictures");
    verb->add_option("LAYOUT", options->layoutPath, "The layout, a .tvd file")->required();
    verb->add_option("-o,--output", options->outputPath, "What to make: .pdf, or .png (a file a page)")->required();
    verb->add_option("--pages", options->pages, "Which pages, counted from 1: 1-3,5 or 4- (all)");
    verb->add_option("--dpi", options->dpi, "Resolution of .png pages")
        ->check(CLI::Range(pngMinimumDpi, pngMaximumDpi))
        ->capture_default_str();
    verb->footer("Example: tarnova render letter.tvd -o letter.pdf --pages 1-3");
    verb->callback([options, &context] { runRender(*options, context); });
}

}  // namespace tarnova
