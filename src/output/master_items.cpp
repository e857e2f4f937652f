#include "output/master_items.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "document/document.h"
#include "document/item_data.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "tags/link_check.h"

namespace tarnova {
namespace {

/// Kinds of rule attributes whose pages keep their masters.
constexpr std::int32_t keepingRuleKinds[] = {23, 24};

/// The item or one inside it is marked as variable.
bool isMarkedVariable(Document& document, UID item) {
    const UIDRef ref{&document, item};
    if (itemDataView(ref, ItemDataPlace::pageItem, itemDataVariable, session().engineMode)) return true;
    for (std::int32_t i = 0; i < document.childCount(item); ++i) {
        if (isMarkedVariable(document, document.childAt(item, i))) return true;
    }
    return false;
}

bool hasVariableItem(Document& document, UID master) {
    for (std::int32_t i = 1; i < document.layerCount(); ++i) {
        const UID node = document.spreadLayerNode(master, document.layerAt(i));
        if (node == kInvalidUID) continue;
        for (std::int32_t child = 0; child < document.childCount(node); ++child) {
            const UID item = document.childAt(node, child);
            if (isMarkedVariable(document, item) || itemHasLinks({&document, item})) return true;
        }
    }
    return false;
}

masterNoteRec* noteOf(UIDRef master) {
    auto& notes = session().masterNotes;
    const auto found =
        std::find_if(notes.begin(), notes.end(), [&](const masterNoteRec& note) { return note.master == master; });
    return found == notes.end() ? nullptr : &*found;
}

/// Gives the flag to masters whose base has it and to bases of those that have it; true when one was given.
bool spreadFlags(const Document& document) {
    bool given = false;
    for (masterNoteRec& note : session().masterNotes) {
        for (const UID page : document.pagesOfSpread(note.master.uid)) {
            masterNoteRec* const base = noteOf({note.master.database, document.masterOfPage(page)});
            if (base == nullptr || base->isVariable == note.isVariable) continue;
            base->isVariable = note.isVariable = given = true;
        }
    }
    return given;
}

bool anyMasterInUse(const Document& document) {
    for (std::int32_t i = 0; i < document.masterCount(); ++i) {
        if (document.masterInUse(document.masterAt(i))) return true;
    }
    return false;
}

bool pageQualifies(UIDRef page) {
    const auto read = session().readPageRuleKinds;
    std::vector<std::int32_t> kinds;
    if (read == nullptr || !read(page, kinds)) return true;
    return !kinds.empty() && std::find_first_of(kinds.begin(), kinds.end(), std::begin(keepingRuleKinds),
                                                std::end(keepingRuleKinds)) == kinds.end();
}

/// Releases the locks of a document's layers as long as it lives.
class LayerLocks {
 public:
    explicit LayerLocks(Document& itsDocument) : document(itsDocument) {
        for (std::int32_t i = 0; i < document.layerCount(); ++i) {
            if (document.layerLocked(document.layerAt(i))) locked.push_back(document.layerAt(i));
        }
        setAll(false);
    }
    ~LayerLocks() { setAll(true); }
    LayerLocks(const LayerLocks&) = delete;
    LayerLocks& operator=(const LayerLocks&) = delete;

 private:
    void setAll(bool lock) {
        for (const UID layer : locked)
            document.setLayerLocked(layer, lock);
    }
    Document& document;
    std::vector<UID> locked;
};

/// The marks of masters' items go when the pages have got theirs: what a master hides of its base stays hidden.
errorWord overrideItems(Document& document, const std::vector<UID>& pages) {
    const LayerLocks released(document);
    const errorWord error = document.overrideMasterItems(pages);
    if (error == 0) document.clearOverriddenMarks();
    return error;
}

}  // namespace

void gatherMasters(UIDRef document) {
    Document& model = *document.database;
    auto& notes = session().masterNotes;
    notes.clear();
    for (std::int32_t i = 0; i < model.masterCount(); ++i) {
        const UID master = model.masterAt(i);
        notes.push_back({PMString(model.masterName(master)), {&model, master}, hasVariableItem(model, master)});
    }
    while (spreadFlags(model)) {
    }
}

bool masterIsVariable(UIDRef master) {
    const masterNoteRec* const note = noteOf(master);
    return note != nullptr && note->isVariable;
}

bool runDetachesMasters() {
    switch (appPrefs().mergeRunType) {
        case mergeRunPreview:
        case mergeRunCurrentDocument:
        case mergeRunShortestLine:
        case mergeRunLongestLine:
        case mergeRunPreflight:
        case mergeRunTest:
            return false;
        default:
            return true;
    }
}

bool documentHasPageRules(UIDRef document) {
    const auto read = session().readPageRuleKinds;
    if (read == nullptr) return false;
    std::vector<std::int32_t> kinds;
    for (std::int32_t i = 0; i < document.database->pageCount(); ++i) {
        kinds.clear();
        if (read({document.database, document.database->pageAt(i)}, kinds) && !kinds.empty()) return true;
    }
    return false;
}

errorWord detachMasterItems(UIDRef document, errorWord priorError) {
    Document& model = *document.database;
    if (priorError != 0 || !anyMasterInUse(model)) return priorError;
    std::vector<UID> pages;
    for (std::int32_t i = 0; i < model.pageCount(); ++i) {
        if (pageQualifies({&model, model.pageAt(i)})) pages.push_back(model.pageAt(i));
    }
    errorWord error = overrideItems(model, pages);
    if (error == 0) error = model.applyMaster(pages, kInvalidUID);
    if (error != 0) return error;
    model.composeDocument();
    model.markTemplate();
    return 0;
}

}  // namespace tarnova
