// JPEG (ISO/IEC 10918). The segments are read here, the pixels are libjpeg's work.

#include <cstddef>
#include <cstdio>
// libjpeg's header needs what stands above.
#include <jpeglib.h>

#include <csetjmp>
#include <cstring>
#include <map>

#include "host/pictures/byte_reader.h"
#include "host/pictures/image_tags.h"
#include "host/pictures/photoshop_resources.h"
#include "host/pictures/picture_format.h"

namespace tarnova {

namespace {

constexpr std::uint8_t markerSof0 = 0xC0, markerSof2 = 0xC2, markerSof15 = 0xCF, markerDht = 0xC4, markerJpg = 0xC8,
                       markerDac = 0xCC, markerRst0 = 0xD0, markerRst7 = 0xD7, markerSoi = 0xD8, markerEoi = 0xD9,
                       markerSos = 0xDA, markerTem = 0x01, markerApp0 = 0xE0, markerApp1 = 0xE1, markerApp2 = 0xE2,
                       markerApp13 = 0xED, markerApp14 = 0xEE;
constexpr std::string_view jfifName("JFIF\0", 5), exifName("Exif\0\0", 6), iccName("ICC_PROFILE\0", 12),
    photoshopName("Photoshop 3.0\0", 14), adobeName("Adobe", 5);

/// What is gathered from the segments in front of the image.
struct JpegFacts {
    PictureInfo& info;
    bool hasFrame = false;
    bool hasScan = false;
    bool hasJfif = false;
    bool hasAdobe = false;
    bool hasResolution = false;
    bool usualCoding = false;  // baseline, extended or progressive with Huffman codes
    bool namedRgb = false;     // the components are called R, G and B
    std::string_view exif{};
    std::map<std::uint8_t, std::string_view> iccParts{};  // by their number
    std::string resources{};
};

void takeFrame(const ByteReader& segment, std::uint8_t marker, JpegFacts& facts) {
    if (facts.hasFrame) throw PictureFault("The JPEG file has two frames.");
    facts.hasFrame = true;
    RasterInfo& raster = facts.info.raster;
    if (segment.u8(0) != 8) throw PictureFault("The JPEG file has other than 8 bits to a sample.");
    raster.height = segment.u16(1);
    raster.width = segment.u16(3);
    checkPixels(raster.width, raster.height);
    const std::uint8_t components = segment.u8(5);
    if (components != 1 && components != 3 && components != 4) {
        throw PictureFault("The JPEG file has " + std::to_string(components) + " components; 1, 3 and 4 are known.");
    }
    raster.color = components == 1 ? PictureColor::gray : components == 3 ? PictureColor::rgb : PictureColor::cmyk;
    facts.usualCoding = marker <= markerSof2;
    facts.namedRgb = components == 3 && segment.u8(6) == 'R' && segment.u8(9) == 'G' && segment.u8(12) == 'B';
}

void takeJfif(const ByteReader& segment, JpegFacts& facts) {
    facts.hasJfif = true;
    const std::uint8_t unit = segment.u8(7);  // 1 inch, 2 centimetre, else a ratio only
    if (unit != 1 && unit != 2) return;
    facts.hasResolution = true;
    const double perInch = unit == 2 ? 2.54 : 1;
    facts.info.raster.xPerInch = segment.u16(8) * perInch;
    facts.info.raster.yPerInch = segment.u16(10) * perInch;
}

void takeSegment(std::uint8_t marker, std::string_view segment, JpegFacts& facts) {
    if (marker >= markerSof0 && marker <= markerSof15 && marker != markerDht && marker != markerJpg &&
        marker != markerDac) {
        takeFrame(ByteReader(segment), marker, facts);
    } else if (marker == markerApp0 && segment.starts_with(jfifName)) {
        takeJfif(ByteReader(segment), facts);
    } else if (marker == markerApp1 && segment.starts_with(exifName)) {
        facts.exif = segment.substr(exifName.size());
    } else if (marker == markerApp2 && segment.starts_with(iccName) && segment.size() > iccName.size() + 2) {
        facts.iccParts[static_cast<std::uint8_t>(segment[iccName.size()])] = segment.substr(iccName.size() + 2);
    } else if (marker == markerApp13 && segment.starts_with(photoshopName)) {
        facts.resources.append(segment.substr(photoshopName.size()));
    } else if (marker == markerApp14 && segment.starts_with(adobeName)) {
        facts.hasAdobe = true;
    }
}

/// The place of the next marker behind coded data, which has a zero behind each byte 255 of its own.
std::size_t endOfScan(const ByteReader& file, std::size_t at) {
    for (;;) {
        const std::string_view left = file.from(at);
        const std::size_t found = left.find('\xFF');
        if (found == std::string_view::npos) throw PictureFault("The file is cut off.");
        at += found;
        const std::uint8_t next = file.u8(at + 1);
        if (next != 0 && next != 0xFF && !(next >= markerRst0 && next <= markerRst7)) return at;
        at += next == 0xFF ? 1 : 2;
    }
}

void readSegments(const ByteReader& file, JpegFacts& facts) {
    for (std::size_t at = 2;;) {
        if (file.u8(at) != 0xFF) throw PictureFault("The JPEG file has bytes where a segment should begin.");
        const std::uint8_t marker = file.u8(at + 1);
        if (marker == 0xFF) {  // fill bytes
            ++at;
            continue;
        }
        at += 2;
        if (marker == markerEoi) return;
        if (marker == markerSoi || marker == markerTem) continue;
        const std::size_t length = file.u16(at);
        if (length < 2) throw PictureFault("A segment of the JPEG file has no length.");
        takeSegment(marker, file.span(at + 2, length - 2), facts);
        at += length;
        if (marker != markerSos) continue;
        facts.hasScan = true;
        at = endOfScan(file, at);
    }
}

/// libjpeg's errors leave by longjmp, so `decodeRows` holds nothing that has a destructor.
struct JpegErrors {
    jpeg_error_mgr manager;
    std::jmp_buf back;
};

[[noreturn]] void leave(j_common_ptr decoder) {
    std::longjmp(reinterpret_cast<JpegErrors*>(decoder->err)->back, 1);
}

/// A file is free to have an unbounded number of scans over the same pixels.
void boundScans(j_common_ptr decoder) {
    constexpr int scanLimit = 500;
    if (reinterpret_cast<j_decompress_ptr>(decoder)->input_scan_number > scanLimit) leave(decoder);
}

bool decodeRows(jpeg_decompress_struct& decoder, jpeg_progress_mgr& progress, JpegErrors& errors,
                std::string_view bytes, std::uint8_t* out, std::uint32_t width, std::uint32_t height,
                std::uint32_t components) {
    if (setjmp(errors.back) != 0) return false;
    jpeg_create_decompress(&decoder);
    decoder.progress = &progress;
    jpeg_mem_src(&decoder, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    jpeg_read_header(&decoder, TRUE);
    decoder.out_color_space = components == 1 ? JCS_GRAYSCALE : components == 3 ? JCS_RGB : JCS_CMYK;
    jpeg_start_decompress(&decoder);
    if (decoder.output_width != width || decoder.output_height != height ||
        decoder.output_components != static_cast<int>(components)) {
        return false;
    }
    while (decoder.output_scanline < height) {
        JSAMPROW row = out + std::size_t{decoder.output_scanline} * width * components;
        jpeg_read_scanlines(&decoder, &row, 1);
    }
    jpeg_finish_decompress(&decoder);
    return true;
}

}  // namespace

bool isJpeg(std::string_view bytes) {
    return bytes.starts_with("\xFF\xD8\xFF");
}

void readJpeg(std::string_view bytes, const PageChoice&, PictureInfo& out) {
    JpegFacts facts{out};
    readSegments(ByteReader(bytes), facts);
    if (!facts.hasFrame || !facts.hasScan) throw PictureFault("The JPEG file has no picture in it.");
    RasterInfo& raster = out.raster;
    if (!facts.hasResolution) facts.hasResolution = readPhotoshopResolution(facts.resources, raster);
    readExif(facts.exif, raster, !facts.hasResolution);
    readPhotoshopPaths(facts.resources, out);
    for (const auto& [number, part] : facts.iccParts)
        raster.iccProfile.append(part);
    raster.jpegInverted = raster.color == PictureColor::cmyk && facts.hasAdobe;
    // Without a mark of Adobe or JFIF the names of the components say RGB to libjpeg, and nothing to a reader of PDF.
    const bool sameColorsInPdf = !facts.namedRgb || facts.hasAdobe || facts.hasJfif;
    raster.jpegPassesThrough = facts.usualCoding && sameColorsInPdf;
}

PictureSamples decodeJpeg(std::string_view bytes, const PictureInfo& info) {
    const RasterInfo& raster = info.raster;
    PictureSamples out = roomForSamples(raster);
    jpeg_decompress_struct decoder{};
    JpegErrors errors{};
    jpeg_progress_mgr progress{};
    decoder.err = jpeg_std_error(&errors.manager);
    errors.manager.error_exit = leave;
    errors.manager.emit_message = [](j_common_ptr, int) {};
    progress.progress_monitor = boundScans;
    const bool whole = decodeRows(decoder, progress, errors, bytes, out.values.data(), raster.width, raster.height,
                                  componentsOf(raster.color));
    jpeg_destroy_decompress(&decoder);
    if (!whole) throw PictureFault("The pixels of the JPEG file are damaged.");
    if (raster.jpegInverted) {
        for (std::uint8_t& value : out.values)
            value = static_cast<std::uint8_t>(255 - value);
    }
    return out;
}

}  // namespace tarnova
