#include "output/build_document.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include "document/document.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/strings.h"
#include "merge/group_pictures.h"
#include "output/build_tables.h"
#include "output/master_items.h"
#include "output/threads.h"

namespace tarnova {
namespace {

/// Ends an expansion that has become slow: a running mean of the rounds against the mean of the first five.
class SlowdownWatch {
 public:
    /// Notes one round; true on the tenth strike.
    bool noteRound(double ticks, std::int32_t slotCount) {
        if (slotCount <= baselineSlots) {
            baseline = baseline == 0 ? ticks : (baseline + ticks) / 2;
            return false;
        }
        recent = recent == 0 ? ticks : (recent + ticks) / 2;
        if (recent > slowdownFactor * baseline) ++strikes;
        return strikes >= strikeLimit;
    }

 private:
    static constexpr std::int32_t baselineSlots = 5;
    static constexpr double slowdownFactor = 1.2;
    static constexpr int strikeLimit = 10;
    double baseline = 0;
    double recent = 0;
    int strikes = 0;
};

/// Ticks of 1/60 second.
double ticksNow() {
    const std::chrono::duration<double, std::milli> now = std::chrono::steady_clock::now().time_since_epoch();
    return now.count() / 16.6667;
}

/// The sections that start on the template's pages: asked for once, since each copy adds its own.
std::vector<sectionRec> templateSections(const Document& document) {
    std::vector<sectionRec> sections = document.sections();
    std::erase_if(sections, [&](const sectionRec& section) {
        return document.pageIndex(section.startPage) >= session().templatePageCount;
    });
    return sections;
}

/// Starts the sections of a spread of the template on its copy, the last spread. The first spread's don't go on
/// counting from the record before.
errorWord copySections(Document& document, UID source, const std::vector<sectionRec>& sections) {
    if (sections.empty()) return 0;
    const std::vector<UID> from = document.pagesOfSpread(source);
    const std::vector<UID> to = document.pagesOfSpread(document.spreadAt(document.spreadCount() - 1));
    errorWord error = 0;
    for (sectionRec section : sections) {
        const auto page = std::find(from.begin(), from.end(), section.startPage);
        if (error != 0 || page == from.end()) continue;
        section.startPage = to[static_cast<std::size_t>(page - from.begin())];
        if (source == document.spreadAt(0)) section.continues = false;
        error = document.createSection(section);
    }
    return error;
}

/// Makes the next page of the expansion exist: it may be there already, as one of the template's or as a further page
/// of a spread that was just copied; else the spread with the template's page is copied behind the last spread.
errorWord addPage(Document& document, const std::vector<sectionRec>& sections) {
    auto& run = session();
    if (document.pageCount() == run.nextPageIndex) {
        const UID source = document.spreadOfPage(document.pageAt(run.nextPageIndex % run.templatePageCount));
        errorWord error = document.duplicateSpread(source);
        if (error == 0) error = copySections(document, source, sections);
        if (error != 0) return error;
    }
    ++run.nextPageIndex;
    return 0;
}

errorWord addSlot(Document& document, const std::vector<sectionRec>& sections, errorWord priorError) {
    errorWord error = priorError;
    for (std::int32_t page = 0; page < session().templatePageCount && error == 0; ++page) {
        error = addPage(document, sections);
        error = appendPageEntry(page, error);
    }
    return appendSlot(error);
}

/// What is done to the template's own pages before they are copied.
errorWord prepareTemplate(UIDRef document, const buildOptionsRec& options, std::int32_t& outThreadCount) {
    const bool hasCopies = session().slotTarget > 1;
    if (hasCopies) gatherMasters(document);
    errorWord error = 0;
    if (options.clearGroupPictures) error = removeGroupPictures(document, options.showProgress, nullptr, 0);
    if ((hasCopies || options.detachMasters) && runDetachesMasters()) error = detachMasterItems(document, error);
    if (hasCopies) error = markThreads(document, outThreadCount, error);
    return error;
}

/// The slot loop, with its progress.
errorWord addSlots(Document& document, bool adaptive, bool showProgress, const std::vector<sectionRec>& sections,
                   errorWord priorError) {
    auto& run = session();
    const bool showsBar = showProgress && run.slotTarget != 1;
    const PMString text = showsBar ? PMString(stringOfKey("kZavoBuildingDocumentMessageStringKey")) : PMString();
    errorWord error = statusDialog(text, 0, showsBar, false, priorError);
    SlowdownWatch watch;
    int shownPercent = 0;
    while (error == 0 && run.slotCount < run.slotTarget) {
        const double start = adaptive ? ticksNow() : 0;
        error = addSlot(document, sections, error);
        if (adaptive && error == 0 && watch.noteRound(ticksNow() - start, run.slotCount))
            run.slotTarget = run.slotCount;
        const int percent = static_cast<int>(std::int64_t{run.slotCount} * 100 / std::max(run.slotTarget, 1));
        if (percent < shownPercent + 10) continue;
        shownPercent = percent;
        error = statusDialog(text, percent, showsBar, false, error);
    }
    return statusDialog(text, -1, showsBar, false, error);
}

}  // namespace

void computeSlots() {
    auto& run = session();
    const std::uint32_t first = run.rangeFirst;
    std::uint32_t last = run.rangeLast;
    const bool cutsStacks = run.recordPassMode == passModeCutAndStack || run.recordPassMode == passModeStackSubset;
    if (run.engineRunType == engineRunLineTest) run.stepBy = 1;
    const bool stacksWholeFile = run.recordPassMode == passModeCutAndStack || run.recordPassMode == passModeStackRange;
    run.stackFirst = stacksWholeFile ? 0 : first - 1;
    run.stackLast = run.recordPassMode == passModeStackSubset ? last : run.totalRecords;
    if (cutsStacks) last = first - 1 + (run.stepBy + (last - first)) / run.stepBy;
    run.recordBase = first - 1;
    run.recordsToDo = last - first + 1;
    run.recordsDone = 0;
    if (run.recordPassMode == passModeStep) {
        run.slotTarget = static_cast<std::int32_t>((run.recordsToDo + run.stepBy - 1) / run.stepBy);
    } else if (run.recordPassMode != passModeNoStepping) {
        run.slotTarget = static_cast<std::int32_t>(run.recordsToDo);
    }
}

void fitSlotsToRunType(std::uint32_t runType) {
    auto& run = session();
    const std::uint32_t recordsOfSlot = run.recordPassMode == passModeStep ? run.stepBy : 1;
    const auto take = [&run](std::int32_t slots, std::uint32_t records) {
        run.slotTarget = slots;
        run.recordsToDo = records;
    };
    switch (runType) {
        case mergeRunDriver:
        case mergeRunBuildDocument:
            if (run.recordPassMode == passModeNoStepping) run.slotTarget = static_cast<std::int32_t>(run.recordsToDo);
            return;
        case mergeRunDriverBySlot:
            run.slotTarget = 1;
            return;
        case mergeRunCurrentDocument:
            return take(1, recordsOfSlot);
        case mergeRunPreview:
        case mergeRunTest:
            return take(1, 0);
        case mergeRunShortestLine:
        case mergeRunLongestLine:
            return take(1, 1);
        case mergeRunPreflight: {
            const bool hasPictures = run.frameLinkCount > 0 || run.pictureLinkCount > 0 || run.hasGroupPictureLink != 0;
            return take(1, hasPictures ? run.recordsToDo : 0);
        }
        default:
            return take(0, 0);
    }
}

void composeTemplate(UIDRef document) {
    document.database->composeDocument();
    document.database->markTemplate();
}

errorWord buildDocument(UIDRef document, const buildOptionsRec& options, errorWord priorError) {
    if (priorError != 0) return priorError;
    std::int32_t threadCount = 0;
    errorWord error = prepareTemplate(document, options, threadCount);
    const bool copiesSections = options.replicateSections && appPrefs().replicateSections != 0;
    const std::vector<sectionRec> sections =
        copiesSections ? templateSections(*document.database) : std::vector<sectionRec>();
    error = addSlots(*document.database, options.adaptive, options.showProgress, sections, error);
    return threadCount > 0 ? rebuildThreads(document, error) : error;
}

errorWord pruneUnusedPages(UIDRef document, errorWord priorError) {
    if (priorError != 0) return priorError;
    std::vector<UID> pages;
    for (std::int32_t i = 0; const pageMapRec* page = pageMapAt(i); ++i) {
        const recordSlotRec* const slot = recordSlotAt(page->slot);
        if (slot == nullptr || slot->hasData != 0 || slot->slotIndex == 0) continue;
        if (slot->hasMergeError != 0 || page->pageFlags != 0) continue;
        pages.push_back(document.database->pageAt(i));
    }
    return pages.empty() ? 0 : document.database->removePages(pages);
}

}  // namespace tarnova
