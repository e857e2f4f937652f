// Rows of pixels as the data of a PDF image.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/render/byte_buffer.h"
#include "host/render/pdf_objects.h"

namespace tarnova {

/// Pixels of whole bytes, row after row, borrowed.
struct PixelRows {
    const std::uint8_t* values = nullptr;
    std::uint32_t width = 0;       // pixels
    std::uint32_t height = 0;      // rows
    std::uint32_t components = 1;  // bytes of a pixel
};

/// Writes an image whose dictionary so far is `entries`. Each row is stored as differences, in the way that compresses
/// best (PNG's filters; ISO 32000-2, 7.4.4.4).
void writeRows(PdfObjects& objects, std::uint32_t number, ByteBuffer& entries, const PixelRows& rows);

/// A bit a pixel, set where its byte is at least 128; each row begins a byte.
[[nodiscard]] std::string packedBits(const std::vector<std::uint8_t>& pixels, std::uint32_t width,
                                     std::uint32_t height);

}  // namespace tarnova
