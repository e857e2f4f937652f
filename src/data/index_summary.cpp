#include <cstring>

#include "data/error_place.h"
#include "data/key_index.h"

namespace tarnova {

namespace {

// An index file of which single words are read where they lie.
class IndexReader {
 public:
    explicit IndexReader(fileHandle file) : file_(file) {}

    template <typename T>
    T read(std::uint64_t offset) {
        T value{};
        std::size_t count = sizeof value;
        err_ = fileSeek(file_, fileFromStart, static_cast<std::int64_t>(offset), nullptr, err_);
        err_ = fileRead(file_, &value, &count, nullptr, err_);
        if (err_ == 0 && count != sizeof value) err_ = errIndexHeaderRead;
        return value;
    }
    errorWord error() const { return err_; }

 private:
    fileHandle file_;
    errorWord err_ = 0;
};

std::uint32_t readFlags(IndexReader& reader, const indexHeader& header, std::uint32_t record) {
    const auto place =
        reader.read<numberTableEntry>(header.numberTable.offset + std::uint64_t{record} * sizeof(numberTableEntry));
    const auto row =
        reader.read<indexSection>(header.keyTable.offset + std::uint64_t{place.keyIndex} * sizeof(indexSection));
    const auto entriesAt = reader.read<std::uint32_t>(std::uint64_t{header.keyGroups.offset} + row.offset);
    constexpr std::uint32_t flagsAt = 4;
    return reader.read<std::uint32_t>(std::uint64_t{header.entries.offset} + entriesAt + place.offsetInGroup + flagsAt);
}

errorWord summarize(fileHandle file, const indexHeader& header, indexSummary& summary) {
    std::int64_t size = 0;
    const errorWord err = fileSize(file, &size, nullptr, 0);
    summary.fileBytes = static_cast<std::uint64_t>(size);
    summary.keyCount = header.keyTable.size / sizeof(indexSection);
    summary.encoding = header.encoding;
    IndexReader reader(file);
    std::uint32_t count = header.numberTable.size / sizeof(numberTableEntry);
    while (count > 0 && reader.error() == 0 && (readFlags(reader, header, count - 1) & recordHasContent) == 0)
        --count;
    summary.recordCount = count;
    return err != 0 ? err : reader.error();
}

}  // namespace

errorWord readIndexSummary(const char* indexPath, indexSummary& summary, errorWord priorError) {
    if (priorError != 0) return priorError;
    summary = {};
    const auto header = newRecord<indexHeader>();
    if (header == nullptr) return errIndexMemory;
    std::size_t got = 0;
    errorWord err = readIndexHeader(indexPath, *header, got, 0);
    if (err == 0 && (got < indexHeaderSize || pstrView(header->tag) != indexTag)) err = errIndexHeaderRead;
    fileHandle file = noFile;
    err = fileOpen(indexPath, fileReadOnly, &file, nullptr, err);
    if (err == 0) err = summarize(file, *header, summary);
    fileClose(file);
    return fileErrorAs(err, errIndexHeaderRead, indexPath);
}

}  // namespace tarnova
