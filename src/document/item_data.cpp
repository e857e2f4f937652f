#include "document/item_data.h"

#include <cstring>
#include <limits>

#include "document/document.h"
#include "document/walk_state.h"
#include "engine/toolkit/byte_order.h"
#include "engine/toolkit/memory.h"

namespace tarnova {

namespace {

constexpr std::uint32_t itemDataVersion = 1;
constexpr std::size_t entryTypeOffset = 4;

bool blockIsWhole(std::string_view block) {
    return block.size() >= itemDataHeaderBytes && loadBig32(block.data()) == block.size() - itemDataHeaderBytes;
}

/// One entry: `start` is the offset of its header. Entries that don't fill the block end the walk over it.
struct entryRec {
    std::size_t start = 0;
    std::size_t payloadBytes = 0;
    std::uint32_t type = 0;
    [[nodiscard]] std::size_t limit() const { return start + itemDataHeaderBytes + payloadBytes; }
};

std::optional<entryRec> entryAt(std::string_view block, std::size_t start) {
    if (block.size() - start < itemDataHeaderBytes) return std::nullopt;
    const entryRec entry{start, loadBig32(block.data() + start), loadBig32(block.data() + start + entryTypeOffset)};
    if (block.size() - start - itemDataHeaderBytes < entry.payloadBytes) return std::nullopt;
    return entry;
}

std::optional<entryRec> entryOfType(std::string_view block, std::uint32_t type) {
    if (!blockIsWhole(block)) return std::nullopt;
    std::optional<entryRec> entry = entryAt(block, itemDataHeaderBytes);
    while (entry && entry->type != type)
        entry = entryAt(block, entry->limit());
    return entry;
}

void appendBig32(std::string& bytes, std::uint32_t value) {
    char stored[4];
    storeBig32(stored, value);
    bytes.append(stored, sizeof stored);
}

/// Header and entries without those of `type`; the header alone where the block's sizes don't hold.
std::string blockWithout(std::string_view block, std::uint32_t type) {
    std::string header;
    appendBig32(header, 0);
    appendBig32(header, itemDataVersion);
    if (!blockIsWhole(block)) return header;
    std::string bytes = header;
    std::size_t offset = itemDataHeaderBytes;
    while (const std::optional<entryRec> entry = entryAt(block, offset)) {
        if (entry->type != type) bytes.append(block.substr(offset, entry->limit() - offset));
        offset = entry->limit();
    }
    return offset == block.size() ? bytes : header;
}

UID blockOwner(UIDRef item, ItemDataPlace place) {
    return place == ItemDataPlace::document ? kInvalidUID : item.uid;
}

std::optional<std::string_view> findInStore(UIDRef item, ItemDataPlace place, std::uint32_t type, std::uint16_t store) {
    const std::string* block = item.database->itemDataBlock(blockOwner(item, place), store);
    return block == nullptr ? std::nullopt : itemDataFind(*block, type);
}

/// Whether the reference and the store name a place where a block can lie.
bool placeExists(UIDRef item, ItemDataPlace place, std::uint16_t store) {
    return item.database != nullptr && store <= 1 && (place == ItemDataPlace::document || item.uid != kInvalidUID);
}

}  // namespace

std::optional<std::string_view> itemDataFind(std::string_view block, std::uint32_t type) {
    const std::optional<entryRec> entry = entryOfType(block, type);
    if (!entry) return std::nullopt;
    return block.substr(entry->start + itemDataHeaderBytes, entry->payloadBytes);
}

std::optional<std::string> itemDataReplace(std::string_view block, std::uint32_t type,
                                           std::optional<std::string_view> payload) {
    std::string bytes = blockWithout(block, type);
    if (payload) {
        constexpr std::size_t sizeLimit = std::numeric_limits<std::uint32_t>::max();
        if (sizeLimit - bytes.size() < payload->size()) return std::nullopt;
        appendBig32(bytes, static_cast<std::uint32_t>(payload->size()));
        appendBig32(bytes, type);
        bytes.append(*payload);
    }
    storeBig32(bytes.data(), static_cast<std::uint32_t>(bytes.size() - itemDataHeaderBytes));
    return bytes;
}

std::optional<std::string_view> itemDataView(UIDRef item, ItemDataPlace place, std::uint32_t type,
                                             std::uint16_t store) {
    if (!placeExists(item, place, store)) return std::nullopt;
    std::optional<std::string_view> payload = findInStore(item, place, type, store);
    const std::uint16_t modeStore = walkState().engineMode;
    if (!payload && place == ItemDataPlace::document && modeStore <= 1 && modeStore != store)
        payload = findInStore(item, place, type, modeStore);
    return payload;
}

std::uint16_t itemDataGet(UIDRef item, ItemDataPlace place, std::uint32_t type, std::byte** outCopy,
                          std::size_t* outSize, std::uint16_t store) {
    const std::optional<std::string_view> payload = itemDataView(item, place, type, store);
    if (outSize != nullptr) *outSize = payload ? payload->size() : 0;
    if (outCopy == nullptr) return payload ? 1 : 0;
    *outCopy = payload ? static_cast<std::byte*>(newBlock(payload->size())) : nullptr;
    if (*outCopy != nullptr && !payload->empty()) std::memcpy(*outCopy, payload->data(), payload->size());
    return payload ? 1 : 0;
}

std::uint16_t itemDataSet(UIDRef item, ItemDataPlace place, std::uint32_t type, const void* data, std::size_t sizeBytes,
                          std::uint16_t store) {
    if (!placeExists(item, place, store)) return 0;
    const UID owner = blockOwner(item, place);
    const std::string* block = item.database->itemDataBlock(owner, store);
    std::optional<std::string_view> payload;
    if (data != nullptr) payload.emplace(static_cast<const char*>(data), sizeBytes);
    if (block == nullptr && !payload) return 1;
    std::optional<std::string> changed =
        itemDataReplace(block != nullptr ? std::string_view(*block) : std::string_view{}, type, payload);
    return changed && item.database->setItemDataBlock(owner, store, std::move(changed)) == 0 ? 1 : 0;
}

}  // namespace tarnova
