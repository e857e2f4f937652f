#include "host/pictures/image_tags.h"

#include "host/pictures/byte_reader.h"

namespace tarnova {

namespace {

constexpr std::uint16_t tagOrientation = 0x0112, tagXResolution = 0x011A, tagYResolution = 0x011B,
                        tagResolutionUnit = 0x0128;
constexpr std::uint16_t unitCentimetre = 3;
constexpr std::size_t entryBytes = 12;

double rationalAt(const ByteReader& block, std::size_t at) {
    const std::uint32_t divisor = block.u32(at + 4);
    return divisor == 0 ? 0 : double(block.u32(at)) / divisor;
}

void readFolder(const ByteReader& block, RasterInfo& out, bool withResolution) {
    const std::size_t folder = block.u32(4);
    double x = 0, y = 0, factor = 1;
    for (std::size_t i = 0, count = block.u16(folder); i < count; ++i) {
        const std::size_t entry = folder + 2 + i * entryBytes;
        switch (block.u16(entry)) {
            case tagOrientation:
                out.orientation = static_cast<std::uint8_t>(block.u16(entry + 8));
                break;
            case tagXResolution:
                x = rationalAt(block, block.u32(entry + 8));
                break;
            case tagYResolution:
                y = rationalAt(block, block.u32(entry + 8));
                break;
            case tagResolutionUnit:
                factor = block.u16(entry + 8) == unitCentimetre ? 2.54 : 1;
                break;
            default:
                break;
        }
    }
    if (!withResolution || x == 0 || y == 0) return;
    out.xPerInch = x * factor;
    out.yPerInch = y * factor;
}

}  // namespace

void readExif(std::string_view block, RasterInfo& out, bool withResolution) try {
    RasterInfo read = out;
    const bool bigEndian = block.starts_with("MM");
    if (!bigEndian && !block.starts_with("II")) return;
    readFolder(ByteReader(block, bigEndian), read, withResolution);
    out = read;
} catch (const PictureFault&) {
}

}  // namespace tarnova
