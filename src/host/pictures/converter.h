// Programs that make one file of another: in a process of their own, with bounds of time, memory and output.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarnova {

inline constexpr std::size_t converterMemory = std::size_t{2} << 30;    // bytes
inline constexpr std::size_t converterOutput = std::size_t{256} << 20;  // bytes

enum class ConverterEnd : std::uint8_t { done, failed, notThere, outOfBounds };

/// Runs a program, found on the PATH, with these arguments (the first is its name, the last is null), gives it `input`
/// as its standard input and takes what it writes to its standard output. Its messages go nowhere.
/// It has `seconds`, of the clock as of the processor.
[[nodiscard]] ConverterEnd runConverter(const char* const* arguments, std::string_view input, int seconds,
                                        std::string& out);

/// The same for a picture, within 20 seconds. Throws PictureFault, which calls the picture and who made the program.
[[nodiscard]] std::string convertedToPdf(const char* const* arguments, std::string_view input, const std::string& kind,
                                         const std::string& maker);

}  // namespace tarnova
