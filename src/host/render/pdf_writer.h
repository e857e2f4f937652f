// Writes pages to a PDF file as they come, and forgets them.
//
// What repeats from page to page (items and stories older than the document's template mark) is written once, as a Form
// XObject, and only referred to afterwards. Memory holds the cross-reference, the forms' keys and one table of glyphs
// for each font, never pages. The same pages give the same bytes.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "document/uid.h"
#include "host/render/display_list.h"
#include "host/render/shown_picture.h"

namespace tarnova {

inline constexpr double pdfMaximumBleed = 720;  // points

struct PdfOptions {
    std::string title;                // shown by viewers; empty: none
    std::string creator = "Tarnova";  // the program that made the pages
    int compressionLevel = 1;         // 0 (none) to 12
    bool objectStreams = true;        // clear: a classic cross-reference table, readable by the oldest programs
    bool bookmarks = false;           // an entry a page, by the page's printed name; copies count through the file

    /// Viewers name the pages as the sections of their document do. For pages of one document: where it comes in
    /// pieces, each piece would begin to count anew.
    bool pageLabels = false;

    /// Pages of a copy of the template, where the file's pages are copies: a link to page 2 then leads to the second
    /// page of its own copy. 0: to the second page of the document.
    std::int32_t pagesOfCopy = 0;

    /// Points that the paper is larger on each side, 0 to `pdfMaximumBleed`. What is drawn beyond the page's edge shows
    /// there, to be cut off: MediaBox, CropBox and BleedBox hold it, TrimBox is the page. On a spread of several pages
    /// only items that touch the page are drawn.
    double bleed = 0;
};

/// One file from `open` to `finish`. Pages may come from one document after another as long as these are copies of one
/// template: what repeats is known by its stamp.
///
/// The functions that say false leave a message for people, with the file's path, in `error()`; the temporary file is
/// then gone, an older file of that name is still there, and every later call says false too.
class PdfWriter {
 public:
    PdfWriter();
    ~PdfWriter();  // without `finish`, nothing of this file stays behind
    PdfWriter(const PdfWriter&) = delete;
    PdfWriter& operator=(const PdfWriter&) = delete;

    /// Writes to a temporary file beside `path` until `finish` puts it in its place.
    [[nodiscard]] bool open(const std::string& path, const PdfOptions& options);
    /// Adds a page of the document behind the pages so far. The document needs a composer when it shows text.
    [[nodiscard]] bool addPage(const DocumentModel& document, UID page);
    /// The same for a page that is a list already; its swatches are used during the call only.
    [[nodiscard]] bool addPage(const DisplayList& page);
    // Pages drawn by several processes, each a fork of this one that draws other pages of the run. The bytes of the
    // file are those of a single process.

    /// In a fork: pages that are added from here on are kept, and nothing is written any more.
    void keepPages();
    /// In a fork: the pages that were kept. Nothing when they need a font or a form that isn't in the file yet: then
    /// they can only be drawn where the file is.
    [[nodiscard]] std::optional<std::string> takeKeptPages();
    /// Adds the pages that a fork has kept. `fits` is false, and nothing is added, when the file has changed since in a
    /// way that the pages don't know of; they must be drawn here then.
    [[nodiscard]] bool addKeptPages(std::string_view kept, bool& fits);

    /// Writes fonts, page tree and cross-reference, and puts the file in its place. At least one page is needed.
    [[nodiscard]] bool finish();

    [[nodiscard]] const std::string& error() const;
    [[nodiscard]] std::int64_t pageCount() const;
    /// Stories so far whose text didn't fit; what doesn't fit isn't drawn.
    [[nodiscard]] std::int64_t oversetStories() const;
    /// Those of the page added last.
    [[nodiscard]] const std::vector<OversetText>& oversetOnLastPage() const;
    /// Pictures so far that couldn't be drawn and show as grey boxes; in a fork none.
    [[nodiscard]] const std::vector<PictureProblem>& pictureProblems() const;

 private:
    class File;
    std::unique_ptr<File> file;
};

}  // namespace tarnova
