// A character format made ready for composition: font found, features chosen, sizes and distances worked out.

#pragma once

#include <cstdint>
#include <vector>

#include "host/model/format.h"
#include "host/text/shaper.h"

namespace tarnova {

// Superscript, subscript and small capitals, as parts of the size.
inline constexpr double scriptSize = 0.583;
inline constexpr double scriptShift = 0.333;
inline constexpr double smallCapSize = 0.7;
inline constexpr double autoLeading = 1.2;

/// Points of a format's letters as they are set; its small capitals are smaller.
[[nodiscard]] double letterSize(const CharFormat& format);

/// One look of text. Pieces of a paragraph refer to it.
struct TextStyle {
    const CharFormat* format = nullptr;
    ShapeFace* face = nullptr;
    float size = 0;  // points, as set
    float horizontalScale = 1;
    float shift = 0;   // points, upward
    float spread = 0;  // tracking and kerning, thousandths of an em
    float ascent = 0;  // points above and below the baseline, of the format's font at its full size
    float descent = 0;
    float leading = 0;
    float capHeight = 0;
    float xHeight = 0;

    /// Points of a thousandth of an em.
    [[nodiscard]] float scale() const { return size * horizontalScale / 1000; }
    [[nodiscard]] const Font& font() const { return face->font(); }
};

/// Finds styles by format. Belongs to one thread.
class TextStyles {
 public:
    explicit TextStyles(Shaper& shaper) : shaper_(shaper), kept_(keptCount) {}

    /// The style of a format, which must live as long as the style is used.
    [[nodiscard]] const TextStyle& of(const CharFormat& format);
    /// The style with another font, for characters that its own lacks, and reduced for small capitals when `reduced`.
    [[nodiscard]] TextStyle variant(const TextStyle& style, const Font& font, bool reduced);

 private:
    static constexpr std::size_t keptCount = 64;
    struct Kept {
        CharFormat format;  // a copy: an address may come back with another format
        TextStyle style;
    };
    [[nodiscard]] TextStyle resolve(const CharFormat& format);

    Shaper& shaper_;
    std::vector<Kept> kept_;  // by the format's address
};

}  // namespace tarnova
