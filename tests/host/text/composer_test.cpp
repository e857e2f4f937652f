#include "host/text/composer.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <memory>

#include "host/model/attribute_pool.h"
#include "host/model/document_builder.h"
#include "host/model/document_model.h"
#include "host/model/story_text.h"
#include "host/text/composed_story.h"
#include "host/text/font.h"
#include "tests/host/files/layout_kit.h"
#include "tests/host/model/model_kit.h"

namespace tarnova {
namespace {

struct ComposerTest : testing::Test {
    DocumentBuilder builder;
    UID spread = builder.addSpread();
    UID page = builder.addPage(spread, {0, 0, 400, 400});

    const ComposedStory& composed(const DocumentModel& document, UID frame) {
        const UID story = document.textOfFrame(frame);
        const auto* layout =
            dynamic_cast<const ComposedStory*>(document.layoutOf(story, document.story(story)->length()));
        EXPECT_NE(layout, nullptr);
        return *layout;
    }
};

TEST_F(ComposerTest, FramesOfAThreadGiveTheirColumnsInOrder) {
    const auto addFrame = [&](const PMRect& bounds, const TextFrameOptions& options) {
        return builder.addItem(builder.layerNode(spread, 1), textItem(bounds, options));
    };
    const UID first =
        addFrame({10, 20, 230, 50},
                 {.insetTop = 3, .insetLeft = 4, .insetBottom = 5, .insetRight = 6, .columns = 3, .gutter = 15});
    const UID second = addFrame({0, 0, 100, 40}, {.verticalAlignment = VerticalAlignment::bottom});
    auto content = emptyStoryText(builder.attributePool().paragraph({}), builder.attributePool().plainRun());
    replaceCharacters(*content, 0, 0, U"one\rtwo");
    builder.addStory({first, second}, content);
    const std::unique_ptr<DocumentModel> document = builder.finish();
    document->setComposer(makeComposer());
    const ComposedStory& story = composed(*document, second);
    ASSERT_EQ(story.columns.size(), 4u);
    for (std::int32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(story.columns[static_cast<std::size_t>(i)].frame, first);
        EXPECT_EQ(story.columns[static_cast<std::size_t>(i)].columnIndex, i);
        const double left = 14 + i * (60 + 15);
        EXPECT_EQ(story.columns[static_cast<std::size_t>(i)].box, (PMRect{left, 23, left + 60, 45}));
    }
    EXPECT_EQ(story.columns[3].frame, second);
    EXPECT_EQ(story.columns[3].frameIndex, 1);
    EXPECT_EQ(story.columns[3].box, (PMRect{0, 0, 100, 40}));
}

TEST_F(ComposerTest, LinesOnThePagesGridFollowAMovedFrame) {
    builder.setBaselineGrid({10, 20});
    const UID frame = builder.addTextFrame(page, {50, 63, 250, 160}, U"");
    ParagraphAttributes gridded;
    gridded.overrides.gridLines = GridLines::all;
    auto content = emptyStoryText(builder.attributePool().paragraph(gridded), builder.attributePool().plainRun());
    replaceCharacters(*content, 0, 0, U"one\u2028two");
    builder.addStory({frame}, content);
    const std::unique_ptr<DocumentModel> document = builder.finish();
    document->setComposer(makeComposer());
    const auto onPage = [&](std::size_t line) {
        const double top = document->toSpread(*document->item(frame)).ty;
        return static_cast<double>(composed(*document, frame).lines.at(line).baseline) + top;
    };
    EXPECT_NEAR(onPage(0), 90, 0.01);
    EXPECT_NEAR(onPage(1), 110, 0.01);
    ASSERT_EQ(document->moveBy(frame, 0, 24), 0);
    EXPECT_NEAR(onPage(0), 110, 0.01);
    ASSERT_EQ(document->rotateBy(frame, 45), 0);
    EXPECT_FALSE(composed(*document, frame).overset) << "a turned frame has no such grid";
    ASSERT_TRUE(document->undo().has_value());
    EXPECT_NEAR(onPage(0), 110, 0.01);
}

TEST_F(ComposerTest, RunsAndParagraphsGetTheirResolvedFormats) {
    AttributePool& pool = builder.attributePool();
    ParagraphAttributes centered, large;
    centered.overrides.alignment = Alignment::center;
    large.charOverrides.pointSize = 20;
    RunDescription bold;
    bold.overrides.fontStyle = "Bold";
    // Two paragraphs; the bold run begins in the first and ends in the second.
    StoryTextBuilder text;
    text.append(U"ab ", pool.plainRun());
    text.append(U"cd", pool.run(bold));
    text.endParagraph(pool.paragraph(centered), pool.run(bold));
    text.append(U"ef", pool.run(bold));
    text.append(U" gh", pool.plainRun());
    text.endParagraph(pool.paragraph(large), pool.plainRun());
    text.endThread();
    const std::shared_ptr<StoryText> content = text.finish();
    ASSERT_TRUE(storyIsConsistent(*content));
    const UID frame = builder.addTextFrame(page, {0, 0, 200, 100}, U"");
    builder.addStory({frame}, content);
    const std::unique_ptr<DocumentModel> document = builder.finish();
    document->setComposer(makeComposer());
    const ComposedStory& story = composed(*document, frame);
    ASSERT_EQ(story.runs.size(), 4u);
    const std::pair<const char*, float> runs[] = {
        {"NimbusSans-Regular", 10}, {"NimbusSans-Bold", 10}, {"NimbusSans-Bold", 20}, {"NimbusSans-Regular", 20}};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(story.runs[i].font->postScriptName(), runs[i].first) << i;
        EXPECT_EQ(story.runs[i].size, runs[i].second) << i;
    }
    EXPECT_NEAR(story.lines[0].left, 200 - story.lines[0].right, 0.01);
    EXPECT_EQ(story.lines[1].left, 0);
}

TEST_F(ComposerTest, AFontThatCantBeReadIsToldAndNotThrown) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizers need files themselves while they look at objects";
#endif
    // A font of its own: one that is open already stays.
    const auto document = opened(frameWith(R"([{"text": "text", "font": "Z003"}])"));
    document->setComposer(makeComposer());
    const UID story = document->stories().at(0);
    const UID frame = document->framesOfStory(story).at(0);
    rlimit old{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &old), 0);
    const rlimit none{3, old.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const ComposedStory& failed = composed(*document, frame);
    const std::string fault = failed.fault;
    const bool overset = document->isOverset(story);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &old), 0);
    EXPECT_NE(fault.find("can't be read"), std::string::npos) << fault;
    EXPECT_TRUE(overset);
    EXPECT_EQ(document->frameAt(story, 0), kInvalidUID);
    ASSERT_EQ(document->textReplace(story, 0, 0, U"more ", true), 0);
    EXPECT_EQ(composed(*document, frame).fault, "");
    EXPECT_EQ(composed(*document, frame).lines.size(), 1u) << "with the font there again, nothing of the failure stays";
}

}  // namespace
}  // namespace tarnova
