// Pascal strings: a length byte, then at most 255 bytes of text, no terminator. Also the few operations on C strings
// that go with them. What lengthens a string clips at 255 characters and never fails.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace tarnova {

// A string of n characters takes n + 1 bytes.
using Str3 = std::uint8_t[4];
using Str31 = std::uint8_t[32];
using Str63 = std::uint8_t[64];
using Str64 = std::uint8_t[65];
using Str255 = std::uint8_t[256];

inline constexpr std::size_t pstrMaxLength = 255;  // characters

namespace ascii {
constexpr std::uint8_t lower(std::uint8_t c) {
    return c >= 'A' && c <= 'Z' ? static_cast<std::uint8_t>(c + ('a' - 'A')) : c;
}
constexpr std::uint8_t upper(std::uint8_t c) {
    return c >= 'a' && c <= 'z' ? static_cast<std::uint8_t>(c - ('a' - 'A')) : c;
}
constexpr char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}
constexpr char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
}
/// Whether two texts are equal with A to Z folded; other bytes as they stand.
bool equalNoCase(std::string_view a, std::string_view b);
}  // namespace ascii

/// The text of `s`, valid as long as `s` is unchanged; empty for a null `s`.
inline std::string_view pstrView(const std::uint8_t* s) {
    return s == nullptr ? std::string_view{} : std::string_view{reinterpret_cast<const char*>(s + 1), s[0]};
}
inline std::string pstrString(const std::uint8_t* s) {
    return std::string(pstrView(s));
}

/// Puts `text` into the field `dst` of `capacityBytes` bytes, length byte included. A text that is too long is cut to
/// fit; UTF-8 is cut between characters. The bytes behind the text stay as they are.
void pstrFromView(std::uint8_t* dst, std::size_t capacityBytes, std::string_view text);

/// The same for a field whose size the compiler knows.
template <std::size_t size>
void pstrSet(std::uint8_t (&dst)[size], std::string_view text) {
    static_assert(size >= 1 && size <= pstrMaxLength + 1);
    pstrFromView(dst, size, text);
}

/// Copies length and text; `dst` must have room.
inline void pstrCopy(std::uint8_t* dst, const std::uint8_t* src) {
    std::memmove(dst, src, std::size_t{1} + src[0]);
}

/// Copies at most `size` - 1 characters, `size` being the bytes of the field `dst`.
void pstrCopyBounded(std::uint8_t* dst, const std::uint8_t* src, std::size_t size);

/// Takes at most 255 characters; a null `cstr` leaves `dst` as it is.
void pstrFromC(std::uint8_t* dst, const char* cstr);

/// Writes the text and a terminator (up to 256 bytes); does nothing when either is null.
void pstrToC(char* dst, const std::uint8_t* src);

/// Appends, clipped so that the result is at most 255 characters. `dst` must have room for that.
void pstrAppend(std::uint8_t* dst, const std::uint8_t* src);
/// The same for a C string; does nothing when either is null.
void pstrAppendC(std::uint8_t* dst, const char* cstr);
/// The same for counted text, cut between UTF-8 characters.
void pstrAppendView(std::uint8_t* dst, std::string_view text);

/// Copy with a to z folded to upper case; other bytes unchanged. `dst` may be `src`.
void pstrUpper(std::uint8_t* dst, const std::uint8_t* src);

/// 0 when equal with A to Z folded, else -1.
std::int16_t pstrEqualNoCase(const std::uint8_t* a, const std::uint8_t* b);
/// The same between a C and a Pascal string; -1 when either is null.
std::int16_t cstrEqualPstrNoCase(const char* cstr, const std::uint8_t* pstr);

/// -1, 0 or 1 by unsigned bytes; a shorter string sorts first. A zero byte ends the text, as in a C string.
std::int16_t pstrCompare(const std::uint8_t* a, const std::uint8_t* b);
std::int16_t cstrComparePstr(const char* cstr, const std::uint8_t* pstr);

/// Compares counted byte runs: 0, 1 or -1. Without `exact`, A to Z fold. When the common part is equal the shorter run
/// sorts first. A null run gives 0.
std::int16_t pstrPrefixCompare(bool exact, const std::uint8_t* a, std::size_t lenA, const std::uint8_t* b,
                               std::size_t lenB);

/// Removes from both ends every byte below 33 and 0xCA, the non-breaking space of stored strings. A 0xCA that is part
/// of a UTF-8 character stays.
void pstrTrim(std::uint8_t* s);
/// Ends the string before its first CR or LF.
void pstrCutAtLineEnd(std::uint8_t* s);
/// Copy without any CR or LF. `dst` may be `src`.
void pstrStripLineEnds(std::uint8_t* dst, const std::uint8_t* src);
/// Removes the escapes of special characters: runs of six characters that begin with "<" and end with ">". After each
/// removal the search starts over, so an escape that only then closes up goes too.
void pstrStripEscapes(std::uint8_t* s);

/// Decimal text of a number.
void pstrFromLong(std::int32_t value, std::uint8_t* dst);
/// Leading white space, an optional sign, digits up to the first other character; 0 when there are none. A number that
/// 32 bits don't hold becomes the nearest that they do.
void pstrToLong(const std::uint8_t* src, std::int32_t* out);

/// Characters that may not stand in a link or definition name: CR ! / : ; < > ^ &
constexpr bool isNameSpecialChar(std::uint8_t c) {
    return c == '\r' || c == '!' || c == '/' || c == ':' || c == ';' || c == '<' || c == '>' || c == '^' || c == '&';
}

/// Removes every `c` from the C string `s`; a null `s` is left alone.
void cstrRemoveChar(char c, char* s);
/// Replaces every `c` in the C string `s` by `by`.
void cstrReplaceChar(char c, char* s, char by);

}  // namespace tarnova

// For companion modules, under these names.
extern "C" {
/// Reverses a C string in place and returns it. Null gives null; fewer than 3 characters stay as they are.
char* strrev(char* s);
/// Folds a to z of a C string to upper case in place and returns it; null gives null.
char* strupr(char* s);
}
