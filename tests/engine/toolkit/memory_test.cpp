#include "engine/toolkit/memory.h"

#include <gtest/gtest.h>

#include <limits>
#include <string_view>

#include "engine/toolkit/byte_order.h"

namespace tarnova {
namespace {

constexpr std::size_t impossibleSize = std::numeric_limits<std::size_t>::max() - 4;

// Refuses the allocation of that number from now on, counting from 1; 0 refuses none.
int refusedAllocation = 0;

void* allocateUnlessRefused(std::size_t size) {
    if (refusedAllocation > 0 && --refusedAllocation == 0) return nullptr;
    return defaultAllocator().allocate(size);
}

class Memory : public testing::Test {
 protected:
    void SetUp() override {
        service_ = defaultAllocator();
        service_.allocate = allocateUnlessRefused;
        refusedAllocation = 0;
        installAllocator(&service_);
    }
    void TearDown() override { installAllocator(nullptr); }

    static std::string_view textOf(blockHandle handle) {
        return {reinterpret_cast<const char*>(*handle), handleSize(handle)};
    }
    static blockHandle handleWith(std::string_view text) {
        const blockHandle handle = newHandle(0);
        EXPECT_EQ(appendToHandle(text.data(), handle, text.size()), 0);
        return handle;
    }

 private:
    allocatorService service_{};
};

TEST_F(Memory, BlocksRememberTheirSizeAndStayWhereTheyAre) {
    void* const block = newBlockClear(100);
    EXPECT_EQ(blockSize(block), 100u);
    EXPECT_EQ(static_cast<char*>(block)[99], 0);
    EXPECT_TRUE(resizeBlock(block, 40));
    EXPECT_EQ(blockSize(block), 40u);
    EXPECT_TRUE(resizeBlock(block, 100));
    EXPECT_FALSE(resizeBlock(block, 101));
    EXPECT_EQ(blockSize(block), 100u);
    freeBlock(block);
    freeBlock(nullptr);
    EXPECT_EQ(newBlock(impossibleSize), nullptr);
    EXPECT_EQ(newBlockClear(impossibleSize), nullptr);
    EXPECT_EQ(lastMemoryError(), 0) << "a block that isn't to be had leaves no error";
}

TEST_F(Memory, HandlesGrowAndShrink) {
    const blockHandle handle = handleWith("abc");
    EXPECT_EQ(appendToHandle("def", handle, 3), 0);
    EXPECT_EQ(textOf(handle), "abcdef");
    EXPECT_EQ(resizeHandle(handle, 2), 0);
    EXPECT_EQ(textOf(handle), "ab");
    EXPECT_EQ(appendToHandle(nullptr, handle, 5), 0);
    EXPECT_EQ(handleSize(handle), 7u);
    freeHandle(handle);
    freeHandle(nullptr);
    EXPECT_EQ(handleSize(nullptr), 0u);

    const blockHandle empty = newHandle(0);
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(handleSize(empty), 0u);
    freeHandle(empty);
}

TEST_F(Memory, FailuresKeepTheOldData) {
    const blockHandle handle = handleWith("abc");
    EXPECT_EQ(resizeHandle(handle, impossibleSize), -108);
    EXPECT_EQ(appendToHandle("x", handle, impossibleSize), -108);
    EXPECT_EQ(appendToHandle(nullptr, handle, std::numeric_limits<std::size_t>::max()), -108);
    EXPECT_EQ(lastMemoryError(), -108);
    EXPECT_EQ(textOf(handle), "abc");
    lockHandle(handle);
    EXPECT_EQ(lastMemoryError(), 0);

    blockHandle clone = handle;
    for (const int refused : {1, 2}) {  // the data block, then the master pointer
        refusedAllocation = refused;
        EXPECT_EQ(cloneHandle(clone), -108);
        EXPECT_EQ(clone, handle);
    }
    EXPECT_EQ(appendToHandle("x", nullptr, 1), -109);
    freeHandle(handle);
}

TEST_F(Memory, CloneLeavesTheOldHandleToItsOwner) {
    const blockHandle original = handleWith("abc");
    blockHandle copy = original;
    EXPECT_EQ(cloneHandle(copy), 0);
    ASSERT_NE(copy, original);
    (*copy)[0] = std::byte{'X'};
    EXPECT_EQ(textOf(original), "abc");
    EXPECT_EQ(textOf(copy), "Xbc");
    freeHandle(original);
    freeHandle(copy);
}

TEST(ByteOrder, StoredNumbersAreBigEndian) {
    unsigned char bytes[7] = {};
    storeBig32(bytes + 1, 0x01020304);
    EXPECT_EQ(bytes[1], 1);
    EXPECT_EQ(bytes[4], 4);
    EXPECT_EQ(loadBig32(bytes + 1), 0x01020304u);
    storeBig16(bytes + 5, 0xA1B2);
    EXPECT_EQ(bytes[5], 0xA1);
    EXPECT_EQ(loadBig16(bytes + 5), 0xA1B2);
    EXPECT_EQ(swap16(0x1234), 0x3412);
    EXPECT_EQ(swap32(0x12345678), 0x78563412u);
}

}  // namespace
}  // namespace tarnova
