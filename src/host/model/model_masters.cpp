#include <algorithm>

#include "host/model/item_shape.h"
#include "host/model/master_override.h"
#include "host/model/model_document.h"

namespace tarnova {

namespace {

bool isLeftOfSpine(const Page& page) {
    return page.bounds.left + page.bounds.right < 0;
}

}  // namespace

/// The pages of a spread on one side of the spine, from the spine outward; those of a document without facing pages are
/// all on the right.
std::vector<UID> ModelDocument::pagesOnSide(const Spread& from, bool left) const {
    std::vector<UID> out;
    for (UID uid : from.pages) {
        if ((facing && isLeftOfSpine(*page(uid))) == left) out.push_back(uid);
    }
    if (left) std::reverse(out.begin(), out.end());
    return out;
}

/// The page of a master that serves a page: the one as far from the spine on the same side, or else the outermost one
/// there. A master without pages on that side serves with those of the other.
UID ModelDocument::masterPageFor(const Spread& master, const Page& served) const {
    const bool left = facing && isLeftOfSpine(served);
    std::vector<UID> candidates = pagesOnSide(master, left);
    if (candidates.empty()) candidates = pagesOnSide(master, !left);
    if (candidates.empty()) return kInvalidUID;
    const std::vector<UID> besides = pagesOnSide(*spread(served.spread), left);
    const auto place = std::find(besides.begin(), besides.end(), served.uid) - besides.begin();
    return candidates[std::min(static_cast<std::size_t>(place), candidates.size() - 1)];
}

/// The page, the page of its master that serves it, the one of the master's base, and so on. A circle ends at the count
/// of masters.
std::vector<const Page*> ModelDocument::masterChain(UID uid) const {
    std::vector<const Page*> chain;
    const Page* at = page(uid);
    while (at != nullptr && chain.size() <= lists.masters.size()) {
        chain.push_back(at);
        const Spread* master = spread(at->master);
        if (master == nullptr) break;
        at = page(masterPageFor(*master, *at));
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
            noteOverridden(*item(node), bounds, out);
        }
    }
    return out;
}

/// An item keeps its mark when it is grouped, so the members of groups are asked too.
void ModelDocument::noteOverridden(const PageItem& above, const PMRect* bounds, std::unordered_set<UID>& out) const {
    for (UID uid : above.children) {
        const PageItem& child = *item(uid);
        if (child.itemClass == ItemClass::group) noteOverridden(child, bounds, out);
        if (child.overrides == kInvalidUID) continue;
        if (bounds == nullptr || touches(*bounds, boundsOf(child, true))) out.insert(child.overrides);
    }
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

UID ModelDocument::masterOfPage(UID uid) const {
    const Page* found = page(uid);
    return found == nullptr || spread(found->master) == nullptr ? kInvalidUID : found->master;
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

bool ModelDocument::isMasterItem(UID uid) const {
    const PageItem* found = item(uid);
    return found != nullptr && itemClass(found->parent) == ItemClass::node && spread(found->spread)->isMaster;
}

/// A mark holds as long as the master has the item outside of groups and texts.
UID ModelDocument::overriddenItem(UID uid) const {
    const PageItem* found = item(uid);
    return found != nullptr && isMasterItem(found->overrides) ? found->overrides : kInvalidUID;
}

void ModelDocument::clearOverriddenMarks() {
    Command command(*this, "Clear Overridden Marks");
    for (UID master : lists.masters) {
        std::vector<UID> items;
        for (UID node : spread(master)->layerNodes)
            collectItems(node, items);
        for (UID uid : items) {
            if (item(uid)->overrides != kInvalidUID) changeable<PageItem>(uid)->overrides = kInvalidUID;
        }
    }
}

}  // namespace tarnova
