// Page numbers as they are printed.

#pragma once

#include <cstdint>
#include <string>

namespace tarnova {

/// Numbering styles of a section.
enum class NumberingStyle : std::int32_t { arabic, upperRoman, lowerRoman, upperLetters, lowerLetters };

/// A number from 1 on in a numbering style; a style that isn't known, and a number that the style can't write (roman
/// from 4,000, letters from 27 * 26), gives arabic figures. Letters go on with "AA", "BB" behind "Z".
[[nodiscard]] std::string pageNumberText(std::int32_t number, std::int32_t numberingStyle);

}  // namespace tarnova
