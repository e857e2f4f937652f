// Where a line may end: the opportunities of UAX 14.
//
// Latin text is judged by rules of our own over classes in a table; everything else goes to ICU. The two agree.

#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace tarnova {

enum class LineBreak : std::uint8_t { none, allowed, mandatory };

/// True when `findLatinBreaks` can judge every character: Latin letters, digits, punctuation and symbols up to U+024F,
/// and the general punctuation and currency signs around them. Such text is also written from left to right throughout.
[[nodiscard]] bool isPlainLatin(std::u32string_view text);

/// Sets `breaks[i]` to what may happen behind character `i` of a paragraph without its return; the last one is none.
/// Every character must be plain Latin.
void findLatinBreaks(std::u32string_view text, std::vector<LineBreak>& breaks);

/// The same for any text, from ICU.
void findBreaks(std::u32string_view text, std::vector<LineBreak>& breaks);

/// The last border between grapheme clusters in `text` at or before `limit`, or the first one when there is none
/// before.
[[nodiscard]] std::size_t graphemeBorder(std::u32string_view text, std::size_t limit);

}  // namespace tarnova
