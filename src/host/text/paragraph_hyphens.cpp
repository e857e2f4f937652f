// Where the words of a paragraph may be hyphenated.

#include <unicode/uchar.h>

#include <algorithm>
#include <bit>

#include "host/text/paragraph.h"

namespace tarnova {

namespace {

constexpr std::size_t longestToken = 256;  // characters between two spaces; longer ones aren't words

bool isLetter(char32_t c) {
    if (c < 0x80) return (c | 0x20) >= U'a' && (c | 0x20) <= U'z';
    return u_isalpha(static_cast<UChar32>(c)) != 0;
}

bool endsToken(char32_t c) {
    return c == U' ' || c < 0x20 || c == 0xA0 || c == 0x2028;
}

/// Characters that show that what stands between two spaces isn't a word to be hyphenated: of addresses and numbers, a
/// soft hyphen, by which the author says where, and marks, which the dictionaries don't know apart from their letters.
bool forbidsHyphens(char32_t c) {
    if (c < 0x80) return (c >= U'0' && c <= U'9') || c == U'@' || c == U'/' || c == U'\\' || c == U'_';
    return c == 0xAD || (U_GET_GC_MASK(static_cast<UChar32>(c)) & (U_GC_M_MASK | U_GC_ND_MASK)) != 0;
}

/// The points that leave enough letters on both sides.
std::uint64_t keepLetters(std::uint64_t points, std::size_t length, const ParaFormat& format) {
    const auto before = static_cast<std::size_t>(std::max(format.hyphenLettersBefore, 1));
    const auto after = static_cast<std::size_t>(std::max(format.hyphenLettersAfter, 1));
    if (before + after > length) return 0;
    const std::size_t places = length - after - before + 1;  // from behind letter `before` - 1 on
    const std::uint64_t allowed = (places >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << places) - 1);
    return points & (allowed << (before - 1));
}

}  // namespace

/// False for what stands between two spaces and is no word, as an address.
bool Paragraph::mayHyphenate(const Piece& piece) const {
    auto at = static_cast<std::size_t>(piece.start);
    while (at > 0 && !endsToken(text_[at - 1]))
        if (static_cast<std::size_t>(piece.start) - --at > longestToken) return false;
    const std::size_t start = at;
    for (; at < text_.size() && (at < static_cast<std::size_t>(piece.limit) || !endsToken(text_[at])); ++at)
        if (forbidsHyphens(text_[at]) || at - start > 2 * longestToken) return false;
    return true;
}

void Paragraph::findHyphens(const Piece& piece, const ParaFormat& format, std::vector<std::int32_t>& borders) {
    borders.clear();
    if (piece.glyphCount == 0 || piece.level % 2 != 0 || !mayHyphenate(piece)) return;
    const auto pieceLimit = static_cast<std::size_t>(piece.limit);
    for (auto at = static_cast<std::size_t>(piece.start); at < pieceLimit;) {
        std::size_t start = at, limit = at;
        while (limit < text_.size() && isLetter(text_[limit]))
            ++limit;
        at = limit + 1;
        while (limit > start && start > 0 && isLetter(text_[start - 1]))
            --start;
        const std::size_t length = limit - start;
        if (length == 0 || length < static_cast<std::size_t>(std::max(format.hyphenWordLetters, 0))) continue;
        std::uint64_t points = hyphenator_.pointsOf(styleOf(piece).format->language, text_.substr(start, length));
        points = keepLetters(points, length, format);
        for (; points != 0; points &= points - 1) {
            const auto border = static_cast<std::int32_t>(start) + std::countr_zero(points) + 1;
            if (border <= piece.start || border > piece.limit) continue;
            if (!isInsideCharacter(static_cast<std::size_t>(border))) borders.push_back(border - piece.start);
        }
    }
}

}  // namespace tarnova
