// The pictures of a PDF file: each content is written once, as it is where PDF can hold it, and forgotten.

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/render/byte_buffer.h"
#include "host/render/pdf_objects.h"
#include "host/render/pdf_placed_pages.h"
#include "host/render/shown_picture.h"

namespace tarnova {

/// Pictures as XObjects that fill the unit square, upright. Memory holds a key and a number for each.
class PdfPictures {
 public:
    /// The XObject of a picture (a relative path counts from `folder`), written when the file doesn't have its content
    /// yet. For one that can't be drawn it is a grey box with a cross.
    [[nodiscard]] std::uint32_t place(PdfObjects& objects, const PlacedGraphic& graphic, const std::string& folder);

    /// The pictures that couldn't be drawn so far.
    [[nodiscard]] const std::vector<PictureProblem>& problems() const { return found; }
    /// What they add to the catalog.
    [[nodiscard]] std::string catalogEntries() const { return pages.layersEntry(); }

 private:
    [[nodiscard]] std::uint32_t write(PdfObjects& objects, const Picture& picture);
    [[nodiscard]] std::uint32_t writeRaster(PdfObjects& objects, const Picture& picture);
    [[nodiscard]] std::uint32_t writeJpeg(PdfObjects& objects, const PictureInfo& info, std::string_view bytes);
    [[nodiscard]] std::uint32_t writeSamples(PdfObjects& objects, const PictureInfo& info,
                                             const PictureSamples& samples);
    [[nodiscard]] std::uint32_t writePage(PdfObjects& objects, const Picture& picture);
    [[nodiscard]] std::uint32_t writeHolder(PdfObjects& objects, std::string_view before, std::uint32_t held);
    [[nodiscard]] std::uint32_t placeholder(PdfObjects& objects, const PMRect& bounds);
    void beginImage(std::uint32_t width, std::uint32_t height, int bits);
    void putColorSpace(PdfObjects& objects, PictureColor color, const std::string& profile);

    std::map<ContentKey, std::uint32_t> written;
    std::map<std::string, std::uint32_t> profiles;                                // by their bytes
    std::map<std::pair<std::int64_t, std::int64_t>, std::uint32_t> placeholders;  // by size, thousandths of a point
    std::vector<PictureProblem> found;
    PdfPlacedPages pages;
    ByteBuffer body;
};

}  // namespace tarnova
