#include <gtest/gtest.h>

#include "engine/toolkit/text_encoding.h"
#include "host/model/attribute_pool.h"
#include "host/model/document_builder.h"
#include "host/model/story_text.h"
#include "tests/host/model/model_kit.h"

namespace tarnova {
namespace {

const std::u32string pageNumber(1, characterOf(PageCharacter::pageNumber));

/// What the frames show, "number next previous marker count sectionCount" each.
std::string shownBy(const StoryLayout* layout) {
    std::string out;
    for (const PageTexts& texts : layout->pageTexts) {
        out += out.empty() ? "" : ", ";
        for (const std::u32string& text : texts)
            out += (text.empty() ? "-" : utf32ToUtf8(text)) + (&text == &texts.back() ? "" : " ");
    }
    return out;
}

/// Four pages; a story runs through two frames on the first, one on the second and one on the fourth page.
class PageTextsTest : public testing::Test {
 protected:
    void SetUp() override {
        DocumentBuilder builder;
        const UID master = builder.addMaster("Letterhead");
        const UID masterPage = builder.addPage(master, {0, 0, 100, 100});
        masterFrame = builder.addTextFrame(masterPage, {0, 90, 100, 100}, pageNumber);
        for (int i = 0; i < 4; ++i)
            pages.push_back(builder.addPage(builder.addSpread(), {0, 0, 100, 100}, master));
        std::vector<UID> frames;
        for (const auto& [page, left] : {std::pair(0, 0), {0, 50}, {1, 0}, {3, 0}}) {
            PageItem item = textItem({0, 0, 40, 40});
            item.toParent.tx = left;
            frames.push_back(
                builder.addItem(builder.layerNode(builder.spreadOf(pages[static_cast<std::size_t>(page)]), 1), item));
        }
        auto content = emptyStoryText(builder.attributePool().paragraph({}), builder.attributePool().plainRun());
        replaceCharacters(*content, 0, 0, U"on " + pageNumber);
        story = builder.addStory(frames, content);
        const UID plainFrame = builder.addTextFrame(pages[0], {0, 0, 9, 9}, U"plain");
        document = builder.finish();
        document->setComposer(composer);
        plain = document->textOfFrame(plainFrame);
    }
    [[nodiscard]] std::string shown() const { return shownBy(document->layoutOf(story, 100)); }

    std::unique_ptr<DocumentModel> document;
    std::shared_ptr<TenCharacterComposer> composer = std::make_shared<TenCharacterComposer>();
    std::vector<UID> pages;
    UID masterFrame = 0, story = 0, plain = 0;
};

TEST_F(PageTextsTest, EachFrameShowsItsPage) {
    EXPECT_EQ(shown(), "1 2 - - 4 4, 1 2 - - 4 4, 2 4 1 - 4 4, 4 - 2 - 4 4");
    EXPECT_TRUE(document->layoutOf(plain, 100)->pageTexts.empty());
}

TEST_F(PageTextsTest, SectionsNumberThem) {
    sectionRec roman{pages[1], "A-", "Annex", 5, 2, false, true};
    ASSERT_EQ(document->createSection(roman), 0);
    EXPECT_EQ(shown(), "1 A-v - - 4 1, 1 A-v - - 4 1, A-v A-vii 1 Annex 4 3, A-vii - A-v Annex 4 3");
    ASSERT_TRUE(document->undo());
    EXPECT_EQ(shown(), "1 2 - - 4 4, 1 2 - - 4 4, 2 4 1 - 4 4, 4 - 2 - 4 4");
}

TEST_F(PageTextsTest, APartOfAnOutputCountsOn) {
    document->setPlaceInOutput(60, 36);
    EXPECT_EQ(shown(), "61 62 - - 100 100, 61 62 - - 100 100, 62 64 61 - 100 100, 64 - 62 - 100 100");
    ASSERT_EQ(document->createSection({pages[3], "", "", 1, 0, true, false}), 0);
    EXPECT_EQ(shown(), "61 62 - - 100 63, 61 62 - - 100 63, 62 64 61 - 100 63, 64 - 62 - 100 1");
}

/// What was composed stays as long as it shows what holds, and not longer.
TEST_F(PageTextsTest, OnlyWhatIsStaleIsComposedAgain) {
    const UID other = document->layoutOf(plain, 100) != nullptr ? plain : kInvalidUID;
    static_cast<void>(shown());
    const int before = composer->calls;
    ASSERT_EQ(document->textReplace(other, 0, 1, U"P", false), 0);
    static_cast<void>(shown());
    EXPECT_EQ(composer->calls, before) << "another text changed, no page";
    ASSERT_EQ(document->removePages({pages[2]}), 0);
    EXPECT_EQ(shown(), "1 2 - - 3 3, 1 2 - - 3 3, 2 3 1 - 3 3, 3 - 2 - 3 3");
    EXPECT_EQ(composer->calls, before + 1);
    ASSERT_TRUE(document->undo());
    EXPECT_EQ(shown(), "1 2 - - 4 4, 1 2 - - 4 4, 2 4 1 - 4 4, 4 - 2 - 4 4");
}

TEST_F(PageTextsTest, CopiesShowTheirOwnPages) {
    static_cast<void>(shown());
    ASSERT_EQ(document->duplicateSpread(document->spreadOfPage(pages[0])), 0);
    UID copy = kInvalidUID;
    for (const UID uid : document->stories()) {
        const std::vector<UID> frames = document->framesOfStory(uid);
        if (frames.size() == 2 && uid != story) copy = uid;
    }
    ASSERT_NE(copy, kInvalidUID);
    EXPECT_EQ(shownBy(document->layoutOf(copy, 100)), "5 - - - 5 5, 5 - - - 5 5");
    EXPECT_EQ(shown(), "1 2 - - 5 5, 1 2 - - 5 5, 2 4 1 - 5 5, 4 - 2 - 5 5");
}

TEST_F(PageTextsTest, MastersShowAPlaceholderAndTheNumbersOfOtherPages) {
    const UID onMaster = document->textOfFrame(masterFrame);
    EXPECT_EQ(shownBy(document->layoutOf(onMaster, 100)), "L - - - 4 4");
    EXPECT_EQ(shownBy(document->layoutOnPage(onMaster, pages[2]).get()), "3 - - - 4 4");
    EXPECT_EQ(shownBy(document->layoutOf(onMaster, 100)), "L - - - 4 4") << "which stays";
}

TEST(PageCharacters, AreCountedInEveryChange) {
    AttributePool pool;
    const auto text = emptyStoryText(pool.paragraph({}), pool.plainRun());
    struct testRow {
        std::int32_t start, count;
        std::u32string characters;
        std::int32_t left;
    };
    const testRow rows[] = {
        {0, 0, U"a" + pageNumber + U"b" + pageNumber, 2},
        {1, 1, U"c", 1},
        {0, 4, pageNumber + pageNumber + pageNumber, 3},
        {1, 2, U"", 1},
        {0, 0, U"\uFDCF\uFDD6", 1},  // those beside them are none
    };
    for (const testRow& row : rows) {
        replaceCharacters(*text, row.start, row.count, row.characters);
        EXPECT_EQ(text->pageCharacters(), row.left) << &row - rows;
        EXPECT_TRUE(storyIsConsistent(*text)) << &row - rows;
    }
}

}  // namespace
}  // namespace tarnova
