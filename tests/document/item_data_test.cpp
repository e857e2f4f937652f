#include "document/item_data.h"

#include <gtest/gtest.h>

#include <random>

#include "document/walk_state.h"
#include "engine/toolkit/memory.h"
#include "tests/document/fake_document.h"

namespace tarnova {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr std::string_view headerOnly{"\0\0\0\0\0\0\0\1", 8};

std::string blockOf(const std::vector<std::pair<std::uint32_t, std::string>>& entries) {
    std::string block;
    for (const auto& [type, payload] : entries)
        block = itemDataReplace(block, type, payload).value();
    return block;
}

TEST(ItemData, BytesOfABlock) {
    EXPECT_EQ(itemDataReplace({}, itemDataFrameTag, "ab"sv).value(),
              "\0\0\0\x0A\0\0\0\1"
              "\0\0\0\2AQMpab"s);
}

TEST(ItemData, ReplacingMovesAnEntryBehindAllOthers) {
    const std::string block = blockOf({{1, "one"}, {2, "two"}, {3, ""}});
    EXPECT_EQ(itemDataReplace(block, 1, "ONE!"sv).value(), blockOf({{2, "two"}, {3, ""}, {1, "ONE!"}}));
    EXPECT_EQ(itemDataReplace(block, 2, std::nullopt).value(), blockOf({{1, "one"}, {3, ""}}));
    EXPECT_EQ(itemDataReplace(block, 9, std::nullopt).value(), block);
    EXPECT_EQ(itemDataReplace(blockOf({{1, "one"}}), 1, std::nullopt).value(), headerOnly);
    EXPECT_EQ(itemDataFind(block, 3), ""sv);
    EXPECT_EQ(itemDataFind(block, 4), std::nullopt);
}

TEST(ItemData, ABlockWhoseSizesDontHoldIsMissingAndIsDropped) {
    const std::string whole = blockOf({{1, "one"}, {2, "two"}});
    std::string entryTooLong = whole;
    entryTooLong[11] = 100;
    std::string hugeEntry = whole;
    hugeEntry.replace(8, 4, "\xFF\xFF\xFF\xFF");
    struct testRow {
        const char* name;
        std::string block;
    };
    const testRow rows[] = {
        {"cut", whole.substr(0, whole.size() - 1)}, {"longer", whole + 'x'},      {"below a header", "\0\0\0"s},
        {"entry passes the end", entryTooLong},     {"entry of 4 GB", hugeEntry},
    };
    for (const auto& [name, block] : rows) {
        EXPECT_EQ(itemDataFind(block, 1), std::nullopt) << name;
        EXPECT_EQ(itemDataReplace(block, 7, "new"sv).value(), blockOf({{7, "new"}})) << name;
    }
}

TEST(ItemData, AForeignBlockWithATypeTwiceLosesBoth) {
    const std::string entry = "\0\0\0\1\0\0\0\5x"s;
    const std::string twice = "\0\0\0\x12\0\0\0\1"s + entry + entry;
    EXPECT_EQ(itemDataReplace(twice, 5, "new"sv).value(), blockOf({{5, "new"}}));
    EXPECT_EQ(itemDataReplace(twice, 5, std::nullopt).value(), headerOnly);
}

TEST(ItemData, RandomBytesNeverLeaveABrokenBlock) {
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        std::string bytes(random() % 40, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random() % 8 == 0 ? random() : 0);
        if (bytes.size() >= 8 && round % 2 == 0) bytes[3] = static_cast<char>(bytes.size() - 8);
        const std::string changed = itemDataReplace(bytes, 5, "payload"sv).value();
        EXPECT_EQ(itemDataFind(changed, 5), "payload"sv);
    }
}

TEST(ItemData, StoresAreApartAndTheDocumentFallsBackToTheModesStore) {
    FakeDocument document;
    const UID frame = document.addFrame(document.node(document.addSpread()));
    const UIDRef item{&document, frame};
    ASSERT_EQ(itemDataSet(item, ItemDataPlace::pageItem, itemDataFrameTag, "tag", 3, 1), 1);
    EXPECT_EQ(itemDataGet(item, ItemDataPlace::pageItem, itemDataFrameTag, nullptr, nullptr, 0), 0);
    std::byte* copy = nullptr;
    std::size_t size = 0;
    ASSERT_EQ(itemDataGet(item, ItemDataPlace::pageItem, itemDataFrameTag, &copy, &size, 1), 1);
    EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(copy), size), "tag");
    EXPECT_EQ(blockSize(copy), 3U);
    freeBlock(copy);

    const UIDRef whole = document.ref();
    ASSERT_EQ(itemDataSet(whole, ItemDataPlace::document, itemDataSlug, "ddf", 3, 1), 1);
    EXPECT_FALSE(itemDataView(whole, ItemDataPlace::document, itemDataSlug, 0));
    walkStateRec priceMode;
    priceMode.engineMode = 1;
    installWalkState(&priceMode);
    EXPECT_EQ(itemDataView(whole, ItemDataPlace::document, itemDataSlug, 0), "ddf"sv);
    installWalkState(nullptr);
}

TEST(ItemData, RefusalAndReferencesToNothing) {
    FakeDocument document;
    const UIDRef item{&document, document.addFrame(document.node(document.addSpread()))};
    EXPECT_EQ(itemDataSet(item, ItemDataPlace::pageItem, 1, nullptr, 0, 0), 1) << "nothing to remove";
    EXPECT_FALSE(document.items.at(item.uid).data[0]) << "and no block made for it";
    document.refusesChanges = true;
    EXPECT_EQ(itemDataSet(item, ItemDataPlace::pageItem, 1, "x", 1, 0), 0);
    EXPECT_EQ(itemDataSet(kInvalidUIDRef, ItemDataPlace::pageItem, 1, "x", 1, 0), 0);
    EXPECT_EQ(itemDataSet(item, ItemDataPlace::pageItem, 1, "x", 1, 2), 0) << "there are two stores";
    EXPECT_FALSE(itemDataView({&document, kInvalidUID}, ItemDataPlace::pageItem, 1, 0));
}

}  // namespace
}  // namespace tarnova
