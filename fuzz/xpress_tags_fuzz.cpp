// Converts any bytes as XPress Tags. Text without a mark of them comes out as it went in, but for line feeds.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "tags/xpress_tags.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string output = tarnova::xpressTagsConvert(input, size % 2 == 0);
    const bool isPlain = input.find_first_of("\\@<\n") == std::string_view::npos;
    if (isPlain && output != input) std::abort();
    if (output.size() > input.size() * 16 + 16) std::abort();
    return 0;
}
