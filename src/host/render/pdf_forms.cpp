#include "host/render/pdf_forms.h"

#include <bit>

#include "host/render/byte_buffer.h"

namespace tarnova {

namespace {

/// Rounded as it is drawn, so that pages side by side on a spread share in spite of rounding errors.
std::uint64_t thousandths(double length) {
    return static_cast<std::uint64_t>(ByteBuffer::quantize(length, 1000));
}

}  // namespace

const PdfForm* PdfFormTable::find(const DisplayList& page, std::span<const DisplayItem> items) {
    askedKey.clear();
    askedKey.push_back(thousandths(page.page.width()));
    askedKey.push_back(thousandths(page.page.height()));
    for (const DisplayItem& item : items) {
        const PMMatrix& m = item.toPage;
        const bool isTurned = m.a != 1 || m.b != 0 || m.c != 0 || m.d != 1;
        askedKey.push_back(item.itemStamp << 2 | (isTurned ? 2u : 0u) | (item.text != nullptr ? 1u : 0u));
        if (isTurned) {
            // The frame around an item in a text may be turned without the item.
            for (const double value : {m.a, m.b, m.c, m.d})
                askedKey.push_back(std::bit_cast<std::uint64_t>(value));
        }
        askedKey.push_back(thousandths(item.toPage.tx));
        askedKey.push_back(thousandths(item.toPage.ty));
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
