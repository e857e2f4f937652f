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

constexpr std::size_t stopLimit = 10000;  // of a paragraph; those behind aren't used
constexpr std::size_t noStop = static_cast<std::size_t>(-1);

char32_t decimalSeparator(const CharFormat& format) {
    const std::string_view language = std::string_view(format.language).substr(0, 2);
    const bool comma =
        std::find(std::begin(commaLanguages), std::end(commaLanguages), language) != std::end(commaLanguages);
    return comma ? U',' : U'.';
}

/// Points of a piece between its decimal separator and the side from which the paragraph's lines come; below 0 when it
/// has none. A number in a paragraph from right to left shows its decimals on that side.
float widthBeforeSeparator(const Paragraph& paragraph, const Piece& piece, char32_t alignedOn) {
    const TextStyle& style = paragraph.styleOf(piece);
    const char32_t separator = alignedOn != 0 ? alignedOn : decimalSeparator(*style.format);
    const std::size_t at = paragraph.textOf(piece).find(separator);
    if (at == std::u32string_view::npos) return -1;
    const std::int32_t position = paragraph.storyPosition(piece.start + static_cast<std::int32_t>(at));
    const bool inFront = (piece.level % 2 != 0) == paragraph.isRightToLeft();
    float width = 0;
    for (std::uint32_t i = 0; i < piece.glyphCount; ++i) {
        const PlacedGlyph& glyph = paragraph.glyphs[piece.firstGlyph + i];
        const auto its = static_cast<std::int32_t>(glyph.position);
        if (inFront ? its < position : its > position) width += glyph.advance * style.scale();
    }
    return width;
}

}  // namespace

TabTarget nextTabStop(const ParaFormat& format, const LineMeasure& measure, float x) {
    TabTarget best;
    bool found = false;
    const auto offer = [&](double position, const TabStop& stop, std::size_t index) {
        if (position <= x + widthTolerance || (found && position >= best.position)) return;
        best = {static_cast<float>(position), stop.kind, stop.alignedOn, static_cast<std::int16_t>(index)};
        found = true;
    };
    for (std::size_t i = 0; i < std::min(format.tabs.size(), stopLimit); ++i)
        offer(format.tabs[i].position, format.tabs[i], i);
    if (measure.isFirst && format.firstLineIndent < 0) {
        offer(static_cast<double>(measure.start) - format.firstLineIndent, {}, noStop);
    }
    if (found) return best;
    const double steps = std::floor((x + widthTolerance) / defaultTabStop) + 1;
    return {static_cast<float>(steps * defaultTabStop)};
}

TabTarget farTabStop(const ParaFormat& format, const LineMeasure& measure) {
    const auto count = static_cast<std::int16_t>(std::min(format.tabs.size(), stopLimit));
    return {measure.start + measure.width, TabStop::Kind::right, 0, static_cast<std::int16_t>(count - 1)};
}

float TabGap::gapOver(float following, float toSeparator) const {
    switch (stop_.kind) {
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
    if (stop_.kind == TabStop::Kind::decimal && !separatorSeen_) {
        const float before = widthBeforeSeparator(paragraph, piece, stop_.alignedOn);
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
