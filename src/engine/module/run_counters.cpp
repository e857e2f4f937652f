#include "engine/module/run_counters.h"

#include "engine/session/session.h"

namespace tarnova {

runCountersRec runCounters() {
    const auto& run = session();
    return {run.fillerCount, run.noDataCount, run.badTagCount, run.pageTotal, run.pageTotalOfFile, run.paddingUsed};
}

void addRunCounters(const runCountersRec& begin, const runCountersRec& end) {
    auto& run = session();
    run.fillerCount += end.fillerCount - begin.fillerCount;
    run.noDataCount += end.noDataCount - begin.noDataCount;
    run.badTagCount += end.badTagCount - begin.badTagCount;
    run.pageTotal += end.pageTotal - begin.pageTotal;
    run.pageTotalOfFile += end.pageTotalOfFile - begin.pageTotalOfFile;
    if (end.paddingUsed != 0) run.paddingUsed |= 1;
}

}  // namespace tarnova
