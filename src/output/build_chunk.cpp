#include "output/build_chunk.h"

#include <algorithm>

#include "document/document.h"
#include "engine/session/session.h"
#include "merge/tag_trimmer.h"
#include "output/build_document.h"
#include "output/build_tables.h"
#include "output/master_items.h"
#include "output/working_copy.h"

namespace tarnova {
namespace {

std::int32_t slotsOfChunk(UIDRef document, std::int32_t wantedSlots, bool multiSlot) {
    if (!multiSlot || documentHasPageRules(document)) return 1;
    const appPrefsRec& prefs = appPrefs();
    const auto limit = static_cast<std::int32_t>(prefs.chunkAutomatic != 0 ? chunkPagesAutomatic : prefs.chunkRecords);
    const std::int32_t pages = std::max(session().templatePageCount, 1);
    return std::max(std::min(wantedSlots, (limit + pages - 1) / pages), 1);
}

void placeInOutput(Document& document) {
    const auto& run = session();
    const std::int32_t behind = std::max(run.slotsOfOutput - run.slotsInFront - run.slotTarget, 0);
    document.setPlaceInOutput(run.slotsInFront * run.templatePageCount, behind * run.templatePageCount);
}

}  // namespace

UnrecordedChanges::UnrecordedChanges(UIDRef itsDocument)
    : document(itsDocument),
      begun(itsDocument.database->BeginCommandSequence("", false) == 0 ? 0 : errCommandSequence) {}

UnrecordedChanges::~UnrecordedChanges() {
    if (begun == 0) document.database->EndCommandSequence();
}

errorWord buildChunk(UIDRef document, std::int32_t wantedSlots, const chunkOptionsRec& options, errorWord priorError) {
    if (priorError != 0) return priorError;
    auto& run = session();
    const UnrecordedChanges unrecorded(document);
    errorWord error = unrecorded.error();
    if (options.sweepFirst && run.trimDone == 0 && run.templatePrepared == 0) {
        error = trimAllTags(document, options.showProgress, error);
        run.trimDone = 1;
    }
    error = prepareWorkingTemplate(document, options.detachMasters, error);
    error = resetBuildTables(document, error);
    run.slotTarget = slotsOfChunk(document, wantedSlots, options.multiSlot);
    error = buildDocument(
        document,
        {appPrefs().chunkAutomatic != 0, options.showProgress, options.replicateSections, true, options.detachMasters},
        error);
    if (error == 0) placeInOutput(*document.database);
    return error;
}

}  // namespace tarnova
