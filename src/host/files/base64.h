// Base64 (RFC 4648, section 4, with padding), for bytes that a layout file can't show as text.

#pragma once

#include <string>
#include <string_view>

namespace tarnova {

[[nodiscard]] std::string toBase64(std::string_view bytes);
/// False, with `out` unchanged, when the text isn't what `toBase64` would write.
[[nodiscard]] bool fromBase64(std::string_view text, std::string& out);

}  // namespace tarnova
