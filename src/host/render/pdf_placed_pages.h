// Pages of other PDF files as Form XObjects of ours: their operators, fonts, colours and pictures as they are, nothing
// drawn anew.

#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "document/geometry.h"
#include "host/render/byte_buffer.h"
#include "host/render/pdf_objects.h"

namespace tarnova {

/// What the pages of one file have in common (fonts, colour spaces, pictures) comes into our file once.
class PdfPlacedPages {
 public:
    PdfPlacedPages();
    ~PdfPlacedPages();
    PdfPlacedPages(const PdfPlacedPages&) = delete;
    PdfPlacedPages& operator=(const PdfPlacedPages&) = delete;

    /// Writes a page (from 0) of a whole file as a form that shows what lies within `box`, in the page's own
    /// coordinates; `matrix` becomes the form's. Gives its number. 0: nothing was written, because the page isn't there
    /// or can't be read.
    [[nodiscard]] std::uint32_t write(PdfObjects& objects, std::shared_ptr<const std::string> fileBytes,
                                      std::int32_t page, const PMRect& box, const PMMatrix& matrix);

    /// The layers of the pages so far, for the catalog, so that those that were hidden stay so; "" without any.
    [[nodiscard]] std::string layersEntry() const;

 private:
    using FileKey = std::pair<std::size_t, std::size_t>;  // length and hash
    struct OpenFile;
    struct Copier;
    struct Layer {
        std::uint32_t number;
        bool isHidden;
    };

    [[nodiscard]] OpenFile& open(std::shared_ptr<const std::string> bytes);
    void writeGathered(PdfObjects& objects, const Copier& copier);

    std::deque<std::unique_ptr<OpenFile>> recent;
    std::map<FileKey, std::map<int, std::uint32_t>> copied;  // by file and its object: the number of ours
    std::vector<Layer> layers;
    ByteBuffer body;
};

/// A file with one page of another, of which `box` is shown; "" when it can't be read.
[[nodiscard]] std::string croppedPage(const std::string& fileBytes, std::int32_t page, const PMRect& box);

}  // namespace tarnova
