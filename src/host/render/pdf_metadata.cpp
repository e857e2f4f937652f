#include "host/render/pdf_metadata.h"

#include <fmt/format.h>
#include <unicode/utf8.h>

#include <algorithm>

#include "host/render/pdf_fonts.h"

namespace tarnova {

namespace {

constexpr std::string_view producer = "Tarnova";

std::u32string fromUtf8(std::string_view text) {
    std::u32string out;
    const auto length = static_cast<std::int32_t>(text.size());
    for (std::int32_t at = 0; at < length;) {
        UChar32 character = 0;
        U8_NEXT(text.data(), at, length, character);
        out.push_back(character < 0 ? U'\uFFFD' : static_cast<char32_t>(character));
    }
    return out;
}

void appendUtf8(std::string& out, char32_t character) {
    char bytes[U8_MAX_LENGTH];
    std::int32_t count = 0;
    U8_APPEND_UNSAFE(bytes, count, static_cast<UChar32>(character));
    out.append(bytes, static_cast<std::size_t>(count));
}

/// XML text: its own signs escaped, what XML 1.0 doesn't allow left out.
std::string xmlText(std::string_view utf8) {
    std::string out;
    for (const char32_t c : fromUtf8(utf8)) {
        const bool allowed = c == U'\t' || c == U'\n' || c == U'\r' || (c >= U' ' && c != 0xFFFE && c != 0xFFFF);
        if (c == U'<') {
            out += "&lt;";
        } else if (c == U'>') {
            out += "&gt;";
        } else if (c == U'&') {
            out += "&amp;";
        } else if (allowed) {
            appendUtf8(out, c);
        }
    }
    return out;
}

}  // namespace

std::string pdfTextString(std::string_view utf8) {
    const bool plain = std::all_of(utf8.begin(), utf8.end(), [](char c) { return c >= ' ' && c < 0x7F; });
    if (!plain) {
        ByteBuffer hex;
        putUtf16Hex(hex, fromUtf8(utf8));
        return fmt::format("<FEFF{}>", hex.view());
    }
    std::string out = "(";
    for (const char c : utf8) {
        if (c == '(' || c == ')' || c == '\\') out.push_back('\\');
        out.push_back(c);
    }
    return out + ")";
}

std::string pdfInfoDictionary(std::string_view title, std::string_view creator) {
    std::string out = "<<";
    if (!title.empty()) out += "/Title" + pdfTextString(title);
    if (!creator.empty()) out += "/Creator" + pdfTextString(creator);
    return out + "/Producer" + pdfTextString(producer) + ">>";
}

std::string pdfXmpPacket(std::string_view title, std::string_view creator) {
    std::string properties;
    if (!title.empty()) {
        properties += fmt::format(
            "<dc:title><rdf:Alt><rdf:li xml:lang=\"x-default\">{}</rdf:li></rdf:Alt></dc:title>\n", xmlText(title));
    }
    if (!creator.empty()) properties += fmt::format("<xmp:CreatorTool>{}</xmp:CreatorTool>\n", xmlText(creator));
    return fmt::format(
        "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
        "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
        "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
        "<rdf:Description rdf:about=\"\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\" "
        "xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\" xmlns:pdf=\"http://ns.adobe.com/pdf/1.3/\">\n"
        "<dc:format>application/pdf</dc:format>\n{}<pdf:Producer>{}</pdf:Producer>\n"
        "</rdf:Description>\n</rdf:RDF>\n</x:xmpmeta>\n<?xpacket end=\"r\"?>",
        properties, producer);
}

}  // namespace tarnova
