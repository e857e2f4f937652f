// `tarnova merge`: records into a layout, out comes a built document, a PDF or pictures.

#include <fmt/format.h>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <map>
#include <numeric>

#include "cli/interrupt.h"
#include "cli/job_setup.h"
#include "cli/pdf_choice.h"
#include "cli/record_choice.h"
#include "cli/run_job.h"
#include "cli/verb.h"
#include "data/record_selection.h"
#include "engine/session/session.h"
#include "host/files/layout_file.h"
#include "host/render/png_output.h"

namespace tarnova {
namespace {

enum class OutputKind : std::uint8_t { unknown, layout, pdf, png };

// Layout codes of the command that takes them.
enum LayoutCode : std::uint32_t { layoutStep = 0, layoutCutAndStack = 1, layoutStackSubset = 2, layoutStackRange = 3 };
const std::map<std::string, std::uint32_t> layoutCodes = {{"step", layoutStep},
                                                          {"cut-and-stack", layoutCutAndStack},
                                                          {"stack-subset", layoutStackSubset},
                                                          {"stack-range", layoutStackRange}};

constexpr std::uint32_t commandArm = 508;
constexpr std::uint32_t commandOpenData = 1209;
constexpr std::uint32_t commandSetOptions = 1205;
constexpr std::uint32_t commandBuild = 1212;
constexpr std::uint32_t commandRunDriver = 1246;
constexpr std::uint32_t commandAddSearchPath = 1222;
constexpr std::int32_t statusPathsFull = -6027;

struct mergeOptionsRec {
    std::string layoutPath;
    std::string outputPath;
    std::uint32_t step = 0;
    std::uint32_t layout = layoutStep;
    int jobs = 1;
    double dpi = pngDefaultDpi;
    bool json = false;
    std::vector<std::string> searchPaths;
    bool searchBelow = false;
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

struct mergeResultRec {
    std::int64_t pages = 0;
    std::int64_t overset = 0;
    std::uint32_t records = 0;
    PictureProblems pictures;
    std::uint32_t withoutRecord = 0;  // links on places behind the last record
    std::uint32_t withoutData = 0;    // links whose field is empty
};

/// Saves the built document and counts what it holds.
bool saveBuilt(DocumentModel& layout, const std::string& path, mergeResultRec& result) {
    for (const UID story : layout.stories()) {
        if (layout.isOverset(story)) ++result.overset;
    }
    result.pages = layout.pageCount();
    layoutError saveError;
    if (saveLayout(layout, path, saveError)) return true;
    sayError(fmt::format("{}: {}", path, saveError.message));
    return false;
}

/// Sheets of a pile that is cut into stacks.
std::uint32_t stackHeight(std::uint32_t total) {
    const auto& run = session();
    const std::uint32_t stacks = run.stepBy != 0 ? run.stepBy : run.highestSequence;
    return (total + stacks - 1) / stacks;
}

/// A range means its records and no others, where the engine would fill the last page up from behind it: so it becomes
/// a list. The range of a stack range counts sheets of the whole pile.
bool settleRecords(const mergeOptionsRec& options, std::uint32_t total) {
    auto& run = session();
    const bool countsSheets = options.layout == layoutStackRange;
    if (countsSheets && !run.recordList.empty()) {
        sayError(takeErrorText(errListWithStack));
        return false;
    }
    if (!run.recordList.empty() || run.rangeFirst == 0) return true;
    const std::uint32_t most = countsSheets ? stackHeight(total) : total;
    if (run.rangeFirst > most) {
        sayError(takeErrorText(errRangeBehindEnd));
        return false;
    }
    run.rangeLast = std::min(run.rangeLast, most);
    if (countsSheets) return true;
    std::vector<std::int32_t> list(run.rangeLast - run.rangeFirst + 1);
    std::iota(list.begin(), list.end(), static_cast<std::int32_t>(run.rangeFirst) - 1);
    useRecordRange({1, static_cast<std::uint32_t>(list.size()), std::move(list)});
    return true;
}

/// How many records the pages show. Each sheet of a stack range shows one of every stack.
std::uint32_t recordsOfRun(const mergeOptionsRec& options, std::uint32_t total) {
    const auto& run = session();
    const auto& list = run.recordList;
    const auto inFile = [total](std::int32_t value) { return value >= 0 && std::cmp_less(value, total); };
    if (!list.empty()) return static_cast<std::uint32_t>(std::count_if(list.begin(), list.end(), inFile));
    if (run.rangeFirst == 0 || options.layout != layoutStackRange) return total;
    std::uint32_t records = 0;
    for (std::uint32_t first = run.rangeFirst; first <= total; first += stackHeight(total))
        records += std::min(run.rangeLast - run.rangeFirst, total - first) + 1;
    return records;
}

/// Folders in which pictures are looked for besides those of the layout and the data.
bool addSearchPaths(const mergeOptionsRec& options) {
    for (const std::string& path : options.searchPaths) {
        std::error_code ignored;
        IDFile folder(std::filesystem::absolute(path, ignored).lexically_normal().string());
        std::uint8_t below = options.searchBelow ? 1 : 0;
        const std::int32_t status = EngineCommand(commandAddSearchPath).item(0, folder).item(4, below).run();
        if (status == 0) continue;
        sayError(status == statusPathsFull ? fmt::format("{}: ten folders to search are taken already", path)
                                           : fmt::format("{}: no folder to search for pictures", path));
        return false;
    }
    return true;
}

/// Arms the run with all that was asked for.
bool armRun(RunJob& job, DocumentModel& layout, const mergeOptionsRec& options, mergeResultRec& result) {
    UIDRef document = layout.ref();
    IDFile output(options.outputPath), dataOfDefinition;
    PMString wishes(sinkOptionsText({options.pdf.bleed, options.pdf.bookmarks, options.dpi, options.jobs}));
    auto step = static_cast<std::int32_t>(options.step);
    std::uint32_t layoutCode = options.layout, total = 0;
    if (!job.send(EngineCommand(commandArm).item(0, document).item(1, output).item(7, wishes))) return false;
    if (!job.send(EngineCommand(commandSetOptions).item(3, step).item(4, layoutCode))) return false;
    if (!job.send(EngineCommand(commandOpenData).item(0, dataOfDefinition).item(1, total))) return false;
    if (!takeRecordChoice(options.records, document, options.step) || !settleRecords(options, total)) return false;
    result.records = recordsOfRun(options, total);
    return true;
}

bool runToOutput(RunJob& job, DocumentModel& layout, const mergeOptionsRec& options, mergeResultRec& result) {
    if (outputKindOf(options.outputPath) == OutputKind::layout) {
        return job.run(commandBuild) && saveBuilt(layout, options.outputPath, result);
    }
    if (!job.run(commandRunDriver)) return false;
    result.pages = session().jobCountA;
    result.overset = session().jobCountB;
    return true;
}

/// "1 picture", "2 pictures".
std::string pictures(std::uint64_t count) {
    return fmt::format("{} picture{}", count, count == 1 ? "" : "s");
}

void tellPictureProblems(const std::string& outputPath, const PictureProblems& problems) {
    if (problems.missing > 0)
        sayError(fmt::format("{}: {} can't be found; say where to look with --search-path", outputPath,
                             pictures(problems.missing)));
    if (problems.damaged > 0)
        sayError(fmt::format("{}: {} can't be placed, damaged or of an unknown kind", outputPath,
                             pictures(problems.damaged)));
    for (const std::string& example : problems.examples)
        sayError("  " + example);
    if (problems.examples.size() == pictureExampleLimit) sayError("  ...");
}

void answer(const mergeOptionsRec& options, const mergeResultRec& result) {
    const std::uint32_t records = result.records;
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
    writer.Key("missingPictures");
    writer.Uint64(result.pictures.missing);
    writer.Key("damagedPictures");
    writer.Uint64(result.pictures.damaged);
    writer.Key("linksWithoutRecord");
    writer.Uint(result.withoutRecord);
    writer.Key("linksWithoutData");
    writer.Uint(result.withoutData);
    writer.EndObject();
    fmt::print("{}\n", buffer.GetString());
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
    RunJob job;
    DocumentModel* const layout = job.open(options.layoutPath);
    if (layout == nullptr || !addSearchPaths(options) || !selectData(options.data) ||
        !linksAreDefined(*layout, options.layoutPath, options.data))
        return;
    mergeResultRec result;
    const bool done = armRun(job, *layout, options, result) && runToOutput(job, *layout, options, result);
    if (wasInterrupted()) context.exitStatus = exitInterrupted;
    if (!done) return;
    result.withoutRecord = session().fillerCount;
    result.withoutData = session().noDataCount;
    if (result.overset > 0) {
        sayError(fmt::format("{}: text doesn't fit its frame in {} place{}; make the frames larger or the text smaller",
                             options.outputPath, result.overset, result.overset == 1 ? "" : "s"));
    }
    result.pictures = job.pictureProblems(outputKindOf(options.outputPath) != OutputKind::layout);
    tellPictureProblems(options.outputPath, result.pictures);
    answer(options, result);
    context.exitStatus = exitDone;
}

}  // namespace

void addMergeVerb(CLI::App& app, verbContext& context) {
    auto options = std::make_shared<mergeOptionsRec>();
    CLI::App* const verb = app.add_subcommand("merge", "Merge the records of a data file into a layout");
    verb->add_option("LAYOUT", options->layoutPath, "The layout, a .tvd file with links")->required();
    addDataOptions(*verb, options->data);
    addRecordOptions(*verb, options->records);
    verb->add_option("--step", options->step, "Records on a page (the highest sequence number of the links)")
        ->check(CLI::Range(1, 2000));
    verb->add_option(
            "--mode", options->layout,
            "How records go to pages: step (a page takes the next ones), cut-and-stack (the pile is cut, and the "
            "stacks laid on each other are in order), stack-range (rows of such a pile), stack-subset (a pile of "
            "some records)")
        ->transform(CLI::CheckedTransformer(layoutCodes).description(""))
        ->type_name("MODE");
    verb->add_option("--dpi", options->dpi, "Resolution of .png pages")
        ->check(CLI::Range(pngMinimumDpi, pngMaximumDpi))
        ->capture_default_str();
    verb->add_option("--search-path", options->searchPaths,
                     "A folder in which pictures are looked for, besides those of the layout and of the data; may be "
                     "given up to ten times")
        ->type_name("FOLDER")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    verb->add_flag("--search-below", options->searchBelow, "The folders below these are searched too");
    addPdfFlags(*verb, options->pdf);
    verb->add_option("--jobs", options->jobs, "Processes that work on a .pdf; the file is the same with any number (1)")
        ->check(CLI::Range(1, 64));
    verb->add_option("-o,--output", options->outputPath, "What to make: .pdf, .png (a file a page) or .tvd")
        ->required();
    addJsonFlag(*verb, options->json);
    verb->footer("Example: tarnova merge letter.tvd --data customers.csv -o letters.pdf");
    verb->callback([options, &context] { runMerge(*options, context); });
}

}  // namespace tarnova
