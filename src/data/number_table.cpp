#include "data/number_table.h"

#include <algorithm>

#include "data/error_place.h"

namespace tarnova {

errorWord NumberTable::begin(errorWord priorError) {
    if (priorError != 0) return priorError;
    const std::size_t records = std::min(recordCount_, limits_.windowRecords);
    table_.reset(static_cast<numberTableEntry*>(newBlockClear(records * sizeof(numberTableEntry))));
    if (table_ == nullptr) return errFileBuffer;
    if (isSmall()) return 0;
    windows_.resize((std::size_t{recordCount_} + limits_.windowRecords - 1) / limits_.windowRecords);
    windowTuples_ = std::max<std::size_t>(limits_.windowBufferBytes / sizeof(tuple), 1);
    return tuples_.open(folder_.path(tempTuples), limits_.writeBytes, errTupleWrite, 0);
}

void NumberTable::add(std::uint32_t recordNumber, numberTableEntry entry) {
    if (isSmall()) {
        table_.get()[recordNumber] = entry;
        return;
    }
    window& into = windows_[recordNumber / limits_.windowRecords];
    into.gathered.push_back({recordNumber, entry});
    if (into.gathered.size() == windowTuples_) writeChunk(into);
}

void NumberTable::writeChunk(window& into) {
    into.chunks.push_back({tuples_.written(), into.gathered.size()});
    tuples_.write(into.gathered.data(), into.gathered.size() * sizeof(tuple));
    into.gathered.clear();
}

// Puts the tuples of a window in their places.
errorWord NumberTable::scatter(const window& from, fileHandle file, std::uint32_t firstRecord) {
    std::vector<tuple> read(windowTuples_);
    const auto place = [&](const tuple& each) { table_.get()[each.recordNumber - firstRecord] = each.entry; };
    std::for_each(from.gathered.begin(), from.gathered.end(), place);
    for (const chunk& each : from.chunks) {
        const std::size_t wanted = each.count * sizeof(tuple);
        std::size_t count = wanted;
        errorWord err = fileSeek(file, fileFromStart, static_cast<std::int64_t>(each.offset), nullptr, 0);
        err = fileRead(file, read.data(), &count, nullptr, err);
        if (err != 0 || count != wanted) return errorAt(errTupleRead, folder_.path(tempTuples));
        std::for_each_n(read.begin(), each.count, place);
    }
    return 0;
}

errorWord NumberTable::writeTo(BlockWriter& out, errorWord priorError) {
    if (priorError != 0) return priorError;
    if (isSmall()) {
        out.write(table_.get(), std::size_t{recordCount_} * sizeof(numberTableEntry));
        return 0;
    }
    errorWord err = tuples_.finish(0);
    fileHandle file = noFile;
    const std::string path = folder_.path(tempTuples);
    err = fileErrorAs(fileOpen(path.c_str(), fileReadOnly, &file, nullptr, err), err != 0 ? err : errTupleRead, path);
    for (std::size_t i = 0; i < windows_.size() && err == 0; ++i) {
        const auto first = static_cast<std::uint32_t>(i * limits_.windowRecords);
        err = scatter(windows_[i], file, first);
        const std::uint32_t count = std::min(limits_.windowRecords, recordCount_ - first);
        if (err == 0) out.write(table_.get(), std::size_t{count} * sizeof(numberTableEntry));
    }
    fileClose(file);
    return err;
}

}  // namespace tarnova
