#include "merge/link_merge.h"

#include <algorithm>

#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/text_encoding.h"
#include "output/build_tables.h"

namespace tarnova {
namespace {

constexpr std::int16_t runRefusedTag = -6029;

std::string_view trimBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace

bool isPriceRun() {
    return session().engineRunType == engineRunPrice;
}

LinkMerge::LinkMerge(std::uint16_t itsDefaultSet) : defaultSet(itsDefaultSet) {}

bool LinkMerge::openData() {
    dataSourceRec* source = nullptr;
    std::int16_t status = openStatusNothing;
    auto& error = session().engineError;
    error = openCurrentData(source, status, nullptr, error);
    return error == 0 && source != nullptr;
}

bool LinkMerge::readTag(std::string_view stored) {
    value = tagValueRec{};
    hasValue = deleteMode = lockedLink = false;
    auto& error = session().engineError;
    error = tagRecordDecode(stored, &tagRec, nullptr, nullptr, error);
    return error == 0;
}

errorWord LinkMerge::chooseRecord(errorWord priorError) {
    if (priorError != 0) return priorError;
    if (isPriceRun()) {
        value.recordNumber = -1;
        const errorWord error = fetchForTag(tagRec, defaultSet, value, 0);
        recordPosition = value.recordNumber;
        return error;
    }
    std::int32_t sequence = 0;
    pstrToLong(tagRec.searchKey, &sequence);
    recordPosition = recordNumberOfLink(placeOfLink().pageEntry, std::max(sequence, 1));
    value.recordNumber = recordPosition;
    return fetchAt(tagRec, value);
}

/// Fetches the value of a link for a record of the run or, behind the end of the run's records, a filler.
errorWord LinkMerge::fetchAt(const tagDataRec& tag, tagValueRec& out) {
    if (isPriceRun()) return fetchForTag(tag, defaultSet, out, 0);
    recordRequestRec request;
    const appPrefsRec& prefs = appPrefs();
    const defaultStringSet& defaults = defaultSet == defaultSetText ? prefs.textDefaults : prefs.pictureDefaults;
    errorWord error = noteRecordRequest(placeOfLink().pageEntry, out.recordNumber, defaults, request, 0);
    error = fetchForTag(tag, defaultSet, out, error);
    if (!request.pastEnd || out.status == fetchBadTag) return error;
    error = takeHostText(request.filler, out, error);
    out.status = prefs.pastEndCounts != 0 ? fetchNoMatch : fetchFound;
    return error;
}

errorWord LinkMerge::fetchMarker(std::string_view name, std::int32_t record, markerValueRec& out) {
    tagDataRec tag{};
    pstrFromView(tag.extractionRecordName, sizeof(tag.extractionRecordName), name);
    tagValueRec its;
    its.recordNumber = record;
    const errorWord error = fetchAt(tag, its);
    takeMarkerValue(its, out);
    return error;
}

errorWord LinkMerge::prepareValue(errorWord priorError) {
    newText.clear();
    if (priorError != 0) return priorError;
    const extractionRec* const link = value.extraction;
    std::string_view bytes(value.bytes.get(), value.length);
    if (appPrefs().trimValues != 0) bytes = trimBlanks(bytes);
    if (value.bytes && bytes.empty() && value.status == fetchFound) value.status = fetchNoData;
    errorWord error = 0;
    if (link != nullptr && keywordOf(*link)) {
        error = keywordValue(*link, value, placeOfLink(), error);
        bytes = {value.bytes.get(), value.length};
    }
    if (error != 0 || !value.bytes) return error;
    const bool styled = tagRec.styleRecordName[0] != 0 && appPrefs().affixWithStyle == 0;
    const bool affixes = link != nullptr && value.status == fetchFound && !styled;
    if (affixes && link->prefix.enable != 0) appendUtf8AsUtf32(newText, pstrView(link->prefix.string));
    appendValueText(newText, bytes, value);
    if (affixes && link->suffix.enable != 0) appendUtf8AsUtf32(newText, pstrView(link->suffix.string));
    expandedMarkersRec markers;
    const auto fetch = [this](std::string_view name, std::int32_t record, markerValueRec& out) {
        return fetchMarker(name, record, out);
    };
    return expandFieldMarkers(newText, recordPosition, static_cast<std::int32_t>(session().skipFirst), fetch, markers,
                              0);
}

void LinkMerge::decideAction(std::uint16_t& cancelWord) {
    hasValue = static_cast<bool>(value.bytes);
    const extractionRec* const link = value.extraction;
    lockedLink = tagRec.linkLocked != 0 || (link != nullptr && (link->locked != 0 || link->ignoreLink != 0));
    auto& run = session();
    switch (value.status) {
        case fetchNoMatch:
            ++run.fillerCount;
            break;
        case fetchNoData:
            if (link->nodata == nodataGlobal) ++run.noDataCount;
            if (link->nodata == nodataDelete) deleteMode = true;
            hasValue = link->nodata == nodataGlobal || link->nodata == nodataCustom;  // also for an empty text
            break;
        case fetchBadTag:
            refuseTag(cancelWord);
            break;
        case fetchAbort:
            cancelWord |= 1;
            break;
        default:
            break;
    }
}

/// A tag that names what doesn't exist ends a merge: half-filled pages must never reach a press. A price run goes on
/// and tells it at its end.
void LinkMerge::refuseTag(std::uint16_t& cancelWord) {
    auto& run = session();
    if (isPriceRun()) {
        run.ruleRefusedLink = 1;
        ++run.badTagCount;
        return;
    }
    reportErrorParams(nullptr, errTagRefused, tagRec.extractionRecordName);
    run.runResult = runRefusedTag;
    ++run.badTagCount;
    cancelWord |= 1;
}

}  // namespace tarnova
