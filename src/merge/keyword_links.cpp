#include "merge/keyword_links.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "data/record_selection.h"
#include "document/document.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/clock.h"
#include "engine/toolkit/strings.h"
#include "output/build_tables.h"

namespace tarnova {
namespace {

struct keywordRow {
    Keyword keyword;
    const char* keywordKey;
    const char* functionKey;
    bool isFrozen;      // during a run
    bool needsNoField;  // also when the link has no function but this name
};

constexpr keywordRow keywordRows[] = {
    {Keyword::timeStart, "kZavoKeywordLinksTimeStartKeywordStringKey", "kZavoTextLinkFunctionTimeStartKey", true, true},
    {Keyword::time, "kZavoKeywordLinksTimeKeywordStringKey", "kZavoTextLinkFunctionTimeKey", false, true},
    {Keyword::dateLong, "kZavoKeywordLinksDateLongKeywordStringKey", "kZavoTextLinkFunctionDateLongKey", true, true},
    {Keyword::date, "kZavoKeywordLinksDateKeywordStringKey", "kZavoTextLinkFunctionDateKey", true, true},
    {Keyword::documentName, "kZavoKeywordLinksCurDocNameKeywordStringKey", "kZavoTextLinkFunctionDocNameKey", true,
     true},
    {Keyword::pageName, "kZavoKeywordLinksPageNameKeywordStringKey", "kZavoTextLinkFunctionPageNameKey", false, true},
    {Keyword::pageNumber, "kZavoKeywordLinksPageNumKeywordStringKey", "kZavoTextLinkFunctionPageNumberKey", false,
     true},
    {Keyword::recordNumber, "kZavoKeywordLinksRecordNumKeywordStringKey", "kZavoTextLinkFunctionRecordNumKey", false,
     true},
    {Keyword::consecutiveNumber, "kZavoKeywordLinksConsecutiveNumberKeywordStringKey",
     "kZavoTextLinkFunctionConsecutiveNumKey", false, true},
    {Keyword::pageSetPageNumber, "kZavoKeywordLinksPageSetPageNumberKeywordStringKey",
     "kZavoTextLinkFunctionPageSetPageNumKey", false, true},
    {Keyword::pageSetPageCount, "kZavoKeywordLinksPageSetPageCountKeywordStringKey",
     "kZavoTextLinkFunctionPageSetPageCountKey", false, true},
    {Keyword::jobCount, "kZavoKeywordLinksJobCountKeywordStringKey", "kZavoTextLinkFunctionJobCountKey", false, true},
    {Keyword::jobsToProcess, "kZavoKeywordLinksJobsToProcessKeywordStringKey", "kZavoTextLinkFunctionJobsToProcessKey",
     false, false},
    {Keyword::day, "kZavoKeywordLinksDayKeywordStringKey", "kZavoTextLinkFunctionDayOfMonthKey", true, true},
    {Keyword::monthName, "kZavoKeywordLinksMonthNameKeywordStringKey", "kZavoTextLinkFunctionMonthNameKey", true, true},
    {Keyword::month, "kZavoKeywordLinksMonthKeywordStringKey", "kZavoTextLinkFunctionMonthOfYearKey", true, true},
    {Keyword::yearLong, "kZavoKeywordLinksYearLongKeywordStringKey", "kZavoTextLinkFunctionYearLongKey", true, false},
    {Keyword::year, "kZavoKeywordLinksYearKeywordStringKey", "kZavoTextLinkFunctionYearKey", true, false},
    {Keyword::read2DBarcodeData, "kZavoKeywordLinksRead2DBarcodeDataKeywordStringKey",
     "kZavoTextLinkFunctionRead2DBarcodeDataKey", false, false},
    {Keyword::sheetCounter, "kZavoKeywordLinksSheetCounterKeywordStringKey", "kZavoTextLinkFunctionSheetCounterKey",
     false, false},
    {Keyword::jobSheetCounter, "kZavoKeywordLinksJobSheetCounterKeywordStringKey",
     "kZavoTextLinkFunctionJobSheetCounterKey", false, false},
};
constexpr std::size_t keywordCount = std::size(keywordRows);

constexpr bool rowsFollowKeywords() {
    for (std::size_t i = 0; i < keywordCount; ++i) {
        if (keywordRows[i].keyword != static_cast<Keyword>(i)) return false;
    }
    return true;
}
static_assert(rowsFollowKeywords());

constexpr const char* monthKeys[] = {"kZavoMonthJanuary", "kZavoMonthFebruary", "kZavoMonthMarch",
                                     "kZavoMonthApril",   "kZavoMonthMay",      "kZavoMonthJune",
                                     "kZavoMonthJuly",    "kZavoMonthAugust",   "kZavoMonthSeptember",
                                     "kZavoMonthOctober", "kZavoMonthNovember", "kZavoMonthDecember"};

/// The texts of a run by keyword; a slot without a text gives the value of the moment.
std::array<std::optional<std::string>, keywordCount>& frozenTexts() {
    static std::array<std::optional<std::string>, keywordCount> texts;
    return texts;
}

dateTimeRec localTime() {
    std::uint32_t seconds = 0;
    clockSeconds(&seconds);
    dateTimeRec time{};
    secondsToDateTime(seconds, &time);
    return time;
}

std::string monthName(std::uint16_t month) {
    return month >= 1 && month <= std::size(monthKeys) ? std::string(stringOfKey(monthKeys[month - 1])) : std::string();
}

std::string timeText() {
    std::uint8_t text[16];
    timeOfDayText(text);
    return pstrString(text);
}

std::string twoDigits(std::uint16_t year) {
    const std::string digits = std::to_string(year);
    return digits.size() < 3 ? digits : digits.substr(digits.size() - 2);
}

/// The texts that a run freezes.
std::string momentaryText(Keyword keyword, UIDRef document) {
    const dateTimeRec now = localTime();
    switch (keyword) {
        case Keyword::timeStart:
        case Keyword::time:
            return timeText();
        case Keyword::dateLong:
            return fmt::format("{} {}, {}", monthName(now.month), now.day, now.year);
        case Keyword::date:
            return fmt::format("{}/{}/{}", now.month, now.day, now.year);
        case Keyword::documentName:
            return document.database != nullptr ? document.database->documentName() : std::string();
        case Keyword::day:
            return std::to_string(now.day);
        case Keyword::monthName:
            return monthName(now.month);
        case Keyword::month:
            return std::to_string(now.month);
        case Keyword::yearLong:
            return std::to_string(now.year);
        default:
            return twoDigits(now.year);
    }
}

/// The number that a user knows a record by, 1 for the first that counts; `recordListPad` for a place without a record.
std::int64_t userNumber(std::int32_t position) {
    const std::uint32_t skipFirst = session().skipFirst;
    const std::int32_t record = recordOfPosition(position, skipFirst);
    return record == recordListPad ? recordListPad : std::int64_t{record} - skipFirst + 1;
}

std::string padText() {
    return std::string(stringOfKey("kZavoDefaultStackPadString"));
}

std::string recordText(std::int32_t position) {
    const std::int64_t number = userNumber(position);
    return number == recordListPad ? padText() : std::to_string(number);
}

std::string runningNumber(std::int32_t position) {
    const auto& run = session();
    const std::int64_t number = userNumber(position);
    const auto firstPosition = static_cast<std::int32_t>(std::max(run.rangeFirst, 1U) - 1 + run.skipFirst);
    if (number == recordListPad) return padText();
    const numberingOptionsRec options = numberingOptions();
    return numberedText(options, numberingPad(), number - userNumber(firstPosition) + options.start);
}

std::string pageSetPlace(std::int32_t pageEntry) {
    if (session().pageEntryCount == 0) return std::to_string(pageEntry + 1);
    const pageMapRec* const page = pageMapAt(pageEntry);
    if (page == nullptr) return "PP";
    if (page->pageFlags != 0) return fmt::format("OMITTED({})", page->pageInSlot + 1);
    int number = 1;
    for (std::int32_t at = pageEntry - 1; at >= 0 && pageMapAt(at)->slot == page->slot; --at)
        number += pageMapAt(at)->pageFlags == 0 ? 1 : 0;
    return std::to_string(number);
}

std::string pageSetSize(const keywordPlaceRec& place) {
    if (session().pageEntryCount == 0) return std::to_string(place.document.database->pageCount());
    const pageMapRec* const page = pageMapAt(place.pageEntry);
    int count = 0;
    for (std::int32_t at = 0; page != nullptr && at < session().pageEntryCount; ++at) {
        const pageMapRec& other = *pageMapAt(at);
        count += other.slot == page->slot && other.pageFlags == 0 ? 1 : 0;
    }
    return std::to_string(count);
}

/// Sheets up to the page and with it.
std::string sheetCount(std::int64_t base, std::int32_t pageEntry) {
    const auto& weights = keywordState().sheetWeights;
    std::int64_t weight = 1;
    if (pageMapAt(pageEntry) == nullptr) return std::to_string(base);
    for (std::int32_t at = 0; at <= pageEntry; ++at) {
        const pageMapRec& page = *pageMapAt(at);
        const auto slot = static_cast<std::size_t>(page.slot);
        if (slot < weights.size()) weight = weights[slot];
        const recordSlotRec* const row = recordSlotAt(page.slot);
        if (page.pageFlags == 0 && (row == nullptr || row->hasMergeError == 0)) base += weight;
    }
    return std::to_string(base);
}

/// The text of a keyword at a place; nothing where it has no meaning.
std::optional<std::string> keywordText(Keyword keyword, const keywordPlaceRec& place) {
    if (keywordRows[static_cast<std::size_t>(keyword)].isFrozen) {
        const auto& frozen = frozenTexts()[static_cast<std::size_t>(keyword)];
        return frozen ? frozen : momentaryText(keyword, place.document);
    }
    switch (keyword) {
        case Keyword::pageName:
            return place.document.database->pageName(place.document.database->pageAt(place.pageEntry));
        case Keyword::pageNumber:
            return std::to_string(session().slotsInFront * session().templatePageCount + place.pageEntry + 1);
        case Keyword::recordNumber:
            return recordText(place.position);
        case Keyword::consecutiveNumber:
            return runningNumber(place.position);
        case Keyword::pageSetPageNumber:
            return pageSetPlace(place.pageEntry);
        case Keyword::pageSetPageCount:
            return pageSetSize(place);
        case Keyword::jobCount:
            return std::to_string(keywordState().jobCount);
        case Keyword::jobsToProcess:
            return std::to_string(keywordState().jobsToProcess);
        case Keyword::sheetCounter:
            return sheetCount(keywordState().sheetBase, place.pageEntry);
        case Keyword::jobSheetCounter:
            return sheetCount(keywordState().jobSheetBase, place.pageEntry);
        case Keyword::time:
            return timeText();
        default:
            return std::nullopt;  // the data of a frame's barcode, which no module reads
    }
}

std::string_view textThatCounts(const extractionRec& link) {
    return link.dataFunction[0] != 0 ? pstrView(link.dataFunction) : pstrView(link.name);
}

/// The text of the other key for a text that equals one.
std::string counterpart(std::string_view text, const char* keywordRow::*from, const char* keywordRow::*to) {
    const auto row = std::find_if(std::begin(keywordRows), std::end(keywordRows),
                                  [&](const keywordRow& candidate) { return stringOfKey(candidate.*from) == text; });
    return row == std::end(keywordRows) ? std::string() : std::string(stringOfKey(row->*to));
}

}  // namespace

keywordStateRec& keywordState() {
    static keywordStateRec state;
    return state;
}

numberingOptionsRec numberingOptions() {
    numberingOptionsRec options;
    std::memcpy(&options, appPrefs().numberingOptions, sizeof options);
    return options;
}

void setNumberingOptions(const numberingOptionsRec& options) {
    std::memcpy(appPrefs().numberingOptions, &options, sizeof options);
}

std::string numberingPad() {
    const std::string pad = pstrString(appPrefs().numberingPad);
    return pad.empty() ? "0" : pad;
}

std::string numberedText(const numberingOptionsRec& options, std::string_view pad, std::int64_t number) {
    const std::string digits = std::to_string(number);
    std::string text = pstrString(options.prefix);
    for (std::size_t i = digits.size(); std::cmp_less(i, options.width); ++i)
        text += pad;
    return text + digits + pstrString(options.suffix);
}

std::optional<Keyword> keywordOf(const extractionRec& link) {
    const std::string_view text = textThatCounts(link);
    if (!text.starts_with('_')) return std::nullopt;
    for (const keywordRow& row : keywordRows) {
        if (text.starts_with(stringOfKey(row.keywordKey))) return row.keyword;
    }
    return std::nullopt;
}

errorWord keywordValue(const extractionRec& link, tagValueRec& value, const keywordPlaceRec& place,
                       errorWord priorError) {
    if (priorError != 0) return priorError;
    const std::optional<Keyword> keyword = keywordOf(link);
    if (!keyword) return 0;
    const std::optional<std::string> text = keywordText(*keyword, place);
    if (!text) return 0;
    const errorWord error = takeHostBytes(*text, value, 0);
    if (error == 0 && value.status == fetchNoData) value.status = fetchFound;
    return error;
}

void keywordFreeze(UIDRef document) {
    for (const keywordRow& row : keywordRows) {
        if (row.isFrozen) frozenTexts()[static_cast<std::size_t>(row.keyword)] = momentaryText(row.keyword, document);
    }
}

void keywordThaw() {
    frozenTexts().fill(std::nullopt);
}

bool keywordIsKnown(const extractionRec& link) {
    if (link.type == linkTypeText && link.dataFunction[0] != 0) return true;
    return std::any_of(std::begin(keywordRows), std::end(keywordRows), [&](const keywordRow& row) {
        return row.needsNoField && pstrView(link.name) == stringOfKey(row.keywordKey);
    });
}

std::string keywordToFunctionName(std::string_view text) {
    return counterpart(text, &keywordRow::keywordKey, &keywordRow::functionKey);
}

std::string functionNameToKeyword(std::string_view name) {
    return counterpart(name, &keywordRow::functionKey, &keywordRow::keywordKey);
}

}  // namespace tarnova
