// Parse into sorted runs, merge them, write the groups, put the sections together, put the file in place. The file is
// the same for any limits.

#include "data/index_build.h"

#include <limits>

#include "data/entry_runs.h"
#include "data/error_place.h"
#include "data/number_table.h"
#include "data/temp_files.h"
#include "engine/toolkit/messages.h"

namespace tarnova {

namespace {

constexpr std::uint64_t sectionLimit = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint16_t messageBuilding = 16;

// Writes the three sections that are in key order, each into a file of its own.
class SectionWriter {
 public:
    SectionWriter(const BuildFolder& folder, const indexBuildLimits& limits, bool caseSensitive)
        : folder_(folder), limits_(limits), caseSensitive_(caseSensitive) {}

    errorWord begin(errorWord priorError);
    void add(const std::uint8_t* entry, NumberTable& numbers);
    errorWord finish(errorWord priorError);

    std::uint64_t keyTableSize() const { return keyTable_.written(); }
    std::uint64_t keyGroupsSize() const { return keyGroups_.written(); }
    std::uint64_t entriesSize() const { return entries_.written(); }

 private:
    void endGroup();

    const BuildFolder& folder_;
    const indexBuildLimits& limits_;
    const bool caseSensitive_;
    BlockWriter keyTable_, keyGroups_, entries_;
    bool groupOpen_ = false;
    std::uint64_t groupStart_ = 0;  // in the entries
    std::uint32_t keyIndex_ = 0;
    Str64 groupKey_{};
};

errorWord SectionWriter::begin(errorWord priorError) {
    errorWord err = keyTable_.open(folder_.path(tempKeyTable), limits_.writeBytes, errKeyTableWrite, priorError);
    err = keyGroups_.open(folder_.path(tempKeyGroups), limits_.writeBytes, errKeyGroupsWrite, err);
    return entries_.open(folder_.path(tempEntries), limits_.writeBytes, errEntriesWrite, err);
}

void SectionWriter::endGroup() {
    if (!groupOpen_) return;
    const std::uint32_t row[2] = {static_cast<std::uint32_t>(keyGroups_.written()), 9u + groupKey_[0]};
    const std::uint32_t range[2] = {static_cast<std::uint32_t>(groupStart_),
                                    static_cast<std::uint32_t>(entries_.written() - groupStart_)};
    keyTable_.write(row, sizeof row);
    keyGroups_.write(range, sizeof range);
    keyGroups_.write(groupKey_, std::size_t{1} + groupKey_[0]);
    ++keyIndex_;
}

void SectionWriter::add(const std::uint8_t* entry, NumberTable& numbers) {
    const std::string_view key = keyOfEntry(entry);
    if (!groupOpen_ || keyCompare(key, pstrView(groupKey_), caseSensitive_) != 0) {
        endGroup();
        groupOpen_ = true;
        groupStart_ = entries_.written();
        groupKey_[0] = static_cast<std::uint8_t>(key.size());
        std::memcpy(groupKey_ + 1, key.data(), key.size());
    }
    const auto keySize = static_cast<std::uint32_t>(key.size() + 1);
    const std::uint32_t size = load32(entry), storedSize = size - keySize;
    numbers.add(load32(entry + entryRecordNumberAt),
                {keyIndex_, static_cast<std::uint32_t>(entries_.written() - groupStart_)});
    entries_.write(&storedSize, sizeof storedSize);
    entries_.write(entry + entryFlagsAt, entryKeyAt - entryFlagsAt);
    entries_.write(entry + entryKeyAt + keySize, size - entryKeyAt - keySize);
}

errorWord SectionWriter::finish(errorWord priorError) {
    endGroup();
    errorWord err = keyTable_.finish(priorError);
    err = keyGroups_.finish(err);
    return entries_.finish(err);
}

errorWord writeSections(EntryRuns& runs, std::size_t runLimit, SectionWriter& sections, NumberTable& numbers,
                        errorWord priorError) {
    EntryMerge merge(runs);
    errorWord err = merge.open(0, runLimit, true, errGroupRead, priorError);
    err = sections.begin(err);
    while (err == 0) {
        const std::uint8_t* entry = merge.next();
        if (entry == nullptr) break;
        if (sections.entriesSize() + load32(entry) > sectionLimit)
            err = errFilePositioning;
        else
            sections.add(entry, numbers);
    }
    if (err == 0) err = merge.error();
    return sections.finish(err);
}

// Copies a section's file behind what `out` has.
errorWord appendSection(const std::string& path, std::uint8_t* block, std::size_t blockSize, BlockWriter& out,
                        errorWord priorError) {
    if (priorError != 0) return priorError;
    fileHandle file = noFile;
    errorWord err = fileOpen(path.c_str(), fileReadOnly, &file, nullptr, 0);
    for (std::size_t count = blockSize; err == 0 && count == blockSize;) {
        err = fileRead(file, block, &count, nullptr, err);
        if (err == 0) out.write(block, count);
    }
    fileClose(file);
    return fileErrorAs(err, errSectionRead, path);
}

// Sets the sections' places. False when the file would pass 4 GB.
bool placeSections(indexHeader& header, const SectionWriter& sections, std::uint32_t recordCount) {
    std::uint64_t at = indexHeaderSize;
    const auto place = [&](indexSection& section, std::uint64_t size) {
        section = {static_cast<std::uint32_t>(at), static_cast<std::uint32_t>(size)};
        at += size;
    };
    place(header.keyTable, sections.keyTableSize());
    place(header.keyGroups, sections.keyGroupsSize());
    place(header.entries, sections.entriesSize());
    place(header.numberTable, std::uint64_t{recordCount} * sizeof(numberTableEntry));
    return at <= sectionLimit;
}

// The definition as an index keeps it: without its path, and without references, which mean nothing in a file.
void writeImage(std::uint8_t* image, const recordDefRec& definition) {
    std::memcpy(image, &definition, sizeof definition);
    auto& copy = *reinterpret_cast<recordDefRec*>(image);
    std::memset(copy.databasePath, 0, sizeof copy.databasePath);
    copy.signature = nullptr;
    copy.ruleSetData2 = nullptr;
    copy.ruleSetData = nullptr;
    std::memset(copy.searchCriteria, 0, sizeof copy.searchCriteria);
    std::memset(copy.extractions, 0, sizeof copy.extractions);
    std::memset(copy.styles, 0, sizeof copy.styles);
}

// One build. The stages are called in order, each with the running error.
class IndexBuild {
 public:
    IndexBuild(const recordDefRec& definition, const char* indexPath, const char* dataFilePath,
               const indexBuildLimits& limits)
        : definition_(definition),
          indexPath_(indexPath),
          dataFilePath_(dataFilePath),
          limits_(limits),
          caseSensitive_(definition.useKeyfieldCase != 0),
          runs_(folder_, limits, caseSensitive_) {}

