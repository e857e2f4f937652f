// Page characters through composition: each shows the page of the frame in which its line is set.

#include <gtest/gtest.h>

#include "host/text/composed_story.h"
#include "host/text/composer.h"
#include "host/text/font.h"
#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

class PageTextFlowTest : public testing::Test {
 protected:
    /// Opens pages that begin with number 9, each with a frame of a size; the text flows through all frames.
    void open(const std::string& text, const std::vector<std::pair<int, int>>& sizes) {
        std::string pages;
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            const std::string own = i == 0 ? "\"text\": " + text : "\"flowsFrom\": \"f" + std::to_string(i - 1) + "\"";
            pages += std::string(i == 0 ? "" : ",") + "{\"items\": [{\"name\": \"f" + std::to_string(i) +
                     "\", \"bounds\": [0, 0, " + std::to_string(sizes[i].first) + ", " +
                     std::to_string(sizes[i].second) + "], " + own + "}]}";
        }
        document = opened("{\"tarnovaLayout\": 1, \"pageSize\": [300, 300], \"pages\": [" + pages +
                          "], \"sections\": [{\"page\": 1, \"startNumber\": 9}]}");
        document->setComposer(makeComposer());
        story = document->stories().at(0);
    }
    const ComposedStory& composed() {
        return dynamic_cast<const ComposedStory&>(*document->layoutOf(story, document->totalLength(story)));
    }
    /// What each page character shows, in the order of the text.
    std::vector<std::u32string> shown() {
        std::vector<std::u32string> out;
        for (const ShownText& text : composed().shown)
            out.push_back(text.text);
        return out;
    }

    std::unique_ptr<DocumentModel> document;
    UID story = kInvalidUID;
};

using Texts = std::vector<std::u32string>;

TEST_F(PageTextFlowTest, FiguresStandInThePlaceOfTheCharacter) {
    open(R"([{"text": ["on ", {"special": "pageNumber", "size": 20}, "!"]}])", {{100, 30}});
    const ComposedStory& text = composed();
    ASSERT_EQ(text.runs.size(), 3u);
    EXPECT_EQ(text.runs[1].size, 20);
    ASSERT_EQ(text.runs[1].glyphCount, 1u);
    EXPECT_EQ(text.glyphs[text.runs[1].firstGlyph].glyph, text.runs[1].font->glyphOf(U'9'));
    EXPECT_EQ(text.glyphs[text.runs[1].firstGlyph].position, 3u);
    ASSERT_EQ(document->createSection({document->pageAt(0), "", "", 10, 0, false, false}), 0);
    EXPECT_EQ(composed().runs[1].glyphCount, 2u) << "another numbering is seen at once";
    EXPECT_EQ(composed().lines[0].limit, 6);
}

TEST_F(PageTextFlowTest, ANumberBelongsToTheFrameInWhichItStands) {
    const std::string line = R"({"text": ["see ", {"special": "pageNumber"}]})";
    const std::string next = R"({"text": [{"special": "nextPageNumber"}, "/", {"special": "previousPageNumber"}]})";
    open("[" + line + "," + line + "," + line + "," + next + "]", {{100, 25}, {100, 40}});
    EXPECT_EQ(shown(), (Texts{U"9", U"9", U"10", U"", U"9"}));
    ASSERT_EQ(document->textReplace(story, 0, 0, U"one more\r", false), 0);
    EXPECT_EQ(shown(), (Texts{U"9", U"10", U"10", U"", U"9"})) << "the second number moved to the next page";
}

/// One paragraph over both frames: the number in it that comes to stand on the second page is that page's.
TEST_F(PageTextFlowTest, AParagraphOverTwoPagesShowsBoth) {
    const std::string many = R"("page ", {"special": "pageNumber"}, " ")";
    open("[{\"text\": [" + many + "," + many + "," + many + "," + many + "]}]", {{45, 25}, {45, 100}});
    EXPECT_EQ(shown(), (Texts{U"9", U"9", U"10", U"10"}));
}

/// The line has room for "ix" and not for "viii": the number of the first page goes to the second, whose number goes back.
TEST_F(PageTextFlowTest, ANumberThatFitsNowhereEndsTheTries) {
    open(R"([{"text": ["mm ", {"special": "pageNumber"}]}])", {{29, 13}, {29, 40}});
    ASSERT_EQ(document->createSection({document->pageAt(0), "", "", 8, 2, false, false}), 0);
    EXPECT_EQ(shown().size(), 1u);
    EXPECT_FALSE(composed().isOverset());
}

/// What a marker shows is one character: no line ends inside of it, and no hyphen comes into it.
TEST_F(PageTextFlowTest, AMarkerStaysWhole) {
    open(R"([{"hyphenate": true, "text": ["in ", {"special": "sectionMarker"}, " here"]}])", {{75, 100}});
    ASSERT_EQ(document->createSection({document->pageAt(0), "", "the Introduction", 1, 0, false, false}), 0);
    const ComposedStory& text = composed();
    ASSERT_EQ(text.lines.size(), 3u);
    EXPECT_EQ(text.lines[0].limit, 3);
    EXPECT_EQ(text.lines[1].limit, 5);
}

TEST_F(PageTextFlowTest, CapitalsReachTheirTexts) {
    open(R"([{"text": [{"special": "pageNumber", "caps": "allCaps"}]}])", {{100, 30}});
    ASSERT_EQ(document->createSection({document->pageAt(0), "", "", 4, 2, false, false}), 0);
    const ComposedStory& text = composed();
    ASSERT_EQ(text.glyphs.size(), 2u);
    EXPECT_EQ(text.glyphs[0].glyph, text.runs[0].font->glyphOf(U'I'));
    EXPECT_EQ(text.glyphs[1].glyph, text.runs[0].font->glyphOf(U'V'));
}

TEST_F(PageTextFlowTest, NothingToShowTakesNoRoom) {
    open(R"([{"text": [{"special": "nextPageNumber"}]}, "below"])", {{100, 30}});
    const ComposedStory& text = composed();
    ASSERT_EQ(text.lines.size(), 2u);
    EXPECT_EQ(text.lines[0].runCount, 0u);
    EXPECT_FALSE(text.isOverset());
}

}  // namespace
}  // namespace tarnova
