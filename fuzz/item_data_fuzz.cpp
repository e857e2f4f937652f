// Reads any bytes as an item data block, and replaces and removes entries in it: the block must be whole afterwards,
// and hold what was put in.

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "document/item_data.h"

namespace {

using namespace tarnova;

void require(bool holds) {
    if (!holds) std::abort();
}

void checkReplace(std::string_view block, std::uint32_t type) {
    using namespace std::string_view_literals;
    const std::optional<std::string> with = itemDataReplace(block, type, "payload"sv);
    require(with.has_value());
    require(itemDataFind(*with, type) == "payload"sv);
    const std::optional<std::string> without = itemDataReplace(*with, type, std::nullopt);
    require(without.has_value() && without->size() + itemDataHeaderBytes + 7 == with->size());
    require(!itemDataFind(*without, type).has_value());
    require(itemDataReplace(*without, type, "payload"sv) == with);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view block(reinterpret_cast<const char*>(data), size);
    const std::optional<std::string_view> found = itemDataFind(block, itemDataFrameTag);
    require(!found || found->size() <= size);
    checkReplace(block, itemDataFrameTag);
    checkReplace(block, 0);
    return 0;
}
