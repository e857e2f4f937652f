// Text of translation tables: it reads to its end or names a line that it has, and maps no byte beyond a byte.

#include <algorithm>
#include <cstdlib>

#include "data/translation_table.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tarnova;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    transTableRec table = identityTransTable();
    const std::uint32_t line = readTransTable(text, table);
    const auto isEnd = [](char c) { return c == '\r' || c == '\n'; };
    if (line > std::count_if(text.begin(), text.end(), isEnd) + 1) std::abort();
    for (const std::uint8_t keep : table.keep)
        if (keep > 1) std::abort();
    return 0;
}
