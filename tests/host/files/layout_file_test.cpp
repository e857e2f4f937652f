#include "host/files/layout_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "host/model/document_builder.h"
#include "host/model/story_text.h"
#include "source_folder.h"
#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

namespace fs = std::filesystem;

std::string bytesOf(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class LayoutFolderTest : public testing::Test {
 protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "layoutXXXXXX").string();
        ASSERT_NE(::mkdtemp(name.data()), nullptr);
        folder = name;
    }
    void TearDown() override {
        fs::permissions(folder, fs::perms::owner_all);
        fs::remove_all(folder);
    }

    fs::path folder;
};

TEST(LayoutFile, ExamplesAreStable) {
    int count = 0;
    for (const char* part : {"examples", "fuzz/corpus/layout"}) {
        for (const auto& entry : fs::recursive_directory_iterator(fs::path(TARNOVA_SOURCE_FOLDER) / part)) {
            if (entry.path().extension() != ".tvd") continue;
            SCOPED_TRACE(entry.path().string());
            layoutError error;
            const auto document = openLayout(entry.path().string(), error);
            ASSERT_NE(document, nullptr) << error.line << ": " << error.message;
            expectStable(*document);
            ++count;
        }
    }
    EXPECT_GE(count, 4);
}

TEST_F(LayoutFolderTest, SaveAndOpen) {
    const auto document = opened(frameWith("\"Dear {{Name}}\""));
    EXPECT_EQ(document->documentName(), "");
    layoutError error;
    ASSERT_TRUE(saveLayout(*document, (folder / "a.tvd").string(), error)) << error.message;
    EXPECT_TRUE(document->documentIsSaved());
    EXPECT_EQ(document->documentFolder(), folder.string());
    EXPECT_EQ(document->documentName(), "a.tvd");
    const auto again = openLayout((folder / "a.tvd").string(), error);
    ASSERT_NE(again, nullptr) << error.message;
    EXPECT_TRUE(again->documentIsSaved());
    EXPECT_EQ(writeLayout(*again), bytesOf(folder / "a.tvd"));
    ASSERT_TRUE(saveLayout(*again, (folder / "a.tvd").string(), error)) << "over the old file";
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1) << "no temporary file stays";
}

TEST_F(LayoutFolderTest, AFailedSaveLeavesTheOldFile) {
    const auto document = opened(frameWith("\"new\""));
    layoutError error;
    EXPECT_FALSE(saveLayout(*document, (folder / "none" / "a.tvd").string(), error));
    EXPECT_NE(error.message.find("No such file"), std::string::npos) << error.message;
    // A folder in the file's place can't be replaced; what was written beside it goes again.
    fs::create_directory(folder / "a.tvd");
    EXPECT_FALSE(saveLayout(*document, (folder / "a.tvd").string(), error));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1);
    EXPECT_FALSE(document->documentIsSaved());
    // A disk that is full while the new file is written.
    std::ofstream(folder / "b.tvd") << "old";
    rlimit old{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
    const rlimit small{100, old.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_FALSE(saveLayout(*document, (folder / "b.tvd").string(), error));
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &old), 0);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(bytesOf(folder / "b.tvd"), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 2);
}

/// The deepest that can be read, in the deepest place of its text, is written deeper and opens again.
TEST_F(LayoutFolderTest, WhatWasSavedCanBeOpened) {
    const auto document = opened(pageWith(inGroups(
        24,
        R"({"bounds": [0, 0, 9, 9], "text": {"threads": ["a", [{"text": [{"text": "b", "tag": {"link": "L", "notes": ["n"]}}]}]]}})")));
    ASSERT_NE(document, nullptr);
    layoutError error;
    EXPECT_TRUE(saveLayout(*document, (folder / "a.tvd").string(), error)) << error.message;
    EXPECT_NE(openLayout((folder / "a.tvd").string(), error), nullptr) << error.message;

    DocumentBuilder builder;
    UID parent = builder.layerNode(builder.spreadOf(builder.addSinglePage(9, 9)), 1);
    PageItem group;
    group.itemClass = ItemClass::group;
    for (int i = 0; i < 40; ++i)
        parent = builder.addItem(parent, group);
    EXPECT_FALSE(saveLayout(*builder.finish(), (folder / "b.tvd").string(), error));
    EXPECT_NE(error.message.find("nested too deep"), std::string::npos) << error.message;
    EXPECT_FALSE(fs::exists(folder / "b.tvd"));
}

