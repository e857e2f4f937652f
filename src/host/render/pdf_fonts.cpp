#include "host/render/pdf_fonts.h"

#include <fmt/format.h>
#include <hb-ot.h>
#include <hb-subset.h>

#include <algorithm>
#include <cmath>
#include <span>

namespace tarnova {

namespace {

struct BlobDeleter {
    void operator()(hb_blob_t* blob) const { hb_blob_destroy(blob); }
};
struct FaceDeleter {
    void operator()(hb_face_t* face) const { hb_face_destroy(face); }
};
struct SubsetInputDeleter {
    void operator()(hb_subset_input_t* input) const { hb_subset_input_destroy(input); }
};
using BlobPtr = std::unique_ptr<hb_blob_t, BlobDeleter>;
using FacePtr = std::unique_ptr<hb_face_t, FaceDeleter>;
using SubsetInputPtr = std::unique_ptr<hb_subset_input_t, SubsetInputDeleter>;

constexpr hb_tag_t cffTable = HB_TAG('C', 'F', 'F', ' ');
constexpr hb_tag_t glyfTable = HB_TAG('g', 'l', 'y', 'f');

std::string_view bytesOf(hb_blob_t* blob) {
    unsigned length = 0;
    const char* data = hb_blob_get_data(blob, &length);
    return {data, length};
}

BlobPtr table(hb_face_t* face, hb_tag_t tag) {
    return BlobPtr(hb_face_reference_table(face, tag));
}

/// A 16-bit number of a font table; 0 when the table is too short.
int numberAt(std::string_view bytes, std::size_t offset) {
    if (bytes.size() < 2 || bytes.size() - 2 < offset) return 0;
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
    return static_cast<std::int16_t>(byte(offset) << 8 | byte(offset + 1));
}

/// What a PDF reader draws glyphs from. Names, character map and layout stay out: the file has them in its own form.
FacePtr subset(hb_face_t* face, std::span<const std::uint16_t> glyphs) {
    const SubsetInputPtr input(hb_subset_input_create_or_fail());
    if (!input) return nullptr;
    hb_subset_input_set_flags(input.get(), HB_SUBSET_FLAGS_RETAIN_GIDS | HB_SUBSET_FLAGS_NO_HINTING);
    hb_set_t* wanted = hb_subset_input_glyph_set(input.get());
    hb_set_add(wanted, 0);
    for (const std::uint16_t glyph : glyphs)
        hb_set_add(wanted, glyph);

    hb_set_t* dropped = hb_subset_input_set(input.get(), HB_SUBSET_SETS_DROP_TABLE_TAG);
    static constexpr hb_tag_t keptTables[] = {cffTable,
                                              glyfTable,
                                              HB_TAG('l', 'o', 'c', 'a'),
                                              HB_TAG('h', 'e', 'a', 'd'),
                                              HB_TAG('h', 'h', 'e', 'a'),
                                              HB_TAG('h', 'm', 't', 'x'),
                                              HB_TAG('m', 'a', 'x', 'p')};
    hb_tag_t tags[64];
    unsigned offset = 0;
    for (;;) {
        unsigned count = std::size(tags);
        hb_face_get_table_tags(face, offset, &count, tags);
        if (count == 0) break;
        for (unsigned i = 0; i < count; ++i) {
            if (std::find(std::begin(keptTables), std::end(keptTables), tags[i]) == std::end(keptTables)) {
                hb_set_add(dropped, tags[i]);
            }
        }
        offset += count;
    }
    return FacePtr(hb_subset_or_fail(face, input.get()));
}

/// Name of a font as a PDF name: letters, digits and a few signs; others would need escapes that some readers drop.
std::string pdfName(std::string_view name) {
    std::string out;
    for (const char c : name) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        if (plain || c == '-' || c == '_' || c == '.' || c == '+') out.push_back(c);
    }
    return out.empty() ? "Font" : out;
}

/// The entries of the font descriptor (ISO 32000-2, 9.8) that are read from the font's tables.
std::string descriptorEntries(const Font& font) {
    const BlobPtr head = table(font.face(), HB_TAG('h', 'e', 'a', 'd'));
    const BlobPtr post = table(font.face(), HB_TAG('p', 'o', 's', 't'));
    const BlobPtr os2 = table(font.face(), HB_TAG('O', 'S', '/', '2'));
    const double scale = 1000.0 / std::max(1u, hb_face_get_upem(font.face()));
    const auto box = [&](std::size_t at) { return std::lround(numberAt(bytesOf(head.get()), at) * scale); };
    const double italicAngle = numberAt(bytesOf(post.get()), 4);
    const bool fixedPitch = numberAt(bytesOf(post.get()), 12) != 0 || numberAt(bytesOf(post.get()), 14) != 0;
    const int weight = std::clamp(numberAt(bytesOf(os2.get()), 4), 100, 1000);
    // Symbolic: the glyphs aren't those of a standard Latin set, which nothing here depends on.
    const int flags = 4 | (fixedPitch ? 1 : 0) | (italicAngle != 0 ? 64 : 0);
    // No table holds the stem; this line through regular (about 85) and bold (about 140) does for substitution.
    const long stem = std::lround(10 + 0.18 * weight);
    return fmt::format("/Flags {}/FontBBox[{} {} {} {}]/ItalicAngle {}/Ascent {}/Descent {}/CapHeight {}/StemV {}",
                       flags, box(36), box(38), box(40), box(42), italicAngle, std::lround(font.ascent()),
                       -std::lround(font.descent()), std::lround(font.capHeight()), stem);
}

constexpr std::string_view mapHead =
    "/CIDInit/ProcSet findresource begin\n12 dict begin\nbegincmap\n"
    "/CIDSystemInfo<</Registry(Adobe)/Ordering(UCS)/Supplement 0>>def\n"
    "/CMapName/Adobe-Identity-UCS def\n/CMapType 2 def\n"
    "1 begincodespacerange\n<0000><FFFF>\nendcodespacerange\n";
constexpr std::string_view mapTail = "endcmap\nCMapName currentdict/CMap defineresource pop\nend\nend\n";

void putHex16(ByteBuffer& out, std::uint32_t value) {
    for (int shift = 12; shift >= 0; shift -= 4)
        out.put("0123456789ABCDEF"[(value >> shift) & 15]);
}

}  // namespace

