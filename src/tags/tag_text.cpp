#include "tags/tag_text.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "document/document_looks.h"
#include "engine/toolkit/alerts.h"
#include "engine/toolkit/memory.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/text_encoding.h"
#include "engine/toolkit/toolkit_state.h"
#include "tags/tag_frames.h"
#include "tags/tag_manager.h"
#include "tags/tag_syntax.h"

namespace tarnova {

namespace {

constexpr std::int32_t bufferSpare = 4;  // bytes behind the text
constexpr std::string_view markSwatch = "C=0 M=100 Y=0 K=0";
constexpr double markColour[4] = {0, 1, 0, 0};
constexpr double markPointSize = 1;

/// Continue goes on.
bool askToGoOn(const PMString& text) {
    return text.empty() || askChoice(text, false, 1);
}

PMString faultText(const parsedTag& found) {
    if (found.errorCode != tagErrorMissing) {
        Str31 number;
        pstrFromLong(found.errorCode, number);
        return fillMarkers(PMString::ofKey("kZavoErrorInvalidTagError").view(), number);
    }
    const tagDataRec& tag = found.tag;
    if (tag.tagKind == 1) return PMString::ofKey("kZavoErrorInvalidTagBmediaNotAllowed");
    if (tag.searchKey[0] == 0) return PMString::ofKey("kZavoErrorInvalidTagNoSearchKey");
    if (tag.extractionRecordName[0] == 0) return PMString::ofKey("kZavoErrorInvalidTagNoExtractionRecord");
    if (tag.tagKind == 2 && found.mediaData == nullptr) return PMString::ofKey("kZavoErrorInvalidTagNoBmediaData");
    return PMString::ofKey("kZavoErrorInvalidTagMissingField");
}

bool isUnfilled(const std::uint8_t* field) {
    return field[0] == 0 || field[1] == ' ';
}

/// What a tag without an error still lacks for a link; empty for one that has it all.
PMString lackText(const parsedTag& found) {
    const tagDataRec& tag = found.tag;
    if (tag.tagKind != 1 && isUnfilled(tag.searchKey)) return PMString::ofKey("kZavoErrorInvalidTagNoSearchKey");
    if (tag.tagKind != 1 && isUnfilled(tag.extractionRecordName)) {
        return PMString::ofKey("kZavoErrorInvalidTagNoExtractionRecord");
    }
    if (tag.tagKind != 0 && found.mediaData == nullptr) return PMString::ofKey("kZavoErrorInvalidTagNoBmediaData");
    return PMString{};
}

/// Takes away what closes the tag behind its data.
errorWord deleteClosing(UIDRef story, std::int32_t position) {
    const std::u32string behind = story.database->textRead(story.uid, position, tagClosingLength);
    if (behind.starts_with(U'>') || behind.starts_with(U']')) return story.database->textDelete(story.uid, position, 1);
    if (behind == U"<!!>" || behind == U"[!!]") {
        return story.database->textDelete(story.uid, position, tagClosingLength);
    }
    return 0;
}

/// A tag whose marks lie in different cells, or beside a cell, can't lose them.
bool liesInOneThread(UIDRef story, const parsedTag& found) {
    const textSpanRec thread = story.database->threadSpan(story.uid, found.tagStart);
    return found.tagStart + found.tagLength < thread.start + thread.length;
}

errorWord applyLink(UIDRef story, const parsedTag& found) {
    if (!liesInOneThread(story, found)) return errFailed;
    std::byte* stored = nullptr;
    errorWord error = tagRecordEncode(&found.tag, &stored, 0);
    const blockPtr<> owned(stored);
    if (error == 0) error = deleteClosing(story, found.dataStart + found.dataLength);
    if (error != 0) return error;
    tagStrings strings;
    tagStringsInit(strings, walkState().engineMode);
    std::int32_t position = found.dataStart, length = found.dataLength;
    const std::string_view data(reinterpret_cast<const char*>(stored), blockSize(stored));
    if (dataTagManager().TagText(story, strings, data, position, length) != 0) return errFailed;
    return story.database->textDelete(story.uid, found.tagStart, found.dataStart - found.tagStart);
}

/// False when the user aborts.
bool convertTag(UIDRef story, const parsedTag& found) {
    if (found.errorCode != 0) return askToGoOn(faultText(found));
    if (const PMString lack = lackText(found); !lack.empty()) return askToGoOn(lack);
    if (found.tagMode == tagModeCheckOnly) return true;
    if (applyLink(story, found) != 0) reportErrorKey("kZavoErrorApplySequenceFailed");
    return true;
}

bool convertBackward(UIDRef story, const parsedTag* list) {
    std::vector<const parsedTag*> tags;
    for (const parsedTag* at = list; at != nullptr; at = at->next)
        tags.push_back(at);
    return std::all_of(tags.rbegin(), tags.rend(),
                       [story](const parsedTag* found) { return convertTag(story, *found); });
}

/// A stored name, which may be in either encoding.
void appendName(std::u32string& out, const std::uint8_t* name) {
    const std::string_view bytes = pstrView(name);
    out += isUtf8(bytes) ? utf8ToUtf32(bytes) : windows1252ToUtf32(bytes);
}

std::u32string openingMark(const tagDataRec& tag) {
    std::u32string mark = U"<!$";
    appendName(mark, tag.searchKey);
    appendName(mark += U"; ", tag.extractionRecordName);
    appendName(mark += U"; ", walkState().engineMode == 0 ? tag.ruleName : tag.searchCriteriaName);
    appendName(mark += U"; ", tag.styleRecordName);
    return mark += U"; : >";
}

/// Inserts a mark and gives it its look. It is no part of a link that ends in front of it.
errorWord insertMark(UIDRef story, std::int32_t position, std::u32string_view mark) {
    Document& document = *story.database;
    const auto length = static_cast<std::int32_t>(mark.size());
    const auto size = std::make_shared<const NumberAttribute>(TextAttributeClass::pointSize, markPointSize);
    errorWord error = document.textReplace(story.uid, position, 0, mark, true);
    if (error == 0) error = document.attributeRemove(story.uid, position, length, tagClassOfMode());
    if (error == 0) error = document.attributeApply(story.uid, position, length, size);
    DocumentLooks* const looks = looksOf(document);
    if (error != 0 || looks == nullptr) return error;
    looks->ensureSwatch(markSwatch, markColour);
    return looks->applySwatch(story.uid, position, length, markSwatch);
}

std::int32_t charactersOf(const Document& document) {
    std::int32_t count = 0;
    for (const UID story : document.stories())
        count += document.totalLength(story);
    return count;
}

/// Does `work` in one step. False after telling that it failed.
template <typename Work>
bool convertInOneStep(UIDRef document, std::string_view titleKey, Work work) {
    const PMString title = PMString::ofKey(titleKey);
    bool good = document.database != nullptr && document.database->BeginCommandSequence(title.view()) == 0;
    if (good) {
        good = work(*document.database);
        document.database->EndCommandSequence();
    }
    if (!good) reportErrorKey("kZavoErrorConvertSequenceFailed");
    return good;
}

void walkAllStories(Document& document, IStoryCallback& stories) {
    stories.SetTotal(charactersOf(document));
    std::uint16_t cancel = 0;
    walkDocument(document, nullptr, &stories, 0, 0, WalkScope::everything, false, false, nullptr, nullptr, &cancel,
                 true);
}

}  // namespace

tagConversion convertTagText(UIDRef story, textSpanRec range) {
    if (!story || range.length <= 0) return tagConversion::done;
    const std::u32string text = story.database->textRead(story.uid, range.start, range.length);
    const blockPtr<char> buffer(static_cast<char*>(newBlock(text.size() + bufferSpare)));
    if (buffer == nullptr) return tagConversion::noMemory;
    reduceTagText(text, buffer.get());
    std::uint16_t status = 0;
    const parsedTagList list = tagTextParse(static_cast<std::int32_t>(text.size()), buffer.get(), status);
    for (parsedTag* at = list.get(); at != nullptr; at = at->next) {
        at->tagStart += range.start;
        at->dataStart += range.start;
    }
    return convertBackward(story, list.get()) ? tagConversion::done : tagConversion::aborted;
}

std::int32_t tagTextConvert(UIDRef story, std::int32_t length) {
    return convertTagText(story, {0, length}) == tagConversion::noMemory ? -1 : 0;
}

errorWord tagTextWrite(UIDRef story, std::int32_t position, const tagDataRec& tag, tagMarksRec& outMarks) {
    outMarks = {};
    Document& document = *story.database;
    const textTagRec link = findTextTag(document, story.uid, position, 1);
    std::int32_t dataLength = 0;
    if (link.attribute != nullptr && link.start == position) {
        const textSpanRec thread = document.threadSpan(story.uid, position);
        dataLength = std::min(link.length, thread.start + thread.length - 1 - position);
        const errorWord error = document.attributeRemove(story.uid, position, link.length, tagClassOfMode());
        if (error != 0) return error;
    }
    const std::u32string opening = openingMark(tag);
    constexpr std::u32string_view closing = U"<!!>";
    errorWord error = insertMark(story, position + dataLength, closing);
    if (error == 0) error = insertMark(story, position, opening);
    if (error == 0) outMarks = {static_cast<std::int32_t>(opening.size()), static_cast<std::int32_t>(closing.size())};
    return error;
}

ZavoConvertStoryCallback::ZavoConvertStoryCallback()
    : ZavoStoryCallback(true, PMString::ofKey("kZavoConvertingTaggedTextMessageStringKey")) {}

bool ZavoConvertStoryCallback::StoryBegin(UIDRef story) {
    const std::int32_t length = story.database->totalLength(story.uid);
    const tagConversion result = convertTagText(story, {0, length});
    hasFailed = hasFailed || result == tagConversion::noMemory;
    isAborted = isAborted || result == tagConversion::aborted;
    if (result != tagConversion::done) *cancel = 1;
    walked += length;
    if (total > 0) {
        statusDialog(message, std::max<std::int32_t>(static_cast<std::int32_t>(std::int64_t{walked} * 100 / total), 1),
                     showProgress != 0, false, toolkitState().engineError);
    }
    return false;
}

ZavoConvertLinksToTagsCallback::ZavoConvertLinksToTagsCallback()
    : ZavoStoryCallback(true, PMString::ofKey("kZavoConvertingVariableLinksMessageStringKey")) {
    wantsFrame = false;
}

bool ZavoConvertLinksToTagsCallback::TagIsMine(UIDRef story, const TagAttribute& attribute) {
    return tagIsOwn(attribute) && runCarriesTag(*story.database, story.uid, position, runLength, runEndsThread) &&
           tagRecordDecode(attribute.data(), &tag, nullptr, nullptr, 0) == 0;
}

std::int32_t ZavoConvertLinksToTagsCallback::TagProcess(UIDRef story) {
    tagMarksRec marks;
    if (tagTextWrite(story, tagStart, tag, marks) != 0) {
        hasFailed = true;
        *cancel = 1;
        return 0;
    }
    position = tagStart + tagLength + marks.opening + marks.closing;
    storyEnd += marks.opening + marks.closing;
    return 0;
}

bool convertTextToLinks(UIDRef document) {
    return convertInOneStep(document, "kZavoConvertTextTagsToVarLinksMenuKey", [](Document& target) {
        ZavoConvertStoryCallback stories;
        walkAllStories(target, stories);
        return !stories.failed() && (stories.aborted() || convertTagFrames(target));
    });
}

bool convertLinksToText(UIDRef document) {
    return convertInOneStep(document, "kZavoConvertVarLinksToTextTagsMenuKey", [](Document& target) {
        ZavoConvertLinksToTagsCallback links;
        walkAllStories(target, links);
        return !links.failed();
    });
}

}  // namespace tarnova
