#include "host/render/postscript_output.h"

#include <cairo-ps.h>

#include <cmath>
#include <optional>

#include "host/render/cairo_painter.h"
#include "host/render/cairo_target.h"
#include "host/render/output_file.h"
#include "host/render/postscript_stream.h"

namespace tarnova {

namespace {

constexpr std::size_t longestTitle = 200;  // bytes; a comment line of the structuring conventions holds 255

/// A text line in parentheses (DSC 3.0, 4.6).
std::string titleComment(const std::string& title) {
    std::string text;
    for (const char c : title) {
        if (text.size() >= longestTitle) break;
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0) == 0x80) continue;  // the rest of a character that gave its "?" already
        if (c == '(' || c == ')' || c == '\\') text.push_back('\\');
        text.push_back(byte >= ' ' && byte < 0x7F ? c : '?');
    }
    return "%%Title: (" + text + ")";
}

}  // namespace

class PostScriptWriter::File {
 public:
    [[nodiscard]] bool open(const std::string& path, const std::string& title, bool isEps) {
        eps = isEps;
        if (!output.open(path)) return false;
        stream.emplace(output, eps);
        surface.reset(cairo_ps_surface_create_for_stream(PostScriptStream::take, &*stream, 1, 1));
        cairo_ps_surface_restrict_to_level(surface.get(), CAIRO_PS_LEVEL_2);
        cairo_ps_surface_set_eps(surface.get(), eps ? 1 : 0);
        if (!title.empty()) cairo_ps_surface_dsc_comment(surface.get(), titleComment(title).c_str());
        return true;
    }

    [[nodiscard]] bool addPage(const DocumentModel& document, UID page) {
        if (closed()) return false;
        if (!buildDisplayList(document, page, list)) return fail(whyNoDisplayList(document, page));
        overset = list.overset;
        return drawPage(list);
    }

    [[nodiscard]] bool addPage(const DisplayList& page) {
        if (closed()) return false;
        overset = page.overset;
        return drawPage(page);
    }

    [[nodiscard]] bool finish() {
        if (closed()) return false;
        if (!stream->hasPages()) return fail("it would have no pages");
        cairo_surface_finish(surface.get());
        if (!good(cairo_surface_status(surface.get()))) return false;
        surface.reset();
        return output.finish();
    }

    [[nodiscard]] const std::string& error() const { return output.failed() ? output.error() : notOpen; }

    std::vector<OversetText> overset;
    std::vector<PictureProblem> pictures;

 private:
    [[nodiscard]] bool closed() {
        if (!surface) notOpen = "the PostScript file isn't open";
        return !surface || output.failed();
    }

    bool fail(std::string_view reason) {
        output.fail(reason);
        return false;
    }

    [[nodiscard]] bool good(cairo_status_t status) {
        if (status != CAIRO_STATUS_SUCCESS) output.fail(cairo_status_to_string(status));
        return !output.failed();
    }

    /// cairo's pages are whole points high, counted from the top; the page goes to the lower left corner, where
    /// PostScript counts from.
    [[nodiscard]] bool drawPage(const DisplayList& page) {
        const PMPoint size{page.page.width(), page.page.height()};
        if (!(size.x > 0 && size.y > 0)) return fail("a page has no area");
        if (eps && stream->hasPages()) return fail("an EPS file has one page");
        stream->addPageSize(size);
        const double wholeHeight = std::ceil(size.y);
        cairo_ps_surface_set_size(surface.get(), std::ceil(size.x), wholeHeight);
        const ContextPtr context(cairo_create(surface.get()), cairo_destroy);
        cairo_translate(context.get(), 0, wholeHeight - size.y);
        cairo_rectangle(context.get(), 0, 0, size.x, size.y);
        cairo_clip(context.get());
        CairoPainter(context.get(), page, pictures).paintPage();
        cairo_show_page(context.get());
        return good(cairo_status(context.get()));
    }

    bool eps = false;
    // In the order in which they need each other: the surface writes to the stream, the stream to the file.
    OutputFile output;
    std::optional<PostScriptStream> stream;
    SurfacePtr surface{nullptr, cairo_surface_destroy};
    DisplayList list;
    std::string notOpen;
};

PostScriptWriter::PostScriptWriter() : file(std::make_unique<File>()) {}
PostScriptWriter::~PostScriptWriter() = default;

bool PostScriptWriter::open(const std::string& path, const std::string& title, PostScriptKind kind) {
    file = std::make_unique<File>();
    return file->open(path, title, kind == PostScriptKind::eps);
}
bool PostScriptWriter::addPage(const DocumentModel& document, UID page) {
    return file->addPage(document, page);
}
bool PostScriptWriter::addPage(const DisplayList& page) {
    return file->addPage(page);
}
bool PostScriptWriter::finish() {
    return file->finish();
}
const std::string& PostScriptWriter::error() const {
    return file->error();
}
const std::vector<OversetText>& PostScriptWriter::oversetOnLastPage() const {
    return file->overset;
}
const std::vector<PictureProblem>& PostScriptWriter::pictureProblems() const {
    return file->pictures;
}

namespace {

[[nodiscard]] bool writeList(const DisplayList& page, const std::string& path, const std::string& title,
                             PageNotes& notes, std::string& error) {
    PostScriptWriter writer;
    const bool written = writer.open(path, title, PostScriptKind::eps) && writer.addPage(page) && writer.finish();
    if (!written) error = writer.error();
    const std::vector<PictureProblem>& pictures = writer.pictureProblems();
    notes.pictures.insert(notes.pictures.end(), pictures.begin(), pictures.end());
    return written;
}

}  // namespace

bool writePageEps(const DisplayList& page, const std::string& path, const std::string& title, std::string& error) {
    PageNotes ignored;
    return writeList(page, path, title, ignored, error);
}

bool writePageEps(const DocumentModel& document, UID page, const std::string& path, const std::string& title,
                  PageNotes* notes, std::string& error) {
    DisplayList list;
    PageNotes ignored;
    return listForFile(document, page, path, list, notes, error) &&
           writeList(list, path, title, notes == nullptr ? ignored : *notes, error);
}

}  // namespace tarnova
