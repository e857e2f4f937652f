#include "engine/toolkit/memory.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "engine/toolkit/toolkit_state.h"

namespace tarnova {

namespace {

// Stands in front of each block of our own allocator; sixteen bytes keep the block aligned for any type.
struct alignas(std::max_align_t) blockHeader {
    std::size_t size;
    std::size_t capacity;  // what was taken from the system
};
static_assert(sizeof(blockHeader) == 16);

constexpr std::size_t maxBlockBytes = std::numeric_limits<std::ptrdiff_t>::max() - sizeof(blockHeader);

blockHeader* headerOf(void* block) {
    return static_cast<blockHeader*>(block) - 1;
}

void* startBlock(void* raw, std::size_t size) {
    if (raw == nullptr) return nullptr;
    auto* const header = static_cast<blockHeader*>(raw);
    header->size = size;
    header->capacity = size;
    return header + 1;
}

void* systemAllocate(std::size_t size) {
    if (size > maxBlockBytes) return nullptr;
    return startBlock(std::malloc(sizeof(blockHeader) + size), size);
}

void* systemAllocateClear(std::size_t size) {
    if (size > maxBlockBytes) return nullptr;
    return startBlock(std::calloc(1, sizeof(blockHeader) + size), size);
}

std::size_t systemSizeOf(const void* block) {
    return (static_cast<const blockHeader*>(block) - 1)->size;
}

bool systemResize(void* block, std::size_t size) {
    blockHeader* const header = headerOf(block);
    if (size > header->capacity) return false;
    header->size = size;
    return true;
}

void systemRelease(void* block) {
    std::free(headerOf(block));
}

constexpr allocatorService systemAllocator = {systemAllocate, systemAllocateClear, systemSizeOf, systemResize,
                                              systemRelease};

const allocatorService* allocator = &systemAllocator;

std::int16_t noteMemoryError(errorWord error) {
    return toolkitState().lastMemoryError = codeOfError(error);
}

blockHandle handleOf(void* data) {
    auto* const master = data == nullptr ? nullptr : static_cast<blockHandle>(allocator->allocate(sizeof(std::byte*)));
    if (master == nullptr) {
        if (data != nullptr) allocator->release(data);
        noteMemoryError(errHandleAllocation);
        return nullptr;
    }
    *master = static_cast<std::byte*>(data);
    noteMemoryError(0);
    return master;
}

}  // namespace

void installAllocator(const allocatorService* service) {
    allocator = service != nullptr ? service : &systemAllocator;
}

const allocatorService& defaultAllocator() {
    return systemAllocator;
}

std::int16_t lastMemoryError() {
    return toolkitState().lastMemoryError;
}

void* newBlock(std::size_t size) {
    noteMemoryError(0);
    return allocator->allocate(size);
}

void* newBlockClear(std::size_t size) {
    noteMemoryError(0);
    return allocator->allocateClear(size);
}

void freeBlock(void* block) {
    noteMemoryError(0);
    if (block != nullptr) allocator->release(block);
}

std::size_t blockSize(const void* block) {
    noteMemoryError(0);
    return block == nullptr ? 0 : allocator->sizeOfBlock(block);
}

bool resizeBlock(void* block, std::size_t size) {
    noteMemoryError(0);
    return block != nullptr && allocator->resize(block, size);
}

blockHandle newHandle(std::size_t size) {
    return handleOf(allocator->allocate(size));
}

blockHandle newHandleClear(std::size_t size) {
    return handleOf(allocator->allocateClear(size));
}

void freeHandle(blockHandle handle) {
    noteMemoryError(0);
    if (handle == nullptr) return;
    if (*handle != nullptr) allocator->release(*handle);
    allocator->release(handle);
}

std::size_t handleSize(blockHandle handle) {
    return handle == nullptr ? 0 : blockSize(*handle);
}

std::int16_t resizeHandle(blockHandle handle, std::size_t size) {
    if (handle == nullptr) return noteMemoryError(errHandleNull);
    void* const data = allocator->allocate(size);
    if (data == nullptr) return noteMemoryError(errHandleAllocation);
    moveBytes(data, *handle, std::min(size, handleSize(handle)));
    freeBlock(*handle);
    *handle = static_cast<std::byte*>(data);
    return noteMemoryError(0);
}

std::int16_t cloneHandle(blockHandle& handle) {
    if (handle == nullptr) return noteMemoryError(errHandleNull);
    const std::size_t size = handleSize(handle);
    const blockHandle copy = newHandle(size);
    if (copy == nullptr) return lastMemoryError();
    moveBytes(*copy, *handle, size);
    handle = copy;
    return noteMemoryError(0);
}

std::int16_t appendToHandle(const void* bytes, blockHandle handle, std::size_t count) {
    if (handle == nullptr) return noteMemoryError(errHandleNull);
    const std::size_t oldSize = handleSize(handle);
    if (count > std::numeric_limits<std::size_t>::max() - oldSize) return noteMemoryError(errHandleAllocation);
    if (resizeHandle(handle, oldSize + count) != 0) return lastMemoryError();
    if (bytes != nullptr) moveBytes(*handle + oldSize, bytes, count);
    return 0;
}

void lockHandle(blockHandle) {
    noteMemoryError(0);
}

void unlockHandle(blockHandle) {
    noteMemoryError(0);
}

void moveBytes(void* dst, const void* src, std::size_t count) {
    if (count > 0) std::memmove(dst, src, count);
}

}  // namespace tarnova
