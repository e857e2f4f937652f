// A data file, its definition and a template of one page in few words, and runs over them pushed to their end.

#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>

#include "data/data_source.h"
#include "data/key_index.h"
#include "data/quick_setup.h"
#include "definitions/record_def_set.h"
#include "engine/run/idle_step.h"
#include "engine/run/start_run.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/text_encoding.h"
#include "host/model/document_builder.h"
#include "output/build_tables.h"
#include "tags/tag_manager.h"
#include "tests/engine/toolkit/recording_alerts.h"

namespace tarnova {

class MergeTest : public testing::Test {
 protected:
    MergeTest() {
        sessionReset();
        folder = std::filesystem::temp_directory_path() / ("tarnova-merge-" + std::to_string(getpid()));
        std::filesystem::create_directories(folder);
        session().indexFolder = folder.string();
    }
    ~MergeTest() override {
        dataSourceCloseAll();
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
        pstrFromView(tag.styleRecordName, sizeof(tag.styleRecordName), styleNext);
        tag.linkLocked = lockNext ? 1 : 0;
        std::byte* block = nullptr;
        ASSERT_EQ(tagRecordEncode(&tag, &block, 0), 0);
        tagStrings strings;
        tagStringsInit(strings, session().engineMode);
        manager.TagText(story, strings, {reinterpret_cast<const char*>(block), blockSize(block)}, start, length);
        freeBlock(block);
    }

    /// Pushes the run until it is over; the error that ended it is in `error`.
    void push() {
        for (int turn = 0; runIsActive() && turn < 10000; ++turn) {
            idleStep();
            if (error == 0) error = session().engineError;
        }
        ASSERT_FALSE(runIsActive());
    }

    /// Runs over the template; what it made of it stays.
    void run(std::uint32_t runType) {
        session().rangeFirst = firstRecord;
        session().rangeLast = lastRecord;
        session().stepBy = step;
        appPrefs().mergeRunType = runType;
        error = startMergeRunOn(document->ref(), 0, false);
        push();
    }

    /// The text of each story, returns as "|", without the closing mark.
    [[nodiscard]] static std::vector<std::string> textsOf(const Document& built) {
        std::vector<std::string> texts;
        for (const UID story : built.stories()) {
            std::u32string text = built.textRead(story, 0, built.totalLength(story) - 1);
            std::replace(text.begin(), text.end(), U'\r', U'|');
            texts.push_back(utf32ToUtf8(text));
        }
        return texts;
    }

    /// Merges all records into a built document; the text of each page.
    std::vector<std::string> merge() {
        run(mergeRunBuildDocument);
        return textsOf(*document);
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
    std::uint32_t step = 0;
    bool lockNext = false;
    std::string styleNext;  // price style of the links of the next template
    int fileCount = 0;
    errorWord error = 0;
};

}  // namespace tarnova
