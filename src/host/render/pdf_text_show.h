// The operators that show glyphs of one run: strings of two-byte glyph ids with the adjustments between them
// (ISO 32000-2, 9.4.3).

#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "host/render/byte_buffer.h"

namespace tarnova {

/// Writes "(..)Tj" or "[(..)n(..)]TJ" as the adjustments ask for. Strings are literal: four in five glyph ids of Latin
/// text need no escape, and the result is smaller after compression than hexadecimal. From an operator's first glyph to
/// `close` nothing else may be written to the buffer.
class GlyphShower {
 public:
    /// Shows at most `mostGlyphs` glyphs.
    GlyphShower(ByteBuffer& target, std::uint32_t mostGlyphs)
        : out(target), mostBytes(mostBytesOfGlyph * (std::size_t{mostGlyphs} + 1)) {}

    void glyph(std::uint16_t id) {
        if (at == nullptr) openArray();
        char* to = at;
        if (!stringOpen) *to++ = '(';
        stringOpen = true;
        to = putByte(to, static_cast<char>(id >> 8));
        at = putByte(to, static_cast<char>(id & 255));
    }

    /// Moves the pen of what follows by thousandths of an em to the right. Whole ones are written, the rest is carried
    /// on, so that a line of many fractions still ends where it should.
    void move(float thousandths) { pending = std::clamp(pending + thousandths, -largestMove, largestMove); }

    /// To be called in front of each glyph: writes the move that is due.
    void settle() {
        if (std::fabs(pending) >= 0.5F) writeMove();
    }

    /// Ends the operator, so that another may follow; the carried rest stays.
    void close() {
        if (at == nullptr) return;
        if (stringOpen) *at++ = ')';
        out.commit(static_cast<std::size_t>(at - start));
        if (adjusted) {
            out.put("]TJ\n");
        } else {
            *start = ' ';  // a string alone: white space where the array would begin
            out.put("Tj\n");
        }
        at = nullptr;
        stringOpen = adjusted = false;
    }

 private:
    static constexpr float largestMove = 1e6F;           // a thousand ems; beyond it the text is nowhere
    static constexpr std::size_t mostBytesOfGlyph = 16;  // ")-1000000(" and two escaped bytes

    void openArray() {
        start = at = out.room(mostBytes);
        *at++ = '[';
    }

    void writeMove() {
        // By conversion: lround is a call.
        const int whole = static_cast<int>(pending + (pending < 0 ? -0.5F : 0.5F));
        pending -= static_cast<float>(whole);
        if (at == nullptr) openArray();
        char* to = at;
        if (stringOpen) *to++ = ')';
        stringOpen = false;
        at = ByteBuffer::writeInteger(to, -whole);
        adjusted = true;
    }

    /// What would end the string, begin an escape or be read as a line end (7.3.4.2).
    [[nodiscard]] static char* putByte(char* to, char byte) {
        if (byte == '(' || byte == ')' || byte == '\\') {
            *to++ = '\\';
        } else if (byte == '\r') {
            *to++ = '\\';
            byte = 'r';
        }
        *to++ = byte;
        return to;
    }

    ByteBuffer& out;
    std::size_t mostBytes;
    char* start = nullptr;  // of the operator
    char* at = nullptr;     // behind what is written of it; null: none is open
    float pending = 0;
    bool stringOpen = false;
    bool adjusted = false;
};

}  // namespace tarnova
