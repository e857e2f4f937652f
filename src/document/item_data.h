// The typed-entry block of a page item or a document: a short list of byte payloads, at most one of each type, stored
// big-endian. A block's header is 4 bytes for the size of all entries and 4 for the version, 1; an entry's is 4 bytes
// for the payload's size and 4 for its type. docs/tag-records.md has it byte by byte.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "document/uid.h"

namespace tarnova {

// Entry types, four-character codes.
inline constexpr std::uint32_t itemDataFrameTag = 0x41514D70;       // 'AQMp': the frame's tag record
inline constexpr std::uint32_t itemDataChartTag = 0x41514D71;       // 'AQMq': its second tag, of a chart
inline constexpr std::uint32_t itemDataActionFrame = 0x61716D50;    // 'aqmP': JSON, always in the `Kelvane` store
inline constexpr std::uint32_t itemDataControlFrame = 0x61716D47;   // 'aqmG'
inline constexpr std::uint32_t itemDataVariable = 0x61716D48;       // 'aqmH': marks the item as variable
inline constexpr std::uint32_t itemDataPassThrough = 0x61716D4C;    // 'aqmL': marks an image as pass-through
inline constexpr std::uint32_t itemDataPdfPage = 0x61716D4D;        // 'aqmM': page selection of a placed PDF
inline constexpr std::uint32_t itemDataPicturePlaced = 0x61716D49;  // 'aqmI': 8 bytes in machine order, the only one
inline constexpr std::uint32_t itemDataFrameName = 0x61716D4A;      // 'aqmJ': 260 bytes, version 1 and a Pascal string
inline constexpr std::uint32_t itemDataThreadCopies = 0x61716D4B;   // 'aqmK': 8 bytes, threads across copies
inline constexpr std::uint32_t itemDataLabelSort = 0x61716D4E;      // 'aqmN': of a document, 20 bytes
inline constexpr std::uint32_t itemDataPreflight = 0x61716D4F;      // 'aqmO': of a document
inline constexpr std::uint32_t itemDataDocumentSettings = 0x41514D73;  // 'AQMs': of a document
inline constexpr std::uint32_t itemDataSlug = 0x41514D67;              // 'AQMg': of a document, the DDF text

inline constexpr std::size_t itemDataHeaderBytes = 8;  // of a block, and of each entry

/// Where a block lies.
enum class ItemDataPlace : std::uint8_t { document = 0, pageItem = 1 };

/// Payload of the entry `type` in a block's bytes; nothing when it isn't there or the block's stated and real size
/// differ. Valid as long as `block`.
[[nodiscard]] std::optional<std::string_view> itemDataFind(std::string_view block, std::uint32_t type);

/// The block with the entry `type` replaced, or taken away when `payload` is nothing. A new or rewritten entry becomes
/// the last; the others keep their order. A block whose sizes don't hold is dropped first. The header stays when no
/// entry is left. Gives nothing when the block would pass the 32 bits of its size.
[[nodiscard]] std::optional<std::string> itemDataReplace(std::string_view block, std::uint32_t type,
                                                         std::optional<std::string_view> payload);

/// The entry on an item (or, for the document, on `item.database`) of store 0 `Kelvane` or 1 `Tallyra`, without a copy:
/// valid until the next change of the document. A document entry that its store doesn't hold is looked for in the store
/// of the engine mode as well.
[[nodiscard]] std::optional<std::string_view> itemDataView(UIDRef item, ItemDataPlace place, std::uint32_t type,
                                                           std::uint16_t store);

/// The same as a copy: 1 when found, else 0 with null and 0. Either out argument may be null. The copy is a block of
/// the caller, who frees it with freeBlock; it is null when there is no memory.
std::uint16_t itemDataGet(UIDRef item, ItemDataPlace place, std::uint32_t type, std::byte** outCopy,
                          std::size_t* outSize, std::uint16_t store);

/// Replaces the entry, or removes it when `data` is null; 1 on success. The whole block goes to the document in one
/// command. Taking an entry away from an item that has no block changes nothing and succeeds.
std::uint16_t itemDataSet(UIDRef item, ItemDataPlace place, std::uint32_t type, const void* data, std::size_t sizeBytes,
                          std::uint16_t store);

}  // namespace tarnova
