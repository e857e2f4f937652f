#include <algorithm>
#include <array>
#include <cstring>

#include "definitions/ddf_reader.h"

namespace tarnova {

namespace {

/// Counts lines for the report; not kept up without one.
struct placeRec {
    std::uint64_t offset = 0;  // bytes taken so far
    std::uint32_t line = 1;
    char last = 0;
    bool inStatement = false;
};

void notePlace(placeRec& place, ddfReaderRec& reader, std::string_view taken) {
    constexpr std::string_view between = " \t,;\r\n";
    place.offset += taken.size();
    for (const char c : taken) {
        if (!place.inStatement && between.find(c) == std::string_view::npos) {
            place.inStatement = true;
            reader.statementLine = place.line;
        }
        if (c == '\r' || (c == '\n' && place.last != '\r')) ++place.line;
        place.last = c;
    }
}

const char* reasonOf(errorWord err) {
    switch (err) {
        case errDdfNoSignature:
            return "no signature stands in the first 8,192 bytes, so this is no database definition file";
        case errDdfHexBadCharacter:
            return "the data holds a character that is no hexadecimal digit";
        case errDdfHexOddDigits:
            return "the data has an odd number of hexadecimal digits";
        case errFileRead:
            return "the file can't be read";
        default:
            return "there is not enough memory";
    }
}

/// Carries out the statements of one block.
errorWord feedBlock(ddfReaderRec& reader, placeRec& place, std::string_view bytes) {
    errorWord err = 0;
    while (err == 0 && !bytes.empty()) {
        const std::string_view before = bytes;
        ddfLexStop stop = ddfLexStop::endOfBytes;
        err = ddfLex(reader.lexer, bytes, stop, 0);
        if (reader.report != nullptr) notePlace(place, reader, before.substr(0, before.size() - bytes.size()));
        if (err != 0 || stop == ddfLexStop::endOfBytes) return err;
        err = ddfCarryOut(reader, 0);
        ddfDropTokens(reader.lexer);
        place.inStatement = err != 0;
    }
    return err;
}

/// Gives the next block of a file or handle; an empty one at the end. `taken` counts the bytes of a handle.
errorWord nextBlock(const ddfSourceRec& source, char* buffer, std::size_t& taken, std::string_view& bytes) {
    std::size_t count = ddfBlockSize;
    if (source.handle == nullptr) {
        const errorWord err = fileRead(source.file, buffer, &count, nullptr, 0);
        bytes = {buffer, err == 0 ? count : 0};
        return err;
    }
    count = std::min(count, handleSize(source.handle) - taken);
    bytes = {reinterpret_cast<const char*>(*source.handle) + taken, count};
    taken += count;
    return 0;
}

/// Takes the bytes that were read out of the handle, once and not block by block.
void dropTaken(blockHandle handle, std::size_t taken) {
    if (handle == nullptr || taken == 0) return;
    const std::size_t left = handleSize(handle) - taken;
    moveBytes(*handle, *handle + taken, left);
    resizeHandle(handle, left);
}

errorWord readBlocks(const ddfSourceRec& source, ddfReaderRec& reader, placeRec& place) {
    std::array<char, ddfBlockSize> buffer;
    std::size_t taken = 0;
    bool first = true;
    errorWord err = 0;
    for (std::string_view bytes; err == 0;) {
        err = nextBlock(source, buffer.data(), taken, bytes);
        if (err != 0 || (bytes.empty() && !first)) break;
        err = feedBlock(reader, place, bytes);
        if (first && err == 0 && !reader.signatureRead) {
            reader.statementLine = 0;
            err = errDdfNoSignature;
        }
        first = false;
    }
    dropTaken(source.handle, taken);
    return err;
}

void finishReport(ddfReaderRec& reader, const placeRec& place, errorWord err) {
    if (reader.report == nullptr) return;
    if (err != 0) {
        reader.report->line = reader.statementLine;
        reader.report->offset = place.offset;
        reader.report->reason = reasonOf(err);
    } else if (reader.lexer.tokenLength > 0) {
        reader.keyword = "end of file";
        ddfRemark(reader, "the last statement has no semicolon and is dropped");
    }
}

}  // namespace

errorWord ddfReadStream(const ddfSourceRec& source, recordDefSetRec& set, ddfLexerRec& lexer, ddfReadReport* report,
                        errorWord priorError) {
    if (priorError != 0) return priorError;
    ddfReaderRec reader(set, lexer, report);
    placeRec place;
    const errorWord err = readBlocks(source, reader, place);
    finishReport(reader, place, err);
    ddfLexerClose(lexer);
    return err;
}

}  // namespace tarnova
