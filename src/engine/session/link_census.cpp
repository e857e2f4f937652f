#include "engine/session/link_census.h"

#include <string_view>

#include "definitions/record_def_set.h"
#include "engine/toolkit/strings.h"
#include "tags/tag_attribute.h"

namespace tarnova {

namespace {

constexpr std::string_view barcodeMark = "_BARCODE_";

/// A text is a keyword when it begins with all of the keyword, in its case.
bool isKeyword(std::string_view text, std::string_view keywordKey) {
    return !text.empty() && text.front() == '_' && text.starts_with(stringOfKey(keywordKey));
}

std::string_view keywordTextOf(const extractionRec& link) {
    return link.dataFunction[0] != 0 ? pstrView(link.dataFunction) : pstrView(link.name);
}

bool isBarcodeLink(const extractionRec& link) {
    const std::string_view name = pstrView(link.name);
    return name.starts_with(barcodeMark) && name != stringOfKey("kZavoKeywordLinksBarcodePostnetKeywordStringKey") &&
           name != stringOfKey("kZavoKeywordLinksBarcodeUSPSIMKeywordStringKey");
}

void countSequence(const tagDataRec& tag, linkCensusRec& census) {
    std::int32_t sequence = 0;
    pstrToLong(tag.searchKey, &sequence);
    if (sequence < 0) return;
    const auto number = static_cast<std::uint32_t>(sequence);
    if (number > census.highestSequence) census.highestSequence = number;
    if (number < sequenceTableCapacity && census.sequenceTable[number]++ == 0) ++census.sequencesInUse;
}

/// Without a module for 2D barcodes no frame is a 2D barcode frame.
void noteFrameKeyword(const extractionRec& link, linkCensusRec& census) {
    if (census.nonBarcodeFrameLink[0] != 0) return;
    if (isKeyword(keywordTextOf(link), "kZavoKeywordLinksRead2DBarcodeDataKeywordStringKey"))
        pstrCopy(census.nonBarcodeFrameLink, link.name);
}

}  // namespace

void countLink(const tagDataRec& tag, bool onFrame, linkCensusRec& census) {
    ++(onFrame ? census.frameLinkCount : census.textLinkCount);
    countSequence(tag, census);
    extractionRec* link = nullptr;
    const recordDefRec* definition = definitionState().currentRecordDef;
    if (definition == nullptr) return;
    if (findExtraction(definition, tag.extractionRecordName, link, 0) != 0 || link == nullptr) return;
    if (link->type == linkTypeArticle) ++census.pictureLinkCount;
    if (link->type == linkTypeGroupPicture) census.hasGroupPictureLink = 1;
    if (isBarcodeLink(*link)) census.hasBarcodeLink = 1;
    if (isKeyword(pstrView(link->name), "kZavoKeywordLinksConsecutiveNumberKeywordStringKey") ||
        isKeyword(pstrView(link->dataFunction), "kZavoKeywordLinksConsecutiveNumberKeywordStringKey"))
        census.hasNumberLink = 1;
    if (onFrame) noteFrameKeyword(*link, census);
}

bool ZavoGetVxFrameParamsCallback::FrameBegin() {
    if (itemDataView(frameRef, ItemDataPlace::pageItem, itemDataActionFrame, modeMerge)) ++census.actionFrameCount;
    return true;
}

bool ZavoGetVxFrameParamsCallback::TagIsMine(std::string_view data) {
    if (tagRecordDecode(data, &tag, nullptr, nullptr, 0) == 0) countLink(tag, true, census);
    return false;
}

bool ZavoGetVxTextParamsCallback::TagIsMine(UIDRef story, const TagAttribute& attribute) {
    return tagIsOwn(attribute) && runCarriesTag(*story.database, story.uid, position, runLength, runEndsThread) &&
           tagRecordDecode(attribute.data(), &tag, nullptr, nullptr, 0) == 0;
}

std::int32_t ZavoGetVxTextParamsCallback::TagProcess(UIDRef) {
    countLink(tag, false, census);
    return 0;
}

void countLinks(UIDRef document) {
    sessionRec& current = session();
    linkCensusRec& census = current;
    census = {};
    if (document.database == nullptr) return;
    ZavoGetVxFrameParamsCallback frames(census);
    ZavoGetVxTextParamsCallback texts(census);
    const auto walk = [&](IFrameCallback* frameCallback, IStoryCallback* storyCallback) {
        std::uint16_t cancel = 0;
        return walkDocument(*document.database, frameCallback, storyCallback, 0, 0, WalkScope::everything,
                            current.prefs.skipHiddenLayers != 0, current.prefs.skipPasteboard != 0, nullptr, nullptr,
                            &cancel, current.layerRulePages > 0);
    };
    if (walk(&frames, nullptr) == 0) walk(nullptr, &texts);
    census.allLinkCount = census.frameLinkCount + census.textLinkCount;
}

}  // namespace tarnova
