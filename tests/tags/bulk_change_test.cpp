// Changes of many links at once: keys, search and replace, removal, running numbers.

#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "document/item_data.h"
#include "engine/module/execute.h"
#include "engine/session/session.h"
#include "host/model/document_builder.h"
#include "rules/rule_info.h"
#include "tags/change_keys.h"
#include "tags/remove_tags.h"
#include "tags/search_replace.h"
#include "tags/sequence_items.h"
#include "tags/tag_list.h"
#include "tags/tag_manager.h"
#include "tests/engine/toolkit/recording_alerts.h"

namespace tarnova {
namespace {

/// A companion module that holds a rule or a script name for frames and notes its commands.
class FrameModule final : public IZavoKelvaneModule {
 public:
    explicit FrameModule(std::uint32_t itsSignature) : signature(itsSignature) { registerModule(signature, this); }
    ~FrameModule() override { registerModule(signature, nullptr); }
    void Execute(commandBlock& block) override {
        const UID uid = static_cast<const UIDRef*>(block.args->item0)->uid;
        told += std::to_string(block.command) + ";";
        block.result = 0;
        if (block.command == rulesCmdGetBoxRule) {
            block.result = rules.contains(uid) ? 0 : -1004;
            if (rules.contains(uid)) *static_cast<ruleInfoRec*>(block.args->item1) = rules[uid];
        } else if (block.command == rulesCmdSetBoxRule) {
            block.result = refuses ? -1021 : 0;
            rules[uid] = *static_cast<const ruleInfoRec*>(block.args->item1);
        } else if (block.command == 1236) {
            block.result = names.contains(uid) ? 0 : -1;
            pstrFromView(static_cast<std::uint8_t*>(block.args->item1), 256, names[uid]);
        } else if (block.command == 1259) {
            names[uid] = pstrString(static_cast<const std::uint8_t*>(block.args->item1));
        }
    }
    std::map<UID, ruleInfoRec> rules;
    std::map<UID, std::string> names;
    std::string told;
    bool refuses = false;

 private:
    std::uint32_t signature;
};

class BulkChange : public ::testing::Test {
 protected:
    void SetUp() override {
        sessionReset();
        DocumentBuilder builder;
        const UID page = builder.addSinglePage(400, 400);
        text = builder.addTextFrame(page, {10, 10, 110, 60}, U"one two three");
        photo = builder.addRectangle(page, {200, 12, 250, 60}, {});
        low = builder.addRectangle(page, {20, 100, 60, 150}, {});
        lowRight = builder.addRectangle(page, {300, 102, 350, 150}, {});
        document = builder.finish();
        story = {document.get(), document->textOfFrame(text)};
        tagText(0, 3, "A12", "Name");
        tagText(4, 3, "abc", "City", "x1");
        for (const UID frame : {photo, low, lowRight})
            tagFrame(frame, "A12", "Photo");
    }
    void tagText(std::int32_t start, std::int32_t length, const char* key, const char* link,
                 const char* aux = nullptr) {
        TagRewrite record;
        pstrSet(record.tag.searchKey, key);
        pstrSet(record.tag.extractionRecordName, link);
        if (aux != nullptr) {
            const std::string list = std::string(1, static_cast<char>(std::strlen(aux))) + aux;
            appendToHandle(list.data(), record.tag.auxKeys, list.size());
        }
        tagStrings strings;
        tagStringsInit(strings, 0);
        ASSERT_EQ(dataTagManager().TagText(story, strings, *record.written(), start, length), 0);
    }
    void tagFrame(UID frame, const char* key, const char* link) {
        tagDataRec tag{};
        tag.tagKind = 2;
        pstrSet(tag.searchKey, key);
        pstrSet(tag.extractionRecordName, link);
        ASSERT_EQ(writeFrameTag({document.get(), frame}, tag, 0), 0);
    }
    /// "key:link" of all links, text first.
    [[nodiscard]] std::string links() const {
        std::string texts, frames;
        for (const tagListRec& entry : listTags(*document, 0))
            (entry.onFrame ? frames : texts) +=
                pstrString(entry.tag.searchKey) + ":" + pstrString(entry.tag.extractionRecordName) + " ";
        return texts + frames;
    }
    [[nodiscard]] std::string keyOf(UID frame) const {
        tagDataRec tag{};
        EXPECT_EQ(readFrameTag({document.get(), frame}, tag, 0), 0);
        return pstrString(tag.searchKey);
    }

