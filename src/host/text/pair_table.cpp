#include "host/text/pair_table.h"

#include <hb-ot.h>

#include <algorithm>
#include <cmath>

// HarfBuzz spells its tags and limits as macros with C casts.
#pragma GCC diagnostic ignored "-Wold-style-cast"

namespace tarnova {

namespace {

constexpr hb_tag_t tag(const char (&name)[5]) {
    return HB_TAG(name[0], name[1], name[2], name[3]);
}

constexpr hb_tag_t substitutionFeatures[] = {tag("ccmp"), tag("locl"), tag("rlig"), tag("rclt"),
                                             tag("calt"), tag("clig"), tag("liga"), HB_TAG_NONE};
constexpr hb_tag_t positionFeatures[] = {tag("kern"), tag("dist"), HB_TAG_NONE};
constexpr hb_tag_t latinScripts[] = {tag("latn"), tag("DFLT"), HB_TAG_NONE};

/// Characters of Windows-1252 outside Latin-1, at their bytes.
constexpr char32_t highSlots[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                    0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

/// The character of a slot; 0 for a slot without one.
char32_t characterOf(std::size_t slot) {
    if (slot >= 0x80 && slot < 0xA0) return highSlots[slot - 0x80];
    return latinSlot(static_cast<char32_t>(slot));
}

}  // namespace

std::uint8_t highLatinSlot(char32_t character) {
    const auto* const found = std::find(std::begin(highSlots), std::end(highSlots), character);
    return found == std::end(highSlots) ? 0 : static_cast<std::uint8_t>(0x80 + (found - std::begin(highSlots)));
}

PairTable::PairTable(const Font& font, const FontFeatures& features)
    : font_(font), features_(features), pairs_(slotCount * slotCount, unknownPair) {}

void PairTable::learnCharacter(std::uint8_t slot) {
    Character& entry = characters_[slot];
    entry.state = State::other;
    const char32_t character = characterOf(slot);
    entry.glyph = character == 0 ? 0 : font_.glyphOf(character);
    if (entry.glyph == 0) return;
    entry.advance = font_.nominalAdvance(entry.glyph);
    std::vector<PlacedGlyph> shaped;
    shapeByHarfBuzz(font_, features_, std::u32string_view(&character, 1), HB_SCRIPT_LATIN, false, shaped);
    const PlacedGlyph plain{entry.glyph, entry.advance, 0, 0, 0};
    if (shaped.size() == 1 && shaped[0].glyph == plain.glyph && shaped[0].advance == plain.advance &&
        shaped[0].offsetX == 0 && shaped[0].offsetY == 0) {
        entry.state = State::listed;
    }
}

std::int16_t PairTable::learnPair(std::uint8_t left, std::uint8_t right) {
    if (!isListed(left) || !isListed(right)) return unlisted;
    const Character &a = characters_[left], &b = characters_[right];
    if (mayInteract(a.glyph, b.glyph)) return unlisted;
    const char32_t text[] = {characterOf(left), characterOf(right)};
    std::vector<PlacedGlyph> shaped;
    shapeByHarfBuzz(font_, features_, std::u32string_view(text, 2), HB_SCRIPT_LATIN, false, shaped);
    if (shaped.size() != 2 || shaped[0].glyph != a.glyph || shaped[1].glyph != b.glyph) return unlisted;
    if (shaped[1].advance != b.advance) return unlisted;
    for (const PlacedGlyph& glyph : shaped) {
        if (glyph.offsetX != 0 || glyph.offsetY != 0) return unlisted;
    }
    const float adjust = shaped[0].advance - a.advance;
    return std::abs(adjust) < 4096 ? static_cast<std::int16_t>(adjust) : unlisted;
}

void PairTable::collectLookups() {
    lookupsCollected_ = true;
    collectLookups(HB_OT_TAG_GSUB, substitutionFeatures);
    collectLookups(HB_OT_TAG_GPOS, positionFeatures);
    for (std::size_t slot = 0; slot < slotCount; ++slot) {
        const std::uint16_t glyph = characterOf(slot) == 0 ? 0 : font_.glyphOf(characterOf(slot));
        if (glyph != 0) slotGlyphs_.push_back(glyph);
    }
}

void PairTable::collectLookups(hb_tag_t table, const hb_tag_t* features) {
    const std::unique_ptr<hb_set_t, SetCloser> indexes(hb_set_create());
    hb_ot_layout_collect_lookups(font_.face(), table, latinScripts, nullptr, features, indexes.get());
    for (hb_codepoint_t index = HB_SET_VALUE_INVALID; hb_set_next(indexes.get(), &index);) {
        const std::unique_ptr<hb_set_t, SetCloser> before(hb_set_create()), after(hb_set_create());
        Lookup lookup;
        lookup.index = index;
        lookup.substitutes = table == HB_OT_TAG_GSUB;
        lookup.glyphs.reset(hb_set_create());
        hb_ot_layout_lookup_collect_glyphs(font_.face(), table, index, before.get(), lookup.glyphs.get(), after.get(),
                                           nullptr);
        lookup.contextual = !hb_set_is_empty(before.get()) || !hb_set_is_empty(after.get());
        hb_set_union(lookup.glyphs.get(), before.get());
        hb_set_union(lookup.glyphs.get(), after.get());
        if (lookup.substitutes || lookup.contextual) lookups_.push_back(std::move(lookup));
    }
}

/// True when a lookup can bring the two together with a third glyph in a way that the pair alone doesn't show.
bool PairTable::mayInteract(hb_codepoint_t left, hb_codepoint_t right) {
    if (!lookupsCollected_) collectLookups();
    return std::any_of(lookups_.begin(), lookups_.end(), [&](const Lookup& lookup) {
        if (!hb_set_has(lookup.glyphs.get(), left) || !hb_set_has(lookup.glyphs.get(), right)) return false;
        return lookup.contextual || joinsThree(lookup, left, right);
    });
}

bool PairTable::joinsThree(const Lookup& lookup, hb_codepoint_t left, hb_codepoint_t right) const {
    return std::any_of(slotGlyphs_.begin(), slotGlyphs_.end(), [&](hb_codepoint_t third) {
        if (!hb_set_has(lookup.glyphs.get(), third)) return false;
        const hb_codepoint_t behind[] = {left, right, third}, inFront[] = {third, left, right};
        return hb_ot_layout_lookup_would_substitute(font_.face(), lookup.index, behind, 3, true) ||
               hb_ot_layout_lookup_would_substitute(font_.face(), lookup.index, inFront, 3, true);
    });
}

}  // namespace tarnova
