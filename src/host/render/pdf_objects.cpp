#include "host/render/pdf_objects.h"

#include <libdeflate.h>

#include <new>

namespace tarnova {

namespace {

constexpr std::size_t objectsInStream = 200;
constexpr std::uint64_t inStream = std::uint64_t{1} << 63;
constexpr std::uint64_t indexMask = 0xFFFF;
constexpr std::uint64_t largestTableOffset = 9'999'999'999;  // ten digits

void putHex(ByteBuffer& out, std::uint64_t word) {
    for (int shift = 60; shift >= 0; shift -= 4)
        out.put("0123456789ABCDEF"[(word >> shift) & 15]);
}

void putBigEndian(char*& out, std::uint64_t value, int bytes) {
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        *out++ = static_cast<char>((value >> shift) & 255);
}

}  // namespace

PdfObjects::PdfObjects(OutputFile& itsFile, int level, bool objectStreams) : file(itsFile), packing(objectStreams) {
    if (level > 0) {
        compressor = libdeflate_alloc_compressor(std::min(level, 12));
        if (compressor == nullptr) throw std::bad_alloc();
    }
    places.push_back(0);
    // The second line tells programs that the file isn't text (7.5.2).
    file.write("%PDF-1.7\n%\xE2\xE3\xCF\xD3\n");
}

PdfObjects::~PdfObjects() {
    libdeflate_free_compressor(compressor);
}

std::uint32_t PdfObjects::reserve() {
    places.push_back(0);
    return static_cast<std::uint32_t>(places.size() - 1);
}

void PdfObjects::begin(std::uint32_t number) {
    places[number] = file.offset();
    scratch.clear();
    scratch.putInteger(number);
    scratch.put(" 0 obj\n");
}

void PdfObjects::write(std::uint32_t number, std::string_view body) {
    if (packing) {
        packed.push_back({number, static_cast<std::uint32_t>(packedBodies.size())});
        packedBodies.put(body);
        packedBodies.put('\n');
        if (packed.size() == objectsInStream) flushPacked();
        return;
    }
    begin(number);
    scratch.put(body);
    scratch.put("\nendobj\n");
    file.write(scratch.view());
}

void PdfObjects::writeStream(std::uint32_t number, std::string_view entries, std::string_view data) {
    writePacked(number, entries, pack(data));
}

PdfObjects::PackedData PdfObjects::pack(std::string_view data) {
    const std::string_view smaller = compress(data);
    return smaller.empty() ? PackedData{data, false} : PackedData{smaller, true};
}

void PdfObjects::writePlainStream(std::uint32_t number, std::string_view entries, std::string_view data) {
    writePacked(number, entries, {data, false});
}

void PdfObjects::writePacked(std::uint32_t number, std::string_view entries, const PackedData& data) {
    begin(number);
    scratch.put("<<");
    scratch.put(entries);
    if (data.isCompressed) scratch.put("/Filter/FlateDecode");
    scratch.put("/Length ");
    scratch.putInteger(static_cast<std::int64_t>(data.bytes.size()));
    scratch.put(">>stream\n");
    scratch.put(data.bytes);
    scratch.put("\nendstream\nendobj\n");
    file.write(scratch.view());
}

/// Empty when there is nothing to gain.
std::string_view PdfObjects::compress(std::string_view data) {
    constexpr std::size_t filterEntryBytes = 19;
    if (compressor == nullptr || data.size() <= filterEntryBytes) return {};
    compressed.clear();
    const std::size_t limit = data.size() - filterEntryBytes;
    const std::size_t size =
        libdeflate_zlib_compress(compressor, data.data(), data.size(), compressed.room(limit), limit);
    compressed.commit(size);
    return compressed.view();
}

void PdfObjects::flushPacked() {
    if (packed.empty()) return;
    const std::uint32_t streamNumber = reserve();
    packedStream.clear();
    for (std::size_t index = 0; index < packed.size(); ++index) {
        packedStream.putInteger(packed[index].number);
        packedStream.put(' ');
        packedStream.putInteger(packed[index].offset);
        packedStream.put(' ');
        places[packed[index].number] = inStream | std::uint64_t{streamNumber} << 16 | index;
    }
    ByteBuffer entries;
    entries.put("/Type/ObjStm/N ");
    entries.putInteger(static_cast<std::int64_t>(packed.size()));
    entries.put("/First ");
    entries.putInteger(static_cast<std::int64_t>(packedStream.size()));
    packedStream.put(packedBodies.view());
    packed.clear();
    packedBodies.clear();
    writeStream(streamNumber, entries.view(), packedStream.view());
}

void PdfObjects::finish(std::string_view trailerEntries) {
    flushPacked();
    if (packing) {
        finishStream(trailerEntries);
    } else {
        finishTable(trailerEntries);
    }
}

void PdfObjects::putId(ByteBuffer& out) const {
    const auto hash = file.contentHash();
    out.put("/ID[");
    for (int copy = 0; copy < 2; ++copy) {
        out.put('<');
        putHex(out, hash[0]);
        putHex(out, hash[1]);
        out.put('>');
    }
    out.put(']');
}

void PdfObjects::finishTable(std::string_view trailerEntries) {
    const std::uint64_t start = file.offset();
    if (start > largestTableOffset) {
        file.fail("it is longer than a classic cross-reference table can describe; turn object streams on");
        return;
    }
    ByteBuffer trailer;
    trailer.put("trailer\n<<");
    trailer.put(trailerEntries);
    putId(trailer);
    trailer.put("/Size ");
    trailer.putInteger(static_cast<std::int64_t>(places.size()));
    trailer.put(">>\nstartxref\n");
    trailer.putInteger(static_cast<std::int64_t>(start));
    trailer.put("\n%%EOF\n");

    scratch.clear();
    scratch.put("xref\n0 ");
    scratch.putInteger(static_cast<std::int64_t>(places.size()));
    scratch.put("\n0000000000 65535 f \n");
    file.write(scratch.view());
    for (std::size_t number = 1; number < places.size(); ++number) {
        char line[] = "0000000000 00000 n \n";
        std::uint64_t rest = places[number];
        for (int at = 9; at >= 0; --at, rest /= 10)
            line[at] = static_cast<char>('0' + rest % 10);
        file.write({line, 20});
    }
    file.write(trailer.view());
}

/// Rows of a cross-reference stream (7.5.8). With `differences` each is stored less the row above, which compresses
/// well.
void PdfObjects::putRows(ByteBuffer& rows, int offsetBytes, bool differences) const {
    static_assert(objectsInStream <= 256);  // the index takes one byte
    const int rowBytes = 1 + offsetBytes + 1;
    const std::size_t size = places.size() * static_cast<std::size_t>(rowBytes + (differences ? 1 : 0));
    char row[16] = {}, above[16] = {};
    char* out = rows.room(size);
    for (std::size_t number = 0; number < places.size(); ++number) {
        const std::uint64_t place = places[number];
        const bool isPacked = (place & inStream) != 0;
        char* field = row;
        putBigEndian(field, number == 0 ? 0u : isPacked ? 2u : 1u, 1);
        putBigEndian(field, isPacked ? (place & ~inStream) >> 16 : place, offsetBytes);
        putBigEndian(field, isPacked ? place & indexMask : 0, 1);
        if (differences) *out++ = 2;  // PNG's "up" filter
        for (int i = 0; i < rowBytes; ++i)
            *out++ = static_cast<char>(differences ? row[i] - above[i] : row[i]);
        std::memcpy(above, row, sizeof above);
    }
    rows.commit(size);
}

void PdfObjects::finishStream(std::string_view trailerEntries) {
    const std::uint32_t own = reserve();
    const std::uint64_t start = file.offset();
    places[own] = start;
    int offsetBytes = 4;
    while (start >> (8 * offsetBytes) != 0)
        ++offsetBytes;

    ByteBuffer entries;
    entries.put("/Type/XRef/W[1 ");
    entries.putInteger(offsetBytes);
    entries.put(" 1]/Size ");
    entries.putInteger(static_cast<std::int64_t>(places.size()));
    entries.put(trailerEntries);
    putId(entries);
    ByteBuffer rows;
    putRows(rows, offsetBytes, true);
    const std::string_view smaller = compress(rows.view());
    if (!smaller.empty()) {
        entries.put("/DecodeParms<</Predictor 12/Columns ");
        entries.putInteger(offsetBytes + 2);
        entries.put(">>");
        writePacked(own, entries.view(), {smaller, true});
    } else {
        rows.clear();
        putRows(rows, offsetBytes, false);
        writePacked(own, entries.view(), {rows.view(), false});
    }
    scratch.clear();
    scratch.put("startxref\n");
    scratch.putInteger(static_cast<std::int64_t>(start));
    scratch.put("\n%%EOF\n");
    file.write(scratch.view());
}

}  // namespace tarnova
