// Blocks and handles. A block is a plain allocation that knows its size; a handle is a relocatable block: a master
// pointer in a small allocation of its own that points to the data. Holders keep the handle, not the data pointer,
// across any call that can resize. After each call lastMemoryError() is 0 unless the call says otherwise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>

#include "engine/toolkit/types.h"

namespace tarnova {

/// Where all memory comes from. Each entry must be set.
struct allocatorService {
    void* (*allocate)(std::size_t size);       // null when there is none; size 0 gives a block of its own
    void* (*allocateClear)(std::size_t size);  // the same, cleared
    std::size_t (*sizeOfBlock)(const void* block);
    bool (*resize)(void* block, std::size_t size);  // in place; false leaves the block as it was
    void (*release)(void* block);
};

/// Replaces the allocator; null goes back to our own. Only while no block of the old one is alive: a block is given
/// back to the allocator of the moment.
void installAllocator(const allocatorService* service);
/// Our own allocator, for a service that wraps it.
const allocatorService& defaultAllocator();

/// 0, or -108 (handle not allocated or resized) or -109 (null handle) after the last memory call.
std::int16_t lastMemoryError();

/// Null on failure, with lastMemoryError() 0.
[[nodiscard]] void* newBlock(std::size_t size);
[[nodiscard]] void* newBlockClear(std::size_t size);
/// Null does nothing.
void freeBlock(void* block);
/// Size that was asked for; 0 for null.
std::size_t blockSize(const void* block);
/// Never moves the block. False when it can't take that size where it lies: it may always shrink and grow back, and
/// rarely grow beyond.
bool resizeBlock(void* block, std::size_t size);

using blockHandle = std::byte**;

/// Null on failure, with -108. Size 0 is valid and gives a handle with an empty data block.
[[nodiscard]] blockHandle newHandle(std::size_t size);
[[nodiscard]] blockHandle newHandleClear(std::size_t size);
/// Frees data and master pointer; null does nothing.
void freeHandle(blockHandle handle);
/// Size of the data block; 0 for null.
std::size_t handleSize(blockHandle handle);
/// Keeps the smaller of the two sizes of data. On failure -108, and the handle keeps its old data; -109 for null.
std::int16_t resizeHandle(blockHandle handle, std::size_t size);
/// Replaces `handle` by a new one with a copy of the data; the old handle lives on and stays the caller's to free. On
/// failure, or for null, `handle` is unchanged. Returns lastMemoryError().
std::int16_t cloneHandle(blockHandle& handle);
/// Grows the handle by `count` and copies `bytes` to its end; null `bytes` only grow it. Returns 0, -108 or -109.
std::int16_t appendToHandle(const void* bytes, blockHandle handle, std::size_t count);
/// Locking does nothing: only resizeHandle moves a data block. Both only clear lastMemoryError().
void lockHandle(blockHandle handle);
void unlockHandle(blockHandle handle);

/// Copies `count` bytes in ascending order; where the ranges overlap, `dst` must lie below `src`.
void moveBytes(void* dst, const void* src, std::size_t count);

struct blockDeleter {
    void operator()(void* block) const { freeBlock(block); }
};
struct handleDeleter {
    using pointer = blockHandle;
    void operator()(blockHandle handle) const { freeHandle(handle); }
};

/// Owners inside a function or class; `release()` gives a block over the engine's border.
template <typename T = std::byte>
using blockPtr = std::unique_ptr<T, blockDeleter>;
using handlePtr = std::unique_ptr<std::byte*, handleDeleter>;

/// A cleared record in a block of its own. For records that need neither constructor nor destructor.
template <typename T>
[[nodiscard]] blockPtr<T> newRecord() {
    static_assert(std::is_trivially_destructible_v<T> && std::is_trivially_copyable_v<T>);
    return blockPtr<T>(static_cast<T*>(newBlockClear(sizeof(T))));
}

}  // namespace tarnova
