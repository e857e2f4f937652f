#include "engine/session/preferences.h"

#include <cstring>

#include "engine/session/session.h"
#include "engine/toolkit/strings.h"
#include "tags/search_replace.h"

namespace tarnova {

namespace {

constexpr std::uint32_t pointFixed = 0x10000;      // one point as a 16.16 fixed value
constexpr std::uint32_t panelHeightMergePt = 256;  // of the link panel with its lower half shown
constexpr std::uint32_t panelHeightPricePt = 294;
constexpr std::uint32_t dataAccessLimitDefault = 100;
constexpr std::uint32_t mergeRunTypeDriver = 1;
constexpr modeSettingsRec modeSettingsDefault[2] = {{1, 0, 0, 1}, {0, 1, 0, 0}};

std::uint8_t flag(bool on) {
    return on ? 1 : 0;
}

void resetMergeSettings(appPrefsRec& prefs, bool mergeMode) {
    prefs.promptMissingAssets = 1;
    prefs.copyfitEnabled = 1;
    prefs.copyfitLevel = copyfitLevelNone;
    prefs.missingDefinitionIsError = 0;
    prefs.alwaysUseDocumentDDF = flag(mergeMode);
    prefs.reserved3130 = 1;
    prefs.confirmEmptyKey = 0;
    prefs.dialogFlag3132 = 0;
    prefs.trimTagText = flag(!mergeMode);
    prefs.reserved3134 = 1;
    prefs.reportLevel = 1;
    prefs.linkKeyFieldsEnabled = 1;
    prefs.verifyDataFiles = 0;
    prefs.tagDisplayChecks = 1;
    prefs.affixWithStyle = 0;
    prefs.showProgress = 1;
    prefs.offerProcessChooser = 1;
    prefs.framesFirst = flag(mergeMode);
    prefs.reserved3145 = 0;
    prefs.indexKeepsDuplicates = 1;
    prefs.dialogFlag3147 = 1;
    prefs.dialogPopup3148 = 1;
    prefs.confirmDeletes = flag(mergeMode);
    prefs.noSummary = 0;
    prefs.reportAlways = 0;
    prefs.skipPasteboard = flag(mergeMode);
    prefs.priceTrailingText = 1;
    prefs.tagDisplayExtra = 0;
    prefs.saveSlugWithDocument = 1;
}

void resetNewRecords(appPrefsRec& prefs) {
    prefs.linkDefaults = {};
    prefs.criteriaDefaults = {};
    prefs.priceStyleDefaults = {};
    const std::string_view none = stringOfKey("kZavoDefaultNoneString");
    pstrSet(prefs.linkDefaults.name, none);
    pstrSet(prefs.linkDefaults.reservedName, none);
    pstrSet(prefs.linkDefaults.field, none);
}

void resetRunSettings(appPrefsRec& prefs, bool mergeMode) {
    prefs.confirmDataFile = flag(mergeMode);
    prefs.dialogFlag8618 = 0;
    prefs.autoProofLinks = 0;
    prefs.assignOnSelection = 0;
    prefs.logMissing = 1;
    prefs.replicateSections = 1;
    prefs.commandFlag8627 = 1;
    prefs.recordPassMode = 1;
    prefs.flagTextErrors = 1;
    prefs.flagPictureErrors = 1;
    prefs.runOption8780 = 1;
    prefs.reportOption8781 = 0;
    pstrSet(prefs.reportExtension, "!");
    prefs.reportOption8786 = 2;
    prefs.searchDataFolder = 1;
    prefs.searchDocumentFolder = 1;
    prefs.searchOwnFolder = 0;
    prefs.searchSubfolders = 1;
    std::memset(prefs.searchPaths, 0, sizeof prefs.searchPaths);
}

void resetOutputFiles(appPrefsRec& prefs) {
    struct extensionRow {
        std::uint32_t fileType;
        const char* extension;
    };
    constexpr extensionRow rows[] = {{1, ".indd"}, {2, ".eps"}, {3, ".pdf"}, {4, ".ps"}, {5, ".ppml"}, {7, ".vps"}};
    std::memset(prefs.extensionTable, 0, sizeof prefs.extensionTable);
    fileExtensionRec* entry = prefs.extensionTable;
    for (const extensionRow& row : rows) {
        entry->fileType = row.fileType;
        pstrSet(entry->extension, row.extension);
        ++entry;
    }
    prefs.fileAffixEnabled = 1;
    prefs.fileAffixPosition = 2;
    pstrSet(prefs.fileAffixSeparator, "_");
    prefs.chunkAutomatic = 0;
    prefs.chunkRecords = 5;
    prefs.workingCopyHidden = 1;
    prefs.driverOptionA = 1;
    prefs.controlFramesEnabled = 1;
    prefs.skipEmptySlots = 1;
    prefs.skipErrorSlots = 0;
    prefs.driverOptionB = 1;
    prefs.driverOptionC = 0;
    prefs.copyDocumentFonts = 1;
}

void resetRulesAndPreview(appPrefsRec& prefs) {
    prefs.ruleChanged = 0;
    prefs.rulesEnabled = 1;
    prefs.warnAtEnd = 0;
    prefs.commandFlag19040 = 1;
    prefs.pastEndCounts = 1;
    prefs.dialogFlag19064 = 0;
    prefs.walkDeferredStories = 1;
    prefs.runOption19066 = 1;
    prefs.groupPicturesUseMasters = 1;
    prefs.previewTaggedText = 0;
    prefs.previewRevert = 1;
    prefs.previewPosition[0] = -1;
    prefs.previewPosition[1] = 0;
    prefs.dataAccessLimit = dataAccessLimitDefault;
    prefs.encodingScanBytes = -1;
    prefs.lastEngineMode = engineModeNone;
    std::memset(prefs.reserved19094, 0, sizeof prefs.reserved19094);
    prefs.commandFlag19610 = 1;
    prefs.previewDialogFlag = 0;
    prefs.oversetCheck = 0;
    std::memcpy(prefs.modeSettings, modeSettingsDefault, sizeof prefs.modeSettings);
    prefs.pdfPlaceCrop = 0;
    prefs.pdfPlaceTransparent = 1;
    prefs.trimValues = 1;
    resetStartFlags(prefs);
    prefs.copyfitAvailable = 0;
    std::memset(prefs.modulePresence, 0, sizeof prefs.modulePresence);
}

void resetProcessing(appPrefsRec& prefs) {
    prefs.processLinks = 1;
    prefs.reserved19652 = 2;
    prefs.processScope = 0;
    prefs.linkKinds = 0;
    prefs.useDocumentDefinition = 1;
    pstrSet(prefs.processDefinitionName, "Document");
    prefs.skipHiddenLayers = 1;
    prefs.processChoice = 0;
    prefs.priceBatchFlag = 0;
    prefs.batchReport = 1;
    prefs.batchSingleReport = 0;
    prefs.saveWithSuffix = 1;
    pstrSet(prefs.saveSuffix, ".P");
    prefs.hideDocuments = 0;
    prefs.askOnDataProblems = 1;
}

void resetPriceReport(appPrefsRec& prefs) {
    prefs.reportType = 1;
    prefs.reportColKey = 1;
    prefs.reportColNewValue = 1;
    prefs.reportColOldValue = 0;
    prefs.reportColLink = 1;
    prefs.reportColRule = 1;
    prefs.reportColCriteria = 1;
    prefs.reportColStyle = 1;
    prefs.reportColPage = 1;
    prefs.reportColDocument = 1;
    prefs.reportColFrameStatus = 1;
    prefs.reportColStatus = 1;
    prefs.reportColNotes = 1;
    prefs.reportSortOrder = 1;
    prefs.reportRawText = 1;
    pstrSet(prefs.reportCreator, "ttxt");
    prefs.reportUsesData = 0;
    prefs.reportColExtra = 0;
    prefs.reportCaseFolded = 0;
    prefs.reportWriteBOM = 0;
    prefs.exportOptions19731[0] = prefs.exportOptions19731[1] = 1;
    for (std::uint16_t& option : prefs.exportOptions19734)
        option = 2;
    constexpr std::uint8_t options[] = {0, 1, 1, 1, 1, 1, 0, 1, 1};
    std::memcpy(prefs.exportOptions19742, options, sizeof prefs.exportOptions19742);
    prefs.exportOption19753 = 0;
}

void resetTableTagging(appPrefsRec& prefs) {
    prefs.keyDigitsOnly = 0;
    prefs.keyLettersOnly = 0;
    prefs.keyFilterInDialogs = 0;
    prefs.keyPrefixMode = 1;
    pstrSet(prefs.keyPrefix, "");
    prefs.keySuffixMode = 1;
    pstrSet(prefs.keySuffix, "");
    prefs.skipDollar = 0;
    prefs.trimNumbers = 1;
    prefs.tableColumnCount = 20;
    prefs.auxKeyMode = 3;
    prefs.skipSingleCellRows = 0;
    std::memset(prefs.searchReplace, 0, sizeof prefs.searchReplace);
    const searchReplaceRec search = searchReplaceDefaults();
    std::memcpy(prefs.searchReplace, &search, sizeof search);
    pstrSet(prefs.reserved22048, ".eps");
}

void resetPanelAndRange(appPrefsRec& prefs, bool mergeMode) {
    prefs.panelColumns[0] = prefs.panelColumns[1] = 1;
    prefs.panelExpanded = 1;
    prefs.panelSize = (mergeMode ? panelHeightMergePt : panelHeightPricePt) * pointFixed;
    prefs.commandFlag22124 = 1;
    prefs.hasHeaderRecord = 1;
    prefs.mergeRunType = mergeRunTypeDriver;
    prefs.reserved22132 = 1;
    prefs.preflightAssetsOnly = 1;
    prefs.rangeAll = 0;
    prefs.rangeFrom = 0;
    prefs.rangeTo = 0;
    prefs.rangeStep = 1;
    pstrSet(prefs.rangeText, "");
    prefs.reserved22412 = 1;
    prefs.reserved22416 = 256;
    pstrSet(prefs.reserved22419, "Copies");
    pstrSet(prefs.reserved22484, "Job Name");
    pstrSet(prefs.reserved22549, "copyfit");
}

void resetDrivers(appPrefsRec& prefs) {
    prefs.selectedDriverId = driverIdNoDriver;
    prefs.selectedDriverId2 = 0;
    resetDriverTable(prefs);
}

void resetSequenceAndNumbering(appPrefsRec& prefs) {
    constexpr std::uint32_t unread[] = {1, 257, 99, 0x10001, 0xD020001, 10, 1};
    std::memcpy(prefs.reserved24124, unread, sizeof prefs.reserved24124);
    pstrSet(prefs.reserved24280, "Untitled");
    prefs.reserved24600 = 1;
    prefs.sequenceGrid = {1, 1, 1, 0, 1, 1, 72, 0, 0, 1, 0};
    std::memset(prefs.recentRanges, 0, sizeof prefs.recentRanges);
    std::memset(prefs.rangeTextLong, 0, sizeof prefs.rangeTextLong);
    prefs.rangeLongStep = prefs.rangeLongSkip = prefs.rangeLongPass = 0;
    std::memset(prefs.numberingOptions, 0, sizeof prefs.numberingOptions);
    pstrSet(prefs.numberingPad, "0");
    prefs.labelSort = {1, 1, 0, 1, 0, 0, 0};
    prefs.recordDuplicationOn = 0;
    prefs.duplicationKind = 0;
    prefs.duplicationCopies = 1;
    std::memset(prefs.duplicationFieldName, 0, sizeof prefs.duplicationFieldName);
    prefs.mergeFrameWalkFlag = 0;
    for (reservedTextRec& text : prefs.reservedTexts)
        text = {1, {}, 0};
    prefs.reserved30600 = prefs.reserved30604 = prefs.loadStamp = 0;
}

}  // namespace

appPrefsRec& appPrefs() {
    return session().prefs;
}

void resetStartFlags(appPrefsRec& prefs) {
    constexpr std::uint8_t startFlags[] = {1, 1, 0, 1};
    std::memcpy(prefs.startFlags, startFlags, sizeof prefs.startFlags);
}

void resetDriverTable(appPrefsRec& prefs) {
    std::memset(prefs.driverTable, 0, sizeof prefs.driverTable);
    outputDriverRec& first = prefs.driverTable[0];
    first.driverId = driverIdNoDriver;
    first.driverFlagB = 1;
    pstrSet(first.driverName, "PostScript\u00ae Driver Not Installed");
}

void writeDefaultPreferences(appPrefsRec& prefs, std::uint16_t engineMode, bool keepDrivers) {
    const bool mergeMode = engineMode == 0;
    if (!keepDrivers) {
        std::memset(&prefs, 0, sizeof prefs);
        resetDrivers(prefs);
    }
    pstrSet(prefs.prefsOwner, prefsOwnerName);
    prefs.prefsVersion = prefsVersionCurrent;
    prefs.reserved36 = 0;
    resetDefaultStrings(prefs.textDefaults, defaultSetText);
    resetDefaultStrings(prefs.pictureDefaults, defaultSetFrame);
    resetMergeSettings(prefs, mergeMode);
    resetNewRecords(prefs);
    resetRunSettings(prefs, mergeMode);
    resetOutputFiles(prefs);
    resetRulesAndPreview(prefs);
    resetProcessing(prefs);
    resetPriceReport(prefs);
    resetTableTagging(prefs);
    resetPanelAndRange(prefs, mergeMode);
    resetSequenceAndNumbering(prefs);
}

void resetPreferences(bool keepDrivers) {
    writeDefaultPreferences(appPrefs(), session().engineMode, keepDrivers);
}

modeSettingsRec liveModeSettings(const appPrefsRec& prefs) {
    return {prefs.alwaysUseDocumentDDF, prefs.trimTagText, prefs.framesFirst, prefs.skipPasteboard};
}

void setLiveModeSettings(appPrefsRec& prefs, const modeSettingsRec& settings) {
    prefs.alwaysUseDocumentDDF = settings.alwaysUseDocumentDDF;
    prefs.trimTagText = settings.trimTagText;
    prefs.framesFirst = settings.framesFirst;
    prefs.skipPasteboard = settings.skipPasteboard;
}

}  // namespace tarnova
