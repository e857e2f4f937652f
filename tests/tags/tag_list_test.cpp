#include "tags/tag_list.h"

#include <gtest/gtest.h>

#include "document/walk_state.h"
#include "tags/tag_manager.h"
#include "tests/document/fake_document.h"

namespace tarnova {
namespace {

TEST(TagList, EveryTagOfAStoreWithItsPlace) {
    FakeDocument document;
    document.addSpread();
    const UID spread = document.addSpread(), master = document.addMaster();
    tagDataRec tag{};
    pstrSet(tag.searchKey, "2");
    pstrSet(tag.extractionRecordName, "Photo");
    const UID frame = document.addFrame(document.node(spread));
    ASSERT_EQ(writeFrameTag({&document, frame}, tag, 0), 0);
    const UID onMaster = document.addFrame(document.node(master));
    ASSERT_EQ(writeFrameTag({&document, onMaster}, tag, 0), 0);
    const UID story = document.addStory(U"Dear Name,\r");
    document.addTextFrame(document.node(spread), story);
    document.setTag(story, 5, 4, 1, "broken");
    document.setTag(story, 9, 1, 2, "other", "Tallyra");
    document.layers[1].visible = false;

    const std::vector<tagListRec> tags = listTags(document, 0);
    ASSERT_EQ(tags.size(), 3U);
    EXPECT_EQ(tags[0].owner, story);
    EXPECT_EQ(tags[0].start, 5);
    EXPECT_EQ(tags[0].length, 4);
    EXPECT_EQ(tags[0].text, U"Name");
    EXPECT_EQ(tags[0].pageIndex, 1);
    EXPECT_EQ(tags[0].readError, errTagRefused);
    EXPECT_EQ(tags[1].owner, frame);
    EXPECT_TRUE(tags[1].onFrame);
    EXPECT_EQ(pstrView(tags[1].tag.extractionRecordName), "Photo");
    EXPECT_TRUE(tags[2].onMaster);
    EXPECT_EQ(tags[2].pageIndex, -1);

    const std::vector<tagListRec> prices = listTags(document, 1);
    ASSERT_EQ(prices.size(), 1U);
    EXPECT_EQ(prices[0].text, U",");
    EXPECT_EQ(prices[0].store, 1);
    EXPECT_EQ(walkState().engineMode, 0);
}

}  // namespace
}  // namespace tarnova
