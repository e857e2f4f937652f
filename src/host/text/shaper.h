// From a word to glyphs, at three prices that give one result.
//
//  1. Tables of advances and pair kerning for Latin characters, learned from HarfBuzz pair by pair. A pair whose glyphs
//     do more than keep a distance (a ligature, a contextual form) is marked, and its word takes the next way.
//  2. Words that were shaped before, in a cache of bounded size.
//  3. HarfBuzz.
//
// A word is what lies between spaces, line-break opportunities and changes of format. What HarfBuzz would do across the
// border of two words is reduced to the kerning of the pair that meets there (`pairAdjust`).

#pragma once

#include <hb.h>

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "host/text/composed_story.h"
#include "host/text/font.h"
#include "host/text/pair_table.h"
#include "host/text/word_cache.h"

namespace tarnova {

/// A font with the features that a format asks for. Owned by the `Shaper`.
class ShapeFace {
 public:
    ShapeFace(const Font& font, const FontFeatures& features, std::uint32_t index);
    [[nodiscard]] const Font& font() const { return font_; }
    [[nodiscard]] const FontFeatures& features() const { return features_; }
    [[nodiscard]] std::uint32_t index() const { return index_; }  // among the shaper's faces
    [[nodiscard]] PairTable& pairs() { return pairs_; }

 private:
    const Font& font_;
    FontFeatures features_;
    std::uint32_t index_;
    PairTable pairs_;
};

/// Which ways may be taken; a test switches the cheap ones off to compare.
struct ShapingWays {
    bool tables = true;
    bool cache = true;
};

/// Shapes words. Belongs to one thread.
class Shaper {
 public:
    explicit Shaper(ShapingWays ways = {}) : ways_(ways) {}

    [[nodiscard]] bool usesTables() const { return ways_.tables; }
    /// The face for a font and features, made on first use.
    [[nodiscard]] ShapeFace& face(const Font& font, const FontFeatures& features);

    /// Appends the glyphs of Latin text written from left to right, spaces included. `firstPosition` is the position of
    /// its first character in the story. False when the font lacks a character; `out` is then as it was.
    [[nodiscard]] bool shapeLatin(ShapeFace& face, std::u32string_view text, std::uint32_t firstPosition,
                                  std::vector<PlacedGlyph>& out);

    /// Appends the glyphs of a word of any script, in visual order, with positions counted from the word's start.
    void shapeWord(ShapeFace& face, std::u32string_view word, hb_script_t script, bool rightToLeft,
                   std::vector<PlacedGlyph>& out);

    /// What the distance between two neighbours changes by, in thousandths of an em; 0 when the tables don't list both.
    [[nodiscard]] float pairAdjust(ShapeFace& face, char32_t left, char32_t right);

 private:
    [[nodiscard]] static bool setFromTables(PairTable& table, std::u32string_view word, std::uint32_t position,
                                            PlacedGlyph* out);
    [[nodiscard]] bool appendShaped(ShapeFace& face, std::u32string_view word, std::uint32_t firstPosition,
                                    std::vector<PlacedGlyph>& out);

    ShapingWays ways_;
    std::vector<std::unique_ptr<ShapeFace>> faces_;
    WordCache words_;
};

}  // namespace tarnova
