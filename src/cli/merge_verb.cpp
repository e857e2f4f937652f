// `tarnova merge`: records into a layout, out comes a built document, a PDF or pictures.

#include <fmt/format.h>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <CLI/CLI.hpp>
#include <filesystem>

#include "cli/job_setup.h"
#include "cli/pdf_choice.h"
#include "cli/record_choice.h"
#include "cli/verb.h"
#include "definitions/definition_state.h"
#include "definitions/record_def_set.h"
#include "engine/run/merge_run.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "host/files/layout_file.h"
#include "host/render/page_path.h"
#include "host/render/png_output.h"
#include "tags/link_names.h"

namespace tarnova {
namespace {

enum class OutputKind : std::uint8_t { unknown, layout, pdf, png };

struct mergeOptionsRec {
    std::string layoutPath;
    std::string outputPath;
    std::uint32_t step = 0;
    double dpi = pngDefaultDpi;
    bool noHeader = false;
    bool json = false;
    pdfChoiceRec pdf;
    dataChoiceRec data;
    recordChoiceRec records;
};

OutputKind outputKindOf(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    if (extension == ".tvd") return OutputKind::layout;
    if (extension == ".pdf") return OutputKind::pdf;
    if (extension == ".png") return OutputKind::png;
    return OutputKind::unknown;
}

/// Tells of links whose name the definition doesn't have: such a link would end the run at its first page.
bool allLinksAreDefined(DocumentModel& layout, const mergeOptionsRec& options) {
    if (reselectCurrentRecordDef(0) != 0 || session().currentRecordDef == nullptr) return false;
    const recordDefRec* const definition = session().currentRecordDef;
    bool good = true;
    for (const std::string& name : linkNamesOf(layout.ref())) {
        Str255 link;
        pstrFromView(link, sizeof(link), name);
        extractionRec* record = nullptr;
        if (findExtraction(definition, link, record, 0) == 0 && record != nullptr) continue;
        sayError(fmt::format("{}: the link \"{}\" isn't in the definition of {}", options.layoutPath, name,
                             options.data.ddfPath.empty() ? options.data.dataPath : options.data.ddfPath));
        good = false;
    }
    if (good) return true;
    std::string names;
    for (std::uint16_t i = 0; i < extractionCount(*definition); ++i) {
        names += fmt::format("{}\"{}\"", names.empty() ? "" : ", ", pstrView(definition->extractions[i]->name));
    }
    sayError("it has the links " + names);
    return false;
}

class PdfOutput final : public PageOutput {
 public:
    [[nodiscard]] bool open(const mergeOptionsRec& options, const DocumentModel& layout) {
        PdfOptions pdf = pdfOptionsOf(options.pdf, layout);
        pdf.pagesOfCopy = layout.pageCount();
        return writer.open(options.outputPath, pdf);
    }
    [[nodiscard]] errorWord takePages(Document& built) override {
        auto& document = dynamic_cast<DocumentModel&>(built);
        for (std::int32_t i = 0; i < document.pageCount(); ++i) {
            if (!writer.addPage(document, document.pageAt(i))) return errFailed;
        }
        return 0;
    }
    PdfWriter writer;
};

/// Pictures of pages; their names count through the whole run.
class PngOutput final : public PageOutput {
 public:
    PngOutput(std::string path, double resolution, std::int32_t pagesOfRun)
        : outputPath(std::move(path)), dpi(resolution), pageTotal(pagesOfRun) {}
    [[nodiscard]] errorWord takePages(Document& built) override {
        auto& document = dynamic_cast<DocumentModel&>(built);
        for (std::int32_t i = 0; i < document.pageCount(); ++i) {
            ++pages;
            const std::string path = pageFilePath(outputPath, pages, pageTotal, pageTotal == 1);
            if (!writePagePng(document, document.pageAt(i), path, dpi, &overset, error)) return errFailed;
        }
        return 0;
    }
    std::string error;
    std::vector<OversetText> overset;
    std::int32_t pages = 0;

