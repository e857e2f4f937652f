#include "host/text/long_story.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "host/model/attribute_pool.h"
#include "host/model/document_builder.h"
#include "host/model/story_text.h"
#include "host/text/composer.h"
#include "tests/host/model/model_kit.h"
#include "tests/host/text/compose_kit.h"

namespace tarnova {
namespace {

constexpr std::u32string_view sentence =
    U"Before the press starts its long run somebody reads the last proof once more, at a table by the window. ";

/// A story in frames of two columns, in as many as it needs.
struct LongStoryTest : testing::Test {
    void make(std::int32_t characters, std::size_t frameCount, VerticalAlignment alignment = VerticalAlignment::top) {
        DocumentBuilder builder;
        AttributePool& pool = builder.attributePool();
        const UID page = builder.addSinglePage(600, 800);
        StoryTextBuilder text;
        ParagraphAttributes heading;
        heading.overrides.keepWithNext = 1;
        heading.charOverrides.pointSize = 14;
        for (int i = 0; text.length() < static_cast<std::size_t>(characters); ++i) {
            if (i % 7 == 0) {
                text.append(U"A heading", pool.plainRun());
                text.endParagraph(pool.paragraph(heading), pool.plainRun());
            }
            for (int k = 0; k <= i % 9; ++k)
                text.append(sentence, pool.plainRun());
            text.endParagraph(pool.paragraph({}), pool.plainRun());
        }
        text.endThread();
        const UID node = builder.layerNode(builder.spreadOf(page), 1);
        for (std::size_t i = 0; i < frameCount; ++i)
            frames.push_back(builder.addItem(node, frame(alignment)));
        story = builder.addStory(frames, text.finish());
        document = builder.finish();
        document->setComposer(makeComposer());
    }

    static PageItem frame(VerticalAlignment alignment) {
        TextFrameOptions options;
        options.columns = 2;
        options.gutter = 20;
        options.verticalAlignment = alignment;
        return textItem({0, 0, 420, 600}, options);
    }

    const ComposedParts& composed(std::int32_t through) {
        const auto* parts = dynamic_cast<const ComposedParts*>(document->layoutOf(story, through));
        EXPECT_NE(parts, nullptr);
        return *parts;
    }
    [[nodiscard]] std::int32_t length() const { return document->totalLength(story); }

    /// All lines, with their places, as text.
    std::vector<std::string> lines() {
        std::vector<std::string> out;
        std::vector<ShownColumns> columns;
        const ComposedParts& parts = composed(length());
        for (std::size_t i = 0; i < frames.size(); ++i) {
            columnsOfFrame(parts, static_cast<std::int32_t>(i), columns);
            for (const ShownColumns& shown : columns) {
                const ComposedColumn& column = shown.text->columns[shown.firstColumn];
                for (std::uint32_t l = column.firstLine; l < column.firstLine + column.lineCount; ++l)
                    out.push_back(std::to_string(i) + " " +
                                  shownLine(*shown.text, shown.text->lines[l], shown.textStart));
            }
        }
        out.push_back(std::to_string(parts.shownLimit) + (parts.overset ? " overset" : ""));
        return out;
    }

    /// The same from nothing.
    std::vector<std::string> linesFromNothing() {
        const Story& known = *document->story(story);
        known.layout.reset();
        known.earlier.reset();
        return lines();
    }

