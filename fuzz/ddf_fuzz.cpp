// Reads any bytes as a DDF; what is read must come back from being written, and a second round must change nothing.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "definitions/ddf.h"

namespace {

using namespace tarnova;

recordDefSetRec* readSet(const std::uint8_t* bytes, std::size_t size, recordDefSetRec*& list, errorWord& err) {
    const std::uint8_t name[] = {1, 'f'};
    recordDefSetRec* set = nullptr;
    if (recordDefSetNew(name, nullptr, list, set, 0) != 0) std::abort();
    const handlePtr handle(newHandle(size));
    if (size > 0) std::memcpy(*handle, bytes, size);
    ddfLexerRec lexer{};
    ddfReadReport report;
    err = ddfReadStream({noFile, handle.get()}, *set, lexer, &report, 0);
    return set;
}

std::string writeSet(const recordDefSetRec& set) {
    const handlePtr handle(newHandle(0));
    if (ddfWriteSet(set, {noFile, handle.get()}, 0) != 0) std::abort();
    return {reinterpret_cast<const char*>(*handle), handleSize(handle.get())};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    recordDefSetRec* list = nullptr;
    errorWord err = 0;
    const recordDefSetRec* set = readSet(data, size, list, err);
    std::string text = writeSet(*set);
    if (err == 0) {
        // A text of 0 bytes is written empty, then left out, and then starts anew; after that nothing changes.
        for (int round = 0; round < 5; ++round) {
            const std::string before = text;
            set = readSet(reinterpret_cast<const std::uint8_t*>(text.data()), text.size(), list, err);
            text = writeSet(*set);
            if (err != 0 || (round > 3 && text != before)) std::abort();
        }
    }
    while (list != nullptr)
        recordDefSetDiscard(list, list);
    return 0;
}
