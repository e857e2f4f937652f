#include "engine/session/preference_names.h"

#include <algorithm>
#include <charconv>

namespace tarnova {

namespace {

using enum preferenceType;

template <typename Field>
constexpr preferenceField fieldAt(std::string_view name, std::size_t offset, preferenceType type) {
    return {name, offset, type, sizeof(Field)};
}

#define TARNOVA_FIELD(name, type) fieldAt<decltype(appPrefsRec::name)>(#name, offsetof(appPrefsRec, name), type)

constexpr preferenceField fields[] = {
    TARNOVA_FIELD(prefsOwner, pascal),
    TARNOVA_FIELD(prefsVersion, u32),
    TARNOVA_FIELD(promptMissingAssets, u8),
    TARNOVA_FIELD(copyfitEnabled, u8),
    TARNOVA_FIELD(copyfitLevel, u8),
    TARNOVA_FIELD(missingDefinitionIsError, u8),
    TARNOVA_FIELD(alwaysUseDocumentDDF, u8),
    TARNOVA_FIELD(confirmEmptyKey, u8),
    TARNOVA_FIELD(dialogFlag3132, u8),
    TARNOVA_FIELD(trimTagText, u8),
    TARNOVA_FIELD(reportLevel, u16),
    TARNOVA_FIELD(linkKeyFieldsEnabled, u8),
    TARNOVA_FIELD(verifyDataFiles, u8),
    TARNOVA_FIELD(tagDisplayChecks, u8),
    TARNOVA_FIELD(affixWithStyle, u8),
    TARNOVA_FIELD(showProgress, u8),
    TARNOVA_FIELD(offerProcessChooser, u8),
    TARNOVA_FIELD(framesFirst, u8),
    TARNOVA_FIELD(indexKeepsDuplicates, u8),
    TARNOVA_FIELD(dialogFlag3147, u8),
    TARNOVA_FIELD(dialogPopup3148, u16),
    TARNOVA_FIELD(confirmDeletes, u8),
    TARNOVA_FIELD(noSummary, u8),
    TARNOVA_FIELD(reportAlways, u8),
    TARNOVA_FIELD(skipPasteboard, u8),
    TARNOVA_FIELD(priceTrailingText, u8),
    TARNOVA_FIELD(tagDisplayExtra, u8),
    TARNOVA_FIELD(saveSlugWithDocument, u8),
    TARNOVA_FIELD(confirmDataFile, u8),
    TARNOVA_FIELD(dialogFlag8618, u8),
    TARNOVA_FIELD(autoProofLinks, u8),
    TARNOVA_FIELD(assignOnSelection, u8),
    TARNOVA_FIELD(logMissing, u8),
    TARNOVA_FIELD(replicateSections, u8),
    TARNOVA_FIELD(commandFlag8627, u8),
    TARNOVA_FIELD(recordPassMode, u32),
    TARNOVA_FIELD(fileAffixEnabled, u8),
    TARNOVA_FIELD(fileAffixPosition, u16),
    TARNOVA_FIELD(fileAffixSeparator, pascal),
    TARNOVA_FIELD(chunkAutomatic, u8),
    TARNOVA_FIELD(chunkRecords, u32),
    TARNOVA_FIELD(workingCopyHidden, u8),
    TARNOVA_FIELD(driverOptionA, u8),
    TARNOVA_FIELD(controlFramesEnabled, u8),
    TARNOVA_FIELD(skipEmptySlots, u8),
    TARNOVA_FIELD(skipErrorSlots, u8),
    TARNOVA_FIELD(driverOptionB, u8),
    TARNOVA_FIELD(driverOptionC, u8),
    TARNOVA_FIELD(copyDocumentFonts, u8),
    TARNOVA_FIELD(flagTextErrors, u16),
    TARNOVA_FIELD(flagPictureErrors, u16),
    TARNOVA_FIELD(runOption8780, u8),
    TARNOVA_FIELD(reportOption8781, u8),
    TARNOVA_FIELD(reportExtension, pascal),
    TARNOVA_FIELD(reportOption8786, u16),
    TARNOVA_FIELD(searchDataFolder, u8),
    TARNOVA_FIELD(searchDocumentFolder, u8),
    TARNOVA_FIELD(searchOwnFolder, u8),
    TARNOVA_FIELD(searchSubfolders, u8),
    TARNOVA_FIELD(ruleChanged, u8),
    TARNOVA_FIELD(rulesEnabled, u8),
    TARNOVA_FIELD(warnAtEnd, u8),
    TARNOVA_FIELD(commandFlag19040, u8),
    TARNOVA_FIELD(pastEndCounts, u8),
    TARNOVA_FIELD(dialogFlag19064, u8),
    TARNOVA_FIELD(walkDeferredStories, u8),
    TARNOVA_FIELD(runOption19066, u8),
    TARNOVA_FIELD(groupPicturesUseMasters, u8),
    TARNOVA_FIELD(previewTaggedText, u8),
    TARNOVA_FIELD(previewRevert, u8),
    TARNOVA_FIELD(dataAccessLimit, u32),
    TARNOVA_FIELD(encodingScanBytes, i32),
    TARNOVA_FIELD(lastEngineMode, u16),
    TARNOVA_FIELD(commandFlag19610, u8),
    TARNOVA_FIELD(previewDialogFlag, u8),
    TARNOVA_FIELD(oversetCheck, u8),
    TARNOVA_FIELD(pdfPlaceCrop, u32),
    TARNOVA_FIELD(pdfPlaceTransparent, u16),
    TARNOVA_FIELD(trimValues, u8),
    TARNOVA_FIELD(copyfitAvailable, u8),
    TARNOVA_FIELD(processLinks, u8),
    TARNOVA_FIELD(processScope, u16),
    TARNOVA_FIELD(linkKinds, u16),
    TARNOVA_FIELD(useDocumentDefinition, u8),
    TARNOVA_FIELD(processDefinitionName, pascal),
    TARNOVA_FIELD(skipHiddenLayers, u8),
    TARNOVA_FIELD(processChoice, u16),
    TARNOVA_FIELD(batchReport, u8),
    TARNOVA_FIELD(reportType, u16),
    TARNOVA_FIELD(reportColKey, u8),
    TARNOVA_FIELD(reportColNewValue, u8),
    TARNOVA_FIELD(reportColOldValue, u8),
    TARNOVA_FIELD(reportColLink, u8),
    TARNOVA_FIELD(reportColRule, u8),
    TARNOVA_FIELD(reportColCriteria, u8),
    TARNOVA_FIELD(reportColStyle, u8),
    TARNOVA_FIELD(reportColPage, u8),
    TARNOVA_FIELD(reportColDocument, u8),
    TARNOVA_FIELD(reportColFrameStatus, u8),
    TARNOVA_FIELD(reportColStatus, u8),
    TARNOVA_FIELD(reportColNotes, u8),
    TARNOVA_FIELD(reportSortOrder, u16),
    TARNOVA_FIELD(reportRawText, u8),
    TARNOVA_FIELD(reportCreator, pascal),
    TARNOVA_FIELD(reportUsesData, u8),
    TARNOVA_FIELD(reportColExtra, u8),
    TARNOVA_FIELD(reportCaseFolded, u8),
    TARNOVA_FIELD(reportWriteBOM, u8),
    TARNOVA_FIELD(exportOption19753, u8),
    TARNOVA_FIELD(priceBatchFlag, u8),
    TARNOVA_FIELD(saveWithSuffix, u8),
    TARNOVA_FIELD(saveSuffix, pascal),
    TARNOVA_FIELD(hideDocuments, u8),
    TARNOVA_FIELD(batchSingleReport, u16),
    TARNOVA_FIELD(askOnDataProblems, u16),
    TARNOVA_FIELD(keyDigitsOnly, u8),
    TARNOVA_FIELD(keyLettersOnly, u8),
    TARNOVA_FIELD(keyFilterInDialogs, u8),
    TARNOVA_FIELD(keyPrefixMode, i16),
    TARNOVA_FIELD(keyPrefix, pascal),
    TARNOVA_FIELD(keySuffixMode, i16),
    TARNOVA_FIELD(keySuffix, pascal),
    TARNOVA_FIELD(skipDollar, u8),
    TARNOVA_FIELD(trimNumbers, i16),
    TARNOVA_FIELD(tableColumnCount, i32),
    TARNOVA_FIELD(auxKeyMode, i32),
    TARNOVA_FIELD(skipSingleCellRows, u8),
    TARNOVA_FIELD(panelExpanded, u16),
    TARNOVA_FIELD(panelSize, u32),
    TARNOVA_FIELD(commandFlag22124, u8),
    TARNOVA_FIELD(hasHeaderRecord, u8),
    TARNOVA_FIELD(mergeRunType, u32),
    TARNOVA_FIELD(preflightAssetsOnly, u8),
    TARNOVA_FIELD(rangeAll, u8),
    TARNOVA_FIELD(rangeFrom, u32),
    TARNOVA_FIELD(rangeTo, u32),
    TARNOVA_FIELD(rangeStep, u32),
    TARNOVA_FIELD(rangeText, pascal),
    TARNOVA_FIELD(selectedDriverId, u32),
    TARNOVA_FIELD(selectedDriverId2, u32),
    TARNOVA_FIELD(rangeTextLong, text),
    TARNOVA_FIELD(rangeLongStep, u32),
    TARNOVA_FIELD(rangeLongSkip, u32),
    TARNOVA_FIELD(rangeLongPass, u32),
    TARNOVA_FIELD(numberingPad, pascal),
    TARNOVA_FIELD(recordDuplicationOn, u32),
    TARNOVA_FIELD(duplicationKind, u32),
    TARNOVA_FIELD(duplicationCopies, u32),
    TARNOVA_FIELD(duplicationFieldName, text),
    TARNOVA_FIELD(mergeFrameWalkFlag, u8),
    TARNOVA_FIELD(loadStamp, u32),
};

#undef TARNOVA_FIELD

struct numberTypeRow {
    std::string_view name;
    preferenceType type;
    std::size_t size;
};
constexpr numberTypeRow numberTypes[] = {
    {"u8", u8, 1}, {"i16", i16, 2}, {"u16", u16, 2}, {"i32", i32, 4}, {"u32", u32, 4}};

preferenceField fieldByOffset(std::string_view name) {
    const std::size_t colon = name.find(':');
    std::size_t offset = 0;
    const auto [end, failure] = std::from_chars(name.data(), name.data() + colon, offset);
    if (failure != std::errc() || end != name.data() + colon) return {};
    const auto* const type = std::find_if(std::begin(numberTypes), std::end(numberTypes),
                                          [&](const numberTypeRow& row) { return row.name == name.substr(colon + 1); });
    if (type == std::end(numberTypes) || offset > prefsSizeBytes - type->size) return {};
    return {name, offset, type->type, type->size};
}

}  // namespace

std::span<const preferenceField> preferenceFields() {
    return fields;
}

preferenceField findPreference(std::string_view name) {
    if (name.find(':') != std::string_view::npos) return fieldByOffset(name);
    const auto* const found = std::find_if(std::begin(fields), std::end(fields),
                                           [name](const preferenceField& field) { return field.name == name; });
    return found == std::end(fields) ? preferenceField{} : *found;
}

}  // namespace tarnova
