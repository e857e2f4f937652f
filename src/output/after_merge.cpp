#include "output/after_merge.h"

#include <algorithm>
#include <string>
#include <vector>

#include "document/document.h"
#include "engine/session/session.h"
#include "output/build_tables.h"

namespace tarnova {
namespace {

errorWord removeMarkedPages(Document& document) {
    if (document.pageCount() != session().pageEntryCount) return 0;
    std::vector<UID> pages;
    for (std::int32_t i = session().pageEntryCount - 1; i >= 0; --i) {
        if ((pageMapAt(i)->removeMe & 1) != 0) pages.push_back(document.pageAt(i));
    }
    if (pages.empty()) return 0;
    const errorWord error = document.removePages(pages);
    for (std::int32_t i = session().pageEntryCount - 1; error == 0 && i >= 0; --i) {
        if ((pageMapAt(i)->removeMe & 1) != 0) removePageEntry(i);
    }
    return error;
}

/// Counts placed links with the pages that show them: a master's link with each page that the master serves.
class LinkCounter {
 public:
    explicit LinkCounter(const Document& itsDocument) : document(itsDocument) {}

    void countSpread(UID spread) {
        for (std::int32_t layer = 1; layer < document.layerCount(); ++layer) {
            const UID node = document.spreadLayerNode(spread, document.layerAt(layer));
            if (node != kInvalidUID) countBelow(node);
        }
    }

 private:
    void countBelow(UID item) {
        for (std::int32_t i = 0; i < document.childCount(item); ++i) {
            const UID child = document.childAt(item, i);
            if (document.itemClass(child) == ItemClass::graphic && !document.linkPath(child).empty()) count(child);
            countBelow(child);
        }
    }

    void count(UID link) {
        const pageOfItemRec on = document.pageOfItem(link);
        if (!on.isMaster) return countPage(document.pageIndex(on.page));
        const UID master = document.spreadOfPage(on.page);
        for (std::int32_t i = 0; i < document.pageCount(); ++i) {
            if (document.masterOfPage(document.pageAt(i)) == master) countPage(i);
        }
    }

    static void countPage(std::int32_t index) {
        if (pageMapRec* const page = pageMapAt(index)) ++page->linkCount;
    }

    const Document& document;
};

void countPlacedLinks(const Document& document) {
    LinkCounter counter(document);
    for (std::int32_t i = 0; i < document.spreadCount(); ++i)
        counter.countSpread(document.spreadAt(i));
    for (std::int32_t i = 0; i < document.masterCount(); ++i)
        counter.countSpread(document.masterAt(i));
}

/// The list's last value holds for the slots behind it.
std::uint32_t copiesOfSlot(std::int32_t slot) {
    const std::vector<std::uint32_t>& copies = session().slotCopies;
    return copies.empty() ? 1 : copies[std::min(static_cast<std::size_t>(slot), copies.size() - 1)];
}

}  // namespace

void noteUsedFonts(const Document& document) {
    auto& lists = session();
    for (const usedFontRec& font : document.usedFonts()) {
        const std::string name = font.family + " " + font.style;
        const bool isNoted = std::any_of(lists.fontsInUse.begin(), lists.fontsInUse.end(),
                                         [&name](const fontNoteRec& note) { return note.name.view() == name; });
        if (isNoted) continue;
        lists.reportOrder.push_back({reportKindFont, static_cast<std::uint32_t>(lists.fontsInUse.size())});
        lists.fontsInUse.push_back({PMString(name), static_cast<std::uint16_t>(font.isMissing ? fontIsMissing : 0), 1});
    }
}

errorWord finishMergedPages(UIDRef document, errorWord priorError) {
    if (priorError != 0) return priorError;
    const errorWord error = removeMarkedPages(*document.database);
    if (error != 0) return error;
    countPlacedLinks(*document.database);
    noteUsedFonts(*document.database);
    document.database->composeDocument();
    return 0;
}

std::uint32_t printedPages(std::int32_t limit) {
    std::uint32_t pages = 0;
    for (std::int32_t i = 0; i < std::min(limit, session().pageEntryCount); ++i) {
        const pageMapRec& page = *pageMapAt(i);
        const recordSlotRec* const slot = recordSlotAt(page.slot);
        if (page.pageFlags == 0 && slot != nullptr && slot->hasMergeError == 0) pages += copiesOfSlot(page.slot);
    }
    return pages;
}

void advancePageTotals() {
    const std::uint32_t pages = printedPages(session().pageEntryCount);
    session().pageTotal += pages;
    session().pageTotalOfFile += pages;
}

}  // namespace tarnova
