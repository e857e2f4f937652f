#include "host/text/word_shaping.h"

#include <memory>

// HarfBuzz spells its tags and limits as macros with C casts.
#pragma GCC diagnostic ignored "-Wold-style-cast"

namespace tarnova {

namespace {

struct BufferCloser {
    void operator()(hb_buffer_t* buffer) const { hb_buffer_destroy(buffer); }
};

hb_buffer_t* emptyBuffer() {
    static thread_local std::unique_ptr<hb_buffer_t, BufferCloser> kept(hb_buffer_create());
    hb_buffer_clear_contents(kept.get());
    return kept.get();
}

hb_language_t languageOf(const std::string& tag) {
    return hb_language_from_string(tag.data(), static_cast<int>(tag.size()));
}

}  // namespace

void shapeByHarfBuzz(const Font& font, const FontFeatures& features, std::u32string_view word, hb_script_t script,
                     bool rightToLeft, std::vector<PlacedGlyph>& out) {
    hb_buffer_t* buffer = emptyBuffer();
    const int length = static_cast<int>(word.size());
    hb_buffer_add_utf32(buffer, reinterpret_cast<const std::uint32_t*>(word.data()), length, 0, length);
    hb_buffer_set_direction(buffer, rightToLeft ? HB_DIRECTION_RTL : HB_DIRECTION_LTR);
    hb_buffer_set_script(buffer, script);
    hb_buffer_set_language(buffer, languageOf(features.language));
    hb_buffer_set_flags(buffer, HB_BUFFER_FLAG_REMOVE_DEFAULT_IGNORABLES);

    const auto feature = [](hb_tag_t tag, bool on) {
        return hb_feature_t{tag, on ? 1u : 0u, HB_FEATURE_GLOBAL_START, HB_FEATURE_GLOBAL_END};
    };
    const hb_feature_t wanted[] = {feature(HB_TAG('k', 'e', 'r', 'n'), features.kerning),
                                   feature(HB_TAG('l', 'i', 'g', 'a'), features.ligatures),
                                   feature(HB_TAG('c', 'l', 'i', 'g'), features.ligatures)};
    hb_shape(font.shaper(), buffer, wanted, std::size(wanted));

    unsigned count = 0;
    const hb_glyph_info_t* infos = hb_buffer_get_glyph_infos(buffer, &count);
    const hb_glyph_position_t* places = hb_buffer_get_glyph_positions(buffer, &count);
    for (unsigned i = 0; i < count; ++i) {
        out.push_back({static_cast<std::uint16_t>(infos[i].codepoint), static_cast<float>(places[i].x_advance),
                       static_cast<float>(places[i].x_offset), static_cast<float>(places[i].y_offset),
                       infos[i].cluster});
    }
}

}  // namespace tarnova
