#include "tests/host/files/allocation_count.h"

#include <cstdlib>
#include <new>

namespace {

tarnova::AllocationCount asked;

}  // namespace

tarnova::AllocationCount tarnova::allocationCount() {
    return asked;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    ++asked.calls;
    asked.bytes += size;
    return std::malloc(size == 0 ? 1 : size);
}

void* operator new(std::size_t size) {
    if (void* block = operator new(size, std::nothrow)) return block;
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
