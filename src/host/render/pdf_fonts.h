// The fonts of one PDF file: which glyphs it shows, what text they stand for, and at the end the embedded subsets.
//
// Glyph ids stay those of the font (Identity-H; ISO 32000-2, 9.7), so that pages can be written before it is known
// which glyphs the file needs.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/render/byte_buffer.h"
#include "host/render/pdf_objects.h"
#include "host/text/font.h"

namespace tarnova {

/// What a page newly needs of a glyph: that it is embedded, and what it stands for.
struct GlyphNote {
    std::uint32_t font = 0;  // `PdfFont::number`
    std::uint16_t glyph = 0;
    bool isUsed = false;
    std::u32string text;  // empty: nothing new
};

/// One font of the file: a row for each glyph.
class PdfFont {
 public:
    PdfFont(const Font& font, std::uint32_t number);

    [[nodiscard]] const Font& font() const { return source; }
    /// Counts from 0 in the order of first use in the file; the resource is called "F" and this number.
    [[nodiscard]] std::uint32_t number() const { return position; }

    /// Advance as the file's width array has it, in thousandths of an em. Marks the glyph as used.
    [[nodiscard]] float use(std::uint16_t glyph) {
        Row& row = rowOf(glyph);
        if (row.advance < 0) row.advance = widthOf(glyph);
        return row.advance;
    }

    /// Says that the glyph stands for this text. False when it already stands for another: the place that shows it must
    /// then carry its own text.
    [[nodiscard]] bool standsFor(std::uint16_t glyph, char32_t character) {
        Row& row = rowOf(glyph);
        if (row.text == 0) row.text = static_cast<std::uint32_t>(character);
        return row.text == static_cast<std::uint32_t>(character);
    }
    [[nodiscard]] bool standsFor(std::uint16_t glyph, std::u32string_view characters);
    /// `use` and `standsFor` at once: sets `advance` when the glyph stands for the character.
    [[nodiscard]] bool useFor(std::uint16_t glyph, char32_t character, float& advance) {
        if (!standsFor(glyph, character)) return false;
        advance = use(glyph);
        return true;
    }

    /// Remembers the rows; `addNotes` then tells of those that have changed since.
    void mark() { marked = rows; }
    void addNotes(std::vector<GlyphNote>& notes) const;
    /// Whether the glyph may stand for the note's text here, and taking the note over.
    [[nodiscard]] bool agreesWith(const GlyphNote& note);
    void take(const GlyphNote& note);

    /// Writes the font's objects; `number` is that of the font dictionary. False: `error` says why it can't be
    /// embedded.
    [[nodiscard]] bool write(PdfObjects& objects, std::uint32_t number, std::string& error) const;

 private:
    struct Row {
        float advance = -1;      // below 0: not used
        std::uint32_t text = 0;  // a code point; with the top bit an index into `ligatures`; 0 nothing yet
    };
    static constexpr std::uint32_t isLigature = 0x80000000u;

    [[nodiscard]] Row& rowOf(std::uint16_t glyph) {
        if (glyph >= rows.size()) rows.resize(glyph + std::size_t{1});
        return rows[glyph];
    }
    [[nodiscard]] float widthOf(std::uint16_t glyph) const;
    [[nodiscard]] std::u32string textOf(const Row& row) const;
    [[nodiscard]] std::string subsetTag() const;
    [[nodiscard]] std::string program() const;
    [[nodiscard]] std::uint32_t writeDescendant(PdfObjects& objects, const std::string& name,
                                                std::uint32_t programNumber) const;
    void putWidths(ByteBuffer& out) const;
    void putToUnicode(ByteBuffer& out) const;
    void putMappings(ByteBuffer& out) const;

    const Font& source;
    std::uint32_t position;
    std::vector<Row> rows;
    std::vector<Row> marked;
    std::vector<std::u32string> ligatures;
};

/// All fonts of one file.
class PdfFontTable {
 public:
    /// The row of a font; made when it is new.
    [[nodiscard]] PdfFont& use(const Font& font);
    [[nodiscard]] bool empty() const { return inOrder.empty(); }

    /// Marks the fonts, so that notes can be taken of what pages need from here on, in another process for this one.
    void mark();
    /// False when a page needed a font that wasn't there when the fonts were marked.
    [[nodiscard]] bool notesSinceMark(std::vector<GlyphNote>& notes) const;
    /// Takes notes of another process over; false, and nothing is taken, when a glyph stands for another text here.
    [[nodiscard]] bool takeNotes(const std::vector<GlyphNote>& notes);

    /// Writes all fonts and appends the entries of the resources' font dictionary ("/F0 7 0 R").
    [[nodiscard]] bool write(PdfObjects& objects, ByteBuffer& dictionary, std::string& error) const;

 private:
    std::vector<PdfFont*> byFontIndex;
    std::vector<std::unique_ptr<PdfFont>> inOrder;
    std::size_t markedCount = 0;
};

/// UTF-16 in hexadecimal, big end first, without brackets.
void putUtf16Hex(ByteBuffer& out, std::u32string_view text);

}  // namespace tarnova
