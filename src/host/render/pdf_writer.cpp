#include "host/render/pdf_writer.h"

#include <fmt/format.h>

#include <set>
#include <span>

#include "host/render/page_links.h"
#include "host/render/pdf_content.h"
#include "host/render/pdf_fonts.h"
#include "host/render/pdf_forms.h"
#include "host/render/pdf_kept_pages.h"
#include "host/render/pdf_links.h"
#include "host/render/pdf_metadata.h"
#include "host/render/pdf_objects.h"
#include "host/render/pdf_outline.h"
#include "host/render/pdf_page_labels.h"
#include "host/render/pdf_pictures.h"

namespace tarnova {

namespace {

constexpr std::size_t pagesInNode = 100;

void putReference(ByteBuffer& out, std::uint32_t number) {
    out.putInteger(number);
    out.put(" 0 R");
}

}  // namespace

/// The parts of one file. Pages hang in nodes of 100, and these below the root (ISO 32000-2, 7.7.3); the resources are
/// inherited from the root, one dictionary for all pages and forms.
class PdfWriter::File {
 public:
    [[nodiscard]] bool open(const std::string& path, const PdfOptions& fileOptions) {
        options = fileOptions;
        if (!output.open(path)) return false;
        if (!(options.bleed >= 0 && options.bleed <= pdfMaximumBleed)) {
            return fail(fmt::format("the bleed must be 0 to {} points", pdfMaximumBleed));
        }
        objects.emplace(output, options.compressionLevel, options.objectStreams);
        rootNode = objects->reserve();
        resources = objects->reserve();
        return true;
    }

    [[nodiscard]] bool addPage(const DocumentModel& document, UID page) {
        if (closed()) return false;
        if (!buildDisplayList(document, page, list)) return fail(whyNoDisplayList(document, page));
        drawn.pageNumber = document.pageIndex(page) + 1;
        if (options.bookmarks) drawn.title = document.pageName(page);
        if (options.pageLabels) drawn.label = pageLabelOf(document, page);
        return drawPage(list);
    }

    [[nodiscard]] bool addPage(const DisplayList& page) {
        if (closed()) return false;
        drawn.pageNumber = static_cast<std::int32_t>(pages) + 1;
        drawn.title = std::to_string(drawn.pageNumber);
        drawn.label = {"", 'D', drawn.pageNumber};
        return drawPage(page);
    }

    void keepPages() {
        kept.emplace();
        fonts.mark();
        keptNeedsFile = false;
        languageKnown = !content.language().empty();
    }

    [[nodiscard]] std::optional<std::string> takeKeptPages() {
        std::vector<GlyphNote> notes;
        const bool whole = kept && !keptNeedsFile && languageKnown && fonts.notesSinceMark(notes);
        return whole ? std::optional(kept->finish(notes)) : std::nullopt;
    }

    [[nodiscard]] bool addKeptPages(std::string_view bytes, bool& fits) {
        if (closed()) return false;
        std::vector<DrawnPage> read;
        std::vector<GlyphNote> notes;
        fits = readKeptPages(bytes, read, notes) && fonts.takeNotes(notes);
        if (!fits) return true;
        for (const DrawnPage& page : read)
            placePage(page);
        return !output.failed();
    }

    [[nodiscard]] bool finish() {
        if (closed()) return false;
        if (pages == 0) return fail("it would have no pages");
        links.endGroup(*objects);
        if (!nodePages.empty()) writeNode();
        writeRoot();
        if (!writeResources()) return false;
        writeCatalog();
        const bool written = !output.failed() && output.finish();
        objects.reset();
        return written;
    }

    [[nodiscard]] const std::string& error() const { return output.failed() ? output.error() : notOpen; }

    [[nodiscard]] const std::vector<PictureProblem>& pictureProblems() const { return pictures.problems(); }

    std::int64_t pages = 0;
    std::int64_t oversetCount = 0;
    DisplayList list;

 private:
    struct FormUse {
        std::size_t form;   // index in the table
        std::size_t limit;  // of its items on the page
    };

    [[nodiscard]] bool closed() {
        if (!objects) notOpen = "the PDF file isn't open";
        return !objects || output.failed();
    }

