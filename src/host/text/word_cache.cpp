#include "host/text/word_cache.h"

#include <algorithm>
#include <utility>

namespace tarnova {

namespace {

constexpr std::size_t slotCount = wordCacheCapacity * 2;

std::uint64_t hashOf(std::uint64_t key, std::u32string_view text) {
    std::uint64_t hash = (key + 1) * 0x9E3779B97F4A7C15u;
    for (char32_t c : text)
        hash = (hash ^ c) * 0x100000001B3u;
    hash ^= hash >> 29;
    return hash | 1;
}

}  // namespace

const WordCache::Entry* WordCache::Generation::find(std::uint64_t hash, std::uint64_t key,
                                                    std::u32string_view text) const {
    if (slots.empty()) return nullptr;
    for (std::size_t at = hash >> 1 & (slotCount - 1);; at = (at + 1) & (slotCount - 1)) {
        const Entry& entry = slots[at];
        if (entry.hash == 0) return nullptr;
        if (entry.hash != hash || entry.key != key || entry.length != text.size()) continue;
        if (std::equal(text.begin(), text.end(), characters.begin() + entry.firstCharacter)) return &entry;
    }
}

bool WordCache::Generation::hasRoom(std::size_t length, std::size_t count) const {
    return used < wordCacheCapacity && characters.size() + length <= wordCacheGlyphCapacity &&
           glyphs.size() + count <= wordCacheGlyphCapacity;
}

void WordCache::Generation::add(std::uint64_t hash, std::uint64_t key, std::u32string_view text,
                                const PlacedGlyph* source, std::size_t count) {
    if (slots.empty()) slots.resize(slotCount);
    std::size_t at = hash >> 1 & (slotCount - 1);
    while (slots[at].hash != 0)
        at = (at + 1) & (slotCount - 1);
    slots[at] = {hash,
                 key,
                 static_cast<std::uint32_t>(characters.size()),
                 static_cast<std::uint32_t>(text.size()),
                 static_cast<std::uint32_t>(glyphs.size()),
                 static_cast<std::uint32_t>(count)};
    characters.append(text);
    glyphs.insert(glyphs.end(), source, source + count);
    ++used;
}

void WordCache::Generation::clear() {
    std::fill(slots.begin(), slots.end(), Entry{});
    characters.clear();
    glyphs.clear();
    used = 0;
}

WordCache::Generation& WordCache::roomFor(std::size_t length, std::size_t count) {
    if (!young_.hasRoom(length, count)) {
        std::swap(young_, old_);
        young_.clear();
    }
    return young_;
}

WordCache::Word WordCache::find(std::uint64_t key, std::u32string_view text) {
    const std::uint64_t hash = hashOf(key, text);
    if (const Entry* entry = young_.find(hash, key, text)) {
        return {young_.glyphs.data() + entry->firstGlyph, entry->glyphCount};
    }
    const Entry* entry = old_.find(hash, key, text);
    if (entry == nullptr) return {};
    // Asked for again: it moves to the young words and survives the next forgetting. The copy outlives the old ones.
    const PlacedGlyph* first = old_.glyphs.data() + entry->firstGlyph;
    moved_.assign(first, first + entry->glyphCount);
    roomFor(text.size(), moved_.size()).add(hash, key, text, moved_.data(), moved_.size());
    return {moved_.data(), moved_.size()};
}

void WordCache::store(std::uint64_t key, std::u32string_view text, const PlacedGlyph* glyphs, std::size_t count) {
    if (text.size() > cachedWordLength || count > cachedWordLength * 4) return;
    roomFor(text.size(), count).add(hashOf(key, text), key, text, glyphs, count);
}

}  // namespace tarnova