 private:
    std::string outputPath;
    double dpi;
    std::int32_t pageTotal;
};

struct mergeResultRec {
    std::int64_t pages = 0;
    std::int64_t overset = 0;
    std::string error;  // of the output; the engine's own errors travel as an error word
};

errorWord mergeToPdf(DocumentModel& layout, const mergeOptionsRec& options, mergeResultRec& result) {
    PdfOutput output;
    errorWord error = output.open(options, layout) ? errorWord{0} : errFailed;
    error = mergeToOutput(layout.ref(), output, error);
    // A cancelled run leaves no file: without `finish` the writer takes its temporary one away.
    if (error == 0 && session().cancelRun == 0 && !output.writer.finish()) error = errFailed;
    result = {output.writer.pageCount(), output.writer.oversetStories(), output.writer.error()};
    return error;
}

errorWord mergeToPng(DocumentModel& layout, const mergeOptionsRec& options, mergeResultRec& result) {
    PngOutput output(options.outputPath, options.dpi, session().slotTarget * layout.pageCount());
    const errorWord error = mergeToOutput(layout.ref(), output, 0);
    result = {output.pages, static_cast<std::int64_t>(output.overset.size()), output.error};
    return error;
}

errorWord mergeToLayout(DocumentModel& layout, const std::string& path, mergeResultRec& result) {
    const errorWord error = mergeToBuiltDocument(layout.ref(), 0);
    if (error != 0 || session().cancelRun != 0) return error;
    for (const UID story : layout.stories()) {
        if (layout.isOverset(story)) ++result.overset;
    }
    result.pages = layout.pageCount();
    layoutError saveError;
    if (saveLayout(layout, path, saveError)) return 0;
    result.error = fmt::format("{}: {}", path, saveError.message);
    return errFailed;
}

errorWord mergeToFile(DocumentModel& layout, const mergeOptionsRec& options, mergeResultRec& result) {
    switch (outputKindOf(options.outputPath)) {
        case OutputKind::pdf:
            return mergeToPdf(layout, options, result);
        case OutputKind::png:
            return mergeToPng(layout, options, result);
        default:
            return mergeToLayout(layout, options.outputPath, result);
    }
}

void answer(const mergeOptionsRec& options, std::uint32_t records, const mergeResultRec& result) {
    if (!options.json) {
        fmt::print("{}: {} page{} of {} record{}\n", options.outputPath, result.pages, result.pages == 1 ? "" : "s",
                   records, records == 1 ? "" : "s");
        return;
    }
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartObject();
    writer.Key("output");
    writer.String(options.outputPath);
    writer.Key("records");
    writer.Uint(records);
    writer.Key("pages");
    writer.Int64(result.pages);
    writer.Key("oversetStories");
    writer.Int64(result.overset);
    writer.EndObject();
    fmt::print("{}\n", buffer.GetString());
}

/// What went wrong, for people. A refused tag was told when it was met.
void tellFailure(errorWord error, const mergeResultRec& result) {
    if (!result.error.empty()) return sayError(result.error);
    auto& run = session();
    if (error == 0) error = run.engineError;
    if (error == 0 || error == errFailed) return;
    run.engineError = error;
    surfaceError();
}

void runMerge(const mergeOptionsRec& options, verbContext& context) {
    if (outputKindOf(options.outputPath) == OutputKind::unknown) {
        return failVerb(context,
                        fmt::format("{}: the output's name must end in .pdf, .png or .tvd", options.outputPath),
                        exitUsage);
    }
    if (!pdfChoiceFits(options.pdf, options.outputPath, context)) return;
    if (!recordChoiceFits(options.records, context)) return;
    context.exitStatus = exitFailed;
    const std::unique_ptr<DocumentModel> layout = openLayoutForVerb(options.layoutPath);
    if (!layout || !selectData(options.data) || !allLinksAreDefined(*layout, options)) return;
    // Positions behind the last record stay blank: unused labels of a sheet carry no text.
    appPrefs().textDefaults.endOfFile.string[0] = 0;
    appPrefs().textDefaults.stackPad.string[0] = 0;
    if (!takeRecordChoice(options.records, layout->ref(), options.step)) return;
    session().stepBy = options.step;

    mergeResultRec result;
    errorWord error = startMergeRun(layout->ref(), 0);
    const std::uint32_t records = session().recordsToDo;
    if (error == 0) error = mergeToFile(*layout, options, result);
    const bool cancelled = session().cancelRun != 0;
    if (error != 0) tellFailure(error, result);
    finishMergeRun();
    if (error != 0 || cancelled) return;
    if (result.overset > 0) {
        sayError(fmt::format("{}: text doesn't fit its frame in {} place{}; make the frames larger or the text smaller",
                             options.outputPath, result.overset, result.overset == 1 ? "" : "s"));
    }
    answer(options, records, result);
    context.exitStatus = exitDone;
}

}  // namespace

void addMergeVerb(CLI::App& app, verbContext& context) {
    auto options = std::make_shared<mergeOptionsRec>();
    CLI::App* const verb = app.add_subcommand("merge", "Merge the records of a data file into a layout");
    verb->add_option("LAYOUT", options->layoutPath, "The layout, a .tvd file with links")->required();
    verb->add_option("--data", options->data.dataPath, "The data: delimited text with a record a line")->required();
    verb->add_option("--ddf", options->data.ddfPath,
                     "A definition of the data; without it the data's first line gives the field names");
    verb->add_option("--definition", options->data.definitionName, "Which definition of the DDF");
    addRecordOptions(*verb, options->records);
    verb->add_option("--step", options->step, "Records on a page (the highest sequence number of the links)")
        ->check(CLI::Range(1, 2000));
    verb->add_option("--dpi", options->dpi, "Resolution of .png pages")
        ->check(CLI::Range(pngMinimumDpi, pngMaximumDpi))
        ->capture_default_str();
    addPdfFlags(*verb, options->pdf);
    verb->add_flag("--no-header", options->noHeader, "The first line is a record and no header (with --ddf)");
    verb->add_option("-o,--output", options->outputPath, "What to make: .pdf, .png (a file a page) or .tvd")
        ->required();
    addJsonFlag(*verb, options->json);
    verb->footer("Example: tarnova merge letter.tvd --data customers.csv -o letters.pdf");
    verb->callback([options, &context] {
        options->data.hasHeader = !options->noHeader;
        runMerge(*options, context);
    });
}

}  // namespace tarnova
