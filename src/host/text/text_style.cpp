#include "host/text/text_style.h"

#include <algorithm>

namespace tarnova {

namespace {

// A size or scale of 0 hides text; what is divided by it must stay finite.
constexpr double smallestSize = 0.01;
constexpr double smallestScale = 0.01;

/// Letters that are spread apart don't join: tracking switches ligatures off.
FontFeatures featuresOf(const CharFormat& format) {
    return {format.pairKerning, format.ligatures && format.tracking == 0, format.language};
}

double fullSizeOf(const CharFormat& format) {
    return std::max(format.pointSize, smallestSize) * std::max(format.verticalScale, smallestScale);
}

}  // namespace

double letterSize(const CharFormat& format) {
    return fullSizeOf(format) * (format.position != TextPosition::normal ? scriptSize : 1);
}

const TextStyle& TextStyles::of(const CharFormat& format) {
    Kept& kept = kept_[(reinterpret_cast<std::uintptr_t>(&format) / 32) % keptCount];
    if (kept.style.face == nullptr || !(kept.format == format)) {
        kept.style = resolve(format);  // throws, and then what was kept stays whole
        kept.format = format;
    }
    kept.style.format = &format;
    return kept.style;
}

TextStyle TextStyles::variant(const TextStyle& style, const Font& font, bool reduced) {
    TextStyle out = style;
    if (&font != &style.font()) out.face = &shaper_.face(font, style.face->features());
    if (reduced) out.size *= static_cast<float>(smallCapSize);
    return out;
}

TextStyle TextStyles::resolve(const CharFormat& format) {
    const Font& font = *FontService::instance().find(format.family, format.fontStyle);
    const double verticalScale = std::max(format.verticalScale, smallestScale);
    const double fullSize = fullSizeOf(format);
    const bool isScript = format.position != TextPosition::normal;
    const double direction = format.position == TextPosition::subscript ? -1 : 1;
    TextStyle style;
    style.face = &shaper_.face(font, featuresOf(format));
    style.size = static_cast<float>(letterSize(format));
    style.horizontalScale = static_cast<float>(std::max(format.horizontalScale, smallestScale) / verticalScale);
    style.shift = static_cast<float>(format.baselineShift + (isScript ? direction * scriptShift * fullSize : 0));
    style.spread = static_cast<float>(format.tracking + format.kerning);
    style.ascent = static_cast<float>(font.ascent() * fullSize / 1000);
    style.descent = static_cast<float>(font.descent() * fullSize / 1000);
    style.capHeight = static_cast<float>(font.capHeight() * fullSize / 1000);
    style.xHeight = static_cast<float>(font.xHeight() * fullSize / 1000);
    style.leading = static_cast<float>(format.leading < 0 ? autoLeading * format.pointSize : format.leading);
    return style;
}

}  // namespace tarnova
