// WebP, its first picture, by libwebp.

#include <webp/decode.h>
#include <webp/demux.h>

#include <memory>

#include "host/pictures/picture_format.h"

namespace tarnova {

namespace {

struct AnimationCloser {
    void operator()(WebPAnimDecoder* decoder) const { WebPAnimDecoderDelete(decoder); }
};

const std::uint8_t* bytesOf(std::string_view text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

[[noreturn]] void failDamaged() {
    throw PictureFault("The WebP file is damaged.");
}

std::string profileOf(std::string_view bytes) {
    const WebPData data{bytesOf(bytes), bytes.size()};
    const std::unique_ptr<WebPDemuxer, decltype(&WebPDemuxDelete)> file(WebPDemux(&data), WebPDemuxDelete);
    WebPChunkIterator chunk{};
    if (file == nullptr || WebPDemuxGetChunk(file.get(), "ICCP", 1, &chunk) == 0) return {};
    std::string out(reinterpret_cast<const char*>(chunk.chunk.bytes), chunk.chunk.size);
    WebPDemuxReleaseChunkIterator(&chunk);
    return out;
}

/// The first picture of an animation, on its whole canvas, with four bytes a pixel.
bool decodeFirst(std::string_view bytes, std::vector<std::uint8_t>& out) {
    const WebPData data{bytesOf(bytes), bytes.size()};
    const std::unique_ptr<WebPAnimDecoder, AnimationCloser> decoder(WebPAnimDecoderNew(&data, nullptr));
    std::uint8_t* pixels = nullptr;
    int time = 0;
    if (decoder == nullptr || WebPAnimDecoderGetNext(decoder.get(), &pixels, &time) == 0) return false;
    out.assign(pixels, pixels + out.size());
    return true;
}

}  // namespace

bool isWebp(std::string_view bytes) {
    return bytes.size() > 12 && bytes.starts_with("RIFF") && bytes.substr(8, 4) == "WEBP";
}

void readWebp(std::string_view bytes, const PageChoice&, PictureInfo& out) {
    WebPBitstreamFeatures features{};
    if (WebPGetFeatures(bytesOf(bytes), bytes.size(), &features) != VP8_STATUS_OK) failDamaged();
    out.raster.width = static_cast<std::uint32_t>(features.width);
    out.raster.height = static_cast<std::uint32_t>(features.height);
    checkPixels(out.raster.width, out.raster.height);
    out.raster.hasAlpha = features.has_alpha != 0 || features.has_animation != 0;
    out.raster.iccProfile = profileOf(bytes);
}

PictureSamples decodeWebp(std::string_view bytes, const PictureInfo& info) {
    WebPBitstreamFeatures features{};
    if (WebPGetFeatures(bytesOf(bytes), bytes.size(), &features) != VP8_STATUS_OK) failDamaged();
    const RasterInfo& raster = info.raster;
    PictureSamples out{raster.width, raster.height, raster.color, {}, {}};
    const std::size_t channels = raster.hasAlpha ? 4 : 3;
    out.values.resize(channels * raster.width * raster.height);
    const auto stride = static_cast<int>(channels * raster.width);
    const auto decode = raster.hasAlpha ? WebPDecodeRGBAInto : WebPDecodeRGBInto;
    const bool whole = features.has_animation != 0 ? decodeFirst(bytes, out.values)
                                                   : decode(bytesOf(bytes), bytes.size(), out.values.data(),
                                                            out.values.size(), stride) != nullptr;
    if (!whole) failDamaged();
    if (raster.hasAlpha) splitAlpha(out);
    return out;
}

}  // namespace tarnova
