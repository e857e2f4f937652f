#include "data/record_range.h"

#include <algorithm>
#include <charconv>

#include "engine/toolkit/messages.h"

namespace tarnova {

namespace {

constexpr const char* faultKeys[] = {"",
                                     "kVxRecordRangeEmptyErrorMsgKey",
                                     "kVxRecordRangeInvalidCharactersErrorMsgKey",
                                     "kVxRecordRangeIncompleteSequenceErrorMsgKey",
                                     "kVxRecordRangeOrderErrorMsgKey",
                                     "kVxRecordRangeInvalidNumberErrorMsgKey",
                                     "kVxRecordRangeDuplicateRecordsErrorMsgKey",
                                     "kVxRecordRangeNoRecordNumbersErrorMsgKey",
                                     "kVxRecordRangeRecordZeroErrorMsgKey"};

constexpr std::string_view blanks = " \t\r\n";

std::string_view stripped(std::string_view text) {
    const std::size_t start = text.find_first_not_of(blanks);
    return start == std::string_view::npos ? std::string_view()
                                           : text.substr(start, text.find_last_not_of(blanks) - start + 1);
}

// The texts of long lists have millions of characters, so that these two look at each only once.

rangeFault checkCharacters(std::string_view text) {
    if (text.empty()) return rangeFault::empty;
    bool anyDigit = false;
    for (const char c : text) {
        const bool isDigit = c >= '0' && c <= '9';
        if (!isDigit && c != ',' && c != '-' && c != ' ') return rangeFault::characters;
        anyDigit |= isDigit;
    }
    return anyDigit ? rangeFault::none : rangeFault::noNumbers;
}

rangeFault readNumber(std::string_view text, std::int32_t& value) {
    text = stripped(text);
    const char* const limit = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data(), limit, value);
    return error == std::errc() && behind == limit ? rangeFault::none : rangeFault::number;
}

/// Appends the list values of `first` to `last`, which rise and don't meet what is there.
rangeFault append(std::vector<std::int32_t>& list, std::int32_t first, std::int32_t last) {
    if (last < first) return rangeFault::order;
    if (first == 0) return rangeFault::recordZero;
    if (!list.empty() && first - 1 < list.back()) return rangeFault::order;
    if (!list.empty() && first - 1 == list.back()) return rangeFault::duplicate;
    if (static_cast<std::size_t>(last - first) >= recordListLimit - std::min(list.size(), recordListLimit))
        return rangeFault::number;
    for (std::int32_t value = first - 1; value < last; ++value)
        list.push_back(value);
    return rangeFault::none;
}

rangeFault readItem(std::string_view item, std::vector<std::int32_t>& list) {
    const std::size_t hyphen = item.find('-');
    if (hyphen != std::string_view::npos && (hyphen == 0 || hyphen == item.size() - 1 || item.rfind('-') != hyphen))
        return rangeFault::sequence;
    std::int32_t first = 0, last = 0;
    rangeFault fault = readNumber(item.substr(0, hyphen), first);
    if (fault == rangeFault::none && hyphen != std::string_view::npos)
        fault = readNumber(item.substr(hyphen + 1), last);
    if (fault != rangeFault::none) return fault;
    return append(list, first, hyphen == std::string_view::npos ? first : last);
}

rangeFault readItems(std::string_view text, std::vector<std::int32_t>& list) {
    for (std::string_view rest = stripped(text); !rest.empty();) {
        const std::size_t comma = std::min(rest.find(','), rest.size());
        const std::string_view item = stripped(rest.substr(0, comma));
        rest.remove_prefix(std::min(comma + 1, rest.size()));
        if (item.empty()) continue;
        const rangeFault fault = readItem(item, list);
        if (fault != rangeFault::none) return fault;
    }
    return rangeFault::none;
}

}  // namespace

rangeFault readRangeText(std::string_view text, recordRangeRec& range, bool forceList) {
    std::vector<std::int32_t> list;
    rangeFault fault = checkCharacters(text);
    if (fault == rangeFault::none) fault = readItems(text, list);
    if (fault != rangeFault::none) return fault;
    if (forceList || text.find(',') != std::string_view::npos) {
        range = {1, static_cast<std::uint32_t>(list.size()), std::move(list)};
    } else {
        range = {static_cast<std::uint32_t>(list.front()) + 1, static_cast<std::uint32_t>(list.back()) + 1, {}};
    }
    return rangeFault::none;
}

rangeFault parseRangeText(std::string_view text, recordRangeRec& range, bool forceList) {
    const rangeFault fault = readRangeText(text, range, forceList);
    if (fault != rangeFault::none) reportErrorKey(rangeFaultKey(fault));
    return fault;
}

const char* rangeFaultKey(rangeFault fault) {
    return faultKeys[static_cast<unsigned>(fault)];
}

PMString rangeTextOf(const std::vector<std::int32_t>& list) {
    PMString text;
    for (std::size_t start = 0; start < list.size();) {
        std::size_t limit = start + 1;
        while (limit < list.size() && list[limit] == list[limit - 1] + 1)
            ++limit;
        if (!text.empty()) text.append(",");
        text.appendNumber(list[start]);
        if (limit - start > 1) text.append(limit - start > 2 ? "-" : ",").appendNumber(list[limit - 1]);
        start = limit;
    }
    return text;
}

}  // namespace tarnova
