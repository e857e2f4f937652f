// Runs that build a document of 250 records a page: over all records, over every third of them by a record list, and
// over as many as those by a plain range. What a record costs must not be more with the list. Run: record_list_bench
// TARNOVA FOLDER [RECORDS]

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "bench/process.h"

namespace tarnova::bench {
namespace {

constexpr std::uint32_t defaultRecords = 1000000;
constexpr std::uint32_t recordsOnPage = 250;
constexpr std::uint32_t listStep = 3;
constexpr int runs = 5;
constexpr double ratioLimit = 1.1;  // what differs from run to run on a busy machine, and taking the list in

void writeJob(const std::string& folder, std::uint32_t records) {
    std::ofstream(folder + "/bench.ddf")
        << "\"Bench\" recordDefinition; TARNOVAJNT signature; 1:\"Code\", 2:\"City\" fieldName; \"Code\" keyField;\n"
           "1 dataType; 1 fileType; 2 osType; \"City\" extractionRecord; \"City\" field;\n";
    std::ofstream data(folder + "/bench.csv");
    data << "Code,City\n";
    for (std::uint32_t i = 1; i <= records; ++i)
        data << fmt::format("C-{:07},Springfield {}\n", i, i % 997);
    std::ofstream layout(folder + "/bench.tvd");
    layout
        << R"({"tarnovaLayout": 1, "pageSize": [612, 792], "pages": [{"items": [{"bounds": [20, 20, 570, 750], "text": ")";
    for (std::uint32_t i = 1; i <= recordsOnPage; ++i)
        layout << fmt::format("{{{{{}:City}}}} ", i);
    layout << "\"}]}]}\n";
}

std::string everyThird(std::uint32_t records) {
    std::string text;
    for (std::uint32_t i = 1; i <= records; i += listStep)
        fmt::format_to(std::back_inserter(text), "{}{}", i == 1 ? "" : ",", i);
    return text;
}

/// A run of the front door over `count` records that the command `choice` picks. Drawing the last page fails when the
/// run didn't get there.
std::string writeScript(const std::string& folder, std::uint32_t count, const std::string& choice) {
    const std::string path = folder + "/run.jsonl";
    std::ofstream script(path);
    script << R"({"command":1400}
{"command":1405,"args":{"item0":"bench.ddf"}}
{"command":1207,"args":{"item1":"Bench"}}
{"command":1209,"args":{"item0":"bench.csv"}}
{"host":"open","path":"bench.tvd"}
{"command":508}
)" << choice
           << "\n{\"command\":1212}\n{\"host\":\"idle\"}\n"
           << fmt::format(R"({{"host":"export","document":1,"path":"last.svg","pages":"{}"}})",
                          (count + recordsOnPage - 1) / recordsOnPage)
           << "\n";
    return path;
}

/// CPU seconds of a run, the time without any record taken off; below 0 after a failure.
double secondsOf(const std::string& tarnova, const std::string& folder, const std::string& script, double start) {
    const costRec cost = bestOf(runs, {tarnova, "exec", "--home", folder, script}, folder);
    return cost.ran ? cost.cpuSeconds - start : -1;
}

int runAll(const std::string& tarnova, const std::string& folder, std::uint32_t records) {
    std::filesystem::create_directories(folder);
    const std::string whole = std::filesystem::absolute(folder).string();
    writeJob(whole, records);
    const std::uint32_t third = (records + listStep - 1) / listStep;
    const auto range = [](std::uint32_t last) {
        return fmt::format(R"({{"command":506,"args":{{"item0":1,"item1":{}}}}})", last);
    };
    const std::string list = fmt::format(R"({{"command":610,"args":{{"item0":"{}"}}}})", everyThird(records));
    const double start = secondsOf(tarnova, whole, writeScript(whole, 1, range(1)), 0);
    struct benchRow {
        const char* name;
        std::uint32_t count;
        std::string choice;
        double seconds;
    } rows[] = {{"all records", records, range(records), 0},
                {"a range of a third", third, range(third), 0},
                {"a list of every third", third, list, 0}};
    for (benchRow& row : rows) {
        row.seconds = secondsOf(tarnova, whole, writeScript(whole, row.count, row.choice), start);
        if (row.seconds < 0) return fmt::print("{} could not be run\n", row.name), 1;
        fmt::print("{:<24}{:8} records {:8.3f} s CPU {:8.3f} us a record\n", row.name, row.count, row.seconds,
                   row.seconds / row.count * 1e6);
    }
    const double ratio = rows[2].seconds / rows[2].count / (rows[0].seconds / rows[0].count);
    fmt::print("{:<24}{:8.2f} (at most {})\n", "list beside all", ratio, ratioLimit);
    fmt::print("{:<24}{:8.2f}\n", "list beside the range", rows[2].seconds / rows[1].seconds);
    return ratio <= ratioLimit ? 0 : 1;
}

}  // namespace
}  // namespace tarnova::bench

int main(int argc, char** argv) {
    using namespace tarnova::bench;
    if (argc < 3 || argc > 4) {
        fmt::print(stderr, "usage: record_list_bench TARNOVA FOLDER [RECORDS]\n");
        return 2;
    }
    const std::string tarnova = std::filesystem::canonical(argv[1]).string();
    return runAll(tarnova, argv[2], argc == 4 ? static_cast<std::uint32_t>(std::stoul(argv[3])) : defaultRecords);
}
