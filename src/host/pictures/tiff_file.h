// libtiff on bytes in memory, silent, and within a bound of memory.

#pragma once

#include <tiffio.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace tarnova {

struct TiffCloser {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffFile = std::unique_ptr<TIFF, TiffCloser>;

/// Where libtiff reads or writes.
struct TiffMemory {
    std::string_view input;         // of a file that is read
    std::string* output = nullptr;  // of one that is written
    std::uint64_t at = 0;
};

/// Opens "r" or "w"; null when the bytes are no TIFF file. `memory` has to outlive the result.
[[nodiscard]] TiffFile openTiff(TiffMemory& memory, const char* mode);

}  // namespace tarnova
