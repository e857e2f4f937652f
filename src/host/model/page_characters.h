// Characters that stand for numbers of pages. In a story each is one character; where it is composed it shows what holds
// for the page on which it stands.
//
// They are noncharacters of Unicode (The Unicode Standard, 23.7), which no text from outside has a use for.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tarnova {

enum class PageCharacter : std::uint8_t {
    pageNumber,          // the page's printed name
    nextPageNumber,      // of the page on which the story goes on; nothing on its last page
    previousPageNumber,  // of the page from which the story comes; nothing on its first page
    sectionMarker,       // of the page's section; nothing without one
    pageCount,           // pages of the document
    sectionPageCount,    // pages of the page's section, of the document where no section starts
};
inline constexpr std::size_t pageCharacterCount = 6;

inline constexpr char32_t firstPageCharacter = 0xFDD0;

[[nodiscard]] constexpr char32_t characterOf(PageCharacter which) {
    return firstPageCharacter + static_cast<char32_t>(which);
}
[[nodiscard]] constexpr bool isPageCharacter(char32_t c) {
    return c - firstPageCharacter < pageCharacterCount;  // what lies below wraps around
}

/// What the characters show on one page, by `PageCharacter`.
using PageTexts = std::array<std::u32string, pageCharacterCount>;

/// The same for the pages that the frames of a story lie on, by frame. Empty for a story that shows none of them.
using StoryPageTexts = std::vector<PageTexts>;

}  // namespace tarnova
