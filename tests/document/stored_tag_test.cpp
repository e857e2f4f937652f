#include "document/stored_tag.h"

#include <gtest/gtest.h>

namespace tarnova {
namespace {

std::string recordOf(std::string_view fields, std::string_view head = std::string_view("\0\1\0\0", 4)) {
    const auto size = static_cast<char>(8 + fields.size());
    return std::string(3, '\0') + size + std::string(head) + std::string(fields);
}

TEST(StoredTag, WriteAndWalk) {
    StoredTagWriter writer(2, true);
    writer.stringField(fieldLocked, {});
    writer.stringField(fieldKey, "K1");
    writer.field(fieldAuxKeys, std::string("\1a\1b"));
    const auto record = writer.finish();
    ASSERT_TRUE(record.has_value());
    EXPECT_EQ(record->size(), 8u + 9 + 11 + 12);
    StoredTagReader reader(*record);
    ASSERT_TRUE(reader.headerIsGood());
    EXPECT_EQ(reader.storedKind(), 5);
    EXPECT_EQ(reader.next()->name, fieldLocked);
    EXPECT_EQ(reader.next()->payload, std::string("\2K1"));
    EXPECT_EQ(reader.next()->payload, std::string("\1a\1b"));
    EXPECT_FALSE(reader.next().has_value());
    EXPECT_TRUE(reader.atEnd());
}

TEST(StoredTag, CapacitiesOfTheWriter) {
    StoredTagWriter fits(0, false);
    fits.field(fieldAuxKeys, std::string(storedTagCapacity - storedTagHeaderBytes - storedTagFieldHeaderBytes, 'x'));
    EXPECT_EQ(fits.finish()->size(), storedTagCapacity);
    fits.stringField(fieldKey, {});
    EXPECT_FALSE(fits.finish().has_value());
    StoredTagWriter longString(0, false);
    longString.stringField(fieldKey, std::string(256, 'x'));
    EXPECT_FALSE(longString.finish().has_value());
}

TEST(StoredTag, HostileBytes) {
    struct testRow {
        const char* name;
        std::string record;
        bool headerIsGood;
        int fields;
        bool isWhole = false;
    };
    const std::string field("\0\x09\5ky.r1\0", 9);
    const testRow rows[] = {
        {"empty", "", false, 0},
        {"cut header", std::string(7, '\0'), false, 0},
        {"header alone", recordOf({}), true, 0, true},
        {"other version", recordOf({}, std::string_view("\0\2\0\0", 4)), false, 0},
        {"length too small", recordOf({}) + "x", false, 0},
        {"one field", recordOf(field), true, 1, true},
        {"field of size 0", recordOf(std::string("\0\0\5ky.r1\0", 9)), true, 0},
        {"field longer than the record", recordOf(std::string("\0\x0A\5ky.r1\0", 9)), true, 0},
        {"field cut in its head", recordOf(field + std::string("\0\x09\5", 3)), true, 1},
        {"name of another length", recordOf(std::string("\0\x09\4ky.r1\0", 9)), true, 1, true},
        {"name longer than its field", recordOf(std::string("\0\x09\7ky.r1\0", 9)), true, 0},
    };
    for (const testRow& row : rows) {
        StoredTagReader reader(row.record);
        EXPECT_EQ(reader.headerIsGood(), row.headerIsGood) << row.name;
        int fields = 0;
        while (reader.next())
            ++fields;
        EXPECT_EQ(fields, row.fields) << row.name;
        EXPECT_EQ(row.headerIsGood && reader.atEnd(), row.isWhole) << row.name;
    }
}

}  // namespace
}  // namespace tarnova
