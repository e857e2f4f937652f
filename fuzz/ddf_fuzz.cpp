// Reads any bytes as a DDF; what is read must come back from being written, and a second round must change nothing.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "definitions/ddf.h"

namespace {

using namespace tarnova;

/// Text of the definitions that `bytes` hold.
std::string readAndWrite(const void* bytes, std::size_t size, errorWord& err) {
    recordDefSetRec* list = nullptr;
    recordDefSetRec* set = nullptr;
    if (recordDefSetNew(nullptr, nullptr, list, set, 0) != 0) std::abort();
    const handlePtr source(newHandle(size));
    if (size > 0) std::memcpy(*source, bytes, size);
    ddfLexerRec lexer{};
    ddfReadReport report;
    err = ddfReadStream({noFile, source.get()}, *set, lexer, &report, 0);
    const handlePtr target(newHandle(0));
    if (ddfWriteSet(*set, {noFile, target.get()}, 0) != 0) std::abort();
    recordDefSetDiscard(list, set);
    return {reinterpret_cast<const char*>(*target), handleSize(target.get())};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    errorWord err = 0;
    std::string text = readAndWrite(data, size, err);
    if (err != 0) return 0;
    // A text of 0 bytes is written empty, then left out, and then starts anew; after that nothing changes.
    for (int round = 0; round < 5; ++round) {
        const std::string before = text;
        text = readAndWrite(text.data(), text.size(), err);
        if (err != 0 || (round > 3 && text != before)) std::abort();
    }
    return 0;
}
