#include "host/render/pdf_links.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace tarnova {

namespace {

void putLength(ByteBuffer& out, double points) {
    out.put(' ');
    out.putFixed(ByteBuffer::quantize(points, 1000), 3);
}

/// What every annotation of a link has: no border, and for a turned one its corners. It is marked to be printed, as
/// archives demand, and leaves nothing on paper.
std::string annotationEntries(const PageLink& link, double sheetHeight) {
    const PMRect bounds = boundsOf(link);
    ByteBuffer out;
    out.put("<</Type/Annot/Subtype/Link/F 4/Border[0 0 0]/Rect[");
    for (const double edge : {bounds.left, sheetHeight - bounds.bottom, bounds.right, sheetHeight - bounds.top})
        putLength(out, edge);
    out.put(']');
    if (!isUpright(link)) {
        out.put("/QuadPoints[");
        for (const PMPoint& corner : link.corners) {
            putLength(out, corner.x);
            putLength(out, sheetHeight - corner.y);
        }
        out.put(']');
    }
    return std::string(out.view());
}

/// A URI is ASCII without a backslash (`LinkTarget`).
std::string uriString(const std::string& uri) {
    std::string out = "(";
    for (const char c : uri) {
        if (c == '(' || c == ')') out += '\\';
        out += c;
    }
    return out + ")";
}

}  // namespace

std::uint32_t PdfLinks::write(PdfObjects& objects, std::span<const PageLink> links, double sheetHeight) {
    Array array;
    array.number = objects.reserve();
    for (const PageLink& link : links) {
        std::string entries = annotationEntries(link, sheetHeight);
        if (link.target.pageNumber != 0) {
            array.waiting.push_back({std::move(entries), link.target.pageNumber});
        } else {
            writeLink(objects, array, entries + "/A<</S/URI/URI" + uriString(link.target.uri) + ">>");
        }
    }
    const std::uint32_t number = array.number;
    if (array.waiting.empty()) {
        writeArray(objects, array);
    } else {
        unfinished.push_back(std::move(array));
    }
    return number;
}

void PdfLinks::writeLink(PdfObjects& objects, Array& array, const std::string& entries) {
    const std::uint32_t number = objects.reserve();
    objects.write(number, entries + ">>");
    array.elements += fmt::format("{} 0 R ", number);
}

void PdfLinks::writeArray(PdfObjects& objects, Array& array) {
    for (const Waiting& link : array.waiting) {
        const auto page = std::lower_bound(pages.begin(), pages.end(), link.pageNumber,
                                           [](const Page& at, std::int32_t number) { return at.pageNumber < number; });
        if (page == pages.end() || page->pageNumber != link.pageNumber) continue;
        writeLink(objects, array, link.entries + fmt::format("/Dest[{} 0 R/Fit]", page->object));
    }
    objects.write(array.number, "[" + array.elements + "]");
}

void PdfLinks::endGroup(PdfObjects& objects) {
    if (!unfinished.empty()) {
        std::stable_sort(pages.begin(), pages.end(),
                         [](const Page& a, const Page& b) { return a.pageNumber < b.pageNumber; });
    }
    for (Array& array : unfinished)
        writeArray(objects, array);
    unfinished.clear();
    pages.clear();
}

}  // namespace tarnova
