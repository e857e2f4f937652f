#include "merge/link_report.h"

#include <fmt/format.h>

#include "data/data_source.h"
#include "engine/toolkit/pstring.h"

namespace tarnova {
namespace {

std::uint32_t& countOf(const linkReportRec& link, linkCountsRec& counts) {
    switch (link.status) {
        case fetchNoMatch:
            return counts.withoutRecord;
        case fetchBadTag:
            return counts.refused;
        default:
            if (link.state == LinkState::unchanged) return counts.unchanged;
            return link.status == fetchNoData ? counts.emptied : counts.changed;
    }
}

}  // namespace

linkReportStateRec& linkReport() {
    static linkReportStateRec state;
    return state;
}

void startLinkReport() {
    linkReport().isOn = true;
    linkReport().counts = {};
}

void endLinkReport() {
    linkReport().isOn = false;
}

void reportLink(const linkReportRec& link) {
    linkReportStateRec& report = linkReport();
    ++report.counts.links;
    ++countOf(link, report.counts);
    if (link.status < report.counts.lowestStatus) {
        report.counts.lowestStatus = link.status;
        report.counts.lowestText =
            fmt::format("{} ({})", pstrView(link.tag.extractionRecordName), pstrView(link.tag.searchKey));
    }
    if (report.listener) report.listener(link);
}

}  // namespace tarnova
