// Text links merged through a whole run into a built document: data file, index, walk, replacement, paragraphs.

#include "merge/pull_story_callback.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>

#include "data/key_index.h"
#include "data/quick_setup.h"
#include "definitions/record_def_set.h"
#include "engine/run/merge_run.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/text_encoding.h"
#include "host/model/document_builder.h"
#include "output/build_tables.h"
#include "tags/tag_manager.h"
#include "tests/engine/toolkit/recording_alerts.h"

namespace tarnova {
namespace {

class MergeTest : public testing::Test {
 protected:
    MergeTest() {
        sessionReset();
        folder = std::filesystem::temp_directory_path() / ("tarnova-merge-" + std::to_string(getpid()));
        std::filesystem::create_directories(folder);
        session().indexFolder = folder.string();
    }
    ~MergeTest() override {
        finishMergeRun();
        freeBuildTables();
        dropDefinition();
        std::filesystem::remove_all(folder);
    }

    static void dropDefinition() {
        auto& sets = session().currentDefSet;
        if (sets != nullptr) recordDefSetDiscard(sets, sets);
    }

    /// Makes the file and a definition of its first line the current one.
    void useData(std::string_view bytes) {
        dropDefinition();
        const std::string path = (folder / ("data" + std::to_string(++fileCount) + ".csv")).string();
        std::ofstream(path, std::ios::binary) << bytes;
        quickSetupAnalysis analysis;
        ASSERT_EQ(quickSetupAnalyze(path.c_str(), analysis, 0), 0);
        Str31 name;
        pstrFromView(name, sizeof(name), "Test");
        recordDefSetRec* set = nullptr;
        ASSERT_EQ(recordDefSetNew(name, nullptr, session().currentDefSet, set, 0), 0);
        ASSERT_EQ(quickSetupDefinition(*set, name, analysis, {}, definition, 0), 0);
        const std::string index = stableIndexPath(*definition, path);
        ASSERT_TRUE(prepareIndexFile(index, path));
        std::strcpy(definition->databasePath, index.c_str());
        pstrCopy(session().currentDefName, name);
    }

    extractionRec& link(std::string_view name) {
        Str31 pascal;
        pstrFromView(pascal, sizeof(pascal), name);
        extractionRec* record = nullptr;
        EXPECT_EQ(findExtraction(definition, pascal, record, 0), 0);
        return *record;
    }

    /// A page with one frame. "{Name}" is a link of that name over its own text, "{2:Name}" one with another key.
    void useTemplate(std::string_view marked) {
        struct tagPlace {
            std::int32_t start, length;
            std::string key, name;
        };
        std::vector<tagPlace> places;
        std::u32string text;
        for (std::size_t i = 0; i < marked.size(); ++i) {
            if (marked[i] != '{') {
                text.push_back(static_cast<unsigned char>(marked[i]));
                continue;
            }
            const std::size_t close = marked.find('}', i);
            std::string name(marked.substr(i + 1, close - i - 1));
            std::string key = "1";
            if (const auto colon = name.find(':'); colon != std::string::npos) {
                key = name.substr(0, colon);
                name = name.substr(colon + 1);
            }
            places.push_back(
                {static_cast<std::int32_t>(text.size()), static_cast<std::int32_t>(name.size()), key, name});
            text += utf8ToUtf32(name);
            i = close;
        }
        DocumentBuilder builder;
        const UID page = builder.addSinglePage(300, 300);
        const UID frame = builder.addTextFrame(page, {10, 10, 290, 290}, text);
        document = builder.finish();
        const UIDRef story{document.get(), document->textOfFrame(frame)};
        for (const tagPlace& place : places)
            tagRange(story, place.start, place.length, place.key, place.name);
    }

    void tagRange(UIDRef story, std::int32_t start, std::int32_t length, std::string_view key, std::string_view name) {
        tagDataRec tag{};
        pstrFromView(tag.searchKey, sizeof(tag.searchKey), key);
        pstrFromView(tag.extractionRecordName, sizeof(tag.extractionRecordName), name);
        tag.linkLocked = lockNext ? 1 : 0;
        std::byte* block = nullptr;
        ASSERT_EQ(tagRecordEncode(&tag, &block, 0), 0);
        tagStrings strings;
        tagStringsInit(strings, 0);
        manager.TagText(story, strings, {reinterpret_cast<const char*>(block), blockSize(block)}, start, length);
        freeBlock(block);
    }

    /// Merges all records; the text of each page, returns as "|", without the closing mark.
    std::vector<std::string> merge() {
        session().rangeFirst = firstRecord;
        session().rangeLast = lastRecord;
        session().stepBy = 0;
        error = startMergeRun(document->ref(), 0);
        error = mergeToBuiltDocument(document->ref(), error);
        finishMergeRun();
        std::vector<std::string> pages;
        for (const UID story : document->stories()) {
            std::u32string text = document->textRead(story, 0, document->totalLength(story) - 1);
            for (char32_t& c : text)
                c = c == U'\r' ? U'|' : c;
            pages.push_back(utf32ToUtf8(text));
        }
        return pages;
    }

