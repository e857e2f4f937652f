// Puts what a link's value names into a frame: a picture with its fit, its place and the clip of the one before, or a
// text.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "document/document.h"
#include "engine/toolkit/types.h"

namespace tarnova {

// Values of a `frameResult`: what came of a placing.
inline constexpr std::uint16_t framePlaced = 0;        // or nothing was to be placed
inline constexpr std::uint16_t frameAborted = 1000;    // the run ends
inline constexpr std::uint16_t frameDamaged = 1001;    // the file can't be placed
inline constexpr std::uint16_t frameOtherPage = 1002;  // a PDF shows another page than the one asked for
inline constexpr std::uint16_t frameMissing = 20000;   // the file isn't there

/// How a picture lies in its frame. `picturePosition`: 0 top left, 1 centred, 2 the largest that the frame shows whole,
/// 3 the frame's width and height, 4 as the picture before it, 5 to 7 the smallest that fills the frame, 8 the frame
/// becomes as large as the picture. All but 0, 3, 4 and 8 are centred. `hAlign` 1 left, 2 centre, 3 right and `vAlign`
/// 1 top, 2 centre, 3 bottom move it afterwards, by the bounds of both on the spread.
struct pictureFitRec {
    std::int16_t picturePosition = 0;
    std::int16_t hAlign = 0;
    std::int16_t vAlign = 0;
};

/// Places a file: a picture, or a text, which makes the frame a text frame. With `refreshLink` a picture's link is
/// updated, as a file of the same name may have new contents. A frame that is neither for text nor for pictures stays
/// so around a picture. Gives a `frameResult`; a damaged file leaves the frame as it was, and no error stays.
[[nodiscard]] std::uint16_t placeFile(UIDRef frame, const std::string& path, const pictureFitRec& fit,
                                      const pdfPlacePrefsRec& pdf, bool refreshLink);

/// Places a picture file's bytes, which the document keeps: the largest that the frame shows whole, centred.
[[nodiscard]] errorWord placePictureBytes(UIDRef frame, std::string bytes);

/// Replaces the text of a text frame; other frames stay as they are.
[[nodiscard]] errorWord setFrameText(UIDRef frame, std::u32string_view text);

}  // namespace tarnova
