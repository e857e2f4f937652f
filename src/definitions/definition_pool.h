// The memory of one set: blocks that can be freed one by one, and all at once.

#pragma once

#include <cstddef>
#include <cstdint>

namespace tarnova {

struct definitionPoolRec;

/// Null when there is no memory.
[[nodiscard]] definitionPoolRec* definitionPoolNew();

/// Frees the pool and every block that came from it; null is ignored.
void definitionPoolDiscard(definitionPoolRec* pool);

/// A cleared block, aligned for any record; null when there is no memory.
[[nodiscard]] void* definitionPoolAllocate(definitionPoolRec& pool, std::size_t size);

/// Frees a block of this pool; null is ignored.
void definitionPoolFree(definitionPoolRec& pool, void* block);

/// A copy of a Pascal string in a block of its own; null `text` counts as empty. Null when there is no memory.
[[nodiscard]] std::uint8_t* definitionPoolString(definitionPoolRec& pool, const std::uint8_t* text);

}  // namespace tarnova