    bool fail(std::string_view reason) {
        output.fail(reason);
        return false;
    }

    /// Draws the sheet that the page is cut from: itself, or with the bleed around it.
    [[nodiscard]] bool drawPage(const DisplayList& page) {
        if (!(page.page.width() > 0 && page.page.height() > 0)) return fail("a page has no area");
        if (options.bleed == 0) {
            if (&page != &list) list.overset = page.overset;
            return drawSheet(page);
        }
        if (&page != &list) list = page;
        const double bleed = options.bleed;
        list.page = {list.page.left - bleed, list.page.top - bleed, list.page.right + bleed, list.page.bottom + bleed};
        for (DisplayItem& item : list.items) {
            item.toPage.tx += bleed;
            item.toPage.ty += bleed;
        }
        return drawSheet(list);
    }

    [[nodiscard]] bool drawSheet(const DisplayList& page) {
        if (!makeForms(page)) return false;
        content.begin(page, false);
        std::size_t nextForm = 0;
        for (std::size_t i = 0; i < page.items.size();) {
            if (page.items[i].repeats) {
                const FormUse& use = formUses[nextForm++];
                content.useForm(forms.forms()[use.form].name);
                i = use.limit;
            } else {
                content.draw(page.items[i++]);
            }
        }
        drawn.sheet = page.page;
        drawn.oversetStories = static_cast<std::int64_t>(page.overset.size());
        drawn.content = objects->pack(content.end());
        drawn.links = linksOf(page);
        drawn.pictures = content.pictures();
        drawn.forms.clear();
        if (!drawn.pictures.empty()) {
            drawn.pictureFolder = page.pictureFolder;
            for (const FormUse& use : formUses)
                drawn.forms.push_back(static_cast<std::uint32_t>(use.form));
        }
        if (kept) {
            kept->add(drawn);
        } else {
            placePage(drawn);
        }
        return !output.failed();
    }

    /// Puts a page that is drawn into the file.
    void placePage(const DrawnPage& page) {
        const std::uint32_t stream = objects->reserve();
        objects->writePacked(stream, "", page.content);
        writePage(page, stream);
        noteForLinks(page.pageNumber);
        oversetCount += page.oversetStories;
        if (options.bookmarks) {
            outline.addPage(*objects, lastPage, options.pagesOfCopy != 0 ? std::to_string(pages) : page.title);
        }
        if (options.pageLabels) labels.addPage(*objects, page.label);
    }

    /// Finds the form of each run of repeating items, and writes those that are new. A reference is shorter than any
    /// drawing, so even a single small item is worth one. False in a fork that would have to write one.
    [[nodiscard]] bool makeForms(const DisplayList& page) {
        formUses.clear();
        for (std::size_t i = 0; i < page.items.size(); ++i) {
            if (!page.items[i].repeats) continue;
            std::size_t limit = i + 1;
            while (limit < page.items.size() && page.items[limit].repeats)
                ++limit;
            const std::span run(page.items.data() + i, limit - i);
            const PdfForm* form = forms.find(page, run);
            keptNeedsFile = keptNeedsFile || (form == nullptr && kept);
            if (keptNeedsFile) return false;
            if (form == nullptr) form = &writeForm(page, run);
            formUses.push_back({static_cast<std::size_t>(form - forms.forms().data()), limit});
            i = limit;
        }
        return true;
    }

    const PdfForm& writeForm(const DisplayList& page, std::span<const DisplayItem> items) {
        content.begin(page, true);
        for (const DisplayItem& item : items)
            content.draw(item);
        body.clear();
        body.put("/Type/XObject/Subtype/Form/BBox");
        putBox(page.page);
        const std::string_view drawing = content.end();
        body.put("/Resources ");
        if (content.pictures().empty()) {
            putReference(body, resources);
        } else {
            putOwnResources(placePictures(content.pictures(), page.pictureFolder), {});
        }
        const std::uint32_t number = objects->reserve();
        objects->writeStream(number, body.view(), drawing);
        return forms.add(number);
    }