    errorWord prepare(errorWord priorError);
    errorWord collect(errorWord priorError);
    errorWord merge(errorWord priorError) { return runs_.mergeToFew(priorError); }
    errorWord writeGroups(errorWord priorError);
    errorWord writeFile(errorWord priorError);

 private:
    const recordDefRec& definition_;
    const char* indexPath_;
    const char* dataFilePath_;
    const indexBuildLimits& limits_;
    const bool caseSensitive_;
    BuildFolder folder_;
    blockPtr<indexHeader> header_;
    EntryRuns runs_;
    std::unique_ptr<SectionWriter> sections_;
    std::unique_ptr<NumberTable> numbers_;
};

// The date is taken before the data is read: a file that changes meanwhile must look newer than its index.
errorWord IndexBuild::prepare(errorWord priorError) {
    errorWord err = folder_.enter(indexPath_, priorError);
    if (err != 0) return err;
    header_ = newRecord<indexHeader>();
    if (header_ == nullptr) return errFileBuffer;
    pstrSet(header_->tag, indexTag);
    std::memcpy(header_->dataFilePath, dataFilePath_, strnlen(dataFilePath_, pathCapacity - 1));
    err = fileErrorAs(fileModDate(dataFilePath_, &header_->dataFileDate, 0), errDataFileDate, dataFilePath_);
    writeImage(header_->definitionImage, definition_);
    return err;
}

errorWord IndexBuild::collect(errorWord priorError) {
    parserConfig config;
    errorWord err = priorError;
    if (err == 0 && fileSizeOfPath(dataFilePath_, nullptr) > static_cast<std::int64_t>(sectionLimit))
        err = errorAt(errFilePositioning, dataFilePath_);
    std::uint16_t encoding = resolvedEightBit;
    err = parserConfigure(definition_, dataFilePath_, config, encoding, err);
    if (err == 0) header_->encoding = encoding;
    return runs_.collect(config, dataFilePath_, encoding == resolvedUtf8, err);
}

errorWord IndexBuild::writeGroups(errorWord priorError) {
    if (priorError != 0) return priorError;
    numbers_ = std::make_unique<NumberTable>(folder_, limits_, runs_.recordCount());
    sections_ = std::make_unique<SectionWriter>(folder_, limits_, caseSensitive_);
    errorWord err = numbers_->begin(0);
    err = writeSections(runs_, runs_.runCount(), *sections_, *numbers_, err);
    if (err == 0 && !placeSections(*header_, *sections_, runs_.recordCount())) err = errFilePositioning;
    if (err == errFilePositioning) errorAt(err, indexPath_);
    return err;
}

errorWord IndexBuild::writeFile(errorWord priorError) {
    if (priorError != 0) return priorError;
    const blockPtr<std::uint8_t> block(static_cast<std::uint8_t*>(newBlock(limits_.writeBytes)));
    if (block == nullptr) return errSectionBuffer;
    BlockWriter out;
    errorWord err = out.open(folder_.path(tempIndex), limits_.writeBytes, errSectionWrite, 0);
    if (err == 0) out.write(header_.get(), sizeof *header_);
    for (const char* name : {tempKeyTable, tempKeyGroups, tempEntries})
        err = appendSection(folder_.path(name), block.get(), limits_.writeBytes, out, err);
    err = numbers_->writeTo(out, err);
    err = out.finish(err);
    return err != 0 ? err
                    : fileErrorAs(fileExchange(indexPath_, folder_.path(tempIndex).c_str(), 0), errIndexExchange,
                                  indexPath_);
}

}  // namespace

errorWord buildIndexFile(const recordDefRec& definition, const char* indexPath, const char* dataFilePath,
                         const indexBuildLimits& limits, bool progress, errorWord priorError) {
    if (priorError != 0) return priorError;
    const PMString text = messageString(messageBuilding);
    const auto show = [&](int percent, errorWord err) { return statusDialog(text, percent, progress, false, err); };
    IndexBuild build(definition, indexPath, dataFilePath, limits);
    errorWord err = build.prepare(show(0, 0));
    err = show(20, build.collect(err));
    err = show(40, build.merge(err));
    err = show(60, build.writeGroups(err));
    err = show(100, build.writeFile(err));
    return show(-1, err);
}

}  // namespace tarnova
