#include <algorithm>

#include "host/model/item_shape.h"
#include "host/model/master_override.h"
#include "host/model/model_document.h"

namespace tarnova {

namespace {

/// The page of a master that serves the page with this index in its spread.
UID masterPageFor(const Spread& master, std::size_t index) {
    if (master.pages.empty()) return kInvalidUID;
    return master.pages[std::min(index, master.pages.size() - 1)];
}

std::size_t indexInSpread(const Spread& spread, UID page) {
    const auto found = std::find(spread.pages.begin(), spread.pages.end(), page);
    return static_cast<std::size_t>(found - spread.pages.begin());
}

}  // namespace

/// The page, the page of its master that serves it, the one of the master's base, and so on. A circle ends at the count
/// of masters.
std::vector<const Page*> ModelDocument::masterChain(UID uid) const {
    std::vector<const Page*> chain;
    const Page* at = page(uid);
    while (at != nullptr && chain.size() <= lists.masters.size()) {
        chain.push_back(at);
        const Spread* master = spread(at->master);
        if (master == nullptr) break;
        at = page(masterPageFor(*master, indexInSpread(*spread(at->spread), at->uid)));
    }
    return chain;
}

/// The part of the spread whose items the page shows; null: all of it.
const PMRect* ModelDocument::drawnBounds(const Page& from) const {
    return spread(from.spread)->pages.size() == 1 ? nullptr : &from.bounds;
}

/// The items of masters in whose place items of the chain's pages stand.
std::unordered_set<UID> ModelDocument::overriddenOn(const std::vector<const Page*>& chain) const {
    std::unordered_set<UID> out;
    if (chain.size() < 2) return out;
    for (const Page* level : chain) {
        const PMRect* bounds = drawnBounds(*level);
        for (UID node : spread(level->spread)->layerNodes) {
            if (node == kInvalidUID) continue;
            for (UID uid : item(node)->children) {
                const PageItem& child = *item(uid);
                if (child.overrides == kInvalidUID) continue;
                if (bounds == nullptr || touches(*bounds, boundsOf(child, true))) out.insert(child.overrides);
            }
        }
    }
    return out;
}

void ModelDocument::drawnOfPage(const Page& from, const std::unordered_set<UID>& hidden,
                                std::vector<const PageItem*>& out) const {
    const PMRect* bounds = drawnBounds(from);
    const std::vector<UID>& nodes = spread(from.spread)->layerNodes;
    for (std::size_t i = 1; i < nodes.size(); ++i) {
        if (!lists.layers[i].visible || !lists.layers[i].printable) continue;
        for (UID uid : item(nodes[i])->children) {
            const PageItem* child = item(uid);
            if (child->nonPrinting || (!hidden.empty() && hidden.count(uid) != 0)) continue;
            if (bounds == nullptr || touches(*bounds, boundsOf(*child, true))) out.push_back(child);
        }
    }
}

void ModelDocument::drawnItems(UID uid, std::vector<const PageItem*>& out) const {
    const std::vector<const Page*> chain = masterChain(uid);
    const std::unordered_set<UID> hidden = overriddenOn(chain);
    for (auto level = chain.rbegin(); level != chain.rend(); ++level)
        drawnOfPage(**level, hidden, out);
}

PMPoint ModelDocument::pageOrigin(UID uid, const PageItem& which) const {
    for (const Page* level : masterChain(uid)) {
        if (level->spread == which.spread) return {level->bounds.left, level->bounds.top};
    }
    return {};
}

errorWord ModelDocument::applyMaster(const std::vector<UID>& to, UID master) {
    const Spread* found = spread(master);
    if (master != kInvalidUID && (found == nullptr || !found->isMaster)) return errFailed;
    if (std::any_of(to.begin(), to.end(), [this](UID uid) { return pageIndex(uid) < 0; })) return errFailed;
    Command command(*this, "Apply Master");
    for (UID uid : to)
        changeable<Page>(uid)->master = master;
    mastersInUse.reset();
    return 0;
}

errorWord ModelDocument::overrideMasterItems(const std::vector<UID>& on) {
    if (std::any_of(on.begin(), on.end(), [this](UID uid) { return pageIndex(uid) < 0; })) return errFailed;
    Command command(*this, "Override Master Items");
    MasterOverride override(*this);
    std::unordered_set<UID> named;
    for (UID uid : on) {
        if (named.insert(uid).second) override.add(*page(uid));
    }
    return override.make();
}

UID ModelDocument::overriddenItem(UID uid) const {
    const PageItem* found = item(uid);
    return found == nullptr || item(found->overrides) == nullptr ? kInvalidUID : found->overrides;
}

void ModelDocument::clearOverriddenMarks() {
    Command command(*this, "Clear Overridden Marks");
    for (UID master : lists.masters) {
        for (UID node : spread(master)->layerNodes) {
            if (node == kInvalidUID) continue;
            for (UID uid : item(node)->children) {
                if (item(uid)->overrides != kInvalidUID) changeable<PageItem>(uid)->overrides = kInvalidUID;
            }
        }
    }
}

}  // namespace tarnova