    /// The objects of pictures in the order of their names.
    [[nodiscard]] std::vector<std::uint32_t> placePictures(
        const std::vector<std::shared_ptr<const PlacedGraphic>>& shown, const std::string& folder) {
        std::vector<std::uint32_t> numbers;
        for (const auto& graphic : shown)
            numbers.push_back(pictures.place(*objects, *graphic, folder));
        return numbers;
    }

    /// What shows pictures has resources of its own: a dictionary of all pictures of a long job would burden each page.
    void putOwnResources(const std::vector<std::uint32_t>& shown, const std::vector<std::uint32_t>& usedForms) {
        if (fontResources == 0) fontResources = objects->reserve();
        body.put("<</Font ");
        putReference(body, fontResources);
        body.put("/XObject<<");
        for (std::size_t i = 0; i < shown.size(); ++i)
            putXObject("P" + std::to_string(i), shown[i]);
        for (const std::uint32_t form : std::set(usedForms.begin(), usedForms.end()))
            putXObject(forms.forms()[form].name, forms.forms()[form].number);
        body.put(">>>>");
    }

    void putXObject(std::string_view name, std::uint32_t number) {
        body.put('/');
        body.put(name);
        body.put(' ');
        putReference(body, number);
    }

    /// A sheet's box with this much left off on each side.
    void putBox(const PMRect& sheet, double margin = 0) {
        body.put('[');
        for (const double edge : {margin, margin, sheet.width() - margin, sheet.height() - margin}) {
            body.putFixed(ByteBuffer::quantize(edge, 1000), 3);
            body.put(' ');
        }
        body.truncate(body.size() - 1);
        body.put(']');
    }

    /// The page has the number that links know it by; it may be the last of their group.
    void noteForLinks(std::int32_t pageNumber) {
        if (options.pagesOfCopy == 0) {
            links.addPage(pageNumber, lastPage);
            return;
        }
        const auto inCopy = static_cast<std::int32_t>((pages - 1) % options.pagesOfCopy);
        links.addPage(inCopy + 1, lastPage);
        if (inCopy + 1 == options.pagesOfCopy) links.endGroup(*objects);
    }

    void writePage(const DrawnPage& page, std::uint32_t stream) {
        const PMRect& sheet = page.sheet;
        const std::uint32_t annotations = page.links.empty() ? 0 : links.write(*objects, page.links, sheet.height());
        const std::vector<std::uint32_t> shown = placePictures(page.pictures, page.pictureFolder);
        if (nodePages.empty()) {
            nodes.push_back(objects->reserve());
            nodePages.reserve(pagesInNode);
        }
        body.clear();
        body.put("<</Type/Page/Parent ");
        putReference(body, nodes.back());
        for (const std::string_view box : {"/MediaBox", "/CropBox", "/BleedBox", "/TrimBox"}) {
            if (box == "/BleedBox" && options.bleed == 0) continue;  // the CropBox, as without saying so
            body.put(box);
            putBox(sheet, box == "/TrimBox" ? options.bleed : 0);
        }
        body.put("/Contents ");
        putReference(body, stream);
        if (annotations != 0) {
            body.put("/Annots ");
            putReference(body, annotations);
        }
        if (!shown.empty()) {
            body.put("/Resources");
            putOwnResources(shown, page.forms);
        }
        body.put(">>");
        lastPage = objects->reserve();
        objects->write(lastPage, body.view());
        nodePages.push_back(lastPage);
        ++pages;
        if (nodePages.size() == pagesInNode) writeNode();
    }

    void writeNode() {
        putKids(nodePages, static_cast<std::int64_t>(nodePages.size()));
        body.put("/Parent ");
        putReference(body, rootNode);
        body.put(">>");
        objects->write(nodes.back(), body.view());
        nodePages.clear();
    }

    void writeRoot() {
        putKids(nodes, pages);
        body.put("/Resources ");
        putReference(body, resources);
        body.put(">>");
        objects->write(rootNode, body.view());
    }

    void putKids(const std::vector<std::uint32_t>& kids, std::int64_t count) {
        body.clear();
        body.put("<</Type/Pages/Count ");
        body.putInteger(count);
        body.put("/Kids[");
        for (const std::uint32_t kid : kids) {
            putReference(body, kid);
            body.put(' ');
        }
        body.put(']');
    }

