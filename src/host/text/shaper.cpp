#include "host/text/shaper.h"

#include <algorithm>

namespace tarnova {

ShapeFace::ShapeFace(const Font& font, const FontFeatures& features, std::uint32_t index)
    : font_(font), features_(features), index_(index), pairs_(font, features) {}

ShapeFace& Shaper::face(const Font& font, const FontFeatures& features) {
    for (const auto& known : faces_) {
        if (&known->font() == &font && known->features() == features) return *known;
    }
    faces_.push_back(std::make_unique<ShapeFace>(font, features, static_cast<std::uint32_t>(faces_.size())));
    return *faces_.back();
}

bool Shaper::shapeLatin(ShapeFace& face, std::u32string_view text, std::uint32_t firstPosition,
                        std::vector<PlacedGlyph>& out) {
    const std::size_t firstGlyph = out.size();
    std::size_t count = firstGlyph;  // glyphs so far; from the tables come at most as many as there are characters
    out.resize(firstGlyph + text.size());
    for (std::size_t start = 0; start < text.size();) {
        if (start > 0) out[count - 1].advance += pairAdjust(face, text[start - 1], text[start]);
        const std::size_t limit = text[start] == U' ' ? start + 1 : std::min(text.find(U' ', start), text.size());
        const std::u32string_view word = text.substr(start, limit - start);
        const std::uint32_t position = firstPosition + static_cast<std::uint32_t>(start);
        if (ways_.tables && setFromTables(face.pairs(), word, position, out.data() + count)) {
            count += word.size();
        } else {
            out.resize(count);
            if (!appendShaped(face, word, position, out)) {
                out.resize(firstGlyph);
                return false;
            }
            count = out.size();
            out.resize(count + (text.size() - limit));
        }
        start = limit;
    }
    out.resize(count);
    return true;
}

/// Sets the glyphs of a word, or a space, from the tables, a glyph a character. False when the tables can't say.
bool Shaper::setFromTables(PairTable& table, std::u32string_view word, std::uint32_t position, PlacedGlyph* out) {
    std::uint8_t slot = latinSlot(word[0]);
    if (!table.isListed(slot)) return false;
    for (std::size_t i = 0;; ++out) {
        *out = {table.glyph(slot), table.advance(slot), 0, 0, position++};
        if (++i == word.size()) return true;
        const std::uint8_t next = latinSlot(word[i]);
        const std::int16_t adjust = table.pair(slot, next);
        if (adjust == PairTable::unlisted) return false;
        out->advance += adjust;
        slot = next;
    }
}

bool Shaper::appendShaped(ShapeFace& face, std::u32string_view word, std::uint32_t firstPosition,
                          std::vector<PlacedGlyph>& out) {
    const std::size_t firstGlyph = out.size();
    shapeWord(face, word, HB_SCRIPT_LATIN, false, out);
    for (std::size_t i = firstGlyph; i < out.size(); ++i) {
        if (out[i].glyph == 0) return false;
        out[i].position += firstPosition;
    }
    return out.size() > firstGlyph;
}

void Shaper::shapeWord(ShapeFace& face, std::u32string_view word, hb_script_t script, bool rightToLeft,
                       std::vector<PlacedGlyph>& out) {
    const std::uint64_t key = (std::uint64_t{script} << 32) | (face.index() << 1) | (rightToLeft ? 1u : 0u);
    if (ways_.cache) {
        const WordCache::Word known = words_.find(key, word);
        if (known.glyphs != nullptr) {
            out.insert(out.end(), known.glyphs, known.glyphs + known.count);
            return;
        }
    }
    const std::size_t firstGlyph = out.size();
    shapeByHarfBuzz(face.font(), face.features(), word, script, rightToLeft, out);
    if (ways_.cache) words_.store(key, word, out.data() + firstGlyph, out.size() - firstGlyph);
}

float Shaper::pairAdjust(ShapeFace& face, char32_t left, char32_t right) {
    const std::uint8_t leftSlot = latinSlot(left), rightSlot = latinSlot(right);
    if (leftSlot == 0 || rightSlot == 0) return 0;
    const std::int16_t adjust = face.pairs().pair(leftSlot, rightSlot);
    return adjust == PairTable::unlisted ? 0.0F : static_cast<float>(adjust);
}

}  // namespace tarnova
