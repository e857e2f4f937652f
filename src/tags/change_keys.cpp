#include "tags/change_keys.h"

#include <algorithm>

#include "engine/toolkit/messages.h"
#include "engine/toolkit/toolkit_state.h"
#include "rules/rule_info.h"
#include "tags/frame_scripts.h"
#include "tags/tag_attribute.h"
#include "tags/tag_manager.h"

namespace tarnova {

namespace {

constexpr std::string_view sequencePrefix = "SEQ-";

/// What a change of keys does with items and texts, in the order of a selection.
class KeyChange {
 public:
    explicit KeyChange(std::string_view newKey) : frames(newKey), texts(newKey) {}

    void range(UIDRef story, textSpanRec span) {
        std::int32_t start = span.start, length = span.length;
        texts.Process(story, start, length, kInvalidUIDRef, &cancel);
        for (const ownedItemRec& owned : story.database->ownedItems(story.uid, start, length)) {
            const UID table = story.database->tableOfOwnedItem(owned.item);
            if (table != kInvalidUID) {
                cells(story, table);
            } else {
                walkItem({story.database, owned.item}, &frames, &texts, &cancel);
            }
        }
    }

    void frame(UIDRef item) { frames.Process(item, &cancel); }

    void tree(UIDRef item, ItemKinds kinds) {
        Document& document = *item.database;
        if (document.isGroup(item.uid)) {
            frame(item);
            for (std::int32_t i = document.childCount(item.uid) - 1; i >= 0; --i)
                tree({&document, document.childAt(item.uid, i)}, kinds);
            return;
        }
        const bool isText = document.isTextFrame(item.uid);
        if (isText ? kinds == ItemKinds::graphicFrames : kinds == ItemKinds::textFrames) return;
        frame(item);
        if (isText) text({&document, document.textOfFrame(item.uid)});
        if (const UID onPath = document.textOnPath(item.uid); onPath != kInvalidUID) {
            text({&document, document.textOfFrame(onPath)});
        }
    }

    [[nodiscard]] errorWord result() const {
        if (toolkitState().engineError != 0) return toolkitState().engineError;
        return frames.failed() || texts.failed() ? errFailed : 0;
    }

 private:
    /// The cells of a table are threads of the text that holds it.
    void cells(UIDRef story, UID table) {
        const Document& document = *story.database;
        for (std::int32_t row = 0; row < document.rowCount(table); ++row) {
            for (std::int32_t column = 0; column < document.columnCount(table); ++column) {
                if (document.cellIsAnchor(table, row, column)) range(story, document.cellTextSpan(table, row, column));
            }
        }
    }

    void text(UIDRef story) { range(story, {0, story.database->totalLength(story.uid) - 1}); }

    ZavoChangeKeysFrameCallback frames;
    ZavoChangeKeysTextCallback texts;
    std::uint16_t cancel = 0;
};

/// The range with the whole of the tags at its ends; of the tag at a caret.
textSpanRec wholeTags(UIDRef story, textSpanRec range) {
    const Document& document = *story.database;
    std::int32_t start = range.start, limit = range.start + range.length;
    const textTagRec first = findTextTag(document, story.uid, start, range.length > 0 ? 1 : 0);
    const textTagRec last = range.length > 0 ? findTextTag(document, story.uid, limit - 1, 1) : first;
    if (first.attribute != nullptr) start = std::min(start, first.start);
    if (last.attribute != nullptr) limit = std::max(limit, last.start + last.length);
    return {start, limit - start};
}

template <typename Work>
errorWord inOneStep(UIDRef object, std::string_view newKey, Work work) {
    if (!object) return errFailed;
    const PMString title = PMString::ofKey("kZavoChangeKeysStringKey");
    const errorWord error = object.database->BeginCommandSequence(title.view());
    if (error != 0) return error;
    KeyChange change(newKey);
    work(change);
    object.database->EndCommandSequence();
    return change.result();
}

}  // namespace

ZavoChangeKeysTextCallback::ZavoChangeKeysTextCallback(std::string_view newKey) : key(newKey) {
    wantsFrame = false;
}

bool ZavoChangeKeysTextCallback::TagIsMine(UIDRef, const TagAttribute& attribute) {
    return tagIsOwn(attribute) && open.read(attribute.data());
}

std::int32_t ZavoChangeKeysTextCallback::TagProcess(UIDRef story) {
    pstrSet(open.tag.searchKey, key);
    const std::optional<std::string_view> stored = open.written();
    if (!stored || replaceTagData(story, *stored) != 0) hasFailed = true;
    return 0;
}

ZavoChangeKeysFrameCallback::ZavoChangeKeysFrameCallback(std::string_view newKey) : key(newKey) {}

bool ZavoChangeKeysFrameCallback::FrameBegin() {
    frameScriptRec script;
    if (readFrameScript(frameRef, script) && script.name.size() >= sequencePrefix.size() &&
        ascii::equalNoCase(std::string_view(script.name).substr(0, sequencePrefix.size()), sequencePrefix)) {
        script.name.resize(sequencePrefix.size());
        script.name += key;
        if (!writeFrameScript(frameRef, script)) hasFailed = true;
    }
    ruleInfoRec rule;
    if (getBoxRule(frameRef, rule) == 0 && rule.state == 0) {
        pstrSet(rule.key, key);
        if (setBoxRule(frameRef, rule) != 0) toolkitState().engineError = errRuleKey;
    }
    return true;
}

bool ZavoChangeKeysFrameCallback::TagIsMine(std::string_view data) {
    return open.read(data);
}

std::int32_t ZavoChangeKeysFrameCallback::TagProcess() {
    pstrSet(open.tag.searchKey, key);
    const std::optional<std::string_view> stored = open.written();
    if (!stored || replaceTagData(*stored) != 0) hasFailed = true;
    return 0;
}

errorWord changeKeysText(UIDRef story, textSpanRec range, std::string_view newKey) {
    return inOneStep(story, newKey, [&](KeyChange& change) { change.range(story, wholeTags(story, range)); });
}

errorWord changeKeysFrame(UIDRef frame, std::string_view newKey) {
    return inOneStep(frame, newKey, [&](KeyChange& change) { change.frame(frame); });
}

errorWord changeFrameTreeKeys(UIDRef item, std::string_view newKey, ItemKinds kinds) {
    return inOneStep(item, newKey, [&](KeyChange& change) { change.tree(item, kinds); });
}

}  // namespace tarnova
