#include "merge/first_on_links.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <unordered_set>

#include "definitions/definition_state.h"
#include "definitions/record_def_set.h"
#include "document/document.h"
#include "document/frame_callback.h"
#include "document/story_callback.h"
#include "engine/session/session.h"
#include "engine/toolkit/pstring.h"
#include "merge/link_keys.h"
#include "tags/tag_attribute.h"

namespace tarnova {
namespace {

using scopeEntry = FirstOnLinkTracker::scopeEntry;
using firstOnRec = FirstOnLinkTracker::firstOnRec;
using firstOnSlot = FirstOnLinkTracker::firstOnSlot;

constexpr double sameDistance = 0.00000001;  // points

std::size_t slotOf(firstOnOrderRec order) {
    const auto corner = static_cast<std::size_t>(std::clamp<std::int16_t>(order.corner, 0, 3));
    return 2 * corner + (order.axis == 0 ? 0 : 1);
}

/// True when `a` stands in front of `b` in the order of a slot.
bool isBefore(const PMRect& a, const PMRect& b, std::size_t slot) {
    const std::size_t corner = slot / 2;
    const double firstSign = corner < 2 ? 1 : -1, secondSign = corner % 2 == 0 ? 1 : -1;
    const bool topFirst = slot % 2 == 0;
    const double first = firstSign * (topFirst ? a.top - b.top : a.left - b.left);
    const double second = secondSign * (topFirst ? a.left - b.left : a.top - b.top);
    if (std::fabs(first) > sameDistance) return first < 0;
    return second < -sameDistance;
}

/// Takes a link into an entry, for each order in which it comes before those that are there.
void enterLink(scopeEntry& entry, const tagDataRec& tag, const PMRect& bounds) {
    const auto known = std::find_if(entry.links.begin(), entry.links.end(), [&](const firstOnRec& link) {
        return pstrView(link.slots.front().tag.extractionRecordName) == pstrView(tag.extractionRecordName);
    });
    const firstOnSlot slot{tag, bounds};
    if (known == entry.links.end()) {
        entry.links.emplace_back().slots.fill(slot);
        return;
    }
    for (std::size_t i = 0; i < known->slots.size(); ++i) {
        if (isBefore(bounds, known->slots[i].bounds, i)) known->slots[i] = slot;
    }
}

/// A link that finds its own key in the data, or beside itself; those that look for another's take no part.
bool takesPart(std::string_view data, tagDataRec& tag) {
    tag = {};
    const recordDefRec* const definition = definitionState().currentRecordDef;
    if (definition == nullptr || tagRecordDecode(data, &tag, nullptr, nullptr, 0) != 0) return false;
    extractionRec* link = nullptr;
    if (findExtraction(definition, tag.extractionRecordName, link, 0) != 0 || link == nullptr) return false;
    return !keyStandsOnPage(*link);
}

class ZavoCalcFirstOnFrameLinksCallback final : public ZavoFrameCallback {
 public:
    explicit ZavoCalcFirstOnFrameLinksCallback(scopeEntry& target) : entry(target) {}
    bool TagIsMine(std::string_view data) override { return takesPart(data, tag); }
    std::int32_t TagProcess() override {
        enterLink(entry, tag, frameRef.database->boundsInSpread(frameRef.uid));
        return 0;
    }

 private:
    scopeEntry& entry;
    tagDataRec tag{};
};

/// Takes the links that frames of the given pages show.
class ZavoCalcFirstOnTextLinksCallback final : public ZavoStoryCallback {
 public:
    ZavoCalcFirstOnTextLinksCallback(scopeEntry& target, const std::vector<UID>& ofPages)
        : entry(target), pages(ofPages) {}
    bool TagIsMine(UIDRef, const TagAttribute& attribute) override {
        return tagIsOwn(attribute) && takesPart(attribute.data(), tag);
    }
    std::int32_t TagProcess(UIDRef story) override {
        Document& document = *story.database;
        const UID page = document.pageOfItem(frameRef.uid).page;
        if (std::find(pages.begin(), pages.end(), page) == pages.end()) return 0;
        if (const auto bounds = document.textBounds(story.uid, tagStart, tagLength)) enterLink(entry, tag, *bounds);
        return 0;
    }

 private:
    scopeEntry& entry;
    const std::vector<UID>& pages;
    tagDataRec tag{};
};

/// Fills an entry from the items of some pages of a spread.
class ScopeFiller {
 public:
    ScopeFiller(Document& document, const std::vector<UID>& pages, scopeEntry& entry)
        : document_(document), pages_(pages), frames_(entry), texts_(entry, pages) {}

