#include "host/render/pdf_page_labels.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "host/model/page_numbers.h"
#include "host/render/pdf_metadata.h"

namespace tarnova {

namespace {

constexpr int rangesInFullLeaf = 100;

/// The sign of a numbering style. A viewer would write a number that the style can't in its own way, where the page
/// itself has arabic figures.
char styleSign(std::int32_t numberingStyle, std::int32_t number) {
    static constexpr char signs[] = {'D', 'R', 'r', 'A', 'a'};
    const bool known = numberingStyle > 0 && numberingStyle < static_cast<std::int32_t>(std::size(signs));
    if (!known || pageNumberText(number, numberingStyle) == std::to_string(number)) return 'D';
    return signs[numberingStyle];
}

/// The number of a page in the section with this index. Sections that continue count on from the one in front.
std::int32_t numberIn(const DocumentModel& document, const std::vector<sectionRec>& sections, std::size_t index,
                      std::int32_t pageIndex) {
    while (sections[index].continues) {
        if (index == 0) return pageIndex + 1;
        --index;
    }
    return sections[index].startNumber + pageIndex - document.pageIndex(sections[index].startPage);
}

}  // namespace

PageLabel pageLabelOf(const DocumentModel& document, UID page) {
    const std::int32_t pageIndex = document.pageIndex(page);
    if (pageIndex < 0) return {document.pageName(page), 0, 1};
    const std::vector<sectionRec> sections = document.sections();
    const auto behind = std::upper_bound(sections.begin(), sections.end(), pageIndex,
                                         [&document](std::int32_t index, const sectionRec& section) {
                                             return index < document.pageIndex(section.startPage);
                                         });
    if (behind == sections.begin()) return {"", 'D', pageIndex + 1};
    const sectionRec& section = *(behind - 1);
    const std::int32_t number =
        numberIn(document, sections, static_cast<std::size_t>(behind - 1 - sections.begin()), pageIndex);
    if (number < 1) return {document.pageName(page), 0, 1};  // a PDF counts from 1
    return {section.includePrefix ? section.prefix : std::string(), styleSign(section.numberingStyle, number), number};
}

void PdfPageLabels::addPage(PdfObjects& objects, PageLabel label) {
    if (pages == 0 || label != next) beginRange(objects, label);
    next = std::move(label);
    if (next.style != 0) ++next.number;
    ++pages;
}

void PdfPageLabels::beginRange(PdfObjects& objects, const PageLabel& label) {
    plain = pages == 0 && label == PageLabel{};
    if (rangesInLeaf == rangesInFullLeaf) writeLeaf(objects);
    if (rangesInLeaf++ == 0) firstOfLeaf = pages;
    lastOfLeaf = pages;
    ranges += fmt::format("{}<<", pages);
    if (label.style != 0) ranges += fmt::format("/S/{}", label.style);
    if (!label.prefix.empty()) ranges += "/P" + pdfTextString(label.prefix);
    if (label.number != 1) ranges += fmt::format("/St {}", label.number);
    ranges += ">>";
}

void PdfPageLabels::writeLeaf(PdfObjects& objects) {
    leaves.push_back(objects.reserve());
    objects.write(leaves.back(), fmt::format("<</Limits[{} {}]/Nums[{}]>>", firstOfLeaf, lastOfLeaf, ranges));
    ranges.clear();
    rangesInLeaf = 0;
}

std::uint32_t PdfPageLabels::finish(PdfObjects& objects) {
    if (pages == 0 || plain) return 0;
    writeLeaf(objects);
    std::string kids;
    for (const std::uint32_t leaf : leaves)
        kids += fmt::format("{} 0 R ", leaf);
    const std::uint32_t root = objects.reserve();
    objects.write(root, fmt::format("<</Kids[{}]>>", kids));
    return root;
}

}  // namespace tarnova
