// Characters of a story that act on its lines instead of being shown. None of them occurs in ordinary text.

#pragma once

namespace tarnova {

inline constexpr char32_t indentToHere = 0x06;    // the paragraph's further lines begin where this one stands
inline constexpr char32_t rightIndentTab = 0x08;  // moves the text behind it to the line's far side
inline constexpr char32_t pageBreak = 0x0C;       // what follows begins on the next page that the text flows to,
inline constexpr char32_t columnBreak = 0x0E;     // in the next column,
inline constexpr char32_t frameBreak = 0x0F;      // or in the next frame

inline constexpr char32_t softHyphen = 0xAD;       // allows a hyphen, seen at a line's end only
inline constexpr char32_t noBreakHyphen = 0x2011;
inline constexpr char32_t forcedLineEnd = 0x2028;  // ends the line and not the paragraph

}  // namespace tarnova
