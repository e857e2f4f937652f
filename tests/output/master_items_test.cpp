#include "output/master_items.h"

#include <gtest/gtest.h>

#include <memory>

#include "document/item_data.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "host/model/document_builder.h"
#include "output/build_document.h"
#include "output/build_tables.h"

namespace tarnova {
namespace {

/// Two pages with the master "Derived", which is based on "Base"; both have a text frame. "Apart" stands alone.
class MasterItemsTest : public testing::Test {
 protected:
    MasterItemsTest() {
        sessionReset();
        DocumentBuilder builder;
        builder.setLayers({Layer{kInvalidUID, "Back"}, Layer{kInvalidUID, "Front", true, true, true}});
        base = builder.addMaster("Base");
        derived = builder.addMaster("Derived");
        other = builder.addMaster("Other");
        apart = builder.addMaster("Apart");
        const PMRect box{0, 0, 100, 100};
        const UID basePage = builder.addPage(base, box), derivedPage = builder.addPage(derived, box, base);
        builder.addPage(other, box, base);
        apartFrame = builder.addTextFrame(builder.addPage(apart, box), {0, 0, 9, 9}, U"apart");
        baseFrame = builder.addTextFrame(basePage, {10, 10, 90, 40}, U"base");
        PageItem group;
        group.itemClass = ItemClass::group;
        frontGroup = builder.addItem(builder.layerNode(derived, 2), group);
        PageItem member;
        auto shape = std::make_shared<ItemShape>();
        shape->bounds = {0, 0, 9, 9};
        member.shape = std::move(shape);
        groupMember = builder.addItem(frontGroup, member);
        hidden = builder.addRectangle(basePage, {50, 50, 60, 60}, {});
        standIn = builder.addRectangle(derivedPage, {50, 50, 60, 60}, {});
        builder.setOverrides(standIn, hidden);
        for (int i = 0; i < 2; ++i)
            builder.addPage(builder.addSpread(), box, derived);
        document = builder.finish();
    }
    ~MasterItemsTest() override { freeBuildTables(); }

    errorWord build(std::int32_t slots, bool detachMasters = false) {
        const errorWord error = resetBuildTables(document->ref(), 0);
        session().slotTarget = slots;
        return buildDocument(document->ref(), {.detachMasters = detachMasters}, error);
    }
    [[nodiscard]] bool hasMaster(std::int32_t page) const {
        return document->masterOfPage(document->pageAt(page)) != kInvalidUID;
    }
    /// What is drawn on a page, its own items by the master's ones that they stand for.
    [[nodiscard]] std::vector<UID> drawnOn(std::int32_t page) const {
        std::vector<const PageItem*> items;
        document->drawnItems(document->pageAt(page), items);
        std::vector<UID> out;
        for (const PageItem* item : items)
            out.push_back(document->spread(item->spread)->isMaster ? item->uid : item->overrides);
        return out;
    }
    void mark(UID item, std::uint32_t type, std::uint16_t store = 0) {
        ASSERT_EQ(itemDataSet({document.get(), item}, ItemDataPlace::pageItem, type, "x", 1, store), 1);
    }