void putUtf16Hex(ByteBuffer& out, std::u32string_view text) {
    for (const char32_t character : text) {
        const auto code = static_cast<std::uint32_t>(character);
        if (code >= 0x10000) {
            putHex16(out, 0xD800 + ((code - 0x10000) >> 10));
            putHex16(out, 0xDC00 + ((code - 0x10000) & 0x3FF));
        } else {
            putHex16(out, code);
        }
    }
}

PdfFont::PdfFont(const Font& font, std::uint32_t number) : source(font), position(number) {
    rows.resize(hb_face_get_glyph_count(font.face()));
}

float PdfFont::widthOf(std::uint16_t glyph) const {
    // Rounded as the width array will have it, so that a reader's pen and ours don't drift apart.
    return std::max(0.0f, std::round(source.nominalAdvance(glyph) * 100) / 100);
}

bool PdfFont::standsFor(std::uint16_t glyph, std::u32string_view characters) {
    Row& row = rowOf(glyph);
    if (row.text == 0) {
        row.text = isLigature | static_cast<std::uint32_t>(ligatures.size());
        ligatures.emplace_back(characters);
        return true;
    }
    return (row.text & isLigature) != 0 && ligatures[row.text & ~isLigature] == characters;
}

std::u32string PdfFont::textOf(const Row& row) const {
    if (row.text == 0) return {};
    if ((row.text & isLigature) != 0) return ligatures[row.text & ~isLigature];
    return std::u32string(1, static_cast<char32_t>(row.text));
}

