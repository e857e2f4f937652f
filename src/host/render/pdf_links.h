// The hyperlinks of a PDF file: link annotations (ISO 32000-2, 12.5.6.5).

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "host/render/page_links.h"
#include "host/render/pdf_objects.h"

namespace tarnova {

/// Writes links to the web as they come. Links to pages wait for the end of their group of pages: the target may be a
/// page that comes later, or none.
class PdfLinks {
 public:
    /// The number by which links of the group know the page, and its object.
    void addPage(std::int32_t pageNumber, std::uint32_t page) { pages.push_back({pageNumber, page}); }
    /// Writes the links of a page that is `sheetHeight` points high; gives the object number of their array.
    [[nodiscard]] std::uint32_t write(PdfObjects& objects, std::span<const PageLink> links, double sheetHeight);
    /// No more pages come that the links so far can lead to. Those whose page isn't there are left out.
    void endGroup(PdfObjects& objects);

 private:
    struct Page {
        std::int32_t pageNumber;
        std::uint32_t object;
    };
    struct Waiting {
        std::string entries;  // of the annotation
        std::int32_t pageNumber;
    };
    struct Array {
        std::uint32_t number = 0;
        std::string elements;
        std::vector<Waiting> waiting;
    };

    static void writeLink(PdfObjects& objects, Array& array, const std::string& entries);
    void writeArray(PdfObjects& objects, Array& array);

    std::vector<Array> unfinished;
    std::vector<Page> pages;  // of the group
};

}  // namespace tarnova