TEST_F(LayoutFolderTest, WhatCantBeOpened) {
    layoutError error;
    EXPECT_EQ(openLayout((folder / "none.tvd").string(), error), nullptr);
    EXPECT_NE(error.message.find("none.tvd"), std::string::npos);
    EXPECT_EQ(error.line, 0);
    EXPECT_EQ(openLayout(folder.string(), error), nullptr);
    EXPECT_NE(error.message.find("no file"), std::string::npos) << error.message;
}

TEST(LayoutFile, HandWrittenDefaults) {
    const auto document = opened(R"({"tarnovaLayout": 1, "pages": [{}, {"size": ["1in", "2in"]}]})");
    EXPECT_EQ(document->pageCount(), 2);
    EXPECT_EQ(document->layerCount(), 2);
    EXPECT_NEAR(document->page(document->pageAt(0))->bounds.width(), 595.276, 1e-9);
    EXPECT_EQ(document->page(document->pageAt(1))->bounds, (PMRect{0, 0, 72, 144}));
    EXPECT_EQ(document->swatches()[swatchBlack].name, "Black");
    const auto empty = opened("\xEF\xBB\xBF{\"tarnovaLayout\": 1}");
    EXPECT_EQ(empty->pageCount(), 0);
    expectStable(*empty);
}

TEST(LayoutFile, ItemsOfPagesLieOnTheirPage) {
    const auto document = opened(R"({"tarnovaLayout": 1, "pageSize": [100, 50], "spreads": [{"pages": [{}, {"items": [
        {"bounds": [10, 5, 20, 10], "rotate": 90}]}], "items": [{"name": "free", "path": "M 110 1 L 120 9"}]}]})");
    const UID node = document->spreadLayerNode(document->spreadAt(0), document->layerAt(1));
    const PMRect turned = document->boundsInSpread(document->childAt(node, 0));
    EXPECT_NEAR(turned.left, 115, 1e-9);
    EXPECT_NEAR(turned.top, 0, 1e-9);
    EXPECT_NEAR(turned.right, 125, 1e-9);
    EXPECT_NEAR(document->transformValues(document->childAt(node, 0)).rotationDegrees, 90, 1e-9);
    EXPECT_EQ(document->boundsInSpread(document->childAt(node, 1)), (PMRect{110, 1, 120, 9}));
    EXPECT_EQ(document->pageOfItem(document->childAt(node, 1)).page, document->pageAt(1));
}

TEST(LayoutFile, FramesFlowOnByNameOrUid) {
    const auto document = opened(pageWith(R"(
        {"name": "last", "uid": 70, "bounds": [0, 60, 9, 9], "flowsFrom": 60},
        {"name": "first", "bounds": [0, 0, 9, 9], "columns": 2, "text": "abc"},
        {"uid": 60, "bounds": [0, 30, 9, 9], "flowsFrom": "first"})"));
    ASSERT_EQ(document->stories().size(), 1u);
    const std::vector<UID> frames = document->framesOfStory(document->stories()[0]);
    ASSERT_EQ(frames.size(), 3u);
    EXPECT_EQ(document->childCount(frames[0]), 2);
    EXPECT_EQ(document->columnIndex(document->childAt(frames[0], 1)), 1);
    EXPECT_EQ(frames[1], 60u);
    EXPECT_EQ(frames[2], 70u);
    EXPECT_GT(document->nextUid(), 70u);
    expectStable(*document);
}

TEST(LayoutFile, ItemsOverrideThoseOfMastersByNameOrUid) {
    const auto document = opened(R"({"tarnovaLayout": 1, "masters": [
        {"name": "B", "pages": [{"master": "A", "items": [{"name": "b", "bounds": [0, 0, 9, 9], "overrides": 90}]}]},
        {"name": "A", "pages": [{"items": [{"uid": 90, "group": []}]}]}],
        "pages": [{"master": "B", "items": [{"name": "b", "bounds": [0, 0, 9, 9], "overrides": "b"}]}, {"master": "B"}]})");
    const auto drawnOn = [&document](std::int32_t page) {
        std::vector<const PageItem*> drawn;
        document->drawnItems(document->pageAt(page), drawn);
        return drawn;
    };
    ASSERT_EQ(drawnOn(0).size(), 1u);
    ASSERT_EQ(drawnOn(1).size(), 1u);
    EXPECT_EQ(document->overriddenItem(drawnOn(0)[0]->uid), drawnOn(1)[0]->uid);
    EXPECT_EQ(document->overriddenItem(drawnOn(1)[0]->uid), 90u);
    expectStable(*document);
    ASSERT_EQ(document->deleteItem(90), 0);
    EXPECT_EQ(document->overriddenItem(drawnOn(1)[0]->uid), kInvalidUID);
    expectStable(*document);
}

