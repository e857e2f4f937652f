#include "engine/session/session.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <list>
#include <memory>
#include <tuple>

#include "definitions/record_def_set.h"
#include "document/item_data.h"
#include "engine/session/preferences_file.h"
#include "engine/toolkit/strings.h"
#include "tags/tag_manager.h"
#include "tests/document/fake_document.h"
#include "tests/engine/toolkit/temp_folder.h"

namespace tarnova {
namespace {

auto live() {
    const modeSettingsRec settings = liveModeSettings(appPrefs());
    return std::tuple{settings.alwaysUseDocumentDDF, settings.trimTagText, settings.framesFirst,
                      settings.skipPasteboard};
}

class Session : public ::testing::Test {
 protected:
    void SetUp() override { sessionReset(); }
    void TearDown() override { sessionReset(); }
};

TEST_F(Session, IsOneForAllFoldersAndStartsIdle) {
    EXPECT_EQ(&toolkitState(), &session());
    EXPECT_EQ(&walkState(), &session());
    EXPECT_EQ(&dataState(), &session());
    EXPECT_EQ(&definitionState(), &session());
    EXPECT_EQ(session().savedRunType, -1);
    EXPECT_EQ(session().currentDefSet, nullptr);
    EXPECT_FALSE(runIsActive());
    session().runStage = runStageSetUp;
    EXPECT_TRUE(runIsActive());
    appPrefs().walkDeferredStories = 0;
    EXPECT_EQ(*walkState().walkDeferredStories, 0) << "the walk reads the preference itself";
}

TEST_F(Session, ModeSettingsMoveWithTheMode) {
    sessionRec& current = session();
    current.mergeAttached = current.priceAttached = 1;
    static int shown;
    shown = 0;
    const TempFolder home;
    settleDataFolder(home.path("no application"), home.path(""));
    const auto savedMode = [&] {
        const std::string bytes = home.bytesOf("Tarnova/Config/Ostreon Tag Display.prf");
        return bytes.size() == prefsSizeBytes ? bytes[19092] : -1;
    };
    std::filesystem::create_directories(home.path("Tarnova/Config"));
    current.modeChanged = [](std::uint16_t mode) { shown = 10 + mode; };

    const auto before = live();
    ASSERT_EQ(switchEngineMode(modeMerge, true), 0);
    EXPECT_EQ(savedMode(), -1) << "nothing to do";
    // Out of no mode at all the bank comes in and nothing is kept.
    ASSERT_EQ(switchEngineMode(modeMerge, false), 0);
    EXPECT_EQ(before, std::tuple(1, 0, 1, 1));
    EXPECT_EQ(live(), std::tuple(1, 0, 0, 1));

    setLiveModeSettings(current.prefs, {0, 1, 1, 0});
    ASSERT_EQ(switchEngineMode(modePrice, true), 0);
    EXPECT_EQ(live(), std::tuple(0, 1, 0, 0));
    EXPECT_STREQ(engineName(), "Tallyra");
    EXPECT_EQ(shown, 11);
    setLiveModeSettings(current.prefs, {1, 1, 1, 1});
    ASSERT_EQ(switchEngineMode(modePrice, false), 0);
    EXPECT_EQ(live(), std::tuple(1, 1, 1, 1)) << "the mode in force keeps its settings";
    EXPECT_EQ(savedMode(), 1);
    ASSERT_EQ(switchEngineMode(modeMerge, true), 0);
    EXPECT_EQ(live(), std::tuple(0, 1, 1, 0));
    EXPECT_STREQ(engineName(), "Kelvane");
    ASSERT_EQ(switchEngineMode(modePrice, true), 0);
    EXPECT_EQ(live(), std::tuple(1, 1, 1, 1));
    EXPECT_EQ(appPrefs().lastEngineMode, modePrice);
}

TEST_F(Session, AModeThatIsntAttachedIsRefused) {
    session().mergeAttached = 1;
    const auto before = live();
    EXPECT_EQ(codeOfError(switchEngineMode(modePrice, true)), -6023);
    EXPECT_EQ(codeOfError(switchEngineMode(2, false)), -6023);
    EXPECT_EQ(session().engineMode, modeMerge);
    EXPECT_EQ(appPrefs().lastEngineMode, engineModeNone);
    EXPECT_EQ(live(), before);
}

TEST_F(Session, ListsOfARunAreEmptied) {
    sessionRec& current = session();
    current.oversetFrames.emplace_back();
    current.reportOrder.push_back({reportKindOverset, 0});
    current.assetList.emplace_back();
    current.signatureTable[3] = 7;
    current.jobPercent = 100;
    current.rangeFirst = 5;
    resetRunLists();
    EXPECT_TRUE(current.oversetFrames.empty() && current.reportOrder.empty() && current.assetList.empty());
    EXPECT_EQ(current.signatureTable[3], 0U);
    EXPECT_EQ(current.jobPercent, 0U);
    EXPECT_EQ(current.rangeFirst, 5U) << "kept across runs";
}

class Census : public Session {
 protected:
    void SetUp() override {
        Session::SetUp();
        const std::uint8_t setName[] = {1, 'S'};
        ASSERT_EQ(recordDefSetNew(setName, nullptr, session().currentDefSet, set, 0), 0);
        definition = std::make_unique<recordDefRec>();
        session().currentRecordDef = definition.get();
        spread = document.addSpread();
    }
    void TearDown() override {
        recordDefSetDiscard(session().currentDefSet, set);
        Session::TearDown();
    }
    extractionRec& addLink(std::string_view name, std::int16_t type = linkTypeText, std::string_view function = {}) {
        extractionRec& link = links.emplace_back();
        pstrSet(link.name, name);
        pstrSet(link.dataFunction, function);
        link.type = type;
        // The list is sorted by name, byte by byte.
        auto** last = std::find(definition->extractions, definition->extractions + extractionCapacity, nullptr);
        *last = &link;
        std::sort(definition->extractions, last + 1,
                  [](const extractionRec* a, const extractionRec* b) { return pstrView(a->name) < pstrView(b->name); });
        return link;
    }
    static tagDataRec tagOf(std::string_view key, std::string_view link) {
        tagDataRec tag{};
        pstrSet(tag.searchKey, key);
        pstrSet(tag.extractionRecordName, link);
        return tag;
    }
    UID addFrameLink(std::string_view key, std::string_view link) {
        const UID frame = document.addFrame(document.node(spread));
        EXPECT_EQ(writeFrameTag({&document, frame}, tagOf(key, link), 0), 0);
        return frame;
    }
    void addTextLink(std::string_view key, std::string_view link) {
        const UID story = document.addStory(U"link\r");
        document.addTextFrame(document.node(spread), story);
        const tagDataRec tag = tagOf(key, link);
        std::byte* block = nullptr;
        ASSERT_EQ(tagRecordEncode(&tag, &block, 0), 0);
        const blockPtr<> owned(block);
        document.setTag(story, 0, 4, 1, {reinterpret_cast<const char*>(block), blockSize(block)});
    }

