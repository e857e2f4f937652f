// A font file as composition and the outputs see it, and the service that finds it by name.
//
// The machine's font configuration is never used: the service has its own, so that the same layout looks the same
// everywhere the same font packages are installed.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct hb_face_t;
struct hb_font_t;

namespace tarnova {

/// One face of a font file. Made once by `FontService` and valid as long as the process.
class Font {
   public:
    virtual ~Font() = default;
    [[nodiscard]] virtual const std::string& family() const = 0;
    [[nodiscard]] virtual const std::string& style() const = 0;
    [[nodiscard]] virtual const std::string& postScriptName() const = 0;
    [[nodiscard]] virtual const std::string& path() const = 0;
    [[nodiscard]] virtual int faceIndex() const = 0;
    /// Position in the order in which fonts were first asked for, from 0: a small dense key for tables.
    [[nodiscard]] virtual std::uint32_t index() const = 0;
    [[nodiscard]] virtual hb_face_t* face() const = 0;
    /// Scaled to 1000 units to the em.
    [[nodiscard]] virtual hb_font_t* shaper() const = 0;
    [[nodiscard]] virtual bool isCff() const = 0;

    // Thousandths of an em.
    [[nodiscard]] virtual float ascent() const = 0;
    [[nodiscard]] virtual float descent() const = 0;  // below the baseline, positive
    [[nodiscard]] virtual float capHeight() const = 0;
    [[nodiscard]] virtual float xHeight() const = 0;
    [[nodiscard]] virtual float underlinePosition() const = 0;   // negative: below
    [[nodiscard]] virtual float underlineThickness() const = 0;
    [[nodiscard]] virtual float nominalAdvance(std::uint16_t glyph) const = 0;
    /// Glyph of a character, 0 when the font has none.
    [[nodiscard]] virtual std::uint16_t glyphOf(char32_t character) const = 0;
};

class FontService {
   public:
    /// The one service of the process; the first call reads the configuration.
    static FontService& instance();
    virtual ~FontService() = default;
    /// The face for a family and style ("Regular", "Bold", "Italic", "Bold Italic", or a style of the family). Never null: an
    /// unknown family gets the default family, and `substituted` says so when asked.
    [[nodiscard]] virtual const Font* find(std::string_view family, std::string_view style,
                                           bool* substituted = nullptr) = 0;
    /// A face that has the character, beside `preferred` in weight and slant; `preferred` itself when none has it.
    [[nodiscard]] virtual const Font* fallback(const Font* preferred, char32_t character) = 0;
};

}  // namespace tarnova
