// Commands that set the options of runs: which records, how they go to pages, which links. A setter keeps the fields in
// front of one that it refuses, and saves when it took them all.

#include <cstring>

#include "data/record_range.h"
#include "data/record_selection.h"
#include "document/item_data.h"
#include "engine/module/command_rows.h"
#include "engine/module/preference_access.h"
#include "engine/session/session.h"
#include "output/build_document.h"

namespace tarnova {

namespace {

constexpr std::int32_t copyfitOff = -1;
constexpr std::int32_t copyfitUnchanged = -2;
constexpr std::int32_t copyfitHighest = 10;
constexpr std::int32_t linkKindsHighest = 2;

// Ranges.

void keepRange(std::uint32_t first, std::uint32_t last) {
    appPrefsRec& prefs = appPrefs();
    session().rangeFirst = prefs.rangeFrom = first;
    session().rangeLast = prefs.rangeTo = last;
    prefs.rangeAll = 0;
}

void takeHeaderFlag(const commandCall& call, unsigned item) {
    if (!call.given(item)) return;
    appPrefs().hasHeaderRecord = flagOf(*call.item<std::uint8_t>(item));
    session().skipFirst = appPrefs().hasHeaderRecord;
}

std::int32_t takeRange(const commandCall& call) {
    const auto first = call.valueOr<std::int32_t>(0, static_cast<std::int32_t>(session().rangeFirst));
    const auto last = call.valueOr<std::int32_t>(1, static_cast<std::int32_t>(session().rangeLast));
    if (first < 0 || last < 0 || first > last) return commandRange;
    if (call.given(0) || call.given(1)) session().recordList.clear();
    keepRange(static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(last));
    takeHeaderFlag(call, 2);
    return commandDone;
}

std::int32_t setRecordRange(commandCall& call) {
    return runIsActive() ? commandRunState : saved(takeRange(call));
}

/// A step of 0 keeps the one that is set.
std::int32_t takeStep(const commandCall& call, unsigned item) {
    const auto step = call.valueOr<std::int32_t>(item, 0);
    if (step < 0) return commandRange;
    if (step > 0) session().stepBy = appPrefs().rangeStep = static_cast<std::uint32_t>(step);
    return commandDone;
}

std::int32_t takeLayout(const commandCall& call, unsigned item) {
    constexpr std::uint32_t passModes[] = {passModeStep, passModeCutAndStack, passModeStackSubset, passModeStackRange,
                                           passModeStep};
    constexpr std::uint32_t layoutLabelSort = 4;
    if (!call.given(item)) return commandDone;
    const std::uint32_t code = call.valueOr<std::uint32_t>(item, 0);
    if (code >= std::size(passModes)) return commandLayoutCode;
    session().recordPassMode = appPrefs().recordPassMode = passModes[code];
    appPrefs().labelSort.labelSortOn = code == layoutLabelSort ? 1 : 0;
    return commandDone;
}

std::int32_t takeRangeText(std::string_view text) {
    recordRangeRec range;
    if (!text.empty() && parseRangeText(text, range) != rangeFault::none) return commandRange;
    keepRange(range.first, range.last);
    useRecordRange(std::move(range));
    return commandDone;
}

std::int32_t setRecordRangeText(commandCall& call) {
    if (runIsActive()) return commandRunState;
    std::int32_t status = call.given(0) ? takeRangeText(call.string(0)) : commandDone;
    if (status != commandDone) return status;
    takeHeaderFlag(call, 1);
    status = takeStep(call, 2);
    return saved(status == commandDone ? takeLayout(call, 3) : status);
}

std::int32_t takePageRange(const commandCall& call) {
    const auto first = call.valueOr<std::int32_t>(0, session().walkFirstPage);
    const auto last = call.valueOr<std::int32_t>(1, session().walkLastPage);
    if (first < 0 || last < 0 || first > last) return commandRange;
    session().walkFirstPage = first;
    session().walkLastPage = last;
    return commandDone;
}

std::int32_t setPriceRange(commandCall& call) {
    return session().priceActive != 0 ? commandRunState : takePageRange(call);
}

// Options of a run.

/// Both are looked at before either is set.
std::int32_t takeKindsAndCopyfit(const commandCall& call, unsigned kindsItem, unsigned copyfitItem) {
    appPrefsRec& prefs = appPrefs();
    const auto kinds = call.valueOr<std::int32_t>(kindsItem, prefs.linkKinds);
    const auto copyfit = call.valueOr<std::int32_t>(copyfitItem, copyfitUnchanged);
    if (kinds < 0 || kinds > linkKindsHighest) return commandLinkKinds;
    if (copyfit < copyfitUnchanged || copyfit > copyfitHighest) return commandCopyfit;
    prefs.linkKinds = static_cast<std::uint16_t>(kinds);
    if (copyfit == copyfitUnchanged) return commandDone;
    prefs.copyfitEnabled = copyfit == copyfitOff ? 0 : 1;
    if (copyfit != copyfitOff)
        prefs.copyfitLevel = copyfit == 0 ? copyfitLevelNone : static_cast<std::uint8_t>(copyfit);
    return commandDone;
}

constexpr preferenceByte runBytes[] = {{7, &appPrefsRec::replicateSections},
                                       {8, &appPrefsRec::runOption8780},
                                       {9, &appPrefsRec::walkDeferredStories},
                                       {10, &appPrefsRec::runOption19066},
                                       {11, &appPrefsRec::groupPicturesUseMasters}};

std::int32_t setRunOptions(commandCall& call) {
    if (runIsActive()) return commandRunState;
    std::int32_t status = takeKindsAndCopyfit(call, 6, 5);
    if (status == commandDone) status = takeRange(call);
    if (status == commandDone) status = takeStep(call, 3);
    if (status == commandDone) status = takeLayout(call, 4);
    if (status != commandDone) return status;
    takeBytes(call, runBytes);
    if (call.valueOr<std::int32_t>(5, copyfitOff) == 0) call.put<std::int32_t>(5, copyfitLevelNone);
    return saved(commandDone);
}

constexpr preferenceByte priceRunBytes[] = {{4, &appPrefsRec::walkDeferredStories},
                                            {5, &appPrefsRec::groupPicturesUseMasters}};

std::int32_t setPriceRunOptions(commandCall& call) {
    if (session().priceActive != 0) return commandRunState;
    std::int32_t status = takeKindsAndCopyfit(call, 3, 2);
    if (status == commandDone) status = takePageRange(call);
    if (status != commandDone) return status;
    takeBytes(call, priceRunBytes);
    return saved(commandDone);
}

// Label sort and duplication, as far as nobody is asked.

labelSortRec labelSortOf(const UIDRef& document) {
    labelSortRec sort = appPrefs().labelSort;
    if (document.database == nullptr) return sort;
    const auto stored = itemDataView(document, ItemDataPlace::document, itemDataLabelSort, modeMerge);
    if (stored && stored->size() == sizeof sort) std::memcpy(&sort, stored->data(), sizeof sort);
    return sort;
}

std::int32_t setLabelSort(commandCall& call) {
    if (call.valueOr<std::uint8_t>(1, 0) != 0) return commandFailed;  // there is no dialog to ask with
    const auto document = call.valueOr<UIDRef>(0, {});
    labelSortRec sort = labelSortOf(document);
    sort.columns = std::max<std::uint32_t>(call.valueOr(2, sort.columns), 1);
    sort.rows = std::max<std::uint32_t>(call.valueOr(3, sort.rows), 1);
    sort.order = call.valueOr(4, sort.order);
    sort.blanksOnLastSheet = call.valueOr(5, sort.blanksOnLastSheet);
    sort.reverseOrder = call.valueOr(6, sort.reverseOrder);
    if (document.database != nullptr &&
        itemDataSet(document, ItemDataPlace::document, itemDataLabelSort, &sort, sizeof sort, modeMerge) == 0)
        return commandFailed;
    appPrefs().labelSort = sort;
    call.put(8, sort.columns);
    call.put(9, sort.rows);
    call.put(10, sort.order);
    call.put(11, sort.blanksOnLastSheet);
    call.put(12, sort.reverseOrder);
    return saved(commandDone);
}

constexpr std::uint32_t duplicationNone = 0, duplicationFixed = 1, duplicationField = 2;

void takeDuplication(std::uint32_t copies, std::string_view fieldName) {
    appPrefsRec& prefs = appPrefs();
    const std::size_t length = fieldName.copy(prefs.duplicationFieldName, sizeof prefs.duplicationFieldName - 1);
    prefs.duplicationFieldName[length] = 0;
    prefs.duplicationCopies = fieldName.empty() ? copies : 0;
    prefs.duplicationKind = !fieldName.empty() ? duplicationField : copies != 0 ? duplicationFixed : duplicationNone;
    prefs.recordDuplicationOn = prefs.duplicationKind == duplicationNone ? 0 : 1;
}

std::int32_t setRecordDuplication(commandCall& call) {
    if (call.valueOr<std::uint8_t>(0, 0) != 0) return commandFailed;  // there is no dialog to ask with
    const appPrefsRec& prefs = appPrefs();
    if (call.given(1) || call.given(2)) takeDuplication(call.valueOr<std::uint32_t>(1, 0), call.string(2));
    call.put(4, prefs.duplicationCopies);
    call.putString(5, prefs.duplicationFieldName);
    return saved(commandDone);
}

using enum commandStage;
constexpr auto merge = commandMode::merge;
constexpr auto price = commandMode::price;
using enum argumentType;

constexpr commandArgument rangeArgs[] = {
    itemIn(0, i32, "first record, from 1"),
    itemIn(1, i32, "last record; both 0 for all"),
    itemIn(2, u8, "the first record of the data is a header"),
};
constexpr commandArgument rangeTextArgs[] = {
    itemIn(0, string, "a range such as 1-5,8; empty for all records"),
    itemIn(1, u8, "the first record of the data is a header"),
    itemIn(2, i32, "records on a page; 0 keeps the number"),
    itemIn(3, u32, "layout: 0 step, 1 cut and stack, 2 stack subset, 3 stack range, 4 label sort"),
};
constexpr commandArgument runOptionArgs[] = {
    itemIn(0, i32, "first record, from 1"),
    itemIn(1, i32, "last record; both 0 for all"),
    itemIn(2, u8, "the first record of the data is a header"),
    itemIn(3, i32, "records on a page; 0 keeps the number"),
    itemIn(4, u32, "layout: 0 step, 1 cut and stack, 2 stack subset, 3 stack range, 4 label sort"),
    itemInOut(5, i32, "copy-fit: -1 off, -2 unchanged, 1 to 10 its level, 0 the module's own, which comes back as 12"),
    itemIn(6, i32, "links: 0 both kinds, 1 text, 2 frames"),
    itemIn(7, u8, "sections are replicated"),
    itemIn(8, u8, "preference at 8,780"),
    itemIn(9, u8, "stories that a pass brings in are walked"),
    itemIn(10, u8, "preference at 19,066"),
    itemIn(11, u8, "group pictures may be masters"),
};
constexpr commandArgument priceOptionArgs[] = {
    itemIn(0, i32, "first page, from 1"),
    itemIn(1, i32, "last page; both 0 for all"),
    itemIn(2, i32, "copy-fit: -1 off, -2 unchanged, 1 to 10 its level, 0 the module's own"),
    itemIn(3, i32, "links: 0 both kinds, 1 text, 2 frames"),
    itemIn(4, u8, "stories that a pass brings in are walked"),
    itemIn(5, u8, "group pictures may be masters"),
};
constexpr commandArgument pageRangeArgs[] = {
    itemIn(0, i32, "first page, from 1"),
    itemIn(1, i32, "last page; both 0 for all"),
};
constexpr commandArgument labelSortArgs[] = {
    itemIn(0, uidRef, "the document that keeps it"),
    itemIn(1, u8, "1 asks with a dialog (not available yet)"),
    itemIn(2, u32, "labels across a sheet"),
    itemIn(3, u32, "labels down a sheet"),
    itemIn(4, u32, "0 down a column first, else along a row"),
    itemIn(5, u16, "1: blank labels stand on the last sheet"),
    itemIn(6, u16, "1: from the last sheet to the first"),
    itemOut(7, u8, "1 when the dialog was cancelled"),
    itemOut(8, u32, "labels across, as set now"),
    itemOut(9, u32, "labels down"),
    itemOut(10, u32, "order"),
    itemOut(11, u16, "blank labels"),
    itemOut(12, u16, "reverse order"),
};
constexpr commandArgument duplicationArgs[] = {
    itemIn(0, u8, "1 asks with a dialog (not available yet)"),
    itemIn(1, u32, "copies of each record"),
    itemIn(2, string, "link that gives the number of copies; wins over the number"),
    itemOut(3, u8, "1 when the dialog was cancelled"),
    itemOut(4, u32, "the number, as set now"),
    itemOut(5, string, "the link, as set now"),
};

constexpr commandRow rows[] = {
    {506, "kKelvaneCmdSetRecordRange", merge, second, setRecordRange, rangeArgs, "Sets the record range."},
    {610, "kKelvaneCmdSetRecordRangeText", merge, second, setRecordRangeText, rangeTextArgs,
     "Sets the record range as people write it."},
    {1205, "kKelvaneCmdSetRunOptions", merge, second, setRunOptions, runOptionArgs, "Sets the options of a merge run."},
    {561, "kKelvaneCmdSetPriceRunOptions", price, second, setPriceRunOptions, priceOptionArgs,
     "Sets the options of a price run."},
    {560, "kKelvaneCmdSetPriceRange", price, second, setPriceRange, pageRangeArgs, "Sets the pages of a price run."},
    {611, "kKelvaneCmdSetLabelSort", merge, second, setLabelSort, labelSortArgs, "Sets and gives the label sort."},
    {613, "kKelvaneCmdSetRecordDuplication", merge, second, setRecordDuplication, duplicationArgs,
     "Sets and gives how often each record is repeated."},
};

}  // namespace

std::span<const commandRow> optionRows() {
    return rows;
}

}  // namespace tarnova
