// A text in a frame that holds no text: drawn as large as it fits, and set into the frame as a picture.

#pragma once

#include <cstdint>
#include <string_view>

#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// Colours of the texts, by the names of swatches.
inline constexpr std::string_view messageSwatch = "Magenta";  // what is wrong with a frame
inline constexpr std::string_view proofSwatch = "Black";      // the name of its link

/// Shows `text` in a frame; an empty one changes nothing. A frame that can't be copied, as one in a text, and one that
/// takes no text stay as they are, and so
/// do all in a program that doesn't draw. With pictures tracked (placed_pictures.h) a message that is there already is
/// only noted. With `keepsWords` the text becomes smaller, down to 10 points, until no word is broken.
[[nodiscard]] errorWord messagePicture(UIDRef frame, std::u32string_view text, std::uint32_t pdfPage,
                                       std::string_view swatch = messageSwatch, bool keepsWords = false);

}  // namespace tarnova
