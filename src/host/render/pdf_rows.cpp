#include "host/render/pdf_rows.h"

#include <fmt/format.h>

#include <cstdlib>

namespace tarnova {

namespace {

enum Filter : std::uint8_t { filterNone, filterLeft, filterUp, filterAverage, filterPaeth, filterCount };

std::uint8_t paeth(int left, int up, int upLeft) {
    const int toLeft = std::abs(up - upLeft), toUp = std::abs(left - upLeft), toBoth = std::abs(left + up - 2 * upLeft);
    const int nearest = toLeft <= toUp && toLeft <= toBoth ? left : toUp <= toBoth ? up : upLeft;
    return static_cast<std::uint8_t>(nearest);
}

/// Writes a row less what the filter foretells of it. `above` is the row above, zeros above the first. The result
/// estimates what the row costs: the sum of the differences, as signed bytes.
std::uint64_t filterRow(Filter filter, const std::uint8_t* row, const std::uint8_t* above, std::size_t size,
                        std::size_t pixelBytes, std::uint8_t* out) {
    std::uint64_t cost = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const int left = i < pixelBytes ? 0 : row[i - pixelBytes];
        const int upLeft = i < pixelBytes ? 0 : above[i - pixelBytes];
        int foretold = 0;
        switch (filter) {
            case filterLeft:
                foretold = left;
                break;
            case filterUp:
                foretold = above[i];
                break;
            case filterAverage:
                foretold = (left + above[i]) / 2;
                break;
            case filterPaeth:
                foretold = paeth(left, above[i], upLeft);
                break;
            default:
                break;
        }
        out[i] = static_cast<std::uint8_t>(row[i] - foretold);
        cost += static_cast<std::uint64_t>(std::abs(static_cast<std::int8_t>(out[i])));
    }
    return cost;
}

}  // namespace

void writeRows(PdfObjects& objects, std::uint32_t number, ByteBuffer& entries, const PixelRows& rows) {
    const std::size_t rowBytes = std::size_t{rows.width} * rows.components;
    const std::vector<std::uint8_t> zeros(rowBytes);
    std::vector<std::uint8_t> trial(rowBytes);
    ByteBuffer data;
    auto* out = reinterpret_cast<std::uint8_t*>(data.room((rowBytes + 1) * rows.height));
    const std::uint8_t* above = zeros.data();
    for (std::uint32_t y = 0; y < rows.height; ++y, out += rowBytes + 1) {
        const std::uint8_t* row = rows.values + y * rowBytes;
        std::uint64_t least = filterRow(filterNone, row, above, rowBytes, rows.components, out + 1);
        out[0] = filterNone;
        for (int filter = filterLeft; filter < filterCount; ++filter) {
            const std::uint64_t cost =
                filterRow(static_cast<Filter>(filter), row, above, rowBytes, rows.components, trial.data());
            if (cost >= least) continue;
            least = cost;
            out[0] = static_cast<std::uint8_t>(filter);
            std::memcpy(out + 1, trial.data(), rowBytes);
        }
        above = row;
    }
    data.commit((rowBytes + 1) * rows.height);
    const PdfObjects::PackedData packed = objects.pack(data.view());
    if (!packed.isCompressed) {
        const std::string_view plain(reinterpret_cast<const char*>(rows.values), rowBytes * rows.height);
        return objects.writePacked(number, entries.view(), {plain, false});
    }
    entries.put(fmt::format("/DecodeParms<</Predictor 15/Colors {}/Columns {}>>", rows.components, rows.width));
    objects.writePacked(number, entries.view(), packed);
}

std::string packedBits(const std::vector<std::uint8_t>& pixels, std::uint32_t width, std::uint32_t height) {
    const std::size_t rowBytes = (std::size_t{width} + 7) / 8;
    std::string bits(rowBytes * height, '\0');
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            if (pixels[y * width + x] < 128) continue;
            char& byte = bits[y * rowBytes + x / 8];
            byte = static_cast<char>(byte | 0x80 >> x % 8);
        }
    }
    return bits;
}

}  // namespace tarnova
