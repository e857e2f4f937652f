#include "data/recent_ranges.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "engine/session/preferences.h"
#include "engine/toolkit/strings.h"
#include "output/build_document.h"

namespace tarnova {

namespace {

constexpr std::uint32_t modeLabelSort = 6;  // step with label sort, as people choose it

bool isSameRange(const recentRangeRec& a, const recentRangeRec& b) {
    return a.from == b.from && a.to == b.to && a.step == b.step && a.skipFirst == b.skipFirst && a.mode == b.mode;
}

const char* keyOfMode(std::uint32_t mode) {
    switch (mode) {
        case 0:
        case passModeStep:
            return "kZavoRecordRangeStepBy";
        case passModeCutAndStack:
            return "kZavoRecordRangeCutAndStack";
        case passModeStackRange:
            return "kZavoRecordRangeStackRange";
        case passModeStackSubset:
            return "kZavoRecordRangeStackSubset";
        case modeLabelSort:
            return "kZavoRecordRangeLabelSort";
        default:
            return nullptr;
    }
}

PMString filled(const char* key, std::uint32_t first, std::uint32_t second) {
    PMString text = PMString::ofKey(key);
    const PMString a(std::to_string(first)), b(std::to_string(second));
    pmSubstitute(text, &a, &b);
    return text;
}

}  // namespace

void rememberRange(const recentRangeRec& range) {
    auto& ranges = appPrefs().recentRanges;
    const auto known = std::find_if(std::begin(ranges), std::end(ranges), [&](const recentRangeRec& other) {
        return other.used != 0 && isSameRange(other, range);
    });
    if (known == std::begin(ranges)) return;
    const auto last = known != std::end(ranges) ? known : std::end(ranges) - 1;
    std::move_backward(std::begin(ranges), last, last + 1);
    ranges[0] = range;
    ranges[0].used = 1;
}

void rememberRangeText(std::string_view text, const recentRangeRec& settings) {
    appPrefsRec& prefs = appPrefs();
    constexpr std::size_t capacity = sizeof prefs.rangeTextLong;
    if (text.size() >= capacity) {
        text = text.substr(0, capacity);
        text = text.substr(0, text.rfind(','));
    }
    std::memset(prefs.rangeTextLong, 0, capacity);
    text.copy(prefs.rangeTextLong, capacity - 1);
    prefs.rangeLongStep = settings.step;
    prefs.rangeLongSkip = settings.skipFirst;
    prefs.rangeLongPass = settings.mode;
}

PMString rangeSummary(const recentRangeRec& range) {
    const bool isAll = range.from == 0 && range.to == 0;
    PMString text =
        isAll ? PMString::ofKey("kZavoRecordRangeAllRecords") : filled("kZavoRecordRangeFromTo", range.from, range.to);
    if (const char* const key = keyOfMode(range.mode)) text.append(filled(key, range.step, 0));
    const bool skips = range.skipFirst != 0;
    return text.append(stringOfKey(skips ? "kZavoRecordRangeSkipFirstRecord" : "kZavoRecordRangeIncludeFirstRecord"));
}

}  // namespace tarnova
