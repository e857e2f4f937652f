#include <algorithm>
#include <unordered_set>
#include <utility>

#include "engine/toolkit/text_encoding.h"
#include "host/model/limits.h"
#include "host/model/model_document.h"
#include "host/model/page_numbers.h"
#include "host/model/spread_copy.h"

namespace tarnova {

namespace {

UID at(const std::vector<UID>& list, std::int32_t index) {
    return index >= 0 && static_cast<std::size_t>(index) < list.size() ? list[static_cast<std::size_t>(index)]
                                                                       : kInvalidUID;
}

std::int32_t countOf(const std::vector<UID>& list) {
    return static_cast<std::int32_t>(list.size());
}

}  // namespace

std::int32_t ModelDocument::spreadCount() const {
    return countOf(lists.spreads);
}

UID ModelDocument::spreadAt(std::int32_t index) const {
    return at(lists.spreads, index);
}

std::int32_t ModelDocument::masterCount() const {
    return countOf(lists.masters);
}

UID ModelDocument::masterAt(std::int32_t index) const {
    return at(lists.masters, index);
}

std::string ModelDocument::masterName(UID master) const {
    const Spread* found = spread(master);
    return found == nullptr || !found->isMaster ? std::string() : found->name;
}

bool ModelDocument::masterInUse(UID master) const {
    if (!mastersInUse) mastersInUse = findMastersInUse();
    return mastersInUse->count(master) != 0;
}

/// A master counts when a page has it, or when a master that counts is based on it.
std::unordered_set<UID> ModelDocument::findMastersInUse() const {
    std::unordered_set<UID> found;
    std::vector<UID> open;
    const auto note = [&](const std::vector<UID>& list) {
        for (UID uid : list) {
            const UID applied = page(uid)->master;
            if (spread(applied) != nullptr && found.insert(applied).second) open.push_back(applied);
        }
    };
    note(pages);
    while (!open.empty()) {
        const std::vector<UID>& pagesOfMaster = spread(open.back())->pages;
        open.pop_back();
        note(pagesOfMaster);
    }
    return found;
}

std::int32_t ModelDocument::layerCount() const {
    return static_cast<std::int32_t>(lists.layers.size());
}

UID ModelDocument::layerAt(std::int32_t index) const {
    return index >= 0 && index < layerCount() ? lists.layers[static_cast<std::size_t>(index)].uid : kInvalidUID;
}

const Layer* ModelDocument::layer(UID uid) const {
    const std::int32_t index = layerIndex(uid);
    return index < 0 ? nullptr : &lists.layers[static_cast<std::size_t>(index)];
}

std::int32_t ModelDocument::layerIndex(UID uid) const {
    const auto found =
        std::find_if(lists.layers.begin(), lists.layers.end(), [uid](const Layer& l) { return l.uid == uid; });
    return found == lists.layers.end() ? -1 : static_cast<std::int32_t>(found - lists.layers.begin());
}

bool ModelDocument::layerVisible(UID uid) const {
    const Layer* found = layer(uid);
    return found != nullptr && found->visible;
}

bool ModelDocument::layerLocked(UID uid) const {
    const Layer* found = layer(uid);
    return found != nullptr && found->locked;
}

void ModelDocument::setLayerLocked(UID uid, bool locked) {
    const std::int32_t index = layerIndex(uid);
    if (index < 0) return;
    Command command(*this, "Lock Layer");
    keepLists();
    lists.layers[static_cast<std::size_t>(index)].locked = locked;
}

UID ModelDocument::spreadLayerNode(UID spreadUid, UID layerUid) const {
    const Spread* found = spread(spreadUid);
    return found == nullptr ? kInvalidUID : at(found->layerNodes, layerIndex(layerUid));
}

std::int32_t ModelDocument::pageCount() const {
    return countOf(pages);
}

UID ModelDocument::pageAt(std::int32_t index) const {
    return at(pages, index);
}

std::int32_t ModelDocument::pageIndex(UID uid) const {
    const Page* found = page(uid);
    return found == nullptr ? -1 : found->index;
}

std::string ModelDocument::pageName(UID uid) const {
    const Page* found = page(uid);
    if (found == nullptr) return {};
    if (found->index < 0) return masterName(found->spread);
    const std::optional<std::size_t> which = sectionAt(found->index);
    if (!which) return pageNumberText(pagesInFront + found->index + 1, 0);
    const sectionRec& section = lists.sections[*which];
    const std::int32_t number = sectionFirstNumber(*which) + found->index - pageIndex(section.startPage);
    return (section.includePrefix ? section.prefix : std::string()) + pageNumberText(number, section.numberingStyle);
}

/// The section that a page of the document lies in.
std::optional<std::size_t> ModelDocument::sectionAt(std::int32_t index) const {
    const auto behind =
        std::upper_bound(lists.sections.begin(), lists.sections.end(), index,
                         [this](std::int32_t i, const sectionRec& s) { return i < pageIndex(s.startPage); });
    if (behind == lists.sections.begin()) return std::nullopt;
    return static_cast<std::size_t>(behind - 1 - lists.sections.begin());
}

std::int32_t ModelDocument::sectionFirstNumber(std::size_t index) const {
    while (sectionNumbers.size() <= index) {
        const std::size_t next = sectionNumbers.size();
        const sectionRec& section = lists.sections[next];
        const std::int32_t start = pageIndex(section.startPage);
        if (!section.continues) {
            sectionNumbers.push_back(section.startNumber);
        } else if (next == 0) {
            sectionNumbers.push_back(pagesInFront + start + 1);
        } else {
            sectionNumbers.push_back(sectionNumbers[next - 1] + start - pageIndex(lists.sections[next - 1].startPage));
        }
    }
    return sectionNumbers[index];
}

void ModelDocument::setPlaceInOutput(std::int32_t inFront, std::int32_t behind) {
    pagesInFront = inFront;
    pagesBehind = behind;
    sectionNumbers.clear();
    ++revision;
}

UID ModelDocument::spreadOfPage(UID uid) const {
    const Page* found = page(uid);
    return found == nullptr ? kInvalidUID : found->spread;
}

std::vector<UID> ModelDocument::pagesOfSpread(UID uid) const {
    const Spread* found = spread(uid);
    return found == nullptr ? std::vector<UID>() : found->pages;
}

errorWord ModelDocument::duplicateSpread(UID uid) {
    const Spread* from = spread(uid);
    if (from == nullptr || from->isMaster) return errFailed;
    Command command(*this, "Duplicate Spread");
    return SpreadCopy(*this, *from).make();
}

errorWord ModelDocument::addPages(std::int32_t count) {
    if (count < 0 || !uidsLeft(static_cast<std::size_t>(count) * (lists.layers.size() + 1))) return errFailed;
    const PMRect first = pages.empty() ? PMRect{0, 0, defaultPageSize.x, defaultPageSize.y} : page(pages[0])->bounds;
    if (std::max(first.width(), first.height()) > coordinateLimit) return errFailed;
    Command command(*this, "Add Pages");
    const PMRect right{0, 0, first.width(), first.height()}, left{-first.width(), 0, 0, first.height()};
    for (std::int32_t i = 0; i < count; ++i) {
        if (facing && lastSpreadWantsRightPage()) {
            addEmptyPage(lists.spreads.back(), right);
        } else {
            const bool goesLeft = facing && !pages.empty();
            addEmptyPage(addEmptySpread(), goesLeft ? left : right);
        }
    }
    return 0;
}

/// All pages of the last spread lie to the left of the spine, so that another one can follow on its right.
bool ModelDocument::lastSpreadWantsRightPage() const {
    return !lists.spreads.empty() && pagesOnSide(*spread(lists.spreads.back()), false).empty();
}

void ModelDocument::addEmptyPage(UID spreadUid, const PMRect& bounds) {
    Page newPage;
    newPage.spread = spreadUid;
    newPage.bounds = bounds;
    newPage.index = pageCount();
    pages.push_back(create(newPage, takeUid())->uid);
    Spread* on = changeable<Spread>(spreadUid);
    on->pages.push_back(pages.back());
    forgetPlaces(*on);
}

UID ModelDocument::addEmptySpread() {
    Spread* made = create(Spread{}, takeUid());
    made->layerNodes.push_back(kInvalidUID);
    for (std::size_t i = 1; i < lists.layers.size(); ++i) {
        PageItem node;
        node.itemClass = ItemClass::node;
        node.spread = made->uid;
        made->layerNodes.push_back(create(std::move(node), takeUid())->uid);
    }
    keepLists();
    lists.spreads.push_back(made->uid);
    return made->uid;
}

errorWord ModelDocument::removePages(const std::vector<UID>& removed) {
    for (UID uid : removed) {
        if (pageIndex(uid) < 0) return errFailed;
    }
    Command command(*this, "Remove Pages");
    keepLists();
    if (!lists.sections.empty()) moveSectionsOff(removed);
    std::size_t goneCount = 0;
    for (UID uid : removed) {
        const Page* found = page(uid);
        if (found == nullptr) continue;  // named twice
        ++goneCount;
        if (spread(found->spread)->pages.size() > 1) {
            removePageOfSpread(uid);
        } else {
            removeWholeSpread(found->spread);
        }
    }
    dropGonePages(goneCount);
    return 0;
}

/// A section whose first page goes starts on the next page that stays, unless another section starts there or comes
/// first.
void ModelDocument::moveSectionsOff(const std::vector<UID>& removed) {
    const std::unordered_set<UID> gone(removed.begin(), removed.end());
    std::vector<sectionRec> kept;
    for (sectionRec& section : lists.sections) {
        std::int32_t index = pageIndex(section.startPage);
        while (index < pageCount() && gone.count(pageAt(index)) != 0)
            ++index;
        if (index == pageCount()) continue;
        section.startPage = pageAt(index);
        if (!kept.empty() && kept.back().startPage == section.startPage) kept.pop_back();
        kept.push_back(section);
    }
    lists.sections = std::move(kept);
}

void ModelDocument::removeWholeSpread(UID uid) {
    const Spread from = *spread(uid);
    for (UID node : from.layerNodes)
        destroyTree(node);
    for (UID pageUid : from.pages)
        destroy(pageUid);
    destroy(uid);
}

void ModelDocument::removePageOfSpread(UID uid) {
    const UID spreadUid = page(uid)->spread;
    std::vector<UID> goes;
    const std::vector<UID> nodes = spread(spreadUid)->layerNodes;
    for (UID node : nodes) {
        const PageItem* found = item(node);
        if (found == nullptr) continue;
        for (UID child : found->children) {
            if (pageOfItem(child).page == uid) goes.push_back(child);
        }
    }
    for (UID child : goes)
        static_cast<void>(deleteItem(child));
    std::erase(changeable<Spread>(spreadUid)->pages, uid);
    destroy(uid);
    forgetPlaces(*spread(spreadUid));
}

/// Takes spreads and pages that are gone out of the lists. A run drops its last pages again and again, so those at the
/// end don't make the others be numbered anew.
void ModelDocument::dropGonePages(std::size_t goneCount) {
    sectionNumbers.clear();
    mastersInUse.reset();
    while (!lists.spreads.empty() && !table.contains(lists.spreads.back()))
        lists.spreads.pop_back();
    for (; !pages.empty() && !table.contains(pages.back()); --goneCount)
        pages.pop_back();
    if (goneCount == 0) return;
    std::erase_if(lists.spreads, [this](UID uid) { return !table.contains(uid); });
    renumberPages();
}

void ModelDocument::renumberPages() {
    sectionNumbers.clear();
    mastersInUse.reset();
    pages.clear();
    for (UID uid : lists.spreads) {
        for (UID pageUid : spread(uid)->pages) {
            table.find<Page>(pageUid)->index = pageCount();
            pages.push_back(pageUid);
        }
    }
}

std::vector<sectionRec> ModelDocument::sections() const {
    return lists.sections;
}

errorWord ModelDocument::createSection(const sectionRec& section) {
    const std::int32_t index = pageIndex(section.startPage);
    if (index < 0 || section.startNumber < 0 || section.startNumber > sectionNumberLimit) return errFailed;
    if (!isUtf8(section.prefix) || !isUtf8(section.marker)) return errFailed;
    Command command(*this, "Create Section");
    keepLists();
    const auto place =
        std::lower_bound(lists.sections.begin(), lists.sections.end(), index,
                         [this](const sectionRec& s, std::int32_t i) { return pageIndex(s.startPage) < i; });
    const auto position = static_cast<std::size_t>(place - lists.sections.begin());
    if (place != lists.sections.end() && place->startPage == section.startPage) {
        *place = section;
    } else {
        lists.sections.insert(place, section);
    }
    sectionNumbers.resize(std::min(sectionNumbers.size(), position));
    return 0;
}

}  // namespace tarnova
