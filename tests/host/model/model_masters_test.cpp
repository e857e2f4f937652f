#include <gtest/gtest.h>

#include <algorithm>

#include "host/model/attribute_pool.h"
#include "host/model/document_builder.h"
#include "host/model/story_text.h"
#include "tests/host/model/model_kit.h"

namespace tarnova {
namespace {

/// Spreads of two pages with a master "Derived" of two pages, which is based on "Base" of one page. Both have an item
/// on their pages, "Derived" also a story that runs over its pages; the pages have one of their own each.
class MastersTest : public testing::Test {
 protected:
    void SetUp() override {
        DocumentBuilder builder;
        Layer back, front;
        back.name = "Back";
        front.name = "Front";
        builder.setLayers({back, front});
        base = builder.addMaster("Base");
        derived = builder.addMaster("Derived");
        const UID basePage = builder.addPage(base, {0, 0, 100, 100});
        builder.addPage(derived, {-100, 0, 0, 100}, base);
        const UID right = builder.addPage(derived, {0, 0, 100, 100}, base);
        baseBox = builder.addRectangle(basePage, {1, 1, 9, 9}, {swatchBlack, 1});
        for (const double x : {-90.0, 10.0}) {
            PageItem frame = textItem({0, 0, 40, 40});
            frame.toParent = {1, 0, 0, 1, x, 10};
            masterFrames.push_back(builder.addItem(builder.layerNode(derived, 1), frame));
        }
        AttributePool& pool = builder.attributePool();
        auto content = emptyStoryText(pool.paragraph({}), pool.plainRun());
        replaceCharacters(*content, 0, 0, U"runs");
        builder.addStory(masterFrames, content);
        PageItem frontItem;
        frontItem.itemClass = ItemClass::group;
        frontGroup = builder.addItem(builder.layerNode(derived, 2), frontItem);
        PageItem member;
        auto shape = std::make_shared<ItemShape>();
        shape->bounds = {60, 60, 70, 70};
        member.shape = shape;
        groupMember = builder.addItem(frontGroup, member);
        pasteboardBox = builder.addRectangle(right, {500, 0, 510, 10}, {swatchBlack, 1});
        spread = builder.addSpread();
        pages = {builder.addPage(spread, {0, 0, 100, 100}, derived),
                 builder.addPage(spread, {100, 0, 200, 100}, derived)};
        ownBox = builder.addRectangle(pages[0], {20, 20, 30, 30}, {swatchBlack, 1});
        document = builder.finish();
    }

    std::vector<UID> drawnOn(UID page) const {
        std::vector<const PageItem*> drawn;
        document->drawnItems(page, drawn);
        std::vector<UID> out;
        for (const PageItem* item : drawn)
            out.push_back(item->uid);
        return out;
    }
    UID childOn(std::int32_t layer, std::int32_t index) const {
        return document->childAt(document->spreadLayerNode(spread, document->layerAt(layer)), index);
    }

