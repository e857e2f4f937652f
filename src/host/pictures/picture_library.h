// The pictures of a process: each file is opened once, by path, date and size, and what is made of it is kept within a
// bound. Usable from any thread.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "host/pictures/picture.h"

namespace tarnova {

enum class PictureStatus : std::uint8_t { good, missing, damaged };

/// Identity of a file's contents at a time: what tells that a link is out of date.
struct FileStamp {
    std::int64_t nanoseconds = 0;  // of its last change, since 1970
    std::int64_t size = -1;        // bytes; -1: nothing is known
    friend bool operator==(const FileStamp&, const FileStamp&) = default;
    [[nodiscard]] bool isKnown() const { return size >= 0; }
};

/// Milliseconds of a stamp, which a number of a layout file can hold.
[[nodiscard]] inline std::int64_t millisecondsOf(const FileStamp& stamp) {
    return stamp.nanoseconds / 1'000'000;
}

/// The stamp of a plain file; unknown for anything else.
[[nodiscard]] FileStamp stampOfFile(const std::string& path);

/// Whether the ending of the name is one that pictures have.
[[nodiscard]] bool hasPictureName(std::string_view path);

struct OpenedPicture {
    PictureStatus status = PictureStatus::missing;
    std::shared_ptr<const Picture> picture;  // null unless the status is good
    std::string reason;                      // for people, when it isn't: a sentence without the path
    FileStamp stamp;
};

class PictureLibrary {
 public:
    struct Counts {
        std::uint64_t filesRead = 0;  // whole files into memory
        std::uint64_t decoded = 0;    // pixels decoded, or a page made of an SVG or EPS
    };

    /// `contentLimit`: bytes of contents that are kept for the next time. What somebody holds counts but stays.
    explicit PictureLibrary(std::size_t contentLimit = std::size_t{256} << 20);
    ~PictureLibrary();
    PictureLibrary(const PictureLibrary&) = delete;
    PictureLibrary& operator=(const PictureLibrary&) = delete;

    /// The one that documents and outputs share.
    [[nodiscard]] static PictureLibrary& shared();

    /// Opens a file, whose type its content tells. The file is looked at each time (its date and size), and read again
    /// only when these have changed. Missing: no such plain file, or it can't be read. Damaged: its bytes aren't a
    /// picture of a known type, are cut off, or pass a limit.
    [[nodiscard]] OpenedPicture open(const std::string& path, const PageChoice& choice = {});
    /// A picture from bytes that a document holds. Its status is good or damaged.
    [[nodiscard]] OpenedPicture openBytes(std::shared_ptr<const std::string> bytes, const PageChoice& choice = {});

    [[nodiscard]] Counts counts() const;

    class Shelf;

 private:
    std::shared_ptr<Shelf> shelf;  // pictures hold it too: they make their contents by it
};

}  // namespace tarnova
