// Text in UTF-8, UTF-32 and Windows-1252. Bad bytes never fail: each becomes U+FFFD. Plain ASCII takes a short way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarnova {

inline constexpr char32_t replacementChar = 0xFFFD;

/// Whether every byte is below 128.
bool isAscii(std::string_view text);
/// Whether `text` is well-formed UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
bool isUtf8(std::string_view text);

/// The code point at byte `offset`, which moves behind it. A byte that begins no well-formed character gives U+FFFD and
/// moves `offset` behind the longest part of one. `offset` must be inside `text`.
char32_t nextCodePoint(std::string_view text, std::size_t& offset);
/// Appends a code point; a surrogate or a number above U+10FFFF goes in as U+FFFD.
void appendCodePoint(std::string& utf8, char32_t codePoint);

std::u32string utf8ToUtf32(std::string_view utf8);
/// Appends to `out`, whose room is used again from call to call.
void appendUtf8AsUtf32(std::u32string& out, std::string_view utf8);
std::string utf32ToUtf8(std::u32string_view text);
/// How many code points `utf8ToUtf32` would give.
std::size_t codePointCount(std::string_view utf8);

/// The five bytes that Windows-1252 leaves open (81, 8D, 8F, 90, 9D) map to the control characters of the same number,
/// so that text goes there and back unchanged.
char32_t codePointOfWindows1252(std::uint8_t byte);
/// The byte of a code point, or 0 when Windows-1252 has none (U+0000 is 0 too).
std::uint8_t windows1252OfCodePoint(char32_t codePoint);
std::string windows1252ToUtf8(std::string_view bytes);
void appendWindows1252AsUtf8(std::string& out, std::string_view bytes);
std::u32string windows1252ToUtf32(std::string_view bytes);
/// A character that Windows-1252 lacks becomes "?".
std::string utf8ToWindows1252(std::string_view utf8);

/// The greatest length <= `maxBytes` at which `text` can be cut without splitting a UTF-8 character. Bytes that are no
/// UTF-8 are cut where `maxBytes` says.
std::size_t utf8CutLength(std::string_view text, std::size_t maxBytes);

}  // namespace tarnova
