// `tarnova render`: the pages of a layout as they are, to a PDF, PostScript or pictures.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <numeric>

#include "cli/engine_client.h"
#include "cli/job_setup.h"
#include "cli/pdf_choice.h"
#include "cli/render_verb.h"
#include "cli/verb.h"
#include "host/files/layout_file.h"
#include "host/render/page_path.h"
#include "host/render/page_range.h"
#include "host/render/png_output.h"
#include "host/render/postscript_output.h"
#include "host/render/svg_output.h"

namespace tarnova {
namespace {

struct renderOptionsRec {
    std::string layoutPath;
    std::string outputPath;
    std::string pages;
    double dpi = pngDefaultDpi;
    pdfChoiceRec pdf;
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

void tellPictures(const renderOptionsRec& options, const std::vector<PictureProblem>& pictures) {
    for (const PictureProblem& picture : pictures) {
        sayError(fmt::format("{}: the picture {} shows as a grey box: {}", options.layoutPath, picture.path,
                             picture.reason));
    }
}

/// What one call draws and what it finds.
struct renderJobRec {
    const DocumentModel& layout;
    const renderOptionsRec& options;
    const PageList& pages;
    PageNotes notes;
    std::string error;
};

/// Adds the pages to an open writer of one file.
template <typename Writer>
bool addPages(renderJobRec& job, Writer& writer, bool isOpen) {
    bool good = isOpen;
    for (std::size_t i = 0; good && i < job.pages.size(); ++i) {
        good = writer.addPage(job.layout, job.layout.pageAt(job.pages[i]));
        const auto& onPage = writer.oversetOnLastPage();
        job.notes.overset.insert(job.notes.overset.end(), onPage.begin(), onPage.end());
    }
    job.notes.pictures = writer.pictureProblems();
    good = good && writer.finish();
    if (!good) job.error = writer.error();
    return good;
}

bool renderPdf(renderJobRec& job) {
    PdfOptions pdf = pdfOptionsOf(job.options.pdf, job.layout);
    pdf.pageLabels = true;
    PdfWriter writer;
    return addPages(job, writer, writer.open(job.options.outputPath, pdf));
}

bool renderPostScript(renderJobRec& job) {
    PostScriptWriter writer;
    return addPages(job, writer, writer.open(job.options.outputPath, job.layout.title(), PostScriptKind::document));
}

/// Gives each page and its path to `write`, until one fails.
template <typename WritePage>
bool renderEach(renderJobRec& job, WritePage write) {
    return std::all_of(job.pages.begin(), job.pages.end(), [&](std::int32_t index) {
        return write(job.layout.pageAt(index),
                     pageFilePath(job.options.outputPath, index + 1, job.layout.pageCount(), job.pages.size() == 1));
    });
}

bool renderPng(renderJobRec& job) {
    return renderEach(job, [&job](UID page, const std::string& path) {
        return writePagePng(job.layout, page, path, job.options.dpi, &job.notes, job.error);
    });
}

bool renderSvg(renderJobRec& job) {
    return renderEach(job, [&job](UID page, const std::string& path) {
        return writePageSvg(job.layout, page, path, &job.notes, job.error);
    });
}

bool renderEps(renderJobRec& job) {
    return renderEach(job, [&job](UID page, const std::string& path) {
        return writePageEps(job.layout, page, path, job.layout.title(), &job.notes, job.error);
    });
}

struct outputKindRec {
    std::string_view extension;
    bool (*render)(renderJobRec& job);
};

constexpr outputKindRec outputKinds[] = {
    {".pdf", renderPdf}, {".ps", renderPostScript}, {".png", renderPng}, {".svg", renderSvg}, {".eps", renderEps},
};

/// By the extension of the output's name; null for another one.
const outputKindRec* outputKindOf(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    const auto* const kind = std::find_if(std::begin(outputKinds), std::end(outputKinds),
                                          [&](const outputKindRec& known) { return known.extension == extension; });
    return kind == std::end(outputKinds) ? nullptr : kind;
}

bool isLayoutName(const std::string& path) {
    return std::filesystem::path(path).extension() == ".tvd";
}

void runRender(const renderOptionsRec& options, verbContext& context) {
    const outputKindRec* const kind = outputKindOf(options.outputPath);
    if (kind == nullptr) {
        return failVerb(
            context, fmt::format("{}: the output's name must end in .pdf, .ps, .png, .svg or .eps", options.outputPath),
            exitUsage);
    }
    if (!pdfChoiceFits(options.pdf, options.outputPath, context)) return;
    EngineClient engine;
    DocumentModel* const layout = engine.open(options.layoutPath);
    if (layout == nullptr) {
        context.exitStatus = exitFailed;
        return;
    }
    PageList pages;
    std::string error;
    if (!choosePages(*layout, options, pages, error)) {
        return failVerb(context, fmt::format("{}: {}", options.layoutPath, error),
                        options.pages.empty() ? exitFailed : exitUsage);
    }
    renderJobRec job{*layout, options, pages, {}, {}};
    const bool good = kind->render(job);
    tellOverset(*layout, options, job.notes.overset);
    tellPictures(options, job.notes.pictures);
    if (!good) failVerb(context, job.error);
}

}  // namespace

bool exportPages(const DocumentModel& layout, const std::string& path, const std::string& pageRange,
                 std::int32_t& pageCount, std::string& error) {
    renderOptionsRec options;
    options.outputPath = path;
    options.pages = pageRange;
    const outputKindRec* const kind = outputKindOf(path);
    if (kind == nullptr) {
        error = "the output's name must end in .pdf, .ps, .png, .svg or .eps";
        return false;
    }
    PageList pages;
    if (!choosePages(layout, options, pages, error)) return false;
    renderJobRec job{layout, options, pages, {}, {}};
    const bool good = kind->render(job);
    error = job.error;
    pageCount = static_cast<std::int32_t>(pages.size());
    return good;
}

bool outputFits(const std::string& path, verbContext& context) {
    if (isLayoutName(path) || outputKindOf(path) != nullptr) return true;
    failVerb(context, fmt::format("{}: the output's name must end in .tvd, .pdf, .ps, .png, .svg or .eps", path),
             exitUsage);
    return false;
}

bool writeOutput(DocumentModel& layout, const std::string& path) {
    std::int32_t pages = 0;
    std::string error;
    if (!isLayoutName(path)) {
        if (exportPages(layout, path, "", pages, error)) return true;
    } else {
        layoutError saveError;
        if (saveLayout(layout, path, saveError)) return true;
        error = saveError.message;
    }
    sayError(fmt::format("{}: {}", path, error));
    return false;
}

void addRenderVerb(CLI::App& app, verbContext& context) {
    auto options = std::make_shared<renderOptionsRec>();
    CLI::App* const verb = app.add_subcommand("render", "Draw the pages of a layout as PDF, PostScript or pictures");
    verb->add_option("LAYOUT", options->layoutPath, "The layout, a .tvd file")->required();
    verb->add_option("-o,--output", options->outputPath,
                     "What to make: .pdf or .ps, or a file a page: .png, .svg, .eps")
        ->required();
    verb->add_option("--pages", options->pages, "Which pages, counted from 1: 1-3,5 or 4- (all)");
    verb->add_option("--dpi", options->dpi, "Resolution of .png pages")
        ->check(CLI::Range(pngMinimumDpi, pngMaximumDpi))
        ->capture_default_str();
    addPdfFlags(*verb, options->pdf);
    verb->footer("Example: tarnova render letter.tvd -o letter.pdf --pages 1-3");
    verb->callback([options, &context] { runRender(*options, context); });
}

}  // namespace tarnova
