#include "tags/tag_record.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace tarnova {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

std::string encode(const tagDataRec& tag, errorWord expected = 0) {
    std::byte* block = nullptr;
    EXPECT_EQ(tagRecordEncode(&tag, &block, 0), expected);
    const blockPtr<> owned(block);
    return block == nullptr ? std::string{} : std::string(reinterpret_cast<const char*>(block), blockSize(block));
}

std::string field(std::string_view name, std::string_view payload) {
    std::string bytes{'\0', static_cast<char>(8 + payload.size()), '\5'};
    return bytes.append(name).append(payload);
}

std::string record(std::string_view fields, char kind = 0) {
    const std::size_t total = 8 + fields.size();
    std::string bytes{'\0', '\0', static_cast<char>(total >> 8), static_cast<char>(total), '\0', '\1', '\0', kind};
    return bytes.append(fields);
}

std::string keysOf(blockHandle handle) {
    return {reinterpret_cast<const char*>(*handle), handleSize(handle)};
}

TEST(TagRecord, BytesOfTheWorkedExample) {
    tagDataRec tag{};
    pstrSet(tag.searchKey, "K1");
    pstrSet(tag.extractionRecordName, "Name");
    EXPECT_EQ(encode(tag),
              "\x00\x00\x00\x3B\x00\x01\x00\x00"
              "\x00\x0B\x05ky.r1\x02K1"
              "\x00\x09\x05sc.r1\x00"
              "\x00\x0D\x05"
              "er.r1\x04Name"
              "\x00\x09\x05rl.r1\x00"
              "\x00\x09\x05sr.r1\x00"s);
}

TEST(TagRecord, OrderAndKindOfWhatIsWritten) {
    const std::string names = field("ky.r1", "\0"sv) + field("sc.r1", "\0"sv) + field("er.r1", "\0"sv) +
                              field("rl.r1", "\0"sv) + field("sr.r1", "\0"sv);
    const std::string lock = field("lk.r1", "\0"sv), associate = field("am.r1", "\0"sv);
    struct testRow {
        std::uint16_t kind;
        bool locked, associated;
        std::string expected;
    };
    const testRow rows[] = {
        {0, false, false, record(names, 0)},
        {0, true, true, record(lock + associate + names, 1)},
        {1, false, false, record("", 2)},
        {1, true, false, record(lock, 3)},
        {2, false, true, record(associate + names, 4)},
        {2, true, false, record(lock + names, 5)},
    };
    for (const testRow& row : rows) {
        tagDataRec tag{};
        tag.tagKind = row.kind;
        tag.linkLocked = row.locked ? 1 : 0;
        tag.associateMe = row.associated ? 1 : 0;
        EXPECT_EQ(encode(tag), row.expected) << row.kind << row.locked;

        std::uint16_t storedKind = 99;
        std::uint32_t total = 0;
        tagDataRec back{};
        ASSERT_EQ(tagRecordDecode(row.expected, &back, &total, &storedKind, 0), 0);
        EXPECT_EQ(storedKind, 2 * row.kind + (row.locked ? 1 : 0));
        EXPECT_EQ(total, row.expected.size());
        EXPECT_EQ(back.tagKind, 0) << "told by the stored kind alone";
        EXPECT_EQ(back.linkLocked != 0, row.locked);
        EXPECT_EQ(back.associateMe != 0, row.associated);
    }
}

TEST(TagRecord, FieldsInAnyOrderAndTheLastOfTwoCounts) {
    tagDataRec tag{};
    pstrSet(tag.notes1, "old");
    tag.tagStatus = tagStatusNone;
    const std::string bytes =
        record(field("sr.r1", "\5style"sv) + field("ms.r1", "\5media"sv) + field("cn.r1", "\xFF anything") +
               field("ky.r1", "\1a"sv) + field("mp.r1", "\0"sv) + field("ky.r1", "\2bc"sv));
    ASSERT_EQ(tagRecordDecode(bytes, &tag, nullptr, nullptr, 0), 0);
    EXPECT_EQ(pstrView(tag.searchKey), "bc");
    EXPECT_EQ(pstrView(tag.styleRecordName), "style");
    EXPECT_EQ(tag.notes1[0], 0) << "cleared";
    EXPECT_EQ(tag.tagStatus, 0);
}

