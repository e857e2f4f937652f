// Words that were shaped before. The cache is bounded: what wasn't asked for during one filling is forgotten at the
// next.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/text/composed_story.h"

namespace tarnova {

inline constexpr std::size_t wordCacheCapacity = 4096;        // words of one generation
inline constexpr std::size_t wordCacheGlyphCapacity = 65536;  // their glyphs; as many characters
inline constexpr std::size_t cachedWordLength = 64;           // longer words are shaped each time

class WordCache {
 public:
    /// Glyphs of a word as they were stored, positions counted from the word's start. Valid until the next `store`.
    struct Word {
        const PlacedGlyph* glyphs = nullptr;  // null: not here
        std::size_t count = 0;
    };

    /// `key` tells apart what shapes the same text differently (face, script, direction).
    [[nodiscard]] Word find(std::uint64_t key, std::u32string_view text);
    /// Keeps a word that `find` didn't know; too long a word is let go.
    void store(std::uint64_t key, std::u32string_view text, const PlacedGlyph* glyphs, std::size_t count);

 private:
    struct Entry {
        std::uint64_t hash = 0;  // 0: free
        std::uint64_t key = 0;
        std::uint32_t firstCharacter = 0, length = 0;
        std::uint32_t firstGlyph = 0, glyphCount = 0;
    };
    struct Generation {
        std::vector<Entry> slots;  // open addressing, at most half full
        std::u32string characters;
        std::vector<PlacedGlyph> glyphs;
        std::size_t used = 0;

        [[nodiscard]] const Entry* find(std::uint64_t hash, std::uint64_t key, std::u32string_view text) const;
        [[nodiscard]] bool hasRoom(std::size_t length, std::size_t count) const;
        void add(std::uint64_t hash, std::uint64_t key, std::u32string_view text, const PlacedGlyph* glyphs,
                 std::size_t count);
        void clear();
    };

    Generation& roomFor(std::size_t length, std::size_t count);

    Generation young_;
    Generation old_;
    std::vector<PlacedGlyph> moved_;
};

}  // namespace tarnova
