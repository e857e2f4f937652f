// The key index of a million records: what building it costs beside loading the same file into SQLite with an index on
// the same column, how much memory that takes, and what fetches cost. Run: key_index_bench FOLDER [RECORDS]

#include <fmt/format.h>
#include <sys/resource.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/process.h"
#include "data/data_source.h"
#include "data/key_index.h"
#include "data/quick_setup.h"
#include "definitions/record_def_set.h"
#include "engine/session/session.h"

namespace tarnova::bench {
namespace {

constexpr std::uint32_t defaultRecords = 1000000;
constexpr std::uint32_t fetches = 200000;  // of each kind
constexpr int runs = 3;
constexpr char buildMode[] = "--build";                    // as a definition file says
constexpr char recogniseMode[] = "--recognise-and-build";  // all about the file is found out first

constexpr const char* fieldNames[] = {"Code",   "Name",  "Street", "City",   "Country",
                                      "Remark", "Price", "Stock",  "Picture"};

std::string keyOf(std::uint32_t number, std::uint32_t records) {
    return fmt::format("C-{:07}", number % (records * 2 / 5 + 1));
}

// Nine fields, three of them quoted, doubled quotes in each record, a line end in quotes in every fiftieth; each key
// comes two or three times, in no order.
void writeData(const std::string& path, std::uint32_t records) {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    std::mt19937 random(20260101);
    fmt::print(file, "{}\n", fmt::join(fieldNames, ","));
    for (std::uint32_t i = 0; i < records; ++i) {
        const auto value = random();
        fmt::print(
            file,
            "{},\"Customer {}, \"\"{:08x}\"\" and sons\",\"{} Long Harbour Road{}\",Springfield {:04},Country {},"
            "\"A remark of usual length, with a comma\",{}.{:02},{},pictures/{:08x}.jpg\n",
            keyOf(static_cast<std::uint32_t>(value), records), i, value, i % 900, i % 50 == 0 ? "\nRear" : "",
            value % 10000, value % 200, value % 5000, i % 100, value % 777, value);
    }
    std::fclose(file);
}

struct openedRec {
    std::unique_ptr<recordDefRec> definition = std::make_unique<recordDefRec>();
    std::string indexPath;
};

// The definition comes from the first line and the record delimiter from the file, or both are known, as SQLite is told
// them too.
bool defineFor(const std::string& dataPath, const std::string& folder, bool isKnown, openedRec& opened) {
    sessionInit();
    dataState().indexFolder = folder;
    quickSetupAnalysis analysis;
    if (isKnown) {
        analysis.delimiter = ',';
        analysis.qualifier = '"';
        for (const char* name : fieldNames)
            analysis.fields.push_back({name, false});
    } else if (quickSetupAnalyze(dataPath.c_str(), analysis, 0) != 0) {
        return false;
    }
    quickSetupChoices choices;
    choices.detectLineEnd = !isKnown;
    applyQuickSetup(*opened.definition, analysis, choices);
    opened.indexPath = stableIndexPath(*opened.definition, dataPath);
    opened.indexPath.copy(opened.definition->databasePath, pathCapacity - 1);
    return prepareIndexFile(opened.indexPath, dataPath);
}

int build(const std::string& dataPath, const std::string& folder, bool isKnown) {
    openedRec opened;
    if (!defineFor(dataPath, folder, isKnown, opened)) return 1;
    dataSourceRec source{};
    opened.indexPath.copy(source.indexPath, pathCapacity - 1);
    std::int16_t status = 0;
    return keyIndexBuild(*opened.definition, source, 1, 0, 1, status, nullptr, 0) == 0 && status == 0 ? 0 : 1;
}

double cpuSeconds() {
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

// The source, opened as before each fetch of a merge; null after a failure.
dataSourceRec* openFor(const openedRec& opened) {
    dataSourceRec* source = nullptr;
    std::int16_t status = 0;
    const errorWord err =
        dataSourceOpen(opened.definition.get(), 1, 0, 0, source, status, nullptr, nullptr, nullptr, 0);
    return err == 0 ? source : nullptr;
}

// One value of one record. False when nothing was found.
bool fetchOne(dataSourceRec* source, std::int32_t number, const std::uint8_t* key, const extractionRec& link) {
    fetchRequest request{};
    request.recordNumber = number;
    request.key = key;
    request.extraction = &link;
    void* value = nullptr;
    std::uint32_t length = 0;
    std::int16_t status = 0;
    const errorWord err = dataSourceFetch(source, &request, 0, value, length, status, 0);
    freeBlock(value);
    return err == 0 && status == fetchFound;
}

struct fetchCosts {
    double firstOpen = 0, opens = 0, byNumber = 0, byKey = 0;  // CPU seconds
    std::uint32_t found = 0;
};

template <typename Work>
double secondsOf(Work work) {
    const double start = cpuSeconds();
    work();
    return cpuSeconds() - start;
}

bool measureFetches(const std::string& dataPath, const std::string& folder, std::uint32_t records, fetchCosts& costs) {
    openedRec opened;
    if (!defineFor(dataPath, folder, true, opened)) return false;
    extractionRec link{};
    pstrSet(link.field, "City");
    dataSourceRec* source = nullptr;
    costs.firstOpen = secondsOf([&] { source = openFor(opened); });
    if (source == nullptr) return false;
    costs.opens = secondsOf([&] {
        for (std::uint32_t i = 0; i < 2 * fetches; ++i)
            if (openFor(opened) == source) ++costs.found;
    });
    if (costs.found != 2 * fetches) return false;
    costs.found = 0;
    std::mt19937 random(7);
    costs.byNumber = secondsOf([&] {
        for (std::uint32_t i = 0; i < fetches; ++i)
            costs.found += fetchOne(source, static_cast<std::int32_t>(1 + random() % records), nullptr, link);
    });
    std::vector<std::string> keys;
    for (std::uint32_t i = 0; i < fetches; ++i)
        keys.push_back(keyOf(static_cast<std::uint32_t>(random()), records));
    costs.byKey = secondsOf([&] {
        for (const std::string& each : keys) {
            Str255 key;
            pstrSet(key, each);
            costs.found += fetchOne(source, -1, key, link);
        }
    });
    dataSourceCloseAll();
    return true;
}

costRec loadIntoSqlite(const std::string& dataPath, const std::string& folder) {
    const std::string database = folder + "/bench.db";
    costRec best;
    for (int i = 0; i < runs; ++i) {
        std::filesystem::remove(database);
        const costRec cost = runProgram(
            {"sqlite3", database, ".mode csv", ".import " + dataPath + " t", "create index byCode on t(Code)"}, folder);
        if (!cost.ran) return cost;
        if (i == 0 || cost.cpuSeconds < best.cpuSeconds) best = cost;
    }
    std::filesystem::remove(database);
    return best;
}

void print(const char* what, const costRec& cost) {
    if (cost.ran)
        fmt::print("{:<28}{:8.3f} s CPU {:8.3f} s wall {:8.1f} MiB peak\n", what, cost.cpuSeconds, cost.wallSeconds,
                   cost.peakMebibytes);
    else
        fmt::print("{:<28}could not be run\n", what);
}

int runAll(const std::string& self, const std::string& folder, std::uint32_t records) {
    std::filesystem::create_directories(folder);
    const std::string whole = std::filesystem::absolute(folder).string();
    const std::string data = whole + "/data.csv", indexes = whole + "/indexes";
    writeData(data, records);
    fmt::print("{} records, {:.1f} MB\n", records, static_cast<double>(std::filesystem::file_size(data)) / 1e6);

    const costRec index = bestOf(runs, {self, buildMode, data, indexes}, whole);
    print("key index", index);
    print("with all found out first", bestOf(runs, {self, recogniseMode, data, indexes}, whole));
    const costRec sqlite = loadIntoSqlite(data, whole);
    print("sqlite3 import and index", sqlite);
    if (index.ran && sqlite.ran)
        fmt::print("{:<28}{:8.3f} of its CPU (at most 0.35)\n", "ratio", index.cpuSeconds / sqlite.cpuSeconds);

    fetchCosts costs;
    if (!measureFetches(data, indexes, records, costs)) return 1;
    fmt::print("{:<28}{:8.3f} s CPU\n", "first open of a built index", costs.firstOpen);
    fmt::print("{:<28}{:8.3f} s CPU\n", fmt::format("{} opens, unchanged", 2 * fetches), costs.opens);
    fmt::print("{:<28}{:8.3f} s CPU\n", fmt::format("{} fetches by number", fetches), costs.byNumber);
    fmt::print("{:<28}{:8.3f} s CPU\n", fmt::format("{} fetches by key", fetches), costs.byKey);
    fmt::print("{:<28}{:8.3f} s CPU (at most 0.5), {} of {} found\n", "together", costs.byNumber + costs.byKey,
               costs.found, 2 * fetches);
    return index.ran && costs.found >= fetches ? 0 : 1;
}

}  // namespace
}  // namespace tarnova::bench

int main(int argc, char** argv) {
    using namespace tarnova::bench;
    if (argc == 4 && std::strcmp(argv[1], buildMode) == 0) return build(argv[2], argv[3], true);
    if (argc == 4 && std::strcmp(argv[1], recogniseMode) == 0) return build(argv[2], argv[3], false);
    if (argc < 2 || argc > 3) {
        fmt::print(stderr, "usage: key_index_bench FOLDER [RECORDS]\n");
        return 2;
    }
    const std::string self = std::filesystem::canonical("/proc/self/exe").string();
    return runAll(self, argv[1], argc == 3 ? static_cast<std::uint32_t>(std::stoul(argv[2])) : defaultRecords);
}
