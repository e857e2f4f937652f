#include "host/text/tab_gap.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>

#include "host/text/line_layout.h"

namespace tarnova {

namespace {

/// Languages that write a comma in front of decimals.
constexpr std::string_view commaLanguages[] = {"bg", "ca", "cs", "da", "de", "el", "es", "et", "eu", "fi", "fr", "gl",
                                               "hr", "hu", "id", "is", "it", "lt", "lv", "nb", "nl", "nn", "no", "pl",
                                               "pt", "ro", "ru", "sk", "sl", "sr", "sv", "tr", "uk", "vi"};

char32_t decimalSeparator(const CharFormat& format) {
    const std::string_view language = std::string_view(format.language).substr(0, 2);
    const bool comma =
        std::find(std::begin(commaLanguages), std::end(commaLanguages), language) != std::end(commaLanguages);
    return comma ? U',' : U'.';
}

/// Points of a piece in front of its decimal separator; below 0 when it has none.
float widthBeforeSeparator(const Paragraph& paragraph, const Piece& piece) {
    const TextStyle& style = paragraph.styleOf(piece);
    const std::size_t at = paragraph.textOf(piece).find(decimalSeparator(*style.format));
    if (at == std::u32string_view::npos) return -1;
    const std::int32_t position = paragraph.storyPosition(piece.start + static_cast<std::int32_t>(at));
    float width = 0;
    for (std::uint32_t i = 0; i < piece.glyphCount; ++i) {
        const PlacedGlyph& glyph = paragraph.glyphs[piece.firstGlyph + i];
        if (static_cast<std::int32_t>(glyph.position) >= position) break;
        width += glyph.advance * style.scale();
    }
    return width;
}

}  // namespace

TabStop nextTabStop(const ParaFormat& format, const LineMeasure& measure, float x) {
    TabStop best;
    bool found = false;
    const auto offer = [&](const TabStop& stop) {
        if (stop.position <= x + widthTolerance || (found && stop.position >= best.position)) return;
        best = stop;
        found = true;
    };
    for (const TabStop& stop : format.tabs)
        offer(stop);
    if (measure.isFirst && format.firstLineIndent < 0) offer({format.leftIndent, TabStop::Kind::left});
    if (found) return best;
    const double steps = std::floor((x + widthTolerance) / defaultTabStop) + 1;
    return {steps * defaultTabStop, TabStop::Kind::left};
}

float TabGap::gapOver(float following, float toSeparator) const {
    switch (kind_) {
        case TabStop::Kind::left:
            return room_;
        case TabStop::Kind::center:
            return std::max(room_ - following / 2, 0.0F);
        case TabStop::Kind::right:
            return std::max(room_ - following, 0.0F);
        default:
            return std::max(room_ - toSeparator, 0.0F);
    }
}

float TabGap::gapWith(const Paragraph& paragraph, const Piece& piece) const {
    TabGap next = *this;
    next.add(paragraph, piece);
    return next.gap();
}

void TabGap::add(const Paragraph& paragraph, const Piece& piece) {
    const float start = followingWidth_ + hanging_;
    if (kind_ == TabStop::Kind::decimal && !separatorSeen_) {
        const float before = widthBeforeSeparator(paragraph, piece);
        separatorSeen_ = before >= 0;
        separatorAt_ = start + before;
    }
    if (piece.width > 0) {
        followingWidth_ = start + piece.width;
        hanging_ = paragraph.gapAfter(piece);
    } else {
        hanging_ += paragraph.gapAfter(piece);
    }
}

}  // namespace tarnova
