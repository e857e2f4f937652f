// Glyphs, advances and pair kerning of the common Latin characters in one font, learned from HarfBuzz as they are met.

#pragma once

#include <hb.h>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "host/model/special_characters.h"
#include "host/text/font.h"
#include "host/text/word_shaping.h"

namespace tarnova {

/// `latinSlot` of a character beyond Latin-1.
[[nodiscard]] std::uint8_t highLatinSlot(char32_t character);

/// Row and column of a character in the tables: Windows-1252 is the repertoire. 0: not listed.
[[nodiscard]] inline std::uint8_t latinSlot(char32_t character) {
    if (character >= 0x100) return highLatinSlot(character);
    const bool isControl = character < 0x20 || (character >= 0x7F && character < 0xA0);
    return isControl || character == softHyphen ? 0 : static_cast<std::uint8_t>(character);
}

class PairTable {
 public:
    static constexpr std::int16_t unlisted = INT16_MIN;  // the two can't be had from the table

    PairTable(const Font& font, const FontFeatures& features);

    /// True when the character stands as its one plain glyph wherever no pair says otherwise.
    [[nodiscard]] bool isListed(std::uint8_t slot) {
        if (characters_[slot].state == State::unknown) learnCharacter(slot);
        return characters_[slot].state == State::listed;
    }
    [[nodiscard]] std::uint16_t glyph(std::uint8_t slot) const { return characters_[slot].glyph; }
    [[nodiscard]] float advance(std::uint8_t slot) const { return characters_[slot].advance; }

    /// Thousandths of an em by which `right` follows `left` closer or wider; `unlisted` when they interact.
    [[nodiscard]] std::int16_t pair(std::uint8_t left, std::uint8_t right) {
        std::int16_t& kept = pairs_[static_cast<std::size_t>(left) * slotCount + right];
        if (kept == unknownPair) kept = learnPair(left, right);
        return kept;
    }

 private:
    static constexpr std::size_t slotCount = 256;
    static constexpr std::int16_t unknownPair = INT16_MAX;
    enum class State : std::uint8_t { unknown, listed, other };
    struct Character {
        State state = State::unknown;
        std::uint16_t glyph = 0;
        float advance = 0;
    };

    /// The glyphs that one lookup of the font can bring together.
    struct SetCloser {
        void operator()(hb_set_t* set) const { hb_set_destroy(set); }
    };
    struct Lookup {
        unsigned index = 0;
        bool substitutes = false;
        bool contextual = false;
        std::unique_ptr<hb_set_t, SetCloser> glyphs;
    };

    void learnCharacter(std::uint8_t slot);
    [[nodiscard]] std::int16_t learnPair(std::uint8_t left, std::uint8_t right);
    void collectLookups();
    void collectLookups(hb_tag_t table, const hb_tag_t* features);
    [[nodiscard]] bool mayInteract(hb_codepoint_t left, hb_codepoint_t right);
    [[nodiscard]] bool joinsThree(const Lookup& lookup, hb_codepoint_t left, hb_codepoint_t right) const;

    const Font& font_;
    FontFeatures features_;
    std::array<Character, slotCount> characters_;
    std::vector<std::int16_t> pairs_;
    std::vector<Lookup> lookups_;
    std::vector<hb_codepoint_t> slotGlyphs_;  // plain glyphs of all slots that the font has
    bool lookupsCollected_ = false;
};

}  // namespace tarnova
