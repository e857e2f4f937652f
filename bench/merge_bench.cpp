// The reference job through the whole program, beside pdfTeX on the same job: pages a second of CPU, peak memory, bytes
// a page, and where the time goes. Run: merge_bench TARNOVA FOLDER [RECORDS]

#include <fmt/format.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>

#include "bench/letter_job.h"
#include "bench/process.h"
#include "cli/job_setup.h"
#include "engine/run/merge_run.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "host/render/pdf_writer.h"
#include "merge/tag_value.h"
#include "output/build_tables.h"
#include "tags/link_names.h"

namespace tarnova::bench {
namespace {

constexpr std::uint32_t defaultRecords = 10000;
constexpr int runs = 5;

double cpuSecondsOf(const std::function<void()>& work) {
    const std::clock_t start = std::clock();
    work();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

double bestSecondsOf(const std::function<void()>& work) {
    double best = cpuSecondsOf(work);
    for (int i = 1; i < runs; ++i)
        best = std::min(best, cpuSecondsOf(work));
    return best;
}

/// Composes nothing: what remains of a run is fetching and replacing.
class NoComposer final : public Composer {
    class Layout final : public StoryLayout {
        std::int32_t composedThrough() const override { return INT32_MAX; }
        std::int32_t columnOf(std::int32_t) const override { return 0; }
        bool isOverset() const override { return false; }
        std::optional<AnchorPoint> anchorAt(std::int32_t) const override { return {}; }
    };

 public:
    std::shared_ptr<const StoryLayout> compose(const DocumentModel&, const Story&, std::int32_t,
                                               const StoryPageTexts&) override {
        return layout;
    }

 private:
    std::shared_ptr<const StoryLayout> layout = std::make_shared<Layout>();
};

class NoOutput final : public PageOutput {
    errorWord takePages(Document&) override { return 0; }
};

class PdfPages final : public PageOutput {
 public:
    explicit PdfPages(const std::string& path) { good = writer.open(path, {}); }
    errorWord takePages(Document& built) override {
        auto& document = dynamic_cast<DocumentModel&>(built);
        for (std::int32_t i = 0; good && i < document.pageCount(); ++i) {
            good = writer.addPage(document, document.pageAt(i));
        }
        return good ? errorWord{0} : errFailed;
    }
    PdfWriter writer;
    bool good = false;
};

/// Merges the whole job into `output`. False when the run failed.
bool mergeAll(DocumentModel& layout, PageOutput& output) {
    session().rangeFirst = 0;
    session().rangeLast = 0;
    session().stepBy = 0;
    errorWord error = startMergeRun(layout.ref(), 0);
    error = mergeToOutput(layout.ref(), output, error);
    finishMergeRun();
    return error == 0;
}

/// Each link of each record fetched once, the repeated link twice, as the run does it.
void fetchAll(DocumentModel& layout, std::uint32_t records) {
    if (startMergeRun(layout.ref(), 0) != 0) return;
    std::vector<std::string> links = linkNamesOf(layout.ref());
    links.emplace_back("member");
    session().mergePassActive = 1;
    for (std::uint32_t record = 1; record <= records; ++record) {
        for (const std::string& name : links) {
            tagDataRec tag{};
            pstrFromView(tag.extractionRecordName, sizeof(tag.extractionRecordName), name);
            tagValueRec value;
            value.recordNumber = static_cast<std::int32_t>(record);
            if (fetchForTag(tag, defaultSetText, value, 0) != 0) return;
        }
    }
    session().mergePassActive = 0;
    finishMergeRun();
}

void printCost(const char* name, const costRec& cost, std::uint32_t pages, std::uintmax_t bytes) {
    fmt::print("  {:<34} {:>8.0f} pages/s {:>8.3f} s CPU {:>7.1f} MiB {:>6.0f} bytes a page\n", name,
               pages / cost.cpuSeconds, cost.cpuSeconds, cost.peakMebibytes, static_cast<double>(bytes) / pages);
}

int compareWithTex(const std::string& tarnova, const std::string& folder, std::uint32_t records) {
    fmt::print("{} letters to one PDF, best of {} runs\n", records, runs);
    const costRec ours =
        bestOf(runs, {tarnova, "merge", "letter.tvd", "--data", "letters.csv", "-o", "letters.pdf"}, folder);
    if (!ours.ran) {
        fmt::print(stderr, "merge_bench: tarnova failed in {}\n", folder);
        return 1;
    }
    printCost("tarnova merge", ours, records, std::filesystem::file_size(folder + "/letters.pdf"));
    struct texRow {
        const char* name;
        const char* job;
    };
    const texRow rows[] = {{"pdfTeX, static text set on each page", "letter-set"},
                           {"pdfTeX, static text shared by hand", "letter-shared"}};
    for (const texRow& row : rows) {
        const costRec tex = bestOf(runs, {"pdftex", "-interaction=batchmode", fmt::format("{}.tex", row.job)}, folder);
        if (!tex.ran) {
            fmt::print("  pdfTeX isn't installed\n");
            return 0;
        }
        printCost(row.name, tex, records, std::filesystem::file_size(fmt::format("{}/{}.pdf", folder, row.job)));
        fmt::print("  {:<34} {:>8.2f}\n", "  tarnova's speed over pdfTeX's", tex.cpuSeconds / ours.cpuSeconds);
    }
    return 0;
}

/// Memory is that of a chunk of pages, however many records are merged.
int compareMemory(const std::string& tarnova, const std::string& folder, std::uint32_t records) {
    for (const std::uint32_t part : {records / 10, records}) {
        const costRec cost = runProgram({tarnova, "merge", "letter.tvd", "--data", "letters.csv", "-o", "letters.pdf",
                                         "--records", fmt::format("1-{}", part)},
                                        folder);
        if (!cost.ran) return 1;
        fmt::print("  peak memory of {:>7} letters {:>26.1f} MiB\n", part, cost.peakMebibytes);
    }
    return 0;
}

/// The stages of one process by taking more and more of them along.
int tellStages(const std::string& folder, std::uint32_t records) {
    sessionInit();
    appPrefs().showProgress = 0;
    dataChoiceRec choice;
    choice.dataPath = folder + "/letters.csv";
    const std::unique_ptr<DocumentModel> layout = openLayoutForVerb(folder + "/letter.tvd");
    if (!layout || !selectData(choice)) return 1;
    NoOutput nothing;
    bool good = true;
    const double fetch = bestSecondsOf([&] { fetchAll(*layout, records); });
    const double compose = bestSecondsOf([&] { good = good && mergeAll(*layout, nothing); });
    const double whole = bestSecondsOf([&] {
        PdfPages pages(folder + "/stages.pdf");
        good = good && mergeAll(*layout, pages) && pages.writer.finish();
    });
    layout->setComposer(std::make_shared<NoComposer>());
    const double replace = bestSecondsOf([&] { good = good && mergeAll(*layout, nothing); });
    if (!good) return 1;
    const double perPage = 1e6 / records;
    fmt::print(
        "  where the time goes, us a page: fetch {:.1f}, copy and replace {:.1f}, compose {:.1f}, write {:.1f}\n",
        fetch * perPage, (replace - fetch) * perPage, (compose - replace) * perPage, (whole - compose) * perPage);
    freeBuildTables();
    return 0;
}

}  // namespace
}  // namespace tarnova::bench

int main(int argumentCount, char** arguments) {
    if (argumentCount < 3) {
        fmt::print(stderr, "usage: merge_bench TARNOVA FOLDER [RECORDS]\n");
        return 2;
    }
    const std::string tarnova = std::filesystem::absolute(arguments[1]).string();
    const std::string folder = std::filesystem::absolute(arguments[2]).string();
    const auto records =
        argumentCount > 3 ? static_cast<std::uint32_t>(std::stoul(arguments[3])) : tarnova::bench::defaultRecords;
    std::filesystem::create_directories(folder);
    setenv("XDG_DATA_HOME", (folder + "/home").c_str(), 1);
    tarnova::bench::writeLetterJob(folder, records);
    int failed = tarnova::bench::compareWithTex(tarnova, folder, records);
    if (failed == 0) failed = tarnova::bench::compareMemory(tarnova, folder, records);
    return failed != 0 ? failed : tarnova::bench::tellStages(folder, records);
}
