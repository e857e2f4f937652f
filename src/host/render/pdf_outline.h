// The bookmarks of a PDF file: an outline of one level with an entry a page (ISO 32000-2, 12.3.3).

#pragma once

#include <cstdint>
#include <string>

#include "host/render/pdf_objects.h"

namespace tarnova {

/// Writes an entry as soon as the next one is known, and keeps no other.
class PdfOutline {
 public:
    /// `page` is the number of the page's object, `title` UTF-8.
    void addPage(PdfObjects& objects, std::uint32_t page, std::string title);
    /// Writes the rest; gives the object number of the outline, or 0 when no page was added.
    [[nodiscard]] std::uint32_t finish(PdfObjects& objects);

 private:
    void writeLast(PdfObjects& objects, std::uint32_t next);

    struct Entry {
        std::uint32_t number = 0;
        std::uint32_t page = 0;
        std::string title;
    };
    std::uint32_t root = 0;
    std::uint32_t first = 0;
    std::uint32_t beforeLast = 0;
    Entry last;  // isn't written yet
    std::int64_t count = 0;
};

}  // namespace tarnova
