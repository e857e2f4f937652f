#include "tags/sequence_items.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "engine/toolkit/messages.h"
#include "engine/toolkit/toolkit_state.h"
#include "tags/frame_scripts.h"
#include "tags/link_check.h"

namespace tarnova {

namespace {

constexpr double fixedOne = 65536;  // 16.16
constexpr std::uint16_t progressMessage = 228;

std::int64_t fixedOf(double points) {
    return std::llround(points * fixedOne);
}

/// One of the two keys of an order.
struct sortKeyRec {
    double sequencePlaceRec::*side;
    bool falls;  // from the highest down

    /// How far `b` lies behind `a` in the direction of the sort.
    [[nodiscard]] std::int64_t distance(const sequencePlaceRec& a, const sequencePlaceRec& b) const {
        const std::int64_t rise = fixedOf(b.*side) - fixedOf(a.*side);
        return falls ? -rise : rise;
    }
};

struct readingOrderRec {
    sortKeyRec first;
    sortKeyRec second;
};

constexpr auto top = &sequencePlaceRec::top;
constexpr auto left = &sequencePlaceRec::left;
constexpr readingOrderRec orders[] = {
    {{top, false}, {left, false}}, {{top, false}, {left, true}},  {{top, true}, {left, false}},
    {{top, true}, {left, true}},   {{left, false}, {top, false}}, {{left, true}, {top, false}},
    {{left, false}, {top, true}},  {{left, true}, {top, true}},
};

/// The Shell sort with the gaps 1, 4, 13 and so on, so that equal items come out in a known order.
void shellSort(sequencePlaceRec* places, std::size_t count, const sortKeyRec& key) {
    std::size_t gap = 1;
    while (gap < count / 9)
        gap = 3 * gap + 1;
    for (; gap > 0; gap /= 3) {
        for (std::size_t i = gap; i < count; ++i) {
            const sequencePlaceRec moved = places[i];
            std::size_t at = i;
            for (; at >= gap && key.distance(moved, places[at - gap]) > 0; at -= gap)
                places[at] = places[at - gap];
            places[at] = moved;
        }
    }
}

ItemKinds kindsOf(const sequenceItemsRec& settings) {
    const bool isKnown = settings.itemKind >= 1 && settings.itemKind <= 4;
    return isKnown ? static_cast<ItemKinds>(settings.itemKind) : ItemKinds::all;
}

class ItemNumbering {
 public:
    ItemNumbering(Document& itsDocument, const sequenceItemsRec& itsSettings, const sequenceChoiceRec& itsChoice)
        : document(itsDocument),
          settings(itsSettings),
          choice(itsChoice),
          kinds(kindsOf(itsSettings)),
          number(itsSettings.firstNumber) {}

    /// Each list is ordered by itself; progress counts all of them.
    bool run(const std::vector<std::vector<UID>>& lists) {
        const PMString text = messageString(progressMessage);
        statusDialog(text, 0, true, false, toolkitState().engineError);
        for (std::size_t i = 0; i < lists.size() && good; ++i) {
            if (settings.restartPerPage != 0 && settings.scope == sequenceScopeDocument) number = settings.firstNumber;
            numberItems(lists[i]);
            statusDialog(text, static_cast<int>((i + 1) * 100 / lists.size()), true, false, toolkitState().engineError);
        }
        statusDialog(text, -1, true, false, toolkitState().engineError);
        return good;
    }

    [[nodiscard]] std::int32_t numbered() const { return count; }

 private:
    void numberItems(const std::vector<UID>& items) {
        std::vector<sequencePlaceRec> places;
        for (const UID item : items)
            collect(item, places);
        orderInReading(places, settings.sortOrder, settings.gridSize);
        for (const sequencePlaceRec& place : places) {
            const UIDRef item{&document, place.item};
            good = changeFrameTreeKeys(item, std::to_string(number), kinds) == 0 && good;
            if (settings.proofAfter != 0 && choice.proof) choice.proof(item);
            number += settings.increment;
            ++count;
        }
    }

