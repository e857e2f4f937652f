#include "host/render/pdf_placed_pages.h"

#include <fmt/format.h>

#include <qpdf/Buffer.hh>
#include <qpdf/Pipeline.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>
#include <set>
#include <stdexcept>

namespace tarnova {

namespace {

constexpr std::size_t openFilesLimit = 4;
constexpr std::size_t contentBytesLimit = std::size_t{256} << 20;  // of a page whose content comes in pieces

/// Takes decoded content, as much of it as a page may have.
class ContentPipe final : public Pipeline {
 public:
    ContentPipe() : Pipeline("content", nullptr) {}
    void write(unsigned char const* data, std::size_t size) override {
        if (size > contentBytesLimit - content.size()) throw std::runtime_error("the content of a page is too long");
        content.append(reinterpret_cast<const char*>(data), size);
    }
    void finish() override {}
    std::string content;
};

}  // namespace

struct PdfPlacedPages::OpenFile {
    OpenFile(std::shared_ptr<const std::string> fileBytes, FileKey itsKey) : key(itsKey), bytes(std::move(fileBytes)) {
        pdf.setSuppressWarnings(true);
        pdf.processMemoryFile("picture", bytes->data(), bytes->size());
        pages = QPDFPageDocumentHelper(pdf).getAllPages();
        noteHiddenLayers();
    }

    FileKey key;
    std::shared_ptr<const std::string> bytes;  // which `pdf` reads from
    QPDF pdf;
    std::vector<QPDFPageObjectHelper> pages;
    std::set<QPDFObjGen> hiddenLayers;

 private:
    /// Those that the file's default configuration turns off (ISO 32000-2, 8.11.4.3).
    void noteHiddenLayers() {
        QPDFObjectHandle properties = pdf.getRoot().getKey("/OCProperties");
        if (!properties.isDictionary()) return;
        QPDFObjectHandle usual = properties.getKey("/D");
        const bool offAtFirst = usual.isDictionary() && usual.getKey("/BaseState").isNameAndEquals("/OFF");
        if (offAtFirst) {
            for (QPDFObjectHandle layer : properties.getKey("/OCGs").aitems())
                hiddenLayers.insert(layer.getObjGen());
        }
        if (!usual.isDictionary()) return;
        for (QPDFObjectHandle layer : usual.getKey("/OFF").aitems())
            hiddenLayers.insert(layer.getObjGen());
        if (!offAtFirst) return;
        for (QPDFObjectHandle layer : usual.getKey("/ON").aitems())
            hiddenLayers.erase(layer.getObjGen());
    }
};

/// Gathers a form and all objects it needs before anything is written: a stream that turns out to be damaged then
/// leaves our file as it was.
struct PdfPlacedPages::Copier {
    Copier(OpenFile& source, std::map<int, std::uint32_t>& numbersOfFile) : file(source), known(numbersOfFile) {}

    struct Gathered {
        QPDFObjectHandle object;
        std::shared_ptr<Buffer> data;  // of a stream, as it is stored
    };

    /// Everything that a value refers to and that isn't in our file yet.
    void gather(QPDFObjectHandle value) {
        std::vector<QPDFObjectHandle> waiting{value};
        while (!waiting.empty()) {
            QPDFObjectHandle next = waiting.back();
            waiting.pop_back();
            if (next.isIndirect() && !take(next)) continue;
            if (next.isArray()) {
                for (QPDFObjectHandle element : next.aitems())
                    waiting.push_back(element);
            } else if (next.isDictionary() || next.isStream()) {
                for (const auto& [key, member] : (next.isStream() ? next.getDict() : next).ditems()) {
                    if (isCopied(next, key)) waiting.push_back(member);
                }
            }
        }
    }

    /// False when the object is known, or a page, which nothing that is drawn needs.
    bool take(QPDFObjectHandle& object) {
        const int id = object.getObjectID();
        if (known.count(id) != 0 || fresh.count(id) != 0 || isPage(object)) return false;
        fresh.emplace(id, Gathered{object, object.isStream() ? object.getRawStreamData() : nullptr});
        return true;
    }

