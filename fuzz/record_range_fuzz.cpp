// Range texts: a list that is read is ascending, and its text reads back as the same list.

#include <cstdlib>

#include "data/record_range.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tarnova;
    recordRangeRec range, again;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (readRangeText(text, range, true) != rangeFault::none) return 0;
    std::vector<std::int32_t> numbers = range.list;
    if (numbers.empty() || numbers.size() > 100000) return 0;
    for (std::int32_t& number : numbers)
        ++number;
    if (readRangeText(rangeTextOf(numbers).view(), again, true) != rangeFault::none) std::abort();
    if (again.list != range.list || range.last != range.list.size()) std::abort();
    return 0;
}