TEST(LayoutFile, EngineDataAndTablesOfNames) {
    const auto document = opened(pageWith(R"({"bounds": [0, 0, 1, 1], "data": {"tallyra": "AAEC/w=="}})"));
    const UID node = document->spreadLayerNode(document->spreadAt(0), document->layerAt(1));
    const UID item = document->childAt(node, 0);
    EXPECT_EQ(document->itemDataBlock(item, 0), nullptr);
    ASSERT_NE(document->itemDataBlock(item, 1), nullptr);
    EXPECT_EQ(*document->itemDataBlock(item, 1), std::string("\0\1\2\xFF", 4));
    ASSERT_EQ(document->setItemDataBlock(kInvalidUID, 0, ""), 0);
    const auto again = opened(writeLayout(*document));
    ASSERT_NE(again->itemDataBlock(kInvalidUID, 0), nullptr) << "an empty block is a block";
    EXPECT_EQ(*again->itemDataBlock(item, 1), std::string("\0\1\2\xFF", 4));
}

/// Documents put together at random, with what the file has the most trouble with.
TEST(LayoutFile, RandomDocumentsAreStable) {
    std::mt19937 random(3);
    const auto number = [&random] {
        const double choices[] = {0, -0.0, 0.1, 1e-9, 12345.678901234567, -7.25, 595.276};
        return choices[random() % std::size(choices)] + static_cast<double>(random() % 3) / 3;
    };
    const std::u32string_view texts[] = {U"plain",  U"{{",   U"\\{{a}}", U"a\nb\\\nc",
                                         U"<!$[!$", U"\\\\", U"",        U"ü\u2028\U0001F600\t\x01\""};
    for (int round = 0; round < 60; ++round) {
        DocumentBuilder builder;
        const UID spread = builder.addSpread();
        const UID page = builder.addPage(spread, {0.1, 0, 700 + number(), 842.1});
        builder.addPage(spread, {701, number(), 12000, 20000});
        for (int i = 0; i < 5; ++i) {
            PageItem item;
            auto shape = std::make_shared<ItemShape>();
            shape->bounds = {number(), 0, 100 + number(), 50};
            shape->path = {
                {{number(), number()}, {{PathSegment::Kind::curve, {number(), 1}, {2, 3}, {4, number()}}}, i % 2 == 0}};
            shape->stroke.paint = {swatchBlack, 0.3};
            item.shape = shape;
            item.toParent = {number(), number(), number(), 1, number(), number()};
            builder.addItem(builder.layerNode(spread, 1), item);
            std::u32string text;
            for (int piece = 0; piece < 4; ++piece)
                text += texts[random() % std::size(texts)];
            builder.addTextFrame(page, {number(), number(), 300, 400}, text);
        }
        const auto document = builder.finish();
        for (UID story : document->stories()) {
            ASSERT_EQ(document->textReplace(story, 0, 0, texts[random() % std::size(texts)], true), 0);
            const std::int32_t length = document->totalLength(story);
            const auto size = std::make_shared<NumberAttribute>(TextAttributeClass::pointSize, 7.1);
            const auto tag = std::make_shared<TagAttribute>(
                TextAttributeClass::tallyraTag, TagAttribute::Content{"x", "", "y", "", 5, std::string("\0\1", 2)});
            ASSERT_EQ(document->attributeApply(story, static_cast<std::int32_t>(random() % 99) % length, 1, size), 0);
            ASSERT_EQ(document->attributeApply(story, length / 2, length - length / 2, tag), 0);
        }
        const std::string written = writeLayout(*document);
        const auto again = opened(written);
        ASSERT_NE(again, nullptr);
        ASSERT_EQ(writeLayout(*again), written);
        for (UID story : document->stories()) {
            const StoryText &before = *document->story(story)->content, &after = *again->story(story)->content;
            ASSERT_EQ(charactersOf(after, 0, after.length()), charactersOf(before, 0, before.length()));
            ASSERT_TRUE(storyIsConsistent(after));
            for (std::int32_t at = 0; at < after.length(); at = runAt(after, at).limit)
                ASSERT_EQ(runAt(after, at).limit, runAt(before, at).limit);
        }
    }
}

}  // namespace
}  // namespace tarnova