    static bool isPage(QPDFObjectHandle& object) {
        return object.isDictionaryOfType("/Page") || object.isDictionaryOfType("/Pages");
    }

    /// What tells of the stored form of a stream is written anew, and what leads out of the file is left behind.
    static bool isCopied(QPDFObjectHandle holder, const std::string& key) {
        if (key == "/StructParent" || key == "/StructParents") return false;
        return !holder.isStream() || (key != "/Length" && key != "/F" && key != "/FFilter" && key != "/FDecodeParms");
    }

    void put(ByteBuffer& out, QPDFObjectHandle value) const {
        if (value.isIndirect()) {
            const auto number = known.find(value.getObjectID());
            out.put(number == known.end() ? "null" : fmt::format("{} 0 R", number->second));
        } else {
            putDirect(out, value);
        }
    }

    void putDirect(ByteBuffer& out, QPDFObjectHandle value) const {
        if (value.isArray()) {
            out.put('[');
            for (QPDFObjectHandle element : value.aitems()) {
                put(out, element);
                out.put(' ');
            }
            out.put(']');
        } else if (value.isDictionary()) {
            out.put("<<");
            putMembers(out, value, value);
            out.put(">>");
        } else {
            out.put(value.unparseResolved());
        }
    }

    void putMembers(ByteBuffer& out, QPDFObjectHandle holder, QPDFObjectHandle dictionary) const {
        for (const auto& [key, member] : dictionary.ditems()) {
            if (!isCopied(holder, key)) continue;
            out.put(QPDFObjectHandle::newName(key).unparse());
            out.put(' ');
            put(out, member);
        }
    }

    OpenFile& file;
    std::map<int, std::uint32_t>& known;
    std::map<int, Gathered> fresh;  // by object of the file
};

namespace {

/// What a page brings to its form.
class FormParts {
 public:
    explicit FormParts(QPDFPageObjectHelper& page)
        : resources(page.getAttribute("/Resources", false)), group(page.getAttribute("/Group", false)) {
        QPDFObjectHandle contents = page.getObjectHandle().getKey("/Contents");
        if (contents.isArray() && contents.getArrayNItems() == 1) contents = contents.getArrayItem(0);
        if (contents.isStream()) {
            // One stream goes through as it is stored.
            filter = contents.getDict().getKey("/Filter");
            filterParameters = contents.getDict().getKey("/DecodeParms");
            stored = contents.getRawStreamData();
        } else {
            ContentPipe pipe;
            page.pipeContents(&pipe);
            joined = std::move(pipe.content);
        }
    }
    [[nodiscard]] std::string_view content() const {
        if (stored == nullptr) return joined;
        return {reinterpret_cast<const char*>(stored->getBuffer()), stored->getSize()};
    }

    [[nodiscard]] bool isPlain() { return filter.isNull(); }

    QPDFObjectHandle resources, group;
    QPDFObjectHandle filter = QPDFObjectHandle::newNull(), filterParameters = QPDFObjectHandle::newNull();

