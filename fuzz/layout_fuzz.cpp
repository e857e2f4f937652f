// A layout from any bytes: refused with a reason, or opened into a document that is whole, and whose file, read again, is
// the same file.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "host/files/layout_file.h"
#include "host/model/story_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tarnova;
    layoutError error;
    const auto document = readLayout({reinterpret_cast<const char*>(data), size}, error);
    if (document == nullptr) {
        if (error.message.empty()) std::abort();
        return 0;
    }
    for (UID uid : document->stories()) {
        if (!storyIsConsistent(*document->story(uid)->content)) std::abort();
    }
    const std::string written = writeLayout(*document);
    const auto again = readLayout(written, error);
    if (again == nullptr || writeLayout(*again) != written) std::abort();
    return 0;
}
