// Where a hyperlink of text leads. The text of a link is what layouts and formats hold: an address of the web, of mail
// or of a telephone, or "#page=3" (as RFC 8118 writes it) for a page of the document.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarnova {

inline constexpr std::size_t linkBytesLimit = 2048;

struct LinkTarget {
    std::string uri;              // ASCII, what RFC 3986 doesn't allow percent-encoded; empty for a page
    std::int32_t pageNumber = 0;  // counts from 1; 0 for a URI
};

/// Reads the text of a link. Only "http", "https", "mailto" and "tel" are taken: the others can run programs or read
/// files where the link is followed. Nothing: `problem` says why, as the end of a sentence.
[[nodiscard]] std::optional<LinkTarget> readLinkTarget(std::string_view text, std::string& problem);

}  // namespace tarnova
