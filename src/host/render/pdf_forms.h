// Which repeated runs of items a PDF file already has as Form XObjects.

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/render/display_list.h"

namespace tarnova {

struct PdfForm {
    std::vector<std::uint64_t> key;
    std::string name;  // of the resource
    std::uint32_t number = 0;
};

/// Forms by what they show: the stamps of the items and of their text, where these stand on the page, and the page's
/// size. A look-up allocates nothing.
class PdfFormTable {
 public:
    /// The form of a run of repeating items of the page, or null when the file has none yet; `add` then makes it.
    [[nodiscard]] const PdfForm* find(const DisplayList& page, std::span<const DisplayItem> items);
    /// The form of the run that `find` was asked for last.
    const PdfForm& add(std::uint32_t objectNumber);

    [[nodiscard]] const std::vector<PdfForm>& forms() const { return all; }

 private:
    std::vector<PdfForm> all;
    std::unordered_multimap<std::uint64_t, std::size_t> byHash;
    std::vector<std::uint64_t> askedKey;
    std::uint64_t askedHash = 0;
};

}  // namespace tarnova
