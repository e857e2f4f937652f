// Opening and saving a large layout: a catalogue with facing pages, each with frames, groups and text of its own.

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "bench/process.h"
#include "host/files/layout_file.h"

namespace tarnova::bench {
namespace {

constexpr int defaultPages = 1000;
constexpr int rounds = 5;
constexpr int articlesOfPage = 8;

/// A picture's box with its label in a group, and a text with styles, runs and two links.
std::string article(int page, int index) {
    const int top = 40 + index * 90;
    return fmt::format(
        R"({{"group": [{{"bounds": [40, {0}, 80, 80], "fill": {{"swatch": "Sea", "tint": 0.{1}}}, "stroke": "Black"}},
{{"bounds": [40, {2}, 80, 20], "text": [{{"style": "Label", "text": "No. {3}-{1}"}}]}}]}},
{{"name": "article {3}-{1}", "bounds": [130, {0}, 380, 80], "text": [
{{"style": "Head", "text": "Article {3}-{1}"}},
{{"text": ["Made for page {3}, this article is sold in sets of {1} and costs ", {{"bold": true, "text": "{{{{Price|12.00}}}}"}},
" a piece; ask for {{{{Name|something else}}}} when the colour doesn't suit you."]}},
"Delivered within two weeks, whatever the weather, to every house with a door."]}})",
        top, index + 1, top + 60, page);
}

std::string catalogue(int pages) {
    std::string out = R"({"tarnovaLayout": 1, "facing": true, "title": "Catalogue",
"swatches": [{"name": "Sea", "cmyk": [0.9, 0.5, 0, 0.1]}],
"paragraphStyles": [{"name": "Body", "size": 10, "leading": 12}, {"name": "Head", "basedOn": "Body", "bold": true},
{"name": "Label", "basedOn": "Body", "size": 8, "align": "center"}],
"masters": [{"name": "A", "pages": [{"items": [{"bounds": [40, 800, 100, 20], "text": "left"}]},
{"items": [{"bounds": [400, 800, 100, 20], "text": "right"}]}]}],
"sections": [{"page": 1, "style": "lowerRoman"}, {"page": 5, "prefix": "C-", "includePrefix": true}],
"pages": [)";
    for (int page = 1; page <= pages; ++page) {
        out += page == 1 ? "\n" : ",\n";
        out += R"({"master": "A", "items": [)";
        for (int i = 0; i < articlesOfPage; ++i)
            out += (i == 0 ? "" : ",\n") + article(page, i);
        out += "]}";
    }
    return out + "]}\n";
}

/// CPU seconds; the best of some rounds.
template <typename Work>
double costOf(Work work) {
    double best = 1e9;
    for (int round = 0; round < rounds; ++round) {
        const double start = cpuSeconds();
        work();
        best = std::min(best, cpuSeconds() - start);
    }
    return best;
}

int run(const std::string& folder, int pages) {
    const std::string byHand = folder + "/by-hand.tvd", saved = folder + "/saved.tvd";
    std::ofstream(byHand) << catalogue(pages);
    layoutError error;
    std::unique_ptr<DocumentModel> document = openLayout(byHand, error);
    if (document == nullptr || !saveLayout(*document, saved, error)) {
        fmt::print(stderr, "layout_bench: {}: {}\n", error.line, error.message);
        return 1;
    }
    const auto bytes = static_cast<double>(std::filesystem::file_size(saved));
    const double open = costOf([&] { document = openLayout(saved, error); });
    const double save = costOf([&] { static_cast<void>(saveLayout(*document, saved, error)); });
    fmt::print("a layout of {} pages, {} items and {:.1f} MB, best of {} rounds, seconds of CPU\n", pages,
               pages * articlesOfPage * 4, bytes / 1e6, rounds);
    fmt::print("  open and close {:.3f}, save {:.3f}, together {:.3f}\n", open, save, open + save);
    return 0;
}

}  // namespace
}  // namespace tarnova::bench

int main(int argumentCount, char** arguments) {
    if (argumentCount < 2) {
        fmt::print(stderr, "usage: layout_bench FOLDER [PAGES]\n");
        return 2;
    }
    const int pages = argumentCount > 2 ? std::stoi(arguments[2]) : tarnova::bench::defaultPages;
    std::filesystem::create_directories(arguments[1]);
    return tarnova::bench::run(arguments[1], pages);
}
