// How viewers name the pages of a PDF file: the numbers that the sections of the document give them (ISO 32000-2,
// 12.4.2).

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "document/uid.h"
#include "host/model/document_model.h"
#include "host/render/pdf_objects.h"

namespace tarnova {

/// A prefix and a number in a style. Read as a text it is the page's printed name.
struct PageLabel {
    std::string prefix;       // UTF-8
    char style = 'D';         // as in a PDF: D, R, r, A or a; 0: the prefix is all
    std::int32_t number = 1;  // from 1

    friend bool operator==(const PageLabel&, const PageLabel&) = default;
};

/// The label of a page by the section that it lies in; its index in the document without one.
[[nodiscard]] PageLabel pageLabelOf(const DocumentModel& document, UID page);

/// Gathers the ranges in which labels count on and writes them as they come, a hundred an object.
class PdfPageLabels {
 public:
    /// The label of the next page of the file.
    void addPage(PdfObjects& objects, PageLabel label);
    /// Writes the rest; gives the object number of the number tree, or 0 when the pages count from 1 as they do without
    /// labels.
    [[nodiscard]] std::uint32_t finish(PdfObjects& objects);

 private:
    void beginRange(PdfObjects& objects, const PageLabel& label);
    void writeLeaf(PdfObjects& objects);

    PageLabel next;  // the label that would go on with the range
    std::int64_t pages = 0;
    std::int64_t firstOfLeaf = 0, lastOfLeaf = 0;  // pages where ranges begin, from 0
    int rangesInLeaf = 0;
    bool plain = true;  // one range, as without labels
    std::string ranges;
    std::vector<std::uint32_t> leaves;
};

}  // namespace tarnova
