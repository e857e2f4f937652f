#include "host/model/override_layers.h"

namespace tarnova {

namespace {

/// The fields of `from` that are there take the place of those of `to`.
template <typename... Members, typename Overrides>
void layOver(const Overrides& from, Overrides& to, Members... members) {
    const auto lay = [&](auto member) {
        if (from.*member) to.*member = from.*member;
    };
    (lay(members), ...);
}

}  // namespace

void layOver(const CharOverrides& from, CharOverrides& to) {
    using O = CharOverrides;
    layOver(from, to, &O::family, &O::fontStyle, &O::language, &O::link, &O::pointSize, &O::leading, &O::tracking,
            &O::kerning, &O::baselineShift, &O::horizontalScale, &O::verticalScale, &O::underlineOffset,
            &O::underlineWeight, &O::strikeOffset, &O::strikeWeight, &O::color, &O::pairKerning, &O::ligatures,
            &O::underline, &O::strikeThrough, &O::position, &O::caps);
}

void layOver(const ParaOverrides& from, ParaOverrides& to) {
    using O = ParaOverrides;
    layOver(from, to, &O::alignment, &O::leftIndent, &O::rightIndent, &O::firstLineIndent, &O::spaceBefore,
            &O::spaceAfter, &O::tabs, &O::hyphenate, &O::wordSpaceLeast, &O::wordSpaceWanted, &O::wordSpaceGreatest,
            &O::letterSpaceLeast, &O::letterSpaceWanted, &O::letterSpaceGreatest, &O::glyphScaleLeast,
            &O::glyphScaleWanted, &O::glyphScaleGreatest, &O::keepLines, &O::keepFirstLines, &O::keepLastLines,
            &O::keepWithNext, &O::startIn, &O::gridLines, &O::hyphenWordLetters, &O::hyphenLettersBefore,
            &O::hyphenLettersAfter, &O::hyphensInARow);
}

}  // namespace tarnova
