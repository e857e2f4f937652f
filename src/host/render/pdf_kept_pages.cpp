#include "host/render/pdf_kept_pages.h"

#include <cstring>
#include <type_traits>

#include "host/model/placed_picture.h"

namespace tarnova {
namespace {

template <typename Value>
void put(std::string& out, const Value& value) {
    static_assert(std::is_trivially_copyable_v<Value>);
    out.append(reinterpret_cast<const char*>(&value), sizeof value);
}

template <typename Character>
void putText(std::string& out, std::basic_string_view<Character> text) {
    put(out, static_cast<std::uint32_t>(text.size()));
    out.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(Character));
}

class Reader {
 public:
    explicit Reader(std::string_view bytes) : rest(bytes) {}

    template <typename Value>
    [[nodiscard]] Value take() {
        Value value{};
        const std::string_view from = takeBytes(sizeof value);
        if (!from.empty()) std::memcpy(&value, from.data(), sizeof value);
        return value;
    }
    template <typename Character>
    [[nodiscard]] std::basic_string<Character> takeText() {
        const std::string_view from = takeBytes(std::size_t{take<std::uint32_t>()} * sizeof(Character));
        std::basic_string<Character> text(from.size() / sizeof(Character), Character{});
        if (!from.empty()) std::memcpy(text.data(), from.data(), from.size());
        return text;
    }
    [[nodiscard]] std::string_view takeBytes(std::size_t count) {
        if (rest.size() < count) good = false;
        if (!good) return {};
        const std::string_view taken = rest.substr(0, count);
        rest.remove_prefix(count);
        return taken;
    }
    /// Elements that are still to come take at least a byte each.
    [[nodiscard]] std::uint32_t takeCount() {
        const auto count = take<std::uint32_t>();
        if (count > rest.size()) good = false;
        return good ? count : 0;
    }
    [[nodiscard]] bool isGood() const { return good; }

 private:
    std::string_view rest;
    bool good = true;
};

void putLink(std::string& out, const PageLink& link) {
    putText<char>(out, link.target.uri);
    put(out, link.target.pageNumber);
    put(out, link.corners);
}

PageLink takeLink(Reader& reader) {
    PageLink link;
    link.target.uri = reader.takeText<char>();
    link.target.pageNumber = reader.take<std::int32_t>();
    for (PMPoint& corner : link.corners)
        corner = reader.take<PMPoint>();
    return link;
}

/// What opens and bounds a picture. Its clip is in the content already.
void putPicture(std::string& out, const PlacedGraphic& graphic, const std::string& folder) {
    putText<char>(out, pathOfGraphic(graphic, folder));
    put(out, static_cast<std::uint8_t>(graphic.embedded != nullptr ? 1 : 0));
    if (graphic.embedded != nullptr) putText<char>(out, *graphic.embedded);
    put(out, graphic.bounds);
    put(out, graphic.pdfPage);
    put(out, graphic.pdfCrop);
    put(out, static_cast<std::uint8_t>(graphic.pdfTransparent ? 1 : 0));
}

std::shared_ptr<const PlacedGraphic> takePicture(Reader& reader) {
    auto graphic = std::make_shared<PlacedGraphic>();
    graphic->filePath = reader.takeText<char>();
    if (reader.take<std::uint8_t>() != 0) {
        graphic->embedded = std::make_shared<const std::string>(reader.takeText<char>());
    }
    graphic->bounds = reader.take<PMRect>();
    graphic->pdfPage = reader.take<std::int32_t>();
    graphic->pdfCrop = reader.take<std::uint32_t>();
    graphic->pdfTransparent = reader.take<std::uint8_t>() != 0;
    return graphic;
}

DrawnPage takePage(Reader& reader) {
    DrawnPage page;
    page.sheet = reader.take<PMRect>();
    page.pageNumber = reader.take<std::int32_t>();
    page.oversetStories = reader.take<std::int64_t>();
    page.content.isCompressed = reader.take<std::uint8_t>() != 0;
    page.content.bytes = reader.takeBytes(reader.take<std::uint32_t>());
    page.title = reader.takeText<char>();
    page.label.prefix = reader.takeText<char>();
    page.label.style = reader.take<char>();
    page.label.number = reader.take<std::int32_t>();
    const std::uint32_t links = reader.takeCount();
    for (std::uint32_t i = 0; i < links; ++i)
        page.links.push_back(takeLink(reader));
    const std::uint32_t forms = reader.takeCount();
    for (std::uint32_t i = 0; i < forms; ++i)
        page.forms.push_back(reader.take<std::uint32_t>());
    const std::uint32_t pictures = reader.takeCount();
    for (std::uint32_t i = 0; i < pictures; ++i)
        page.pictures.push_back(takePicture(reader));
    return page;
}

}  // namespace

void KeptPages::add(const DrawnPage& page) {
    ++count;
    put(bytes, page.sheet);
    put(bytes, page.pageNumber);
    put(bytes, page.oversetStories);
    put(bytes, static_cast<std::uint8_t>(page.content.isCompressed ? 1 : 0));
    putText<char>(bytes, page.content.bytes);
    putText<char>(bytes, page.title);
    putText<char>(bytes, page.label.prefix);
    put(bytes, page.label.style);
    put(bytes, page.label.number);
    put(bytes, static_cast<std::uint32_t>(page.links.size()));
    for (const PageLink& link : page.links)
        putLink(bytes, link);
    put(bytes, static_cast<std::uint32_t>(page.forms.size()));
    for (const std::uint32_t form : page.forms)
        put(bytes, form);
    put(bytes, static_cast<std::uint32_t>(page.pictures.size()));
    for (const std::shared_ptr<const PlacedGraphic>& picture : page.pictures)
        putPicture(bytes, *picture, page.pictureFolder);
}

std::string KeptPages::finish(const std::vector<GlyphNote>& notes) {
    std::string all;
    put(all, static_cast<std::uint32_t>(notes.size()));
    for (const GlyphNote& note : notes) {
        put(all, note.font);
        put(all, note.glyph);
        put(all, static_cast<std::uint8_t>(note.isUsed ? 1 : 0));
        putText<char32_t>(all, note.text);
    }
    put(all, count);
    return all + bytes;
}

bool readKeptPages(std::string_view bytes, std::vector<DrawnPage>& pages, std::vector<GlyphNote>& notes) {
    Reader reader(bytes);
    const std::uint32_t noteCount = reader.takeCount();
    for (std::uint32_t i = 0; i < noteCount; ++i) {
        GlyphNote note;
        note.font = reader.take<std::uint32_t>();
        note.glyph = reader.take<std::uint16_t>();
        note.isUsed = reader.take<std::uint8_t>() != 0;
        note.text = reader.takeText<char32_t>();
        notes.push_back(std::move(note));
    }
    const std::uint32_t pageCount = reader.takeCount();
    for (std::uint32_t i = 0; i < pageCount && reader.isGood(); ++i)
        pages.push_back(takePage(reader));
    return reader.isGood();
}

}  // namespace tarnova
