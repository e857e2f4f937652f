// Files by path and handle. Paths are C strings in UTF-8. An operation that can fail takes the running error last:
// entered with one, it touches nothing and returns it. `outErrno`, which may be null, gets the system's errno, 0 when
// all went well.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr std::size_t pathCapacity = 1024;     // bytes of a path field, terminator included
inline constexpr std::size_t filePieceBytes = 65534;  // what one read or write of the system is given at most
inline constexpr std::uint16_t fileAtEnd = 65535;     // in outErrno of fileRead: the file ended before the count
inline constexpr const char* exchangeFileName = "NW072548.TMP";

inline constexpr errorWord errFileModDate = errorOfCode(-1);
inline constexpr errorWord errFileOpen = errorOfCode(-2);
inline constexpr errorWord errFileSize = errorOfCode(-3);
inline constexpr errorWord errFileSetSize = errorOfCode(-4);
inline constexpr errorWord errFileRead = errorOfCode(-5);
inline constexpr errorWord errFileWrite = errorOfCode(-6);
inline constexpr errorWord errFilePosition = errorOfCode(-7);
inline constexpr errorWord errFileSeek = errorOfCode(-8);
inline constexpr errorWord errFileDelete = errorOfCode(-9);
inline constexpr errorWord errFileCreate = errorOfCode(-11);
inline constexpr errorWord errFileExchange = errorOfCode(-12);

using fileHandle = std::int32_t;  // above 0 when open
inline constexpr fileHandle noFile = 0;

inline constexpr std::int16_t fileReadWrite = 0;  // 3 is the same
inline constexpr std::int16_t fileReadOnly = 1;
inline constexpr std::int16_t fileWriteOnly = 2;

inline constexpr std::int16_t fileFromStart = 0;  // 1 is the same
inline constexpr std::int16_t fileFromEnd = 2;
inline constexpr std::int16_t fileFromHere = 3;

/// Creates a new, empty file that its owner may read and write. A file that exists is a failure: errFileCreate.
[[nodiscard]] errorWord fileCreate(const char* path, errorWord priorError);

/// Opens an existing file. Any other mode than 0 to 3 fails, as does a folder: errFileOpen, and the handle is noFile.
[[nodiscard]] errorWord fileOpen(const char* path, std::int16_t mode, fileHandle* outHandle, std::uint16_t* outErrno,
                                 errorWord priorError);
/// Handles below 1 are ignored.
void fileClose(fileHandle handle);

/// Reads up to `*inoutCount` bytes. At the end of the file it stops without an error: the count is what was read and
/// outErrno is fileAtEnd.
[[nodiscard]] errorWord fileRead(fileHandle handle, void* buffer, std::size_t* inoutCount, std::uint16_t* outErrno,
                                 errorWord priorError);
/// Writes `*inoutCount` bytes; gives back how many got there. A short write is errFileWrite.
[[nodiscard]] errorWord fileWrite(fileHandle handle, const void* buffer, std::size_t* inoutCount,
                                  std::uint16_t* outErrno, errorWord priorError);
[[nodiscard]] errorWord fileSeek(fileHandle handle, std::int16_t from, std::int64_t offset, std::uint16_t* outErrno,
                                 errorWord priorError);
[[nodiscard]] errorWord filePosition(fileHandle handle, std::int64_t* out, std::uint16_t* outErrno,
                                     errorWord priorError);
/// Keeps the position.
[[nodiscard]] errorWord fileSize(fileHandle handle, std::int64_t* out, std::uint16_t* outErrno, errorWord priorError);
[[nodiscard]] errorWord fileSetSize(fileHandle handle, std::int64_t size, std::uint16_t* outErrno,
                                    errorWord priorError);
/// A file that isn't there is no failure; outErrno is then 2.
[[nodiscard]] errorWord fileDelete(const char* path, std::uint16_t* outErrno, errorWord priorError);

/// 1 when the path names an existing file that is no folder, else 0.
std::uint16_t fileIsPlain(const char* path);
/// Seconds since 1 January 1970. errFileModDate for an empty path and for one that is no plain file.
[[nodiscard]] errorWord fileModDate(const char* path, std::uint32_t* outSeconds, errorWord priorError);
/// Size of a file in bytes; 0 when it can't be opened, with the reason in outErrno.
std::int64_t fileSizeOfPath(const char* path, std::uint16_t* outErrno);

/// Exchanges two files under their names; both must exist. A leftover exchangeFileName in the folder of `a` is deleted.
/// After a failure both stand where they were: errFileExchange.
[[nodiscard]] errorWord fileExchange(const char* a, const char* b, errorWord priorError);

/// The same in three renames, for file systems that can't exchange in one step; fileExchange falls back on it.
[[nodiscard]] errorWord fileExchangeByRenames(const char* a, const char* b, errorWord priorError);

/// Reads a whole file of at most `maxBytes`; a longer one is errFileRead. On failure `out` is unchanged.
[[nodiscard]] errorWord fileReadWhole(const char* path, std::string& out, std::size_t maxBytes, errorWord priorError);
/// Writes a whole file through a temporary file beside it, so that a failure leaves the old one in place.
[[nodiscard]] errorWord fileWriteWhole(const char* path, std::string_view bytes, errorWord priorError);

/// A path that begins with "/" into the form whose first component is a volume: "/Volumes/" at its start is dropped,
/// the first component gets a ":" and the rest follows. Any other path is copied. `out` takes `pathCapacity` bytes; a
/// path that doesn't fit gives the empty string.
void macPathToPosix(const char* in, char* out);

}  // namespace tarnova
