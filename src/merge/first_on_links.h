// The first link of a name on a page or spread, as a reader sees it: where a link takes its key from another.

#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "document/geometry.h"
#include "document/uid.h"
#include "tags/tag_record.h"

namespace tarnova {

// Values of an extraction record's `keyType` (the first of its `magicKeyNumbers`): where a link has its key from.
inline constexpr std::int16_t keyTypeOwn = 0;
inline constexpr std::int16_t keyTypeFirstOnPage = 1;
inline constexpr std::int16_t keyTypeFirstOnSpread = 2;
inline constexpr std::int16_t keyTypeTextBefore = 3;
inline constexpr std::int16_t keyTypeTextBehind = 4;
inline constexpr std::int16_t keyTypeTextHere = 5;
inline constexpr std::int16_t keyTypeKeyBefore = 6;
inline constexpr std::int16_t keyTypeKeyBehind = 7;

/// Which link is the first: `corner` (`keyOption1`) 0 top left, 1 top right, 2 bottom left, 3 bottom right when
/// `axis` (`keyOption2`) is 0 and the vertical distance counts first; with any other axis the horizontal distance
/// counts first, and 1 and 2 change places.
struct firstOnOrderRec {
    std::int16_t corner = 0;
    std::int16_t axis = 0;
};

/// Finds such links. A page is walked at its first question; its answers then stay, whatever changes.
class FirstOnLinkTracker {
 public:
    explicit FirstOnLinkTracker(UIDRef document) : document_(document) {}

    /// Gives the tag of the first link with a name, or of the first of all links when the name is empty. False, and
    /// `out` cleared, when there is none. `out` has no further keys.
    [[nodiscard]] bool firstOnPage(std::int32_t pageIndex, firstOnOrderRec order, std::string_view linkName,
                                   tagDataRec& out);
    [[nodiscard]] bool firstOnSpread(std::int32_t spreadIndex, firstOnOrderRec order, std::string_view linkName,
                                     tagDataRec& out);

    static constexpr std::size_t orderCount = 8;
    struct firstOnSlot {
        tagDataRec tag;
        PMRect bounds;  // in the spread's coordinates
    };
    /// The best link of a name for each order.
    struct firstOnRec {
        std::array<firstOnSlot, orderCount> slots;
    };
    struct scopeEntry {
        std::int32_t scopeIndex = 0;
        std::vector<firstOnRec> links;  // in the order in which their names were met
    };

 private:
    [[nodiscard]] const scopeEntry* entryOf(std::vector<scopeEntry>& entries, std::int32_t index, bool isSpread);

    UIDRef document_;
    std::vector<scopeEntry> pages_;
    std::vector<scopeEntry> spreads_;
};

/// The tracker of the price document under way; null outside of one.
[[nodiscard]] FirstOnLinkTracker* firstOnTracker();
void startFirstOnTracker(UIDRef document);
void endFirstOnTracker();

}  // namespace tarnova
