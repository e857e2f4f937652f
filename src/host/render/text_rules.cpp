#include "host/render/text_rules.h"

#include <hb-ot.h>

#include <algorithm>
#include <optional>

#include "host/text/font.h"
#include "host/text/text_style.h"

namespace tarnova {

namespace {

constexpr double leastThickness = 20;  // thousandths of an em, for fonts that say nothing

/// Upward from the baseline; of a font in thousandths of an em.
struct Rule {
    double middle;
    double thickness;
};

Rule underlineOf(const Font& font) {
    return {static_cast<double>(font.underlinePosition()),
            std::max(static_cast<double>(font.underlineThickness()), leastThickness)};
}

Rule strikeOf(const Font& font) {
    hb_position_t top = 0, thickness = 0;
    if (!hb_ot_metrics_get_position(font.shaper(), HB_OT_METRICS_TAG_STRIKEOUT_SIZE, &thickness) || thickness <= 0) {
        thickness = static_cast<hb_position_t>(underlineOf(font).thickness);
    }
    // The position is the rule's top (OpenType 1.9, OS/2).
    if (!hb_ot_metrics_get_position(font.shaper(), HB_OT_METRICS_TAG_STRIKEOUT_OFFSET, &top) || top <= 0) {
        top = static_cast<hb_position_t>(font.capHeight() * 0.45f);
    }
    return {top - thickness / 2.0, static_cast<double>(thickness)};
}

/// The rule of a font with what a format says of it in points; `em` is the size.
Rule inPoints(const Rule& rule, double em, std::optional<double> offset, std::optional<double> weight) {
    return {offset.value_or(rule.middle * em / 1000), weight.value_or(rule.thickness * em / 1000)};
}

PMRect ruleAt(const GlyphRun& run, const Rule& rule) {
    const double left = static_cast<double>(run.x);
    const double top = static_cast<double>(run.y) - rule.middle - rule.thickness / 2;
    return {left, top, left + static_cast<double>(run.width), top + rule.thickness};
}

}  // namespace

PMMatrix turnOf(const GlyphRun& run) {
    const double x = static_cast<double>(run.x), y = static_cast<double>(run.y);
    const double cosine = static_cast<double>(run.directionX), sine = static_cast<double>(run.directionY);
    return PMMatrix{1, 0, 0, 1, -x, -y}.then({cosine, sine, -sine, cosine, x, y});
}

TextRules textRulesOf(const GlyphRun& run) {
    TextRules out;
    const CharFormat& format = *run.format;
    if (!format.underline && !format.strikeThrough) return out;
    // Small capitals and characters from other fonts have the same rules as the text around them.
    const Font& font = *FontService::instance().find(format.family, format.fontStyle);
    const double em = letterSize(format);
    if (format.underline) {
        const Rule rule = inPoints(underlineOf(font), em, format.underlineOffset, format.underlineWeight);
        out.rules[out.count++] = ruleAt(run, rule);
    }
    if (format.strikeThrough) {
        const Rule rule = inPoints(strikeOf(font), em, format.strikeOffset, format.strikeWeight);
        out.rules[out.count++] = ruleAt(run, rule);
    }
    return out;
}

}  // namespace tarnova
