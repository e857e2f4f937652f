#include "data/record_selection.h"

#include <algorithm>
#include <utility>

#include "data/data_source.h"
#include "engine/session/session.h"

namespace tarnova {

namespace {

/// The records of the list lie in ascending order unless it was sorted, so those behind the file are its last.
errorWord fitList(sessionRec& run) {
    auto& list = run.recordList;
    const auto isBehind = [&](std::int32_t value) {
        return value >= 0 && std::cmp_greater_equal(value, run.totalRecords);
    };
    if (isBehind(list.front())) return errRangeBehindFile;
    while (isBehind(list.back()))
        list.pop_back();
    run.rangeLast = run.totalRecords = static_cast<std::uint32_t>(list.size());
    return 0;
}

}  // namespace

void useRecordRange(recordRangeRec range) {
    sessionRec& run = session();
    run.rangeFirst = range.first;
    run.rangeLast = range.last;
    run.recordList = std::move(range.list);
}

std::int32_t recordOfPosition(std::int32_t position, std::uint32_t skipFirst) {
    const auto& list = session().recordList;
    const std::int64_t place = std::int64_t{position} - skipFirst;
    if (place < 0 || std::cmp_greater_equal(place, list.size())) return position;
    const std::int32_t value = list[static_cast<std::size_t>(place)];
    return value == recordListPad ? recordListPad : value + static_cast<std::int32_t>(skipFirst);
}

errorWord rangeRecordCount(const dataSourceRec* source, std::uint32_t skipFirst, std::uint32_t& selectedCount,
                           std::uint32_t& fileCount, errorWord priorError) {
    std::uint32_t whole = 0;
    const errorWord err = dataSourceRecordCount(source, 1, whole, priorError);
    if (err != 0) return err;
    fileCount = whole > skipFirst ? whole - skipFirst : 0;
    const auto& list = session().recordList;
    selectedCount = list.empty() ? fileCount : static_cast<std::uint32_t>(list.size());
    return 0;
}

errorWord fitRangeToData(std::uint32_t fileCount, errorWord priorError) {
    if (priorError != 0) return priorError;
    sessionRec& run = session();
    run.totalRecords = fileCount;
    if (run.rangeFirst == 0 && run.rangeLast == 0) {
        run.rangeFirst = 1;
        run.rangeLast = fileCount;
    }
    if (!run.recordList.empty()) return fitList(run);
    if (run.rangeFirst > fileCount) return errRangeBehindFile;
    run.rangeLast = std::min(run.rangeLast, fileCount);
    return 0;
}

}  // namespace tarnova
