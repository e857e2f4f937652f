#include "host/pictures/tiff_writer.h"

#include <vector>

#include "host/pictures/tiff_file.h"

namespace tarnova {

namespace {

std::uint16_t photometricOf(PictureColor color) {
    return color == PictureColor::cmyk  ? PHOTOMETRIC_SEPARATED
           : color == PictureColor::rgb ? PHOTOMETRIC_RGB
                                        : PHOTOMETRIC_MINISBLACK;
}

void writeHead(TIFF* tiff, const PictureSamples& samples, std::uint32_t channels, double pixelsPerInch) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, samples.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, samples.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, channels);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometricOf(samples.color));
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
    TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, pixelsPerInch);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, pixelsPerInch);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
    const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
    if (!samples.alpha.empty()) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &alpha);
}

}  // namespace

std::string writeTiff(const PictureSamples& samples, double pixelsPerInch) {
    std::string out;
    if (samples.width == 0 || samples.height == 0) return out;
    TiffMemory memory{{}, &out};
    TiffFile tiff = openTiff(memory, "w");
    if (tiff == nullptr) return {};
    const std::uint32_t components = componentsOf(samples.color),
                        channels = components + (samples.alpha.empty() ? 0 : 1);
    writeHead(tiff.get(), samples, channels, pixelsPerInch);
    std::vector<std::uint8_t> row(std::size_t{samples.width} * channels);
    for (std::uint32_t y = 0; y < samples.height; ++y) {
        for (std::uint32_t x = 0; x < samples.width; ++x) {
            const std::size_t pixel = std::size_t{y} * samples.width + x;
            std::uint8_t* to = row.data() + std::size_t{x} * channels;
            for (std::uint32_t c = 0; c < components; ++c)
                to[c] = samples.values[pixel * components + c];
            if (!samples.alpha.empty()) to[components] = samples.alpha[pixel];
        }
        if (TIFFWriteScanline(tiff.get(), row.data(), y, 0) < 0) return {};
    }
    tiff.reset();
    return out;
}

}  // namespace tarnova
