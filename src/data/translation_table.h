// The step at which a definition's translation tables change bytes. No table can be loaded yet, so the step does what
// an empty table does: every byte stays.
#pragma once

#include <cstdint>

namespace tarnova {

/// Maps `bytes` in place and may shorten `length`.
inline void applyImportTable(std::uint8_t* bytes, std::uint32_t& length) {
    static_cast<void>(bytes), static_cast<void>(length);
}
inline void applyExportTable(std::uint8_t* bytes, std::uint32_t& length) {
    static_cast<void>(bytes), static_cast<void>(length);
}

}  // namespace tarnova
