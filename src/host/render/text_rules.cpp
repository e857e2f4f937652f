#include "host/render/text_rules.h"

#include <hb-ot.h>

#include <algorithm>

#include "host/text/font.h"

namespace tarnova {

namespace {

constexpr double leastThickness = 20;  // thousandths of an em, for fonts that say nothing

/// `middle` and `thickness` in thousandths of an em, upward from the baseline.
PMRect ruleAt(const GlyphRun& run, double middle, double thickness) {
    const double em = static_cast<double>(run.size) / 1000;
    const double left = static_cast<double>(run.x);
    const double top = static_cast<double>(run.y) - (middle + thickness / 2) * em;
    return {left, top, left + static_cast<double>(run.width), top + thickness * em};
}

}  // namespace

PMMatrix turnOf(const GlyphRun& run) {
    const double x = static_cast<double>(run.x), y = static_cast<double>(run.y);
    const double cosine = static_cast<double>(run.directionX), sine = static_cast<double>(run.directionY);
    return PMMatrix{1, 0, 0, 1, -x, -y}.then({cosine, sine, -sine, cosine, x, y});
}

TextRules textRulesOf(const GlyphRun& run) {
    TextRules out;
    const Font& font = *run.font;
    const double underlineThickness = std::max(static_cast<double>(font.underlineThickness()), leastThickness);
    if (run.format->underline) {
        out.rules[out.count++] = ruleAt(run, static_cast<double>(font.underlinePosition()), underlineThickness);
    }
    if (run.format->strikeThrough) {
        // The position is the rule's top (OpenType 1.9, OS/2).
        hb_position_t top = 0, thickness = 0;
        if (!hb_ot_metrics_get_position(font.shaper(), HB_OT_METRICS_TAG_STRIKEOUT_SIZE, &thickness) ||
            thickness <= 0) {
            thickness = static_cast<hb_position_t>(underlineThickness);
        }
        if (!hb_ot_metrics_get_position(font.shaper(), HB_OT_METRICS_TAG_STRIKEOUT_OFFSET, &top) || top <= 0) {
            top = static_cast<hb_position_t>(font.capHeight() * 0.45f);
        }
        out.rules[out.count++] = ruleAt(run, top - thickness / 2.0, thickness);
    }
    return out;
}

}  // namespace tarnova
