#include "host/render/pdf_outline.h"

#include <fmt/format.h>

#include <utility>

#include "host/render/pdf_metadata.h"

namespace tarnova {

void PdfOutline::addPage(PdfObjects& objects, std::uint32_t page, std::string title) {
    if (root == 0) root = objects.reserve();
    const std::uint32_t number = objects.reserve();
    if (count == 0) {
        first = number;
    } else {
        writeLast(objects, number);
    }
    beforeLast = last.number;
    last = {number, page, std::move(title)};
    ++count;
}

void PdfOutline::writeLast(PdfObjects& objects, std::uint32_t next) {
    std::string body = fmt::format("<</Title{}/Parent {} 0 R", pdfTextString(last.title), root);
    if (beforeLast != 0) body += fmt::format("/Prev {} 0 R", beforeLast);
    if (next != 0) body += fmt::format("/Next {} 0 R", next);
    objects.write(last.number, body + fmt::format("/Dest[{} 0 R/Fit]>>", last.page));
}

std::uint32_t PdfOutline::finish(PdfObjects& objects) {
    if (count == 0) return 0;
    writeLast(objects, 0);
    objects.write(root, fmt::format("<</Type/Outlines/First {} 0 R/Last {} 0 R/Count {}>>", first, last.number, count));
    return root;
}

}  // namespace tarnova
