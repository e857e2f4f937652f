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
/// text need no escape, and the result is smaller after compression than hexadecimal.
class GlyphShower {
 public:
    explicit GlyphShower(ByteBuffer& target) : out(target) {}

    void glyph(std::uint16_t id) {
        if (!arrayOpen) openArray();
        char* at = out.room(5);
        char* const start = at;
        if (!stringOpen) *at++ = '(';
        stringOpen = true;
        at = putByte(at, static_cast<char>(id >> 8));
        at = putByte(at, static_cast<char>(id & 255));
        out.commit(static_cast<std::size_t>(at - start));
    }

    /// Moves the pen of what follows by thousandths of an em to the right. Whole ones are written, the rest is carried
    /// on, so that a line of many fractions still ends where it should.
    void move(float thousandths) { pending = std::clamp(pending + thousandths, -largestMove, largestMove); }

    /// To be called in front of each glyph: writes the move that is due.
    void settle() {
        if (!(std::fabs(pending) >= 0.5f)) return;
        // By conversion: lround is a call, and this is done for every other glyph.
        const int whole = static_cast<int>(pending + (pending < 0 ? -0.5f : 0.5f));
        pending -= static_cast<float>(whole);
        if (!arrayOpen) openArray();
        if (stringOpen) out.put(')');
        stringOpen = false;
        out.putInteger(-whole);
        adjusted = true;
    }

    /// Ends the operator, so that another may follow; the carried rest stays.
    void close() {
        if (!arrayOpen) return;
        if (stringOpen) out.put(')');
        if (adjusted) {
            out.put("]TJ\n");
        } else {
            out.data()[arrayStart] = ' ';  // a string alone: white space where the array would begin
            out.put("Tj\n");
        }
        arrayOpen = stringOpen = adjusted = false;
    }

 private:
    static constexpr float largestMove = 1e6f;  // a thousand ems; beyond it the text is nowhere

    void openArray() {
        arrayStart = out.size();
        out.put('[');
        arrayOpen = true;
    }

    /// What would end the string, begin an escape or be read as a line end (7.3.4.2).
    [[nodiscard]] static char* putByte(char* at, char byte) {
        if (byte == '(' || byte == ')' || byte == '\\') {
            *at++ = '\\';
        } else if (byte == '\r') {
            *at++ = '\\';
            byte = 'r';
        }
        *at++ = byte;
        return at;
    }

    ByteBuffer& out;
    std::size_t arrayStart = 0;
    float pending = 0;
    bool arrayOpen = false;
    bool stringOpen = false;
    bool adjusted = false;
};

}  // namespace tarnova