    std::unique_ptr<DocumentModel> document;
    UID base = 0, derived = 0, other = 0, apart = 0;
    UID baseFrame = 0, apartFrame = 0, frontGroup = 0, groupMember = 0, hidden = 0, standIn = 0;
};

TEST_F(MasterItemsTest, TheFlagSpreadsOverWhatIsRelated) {
    struct testRow {
        const char* name;
        UID item;
        std::uint32_t type;
        std::uint16_t store;
        bool family, alone;
    };
    const testRow rows[] = {
        {"nothing", kInvalidUID, 0, 0, false, false},
        {"a link on the base", baseFrame, itemDataFrameTag, 0, true, false},
        {"a variable member of a group", groupMember, itemDataVariable, 0, true, false},
        {"a link in a group on a locked layer", frontGroup, itemDataFrameTag, 0, true, false},
        {"a link on a master of its own", apartFrame, itemDataFrameTag, 0, false, true},
        {"a link of the other store", baseFrame, itemDataFrameTag, 1, false, false},
        {"other data", baseFrame, itemDataFrameName, 0, false, false},
    };
    for (const auto& [name, item, type, store, family, alone] : rows) {
        ASSERT_EQ(document->BeginCommandSequence("marks", true), 0);
        if (item != kInvalidUID) mark(item, type, store);
        document->EndCommandSequence();
        gatherMasters(document->ref());
        ASSERT_EQ(session().masterNotes.size(), 4U) << name;
        EXPECT_EQ(session().masterNotes[1].name.view(), "Derived");
        for (const UID master : {base, derived, other})
            EXPECT_EQ(masterIsVariable({document.get(), master}), family) << name;
        EXPECT_EQ(masterIsVariable({document.get(), apart}), alone) << name;
        EXPECT_FALSE(masterIsVariable({nullptr, base}));
        document->undo();
    }
}

TEST_F(MasterItemsTest, EachSlotGetsItemsOfItsOwn) {
    const std::vector<UID> before = drawnOn(0);
    const UID front = document->layerAt(2);
    ASSERT_TRUE(document->layerLocked(front));
    ASSERT_EQ(build(3), 0);
    ASSERT_EQ(document->pageCount(), 6);
    EXPECT_TRUE(document->layerLocked(front));
    std::vector<UID> stories;
    for (std::int32_t page = 0; page < 6; ++page) {
        EXPECT_FALSE(hasMaster(page)) << page;
        EXPECT_EQ(drawnOn(page), before) << "what the master hides of its base stays hidden";
        std::vector<const PageItem*> items;
        document->drawnItems(document->pageAt(page), items);
        for (const PageItem* item : items) {
            EXPECT_EQ(document->pageOfItem(item->uid).page, document->pageAt(page));
            EXPECT_LT(item->stamp, document->templateStamp()) << "it repeats";
            if (item->story != kInvalidUID) stories.push_back(item->story);
        }
    }
    std::sort(stories.begin(), stories.end());
    EXPECT_EQ(stories.size(), 6U);
    EXPECT_EQ(std::unique(stories.begin(), stories.end()), stories.end());
    EXPECT_EQ(document->overriddenItem(standIn), kInvalidUID) << "marks on masters are gone";
}

TEST_F(MasterItemsTest, WhetherARunDetachesMasters) {
    struct testRow {
        const char* name;
        std::uint32_t runType;
        std::int32_t slots;
        bool asked, detaches;
    };
    const testRow rows[] = {
        {"one slot", mergeRunDriver, 1, false, false},
        {"one slot, asked", mergeRunDriver, 1, true, true},
        {"a driver's slots", mergeRunDriver, 2, false, true},
        {"built document", mergeRunBuildDocument, 2, false, true},
        {"overset report", mergeRunOversetReport, 2, false, true},
        {"preview", mergeRunPreview, 2, true, false},
        {"current document", mergeRunCurrentDocument, 2, true, false},
        {"shortest line", mergeRunShortestLine, 2, true, false},
        {"longest line", mergeRunLongestLine, 2, true, false},
        {"preflight", mergeRunPreflight, 2, true, false},
        {"test", mergeRunTest, 2, true, false},
    };
    const std::unique_ptr<DocumentModel> original = std::move(document);
    for (const auto& [name, runType, slots, asked, detaches] : rows) {
        document.reset(static_cast<DocumentModel*>(original->documentCopy().release()));
        appPrefs().mergeRunType = runType;
        ASSERT_EQ(build(slots, asked), 0) << name;
        EXPECT_EQ(hasMaster(0), !detaches) << name;
        EXPECT_EQ(session().masterNotes.empty(), slots == 1) << name;
        session().masterNotes.clear();
    }
}

TEST_F(MasterItemsTest, TheRulesModuleMayKeepAPageAsItIs) {
    static std::vector<std::int32_t> kinds;
    static bool succeeds;
    static UID page;
    struct testRow {
        const char* name;
        bool reads;
        std::vector<std::int32_t> kinds;
        bool keepsMaster;
    };
    const testRow rows[] = {
        {"the read fails", false, {}, false}, {"no kinds", true, {}, true},        {"some kind", true, {5, 22}, false},
        {"kind 23", true, {5, 23}, true},     {"kind 24", true, {24, 5, 1}, true},
    };
    page = document->pageAt(1);
    session().readPageRuleKinds = [](UIDRef asked, std::vector<std::int32_t>& out) {
        out = kinds;
        return asked.uid == page && succeeds;
    };
    const std::unique_ptr<DocumentModel> original = std::move(document);
    for (const testRow& row : rows) {
        document.reset(static_cast<DocumentModel*>(original->documentCopy().release()));
        kinds = row.kinds;
        succeeds = row.reads;
        ASSERT_EQ(build(2), 0) << row.name;
        EXPECT_FALSE(hasMaster(0)) << row.name;
        EXPECT_EQ(hasMaster(1), row.keepsMaster) << row.name;
        EXPECT_EQ(hasMaster(3), row.keepsMaster) << row.name << ": the copy is like its original";
    }
    session().readPageRuleKinds = nullptr;
}

}  // namespace
}  // namespace tarnova
