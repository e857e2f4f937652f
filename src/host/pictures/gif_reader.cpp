// GIF (89a), its first picture, laid on the screen that the file describes. The blocks are giflib's work.

#include <gif_lib.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "host/pictures/picture_format.h"

namespace tarnova {

namespace {

struct GifCloser {
    void operator()(GifFileType* gif) const { DGifCloseFile(gif, nullptr); }
};
using GifFile = std::unique_ptr<GifFileType, GifCloser>;

int give(GifFileType* gif, GifByteType* to, int count) {
    auto& left = *static_cast<std::string_view*>(gif->UserData);
    const std::size_t taken = std::min(static_cast<std::size_t>(std::max(count, 0)), left.size());
    std::memcpy(to, left.data(), taken);
    left.remove_prefix(taken);
    return static_cast<int>(taken);
}

[[noreturn]] void failDamaged() {
    throw PictureFault("The GIF file is damaged.");
}

GifFile opened(std::string_view& left) {
    GifFile gif(DGifOpen(&left, give, nullptr));
    if (gif == nullptr) failDamaged();
    checkPixels(static_cast<std::uint64_t>(gif->SWidth), static_cast<std::uint64_t>(gif->SHeight));
    return gif;
}

/// Reads up to the first picture; gives the index that isn't painted, or -1.
int skipToPicture(GifFileType* gif) {
    int transparent = NO_TRANSPARENT_COLOR;
    for (;;) {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(gif, &type) == GIF_ERROR || type == TERMINATE_RECORD_TYPE) failDamaged();
        if (type == IMAGE_DESC_RECORD_TYPE) break;
        if (type != EXTENSION_RECORD_TYPE) continue;
        int code = 0;
        GifByteType* block = nullptr;
        if (DGifGetExtension(gif, &code, &block) == GIF_ERROR) failDamaged();
        GraphicsControlBlock control{};
        if (code == GRAPHICS_EXT_FUNC_CODE && block != nullptr &&
            DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK) {
            transparent = control.TransparentColor;
        }
        while (block != nullptr) {
            if (DGifGetExtensionNext(gif, &block) == GIF_ERROR) failDamaged();
        }
    }
    if (DGifGetImageDesc(gif) == GIF_ERROR) failDamaged();
    return transparent;
}

bool coversScreen(const GifFileType& gif) {
    const GifImageDesc& image = gif.Image;
    return image.Left <= 0 && image.Top <= 0 && image.Left + image.Width >= gif.SWidth &&
           image.Top + image.Height >= gif.SHeight;
}

void putRow(const GifFileType& gif, const std::vector<GifPixelType>& row, int line, int transparent,
            PictureSamples& out) {
    const ColorMapObject* colors = gif.Image.ColorMap != nullptr ? gif.Image.ColorMap : gif.SColorMap;
    const int y = gif.Image.Top + line;
    if (colors == nullptr) failDamaged();
    for (int i = 0; y < gif.SHeight && i < gif.Image.Width && gif.Image.Left + i < gif.SWidth; ++i) {
        const int index = row[static_cast<std::size_t>(i)];
        const std::size_t pixel =
            static_cast<std::size_t>(y) * out.width + static_cast<std::size_t>(gif.Image.Left + i);
        if (index >= colors->ColorCount) failDamaged();
        const GifColorType& color = colors->Colors[index];
        std::uint8_t* to = out.values.data() + pixel * 3;
        to[0] = color.Red;
        to[1] = color.Green;
        to[2] = color.Blue;
        if (!out.alpha.empty()) out.alpha[pixel] = index == transparent ? 0 : 255;
    }
}

}  // namespace

bool isGif(std::string_view bytes) {
    return bytes.starts_with("GIF87a") || bytes.starts_with("GIF89a");
}

void readGif(std::string_view bytes, const PageChoice&, PictureInfo& out) {
    const GifFile gif = opened(bytes);
    out.raster.width = static_cast<std::uint32_t>(gif->SWidth);
    out.raster.height = static_cast<std::uint32_t>(gif->SHeight);
    const int transparent = skipToPicture(gif.get());
    out.raster.hasAlpha = transparent != NO_TRANSPARENT_COLOR || !coversScreen(*gif);
}

PictureSamples decodeGif(std::string_view bytes, const PictureInfo& info) {
    const GifFile gif = opened(bytes);
    const int transparent = skipToPicture(gif.get());
    PictureSamples out = roomForSamples(info.raster);
    const GifImageDesc& image = gif->Image;
    if (image.Left < 0 || image.Top < 0 || image.Width <= 0 || image.Height <= 0) failDamaged();
    checkPixels(static_cast<std::uint64_t>(image.Width), static_cast<std::uint64_t>(image.Height));
    std::vector<GifPixelType> row(static_cast<std::size_t>(image.Width));
    struct Pass {
        int first, step;
    };
    constexpr Pass interlaced[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};  // GIF89a, appendix E
    for (int pass = 0; pass < (image.Interlace ? 4 : 1); ++pass) {
        const auto [first, step] = image.Interlace ? interlaced[pass] : Pass{0, 1};
        for (int line = first; line < image.Height; line += step) {
            if (DGifGetLine(gif.get(), row.data(), image.Width) == GIF_ERROR) failDamaged();
            putRow(*gif, row, line, transparent, out);
        }
    }
    return out;
}

}  // namespace tarnova