    FakeDocument document;
    UID spread = kInvalidUID;
    recordDefSetRec* set = nullptr;
    std::unique_ptr<recordDefRec> definition;
    std::list<extractionRec> links;
};

TEST_F(Census, ADocumentWithoutLinks) {
    session().textLinkCount = 9;
    session().highestSequence = 9;
    countLinks(document.ref());
    EXPECT_EQ(session().allLinkCount, 0U);
    EXPECT_EQ(session().textLinkCount, 0U);
    EXPECT_EQ(session().highestSequence, 1U);
}

TEST_F(Census, SequenceNumbers) {
    for (int i = 0; i < 6; ++i)
        addTextLink("3", "Nobody");
    for (int i = 0; i < 4; ++i)
        addFrameLink("3", "Nobody");
    countLinks(document.ref());
    EXPECT_EQ(session().sequenceTable[3], 10U);
    EXPECT_EQ(session().sequencesInUse, 1U);
    EXPECT_EQ(session().highestSequence, 3U);
    EXPECT_EQ(session().frameLinkCount, 4U);
    EXPECT_EQ(session().textLinkCount, 6U);
    EXPECT_EQ(session().allLinkCount, 10U);

    addTextLink("2001", "Nobody");
    addTextLink("2002", "Nobody");
    addTextLink("-4", "Nobody");
    addTextLink("", "Nobody");
    countLinks(document.ref());
    EXPECT_EQ(session().sequenceTable[2001], 1U);
    EXPECT_EQ(session().sequenceTable[0], 1U);
    EXPECT_EQ(session().sequencesInUse, 3U) << "a number past the table has no element";
    EXPECT_EQ(session().highestSequence, 2002U);
}

TEST_F(Census, WhatTheRecordsOfTheLinksTell) {
    const std::string number(stringOfKey("kZavoKeywordLinksConsecutiveNumberKeywordStringKey"));
    const std::string postnet(stringOfKey("kZavoKeywordLinksBarcodePostnetKeywordStringKey"));
    const std::string read2d(stringOfKey("kZavoKeywordLinksRead2DBarcodeDataKeywordStringKey"));
    addLink("Article", linkTypeArticle);
    addLink("Group", linkTypeGroupPicture);
    addLink("Number", linkTypeText, number);
    addLink(number);
    addLink(postnet);
    addLink("_BARCODE_CODE39");
    addLink("Symbol", linkTypeText, read2d);
    struct testRow {
        std::string name;
        std::uint32_t pictures;
        bool number, barcode, group, symbol;
    };
    const testRow rows[] = {
        {"ARTICLE", 1, false, false, false, false}, {"Group", 0, false, false, true, false},
        {"Number", 0, true, false, false, false},   {number, 0, true, false, false, false},
        {postnet, 0, false, false, false, false},   {"_BARCODE_CODE39", 0, false, true, false, false},
        {"Symbol", 0, false, false, false, true},   {"Nobody", 0, false, false, false, false},
    };
    for (const testRow& row : rows) {
        const UID frame = addFrameLink("1", row.name);
        countLinks(document.ref());
        EXPECT_EQ(session().frameLinkCount, 1U) << row.name;
        EXPECT_EQ(session().pictureLinkCount, row.pictures) << row.name;
        EXPECT_EQ(session().hasNumberLink != 0, row.number) << row.name;
        EXPECT_EQ(session().hasBarcodeLink != 0, row.barcode) << row.name;
        EXPECT_EQ(session().hasGroupPictureLink != 0, row.group) << row.name;
        EXPECT_EQ(pstrView(session().nonBarcodeFrameLink), row.symbol ? row.name : "") << row.name;
        ASSERT_EQ(document.deleteItem(frame), 0);
    }
}

TEST_F(Census, HiddenLayersPasteboardAndRuleFrames) {
    addTextLink("1", "Nobody");
    const UID beside = addFrameLink("1", "Nobody");
    document.moveToPasteboard(beside);
    ASSERT_EQ(itemDataSet({&document, beside}, ItemDataPlace::pageItem, itemDataActionFrame, "{}", 2, 0), 1);
    countLinks(document.ref());
    EXPECT_EQ(session().allLinkCount, 1U);
    appPrefs().skipPasteboard = 0;
    countLinks(document.ref());
    EXPECT_EQ(session().allLinkCount, 2U);
    EXPECT_EQ(session().actionFrameCount, 1U);
    document.layers[1].visible = false;
    countLinks(document.ref());
    EXPECT_EQ(session().allLinkCount, 0U);
    session().layerRulePages = 1;
    countLinks(document.ref());
    EXPECT_EQ(session().allLinkCount, 2U) << "a rule may show the layer";
}

}  // namespace
}  // namespace tarnova
