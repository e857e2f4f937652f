// Random edits of a document: what must hold behind each of them, and that undo and redo lead to the same files.

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>
#include <random>
#include <set>

#include "host/model/story_text.h"
#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

constexpr const char* startingLayout = R"({"tarnovaLayout": 1, "pageSize": [100, 100],
    "layers": [{"name": "Back"}, {"name": "Front"}],
    "masters": [{"name": "A", "pages": [{"items": [{"bounds": [1, 1, 9, 9], "text": "{{Page}}"}]}]},
                {"name": "B", "pages": [{"master": "A"}, {}]}],
    "spreads": [
        {"pages": [{"master": "B", "items": [{"name": "one", "bounds": [5, 5, 40, 40], "text": "A story\nof {{Name}} that runs"},
                              {"group": [{"bounds": [50, 5, 9, 9], "fill": "Black"}, {"bounds": [60, 5, 9, 9], "text": "member"}]}]},
                   {"items": [{"name": "two", "layer": "Front", "bounds": [5, 5, 40, 40], "flowsFrom": "one"},
                              {"bounds": [5, 50, 40, 40], "text": "x", "columns": 3}]}],
         "items": [{"bounds": [500, 5, 40, 40], "text": "pasteboard"}]},
        {"pages": [{"master": "A", "items": [{"bounds": [5, 5, 40, 40], "flowsFrom": "two", "pathText": {"text": "around {{Name}}", "start": 2}}, {"bounds": [5, 50, 9, 9], "tag": {"link": "L"},
             "picture": {"file": "a.tif", "inner": [0, 0, 9, 9], "clip": {"type": "detectedEdges"}}}]}]}],
    "sections": [{"page": 2, "prefix": "A-", "includePrefix": true}, {"page": 3, "style": "lowerRoman", "startNumber": 7}]})";

constexpr const char* facingLayout = R"({"tarnovaLayout": 1, "facing": true, "pageSize": [100, 100],
    "layers": [{"name": "Back"}, {"name": "Front", "locked": true}],
    "masters": [{"name": "A", "pages": [{"items": [{"name": "foot", "bounds": [1, 90, 80, 9], "text": "{{Page}}"}]},
                                        {"items": [{"bounds": [20, 90, 80, 9], "flowsFrom": "foot"}]}]},
                {"name": "B", "pages": [{"master": "A", "items": [{"name": "stand-in", "overrides": "foot", "bounds": [1, 80, 80, 9]}]}, {"master": "A"}]},
                {"name": "C", "pages": [{"master": "B", "items": [{"layer": "Front", "bounds": [1, 1, 9, 9], "tag": {"link": "L"}}]}]}],
    "pages": [{"master": "A"},
              {"master": "B", "items": [{"name": "one", "bounds": [5, 5, 40, 40], "text": "runs over the spine"},
                                        {"bounds": [90, 50, 30, 10], "fill": "Black"}]},
              {"master": "B", "items": [{"name": "two", "bounds": [5, 5, 40, 40], "flowsFrom": "one"}]},
              {"master": "C", "items": [{"bounds": [5, 5, 40, 40], "flowsFrom": "two"}]}],
    "sections": [{"page": 1, "style": "lowerRoman"}, {"page": 2, "prefix": "A-", "includePrefix": true, "continues": true}]})";

/// The file less the two numbers that only grow: an identity isn't used again after an undo either.
std::string stateOf(const DocumentModel& document) {
    std::string bytes = writeLayout(document);
    for (const char* member : {"\"nextUid\"", "\"nextTagId\""}) {
        const std::size_t start = bytes.find(member);
        bytes.erase(start, bytes.find('\n', start) - start);
    }
    return bytes;
}

/// Follows everything from the spreads down and checks what hangs together both ways.
class Census {
 public:
    explicit Census(const DocumentModel& itsDocument) : document(itsDocument) {}

    void take() {
        note(document.documentUid());
        for (std::int32_t i = 0; i < document.layerCount(); ++i)
            note(document.layerAt(i));
        std::vector<UID> pages;
        for (std::int32_t i = 0; i < document.spreadCount(); ++i)
            takeSpread(document.spreadAt(i), pages);
        ASSERT_EQ(document.pageCount(), static_cast<std::int32_t>(pages.size()));
        for (std::int32_t i = 0; i < document.pageCount(); ++i) {
            EXPECT_EQ(document.pageAt(i), pages[static_cast<std::size_t>(i)]);
            EXPECT_EQ(document.pageIndex(document.pageAt(i)), i);
        }
        for (std::int32_t i = 0; i < document.masterCount(); ++i)
            takeSpread(document.masterAt(i), pages);
        for (const sectionRec& section : document.sections())
            EXPECT_GE(document.pageIndex(section.startPage), 0);
        takeStories();
        EXPECT_LT(*uids.rbegin(), document.nextUid());
    }