    /// False when the items couldn't be visited.
    [[nodiscard]] bool fill() {
        if (frames_.GetInitError() != 0 || texts_.GetInitError() != 0) return false;
        for (const UID page : pages_)
            fillFrom(page);
        return session().engineError == 0;
    }

 private:
    void fillFrom(UID page) {
        const UID spread = document_.spreadOfPage(page);
        for (std::int32_t layer = 1; layer < document_.layerCount(); ++layer) {
            const UID node = document_.spreadLayerNode(spread, document_.layerAt(layer));
            for (std::int32_t i = 0; i < document_.childCount(node); ++i) {
                const UID item = document_.childAt(node, i);
                if (document_.pageOfItem(item).page == page) visit(item);
            }
        }
    }

    void visit(UID item) {
        if (document_.isGroup(item)) {
            for (std::int32_t i = 0; i < document_.childCount(item); ++i)
                visit(document_.childAt(item, i));
            return;
        }
        UIDRef frame{&document_, item};
        frames_.Process(frame, &cancel_);
        for (const UID carrier : {item, document_.textOnPath(item)}) {
            const UID story = carrier == kInvalidUID ? kInvalidUID : document_.textOfFrame(carrier);
            if (story != kInvalidUID && visited_.insert(story).second) visitStory(story, frame);
        }
    }

    void visitStory(UID story, UIDRef frame) {
        std::int32_t start = 0;
        std::int32_t length = document_.totalLength(story);
        for (const ownedItemRec& owned : document_.ownedItems(story, start, length))
            visit(owned.item);
        texts_.Process({&document_, story}, start, length, frame, &cancel_);
    }

    Document& document_;
    const std::vector<UID>& pages_;
    ZavoCalcFirstOnFrameLinksCallback frames_;
    ZavoCalcFirstOnTextLinksCallback texts_;
    std::unordered_set<UID> visited_;
    std::uint16_t cancel_ = 0;
};

std::vector<UID> pagesOfScope(const Document& document, std::int32_t index, bool isSpread) {
    const std::int32_t count = isSpread ? document.spreadCount() : document.pageCount();
    if (index < 0 || index >= count) return {};
    return isSpread ? document.pagesOfSpread(document.spreadAt(index)) : std::vector<UID>{document.pageAt(index)};
}

bool answer(const scopeEntry* entry, firstOnOrderRec order, std::string_view linkName, tagDataRec& out) {
    out = {};
    if (entry == nullptr) return false;
    const std::size_t slot = slotOf(order);
    const firstOnSlot* best = nullptr;
    for (const firstOnRec& link : entry->links) {
        const firstOnSlot& candidate = link.slots[slot];
        if (!linkName.empty() && pstrView(candidate.tag.extractionRecordName) != linkName) continue;
        if (best == nullptr || isBefore(candidate.bounds, best->bounds, slot)) best = &candidate;
    }
    if (best != nullptr) out = best->tag;
    return best != nullptr;
}

std::unique_ptr<FirstOnLinkTracker>& currentTracker() {
    static std::unique_ptr<FirstOnLinkTracker> tracker;
    return tracker;
}

}  // namespace

const scopeEntry* FirstOnLinkTracker::entryOf(std::vector<scopeEntry>& entries, std::int32_t index, bool isSpread) {
    const auto known = std::find_if(entries.begin(), entries.end(),
                                    [&](const scopeEntry& entry) { return entry.scopeIndex == index; });
    if (known != entries.end()) return &*known;
    if (document_.database == nullptr) return nullptr;
    const std::vector<UID> pages = pagesOfScope(*document_.database, index, isSpread);
    scopeEntry entry{index, {}};
    if (pages.empty() || !ScopeFiller(*document_.database, pages, entry).fill()) return nullptr;
    return &entries.emplace_back(std::move(entry));
}

bool FirstOnLinkTracker::firstOnPage(std::int32_t pageIndex, firstOnOrderRec order, std::string_view linkName,
                                     tagDataRec& out) {
    return answer(entryOf(pages_, pageIndex, false), order, linkName, out);
}

bool FirstOnLinkTracker::firstOnSpread(std::int32_t spreadIndex, firstOnOrderRec order, std::string_view linkName,
                                       tagDataRec& out) {
    return answer(entryOf(spreads_, spreadIndex, true), order, linkName, out);
}

FirstOnLinkTracker* firstOnTracker() {
    return currentTracker().get();
}

void startFirstOnTracker(UIDRef document) {
    currentTracker() = std::make_unique<FirstOnLinkTracker>(document);
}

void endFirstOnTracker() {
    currentTracker().reset();
}

}  // namespace tarnova
