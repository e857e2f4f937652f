#include "host/text/word_spaces.h"

#include <algorithm>
#include <limits>

namespace tarnova {

namespace {

constexpr float smallestRange = 0.001F;  // between a limit and what is wanted

}  // namespace

WordSpaces::WordSpaces(const ParaFormat& format) {
    const bool isJustified = format.alignment == Alignment::justifyLeft || format.alignment == Alignment::justifyAll;
    if (!isJustified) return;
    wanted = static_cast<float>(format.wordSpaceWanted / 100);
    least = std::min(static_cast<float>(format.wordSpaceLeast / 100), wanted);
    greatest = std::max(static_cast<float>(format.wordSpaceGreatest / 100), wanted);
    choosesLines = format.hyphenate || least != 1 || wanted != 1;
}

float WordSpaces::deviation(float slack, float spaceWidth) const {
    if (!(spaceWidth > 0)) return std::numeric_limits<float>::max();
    const float space = 1 + slack / spaceWidth;
    if (space >= wanted) return (space - wanted) / std::max(greatest - wanted, smallestRange);
    return (wanted - space) / std::max(wanted - least, smallestRange);
}

float WordSpaces::unfilled(float slack, float spaceWidth) const {
    return std::max(std::min((wanted - 1) * spaceWidth, slack), (least - 1) * spaceWidth);
}

float WordSpaces::filled(float slack, float spaceWidth) const {
    return std::max(slack, (least - 1) * spaceWidth);
}

}  // namespace tarnova
