// Converts XPress Tags to tagged text of the host, byte by byte. docs/imported-text.md has the table.

#pragma once

#include <string>
#include <string_view>

namespace tarnova {

/// The text of `input` as tagged text, without a head. Text tags in it come out with square marks. With
/// `softReturnIsCR` a forced line break ends the paragraph. What is unfinished at the end stays as it is.
[[nodiscard]] std::string xpressTagsConvert(std::string_view input, bool softReturnIsCR);

}  // namespace tarnova
