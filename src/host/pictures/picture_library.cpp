#include "host/pictures/picture_library.h"

#include <sys/stat.h>
#include <xxhash.h>

#include <atomic>
#include <exception>
#include <utility>

#include "engine/toolkit/files.h"
#include "host/pictures/content_shelf.h"
#include "host/pictures/picture_format.h"

namespace tarnova {

namespace {

std::string keyText(const ContentKey& key) {
    return std::to_string(key.high) + ':' + std::to_string(key.low);
}

std::string keyText(const PageChoice& choice) {
    return std::to_string(choice.page) + ':' + std::to_string(choice.crop) + (choice.transparent ? 't' : 'w');
}

std::string keyText(const FileStamp& stamp) {
    return std::to_string(stamp.nanoseconds) + ':' + std::to_string(stamp.size);
}

ContentKey keyOf(std::string_view bytes) {
    const XXH128_hash_t hash = XXH3_128bits(bytes.data(), bytes.size());
    return {hash.high64, hash.low64};
}

/// The key of one page, shown one way, of a file.
ContentKey keyOf(const ContentKey& file, const PageChoice& choice) {
    return keyOf(keyText(file) + '/' + keyText(choice));
}

}  // namespace

FileStamp stampOfFile(const std::string& path) {
    struct stat found {};
    if (::stat(path.c_str(), &found) != 0 || !S_ISREG(found.st_mode)) return {};
    return {found.st_mtim.tv_sec * 1'000'000'000 + found.st_mtim.tv_nsec, found.st_size};
}

/// Contents, and how they are made anew when they have gone from the shelf.
class PictureLibrary::Shelf : public std::enable_shared_from_this<PictureLibrary::Shelf> {
 public:
    explicit Shelf(std::size_t contentLimit) : kept(contentLimit) {}

    /// Where a picture's file is: on disk as it was then, or in memory.
    struct Source {
        std::string path;
        FileStamp stamp;
        std::shared_ptr<const std::string> bytes;  // of a picture without a file
    };

    /// Opens what isn't kept under `key` as opened already, as good or as damaged.
    OpenedPicture opened(const std::string& key, const Source& source, const PageChoice& choice);
    std::shared_ptr<const std::string> fileBytes(const Source& source);
    std::shared_ptr<const PictureSamples> samples(const Source& source, const PictureInfo& info,
                                                  const ContentKey& file);
    std::shared_ptr<const std::string> madePdf(const Source& source, PictureFormat format, const ContentKey& file);

    /// Pictures on the shelf hold it themselves, so they have to go for it to go.
    void forget() { kept.clear(); }

    std::atomic<std::uint64_t> filesRead = 0, decoded = 0;

 private:
    OpenedPicture open(const Source& source, const PageChoice& choice);
    std::shared_ptr<const Picture> read(const Source& source, const PageChoice& choice, std::string_view bytes);
    std::shared_ptr<const PictureSamples> decode(const PictureInfo& info, const ContentKey& file,
                                                 std::string_view bytes);
    std::shared_ptr<const std::string> makePdf(const FormatReader& format, const ContentKey& file,
                                               std::string_view bytes);

    ContentShelf kept;
};

namespace {

using Shelf = PictureLibrary::Shelf;

class LibraryPicture final : public Picture {
 public:
    LibraryPicture(std::shared_ptr<Shelf> itsShelf, Shelf::Source itsSource, PictureInfo info, ContentKey itsFile,
                   const PageChoice& choice)
        : shelf(std::move(itsShelf)), source(std::move(itsSource)), file(itsFile) {
        facts = std::move(info);
        key = facts.kind == PictureKind::page ? keyOf(file, choice) : file;
    }

    std::shared_ptr<const std::string> fileBytes() const override { return shelf->fileBytes(source); }
    std::shared_ptr<const PictureSamples> samples() const override {
        return facts.kind == PictureKind::raster ? shelf->samples(source, facts, file) : nullptr;
    }
    std::shared_ptr<const std::string> pdfBytes() const override {
        if (facts.kind != PictureKind::page) return nullptr;
        return readerOf(facts.format).toPdf == nullptr ? fileBytes() : shelf->madePdf(source, facts.format, file);
    }

 private:
    std::shared_ptr<Shelf> shelf;
    Shelf::Source source;
    ContentKey file;
};

std::size_t bytesHeldBy(const PictureInfo& info) {
    std::size_t bytes = sizeof(LibraryPicture) + info.raster.iccProfile.size();
    for (const EmbeddedPath& path : info.paths) {
        for (const PictureContour& contour : path.outline)
            bytes += contour.size() * sizeof(OutlineKnot);
    }
    return bytes;
}

}  // namespace

std::shared_ptr<const std::string> PictureLibrary::Shelf::fileBytes(const Source& source) {
    if (source.bytes != nullptr) return source.bytes;
    const std::string key = "file " + keyText(source.stamp) + ' ' + source.path;
    if (auto found = kept.find<std::string>(key)) return found;
    auto bytes = std::make_shared<std::string>();
    if (stampOfFile(source.path) != source.stamp ||
        fileReadWhole(source.path.c_str(), *bytes, pictureFileSizeLimit, 0) != 0) {
        return nullptr;
    }
    ++filesRead;
    kept.put(key, bytes, bytes->size());
    return bytes;
}

std::shared_ptr<const PictureSamples> PictureLibrary::Shelf::decode(const PictureInfo& info, const ContentKey& file,
                                                                    std::string_view bytes) {
    ++decoded;
    auto out = std::make_shared<const PictureSamples>(readerOf(info.format).decode(bytes, info));
    kept.put("samples " + keyText(file), out, out->values.size() + out->alpha.size());
    return out;
}

std::shared_ptr<const PictureSamples> PictureLibrary::Shelf::samples(const Source& source, const PictureInfo& info,
                                                                     const ContentKey& file) try {
    if (auto found = kept.find<PictureSamples>("samples " + keyText(file))) return found;
    const auto bytes = fileBytes(source);
    return bytes == nullptr ? nullptr : decode(info, file, *bytes);
} catch (const std::exception&) {
    return nullptr;
}

std::shared_ptr<const std::string> PictureLibrary::Shelf::makePdf(const FormatReader& format, const ContentKey& file,
                                                                  std::string_view bytes) {
    ++decoded;
    auto out = std::make_shared<const std::string>(format.toPdf(bytes));
    kept.put("pdf " + keyText(file), out, out->size());
    return out;
}

std::shared_ptr<const std::string> PictureLibrary::Shelf::madePdf(const Source& source, PictureFormat format,
                                                                  const ContentKey& file) try {
    if (auto found = kept.find<std::string>("pdf " + keyText(file))) return found;
    const auto bytes = fileBytes(source);
    return bytes == nullptr ? nullptr : makePdf(readerOf(format), file, *bytes);
} catch (const std::exception&) {
    return nullptr;
}

std::shared_ptr<const Picture> PictureLibrary::Shelf::read(const Source& source, const PageChoice& choice,
                                                           std::string_view bytes) {
    const FormatReader* format = formatOf(bytes);
    if (format == nullptr) {
        throw PictureFault(bytes.empty() ? "The file is empty."
                                         : "The file is no picture of a type that can be placed.");
    }
    PictureInfo info;
    info.format = format->format;
    info.kind = format->decode != nullptr ? PictureKind::raster : PictureKind::page;
    const ContentKey file = keyOf(bytes);
    if (format->toPdf != nullptr) {
        readerOf(PictureFormat::pdf).read(*makePdf(*format, file, bytes), {}, info);
    } else {
        format->read(bytes, choice, info);
    }
    if (info.kind == PictureKind::raster) finishRaster(info);
    const auto isSide = [](double side) { return side >= pictureLeastSide && side <= pictureMostSide; };
    if (!isSide(info.size.x) || !isSide(info.size.y)) throw PictureFault("The picture has no size that can be shown.");
    if (format->checkedByDecoding) (void)decode(info, file, bytes);
    return std::make_shared<const LibraryPicture>(shared_from_this(), source, std::move(info), file, choice);
}

OpenedPicture PictureLibrary::Shelf::open(const Source& source, const PageChoice& choice) {
    OpenedPicture out{PictureStatus::good, nullptr, {}, source.stamp};
    const auto bytes = fileBytes(source);
    if (bytes == nullptr) {
        out.reason = "The file can't be read, or is larger than 1 GiB.";
        out.status = source.stamp.size > static_cast<std::int64_t>(pictureFileSizeLimit) ? PictureStatus::damaged
                                                                                         : PictureStatus::missing;
        return out;
    }
    try {
        out.picture = read(source, choice, *bytes);
    } catch (const PictureFault& fault) {
        out.status = PictureStatus::damaged;
        out.reason = fault.what();
    } catch (const std::bad_alloc&) {
        out.status = PictureStatus::damaged;
        out.reason = "There isn't memory enough for the picture.";
    }
    return out;
}

OpenedPicture PictureLibrary::Shelf::opened(const std::string& key, const Source& source, const PageChoice& choice) {
    if (const auto found = kept.find<OpenedPicture>(key)) return *found;
    const OpenedPicture out = open(source, choice);
    const std::size_t bytes = out.picture == nullptr ? 0 : bytesHeldBy(out.picture->info());
    if (out.status != PictureStatus::missing) {
        kept.put(key, std::make_shared<const OpenedPicture>(out), sizeof(OpenedPicture) + key.size() + bytes);
    }
    return out;
}

PictureLibrary::PictureLibrary(std::size_t contentLimit) : shelf(std::make_shared<Shelf>(contentLimit)) {}

PictureLibrary::~PictureLibrary() {
    shelf->forget();
}

PictureLibrary& PictureLibrary::shared() {
    static PictureLibrary library;
    return library;
}

OpenedPicture PictureLibrary::open(const std::string& path, const PageChoice& choice) {
    const FileStamp stamp = stampOfFile(path);
    if (!stamp.isKnown()) return {PictureStatus::missing, nullptr, "There is no such file.", {}};
    return shelf->opened("opened " + keyText(stamp) + ' ' + keyText(choice) + ' ' + path, {path, stamp, nullptr},
                         choice);
}

OpenedPicture PictureLibrary::openBytes(std::shared_ptr<const std::string> bytes, const PageChoice& choice) {
    const std::string key = "opened " + keyText(keyOf(*bytes)) + ' ' + keyText(choice);
    return shelf->opened(key, {{}, {}, std::move(bytes)}, choice);
}

PictureLibrary::Counts PictureLibrary::counts() const {
    return {shelf->filesRead, shelf->decoded};
}

}  // namespace tarnova
