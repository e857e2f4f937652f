// What a PDF file says about itself: the information dictionary and the XMP packet, without dates, so that the same
// pages give the same file.

#pragma once

#include <string>
#include <string_view>

namespace tarnova {

/// A text string (ISO 32000-2, 7.9.2.2) from UTF-8: literal when it is plain ASCII, else UTF-16 in hexadecimal. Bytes
/// that aren't UTF-8 become U+FFFD.
[[nodiscard]] std::string pdfTextString(std::string_view utf8);

[[nodiscard]] std::string pdfInfoDictionary(std::string_view title, std::string_view creator);
[[nodiscard]] std::string pdfXmpPacket(std::string_view title, std::string_view creator);

}  // namespace tarnova
