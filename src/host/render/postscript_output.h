// Pages as PostScript, level 2, for printers and for placing: a file of all pages by the Document Structuring
// Conventions 3.0, or one page as EPS. Drawn with cairo from the same display list as the other outputs: text is
// outlines, colours are RGB as in the PNG, coordinates are rounded to a thousandth of a point.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "document/uid.h"
#include "host/render/display_list.h"
#include "host/render/shown_picture.h"

namespace tarnova {

enum class PostScriptKind : std::uint8_t { document, eps };

/// One file from `open` to `finish`, of pages of any sizes. The same pages give the same bytes.
///
/// The functions that say false leave a message for people, with the file's path, in `error()`; the temporary file is
/// then gone, an older file of that name is still there, and every later call says false too.
class PostScriptWriter {
 public:
    PostScriptWriter();
    ~PostScriptWriter();  // without `finish`, nothing of this file stays behind
    PostScriptWriter(const PostScriptWriter&) = delete;
    PostScriptWriter& operator=(const PostScriptWriter&) = delete;

    /// Writes to a temporary file beside `path` until `finish` puts it in its place. `title` (UTF-8) may be empty; what
    /// isn't ASCII in it becomes "?". An EPS takes one page.
    [[nodiscard]] bool open(const std::string& path, const std::string& title, PostScriptKind kind);
    /// Adds a page of the document behind the pages so far. The document needs a composer when it shows text.
    [[nodiscard]] bool addPage(const DocumentModel& document, UID page);
    [[nodiscard]] bool addPage(const DisplayList& page);
    /// At least one page is needed.
    [[nodiscard]] bool finish();

    [[nodiscard]] const std::string& error() const;
    /// Stories of the page added last whose text didn't fit; what doesn't fit isn't drawn.
    [[nodiscard]] const std::vector<OversetText>& oversetOnLastPage() const;
    /// Pictures so far that couldn't be drawn and show as grey boxes.
    [[nodiscard]] const std::vector<PictureProblem>& pictureProblems() const;

 private:
    class File;
    std::unique_ptr<File> file;
};

/// Draws one page as EPS and writes it to `path` through a temporary file. The bounding boxes are the page, not the
/// ink, and nothing is painted beyond them; the ground stays transparent. Text that doesn't fit isn't drawn and is told
/// in `notes`, which may be null, beside pictures that can't be drawn. False: `error` has a message for people, and an
/// older file is still there.
[[nodiscard]] bool writePageEps(const DocumentModel& document, UID page, const std::string& path,
                                const std::string& title, PageNotes* notes, std::string& error);
[[nodiscard]] bool writePageEps(const DisplayList& page, const std::string& path, const std::string& title,
                                std::string& error);

}  // namespace tarnova
