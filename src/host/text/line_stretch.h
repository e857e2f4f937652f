// How far a justified line may give and take: in its word spaces, between its letters, and in their widths.

#pragma once

#include <cstddef>

#include "host/model/format.h"

namespace tarnova {

[[nodiscard]] inline bool isJustified(Alignment alignment) {
    return alignment >= Alignment::justifyLeft;
}

/// What of a line can give, in points as its fonts have it. Letters are counted only where they have a say.
struct LineSums {
    std::size_t spaceCount = 0;
    float spaces = 0;   // width of the word spaces
    float letters = 0;  // sum of the sizes of all glyphs with a letter space behind them
    float text = 0;     // width of all glyphs
};

/// A line made longer or shorter.
struct LineChange {
    float perSpace = 0;     // points added to each word space
    float letterSpace = 0;  // thousandths of an em added behind each letter
    float glyphScale = 1;
    float total = 0;  // points by which the line changed
};

/// The limits of a paragraph; least <= wanted <= greatest.
class LineStretch {
 public:
    /// Of a paragraph that isn't justified: all is as the font has it.
    explicit LineStretch(const ParaFormat& format);

    /// The end of a line depends on the limits.
    [[nodiscard]] bool choosesLines() const { return choosesLines_; }
    /// Letter spaces or the widths of letters may change.
    [[nodiscard]] bool touchesLetters() const { return touchesLetters_; }

    /// Points by which the line can be made shorter.
    [[nodiscard]] float shrink(const LineSums& sums) const { return -changeAt(-1, sums); }
    /// How far a line with this slack, in points, lies from what is wanted: 0 is just right, 1 is at a limit. A line
    /// that can't change is the worst there is.
    [[nodiscard]] float deviation(float slack, const LineSums& sums) const;
    /// The change of a line that isn't filled.
    [[nodiscard]] LineChange unfilled(float slack, const LineSums& sums) const;
    /// The change of a filled line: all within the limits first, and word spaces then to any width.
    [[nodiscard]] LineChange filled(float slack, const LineSums& sums) const;

 private:
    struct Range {
        float least = 1;
        float wanted = 1;
        float greatest = 1;
        [[nodiscard]] float at(float level) const {
            return wanted + level * (level < 0 ? wanted - least : greatest - wanted);
        }
        [[nodiscard]] bool changes(float usual) const { return least != usual || greatest != usual; }
    };
    [[nodiscard]] static Range range(double least, double wanted, double greatest);
    [[nodiscard]] float changeAt(float level, const LineSums& sums) const;
    [[nodiscard]] float levelFor(float slack, const LineSums& sums) const;
    [[nodiscard]] LineChange lettersAt(float level, const LineSums& sums) const;
    static void giveToSpaces(LineChange& change, float width, const LineSums& sums);

    // Levels run from -1, where all is at its least, over 0, as wanted, to 1, at its greatest.
    Range word_;
    Range letter_{0, 0, 0};  // parts of an em
    Range glyph_;
    bool choosesLines_ = false;
    bool touchesLetters_ = false;
};

}  // namespace tarnova
