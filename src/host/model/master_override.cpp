#include "host/model/master_override.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/model/limits.h"

namespace tarnova {

void MasterOverride::add(const Page& page) {
    const std::vector<const Page*> chain = document.masterChain(page.uid);
    const std::unordered_set<UID> hidden = document.overriddenOn(chain);
    for (std::size_t level = 1; level < chain.size(); ++level) {
        const Page& from = *chain[level];
        Batch& batch = batchFor(page.spread, level, from.uid);
        const PMPoint move{page.bounds.left - from.bounds.left, page.bounds.top - from.bounds.top};
        const std::vector<UID>& nodes = document.spread(from.spread)->layerNodes;
        for (std::size_t layer = 1; layer < nodes.size(); ++layer) {
            for (UID uid : document.item(nodes[layer])->children) {
                if (hidden.count(uid) != 0 || document.pageOfItem(uid).page != from.uid) continue;
                batch.items.push_back({uid, layer, move});
            }
        }
    }
}

MasterOverride::Batch& MasterOverride::batchFor(UID spread, std::size_t level, UID masterPage) {
    for (Batch& batch : batches) {
        if (batch.spread == spread && batch.level == level && batch.masterPages.insert(masterPage).second) return batch;
    }
    batches.push_back({spread, level, {masterPage}, {}});
    return batches.back();
}

errorWord MasterOverride::make() {
    std::vector<UID> items;
    for (const Batch& batch : batches) {
        for (const Planned& planned : batch.items) {
            if (!staysInReach(planned)) return errFailed;
            document.collectItems(planned.original, items);
        }
    }
    if (!document.uidsLeft(2 * items.size())) return errRunMemory;
    // Each batch goes behind what is there, so that those of the bases come last.
    std::stable_sort(batches.begin(), batches.end(), [](const Batch& a, const Batch& b) { return a.level < b.level; });
    for (const Batch& batch : batches)
        makeBatch(batch);
    return 0;
}

bool MasterOverride::staysInReach(const Planned& planned) const {
    const PMMatrix& at = document.item(planned.original)->toParent;
    return std::max(std::abs(at.tx + planned.move.x), std::abs(at.ty + planned.move.y)) <= coordinateLimit;
}

void MasterOverride::makeBatch(const Batch& batch) {
    TreeCopy trees(document);
    const std::vector<UID> nodes = document.spread(batch.spread)->layerNodes;
    std::vector<std::vector<UID>> copies(nodes.size());
    for (const Planned& planned : batch.items) {
        const PageItem& original = *document.item(planned.original);
        copies[planned.layer].push_back(trees.copy(original, nodes[planned.layer], batch.spread));
        settle(copies[planned.layer].back(), original, planned.move);
        PageItem* copy = document.changeable<PageItem>(copies[planned.layer].back());
        copy->overrides = planned.original;
        copy->toParent.tx += planned.move.x;
        copy->toParent.ty += planned.move.y;
    }
    trees.finish();
    for (std::size_t layer = 1; layer < nodes.size(); ++layer) {
        if (copies[layer].empty()) continue;
        std::vector<UID>& children = document.changeable<PageItem>(nodes[layer])->children;
        children.insert(children.begin(), copies[layer].begin(), copies[layer].end());
    }
}

/// A copy lies on another spread, and when it was moved it draws something else than the original, at least there.
void MasterOverride::settle(UID uid, const PageItem& original, PMPoint move) {
    PageItem* copy = document.changeable<PageItem>(uid);
    copy->pageInSpread = PageItem::pageUnknown;
    if (move != PMPoint{}) {
        const auto [at, isNew] = stamps.try_emplace({original.uid, {move.x, move.y}}, 0);
        if (isNew) at->second = newStamp();
        copy->stamp = at->second;
    }
    for (std::size_t i = 0; i < copy->children.size(); ++i)
        settle(copy->children[i], *document.item(original.children[i]), move);
}

}  // namespace tarnova
