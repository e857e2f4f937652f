#include "host/text/line_stretch.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tarnova {

namespace {

constexpr float smallestRange = 0.001F;  // of word spaces, between a limit and what is wanted

}  // namespace

LineStretch::LineStretch(const ParaFormat& format) {
    if (!isJustified(format.alignment)) return;
    word_ = range(format.wordSpaceLeast, format.wordSpaceWanted, format.wordSpaceGreatest);
    letter_ = range(format.letterSpaceLeast, format.letterSpaceWanted, format.letterSpaceGreatest);
    glyph_ = range(format.glyphScaleLeast, format.glyphScaleWanted, format.glyphScaleGreatest);
    touchesLetters_ = letter_.changes(0) || glyph_.changes(1);
    choosesLines_ = format.hyphenate || word_.least != 1 || word_.wanted != 1 || touchesLetters_;
}

LineStretch::Range LineStretch::range(double least, double wanted, double greatest) {
    return {static_cast<float>(std::min(least, wanted) / 100), static_cast<float>(wanted / 100),
            static_cast<float>(std::max(greatest, wanted) / 100)};
}

float LineStretch::changeAt(float level, const LineSums& sums) const {
    const float words = (word_.at(level) - 1) * sums.spaces;
    if (!touchesLetters_) return words;
    return words + letter_.at(level) * sums.letters + (glyph_.at(level) - 1) * sums.text;
}

/// The level at which the line has no slack; beyond 1 or -1 when that can't be had within the limits.
float LineStretch::levelFor(float slack, const LineSums& sums) const {
    const float wanted = changeAt(0, sums);
    const float distance = slack - wanted;
    const float range = distance < 0 ? wanted - changeAt(-1, sums) : changeAt(1, sums) - wanted;
    return distance / std::max(range, smallestRange * std::max(sums.spaces, 1.0F));
}

float LineStretch::deviation(float slack, const LineSums& sums) const {
    const bool canChange = sums.spaces > 0 || (touchesLetters_ && sums.letters > 0);
    return canChange ? std::abs(levelFor(slack, sums)) : std::numeric_limits<float>::max();
}

LineChange LineStretch::unfilled(float slack, const LineSums& sums) const {
    const float level = std::clamp(levelFor(slack, sums), -1.0F, 0.0F);
    LineChange change = lettersAt(level, sums);
    giveToSpaces(change, (word_.at(level) - 1) * sums.spaces, sums);
    return change;
}

LineChange LineStretch::filled(float slack, const LineSums& sums) const {
    LineChange change = lettersAt(std::clamp(levelFor(slack, sums), -1.0F, 1.0F), sums);
    giveToSpaces(change, std::max(slack - change.total, (word_.least - 1) * sums.spaces), sums);
    return change;
}

LineChange LineStretch::lettersAt(float level, const LineSums& sums) const {
    if (!touchesLetters_) return {};
    const float letter = letter_.at(level), glyph = glyph_.at(level);
    return {0, letter * 1000, glyph, letter * sums.letters + (glyph - 1) * sums.text};
}

void LineStretch::giveToSpaces(LineChange& change, float width, const LineSums& sums) {
    if (sums.spaceCount == 0) return;
    change.perSpace = width / static_cast<float>(sums.spaceCount);
    change.total += width;
}

}  // namespace tarnova
