#include "document/table_attribute.h"

#include <gtest/gtest.h>

#include "engine/toolkit/memory.h"

namespace tarnova {
namespace {

using namespace std::string_literals;

// The example of docs/tag-records.md.
const std::string example = "\0\0\0\x07\0\0\0\x07Kelvane\0\0\0\x09Highlight\0\0\0\x05Green\0\0\0\x05Spare\0\0\0\x02{}"s;

TEST(TableAttribute, StreamThereAndBack) {
    NokDataTagTableAttr attribute;
    attribute.setOwnerName("Kelvane");
    attribute.setHighlightMode("Highlight");
    attribute.setHighlightColour("Green");
    attribute.setSpare("Spare");
    attribute.setTagId(7);
    attribute.setData("{}");
    EXPECT_EQ(attribute.label(), "<Kelvane_Highlight_Green_Spare>");
    EXPECT_EQ(attribute.toStream(), example);

    NokDataTagTableAttr read;
    read.setData("earlier data");
    const std::string two = example + "behind";
    std::string_view stream = two;
    ASSERT_EQ(read.fromStream(stream, 0), 0);
    EXPECT_EQ(stream, "behind");
    EXPECT_EQ(read.tagId(), 7U);
    EXPECT_EQ(read.label(), attribute.label());
    const blockPtr<> copy(read.copyData());
    EXPECT_EQ(blockSize(copy.get()), read.dataSize());
    EXPECT_EQ(read.data(), "{}");
}

TEST(TableAttribute, AStreamThatEndsEarlyChangesNothing) {
    NokDataTagTableAttr kept;
    kept.setData("kept");
    std::string huge = example;
    huge.replace(4, 4, "\xFF\xFF\xFF\xFF");
    std::string_view stream = huge;
    EXPECT_EQ(kept.fromStream(stream, 0), errFailed);
    for (std::size_t size = 0; size < example.size(); ++size) {
        stream = std::string_view(example).substr(0, size);
        EXPECT_EQ(kept.fromStream(stream, 0), errFailed) << size;
        EXPECT_EQ(stream.size(), size);
        EXPECT_EQ(kept.data(), "kept") << size;
    }
    stream = example;
    EXPECT_EQ(kept.fromStream(stream, errRunMemory), errRunMemory);
    EXPECT_EQ(kept.data(), "kept");
}

}  // namespace
}  // namespace tarnova