    void collect(UID item, std::vector<sequencePlaceRec>& places) const {
        if (document.isGroup(item) && settings.groupsAsOne == 0) {
            for (std::int32_t i = 0; i < document.childCount(item); ++i)
                collect(document.childAt(item, i), places);
        } else if (document.isGroup(item) ? groupQualifies(item) : frameQualifies(item)) {
            const PMRect bounds = document.boundsInSpread(item);
            places.push_back({item, bounds.top, bounds.left});
        }
    }

    [[nodiscard]] bool isKnown(UID item) const {
        frameScriptRec script;
        return itemHasLinks({&document, item}) || readFrameScript({&document, item}, script);
    }

    [[nodiscard]] bool frameQualifies(UID item) const {
        if (document.itemClass(item) != ItemClass::splineItem || kinds == ItemKinds::groups) return false;
        const bool isText = document.isTextFrame(item);
        const bool isWanted = kinds == ItemKinds::all || isText == (kinds == ItemKinds::textFrames);
        return isWanted && isKnown(item);
    }

    /// What is asked for a group's links looks into its members.
    [[nodiscard]] bool groupQualifies(UID item) const {
        if (kinds != ItemKinds::groups) return false;
        if (isKnown(item)) return true;
        for (std::int32_t i = 0; i < document.childCount(item); ++i) {
            const UID member = document.childAt(item, i);
            if (document.isGroup(member) ? groupQualifies(member) : isKnown(member)) return true;
        }
        return false;
    }

    Document& document;
    const sequenceItemsRec& settings;
    const sequenceChoiceRec& choice;
    ItemKinds kinds;
    std::int64_t number;
    std::int32_t count = 0;
    bool good = true;
};

/// The items that lie directly on the layers of a page, from front to back.
std::vector<UID> itemsOfPage(const Document& document, UID page) {
    std::vector<UID> items;
    const UID spread = document.spreadOfPage(page);
    for (std::int32_t layer = document.layerCount() - 1; layer >= 1; --layer) {
        const UID node = document.spreadLayerNode(spread, document.layerAt(layer));
        for (std::int32_t i = document.childCount(node) - 1; i >= 0; --i) {
            const UID item = document.childAt(node, i);
            if (document.pageOfItem(item).page == page) items.push_back(item);
        }
    }
    return items;
}

std::vector<std::vector<UID>> listsOf(const Document& document, const sequenceItemsRec& settings,
                                      const sequenceChoiceRec& choice) {
    if (settings.scope == sequenceScopeSelection) return {choice.selectedItems};
    if (settings.scope == sequenceScopePage) return {itemsOfPage(document, choice.currentPage)};
    std::vector<std::vector<UID>> lists;
    for (std::int32_t i = 0; i < document.pageCount(); ++i)
        lists.push_back(itemsOfPage(document, document.pageAt(i)));
    return lists;
}

}  // namespace

void orderInReading(std::vector<sequencePlaceRec>& places, std::uint16_t sortOrder, std::int32_t gridSizePt) {
    const readingOrderRec& order = orders[sortOrder >= 1 && sortOrder <= std::size(orders) ? sortOrder - 1 : 0];
    shellSort(places.data(), places.size(), order.first);
    const std::int64_t reach = std::int64_t{gridSizePt} * static_cast<std::int64_t>(fixedOne) / 2;
    for (std::size_t start = 0, limit = 0; start < places.size(); start = limit) {
        while (limit < places.size() && order.first.distance(places[start], places[limit]) <= reach)
            ++limit;
        limit = std::max(limit, start + 1);
        shellSort(places.data() + start, limit - start, order.second);
    }
}

bool sequencePageItems(UIDRef document, const sequenceItemsRec& settings, const sequenceChoiceRec& choice,
                       std::int32_t& outCount) {
    outCount = 0;
    const PMString title = PMString::ofKey("kZavoSequencePageItemsDialogTitleKey");
    if (document.database == nullptr || document.database->BeginCommandSequence(title.view()) != 0) return false;
    ItemNumbering numbering(*document.database, settings, choice);
    const bool good = numbering.run(listsOf(*document.database, settings, choice));
    document.database->EndCommandSequence();
    outCount = numbering.numbered();
    return good;
}

}  // namespace tarnova
