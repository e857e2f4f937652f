// Tagged text on its way into a story: the head that a value needs, and files with XPress Tags.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "document/document.h"

namespace tarnova {

/// The text with a head in front and the line ends of the head behind it. A text with a head of its own only gets its
/// line ends. A made head names the styles, and without a character style the font, colour and size, of the text at
/// `position`, so that what the text doesn't say stays as it was there.
[[nodiscard]] std::string taggedTextHead(std::string_view text, UIDRef story, std::int32_t position);

/// Imports tagged text in place of `length` characters, with its head. `outLength` gets how many it is now. errFailed
/// and the errors of `importText`.
[[nodiscard]] errorWord importTaggedText(std::string_view text, UIDRef story, std::int32_t position,
                                         std::int32_t length, std::int32_t& outLength);

/// The same for a text in XPress Tags. What the place says of its own look beside font, size and colour stays.
[[nodiscard]] errorWord importXpressText(std::string_view text, UIDRef story, std::int32_t position,
                                         std::int32_t length, std::int32_t& outLength);

/// Reads a file in XPress Tags into a story. With `convert` it takes the place of the range, or when both numbers are 0
/// of the whole main text, and text tags in it become links; without, it is inserted as it is written in tagged text,
/// for a check by eye. -1 after telling the user why it failed, with nothing changed; else 0.
std::int32_t importTaggedFile(UIDRef story, const std::string& filePath, bool convert, std::int32_t position,
                              std::int32_t length);

}  // namespace tarnova