    RecordingAlerts alerts;
    std::unique_ptr<DocumentModel> document;
    UID text = kInvalidUID, photo = kInvalidUID, low = kInvalidUID, lowRight = kInvalidUID;
    UIDRef story;
};

TEST(SearchReplace, ChangesOfAValue) {
    struct testRow {
        std::uint16_t mode;
        const char *operand, *value, *result;
    };
    const testRow rows[] = {
        {1, "X", "A12", "X"},
        {2, "X", "A12", "XA12"},
        {3, "X", "XA12", "A12"},
        {3, "Y", "XA12", "XA12"},
        {3, "x", "XA12", "XA12"},
        {4, "X", "A12", "A12X"},
        {5, "12", "A12", "A"},
        {6, "- ", "A-1 2", "A12"},
        {6, "\u00E4", "\u00E4b\u00F6", "b\u00F6"},
        {7, "", "Ab1\u00C4", "ab1\u00C4"},
        {8, "", "Ab1", "AB1"},
        {0, "X", "A", "X"},
        {9, "X", "A", "X"},
    };
    for (const auto& [mode, operand, value, result] : rows)
        EXPECT_EQ(changeString(mode, operand, value), result) << mode << " " << operand << " " << value;
}

TEST(SearchReplace, FaultsOfTheDialogInTheirOrder) {
    using T = searchReplaceTexts;
    struct testRow {
        const char* key;
        void (*set)(T&);
    };
    const testRow rows[] = {
        {"", [](T&) {}},
        {"kZavoErrorSearchReplaceItemTooLong", [](T& t) { t.auxReplace.assign(64, 'a'), t.keyEnabled = true; }},
        {"kZavoErrorSearchReplaceItemTooLong", [](T& t) { t.styleSearch.assign(32, 'a'); }},
        {"kZavoErrorSearchReplaceNoSearchKey", [](T& t) { t.keyEnabled = t.linkEnabled = true; }},
        {"kZavoErrorSearchReplaceCantRemoveSearchKey", [](T& t) { t.keyEnabled = true, t.keySearch = "a"; }},
        {"", [](T& t) { t.keyEnabled = true, t.keySearch = "a", t.keyMode = 8; }},
        {"", [](T& t) { t.keyEnabled = true, t.keySearch = "a", t.removeEmpty = true; }},
        {"kZavoErrorSearchReplaceNoAuxSearchKey", [](T& t) { t.auxEnabled = true; }},
        {"kZavoErrorSearchReplaceNoExtractionRecord", [](T& t) { t.linkEnabled = true; }},
        {"kZavoErrorSearchReplaceCantRemoveExtractionRecord", [](T& t) { t.linkEnabled = true, t.linkSearch = "a"; }},
        {"kZavoErrorSearchReplaceInvalidArgument", [](T& t) { t.styleEnabled = true, t.styleReplace = "*"; }},
    };
    for (const auto& [key, set] : rows) {
        T texts;
        set(texts);
        EXPECT_EQ(searchReplaceFault(texts), key);
    }
}

TEST_F(BulkChange, SearchAndReplaceFollowsItsSettings) {
    using T = searchReplaceTexts;
    struct testRow {
        const char* name;
        void (*set)(T&);
        const char* links;
        int changed, removed;
    };
    const char* const before = "A12:Name abc:City A12:Photo A12:Photo A12:Photo ";
    const testRow rows[] = {
        {"all keys", [](T& t) { t.keyEnabled = true, t.keySearch = "*", t.keyReplace = "7"; },
         "7:Name 7:City 7:Photo 7:Photo 7:Photo ", 5, 0},
        {"case matters", [](T& t) { t.keyEnabled = true, t.keySearch = "ABC", t.keyReplace = "x"; }, before, 0, 0},
        {"case doesn't",
         [](T& t) { t.keyEnabled = true, t.keySearch = "ABC", t.keyReplace = "x", t.matchCase = false; },
         "A12:Name x:City A12:Photo A12:Photo A12:Photo ", 1, 0},
        {"equal texts do nothing", [](T& t) { t.keyEnabled = true, t.keySearch = t.keyReplace = "A12", t.keyMode = 2; },
         before, 0, 0},
        {"names without case", [](T& t) { t.linkEnabled = true, t.linkSearch = "name", t.linkReplace = "Full"; },
         "A12:Full abc:City A12:Photo A12:Photo A12:Photo ", 1, 0},
        {"emptied stays", [](T& t) { t.keyEnabled = true, t.keySearch = "*", t.keyReplace = "A12", t.keyMode = 3; },
         before, 0, 0},
        {"emptied goes",
         [](T& t) { t.keyEnabled = t.removeEmpty = true, t.keySearch = "*", t.keyReplace = "A12", t.keyMode = 3; },
         "abc:City ", 0, 4},
    };
    for (const auto& [name, set, result, changed, removed] : rows) {
        T texts;
        set(texts);
        searchReplaceCounts counts;
        ASSERT_TRUE(searchReplaceDocument(document->ref(), searchReplaceOf(texts), counts));
        EXPECT_EQ(links(), result) << name;
        EXPECT_EQ(counts.changed, changed) << name;
        EXPECT_EQ(counts.removed, removed) << name;
        if (changed + removed > 0) {
            ASSERT_EQ(document->undo(), "Search and Replace Variable Links") << name;
        }
        EXPECT_EQ(links(), before) << name;
    }
    T texts;
    texts.auxEnabled = true, texts.auxSearch = "*", texts.auxReplace = "y", texts.auxMode = changeSuffix;
    searchReplaceCounts counts;
    ASSERT_TRUE(searchReplaceDocument(document->ref(), searchReplaceOf(texts), counts));
    TagRewrite record;
    ASSERT_TRUE(record.read(findTextTag(*document, story.uid, 4, 1).attribute->data()));
    EXPECT_EQ(std::string(reinterpret_cast<char*>(*record.tag.auxKeys), handleSize(record.tag.auxKeys)), "\3x1y");
}

TEST_F(BulkChange, NewKeysReachTagsRulesAndScripts) {
    FrameModule rules(signatureOf("AQMw")), scripts(signatureOf("AQMS"));
    rules.rules[photo] = {};
    scripts.names = {{photo, "seq-5"}, {low, "SEQ"}};
    ASSERT_EQ(changeKeysText(story, {5, 1}, "9"), 0);
    EXPECT_EQ(links(), "A12:Name 9:City A12:Photo A12:Photo A12:Photo ");
    UID group = kInvalidUID;
    ASSERT_EQ(document->groupItems({photo, low, text}, group), 0);
    ASSERT_EQ(changeFrameTreeKeys({document.get(), group}, "7", ItemKinds::graphicFrames), 0);
    EXPECT_EQ(keyOf(photo) + keyOf(low) + keyOf(lowRight), "77A12");
    EXPECT_EQ(pstrString(rules.rules[photo].key), "7");
    EXPECT_EQ(scripts.names[photo] + scripts.names[low], "seq-7SEQ");
    TagRewrite record;
    ASSERT_TRUE(record.read(*itemDataView({document.get(), photo}, ItemDataPlace::pageItem, itemDataFrameTag, 0)));
    EXPECT_EQ(record.tag.tagKind, 2) << "what else the tag says stays";
    ASSERT_EQ(changeFrameTreeKeys({document.get(), group}, std::string(70, 'k'), ItemKinds::all), 0);
    EXPECT_EQ(links().substr(0, 70), std::string(64, 'k') + ":Name ");
    rules.refuses = true;
    EXPECT_EQ(changeKeysFrame({document.get(), photo}, "8"), errRuleKey);
    session().engineError = 0;
}

TEST_F(BulkChange, RemovalLeavesTextNamesAndOtherEntries) {
    FrameModule rules(signatureOf("AQMw"));
    rules.rules[lowRight] = {};
    const UIDRef frame{document.get(), photo};
    ASSERT_EQ(itemDataSet(frame, ItemDataPlace::pageItem, itemDataFrameName, "n", 1, 0), 1);
    removedInfoCounts counts;
    ASSERT_TRUE(removeAllTags(document->ref(), counts));
    EXPECT_EQ(links(), "");
    EXPECT_EQ(counts.texts, 2);
    EXPECT_EQ(counts.frames, 3);
    EXPECT_EQ(itemDataView(frame, ItemDataPlace::pageItem, itemDataFrameName, 0), "n");
    EXPECT_EQ(rules.told, "2001;2032;2001;2032;2001;2032;2001;2033;");
    ASSERT_TRUE(document->undo());
    EXPECT_EQ(links(), "A12:Name abc:City A12:Photo A12:Photo A12:Photo ");
}

TEST_F(BulkChange, NumbersFollowTheReadingOrder) {
    struct testRow {
        std::uint16_t order;
        std::int32_t grid;
        const char* keys;
    };
    const testRow rows[] = {
        {1, 72, "1234"}, {2, 72, "2143"}, {3, 72, "3412"}, {4, 72, "4321"}, {5, 72, "1324"},
        {6, 72, "3241"}, {7, 72, "2314"}, {8, 72, "4231"}, {1, 2, "1234"},  {2, 2, "1234"},
    };
    for (const auto& [order, grid, keys] : rows) {
        sequenceItemsRec settings{order, 1, sequenceScopeDocument, 0, 1, 1, grid, 0, 0, 1, 0};
        std::int32_t count = 0;
        ASSERT_TRUE(sequencePageItems(document->ref(), settings, {}, count));
        EXPECT_EQ(count, 4);
        EXPECT_EQ(links().substr(0, 1) + keyOf(photo) + keyOf(low) + keyOf(lowRight), keys) << order << " " << grid;
    }
    UID group = kInvalidUID;
    ASSERT_EQ(document->groupItems({low, lowRight}, group), 0);
    sequenceItemsRec settings{1, 4, sequenceScopeDocument, 0, 10, 5, 72, 0, 0, 1, 0};
    std::int32_t count = 0;
    ASSERT_TRUE(sequencePageItems(document->ref(), settings, {}, count));
    EXPECT_EQ(count, 1);
    EXPECT_EQ(keyOf(low) + keyOf(lowRight), "1010");
    settings.itemKind = 3;
    ASSERT_TRUE(sequencePageItems(document->ref(), settings, {}, count));
    EXPECT_EQ(count, 1) << "a group is one item, which isn't of the kind";
    settings.groupsAsOne = 0;
    ASSERT_TRUE(sequencePageItems(document->ref(), settings, {}, count));
    EXPECT_EQ(keyOf(photo) + keyOf(low) + keyOf(lowRight), "101520");
}

}  // namespace
}  // namespace tarnova
