// Composition of a paragraph that changes with each record: our composer by its three ways, and Pango, in one run.

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <string>

#include "bench/pango_paragraph.h"
#include "bench/process.h"
#include "host/text/composed_story.h"
#include "host/text/story_flow.h"

namespace tarnova::bench {
namespace {

constexpr int paragraphs = 4000;  // of one round
constexpr int rounds = 5;
constexpr double columnWidthPt = 400;
constexpr std::u32string_view letter =
    U"Dear #, your order of twelve garden chairs left our warehouse in Portland on Monday and will reach you by the "
    U"end "
    U"of this week. Please keep this letter, because the number below lets you follow the parcel at any time; and tell "
    U"us, #, if anything is not as you wished it to be. Yours truly, the office in Springfield";

/// The letter to the customer of a number. Names come back, as they do among customers.
std::u32string letterTo(int number) {
    constexpr std::u32string_view first[] = {U"Ann", U"Fiona", U"Avery", U"William", U"Zoë", U"Jeffrey", U"Tova"};
    constexpr std::u32string_view last[] = {U"Waverly", U"Griffin", U"Tolliver", U"Yates", U"Köhler", U"O’Neil"};
    std::u32string name(first[static_cast<std::size_t>(number) % std::size(first)]);
    name += U' ';
    name += last[static_cast<std::size_t>(number) % std::size(last)];
    std::u32string out;
    for (char32_t c : letter) {
        if (c == U'#') {
            out += name;
        } else {
            out += c;
        }
    }
    return out;
}

/// CPU microseconds of a paragraph; the best of some rounds.
double costOf(const std::function<void(int)>& compose) {
    double best = 1e9;
    for (int round = 0; round < rounds; ++round) {
        const double start = cpuSeconds();
        for (int i = 0; i < paragraphs; ++i)
            compose(i);
        best = std::min(best, cpuSeconds() - start);
    }
    return best * 1e6 / paragraphs;
}

double ourCost(ShapingWays ways, Alignment alignment) {
    StoryFlow flow(ways);
    CharFormat format;
    ParaFormat paragraph;
    paragraph.alignment = alignment;
    ComposeInput input;
    return costOf([&](int number) {
        const std::u32string text = letterTo(number) + U'\r';
        const auto length = static_cast<std::int32_t>(text.size());
        input.clear();
        input.text = text;
        input.formats.push_back({length, &format});
        input.paragraphs.push_back({length, &paragraph});
        input.columns.push_back({.box = {0, 0, columnWidthPt, 1000}});
        ComposedStory story;
        flow.compose(input, story);
    });
}

double pangoCost(bool justified) {
    PangoParagraph paragraph(columnWidthPt, justified);
    return costOf([&](int number) {
        std::string text;
        for (char32_t c : letterTo(number)) {
            char bytes[6];
            text.append(bytes, static_cast<std::size_t>(g_unichar_to_utf8(c, bytes)));
        }
        paragraph.set(text);
    });
}

void tell() {
    fmt::print("Paragraph of {} characters in {} pt, us of CPU\n", letterTo(0).size(), columnWidthPt);
    struct Row {
        const char* name;
        ShapingWays ways;
        Alignment alignment;
    };
    const Row rows[] = {
        {"left, tables and cache", {true, true}, Alignment::left},
        {"left, cache of words", {false, true}, Alignment::left},
        {"left, each word by HarfBuzz", {false, false}, Alignment::left},
        {"justified, tables and cache", {true, true}, Alignment::justifyLeft},
    };
    const double pango[] = {pangoCost(false), pangoCost(true)};
    fmt::print("  {:<30} {:>8.2f}\n  {:<30} {:>8.2f}\n", "Pango, left", pango[0], "Pango, justified", pango[1]);
    for (const Row& row : rows) {
        const double ours = ourCost(row.ways, row.alignment);
        const double theirs = pango[row.alignment == Alignment::left ? 0 : 1];
        fmt::print("  {:<30} {:>8.2f}   {:>5.1f} times Pango's speed\n", row.name, ours, theirs / ours);
    }
}

}  // namespace
}  // namespace tarnova::bench

int main() {
    tarnova::bench::tell();
    return 0;
}
