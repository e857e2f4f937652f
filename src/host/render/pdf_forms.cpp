#include "host/render/pdf_forms.h"

#include <bit>

namespace tarnova {

const PdfForm* PdfFormTable::find(const DisplayList& page, std::span<const DisplayItem> items) {
    askedKey.clear();
    for (const double edge : {page.page.left, page.page.top, page.page.right, page.page.bottom}) {
        askedKey.push_back(std::bit_cast<std::uint64_t>(edge));
    }
    for (const DisplayItem& item : items) {
        askedKey.push_back(item.itemStamp << 1 | (item.text != nullptr ? 1u : 0u));
        if (item.text != nullptr) askedKey.push_back(item.storyStamp);
    }
    askedHash = askedKey.size();
    for (const std::uint64_t word : askedKey) {
        askedHash = (askedHash ^ word) * 0x9E3779B97F4A7C15u;
        askedHash ^= askedHash >> 32;
    }
    const auto [first, limit] = byHash.equal_range(askedHash);
    for (auto it = first; it != limit; ++it) {
        if (all[it->second].key == askedKey) return &all[it->second];
    }
    return nullptr;
}

const PdfForm& PdfFormTable::add(std::uint32_t objectNumber) {
    byHash.emplace(askedHash, all.size());
    return all.emplace_back(PdfForm{askedKey, "X" + std::to_string(all.size()), objectNumber});
}

}  // namespace tarnova