    std::vector<std::string> mergeOne(std::string_view data, std::string_view marked) {
        useData(data);
        useTemplate(marked);
        return merge();
    }

    RecordingAlerts alerts;
    std::filesystem::path folder;
    recordDefRec* definition = nullptr;
    std::unique_ptr<DocumentModel> document;
    ZavoDataTagManager manager;
    std::uint32_t firstRecord = 0;
    std::uint32_t lastRecord = 0;
    bool lockNext = false;
    int fileCount = 0;
    errorWord error = 0;
};

using testing::ElementsAre;

TEST_F(MergeTest, EachRecordFillsItsOwnCopy) {
    EXPECT_THAT(
        mergeOne("Name,City\nAnna,Rome\nBartholomew,Oslo\nC,Bern\n", "Dear {Name} of {City}, {Name}!"),
        ElementsAre("Dear Anna of Rome, Anna!", "Dear Bartholomew of Oslo, Bartholomew!", "Dear C of Bern, C!"));
    EXPECT_EQ(error, 0);
    EXPECT_EQ(document->pageCount(), 3);
    ASSERT_TRUE(document->undoNamedStep(PMString::ofKey("kZavoKelvaneMergeResultsFileBuildDocKey").view()));
    EXPECT_EQ(document->pageCount(), 1);
}

TEST_F(MergeTest, TagsStaySoThatTheNextRunMergesAgain) {
    EXPECT_THAT(mergeOne("Name\nAnna\n", "<{Name}>"), ElementsAre("<Anna>"));
    useData("Name\nBo\n");
    EXPECT_THAT(merge(), ElementsAre("<Bo>"));
}

TEST_F(MergeTest, AwkwardValuesComeOutRight) {
    struct testRow {
        const char* name;
        const char* data;
        const char* want;
    };
    const testRow rows[] = {
        {"quotes doubled", "A,B\n\"say \"\"hi\"\"\",\"x\"\n", "say \"hi\"-x"},
        {"delimiter in quotes", "A,B\n\"a,b\",x\n", "a,b-x"},
        {"line end in quotes", "A,B\n\"a\nb\",x\n", "a|b-x"},
        {"CR LF in quotes", "A,B\r\n\"a\r\nb\",x\r\n", "a|b-x"},
        {"blanks around", "A,B\n  a b  ,x\n", "a b-x"},
        {"UTF-8", "A,B\nÅsa Łódź 日本,x\n", "Åsa Łódź 日本-x"},
        {"UTF-8 with a mark",
         "\xEF\xBB\xBF"
         "A,B\nÅ,x\n",
         "Å-x"},
        {"Windows-1252", "A,B\n\xC5sa \x80 \x96,x\n", "Åsa € –-x"},
        {"semicolon in a tab file", "A\tB\na;b\tx\n", "a;b-x"},
    };
    for (const testRow& row : rows)
        EXPECT_THAT(mergeOne(row.data, "{A}-{B}"), ElementsAre(row.want)) << row.name;
}

TEST_F(MergeTest, NoDataByEachSetting) {
    struct testRow {
        const char* name;
        std::int16_t nodata, deleteline;
        const char* marked;
        const char* want;
    };
    const testRow rows[] = {
        {"default text", nodataGlobal, 0, "a|{A}|b", "a|none|b"},
        {"leave the placeholder", nodataPlaceholder, 0, "a|{A}|b", "a|A|b"},
        {"own text", nodataCustom, 0, "a|{A}|b", "a|own|b"},
        {"delete the text", nodataDelete, 0, "a|{A}|b", "a||b"},
        {"delete a blank line", nodataDelete, 1, "a|{A}|b", "a|b"},
        {"two links, one line", nodataDelete, 1, "a|{A} {A}|b", "a|b"},
        {"a line with other text", nodataDelete, 1, "a|x{A}|b", "a|x|b"},
        {"delete the line in any case", nodataDelete, 2, "a|x{A}y|b", "a|b"},
        {"first line", nodataDelete, 1, "{A}|b", "b"},
        {"last line keeps the closing mark", nodataDelete, 1, "a|{A}", "a|"},
        {"several lines", nodataDelete, 1, "{A}|x{B}|{A}|{A}|y", "xb|y"},
        {"missing last field", nodataDelete, 1, "{B}|{C}|y", "b|y"},
    };
    for (const testRow& row : rows) {
        useData("A,B,C\n,b\n");
        for (const char* name : {"A", "B", "C"}) {
            link(name).nodata = row.nodata;
            link(name).deleteline = row.deleteline;
            pstrFromView(link(name).nodatastring, sizeof(Str31), "own");
        }
        pstrFromView(appPrefs().textDefaults.noData.string, sizeof(Str255), "none");
        std::string marked = row.marked;
        for (char& c : marked)
            c = c == '|' ? '\r' : c;
        useTemplate(marked);
        EXPECT_THAT(merge(), ElementsAre(row.want)) << row.name;
        EXPECT_EQ(error, 0) << row.name;
    }
}

TEST_F(MergeTest, PrefixAndSuffixOnlyAroundAValue) {
    useData("A,B\nx,\n");
    for (const char* name : {"A", "B"}) {
        link(name).prefix.enable = 1;
        pstrFromView(link(name).prefix.string, sizeof(Str255), "«");
        link(name).suffix.enable = 1;
        pstrFromView(link(name).suffix.string, sizeof(Str255), "»");
        link(name).nodata = nodataCustom;
    }
    useTemplate("{A}{B}.");
    EXPECT_THAT(merge(), ElementsAre("«x»."));
}

TEST_F(MergeTest, LockedAndIgnoredLinksKeepTheirText) {
    lockNext = true;
    EXPECT_THAT(mergeOne("A\nx\n", "{A}."), ElementsAre("A."));
    lockNext = false;
    useTemplate("{A}.");
    link("A").locked = 1;
    EXPECT_THAT(merge(), ElementsAre("A."));
    link("A").locked = 0;
    link("A").ignoreLink = 1;
    EXPECT_THAT(merge(), ElementsAre("A."));
}

TEST_F(MergeTest, SeveralRecordsOnAPageAndBlanksBehindTheLast) {
    useData("A\nr1\nr2\nr3\nr4\nr5\n");
    useTemplate("{A} {2:A} {3:A}.");
    appPrefs().textDefaults.endOfFile.string[0] = 0;
    EXPECT_THAT(merge(), ElementsAre("r1 r2 r3.", "r4 r5 ."));
}

TEST_F(MergeTest, ARangeEndsTheRunAtItsLastRecord) {
    useData("A\nr1\nr2\nr3\nr4\nr5\n");
    useTemplate("{A} {2:A}.");
    appPrefs().textDefaults.endOfFile.string[0] = 0;
    firstRecord = 2;
    lastRecord = 4;
    EXPECT_THAT(merge(), ElementsAre("r2 r3.", "r4 ."));

    firstRecord = 6;
    lastRecord = 9;
    merge();
    EXPECT_EQ(error, errRangeBehindEnd);
}

TEST_F(MergeTest, AnUnknownLinkEndsTheRunWithItsName) {
    mergeOne("A\nr1\nr2\n", "{A} {Nobody}");
    ASSERT_EQ(alerts.shown.size(), 1U);
    EXPECT_EQ(alerts.shown[0].number, errTagRefused);
    EXPECT_THAT(alerts.shown[0].text, testing::HasSubstr("Nobody"));
    EXPECT_EQ(session().cancelRun, 1);
}

TEST_F(MergeTest, ATemplateWithoutLinksIsRefused) {
    mergeOne("A\nr1\n", "plain");
    EXPECT_EQ(error, errNoTextLinks);
}

/// Keeps what each chunk gives.
class CollectingOutput final : public PageOutput {
 public:
    errorWord takePages(Document& built) override {
        ++chunks;
        for (const UID story : built.stories()) {
            texts.push_back(utf32ToUtf8(built.textRead(story, 0, built.totalLength(story) - 1)));
        }
        return failAt == chunks ? errFailed : errorWord{0};
    }
    std::vector<std::string> texts;
    int chunks = 0;
    int failAt = 0;
};

TEST_F(MergeTest, ARunInChunksGivesEveryRecordOnceInOrder) {
    std::string data = "A\n";
    for (int i = 1; i <= 203; ++i)
        data += "r" + std::to_string(i) + "\n";
    useData(data);
    useTemplate("{A}.");
    CollectingOutput output;
    ASSERT_EQ(startMergeRun(document->ref(), 0), 0);
    ASSERT_EQ(mergeToOutput(document->ref(), output, 0), 0);
    EXPECT_EQ(output.chunks, 4);
    ASSERT_EQ(output.texts.size(), 203U);
    for (std::size_t i = 0; i < 203; ++i)
        EXPECT_EQ(output.texts[i], "r" + std::to_string(i + 1) + ".");
    EXPECT_EQ(document->pageCount(), 1);
    finishMergeRun();

    CollectingOutput failing;
    failing.failAt = 2;
    ASSERT_EQ(startMergeRun(document->ref(), 0), 0);
    EXPECT_EQ(mergeToOutput(document->ref(), failing, 0), errFailed);
    EXPECT_EQ(failing.chunks, 2);
}

}  // namespace
}  // namespace tarnova