TEST(TagRecord, WhatDoesntHoldIsRefused) {
    const std::string key = field("ky.r1", "\2K1"sv);
    const auto resized = [](std::string bytes, char size) {
        bytes[9] = size;
        return bytes;
    };
    struct testRow {
        const char* name;
        std::string bytes;
        errorWord error;
    };
    const testRow rows[] = {
        {"nothing", "", errTagRefused},
        {"half a header", "\0\0\0\4"s, errTagRefused},
        {"total too small", record(key) + "x", errTagRefused},
        {"total too large", record(key).substr(0, 12), errTagRefused},
        {"size word 0", resized(record(key), 0), errTagRefused},
        {"size word 7", resized(record(key), 7), errTagRefused},
        {"field past the end", resized(record(key), 12), errTagRefused},
        {"rest below a field's header", record(key + "\0\5\5ky"s), errTagRefused},
        {"string without its length", record(field("ky.r1", "")), errTagRefused},
        {"flag without its length", record(field("lk.r1", "")), errTagRefused},
        {"string past its field", record(field("ky.r1", "\3K1"sv)), errTagRefused},
        {"dropped string past its field", record(field("ms.r1", "\3K1"sv)), errTagRefused},
        {"string longer than its member", record(field("er.r1", "\x20" + std::string(32, 'x'))), errTagRefused},
        {"unknown name", record(key + field("zz.r1", "\0"sv)), errTagFieldUnknown},
        {"name in capitals", record(key + field("ER.R1", "\0"sv)), errTagFieldUnknown},
        {"name of another length", record(key + "\0\x09\4er.r1\0"s), errTagFieldUnknown},
    };
    for (const auto& [name, bytes, error] : rows) {
        tagDataRec tag{};
        tag.tagStatus = tagStatusNone;
        std::uint32_t total = 77;
        EXPECT_EQ(tagRecordDecode(bytes, &tag, &total, nullptr, 0), error) << name;
        EXPECT_EQ(tag.tagStatus, tagStatusNone) << name;
        EXPECT_EQ(total, 77U) << name;
        if (error == errTagFieldUnknown) {
            EXPECT_EQ(pstrView(tag.searchKey), "K1") << name << ": read before it";
        }
    }
}

TEST(TagRecord, StringsAtTheirCapacity) {
    tagDataRec tag{};
    ASSERT_EQ(tagRecordDecode(record(field("er.r1", "\x1F" + std::string(31, 'x'))), &tag, nullptr, nullptr, 0), 0);
    EXPECT_EQ(tag.extractionRecordName[0], 31);
    ASSERT_EQ(tagRecordDecode(record(field("ky.r1", "\x40" + std::string(64, 'k'))), &tag, nullptr, nullptr, 0), 0);
    EXPECT_EQ(tag.searchKey[0], 64);
    // A caller's mistake must not carry foreign bytes into a document.
    tag.ruleName[0] = 255;
    ASSERT_EQ(tagRecordDecode(encode(tag), &tag, nullptr, nullptr, 0), 0);
    EXPECT_EQ(tag.ruleName[0], 31);
}

TEST(TagRecord, FurtherKeys) {
    const handlePtr keys(newHandle(1));
    tagDataRec tag{};
    tag.auxKeys = keys.get();
    EXPECT_EQ(encode(tag).size(), 53U) << "one byte is never stored";
    ASSERT_EQ(resizeHandle(keys.get(), 5), 0);
    std::memcpy(*keys, "\1a\2bc", 5);
    const std::string bytes = encode(tag);
    EXPECT_EQ(bytes.substr(53), field("ak.r1", "\1a\2bc"));

    const handlePtr read(newHandle(3));
    tag.auxKeys = read.get();
    ASSERT_EQ(tagRecordDecode(bytes, &tag, nullptr, nullptr, 0), 0);
    EXPECT_EQ(keysOf(read.get()), "\1a\2bc");
    ASSERT_EQ(tagRecordDecode(record(field("ak.r1", "x")), &tag, nullptr, nullptr, 0), 0);
    EXPECT_EQ(handleSize(read.get()), 0U) << "one byte comes out empty";
    tag.auxKeys = nullptr;
    ASSERT_EQ(tagRecordDecode(bytes, &tag, nullptr, nullptr, 0), 0);
    EXPECT_EQ(tag.auxKeys, nullptr);
}

