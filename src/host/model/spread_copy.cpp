#include "host/model/spread_copy.h"

#include "host/model/tree_copy.h"

namespace tarnova {

errorWord SpreadCopy::make() {
    std::vector<UID> items;
    for (UID node : source.layerNodes)
        document.collectItems(node, items);
    if (!document.uidsLeft(2 * items.size() + source.pages.size() + 1)) return errRunMemory;

    Spread* to = document.create(Spread{}, document.takeUid());
    copyPages(*to);
    TreeCopy trees(document);
    to->layerNodes.reserve(source.layerNodes.size());
    for (UID node : source.layerNodes) {
        const PageItem* original = document.item(node);
        to->layerNodes.push_back(original == nullptr ? kInvalidUID : trees.copy(*original, kInvalidUID, to->uid));
    }
    trees.finish();
    if (document.mayWrap) document.noteWraps(to->uid);
    document.keepLists();
    document.lists.spreads.push_back(to->uid);
    return 0;
}

void SpreadCopy::copyPages(Spread& to) {
    to.pages.reserve(source.pages.size());
    for (UID uid : source.pages) {
        Page page = *document.page(uid);
        page.spread = to.uid;
        page.index = static_cast<std::int32_t>(document.pages.size());
        to.pages.push_back(document.create(std::move(page), document.takeUid())->uid);
        document.pages.push_back(to.pages.back());
    }
}

}  // namespace tarnova
