// A file that appears whole or not at all: bytes go to a temporary file beside the target, which takes its place at the
// end.

#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/render/byte_buffer.h"

namespace tarnova {

/// After a failure `error()` holds a message with the path, the temporary file is gone, and further writes do nothing.
class OutputFile {
 public:
    OutputFile() = default;
    ~OutputFile() { discard(); }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    [[nodiscard]] bool open(const std::string& targetPath);
    void write(std::string_view bytes);
    /// Writes what is left, makes it durable and puts the file in its place.
    [[nodiscard]] bool finish();
    /// Removes the temporary file; an older target stays.
    void discard();

    [[nodiscard]] bool failed() const { return !message.empty(); }
    [[nodiscard]] const std::string& error() const { return message; }
    /// Keeps the first failure and removes the temporary file.
    void fail(std::string_view reason);

    /// Bytes written so far.
    [[nodiscard]] std::uint64_t offset() const { return flushed + pending.size(); }
    /// A hash of the bytes so far, for an identifier that depends on nothing else. Not for security.
    [[nodiscard]] std::array<std::uint64_t, 2> contentHash() const;

 private:
    [[nodiscard]] bool createTemporary();
    [[nodiscard]] bool flush();

    std::string target;
    std::string temporary;
    std::string message;
    int descriptor = -1;
    std::uint64_t flushed = 0;
    std::array<std::uint64_t, 2> hash = {0x9E3779B97F4A7C15u, 0xC2B2AE3D27D4EB4Fu};
    ByteBuffer pending;
};

}  // namespace tarnova