void PdfFont::addNotes(std::vector<GlyphNote>& notes) const {
    for (std::size_t glyph = 0; glyph < rows.size(); ++glyph) {
        const Row before = glyph < marked.size() ? marked[glyph] : Row{};
        const Row& now = rows[glyph];
        const bool isUsed = before.advance < 0 && now.advance >= 0, hasText = before.text == 0 && now.text != 0;
        if (!isUsed && !hasText) continue;
        notes.push_back({position, static_cast<std::uint16_t>(glyph), isUsed, hasText ? textOf(now) : std::u32string()});
    }
}

bool PdfFont::agreesWith(const GlyphNote& note) {
    const Row& row = rowOf(note.glyph);
    return note.text.empty() || row.text == 0 || textOf(row) == note.text;
}

void PdfFont::take(const GlyphNote& note) {
    if (note.isUsed) static_cast<void>(use(note.glyph));
    if (note.text.size() == 1) static_cast<void>(standsFor(note.glyph, note.text.front()));
    if (note.text.size() > 1) static_cast<void>(standsFor(note.glyph, note.text));
}

/// Six letters that depend on the glyphs in use, so that two subsets of a font aren't taken for one (9.9.2).
std::string PdfFont::subsetTag() const {
    std::uint64_t hash = 0xCBF29CE484222325u;
    for (std::size_t glyph = 0; glyph < rows.size(); ++glyph) {
        if (rows[glyph].advance >= 0) hash = (hash ^ glyph) * 0x100000001B3u;
    }
    std::string tag;
    for (int i = 0; i < 6; ++i, hash /= 26)
        tag.push_back(static_cast<char>('A' + hash % 26));
    return tag;
}

void PdfFont::putWidths(ByteBuffer& out) const {
    bool open = false;
    for (std::size_t glyph = 0; glyph < rows.size(); ++glyph) {
        const bool used = rows[glyph].advance >= 0;
        if (used && !open) {
            out.putInteger(static_cast<std::int64_t>(glyph));
            out.put('[');
        } else if (used) {
            out.put(' ');
        } else if (open) {
            out.put(']');
        }
        if (used) out.putFixed(ByteBuffer::quantize(static_cast<double>(rows[glyph].advance), 100) * 100, 4);
        open = used;
    }
    if (open) out.put(']');
}

void PdfFont::putToUnicode(ByteBuffer& out) const {
    out.put(mapHead);
    putMappings(out);
    out.put(mapTail);
}

/// In blocks of 100, as many as a block may have (9.10.3).
void PdfFont::putMappings(ByteBuffer& out) const {
    std::vector<std::uint32_t> mapped;
    for (std::uint32_t glyph = 0; glyph < rows.size(); ++glyph) {
        if (rows[glyph].text != 0) mapped.push_back(glyph);
    }
    for (std::size_t start = 0; start < mapped.size(); start += 100) {
        const std::size_t count = std::min<std::size_t>(100, mapped.size() - start);
        out.putInteger(static_cast<std::int64_t>(count));
        out.put(" beginbfchar\n");
        for (std::size_t i = start; i < start + count; ++i) {
            const std::uint32_t text = rows[mapped[i]].text;
            const char32_t single = static_cast<char32_t>(text);
            out.put('<');
            putHex16(out, mapped[i]);
            out.put("><");
            putUtf16Hex(out, (text & isLigature) != 0 ? std::u32string_view(ligatures[text & ~isLigature])
                                                      : std::u32string_view(&single, 1));
            out.put(">\n");
        }
        out.put("endbfchar\n");
    }
}

/// The subset as the file embeds it: the bare CFF table, or a small TrueType file. Empty when the font has no outlines.
std::string PdfFont::program() const {
    // Asked of the whole font: a subset of blanks has no outlines either, and is fine.
    if (!source.isCff() && hb_blob_get_length(table(source.face(), glyfTable).get()) == 0) return {};
    std::vector<std::uint16_t> used;
    for (std::size_t glyph = 0; glyph < rows.size(); ++glyph) {
        if (rows[glyph].advance >= 0) used.push_back(static_cast<std::uint16_t>(glyph));
    }
    const FacePtr face = subset(source.face(), used);
    if (!face) return {};
    const BlobPtr blob = source.isCff() ? table(face.get(), cffTable) : BlobPtr(hb_face_reference_blob(face.get()));
    return std::string(bytesOf(blob.get()));
}