    std::unique_ptr<DocumentModel> document;
    std::vector<UID> frames;
    UID story = kInvalidUID;
};

/// Characters that composition takes up once for a question about the middle of a story: a column, and the paragraphs
/// that reach into it.
constexpr std::int32_t mostOfColumn = 6000;

TEST_F(LongStoryTest, AQuestionComposesNoFurtherThanItMust) {
    make(200'000, 60);
    EXPECT_EQ(document->frameAt(story, 0), frames[0]);
    const ComposedParts& first = composed(0);
    EXPECT_LT(first.work.characters, mostOfColumn);
    EXPECT_LT(first.composedLimit, mostOfColumn);
    const std::int32_t limit = first.composedLimit;
    const ComposedParts& second = composed(limit);
    EXPECT_GT(second.composedLimit, limit);
    EXPECT_LT(second.work.characters, mostOfColumn) << "goes on from where it stopped";
    const auto byBits = [&] {
        for (std::int32_t at = 0; at < length(); at += 5000)
            static_cast<void>(document->frameAt(story, at));
        return lines();
    }();
    EXPECT_EQ(byBits, linesFromNothing());
}

/// What an edit of a story of a million characters costs: two columns' text at most, wherever it is.
TEST_F(LongStoryTest, AnEditComposesTheColumnsThatItReaches) {
    make(1'000'000, 300);
    static_cast<void>(composed(length()));
    const std::pair<const char*, std::int32_t> rows[] = {{"start", 3}, {"middle", length() / 2}, {"end", length() - 9}};
    for (const auto& [name, position] : rows) {
        ASSERT_EQ(document->textReplace(story, position, 1, U"y", true), 0) << name;
        const ComposedParts& parts = composed(position);
        EXPECT_LT(parts.work.characters, 3 * mostOfColumn) << name;
        EXPECT_LT(parts.work.paragraphs, 60) << name;
        EXPECT_GT(parts.composedLimit, position) << name;
        const ComposedParts& whole = composed(length());
        EXPECT_LT(whole.work.characters, 3 * mostOfColumn) << name << ": the columns behind hold";
        EXPECT_EQ(whole.composedLimit, length()) << name;
    }
}

/// Any edits, questions and undone steps: what is composed bit by bit is what is composed at once.
TEST_F(LongStoryTest, EditsAndQuestionsLeaveWhatIsComposedAtOnce) {
    for (const VerticalAlignment alignment : {VerticalAlignment::top, VerticalAlignment::bottom}) {
        frames.clear();
        make(40'000, 13, alignment);
        std::mt19937 random(11);
        const auto below = [&](std::int32_t limit) {
            return static_cast<std::int32_t>(random() % static_cast<unsigned>(limit));
        };
        for (int i = 0; i < 60; ++i) {
            const std::u32string_view texts[] = {U"", U"x", U"\r", U"several words more ", sentence};
            const std::int32_t start = below(length() - 1);
            const std::int32_t count = std::min(below(random() % 8 == 0 ? 900 : 4), length() - 1 - start);
            const int kind = below(6);
            if (kind == 0) {
                static_cast<void>(document->undo());
            } else if (kind == 1) {
                static_cast<void>(document->attributeApply(
                    story, start, std::max(count, 1),
                    std::make_shared<NumberAttribute>(TextAttributeClass::pointSize, 6 + below(9))));
            } else {
                static_cast<void>(document->textReplace(story, start, count, texts[below(5)], true));
            }
            for (int asked = below(4); asked > 0; --asked)
                static_cast<void>(document->frameAt(story, below(length())));
            if (i % 4 != 0) continue;
            const std::vector<std::string> found = lines();
            ASSERT_EQ(found, linesFromNothing()) << "step " << i;
        }
    }
}

/// The columns behind the paragraph's first begin where they did, though the change is still to come.
TEST_F(LongStoryTest, AnEditDeepInAParagraphOfManyColumnsShows) {
    make(20'000, 16);
    constexpr std::int32_t start = 5000;
    constexpr int sentences = 120;
    std::u32string paragraph;
    for (int i = 0; i < sentences; ++i)
        paragraph += sentence;
    ASSERT_EQ(document->textReplace(story, start, 0, paragraph, true), 0);
    static_cast<void>(composed(length()));
    struct testRow {
        const char* name;
        int sentence;
        std::u32string_view text;  // in place of its start
    };
    const testRow rows[] = {
        {"as wide", 90, U"Bafore"}, {"narrower", 60, U"iiiiii"}, {"at its end", sentences - 1, U"Bafore"}};
    for (const auto& [name, index, text] : rows) {
        const std::int32_t at = start + index * static_cast<std::int32_t>(sentence.size());
        ASSERT_EQ(document->textReplace(story, at, static_cast<std::int32_t>(text.size()), text, true), 0) << name;
        const std::vector<std::string> found = lines();
        EXPECT_EQ(found, linesFromNothing()) << name;
    }
}

/// A page asks for its frames only.
TEST_F(LongStoryTest, AFrameIsFilledWithoutThoseBehind) {
    make(60'000, 20);
    const auto filled = [&](std::int32_t frame) { return document->layoutThroughFrame(story, frame)->filledFrames(); };
    EXPECT_EQ(filled(2), 3);
    EXPECT_EQ(filled(0), 3) << "what is known stays";
    EXPECT_EQ(filled(3), 4);
    EXPECT_GT(filled(19), 19);
    EXPECT_EQ(composed(0).composedLimit, length());
}

TEST_F(LongStoryTest, FramesThatChangeAreFilledAnew) {
    make(30'000, 5);
    static_cast<void>(composed(length()));
    EXPECT_TRUE(document->isOverset(story));
    ASSERT_EQ(document->textReplace(story, 0, 0, U"More. ", true), 0);
    ASSERT_EQ(document->deleteItem(frames[1]), 0);
    frames.erase(frames.begin() + 1);
    const std::vector<std::string> found = lines();
    EXPECT_EQ(found, linesFromNothing());
    EXPECT_EQ(document->frameAt(story, length() - 1), kInvalidUID);
}

}  // namespace
}  // namespace tarnova
