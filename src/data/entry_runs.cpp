#include "data/entry_runs.h"

#include <algorithm>

#include "data/error_place.h"

namespace tarnova {

namespace {

constexpr std::uint32_t smallestEntry = entryFixedSize + 4;  // an empty key and one field

template <typename T>
bool allocate(blockPtr<T>& block, std::size_t count) {
    block.reset(static_cast<T*>(newBlock(count * sizeof(T))));
    return block != nullptr;
}

}  // namespace

errorWord EntryRuns::makeBuffers() {
    const std::size_t entries = limits_.batchBytes / smallestEntry + 1;
    if (!allocate(readBuffer_, limits_.readBytes) || !allocate(batchBytes_, limits_.batchBytes) ||
        !allocate(batchOffsets_, entries) || !allocate(order_, entries))
        return errFileBuffer;
    batch_ = {batchBytes_.get(), limits_.batchBytes, 0, batchOffsets_.get(), entries, 0, false};
    return 0;
}

errorWord EntryRuns::collect(const parserConfig& config, const char* dataFilePath, bool isUtf8, errorWord priorError) {
    if (priorError != 0) return priorError;
    errorWord err = makeBuffers();
    if (err != 0) return err;
    fileHandle file = noFile;
    if (fileOpen(dataFilePath, fileReadOnly, &file, nullptr, 0) != 0) return errorAt(errDataRead, dataFilePath);
    err = parseFile(config, file, isUtf8);
    fileClose(file);
    if (err == errDataRead || err == errFilePositioning) errorAt(err, dataFilePath);
    readBuffer_.reset();
    batchOffsets_.reset();
    return runsOpen_ ? runWriter_.finish(err) : err;
}

errorWord EntryRuns::parseFile(const parserConfig& config, fileHandle file, bool isUtf8) {
    const auto state = newRecord<parserState>();
    if (state == nullptr) return errFileBuffer;
    parserInput input{readBuffer_.get(), 0, 0, false};
    errorWord err = 0;
    while (err == 0 && state->finished == 0) {
        if (!batch_.full && !input.endOfFile) err = refill(file, input);
        err = parseRecords(config, *state, input, batch_, isUtf8, err);
        if (err == 0 && batch_.full) err = writeBatch();
    }
    recordCount_ = state->record.recordNumber;
    sortBatch();
    return err;
}

// Keeps what the parser left and reads behind it.
errorWord EntryRuns::refill(fileHandle file, parserInput& input) {
    std::uint8_t* const buffer = readBuffer_.get();
    const std::size_t kept = input.size - input.used;
    std::memmove(buffer, buffer + input.used, kept);
    const std::size_t wanted = limits_.readBytes - kept;
    std::size_t count = wanted;
    if (fileRead(file, buffer + kept, &count, nullptr, 0) != 0) return errDataRead;
    input.used = 0;
    input.size = kept + count;
    input.endOfFile = count < wanted;
    return 0;
}

bool EntryRuns::sortsBefore(const entryReference& a, const entryReference& b) const {
    if (a.prefix != b.prefix) return a.prefix < b.prefix;
    if (a.secondPrefix != b.secondPrefix) return a.secondPrefix < b.secondPrefix;
    const bool whole = a.keyLength <= 2 * sizeof a.prefix && b.keyLength <= 2 * sizeof b.prefix;
    if (whole && a.keyLength != b.keyLength) return a.keyLength < b.keyLength;  // one ends in zero bytes
    if (!whole) {
        const std::uint8_t* const bytes = batchBytes_.get();
        const int order = keyCompare(keyOfEntry(bytes + a.offset), keyOfEntry(bytes + b.offset), caseSensitive_);
        if (order != 0) return order < 0;
    }
    return a.offset < b.offset;
}

void EntryRuns::sortBatch() {
    entryReference* const order = order_.get();
    for (std::size_t i = 0; i < batch_.referenceCount; ++i) {
        const std::uint32_t offset = batchOffsets_.get()[i];
        const std::string_view key = keyOfEntry(batchBytes_.get() + offset);
        const std::string_view rest = key.substr(std::min(key.size(), sizeof(std::uint64_t)));
        order[i] = {keyPrefixOf(key, caseSensitive_), keyPrefixOf(rest, caseSensitive_), offset,
                    static_cast<std::uint32_t>(key.size())};
    }
    std::sort(order, order + batch_.referenceCount,
              [this](const entryReference& a, const entryReference& b) { return sortsBefore(a, b); });
}

// Whether the sorted batch goes on where the last one ended. Its entries lie behind those in the file, so that an equal
// key goes on too.
bool EntryRuns::continuesRun() const {
    const std::string_view first = keyOfEntry(batchBytes_.get() + order_.get()[0].offset);
    return !runs_.empty() && keyCompare(pstrView(lastKey_), first, caseSensitive_) <= 0;
}

errorWord EntryRuns::writeBatch() {
    if (!runsOpen_) {
        const errorWord err = runWriter_.open(folder_.path(tempRuns), limits_.writeBytes, errEntryWrite, 0);
        if (err != 0) return err;
        runsOpen_ = true;
    }
    sortBatch();
    if (!continuesRun()) runs_.push_back({runWriter_.written(), 0});
    const std::uint8_t* entry = nullptr;
    for (std::size_t i = 0; i < batch_.referenceCount; ++i) {
        entry = batchBytes_.get() + order_.get()[i].offset;
        runWriter_.write(entry, load32(entry));
    }
    if (entry != nullptr) pstrCopy(lastKey_, entry + entryKeyAt);
    runs_.back().size = runWriter_.written() - runs_.back().offset;
    batch_.used = batch_.referenceCount = 0;
    return 0;
}

errorWord EntryRuns::mergeToFew(errorWord priorError) {
    errorWord err = priorError;
    while (err == 0 && runs_.size() > limits_.mergeWays)
        err = mergePass();
    return err;
}

errorWord EntryRuns::mergePass() {
    BlockWriter out;
    errorWord err = out.open(folder_.path(tempMergedRuns), limits_.writeBytes, errMergeWrite, 0);
    std::vector<entryRun> merged;
    for (std::size_t first = 0; first < runs_.size() && err == 0; first += limits_.mergeWays) {
        EntryMerge merge(*this);
        err = merge.open(first, std::min(first + limits_.mergeWays, runs_.size()), false, errMergeRead, err);
        merged.push_back({out.written(), 0});
        while (err == 0) {
            const std::uint8_t* entry = merge.next();
            if (entry == nullptr) break;
            out.write(entry, load32(entry));
        }
        if (err == 0) err = merge.error();
        merged.back().size = out.written() - merged.back().offset;
    }
    err = out.finish(err);
    runs_ = std::move(merged);
    const std::string runs = folder_.path(tempRuns);
    return err != 0 ? err
                    : fileErrorAs(fileExchange(runs.c_str(), folder_.path(tempMergedRuns).c_str(), 0), errIndexExchange,
                                  runs);
}

errorWord EntryMerge::open(std::size_t first, std::size_t limit, bool withBatch, errorWord readError,
                           errorWord priorError) {
    if (priorError != 0) return priorError;
    readError_ = readError;
    const std::string path = owner_.folder_.path(tempRuns);
    if (first < limit && fileOpen(path.c_str(), fileReadOnly, &file_, nullptr, 0) != 0) return errorAt(readError, path);
    for (std::size_t i = first; i < limit; ++i) {
        source from;
        if (!allocate(from.buffer, owner_.limits_.mergeBytes)) return errFileBuffer;
        from.fileAt = owner_.runs_[i].offset;
        from.fileLeft = owner_.runs_[i].size;
        sources_.push_back(std::move(from));
    }
    if (withBatch) sources_.emplace_back();

    for (std::size_t i = 0; i < sources_.size(); ++i)
        if (advance(sources_[i])) heap_.push_back(i);
    for (std::size_t i = heap_.size() / 2; i-- > 0;)
        sink(i);
    return error_;
}

const std::uint8_t* EntryMerge::next() {
    if (started_ && !heap_.empty()) {
        if (!advance(sources_[heap_[0]])) {
            heap_[0] = heap_.back();
            heap_.pop_back();
        }
        sink(0);
    }
    started_ = true;
    return error_ != 0 || heap_.empty() ? nullptr : sources_[heap_[0]].entry;
}

// Moves to the next entry of a source. False at its end and after an error.
bool EntryMerge::advance(source& from) {
    if (from.buffer == nullptr) {
        if (from.batchAt == owner_.batch_.referenceCount) return false;
        const entryReference& reference = owner_.order_.get()[from.batchAt++];
        from.entry = owner_.batchBytes_.get() + reference.offset;
        from.prefix = reference.prefix;
        return true;
    }
    if (from.entry != nullptr) from.at += load32(from.entry);
    const std::size_t left = from.filled - from.at;
    if (left < 4 || left < load32(from.buffer.get() + from.at)) {
        if (left == 0 && from.fileLeft == 0) return false;
        if (!fill(from)) return false;
    }
    from.entry = from.buffer.get() + from.at;
    from.prefix = keyPrefixOf(keyOfEntry(from.entry), owner_.caseSensitive_);
    return true;
}

// Moves what is left of the buffer to its front and reads behind it, so that a whole entry lies there.
bool EntryMerge::fill(source& from) {
    std::uint8_t* const buffer = from.buffer.get();
    const std::size_t left = from.filled - from.at;
    std::memmove(buffer, buffer + from.at, left);
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(owner_.limits_.mergeBytes - left, from.fileLeft));
    std::size_t count = wanted;
    errorWord err = fileSeek(file_, fileFromStart, static_cast<std::int64_t>(from.fileAt), nullptr, 0);
    err = fileRead(file_, buffer + left, &count, nullptr, err);
    from.at = 0;
    from.filled = left + wanted;
    from.fileAt += wanted;
    from.fileLeft -= wanted;
    const bool isWhole = err == 0 && count == wanted && from.filled >= smallestEntry &&
                         load32(buffer) >= smallestEntry && load32(buffer) <= from.filled;
    if (!isWhole) error_ = errorAt(readError_, owner_.folder_.path(tempRuns));
    return isWhole;
}

bool EntryMerge::comesFirst(std::size_t a, std::size_t b) const {
    const source &first = sources_[a], &second = sources_[b];
    if (first.prefix != second.prefix) return first.prefix < second.prefix;
    const int order = keyCompare(keyOfEntry(first.entry), keyOfEntry(second.entry), owner_.caseSensitive_);
    return order != 0 ? order < 0 : a < b;
}

void EntryMerge::sink(std::size_t at) {
    for (;;) {
        std::size_t least = at;
        for (std::size_t child = 2 * at + 1; child <= 2 * at + 2 && child < heap_.size(); ++child)
            if (comesFirst(heap_[child], heap_[least])) least = child;
        if (least == at) return;
        std::swap(heap_[at], heap_[least]);
        at = least;
    }
}

}  // namespace tarnova
