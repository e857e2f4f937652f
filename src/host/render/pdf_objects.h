// The body of a PDF file: numbered objects, streams, object streams and the cross-reference (ISO 32000-2, 7.5).

#pragma once

#include <cstdint>
#include <deque>
#include <string_view>
#include <vector>

#include "host/render/byte_buffer.h"
#include "host/render/output_file.h"

struct libdeflate_compressor;

namespace tarnova {

/// Writes objects in any order of their numbers. It keeps eight bytes an object.
class PdfObjects {
 public:
    /// `file` is open and outlives this; `level` is 0 (streams as they are) to 12.
    PdfObjects(OutputFile& file, int level, bool objectStreams);
    ~PdfObjects();
    PdfObjects(const PdfObjects&) = delete;
    PdfObjects& operator=(const PdfObjects&) = delete;

    /// The next free object number. Each must be written once before `finish`.
    [[nodiscard]] std::uint32_t reserve();
    /// An object that is no stream.
    void write(std::uint32_t number, std::string_view body);
    /// A stream; `entries` are those of its dictionary besides length and filter. It is compressed where that helps.
    void writeStream(std::uint32_t number, std::string_view entries, std::string_view data);
    /// What `writeStream` makes of a stream's data, valid until the next stream; and a stream of such data, made here or
    /// in another process.
    struct PackedData {
        std::string_view bytes;
        bool isCompressed = false;
    };
    [[nodiscard]] PackedData pack(std::string_view data);
    void writePacked(std::uint32_t number, std::string_view entries, const PackedData& data);
    /// The same, uncompressed, for what other programs look for in the bytes of the file (XMP).
    void writePlainStream(std::uint32_t number, std::string_view entries, std::string_view data);
    /// Cross-reference and trailer, with these entries and an ID from the hash of the file.
    void finish(std::string_view trailerEntries);

 private:
    struct Packed {
        std::uint32_t number;
        std::uint32_t offset;  // into packedBodies
    };

    void begin(std::uint32_t number);
    [[nodiscard]] std::string_view compress(std::string_view data);
    void flushPacked();
    void putId(ByteBuffer& out) const;
    void finishTable(std::string_view trailerEntries);
    void putRows(ByteBuffer& rows, int offsetBytes, bool differences) const;
    void finishStream(std::string_view trailerEntries);

    OutputFile& file;
    libdeflate_compressor* compressor = nullptr;
    bool packing;
    std::deque<std::uint64_t> places;  // by object number: an offset, or with the top bit a place in an object stream
    std::vector<Packed> packed;
    ByteBuffer packedBodies;
    ByteBuffer scratch;
    ByteBuffer packedStream;
    ByteBuffer compressed;
};

}  // namespace tarnova
