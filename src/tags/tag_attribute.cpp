#include "tags/tag_attribute.h"

#include <unordered_set>

#include "document/walk_state.h"
#include "engine/toolkit/clock.h"

namespace tarnova {

namespace {

constexpr const char* storeNames[] = {"Kelvane", "Tallyra"};
constexpr TextAttributeClass storeClasses[] = {TextAttributeClass::kelvaneTag, TextAttributeClass::tallyraTag};

void collectIds(const Document& document, UID story, std::unordered_set<std::uint32_t>& ids) {
    const std::int32_t length = document.totalLength(story);
    for (std::int32_t position = 0; position < length;) {
        const attributeRunRec run = document.attributeRunAt(story, position);
        for (const TextAttributeClass store : storeClasses) {
            const TextAttribute* tag = run.attributes == nullptr ? nullptr : run.attributes->QueryByClassID(store);
            if (tag != nullptr) ids.insert(static_cast<const TagAttribute*>(tag)->tagId());
        }
        position += run.length > 0 ? run.length : 1;
    }
}

/// Memory of the identities that were given out last, and of those that the document has.
struct tagIdMemoryRec {
    const Document* document = nullptr;
    std::unordered_set<std::uint32_t> used;
    std::uint32_t last = 0;
};

tagIdMemoryRec tagIdMemory;

/// The clock's tick, or the number behind `last` when that isn't above it.
std::uint32_t tickBehind(std::uint32_t last) {
    const std::uint32_t tick = clockTicks();
    return tick <= last ? last + 1 : tick;
}

}  // namespace

void tagStringsInit(tagStrings& strings, std::uint16_t mode) {
    if (mode <= 1) strings.ownerName = storeNames[mode];
    strings.highlightMode = "Highlight";
    strings.highlightColour = "Green";
    strings.spare = "Spare";
}

TextAttributeClass tagClassOfMode() {
    return storeClasses[walkState().engineMode == 0 ? 0 : 1];
}

bool tagIsOwn(const TagAttribute& attribute) {
    return attribute.ownerName() == storeNames[walkState().engineMode == 0 ? 0 : 1];
}

const TagAttribute* ownTagOf(const AttributeBossList* attributes) {
    if (attributes == nullptr) return nullptr;
    const auto* tag = static_cast<const TagAttribute*>(attributes->QueryByClassID(tagClassOfMode()));
    return tag != nullptr && tagIsOwn(*tag) ? tag : nullptr;
}

bool runCarriesTag(const Document& document, UID story, std::int32_t start, std::int32_t length, bool endsThread) {
    if (length < 1 || (length == 1 && endsThread)) return false;
    return !document.hasOwnedItem(story, start, length);
}

std::uint32_t newTagId(const Document& document) {
    tagIdMemoryRec& memory = tagIdMemory;
    if (memory.document != &document) {
        memory.document = &document;
        memory.used.clear();
        for (const UID story : document.stories())
            collectIds(document, story, memory.used);
    }
    std::uint32_t id = tickBehind(memory.last);
    while (!memory.used.insert(id).second)
        ++id;
    memory.last = id;
    return id;
}

std::uint32_t newTableTagId() {
    static std::uint32_t last = 0;
    return last = tickBehind(last);
}

}  // namespace tarnova
