#include "tags/tag_list.h"

#include "document/walk.h"
#include "tags/tag_attribute.h"

namespace tarnova {

namespace {

void readTag(std::string_view data, tagListRec& entry) {
    entry.readError = tagRecordDecode(data, &entry.tag, nullptr, &entry.storedKind, 0);
}

void notePage(UIDRef frame, tagListRec& entry) {
    if (!frame) return;
    const pageOfItemRec on = frame.database->pageOfItem(frame.uid);
    entry.onMaster = on.isMaster;
    if (on.page != kInvalidUID) entry.pageIndex = frame.database->pageIndex(on.page);
}

class FrameTagLister final : public ZavoFrameCallback {
 public:
    explicit FrameTagLister(std::vector<tagListRec>& itsEntries) : entries(itsEntries) {}
    bool TagIsMine(std::string_view data) override {
        tagListRec& entry = entries.emplace_back();
        entry.owner = frameRef.uid;
        entry.onFrame = true;
        notePage(frameRef, entry);
        readTag(data, entry);
        return false;
    }

 private:
    std::vector<tagListRec>& entries;
};

class TextTagLister final : public ZavoStoryCallback {
 public:
    explicit TextTagLister(std::vector<tagListRec>& itsEntries) : entries(itsEntries) {}
    bool TagIsMine(UIDRef story, const TagAttribute& attribute) override {
        if (!tagIsOwn(attribute)) return false;
        if (!runCarriesTag(*story.database, story.uid, position, runLength, runEndsThread)) return false;
        opened = {};
        readTag(attribute.data(), opened);
        return true;
    }
    std::int32_t TagProcess(UIDRef story) override {
        opened.owner = story.uid;
        opened.start = tagStart;
        opened.length = tagLength - tagTail;
        opened.text = story.database->textRead(story.uid, opened.start, opened.length);
        notePage(frameRef, opened);
        entries.push_back(opened);
        return 0;
    }

 private:
    std::vector<tagListRec>& entries;
    tagListRec opened;
};

/// Puts the engine mode back at the end.
class StoreInUse {
 public:
    explicit StoreInUse(std::uint16_t store) : before(walkState().engineMode) { walkState().engineMode = store; }
    ~StoreInUse() { walkState().engineMode = before; }
    StoreInUse(const StoreInUse&) = delete;
    StoreInUse& operator=(const StoreInUse&) = delete;

 private:
    std::uint16_t before;
};

}  // namespace

std::vector<tagListRec> listTags(Document& document, std::uint16_t store) {
    const StoreInUse inUse(store);
    std::vector<tagListRec> entries;
    FrameTagLister frames(entries);
    TextTagLister texts(entries);
    walkDocument(document, &frames, &texts, 0, 0, WalkScope::everything, false, false, nullptr, nullptr, nullptr, true);
    for (tagListRec& entry : entries)
        entry.store = store;
    return entries;
}

}  // namespace tarnova
