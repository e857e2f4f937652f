// Edits of short and long stories: a character put in at the start, in the middle and at the end, alone and with
// composition through the edited paragraph; beside a plain string's insertion and Pango's layout of that paragraph.

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bench/pango_paragraph.h"
#include "bench/process.h"
#include "host/model/attribute_pool.h"
#include "host/model/document_builder.h"
#include "host/model/story_text.h"
#include "host/text/composer.h"

namespace tarnova::bench {
namespace {

constexpr int rounds = 5;
constexpr double columnWidthPt = 400;
constexpr std::size_t charactersOfFrame = 2800;  // one more frame for so many
constexpr std::u32string_view sentence =
    U"Before the press starts its long run somebody reads the last proof once more, at a table by the window. ";
constexpr int sentencesOfParagraph = 4;

/// CPU microseconds of one of `count` edits; the best of some rounds.
double costOf(int count, const std::function<void()>& edit) {
    double best = 1e9;
    for (int round = 0; round < rounds; ++round) {
        const double start = cpuSeconds();
        for (int i = 0; i < count; ++i)
            edit();
        best = std::min(best, cpuSeconds() - start);
    }
    return best * 1e6 / count;
}

struct LongText {
    std::unique_ptr<DocumentModel> document;
    UID story = kInvalidUID;
};

/// A story in as many frames as it fills.
LongText makeStory(std::size_t characters) {
    DocumentBuilder builder;
    AttributePool& pool = builder.attributePool();
    StoryTextBuilder text;
    while (text.length() < characters) {
        for (int i = 0; i < sentencesOfParagraph; ++i)
            text.append(sentence, pool.plainRun());
        text.endParagraph(pool.paragraph({}), pool.plainRun());
    }
    text.endThread();
    auto shape = std::make_shared<ItemShape>();
    shape->bounds = {0, 0, columnWidthPt, 550};
    shape->content = ContentKind::text;
    const UID page = builder.addSinglePage(500, 600);
    std::vector<UID> frames;
    for (std::size_t i = 0; i <= characters / charactersOfFrame; ++i) {
        PageItem frame;
        frame.itemClass = ItemClass::splineItem;
        frame.shape = shape;
        frames.push_back(builder.addItem(builder.layerNode(builder.spreadOf(page), 1), std::move(frame)));
    }
    LongText out;
    out.story = builder.addStory(frames, text.finish());
    out.document = builder.finish();
    out.document->setComposer(makeComposer());
    return out;
}

/// Pango's layout of one paragraph that changes each time.
double pangoCost() {
    PangoParagraph paragraph(columnWidthPt);
    std::string text;
    for (int i = 0; i < sentencesOfParagraph; ++i)
        text.append(sentence.begin(), sentence.end());
    return costOf(2000, [&] {
        text[0] = text[0] == 'B' ? 'C' : 'B';
        paragraph.set(text);
    });
}

void tellStory(std::size_t characters, double pango) {
    const LongText text = makeStory(characters);
    DocumentModel& document = *text.document;
    const double whole = costOf(1, [&] {
        static_cast<void>(document.textReplace(text.story, 0, 1, U"B", true));
        document.composeStoryThrough(text.story, document.totalLength(text.story));
    });
    fmt::print("{} characters; composed through its end after a change of its start: {:.0f} us\n", characters, whole);
    struct Row {
        const char* name;
        std::int32_t position;
    };
    const std::int32_t length = document.totalLength(text.story);
    for (const auto& [name, position] : {Row{"start", 3}, Row{"middle", length / 2}, Row{"end", length - 3}}) {
        std::u32string plain(static_cast<std::size_t>(length), U'x');
        const double string = costOf(2000, [&] { plain.insert(static_cast<std::size_t>(position), 1, U'y'); });
        const auto type = [&] { static_cast<void>(document.textReplace(text.story, position, 1, U"y", true)); };
        const double edit = costOf(2000, type);
        const double composed = costOf(500, [&] {
            type();
            document.composeStoryThrough(text.story, position);
        });
        fmt::print(
            "  {:<7} string {:>8.2f}   edit {:>6.2f} ({:.2f} of the string's)   edit and composition {:>7.2f} "
            "({:.2f} of Pango's paragraph)\n",
            name, string, edit, edit / string, composed, composed / pango);
    }
}

void tell() {
    const double pango = pangoCost();
    fmt::print("Edits, us of CPU each. Pango lays out the changed paragraph in {:.1f}\n", pango);
    for (const std::size_t characters : {10'000u, 100'000u, 1'000'000u})
        tellStory(characters, pango);
}

}  // namespace
}  // namespace tarnova::bench

int main() {
    tarnova::bench::tell();
    return 0;
}