    std::unique_ptr<DocumentModel> document;
    UID base = 0, derived = 0, baseBox = 0, frontGroup = 0, groupMember = 0, pasteboardBox = 0, spread = 0, ownBox = 0;
    std::vector<UID> masterFrames, pages;
};

TEST_F(MastersTest, ApplyMaster) {
    EXPECT_EQ(drawnOn(pages[1]), (std::vector<UID>{baseBox, masterFrames[1], frontGroup}));
    ASSERT_EQ(document->applyMaster({pages[1]}, base), 0);
    EXPECT_EQ(drawnOn(pages[1]), std::vector<UID>{baseBox});
    EXPECT_TRUE(document->masterInUse(derived));
    ASSERT_EQ(document->applyMaster(pages, kInvalidUID), 0);
    EXPECT_EQ(drawnOn(pages[0]), std::vector<UID>{ownBox});
    EXPECT_FALSE(document->masterInUse(derived));
    ASSERT_TRUE(document->undo());
    EXPECT_TRUE(document->masterInUse(base));
    EXPECT_NE(document->applyMaster(pages, spread), 0) << "a spread is no master";
    EXPECT_NE(document->applyMaster({pages[0], base}, base), 0) << "a master is no page";
}

TEST_F(MastersTest, OverriddenItemsTakeTheMastersPlace) {
    ASSERT_EQ(document->overrideMasterItems({pages[0]}), 0);
    // Behind the page's own: the base's, then what the left page of the master has.
    ASSERT_EQ(document->childCount(document->parent(ownBox)), 3);
    const UID box = childOn(1, 0), frame = childOn(1, 1);
    EXPECT_EQ(childOn(1, 2), ownBox);
    EXPECT_EQ(document->overriddenItem(box), baseBox);
    EXPECT_EQ(document->overriddenItem(frame), masterFrames[0]);
    EXPECT_EQ(document->overriddenItem(ownBox), kInvalidUID);
    EXPECT_EQ(document->boundsInSpread(box), (PMRect{1, 1, 9, 9}));
    EXPECT_EQ(document->boundsInSpread(frame), (PMRect{10, 10, 50, 50})) << "moved with its page";
    EXPECT_EQ(document->pageOfItem(frame).page, pages[0]);
    EXPECT_FALSE(document->pageOfItem(frame).isMaster);
    EXPECT_EQ(drawnOn(pages[0]), (std::vector<UID>{box, frame, ownBox}));
    EXPECT_EQ(drawnOn(pages[1]), (std::vector<UID>{baseBox, masterFrames[1], frontGroup})) << "not on the other page";
    const UID story = document->textOfFrame(frame);
    EXPECT_NE(story, document->textOfFrame(masterFrames[0]));
    ASSERT_EQ(document->textReplace(story, 0, 4, U"own", true), 0);
    EXPECT_EQ(document->textRead(document->textOfFrame(masterFrames[0]), 0, 4), U"runs");

    ASSERT_EQ(document->overrideMasterItems(pages), 0);
    EXPECT_EQ(document->childCount(document->parent(ownBox)), 5) << "those of the left page only once";
    ASSERT_EQ(document->childCount(childOn(2, 0)), 1);
    EXPECT_EQ(document->overriddenItem(childOn(2, 0)), frontGroup) << "on its layer";
    EXPECT_EQ(document->overriddenItem(document->childAt(childOn(2, 0), 0)), kInvalidUID);
    EXPECT_EQ(document->boundsInSpread(document->childAt(childOn(2, 0), 0)), (PMRect{160, 60, 170, 70}));
    EXPECT_EQ(document->pageOfItem(document->childAt(childOn(2, 0), 0)).page, pages[1]);

    ASSERT_EQ(document->deleteItem(box), 0);
    EXPECT_EQ(drawnOn(pages[0]).front(), baseBox) << "nothing stands in its place any more";
    EXPECT_NE(document->overrideMasterItems({pages[0], base}), 0);
    ASSERT_TRUE(document->undo());
    ASSERT_TRUE(document->undo());
    EXPECT_EQ(document->childCount(document->parent(ownBox)), 3);
}

TEST_F(MastersTest, CopiesOfOneItemInOnePlaceDrawTheSame) {
    ASSERT_EQ(document->duplicateSpread(spread), 0);
    const UID others[] = {document->pageAt(2), document->pageAt(3)};
    ASSERT_EQ(document->overrideMasterItems({pages[1], others[1]}), 0);
    const UID node = document->spreadLayerNode(document->spreadOfPage(others[1]), document->layerAt(2));
    const PageItem &one = *document->item(childOn(2, 0)), &other = *document->item(document->childAt(node, 0));
    EXPECT_EQ(one.stamp, other.stamp);
    EXPECT_NE(one.stamp, document->item(frontGroup)->stamp) << "it lies elsewhere in its spread";
    EXPECT_EQ(document->item(one.children[0])->stamp, document->item(other.children[0])->stamp);
}

TEST_F(MastersTest, StoriesOfMastersStayWholeWhereTheirFramesGoTogether) {
    ASSERT_EQ(document->overrideMasterItems(pages), 0);
    const UID first = childOn(1, 2);  // behind it the two of the base
    const UID story = document->textOfFrame(first);
    EXPECT_EQ(document->overriddenItem(first), masterFrames[0]);
    ASSERT_EQ(document->framesOfStory(story).size(), 2u);
    EXPECT_EQ(document->overriddenItem(document->framesOfStory(story)[1]), masterFrames[1]);
    EXPECT_EQ(document->textRead(story, 0, 9), U"runs\r");
}

TEST_F(MastersTest, MarksOnMastersCanBeCleared) {
    DocumentBuilder builder;
    const UID a = builder.addMaster("A"), b = builder.addMaster("B");
    const UID aPage = builder.addPage(a, {0, 0, 9, 9}), bPage = builder.addPage(b, {0, 0, 9, 9}, a);
    const UID aBox = builder.addRectangle(aPage, {1, 1, 2, 2}, {}),
              bBox = builder.addRectangle(bPage, {1, 1, 2, 2}, {});
    const UID page = builder.addPage(builder.addSpread(), {0, 0, 9, 9}, b);
    builder.setOverrides(bBox, aBox);
    document = builder.finish();
    EXPECT_EQ(drawnOn(page), std::vector<UID>{bBox});
    ASSERT_EQ(document->overrideMasterItems({page}), 0);
    const UID own = drawnOn(page)[0];
    EXPECT_EQ(document->overriddenItem(own), bBox);
    EXPECT_EQ(drawnOn(page), std::vector<UID>{own}) << "what it stands for hides the base's item still";
    document->clearOverriddenMarks();
    EXPECT_EQ(document->overriddenItem(bBox), kInvalidUID);
    EXPECT_EQ(document->overriddenItem(own), bBox) << "on pages the marks stay";
    EXPECT_EQ(drawnOn(page), (std::vector<UID>{aBox, own}));
}

TEST_F(MastersTest, MarksStayThroughGroups) {
    ASSERT_EQ(document->overrideMasterItems(pages), 0);
    const auto masterIsDrawn = [this] {
        const std::vector<UID> drawn = drawnOn(pages[1]);
        return std::find(drawn.begin(), drawn.end(), frontGroup) != drawn.end();
    };
    std::vector<UID> members;
    ASSERT_EQ(document->ungroup(childOn(2, 0), members), 0);
    ASSERT_EQ(members.size(), 1U);
    EXPECT_EQ(document->overriddenItem(members[0]), frontGroup) << "a member stands in the group's place now";
    EXPECT_FALSE(masterIsDrawn());
    UID copy = kInvalidUID, group = kInvalidUID;
    ASSERT_EQ(document->duplicateItem(members[0], copy), 0);
    EXPECT_EQ(document->overriddenItem(copy), kInvalidUID);
    ASSERT_EQ(document->groupItems({members[0], ownBox}, group), 0);
    EXPECT_FALSE(masterIsDrawn());
    ASSERT_EQ(document->deleteItem(members[0]), 0);
    EXPECT_TRUE(masterIsDrawn()) << "nothing stands in its place any more";
}

}  // namespace
}  // namespace tarnova
