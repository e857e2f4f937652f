// A price run through the whole program, beside pdfTeX on the same pages: price cells a second of CPU, and how the cost
// grows with the cells. Run: price_bench TARNOVA FOLDER

#include <fmt/format.h>

#include <array>
#include <cstdlib>
#include <filesystem>

#include "bench/price_job.h"
#include "bench/process.h"

namespace tarnova::bench {
namespace {

constexpr std::uint32_t articles = 200000;
constexpr std::uint32_t cells = 5000;
constexpr std::array<std::uint32_t, 3> sizes = {10000, 30000, 100000};
constexpr int runs = 5;

void printCost(const char* name, const costRec& cost) {
    fmt::print("  {:<44} {:>8.0f} cells/s {:>8.3f} s CPU {:>7.1f} MiB\n", name, cells / cost.cpuSeconds,
               cost.cpuSeconds, cost.peakMebibytes);
}

std::vector<std::string> priceRun(const std::string& tarnova, const std::string& output) {
    return {tarnova, "price", "catalog.tvd", "--ddf", "prices.ddf", "--data", "articles.csv", "-o", output};
}

int compareWithTex(const std::string& tarnova, const std::string& folder) {
    writeCatalog(folder, cells, articles);
    writeTexCatalogs(folder, cells, articles);
    fmt::print("{} price cells on {} pages from {} articles to one PDF, best of {} runs\n", cells, cells / cellsOfPage,
               articles, runs);
    const costRec first = bestOf(runs, priceRun(tarnova, "catalog.pdf"), folder,
                                 [&folder] { std::filesystem::remove_all(folder + "/home"); });
    const costRec again = bestOf(runs, priceRun(tarnova, "catalog.pdf"), folder);
    if (!first.ran || !again.ran) {
        fmt::print(stderr, "price_bench: tarnova failed in {}\n", folder);
        return 1;
    }
    printCost("tarnova price, the list's first run", first);
    printCost("tarnova price, the list is indexed", again);
    struct texRow {
        const char* name;
        const char* job;
        const costRec& ours;
    };
    const texRow rows[] = {{"pdfTeX, values stand in their cells", "catalog-set", again},
                           {"pdfTeX, values are found in the list", "catalog-list", first}};
    for (const texRow& row : rows) {
        const costRec tex = bestOf(runs, {"pdftex", "-interaction=batchmode", fmt::format("{}.tex", row.job)}, folder);
        if (!tex.ran) {
            fmt::print("  pdfTeX isn't installed, or can't hold the list\n");
            continue;
        }
        printCost(row.name, tex);
        fmt::print("  {:<44} {:>8.2f}\n",
                   &row.ours == &again ? "  tarnova's speed over it, the list indexed"
                                       : "  tarnova's speed over it, first run",
                   tex.cpuSeconds / row.ours.cpuSeconds);
    }
    return 0;
}

int compareSizes(const std::string& tarnova, const std::string& folder) {
    fmt::print("catalogs by their number of cells, to one PDF\n");
    double smallest = 0;
    for (const std::uint32_t size : sizes) {
        writeCatalog(folder, size, articles);
        const costRec cost = bestOf(3, priceRun(tarnova, "sizes.pdf"), folder);
        if (!cost.ran) return 1;
        const double perCell = cost.cpuSeconds * 1e6 / size;
        if (smallest == 0) smallest = perCell;
        fmt::print("  {:>7} cells {:>8.3f} s CPU {:>8.1f} us a cell {:>6.2f} of the smallest {:>8.1f} MiB\n", size,
                   cost.cpuSeconds, perCell, perCell / smallest, cost.peakMebibytes);
    }
    return 0;
}

}  // namespace
}  // namespace tarnova::bench

int main(int argumentCount, char** arguments) {
    if (argumentCount < 3) {
        fmt::print(stderr, "usage: price_bench TARNOVA FOLDER\n");
        return 2;
    }
    const std::string tarnova = std::filesystem::absolute(arguments[1]).string();
    const std::string folder = std::filesystem::absolute(arguments[2]).string();
    std::filesystem::create_directories(folder);
    setenv("XDG_DATA_HOME", (folder + "/home").c_str(), 1);
    tarnova::bench::writeArticles(folder, tarnova::bench::articles);
    const int failed = tarnova::bench::compareWithTex(tarnova, folder);
    return failed != 0 ? failed : tarnova::bench::compareSizes(tarnova, folder);
}
