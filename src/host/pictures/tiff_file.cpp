#include "host/pictures/tiff_file.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace tarnova {

namespace {

constexpr tmsize_t allocationLimit = tmsize_t{1} << 30;

TiffMemory& memoryOf(thandle_t handle) {
    return *static_cast<TiffMemory*>(handle);
}

std::uint64_t sizeOf(const TiffMemory& memory) {
    return memory.output != nullptr ? memory.output->size() : memory.input.size();
}

tmsize_t readBytes(thandle_t handle, void* to, tmsize_t count) {
    TiffMemory& memory = memoryOf(handle);
    const std::string_view bytes = memory.output != nullptr ? std::string_view(*memory.output) : memory.input;
    if (count <= 0 || memory.at >= bytes.size()) return 0;
    const std::size_t taken = std::min(static_cast<std::size_t>(count), bytes.size() - memory.at);
    std::memcpy(to, bytes.data() + memory.at, taken);
    memory.at += taken;
    return static_cast<tmsize_t>(taken);
}

tmsize_t writeBytes(thandle_t handle, void* from, tmsize_t count) {
    TiffMemory& memory = memoryOf(handle);
    if (memory.output == nullptr || count < 0) return 0;
    const auto size = static_cast<std::size_t>(count);
    if (memory.output->size() < memory.at + size) memory.output->resize(memory.at + size);
    std::memcpy(memory.output->data() + memory.at, from, size);
    memory.at += size;
    return count;
}

toff_t seek(thandle_t handle, toff_t offset, int from) {
    TiffMemory& memory = memoryOf(handle);
    const std::uint64_t start = from == SEEK_CUR ? memory.at : from == SEEK_END ? sizeOf(memory) : 0;
    return memory.at = start + offset;
}

int close(thandle_t) {
    return 0;
}

toff_t size(thandle_t handle) {
    return sizeOf(memoryOf(handle));
}

/// The whole file at once, so that strips are decoded where they lie.
int map(thandle_t handle, void** base, toff_t* bytes) {
    TiffMemory& memory = memoryOf(handle);
    if (memory.output != nullptr) return 0;
    *base = const_cast<char*>(memory.input.data());
    *bytes = memory.input.size();
    return 1;
}

void unmap(thandle_t, void*, toff_t) {}

int silent(TIFF*, void*, const char*, const char*, va_list) {
    return 1;
}

}  // namespace

TiffFile openTiff(TiffMemory& memory, const char* mode) {
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, allocationLimit);
    TIFFOpenOptionsSetErrorHandlerExtR(options, silent, nullptr);
    TIFFOpenOptionsSetWarningHandlerExtR(options, silent, nullptr);
    TIFF* tiff =
        TIFFClientOpenExt("picture", mode, &memory, readBytes, writeBytes, seek, close, size, map, unmap, options);
    TIFFOpenOptionsFree(options);
    return TiffFile(tiff);
}

}  // namespace tarnova