TEST(TagRecord, FurtherKeysPastTheWorkBufferAreRefused) {
    constexpr std::size_t room = storedTagCapacity - 53 - 8;
    for (const std::size_t size : {room, room + 1, std::size_t{65535}, std::size_t{1} << 20}) {
        const handlePtr keys(newHandleClear(size));
        tagDataRec tag{};
        tag.auxKeys = keys.get();
        const bool fits = size <= room;
        EXPECT_EQ(encode(tag, fits ? 0 : errTagMemory).size(), fits ? storedTagCapacity : 0) << size;
    }
}

TEST(TagRecord, MissingMemory) {
    static allocatorService poor;
    poor = defaultAllocator();
    const handlePtr keys(newHandle(0));
    tagDataRec tag{};
    tag.auxKeys = keys.get();
    const std::string bytes = record(field("ak.r1", "\3abc") + field("ky.r1", "\2K1"));
    poor.allocate = [](std::size_t size) { return size == 0 ? defaultAllocator().allocate(size) : nullptr; };
    poor.allocateClear = poor.allocate;
    poor.resize = [](void*, std::size_t) { return false; };
    installAllocator(&poor);
    const errorWord decoded = tagRecordDecode(bytes, &tag, nullptr, nullptr, 0);
    std::byte* block = nullptr;
    const errorWord encoded = tagRecordEncode(&tag, &block, 0);
    installAllocator(nullptr);
    EXPECT_EQ(decoded, errTagMemory);
    EXPECT_EQ(pstrView(tag.searchKey), "K1") << "the other fields are read";
    EXPECT_EQ(encoded, errTagMemory);
    EXPECT_EQ(block, nullptr);
}

TEST(TagRecord, APriorErrorAndNullsDoNothing) {
    tagDataRec tag{};
    std::byte* block = nullptr;
    pstrSet(tag.searchKey, "K1");
    EXPECT_EQ(tagRecordDecode(record(""), &tag, nullptr, nullptr, 64), 64);
    EXPECT_EQ(tagRecordEncode(&tag, &block, 64), 64);
    EXPECT_EQ(tagRecordDecode({}, &tag, nullptr, nullptr, 0), 0);
    EXPECT_EQ(tagRecordDecode(record(""), nullptr, nullptr, nullptr, 0), 0);
    EXPECT_EQ(tagRecordEncode(nullptr, &block, 0), 0);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(pstrView(tag.searchKey), "K1");
}

TEST(TagRecord, RandomRecordsThereAndBack) {
    std::mt19937 random(41);
    const auto fill = [&](std::uint8_t* text, std::size_t capacityBytes) {
        text[0] = static_cast<std::uint8_t>(random() % 3 == 0 ? 0 : random() % capacityBytes);
        for (std::size_t i = 1; i <= text[0]; ++i)
            text[i] = static_cast<std::uint8_t>(random());
    };
    for (int round = 0; round < 500; ++round) {
        tagDataRec tag{};
        tag.linkLocked = random() % 2;
        tag.associateMe = random() % 2;
        fill(tag.searchKey, sizeof tag.searchKey);
        fill(tag.searchCriteriaName, sizeof tag.searchCriteriaName);
        fill(tag.extractionRecordName, sizeof tag.extractionRecordName);
        fill(tag.styleRecordName, sizeof tag.styleRecordName);
        fill(tag.ruleName, sizeof tag.ruleName);
        for (std::uint8_t* notes : {tag.notes1, tag.notes2, tag.notes3})
            fill(notes, sizeof tag.notes1);
        const std::string bytes = encode(tag);
        tagDataRec back{};
        ASSERT_EQ(tagRecordDecode(bytes, &back, nullptr, nullptr, 0), 0);
        EXPECT_EQ(std::memcmp(&back, &tag, sizeof tag), 0);

        // Cut or damaged anywhere, it is read to some end and never past it.
        std::string damaged = bytes.substr(0, random() % bytes.size());
        EXPECT_EQ(tagRecordDecode(std::string(damaged), &back, nullptr, nullptr, 0), errTagRefused);
        damaged = bytes;
        damaged[random() % damaged.size()] = static_cast<char>(random());
        static_cast<void>(tagRecordDecode(std::string(damaged), &back, nullptr, nullptr, 0));
    }
}

}  // namespace
}  // namespace tarnova