bool PdfFont::write(PdfObjects& objects, std::uint32_t number, std::string& error) const {
    const std::string bytes = program();
    if (bytes.empty()) {
        error = fmt::format("the font \"{} {}\" ({}) can't be embedded: it has no sound TrueType or CFF outlines",
                            source.family(), source.style(), source.path());
        return false;
    }
    const std::string name = subsetTag() + "+" + pdfName(source.postScriptName());
    const std::uint32_t programNumber = objects.reserve();
    objects.writeStream(programNumber,
                        source.isCff() ? "/Subtype/CIDFontType0C" : fmt::format("/Length1 {}", bytes.size()), bytes);
    const std::uint32_t toUnicode = objects.reserve();
    ByteBuffer map;
    putToUnicode(map);
    objects.writeStream(toUnicode, "", map.view());
    const std::uint32_t descendant = writeDescendant(objects, name, programNumber);
    objects.write(number,
                  fmt::format("<</Type/Font/Subtype/Type0/BaseFont/{}/Encoding/Identity-H/DescendantFonts[{} 0 R]"
                              "/ToUnicode {} 0 R>>",
                              name, descendant, toUnicode));
    return true;
}

/// The CID font and its descriptor; gives the number of the first.
std::uint32_t PdfFont::writeDescendant(PdfObjects& objects, const std::string& name,
                                       std::uint32_t programNumber) const {
    const bool isCff = source.isCff();
    const std::uint32_t descriptor = objects.reserve();
    objects.write(descriptor, fmt::format("<</Type/FontDescriptor/FontName/{}{}/{} {} 0 R>>", name,
                                          descriptorEntries(source), isCff ? "FontFile3" : "FontFile2", programNumber));
    ByteBuffer body;
    body.put(fmt::format(
        "<</Type/Font/Subtype/{}/BaseFont/{}/CIDSystemInfo<</Registry(Adobe)/Ordering(Identity)/Supplement 0>>"
        "/FontDescriptor {} 0 R{}/W[",
        isCff ? "CIDFontType0" : "CIDFontType2", name, descriptor, isCff ? "" : "/CIDToGIDMap/Identity"));
    putWidths(body);
    body.put("]>>");
    const std::uint32_t descendant = objects.reserve();
    objects.write(descendant, body.view());
    return descendant;
}

PdfFont& PdfFontTable::use(const Font& font) {
    const std::uint32_t index = font.index();
    if (index >= byFontIndex.size()) byFontIndex.resize(index + std::size_t{1}, nullptr);
    if (byFontIndex[index] == nullptr) {
        inOrder.push_back(std::make_unique<PdfFont>(font, static_cast<std::uint32_t>(inOrder.size())));
        byFontIndex[index] = inOrder.back().get();
    }
    return *byFontIndex[index];
}

void PdfFontTable::mark() {
    for (const auto& font : inOrder)
        font->mark();
    markedCount = inOrder.size();
}

bool PdfFontTable::notesSinceMark(std::vector<GlyphNote>& notes) const {
    for (const auto& font : inOrder)
        font->addNotes(notes);
    return inOrder.size() == markedCount;
}

bool PdfFontTable::takeNotes(const std::vector<GlyphNote>& notes) {
    const bool agree = std::all_of(notes.begin(), notes.end(), [this](const GlyphNote& note) {
        return note.font < inOrder.size() && inOrder[note.font]->agreesWith(note);
    });
    if (!agree) return false;
    for (const GlyphNote& note : notes)
        inOrder[note.font]->take(note);
    return true;
}

bool PdfFontTable::write(PdfObjects& objects, ByteBuffer& dictionary, std::string& error) const {
    for (const auto& font : inOrder) {
        const std::uint32_t number = objects.reserve();
        if (!font->write(objects, number, error)) return false;
        dictionary.put(fmt::format("/F{} {} 0 R", font->number(), number));
    }
    return true;
}

}  // namespace tarnova
