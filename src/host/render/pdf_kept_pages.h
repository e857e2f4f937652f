// Pages of a PDF file that are drawn in a process of their own and put into the file by another: as bytes.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "document/geometry.h"
#include "host/render/page_links.h"
#include "host/render/pdf_fonts.h"
#include "host/render/pdf_objects.h"
#include "host/render/pdf_page_labels.h"

namespace tarnova {

/// A page that is drawn and not yet in the file.
struct DrawnPage {
    PMRect sheet;
    std::int32_t pageNumber = 1;  // by which links of its document know it
    std::int64_t oversetStories = 0;
    PdfObjects::PackedData content;  // of what drew it last, or of the bytes that it was read from
    std::vector<PageLink> links;
    std::vector<std::uint32_t> forms;  // that a page with pictures shows: of the table, as often as it shows them
    std::vector<std::shared_ptr<const PlacedGraphic>> pictures;  // as `PdfContent::pictures`
    std::string pictureFolder;                                   // from which their relative paths count
    std::string title;                                           // of its bookmark
    PageLabel label;
};

/// Gathers pages, and in the end what they need of the fonts.
class KeptPages {
 public:
    void add(const DrawnPage& page);
    [[nodiscard]] std::string finish(const std::vector<GlyphNote>& notes);

 private:
    std::string bytes;
    std::uint32_t count = 0;
};

/// Reads what `finish` gave, in the same run of the same program. False when the bytes end early; contents refer to the
/// bytes.
[[nodiscard]] bool readKeptPages(std::string_view bytes, std::vector<DrawnPage>& pages, std::vector<GlyphNote>& notes);

}  // namespace tarnova