    std::vector<UID> items;

 private:
    void note(UID uid) { EXPECT_TRUE(uids.insert(uid).second) << "UID " << uid << " stands twice"; }

    void takeSpread(UID uid, std::vector<UID>& pages) {
        note(uid);
        const Spread& spread = *document.spread(uid);
        for (UID page : spread.pages) {
            note(page);
            pages.push_back(page);
            EXPECT_EQ(document.spreadOfPage(page), uid);
        }
        ASSERT_EQ(spread.layerNodes.size(), static_cast<std::size_t>(document.layerCount()));
        for (std::size_t i = 1; i < spread.layerNodes.size(); ++i)
            takeItem(spread.layerNodes[i], kInvalidUID, uid);
    }

    void takeItem(UID uid, UID parent, UID spread) {
        note(uid);
        items.push_back(uid);
        const PageItem* item = document.item(uid);
        ASSERT_NE(item, nullptr);
        EXPECT_EQ(item->parent, parent);
        EXPECT_EQ(item->spread, spread);
        if (item->itemClass == ItemClass::splineItem && item->story != kInvalidUID) {
            takeStory(item->story, uid);
            EXPECT_EQ(document.childCount(uid), item->shape->text.columns);
        }
        if (item->pathStory != kInvalidUID) takeStory(item->pathStory, uid);
        for (std::size_t i = 0; i < item->children.size(); ++i) {
            const PageItem* child = document.item(item->children[i]);
            ASSERT_NE(child, nullptr);
            if (child->itemClass == ItemClass::textColumnItem) {
                EXPECT_EQ(child->story, item->story);
                EXPECT_EQ(child->column, static_cast<std::int32_t>(i));
            }
            takeItem(item->children[i], uid, spread);
        }
    }

    void takeStory(UID story, UID frame) {
        framesByStory[story].insert(frame);
        if (document.framesOfStory(story).front() != frame) return;
        for (const ownedItemRec& owned : document.ownedItems(story, 0, document.totalLength(story))) {
            EXPECT_EQ(document.inlinePosition(owned.item), std::pair(story, owned.position));
            takeItem(owned.item, story, kInvalidUID);
        }
    }

    void takeStories() {
        EXPECT_EQ(document.stories().size(), framesByStory.size()) << "a story without frames, or frames without one";
        for (UID uid : document.stories()) {
            note(uid);
            const std::vector<UID> frames = document.framesOfStory(uid);
            EXPECT_EQ(std::set<UID>(frames.begin(), frames.end()), framesByStory[uid]);
            EXPECT_EQ(frames.size(), framesByStory[uid].size());
            EXPECT_TRUE(storyIsConsistent(*document.story(uid)->content));
        }
    }

    const DocumentModel& document;
    std::set<UID> uids;
    std::map<UID, std::set<UID>> framesByStory;
};

/// One random life of a document.
class RandomEdits {
 public:
    RandomEdits(unsigned seed, const char* layout) : random(seed), document(opened(layout)) {
        states = {stateOf(*document)};
    }

    void run(int steps) {
        for (int i = 0; i < steps && !testing::Test::HasFailure(); ++i) {
            const int choice = below(16);
            if (choice <= 1) {
                moveInHistory(below(5));
            } else if (choice == 2) {
                sequence(below(3) != 0);
            } else if (choice == 3) {
                save();
            } else if (choice == 4) {
                editACopy();
            } else {
                edit();
                noteStep();
            }
            check();
        }
        wholeWayBackAndForth();
    }

