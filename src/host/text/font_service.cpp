// Font faces over HarfBuzz and the service that hands them out.

#include <hb-ot.h>
#include <hb.h>

#include <map>
#include <mutex>
#include <stdexcept>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/text/font.h"
#include "host/text/font_catalog.h"

// HarfBuzz spells its tags and limits as macros with C casts.
#pragma GCC diagnostic ignored "-Wold-style-cast"

namespace tarnova {

namespace {

constexpr int unitsPerEm = 1000;
constexpr std::string_view defaultFamily = "Nimbus Sans";

class FontFace final : public Font {
 public:
    FontFace(const FontFileEntry& entry, std::uint32_t index) : entry_(entry), index_(index) {
        hb_blob_t* blob = hb_blob_create_from_file_or_fail(entry.path.c_str());
        if (blob == nullptr) throw std::runtime_error("The font file " + entry.path + " can't be read.");
        face_ = hb_face_create(blob, static_cast<unsigned>(entry.faceIndex));
        hb_blob_destroy(blob);
        hb_face_make_immutable(face_);
        shaper_ = hb_font_create(face_);
        hb_font_set_scale(shaper_, unitsPerEm, unitsPerEm);
        hb_font_make_immutable(shaper_);
        readNames();
        readMetrics();
    }
    FontFace(const FontFace&) = delete;
    FontFace& operator=(const FontFace&) = delete;
    ~FontFace() override {
        hb_font_destroy(shaper_);
        hb_face_destroy(face_);
    }

    const std::string& family() const override { return entry_.families.front(); }
    const std::string& style() const override { return entry_.styles.front(); }
    const std::string& postScriptName() const override { return postScriptName_; }
    const std::string& path() const override { return entry_.path; }
    int faceIndex() const override { return entry_.faceIndex; }
    std::uint32_t index() const override { return index_; }
    hb_face_t* face() const override { return face_; }
    hb_font_t* shaper() const override { return shaper_; }
    bool isCff() const override { return isCff_; }
    float ascent() const override { return ascent_; }
    float descent() const override { return descent_; }
    float capHeight() const override { return capHeight_; }
    float xHeight() const override { return xHeight_; }
    float underlinePosition() const override { return underlinePosition_; }
    float underlineThickness() const override { return underlineThickness_; }
    float nominalAdvance(std::uint16_t glyph) const override {
        return static_cast<float>(hb_font_get_glyph_h_advance(shaper_, glyph));
    }
    std::uint16_t glyphOf(char32_t character) const override {
        hb_codepoint_t glyph = 0;
        return hb_font_get_nominal_glyph(shaper_, character, &glyph) ? static_cast<std::uint16_t>(glyph) : 0;
    }
    const FontFileEntry& entry() const { return entry_; }

 private:
    void readNames() {
        if (entry_.families.empty()) entry_.families.emplace_back();
        if (entry_.styles.empty()) entry_.styles.emplace_back("Regular");
        char name[256] = {};
        unsigned size = sizeof name;
        hb_ot_name_get_utf8(face_, HB_OT_NAME_ID_POSTSCRIPT_NAME, HB_LANGUAGE_INVALID, &size, name);
        postScriptName_ = name;
        hb_blob_t* cff = hb_face_reference_table(face_, HB_TAG('C', 'F', 'F', ' '));
        isCff_ = hb_blob_get_length(cff) > 0;
        hb_blob_destroy(cff);
    }

    void readMetrics() {
        hb_font_extents_t extents{};
        hb_font_get_h_extents(shaper_, &extents);
        ascent_ = static_cast<float>(extents.ascender);
        descent_ = -static_cast<float>(extents.descender);
        capHeight_ = metric(HB_OT_METRICS_TAG_CAP_HEIGHT);
        xHeight_ = metric(HB_OT_METRICS_TAG_X_HEIGHT);
        underlinePosition_ = metric(HB_OT_METRICS_TAG_UNDERLINE_OFFSET);
        underlineThickness_ = metric(HB_OT_METRICS_TAG_UNDERLINE_SIZE);
    }

    float metric(hb_ot_metrics_tag_t tag) const {
        hb_position_t value = 0;
        hb_ot_metrics_get_position_with_fallback(shaper_, tag, &value);
        return static_cast<float>(value);
    }

    FontFileEntry entry_;
    std::uint32_t index_;
    hb_face_t* face_ = nullptr;
    hb_font_t* shaper_ = nullptr;
    std::string postScriptName_;
    bool isCff_ = false;
    float ascent_ = 0;
    float descent_ = 0;
    float capHeight_ = 0;
    float xHeight_ = 0;
    float underlinePosition_ = 0;
    float underlineThickness_ = 0;
};

class CatalogFontService final : public FontService {
 public:
    const Font* find(std::string_view family, std::string_view style, bool* substituted) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto key = std::make_pair(std::string(family), std::string(style));
        auto found = byName_.find(key);
        if (found == byName_.end()) found = byName_.emplace(key, look(family, style)).first;
        if (substituted != nullptr) *substituted = found->second.substituted;
        return found->second.font;
    }

    const Font* fallback(const Font* preferred, char32_t character) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        const std::uint64_t key = (std::uint64_t{preferred->index()} << 32) | character;
        const auto found = byCharacter_.find(key);
        if (found != byCharacter_.end()) return found->second;
        const StyleWish style = parseStyle(preferred->style());
        const bool serif = isSerif(*preferred);
        const FontFileEntry* entry = baseFonts().covering(character, style, serif);
        if (entry == nullptr) entry = allFonts().covering(character, style, serif);
        const Font* font = entry == nullptr ? preferred : open(*entry);
        byCharacter_.emplace(key, font);
        return font;
    }

 private:
    struct Choice {
        const Font* font = nullptr;
        bool substituted = false;
    };

    Choice look(std::string_view family, std::string_view style) {
        const StyleWish wish = parseStyle(style);
        const std::string_view name = familyBehindAlias(family);
        const FontFileEntry* entry = baseFonts().match(name, wish);
        if (entry == nullptr) entry = allFonts().match(name, wish);
        const bool substituted = entry == nullptr;
        if (substituted) entry = baseFonts().match(defaultFamily, wish);
        if (entry == nullptr) {
            throw std::runtime_error(
                "There are no fonts: install the packages fonts-urw-base35, fonts-liberation2 "
                "and fonts-dejavu-core.");
        }
        return {open(*entry), substituted};
    }

    static bool isSerif(const Font& font) {
        static constexpr std::string_view serifFamilies[] = {
            "Nimbus Roman", "Liberation Serif", "DejaVu Serif", "Noto Serif", "URW Bookman", "C059", "P052"};
        for (std::string_view family : serifFamilies) {
            if (font.family() == family) return true;
        }
        return false;
    }

    const Font* open(const FontFileEntry& entry) {
        for (const auto& font : fonts_) {
            if (font->path() == entry.path && font->faceIndex() == entry.faceIndex) return font.get();
        }
        fonts_.push_back(std::make_unique<FontFace>(entry, static_cast<std::uint32_t>(fonts_.size())));
        return fonts_.back().get();
    }

    std::mutex mutex_;
    std::vector<std::unique_ptr<FontFace>> fonts_;
    std::map<std::pair<std::string, std::string>, Choice> byName_;
    std::unordered_map<std::uint64_t, const Font*> byCharacter_;
};

}  // namespace

FontService& FontService::instance() {
    static CatalogFontService service;
    return service;
}

}  // namespace tarnova