 private:
    std::shared_ptr<Buffer> stored;
    std::string joined;
};

}  // namespace

PdfPlacedPages::PdfPlacedPages() = default;
PdfPlacedPages::~PdfPlacedPages() = default;

PdfPlacedPages::OpenFile& PdfPlacedPages::open(std::shared_ptr<const std::string> bytes) {
    for (const auto& file : recent) {
        if (file->bytes == bytes) return *file;
    }
    const FileKey key{bytes->size(), std::hash<std::string>{}(*bytes)};
    auto opened = std::make_unique<OpenFile>(std::move(bytes), key);
    if (recent.size() == openFilesLimit) recent.pop_front();
    return *recent.emplace_back(std::move(opened));
}

std::uint32_t PdfPlacedPages::write(PdfObjects& objects, std::shared_ptr<const std::string> fileBytes,
                                    std::int32_t pageIndex, const PMRect& box, const PMMatrix& m) try {
    OpenFile& file = open(std::move(fileBytes));
    if (pageIndex < 0 || static_cast<std::size_t>(pageIndex) >= file.pages.size()) return 0;
    QPDFPageObjectHelper& page = file.pages[static_cast<std::size_t>(pageIndex)];
    Copier copier(file, copied[file.key]);
    FormParts parts(page);
    copier.gather(parts.resources);
    copier.gather(parts.group);
    copier.gather(parts.filter);
    copier.gather(parts.filterParameters);
    writeGathered(objects, copier);

    body.clear();
    body.put(fmt::format("/Type/XObject/Subtype/Form/BBox[{:.4f} {:.4f} {:.4f} {:.4f}]", box.left, box.top, box.right,
                         box.bottom));
    body.put(fmt::format("/Matrix[{:.12f} {:.12f} {:.12f} {:.12f} {:.12f} {:.12f}]", m.a, m.b, m.c, m.d, m.tx, m.ty));
    const auto putMember = [&](std::string_view key, QPDFObjectHandle value) {
        if (value.isNull()) return;
        body.put(key);
        copier.put(body, value);
    };
    putMember("/Resources ", parts.resources);
    putMember("/Group ", parts.group);
    putMember("/Filter ", parts.filter);
    putMember("/DecodeParms ", parts.filterParameters);
    const std::uint32_t number = objects.reserve();
    if (parts.isPlain()) {
        objects.writeStream(number, body.view(), parts.content());
    } else {
        objects.writePlainStream(number, body.view(), parts.content());
    }
    return number;
} catch (const std::exception&) {
    return 0;
}

void PdfPlacedPages::writeGathered(PdfObjects& objects, const Copier& copier) {
    for (const auto& [id, gathered] : copier.fresh)
        copier.known.emplace(id, objects.reserve());
    for (const auto& [id, gathered] : copier.fresh) {
        QPDFObjectHandle object = gathered.object;
        const std::uint32_t number = copier.known.at(id);
        body.clear();
        if (!object.isStream()) {
            copier.putDirect(body, object);
            objects.write(number, body.view());
            if (object.isDictionaryOfType("/OCG")) {
                layers.push_back({number, copier.file.hiddenLayers.count(object.getObjGen()) != 0});
            }
            continue;
        }
        QPDFObjectHandle dictionary = object.getDict();
        copier.putMembers(body, object, dictionary);
        const std::string_view data(reinterpret_cast<const char*>(gathered.data->getBuffer()),
                                    gathered.data->getSize());
        if (dictionary.hasKey("/Filter")) {
            objects.writePlainStream(number, body.view(), data);
        } else {
            objects.writeStream(number, body.view(), data);
        }
    }
}

std::string PdfPlacedPages::layersEntry() const {
    if (layers.empty()) return {};
    std::string all, hidden;
    for (const Layer& layer : layers) {
        all += fmt::format("{} 0 R ", layer.number);
        if (layer.isHidden) hidden += fmt::format("{} 0 R ", layer.number);
    }
    return fmt::format("/OCProperties<</OCGs[{}]/D<</OFF[{}]>>>>", all, hidden);
}

std::string croppedPage(const std::string& fileBytes, std::int32_t pageIndex, const PMRect& box) try {
    QPDF source, target;
    source.setSuppressWarnings(true);
    source.processMemoryFile("picture", fileBytes.data(), fileBytes.size());
    const auto pages = QPDFPageDocumentHelper(source).getAllPages();
    if (pageIndex < 0 || static_cast<std::size_t>(pageIndex) >= pages.size()) return {};
    QPDFPageObjectHelper page = pages[static_cast<std::size_t>(pageIndex)];
    const auto shown = QPDFObjectHandle::newFromRectangle({box.left, box.top, box.right, box.bottom});
    page.getObjectHandle().replaceKey("/MediaBox", shown);
    page.getObjectHandle().replaceKey("/CropBox", shown);
    target.emptyPDF();
    QPDFPageDocumentHelper(target).addPage(page, true);
    QPDFWriter writer(target);
    writer.setOutputMemory();
    writer.write();
    const std::shared_ptr<Buffer> written = writer.getBufferSharedPointer();
    return {reinterpret_cast<const char*>(written->getBuffer()), written->getSize()};
} catch (const std::exception&) {
    return {};
}

}  // namespace tarnova