 private:
    int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }
    template <typename Element>
    const Element& oneOf(const std::vector<Element>& list) {
        return list[random() % list.size()];
    }

    /// One operation, which always leaves a step.
    void edit() {
        static const std::vector<std::function<bool(RandomEdits&)>> operations = {
            &RandomEdits::replaceText, &RandomEdits::replaceText,  &RandomEdits::changeAttribute,
            &RandomEdits::deleteItem,  &RandomEdits::setDataBlock, &RandomEdits::lockItem,
            &RandomEdits::addPages,    &RandomEdits::removePages,  &RandomEdits::copySpread,
            &RandomEdits::addSection,  &RandomEdits::applyMaster,  &RandomEdits::overrideMasters,
            &RandomEdits::linkFrames,  &RandomEdits::lockLayer,    &RandomEdits::detachMasters,
            &RandomEdits::groupItems,  &RandomEdits::ungroup,      &RandomEdits::moveItem,
            &RandomEdits::copyItem,    &RandomEdits::setContent,   &RandomEdits::setPathText,
            &RandomEdits::anchorItem,  &RandomEdits::releaseItem};
        while (!oneOf(operations)(*this)) {
        }
    }

    bool replaceText() {
        const std::vector<UID> stories = document->stories();
        if (stories.empty()) return false;
        const UID story = oneOf(stories);
        const std::int32_t length = document->totalLength(story) - 1, start = below(length + 1);
        const std::int32_t count = below(length - start + 1);
        const std::vector<std::u32string> texts = {U"", U"new", U"two\nparagraphs", U"\n", U"{{no link}}"};
        const std::u32string& text = oneOf(texts);
        if (count == 0 && text.empty()) return false;  // succeeds and is no step
        return document->textReplace(story, start, count, text, below(2) == 0) == 0;
    }

    bool changeAttribute() {
        const std::vector<UID> stories = document->stories();
        if (stories.empty()) return false;
        const UID story = oneOf(stories);
        const std::int32_t start = below(document->totalLength(story));
        const std::int32_t count = 1 + below(document->totalLength(story) - start);
        if (below(3) == 0) return document->attributeRemove(story, start, count, TextAttributeClass::kelvaneTag) == 0;
        if (below(2) == 0) {
            return document->attributeApply(
                       story, start, count,
                       std::make_shared<NumberAttribute>(TextAttributeClass::pointSize, below(9))) == 0;
        }
        const TagAttribute::Content tag{"Kelvane", "Highlight", "Green", "Spare", static_cast<std::uint32_t>(below(99)),
                                        "?"};
        return document->attributeApply(story, start, count,
                                        std::make_shared<TagAttribute>(TextAttributeClass::kelvaneTag, tag)) == 0;
    }

    UID anyItem() {
        Census census(*document);
        census.take();
        return census.items.empty() ? kInvalidUID : oneOf(census.items);
    }

    bool deleteItem() { return below(2) == 0 && document->deleteItem(anyItem()) == 0; }
    bool setDataBlock() {
        std::optional<std::string> block;
        if (below(3) != 0) block = std::string(random() % 9, 'd');
        return document->setItemDataBlock(below(4) == 0 ? kInvalidUID : anyItem(), below(2), block) == 0;
    }
    bool lockItem() {
        const UID item = anyItem();
        if (item == kInvalidUID) return false;
        document->setItemLocked(item, below(2) == 0);
        return true;
    }

    bool addPages() { return document->pageCount() < 8 && document->addPages(1 + below(2)) == 0; }
    bool removePages() {
        if (document->pageCount() < 2) return false;
        std::vector<UID> gone;
        for (int i = 0; i <= below(3); ++i)
            gone.push_back(document->pageAt(below(document->pageCount())));
        return document->removePages(gone) == 0;
    }
    bool copySpread() {
        return document->spreadCount() < 5 && document->spreadCount() > 0 &&
               document->duplicateSpread(document->spreadAt(below(document->spreadCount()))) == 0;
    }
    bool linkFrames() {
        const UID before = anyItem(), behind = anyItem();
        const bool isThere = document->isTextFrame(before) && document->isTextFrame(behind) &&
                             document->textOfFrame(before) == document->textOfFrame(behind);
        return !isThere && document->linkFrames(before, behind) == 0;  // one that is there stays, and that is no step
    }
    bool groupItems() {
        UID made = kInvalidUID;
        return document->groupItems({anyItem(), anyItem()}, made) == 0;
    }
    bool ungroup() {
        std::vector<UID> members;
        return document->ungroup(anyItem(), members) == 0;
    }
    bool moveItem() {
        const UID item = anyItem();
        return (below(2) == 0 ? document->moveBy(item, below(90) + 1, below(9))
                              : document->rotateBy(item, below(90) + 1)) == 0;
    }
    bool copyItem() {
        UID made = kInvalidUID;
        return below(2) == 0 && document->duplicateItem(anyItem(), made) == 0;
    }
    bool anchorItem() {
        if (document->stories().empty()) return false;
        const UID story = oneOf(document->stories());
        return document->anchorItem(anyItem(), story, below(document->totalLength(story))) == 0;
    }
    bool releaseItem() { return document->releaseItem(anyItem()) == 0; }
    bool setContent() {
        const UID item = anyItem();
        const auto kind = static_cast<ContentKind>(below(3));
        return document->contentKind(item) != kind && document->setContentKind(item, kind) == 0;
    }
    bool setPathText() {
        const UID item = anyItem();
        const bool isNew = document->textOnPath(item) == kInvalidUID;
        if (!isNew && below(3) == 0) return document->setPathText(item, {}) == 0;
        const PathTextOptions options{.start = static_cast<double>(below(9)), .flip = below(2) == 0};
        if (!isNew) return document->setPathText(item, options) == 0;
        if (!document->isTextFrame(item)) return false;  // else a failure would leave an empty step
        EXPECT_EQ(document->BeginCommandSequence("Put Text on a Path", true), 0);
        EXPECT_EQ(document->setPathText(item, options), 0);
        EXPECT_EQ(document->textReplace(document->textOnPath(item), 0, 0, U"on a path", true), 0);
        document->EndCommandSequence();
        return true;
    }
    bool applyMaster() {
        if (document->pageCount() == 0) return false;
        const UID master = below(3) == 0 ? kInvalidUID : document->masterAt(below(document->masterCount()));
        return document->applyMaster({document->pageAt(below(document->pageCount()))}, master) == 0;
    }
    bool overrideMasters() {
        if (document->pageCount() == 0 || below(2) == 0) return false;
        return document->overrideMasterItems({document->pageAt(below(document->pageCount())), document->pageAt(0)}) ==
               0;
    }

    /// As a run does it before it copies a template.
    bool detachMasters() {
        if (document->pageCount() == 0 || document->masterCount() == 0 || below(3) != 0) return false;
        std::vector<UID> pages;
        for (std::int32_t i = 0; i < document->pageCount(); ++i)
            pages.push_back(document->pageAt(i));
        std::vector<std::size_t> drawn;
        for (const UID page : pages)
            drawn.push_back(drawnOn(*document, page).size());
        EXPECT_EQ(document->BeginCommandSequence("Detach Masters", true), 0);
        EXPECT_EQ(document->overrideMasterItems(pages), 0);
        document->clearOverriddenMarks();
        EXPECT_EQ(document->applyMaster(pages, kInvalidUID), 0);
        document->EndCommandSequence();
        for (std::size_t i = 0; i < pages.size(); ++i)
            EXPECT_GE(drawnOn(*document, pages[i]).size(), drawn[i]) << "page " << i << " lost something";
        return true;
    }
    bool lockLayer() {
        document->setLayerLocked(document->layerAt(1 + below(2)), below(2) == 0);
        return true;
    }

    bool addSection() {
        if (document->pageCount() == 0) return false;
        return document->createSection({document->pageAt(below(document->pageCount())), "S", "", below(9), below(5),
                                        below(2) == 0, true}) == 0;
    }

    void noteStep() {
        states.resize(place + 1);
        states.push_back(stateOf(*document));
        ++place;
        if (savedPlace && *savedPlace >= place) savedPlace.reset();  // it was ahead, and can't be reached any more
        const std::size_t kept = undoStepCapacity + 1;
        if (states.size() <= kept) return;
        states.erase(states.begin());
        --place;
        if (savedPlace) savedPlace = *savedPlace == 0 ? std::nullopt : std::optional(*savedPlace - 1);
    }

    void save() {
        document->setLocation("/nowhere", "random.tvd");
        savedPlace = place;
        savedState = stateOf(*document);
        if (below(4) == 0) revert();
    }

    /// The document becomes what its file says; there is nothing to undo then.
    void revert() {
        const std::string bytes = writeLayout(*document);
        const auto file = opened(bytes);
        ASSERT_EQ(document->replaceBy(*file), 0);
        EXPECT_EQ(writeLayout(*document), bytes);
        document->setLocation("/nowhere", "random.tvd");
        states = {stateOf(*document)};
        savedPlace = place = 0;
    }

    /// Edits of a copy don't reach the document.
    void editACopy() {
        const std::string before = writeLayout(*document);
        std::unique_ptr<DocumentModel> original = std::move(document);
        document.reset(static_cast<DocumentModel*>(original->documentCopy().release()));
        EXPECT_EQ(writeLayout(*document), before);
        EXPECT_FALSE(document->documentIsSaved());
        for (int i = 0; i < 3; ++i)
            edit();
        const std::string changed = writeLayout(*document);
        std::swap(document, original);
        EXPECT_EQ(writeLayout(*document), before);
        edit();
        EXPECT_EQ(writeLayout(*original), changed);
        noteStep();
    }

    /// Several edits as one step, with sequences inside; one that can't be undone begins the history anew.
    void sequence(bool undoable) {
        ASSERT_EQ(document->BeginCommandSequence("Outer", undoable), 0);
        edit();
        EXPECT_FALSE(document->undo()) << "not in an open sequence";
        const bool innerUndoable = below(6) != 0;
        ASSERT_EQ(document->BeginCommandSequence("Inner", innerUndoable), 0);
        edit();
        edit();
        document->EndCommandSequence();
        edit();
        document->EndCommandSequence();
        if (undoable && innerUndoable) return noteStep();
        states = {stateOf(*document)};
        place = 0;
        savedPlace.reset();
    }

    void moveInHistory(int count) {
        for (int i = 0; i < count; ++i)
            back();
        for (int i = below(count + 1); i > 0; --i)
            forth();
    }
    void back() {
        ASSERT_EQ(document->undo().has_value(), place > 0);
        if (place > 0) --place;
        ASSERT_EQ(stateOf(*document), states[place]);
        check();
    }
    void forth() {
        ASSERT_EQ(document->redo().has_value(), place + 1 < states.size());
        if (place + 1 < states.size()) ++place;
        ASSERT_EQ(stateOf(*document), states[place]);
        check();
    }
    void wholeWayBackAndForth() {
        while (place > 0 && !testing::Test::HasFailure())
            back();
        back();
        while (place + 1 < states.size() && !testing::Test::HasFailure())
            forth();
        forth();
    }

    static std::vector<UID> drawnOn(const DocumentModel& on, UID page) {
        std::vector<const PageItem*> items;
        on.drawnItems(page, items);
        std::vector<UID> out;
        for (const PageItem* item : items)
            out.push_back(item->uid);
        return out;
    }

    /// What the document answers is what it answers when it has just been opened, without anything kept from before.
    void check() {
        Census census(*document);
        census.take();
        EXPECT_TRUE(document->documentIsSaved() || savedPlace != place);
        EXPECT_TRUE(!document->documentIsSaved() || stateOf(*document) == savedState);
        const auto fresh = opened(writeLayout(*document));
        ASSERT_NE(fresh, nullptr);
        EXPECT_EQ(writeLayout(*fresh), writeLayout(*document));
        for (UID item : census.items) {
            EXPECT_EQ(document->pageOfItem(item).page, fresh->pageOfItem(item).page) << item;
        }
        for (std::int32_t i = 0; i < document->pageCount(); ++i)
            checkPage(*fresh, document->pageAt(i));
        for (std::int32_t i = 0; i < document->masterCount(); ++i)
            EXPECT_EQ(document->masterInUse(document->masterAt(i)), fresh->masterInUse(fresh->masterAt(i))) << i;
    }

    void checkPage(const DocumentModel& fresh, UID page) {
        EXPECT_EQ(document->pageName(page), fresh.pageName(page)) << page;
        EXPECT_EQ(document->masterOfPage(page), fresh.masterOfPage(page)) << page;
        const std::vector<UID> drawn = drawnOn(*document, page);
        EXPECT_EQ(drawn, drawnOn(fresh, page)) << page;
        for (const UID item : drawn)
            EXPECT_EQ(document->pageOrigin(page, *document->item(item)), fresh.pageOrigin(page, *fresh.item(item)));
    }

    std::mt19937 random;
    std::unique_ptr<DocumentModel> document;
    std::vector<std::string> states;  // of the first state that can be reached, and behind each step
    std::size_t place = 0;            // of the document in them
    std::optional<std::size_t> savedPlace;
    std::string savedState;
};

TEST(RandomEdits, KeepTheInvariantsAndComeBack) {
    for (unsigned seed = 1; seed <= 16; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomEdits(seed, seed % 2 == 0 ? facingLayout : startingLayout).run(100);
        if (HasFailure()) return;
    }
}

}  // namespace
}  // namespace tarnova
