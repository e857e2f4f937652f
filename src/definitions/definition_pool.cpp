#include "definitions/definition_pool.h"

#include "engine/toolkit/memory.h"
#include "engine/toolkit/pstring.h"

namespace tarnova {

namespace {

// Stands before each block and links it with its neighbours.
struct alignas(std::max_align_t) poolLinkRec {
    poolLinkRec* next;
    poolLinkRec* prev;
};

}  // namespace

struct definitionPoolRec {
    poolLinkRec head;  // of a circular list
};

definitionPoolRec* definitionPoolNew() {
    auto* pool = newRecord<definitionPoolRec>().release();
    if (pool != nullptr) pool->head.next = pool->head.prev = &pool->head;
    return pool;
}

void definitionPoolDiscard(definitionPoolRec* pool) {
    if (pool == nullptr) return;
    for (poolLinkRec* link = pool->head.next; link != &pool->head;) {
        poolLinkRec* next = link->next;
        freeBlock(link);
        link = next;
    }
    freeBlock(pool);
}

void* definitionPoolAllocate(definitionPoolRec& pool, std::size_t size) {
    auto* link = static_cast<poolLinkRec*>(newBlockClear(sizeof(poolLinkRec) + size));
    if (link == nullptr) return nullptr;
    link->next = &pool.head;
    link->prev = pool.head.prev;
    link->prev->next = link;
    pool.head.prev = link;
    return link + 1;
}

void definitionPoolFree(definitionPoolRec&, void* block) {
    if (block == nullptr) return;
    poolLinkRec* link = static_cast<poolLinkRec*>(block) - 1;
    link->prev->next = link->next;
    link->next->prev = link->prev;
    freeBlock(link);
}

std::uint8_t* definitionPoolString(definitionPoolRec& pool, const std::uint8_t* text) {
    const std::size_t length = text == nullptr ? 0 : text[0];
    auto* copy = static_cast<std::uint8_t*>(definitionPoolAllocate(pool, length + 1));
    if (copy != nullptr && length > 0) pstrCopy(copy, text);
    return copy;
}

}  // namespace tarnova
