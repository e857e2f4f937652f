#include <algorithm>
#include <bit>
#include <map>
#include <optional>
#include <utility>

#include "host/model/model_document.h"

namespace tarnova {

namespace {

void mix(std::uint64_t& key, double value) {
    key = (key ^ std::bit_cast<std::uint64_t>(value)) * 0x9E3779B97F4A7C15u;
    key ^= key >> 32;
}

}  // namespace

/// One frame's view of what stands around it.
struct ModelDocument::WrapView {
    const PageItem* frame;
    PMMatrix fromSpread;  // to the frame's inner coordinates
    std::vector<WrapArea>& out;
};

/// Areas of an item and of the members of a group; `move` leads from its spread to that of the frame. An item doesn't
/// act on text in itself.
void ModelDocument::addWrapAreas(const PageItem& which, PMPoint move, const WrapView& view) const {
    if (which.flow != nullptr && which.flow->wrap.kind != TextWrap::Kind::none && !holdsItem(which, *view.frame)) {
        const TextWrap& wrap = which.flow->wrap;
        const PMMatrix toFrame = toSpread(which).then({1, 0, 0, 1, move.x, move.y}).then(view.fromSpread);
        const PMRect bounds = boundsThrough(which, toFrame, false);
        const PMRect box{bounds.left - wrap.left, bounds.top - wrap.top, bounds.right + wrap.right,
                         bounds.bottom + wrap.bottom};
        if (box.overlaps(view.frame->shape->bounds)) view.out.push_back({box, wrap.kind, wrap.side});
    }
    if (which.itemClass != ItemClass::group && which.itemClass != ItemClass::node) return;
    for (UID child : which.children)
        addWrapAreas(*item(child), move, view);
}

bool ModelDocument::holdsItem(const PageItem& outer, const PageItem& inner) const {
    const PageItem* at = &inner;
    while (at != nullptr && at != &outer)
        at = item(at->parent);
    return at != nullptr;
}

void ModelDocument::wrapsAround(const PageItem& frame, std::vector<WrapArea>& out) const {
    if (!mayWrap || frame.spread == kInvalidUID || frame.shape == nullptr || frame.shape->text.ignoresWrap) return;
    const std::optional<PMMatrix> fromSpread = toSpread(frame).inverse();
    if (!fromSpread) return;
    const WrapView view{&frame, *fromSpread, out};
    for (UID node : spread(frame.spread)->layerNodes) {
        if (node != kInvalidUID) addWrapAreas(*item(node), {}, view);
    }
    addMasterWraps(view);
}

/// The items of masters that the page of a frame shows.
void ModelDocument::addMasterWraps(const WrapView& view) const {
    const Page* own = page(pageOfItem(view.frame->uid).page);
    if (own == nullptr || own->master == kInvalidUID) return;
    const std::vector<const Page*> chain = masterChain(own->uid);
    const std::unordered_set<UID> hidden = overriddenOn(chain);
    for (std::size_t level = 1; level < chain.size(); ++level) {
        const Page& from = *chain[level];
        const PMPoint move{own->bounds.left - from.bounds.left, own->bounds.top - from.bounds.top};
        for (UID node : spread(from.spread)->layerNodes) {
            if (node == kInvalidUID) continue;
            for (UID uid : item(node)->children) {
                if (hidden.count(uid) == 0 && pageOfItem(uid).page == from.uid) addWrapAreas(*item(uid), move, view);
            }
        }
    }
}

/// What the text of a story runs around, as one number; 0: nothing.
std::uint64_t ModelDocument::wrapKeyOf(const Story& text) const {
    std::vector<WrapArea> areas;
    std::uint64_t key = 0;
    for (std::size_t i = 0; i < text.frames.size(); ++i) {
        areas.clear();
        wrapsAround(*item(text.frames[i]), areas);
        for (const WrapArea& area : areas) {
            for (const double value : {static_cast<double>(i + 1), area.box.left, area.box.top, area.box.right,
                                       area.box.bottom, static_cast<double>(area.kind),
                                       static_cast<double>(area.side)})
                mix(key, value);
        }
    }
    return key;
}

/// Something changed on a spread, and so perhaps what its texts run around.
void ModelDocument::noteWraps(UID spreadUid) {
    if (spreadUid == kInvalidUID || (!unsettled.empty() && unsettled.back() == spreadUid)) return;
    unsettled.push_back(spreadUid);
}

/// Gives texts that run around something else than when they got their stamps new ones. Texts that were equal stay so.
void ModelDocument::settleWraps() const {
    std::vector<UID> open = std::exchange(unsettled, {});
    const bool anyMaster = std::any_of(open.begin(), open.end(), [this](UID uid) {
        return spread(uid) != nullptr && spread(uid)->isMaster;
    });
    if (anyMaster) {
        open = lists.spreads;
        open.insert(open.end(), lists.masters.begin(), lists.masters.end());
    }
    std::map<std::pair<std::uint64_t, std::uint64_t>, std::uint64_t> stamps;
    std::unordered_set<UID> seen;
    for (UID spreadUid : open) {
        if (spread(spreadUid) == nullptr || !seen.insert(spreadUid).second) continue;
        std::vector<UID> items;
        for (UID node : spread(spreadUid)->layerNodes)
            collectItems(node, items);
        for (UID uid : items) {
            if (!isTextFrame(uid) || !seen.insert(item(uid)->story).second) continue;
            Story& text = *table.find<Story>(item(uid)->story);
            const std::uint64_t key = wrapKeyOf(text);
            if (key == text.wrapKey) continue;
            const auto [known, isNew] = stamps.try_emplace({text.stamp, key}, 0);
            if (isNew) known->second = newStamp();
            text.stamp = known->second;
            text.wrapKey = key;
            text.layout.reset();
        }
    }
}

}  // namespace tarnova
