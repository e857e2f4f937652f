// The parser on any bytes with any delimiters: it must end, each byte must belong to one record, and the fast scan must
// agree with the byte machine. The first five bytes choose the delimiters and the size of the pieces.

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "data/record_entry.h"
#include "data/record_scan.h"

using namespace tarnova;

namespace {

constexpr std::string_view fields[] = {",", "\t", "||", "aab", ";"};
constexpr std::string_view qualifiers[] = {"\"", "", "''", "'"};
constexpr std::string_view ends[] = {"\n", "\r\n", "\r", "-\n"};

using parseStep = errorWord (*)(const parserConfig&, parserState&, parserInput&, entryBatch&);

std::string parseAll(const parserConfig& config, const std::uint8_t* bytes, std::size_t size, std::size_t piece,
                     parseStep step) {
    const auto state = newRecord<parserState>();
    std::vector<std::uint8_t> room(entryMaxSize);
    std::vector<std::uint32_t> references(64);
    entryBatch batch{room.data(), room.size(), 0, references.data(), references.size(), 0, false};
    parserInput input{bytes, 0, 0, false};
    std::string entries;
    std::size_t offered = 0;
    errorWord err = 0;
    while (err == 0 && state->finished == 0) {
        if (state->entryPending != 0) {
            if (!storeRecord(*state, batch)) std::abort();
        } else {
            offered = std::min(size, offered + piece);
            input.size = offered;
            input.endOfFile = offered == size;
            err = step(config, *state, input, batch);
        }
        entries.append(reinterpret_cast<const char*>(room.data()), batch.used);
        batch.used = batch.referenceCount = 0;
    }
    if (err == 0 && state->record.dataOffset != size) std::abort();
    return err == 0 ? entries : std::string("error");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size < 5) return 0;
    parserConfig config{};
    pstrSet(config.fieldDelimiter, fields[bytes[0] % std::size(fields)]);
    pstrSet(config.textQualifier, qualifiers[bytes[1] % std::size(qualifiers)]);
    pstrSet(config.recordDelimiter, ends[bytes[2] % std::size(ends)]);
    config.keyFieldNumber = static_cast<std::int16_t>(bytes[3] % 4);
    const std::size_t piece = 2 + bytes[4];
    const std::string machine = parseAll(config, bytes + 5, size - 5, piece, stepRecords);
    if (scanApplies(config) && parseAll(config, bytes + 5, size - 5, piece, scanRecords) != machine) std::abort();
    return 0;
}