    [[nodiscard]] bool writeResources() {
        ByteBuffer fontEntries;
        std::string error;
        if (!fonts.write(*objects, fontEntries, error)) return fail(error);
        if (fontResources != 0) objects->write(fontResources, fmt::format("<<{}>>", fontEntries.view()));
        body.clear();
        body.put("<<");
        if (!fonts.empty()) {
            body.put("/Font<<");
            body.put(fontEntries.view());
            body.put(">>");
        }
        if (!forms.forms().empty()) {
            body.put("/XObject<<");
            for (const PdfForm& form : forms.forms())
                putXObject(form.name, form.number);
            body.put(">>");
        }
        body.put(">>");
        objects->write(resources, body.view());
        return true;
    }

    void writeCatalog() {
        const std::uint32_t metadata = objects->reserve();
        objects->writePlainStream(metadata, "/Type/Metadata/Subtype/XML", pdfXmpPacket(options.title, options.creator));
        const std::uint32_t catalog = objects->reserve();
        std::string entries = fmt::format("<</Type/Catalog/Pages {} 0 R/Metadata {} 0 R", rootNode, metadata);
        if (!content.language().empty()) entries += "/Lang" + pdfTextString(content.language());
        if (const std::uint32_t number = outline.finish(*objects); number != 0) {
            entries += fmt::format("/Outlines {} 0 R/PageMode/UseOutlines", number);
        }
        if (const std::uint32_t number = labels.finish(*objects); number != 0) {
            entries += fmt::format("/PageLabels {} 0 R", number);
        }
        entries += pictures.catalogEntries();
        if (!options.title.empty()) entries += "/ViewerPreferences<</DisplayDocTitle true>>";
        objects->write(catalog, entries + ">>");
        const std::uint32_t info = objects->reserve();
        objects->write(info, pdfInfoDictionary(options.title, options.creator));
        objects->finish(fmt::format("/Root {} 0 R/Info {} 0 R", catalog, info));
    }

    PdfOptions options;
    OutputFile output;
    std::optional<PdfObjects> objects;
    PdfFontTable fonts;
    PdfFormTable forms;
    PdfPictures pictures;
    PdfContent content{fonts};
    PdfOutline outline;
    PdfLinks links;
    PdfPageLabels labels;
    std::string notOpen;
    ByteBuffer body;
    std::uint32_t rootNode = 0;
    std::uint32_t resources = 0;
    std::uint32_t fontResources = 0;  // the fonts, for what has resources of its own; 0: nothing has yet
    std::uint32_t lastPage = 0;       // the object of the page added last
    std::vector<std::uint32_t> nodes;
    std::vector<std::uint32_t> nodePages;  // of the last node, while it isn't written
    std::vector<FormUse> formUses;
    DrawnPage drawn;                // the page under work
    std::optional<KeptPages> kept;  // in a fork
    bool keptNeedsFile = false;
    bool languageKnown = false;  // before the first page that was kept
};

PdfWriter::PdfWriter() : file(std::make_unique<File>()) {}
PdfWriter::~PdfWriter() = default;

bool PdfWriter::open(const std::string& path, const PdfOptions& options) {
    file = std::make_unique<File>();
    return file->open(path, options);
}

bool PdfWriter::addPage(const DocumentModel& document, UID page) {
    return file->addPage(document, page);
}
bool PdfWriter::addPage(const DisplayList& page) {
    return file->addPage(page);
}
void PdfWriter::keepPages() {
    file->keepPages();
}
std::optional<std::string> PdfWriter::takeKeptPages() {
    return file->takeKeptPages();
}
bool PdfWriter::addKeptPages(std::string_view kept, bool& fits) {
    return file->addKeptPages(kept, fits);
}
bool PdfWriter::finish() {
    return file->finish();
}
const std::string& PdfWriter::error() const {
    return file->error();
}
std::int64_t PdfWriter::pageCount() const {
    return file->pages;
}
std::int64_t PdfWriter::oversetStories() const {
    return file->oversetCount;
}
const std::vector<OversetText>& PdfWriter::oversetOnLastPage() const {
    return file->list.overset;
}
const std::vector<PictureProblem>& PdfWriter::pictureProblems() const {
    return file->pictureProblems();
}

}  // namespace tarnova
