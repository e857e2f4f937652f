// What this test program has asked the allocator for: a measure of work and memory that doesn't depend on the machine.

#pragma once

#include <cstddef>

namespace tarnova {

struct AllocationCount {
    std::size_t calls = 0;
    std::size_t bytes = 0;
};
/// Since the program's start.
[[nodiscard]] AllocationCount allocationCount();

}  // namespace tarnova
