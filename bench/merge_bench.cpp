// The reference job through the whole program, beside pdfTeX on the same job: pages a second of CPU, peak memory, bytes
// a page, and where the time goes. Run: merge_bench TARNOVA FOLDER [RECORDS]

#include <fmt/format.h>

#include <array>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>

#include "bench/letter_job.h"
#include "bench/process.h"
#include "cli/job_setup.h"
#include "data/data_source.h"
#include "data/record_selection.h"
#include "engine/run/merge_pass.h"
#include "engine/run/start_run.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "host/render/pdf_writer.h"
#include "merge/tag_value.h"
#include "output/build_chunk.h"
#include "output/build_document.h"
#include "output/build_tables.h"
#include "tags/link_names.h"

namespace tarnova::bench {
namespace {

constexpr std::uint32_t defaultRecords = 10000;
constexpr int runs = 5;
constexpr std::array<std::uint32_t, 3> sizes = {1000, 10000, 100000};

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
        void addBounds(std::int32_t, std::int32_t, std::vector<LineBounds>&) const override {}
    };

 public:
    bool hasFont(const std::string&, const std::string&) const override { return true; }
    std::shared_ptr<const StoryLayout> compose(const DocumentModel&, const Story&, std::int32_t,
                                               const StoryPageTexts&) override {
        return layout;
    }

 private:
    std::shared_ptr<const StoryLayout> layout = std::make_shared<Layout>();
};

/// Takes the pages of a chunk; false when it can't.
using TakePages = std::function<bool(const DocumentModel&)>;

/// Readies the engine for the whole data; the number of records, 0 when that failed.
std::uint32_t startJob(DocumentModel& layout) {
    auto& run = session();
    dataSourceRec* source = nullptr;
    std::int16_t status = 0;
    std::uint32_t records = 0;
    beginJob(layout.ref());
    if (openCurrentData(source, status, nullptr, 0) != 0 || source == nullptr) return 0;
    if (dataSourceRecordCount(source, 1, records, 0) != 0 || records == 0) return 0;
    run.rangeFirst = run.rangeLast = 0;
    run.skipFirst = 1;
    run.stepBy = 1;
    run.recordPassMode = passModeStep;
    run.runStage = runStageRunning;
    return fitRangeToData(records - 1, 0) == 0 ? records - 1 : 0;
}

void endJob() {
    session().runStage = runStageIdle;
    dataSourceCloseAll();
}

/// Merges the whole job chunk by chunk, as a driver does it. False when that failed.
bool mergeAll(DocumentModel& layout, const TakePages& take) {
    const std::uint32_t records = startJob(layout);
    constexpr std::uint32_t chunk = 64;
    appPrefs().chunkRecords = chunk;
    composeTemplate(layout.ref());
    bool good = records > 0;
    for (std::uint32_t first = 1; good && first <= records; first += chunk) {
        const std::unique_ptr<Document> built = layout.documentCopy();
        const std::uint32_t limit = std::min(first + chunk, records + 1);
        std::uint32_t done = 0;
        std::uint16_t cancel = 0;
        errorWord error = buildChunk(built->ref(), static_cast<std::int32_t>(limit - first), {.multiSlot = true}, 0);
        if (error == 0) error = mergeChunk(built->ref(), {first, limit, 1, passModeStep, true, false}, done, cancel);
        good = error == 0 && done == limit - first && take(dynamic_cast<const DocumentModel&>(*built));
    }
    endJob();
    return good;
}

/// Each link of each record fetched once, the repeated link twice, as the run does it.
void fetchAll(DocumentModel& layout, std::uint32_t records) {
    if (startJob(layout) == 0) return;
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
    endJob();
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

/// What a second process brings where there is a core for it.
int compareJobs(const std::string& tarnova, const std::string& folder) {
    double alone = 0;
    for (const char* jobs : {"1", "2"}) {
        costRec best;
        for (int i = 0; i < 3; ++i) {
            const costRec cost = runProgram({tarnova, "merge", "letter.tvd", "--data", "letters.csv", "--jobs", jobs,
                                             "-o", fmt::format("jobs{}.pdf", jobs)},
                                            folder);
            if (!cost.ran) return 1;
            if (!best.ran || cost.wallSeconds < best.wallSeconds) best = cost;
        }
        if (alone == 0) alone = best.wallSeconds;
        fmt::print("  --jobs {} {:>8.3f} s on the clock, {:>5.2f} times as fast\n", jobs, best.wallSeconds,
                   alone / best.wallSeconds);
    }
    return 0;
}

/// Memory is that of a chunk of pages, and time goes with the records, however many are merged.
int compareSizes(const std::string& tarnova, const std::string& folder) {
    const std::string job = folder + "/sizes";
    std::filesystem::create_directories(job);
    writeLetterJob(job, sizes.back());
    fmt::print("one job by its number of letters\n");
    double smallest = 0;
    for (const std::uint32_t letters : sizes) {
        const costRec cost = bestOf(letters > 10000 ? 1 : runs,
                                    {tarnova, "merge", "letter.tvd", "--data", "letters.csv", "--records",
                                     fmt::format("1-{}", letters), "-o", "letters.pdf"},
                                    job);
        if (!cost.ran) return 1;
        const double perLetter = cost.cpuSeconds * 1e6 / letters;
        if (smallest == 0) smallest = perLetter;
        fmt::print("  {:>7} letters {:>8.3f} s CPU {:>8.1f} us a letter {:>6.2f} of the smallest {:>8.1f} MiB\n",
                   letters, cost.cpuSeconds, perLetter, perLetter / smallest, cost.peakMebibytes);
    }
    return compareJobs(tarnova, job);
}

/// The stages of one process by taking more and more of them along.
int tellStages(const std::string& folder, std::uint32_t records) {
    sessionInit();
    appPrefs().showProgress = 0;
    dataChoiceRec choice;
    choice.dataPath = folder + "/letters.csv";
    const std::unique_ptr<DocumentModel> layout = openLayoutForVerb(folder + "/letter.tvd");
    if (!layout || !selectData(choice)) return 1;
    const auto nothing = [](const DocumentModel&) { return true; };
    bool good = true;
    const double fetch = bestSecondsOf([&] { fetchAll(*layout, records); });
    const double compose = bestSecondsOf([&] { good = good && mergeAll(*layout, nothing); });
    const double whole = bestSecondsOf([&] {
        PdfWriter writer;
        const auto write = [&](const DocumentModel& built) {
            for (std::int32_t i = 0; i < built.pageCount(); ++i)
                if (!writer.addPage(built, built.pageAt(i))) return false;
            return true;
        };
        good = good && writer.open(folder + "/stages.pdf", {}) && mergeAll(*layout, write) && writer.finish();
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
    if (failed == 0) failed = tarnova::bench::compareSizes(tarnova, folder);
    return failed != 0 ? failed : tarnova::bench::tellStages(folder, records);
}
