// The preferences: all settings that outlive a session, in one fixed record. The same bytes are the session's settings,
// a dialog's working copy and the content of the preferences file, so every field has its place for good. Strings are
// Pascal strings and flags are 0 and 1 unless told otherwise. Fields named "reserved" are kept and written back.

#pragma once

#include <cstddef>
#include <cstdint>

#include "data/default_strings.h"
#include "definitions/record_def.h"
#include "engine/session/preference_records.h"
#include "engine/toolkit/pstring.h"

namespace tarnova {

inline constexpr std::size_t prefsSizeBytes = 30612;
inline constexpr std::uint32_t prefsVersionCurrent = 205;
inline constexpr char prefsOwnerName[] = "Ostreon Tag Display";
inline constexpr std::uint8_t copyfitLevelNone = 12;
inline constexpr std::uint16_t engineModeNone = 65535;  // `lastEngineMode` before the first switch

struct appPrefsRec {
    Str31 prefsOwner;  // "Ostreon Tag Display"
    std::uint32_t prefsVersion;
    std::uint32_t reserved36;

    // Stand-in texts.
    defaultStringSet textDefaults;
    defaultStringSet pictureDefaults;

    // Merging.
    std::uint8_t promptMissingAssets;  // a missing picture or article asks the user
    std::uint8_t copyfitEnabled;
    std::uint8_t copyfitLevel;  // 12: none given
    std::uint8_t reserved3127;
    std::uint8_t missingDefinitionIsError;
    std::uint8_t alwaysUseDocumentDDF;  // of the mode settings; the document has one definition
    std::uint8_t reserved3130;
    std::uint8_t confirmEmptyKey;  // asks before a link is assigned with an empty key
    std::uint8_t dialogFlag3132;
    std::uint8_t trimTagText;  // of the mode settings; white space at the ends of a run leaves the tag
    std::uint16_t reserved3134;
    std::uint16_t reportLevel;  // 1 to 3 in mode 1: columns of notes
    std::uint8_t linkKeyFieldsEnabled;
    std::uint8_t verifyDataFiles;
    std::uint8_t tagDisplayChecks;
    std::uint8_t affixWithStyle;  // prefix and suffix also with a price style
    std::uint8_t showProgress;
    std::uint8_t offerProcessChooser;
    std::uint8_t framesFirst;  // of the mode settings; frames are merged before text
    std::uint8_t reserved3145;
    std::uint8_t indexKeepsDuplicates;
    std::uint8_t dialogFlag3147;
    std::uint16_t dialogPopup3148;  // index + 1
    std::uint8_t confirmDeletes;
    std::uint8_t noSummary;
    std::uint8_t reportAlways;
    std::uint8_t reserved3153[3];
    std::uint8_t skipPasteboard;  // of the mode settings; walks leave out items on no page
    std::uint8_t reserved3157;
    std::uint8_t priceTrailingText;  // a byte, as tagDisplayExtra follows at once
    std::uint8_t tagDisplayExtra;
    std::uint8_t saveSlugWithDocument;

    // What a new link, search criteria and price style start with.
    std::uint8_t reserved3161;
    extractionRec linkDefaults;
    searchCriteriaRec criteriaDefaults;
    std::uint8_t reserved6850[2];
    styleRec priceStyleDefaults;

    // Run and output.
    std::uint8_t reserved8616;
    std::uint8_t confirmDataFile;
    std::uint8_t dialogFlag8618;
    std::uint8_t reserved8619[3];
    std::uint8_t autoProofLinks;
    std::uint8_t assignOnSelection;
    std::uint8_t reserved8624;
    std::uint8_t logMissing;  // missing assets go to the run log
    std::uint8_t replicateSections;
    std::uint8_t commandFlag8627;
    std::uint32_t recordPassMode;  // 1 step, 2 no stepping, 3 cut and stack, 4 stack range, 5 stack subset
    fileExtensionRec extensionTable[10];
    std::uint8_t fileAffixEnabled;
    std::uint8_t reserved8753;
    std::uint16_t fileAffixPosition;  // 1 in front of the base name, 2 behind it, 3 none
    Str3 fileAffixSeparator;
    std::uint8_t chunkAutomatic;
    std::uint8_t reserved8761[3];
    std::uint32_t chunkRecords;  // 1 to 250
    std::uint8_t workingCopyHidden;
    std::uint8_t driverOptionA;
    std::uint8_t controlFramesEnabled;
    std::uint8_t skipEmptySlots;
    std::uint8_t skipErrorSlots;
    std::uint8_t driverOptionB;
    std::uint8_t driverOptionC;
    std::uint8_t copyDocumentFonts;
    std::uint16_t flagTextErrors;     // 1 yes, 2 no
    std::uint16_t flagPictureErrors;  // 1 yes, 2 no
    std::uint8_t runOption8780;
    std::uint8_t reportOption8781;
    Str3 reportExtension;
    std::uint16_t reportOption8786;  // 2 set, 1 clear

    // Where pictures are looked for.
    std::uint8_t searchDataFolder;
    std::uint8_t searchDocumentFolder;
    std::uint8_t searchOwnFolder;
    std::uint8_t searchSubfolders;
    char searchPaths[10][1024];  // UTF-8

    // Rules, preview, mode.
    std::uint8_t reserved19032[5];
    std::uint8_t ruleChanged;
    std::uint8_t rulesEnabled;
    std::uint8_t warnAtEnd;
    std::uint8_t commandFlag19040;
    std::uint8_t pastEndCounts;
    std::uint8_t reserved19042[22];
    std::uint8_t dialogFlag19064;
    std::uint8_t walkDeferredStories;  // the walk visits what a pass brought in
    std::uint8_t runOption19066;
    std::uint8_t groupPicturesUseMasters;
    std::uint8_t previewTaggedText;
    std::uint8_t previewRevert;
    std::uint8_t reserved19070[2];
    std::int32_t previewPosition[2];  // left and top of the preview window
    std::uint32_t dataAccessLimit;
    std::int32_t encodingScanBytes;  // -1: the whole file
    std::uint8_t reserved19088[4];
    std::uint16_t lastEngineMode;  // 0 or 1; another value before the first switch
    std::uint8_t reserved19094[516];
    std::uint8_t commandFlag19610;
    std::uint8_t previewDialogFlag;
    std::uint8_t oversetCheck;
    modeSettingsRec modeSettings[2];  // banks of modes 0 and 1
    std::uint8_t reserved19621[3];
    std::uint32_t pdfPlaceCrop;  // 0 keeps the host's setting
    std::uint16_t pdfPlaceTransparent;
    std::uint8_t reserved19630[2];
    std::uint8_t trimValues;
    std::uint8_t reserved19633[3];
    std::uint8_t startFlags[4];  // set at each start
    std::uint8_t copyfitAvailable;
    std::uint8_t modulePresence[9];  // of the modules that announce themselves

    // Processing a document, batch, price report.
    std::uint8_t processLinks;
    std::uint8_t reserved19651;
    std::uint16_t reserved19652;
    std::uint16_t processScope;
    std::uint16_t linkKinds;  // 0 text and frames, 1 text, 2 frames
    std::uint8_t useDocumentDefinition;
    std::uint8_t processDefinitionName[34];  // Pascal string
    std::uint8_t reserved19693;
    std::uint8_t skipHiddenLayers;  // walks leave out the items of hidden layers
    std::uint8_t reserved19695;
    std::uint16_t processChoice;
    std::uint8_t batchReport;
    std::uint8_t reserved19699;
    std::uint16_t reportType;  // 0 none, 1 text, 2 and 3 data export
    std::uint8_t reportColKey;
    std::uint8_t reportColNewValue;
    std::uint8_t reportColOldValue;
    std::uint8_t reportColLink;
    std::uint8_t reportColRule;
    std::uint8_t reportColCriteria;
    std::uint8_t reportColStyle;
    std::uint8_t reportColPage;
    std::uint8_t reportColDocument;
    std::uint8_t reportColFrameStatus;
    std::uint8_t reportColStatus;
    std::uint8_t reportColNotes;
    std::uint16_t reportSortOrder;
    std::uint8_t reportRawText;
    std::uint8_t reportCreator[8];  // Pascal string
    std::uint8_t reportUsesData;
    std::uint8_t reserved19726;
    std::uint8_t reportColExtra;
    std::uint8_t reportCaseFolded;
    std::uint8_t reportWriteBOM;
    std::uint8_t reserved19730;
    std::uint8_t exportOptions19731[2];
    std::uint8_t reserved19733;
    std::uint16_t exportOptions19734[4];
    std::uint8_t exportOptions19742[9];
    std::uint8_t reserved19751[2];
    std::uint8_t exportOption19753;
    std::uint8_t reserved19754[256];
    std::uint8_t priceBatchFlag;
    std::uint8_t saveWithSuffix;
    std::uint8_t saveSuffix[8];  // Pascal string
    std::uint8_t hideDocuments;
    std::uint8_t reserved20021;
    std::uint16_t batchSingleReport;
    std::uint8_t reserved20024[2];
    std::uint16_t askOnDataProblems;

    // Tagging of tables.
    std::uint8_t reserved20028;
    std::uint8_t keyDigitsOnly;
    std::uint8_t keyLettersOnly;
    std::uint8_t keyFilterInDialogs;
    std::int16_t keyPrefixMode;  // 1 add, 2 remove, 3 remove the longest of a list
    Str255 keyPrefix;
    std::int16_t keySuffixMode;
    Str255 keySuffix;
    std::uint8_t skipDollar;
    std::uint8_t reserved20549;
    std::int16_t trimNumbers;
    std::int32_t tableColumnCount;
    std::int32_t auxKeyMode;
    std::uint8_t reserved20560[2];
    std::uint8_t skipSingleCellRows;
    std::uint8_t reserved20563;
    std::uint8_t searchReplace[336];  // last settings of search and replace
    std::uint8_t reserved20900[1148];
    Str63 reserved22048;

    // Panel and merge dialog.
    std::uint16_t panelColumns[2];
    std::uint16_t panelExpanded;
    std::uint8_t reserved22118[2];
    std::uint32_t panelSize;  // height in points, 16.16 fixed value
    std::uint8_t commandFlag22124;
    std::uint8_t reserved22125;
    std::uint8_t hasHeaderRecord;
    std::uint8_t reserved22127;
    std::uint32_t mergeRunType;
    std::uint32_t reserved22132;
    std::uint8_t reserved22136;
    std::uint8_t preflightAssetsOnly;
    std::uint8_t reserved22138[3];
    std::uint8_t rangeAll;
    std::uint8_t reserved22142[2];
    std::uint32_t rangeFrom;  // 0: all records
    std::uint32_t rangeTo;
    std::uint32_t rangeStep;
    Str255 rangeText;
    std::uint32_t reserved22412;
    std::uint16_t reserved22416;
    std::uint8_t reserved22418;
    Str63 reserved22419;
    std::uint8_t reserved22483;
    Str63 reserved22484;
    std::uint8_t reserved22548;
    Str63 reserved22549;
    std::uint8_t reserved22613[3];
    std::uint32_t selectedDriverId;   // for run type 1
    std::uint32_t selectedDriverId2;  // for run type 0x10003
    outputDriverRec driverTable[10];
    std::uint8_t reserved23464[660];
    std::uint32_t reserved24124[7];
    std::uint8_t reserved24152[128];
    Str255 reserved24280;
    std::uint8_t reserved24536[64];
    std::uint32_t reserved24600;
    std::uint8_t reserved24604[4];
    sequenceItemsRec sequenceGrid;
    recentRangeRec recentRanges[10];  // newest first
    char rangeTextLong[1024];         // custom range
    std::uint8_t reserved25896[12];
    std::uint32_t rangeLongStep;
    std::uint32_t rangeLongSkip;
    std::uint32_t rangeLongPass;

    // Numbering, label sort, duplication.
    std::uint8_t numberingOptions[260];  // last values of the numbering utility; the pad character follows
    Str3 numberingPad;
    labelSortRec labelSort;
    std::uint32_t recordDuplicationOn;
    std::uint32_t duplicationKind;  // 0 none, 1 fixed count, 2 a data field
    std::uint32_t duplicationCopies;
    char duplicationFieldName[255];  // C string
    std::uint8_t mergeFrameWalkFlag;
    reservedTextRec reservedTexts[4];
    std::uint32_t reserved30600;
    std::uint32_t reserved30604;
    std::uint32_t loadStamp;  // nothing reads it
};
static_assert(sizeof(appPrefsRec) == prefsSizeBytes);
static_assert(offsetof(appPrefsRec, prefsOwner) == 0);
static_assert(offsetof(appPrefsRec, prefsVersion) == 32);
static_assert(offsetof(appPrefsRec, textDefaults) == 40);
static_assert(offsetof(appPrefsRec, pictureDefaults) == 1582);
static_assert(offsetof(appPrefsRec, promptMissingAssets) == 3124);
static_assert(offsetof(appPrefsRec, copyfitEnabled) == 3125);
static_assert(offsetof(appPrefsRec, copyfitLevel) == 3126);
static_assert(offsetof(appPrefsRec, missingDefinitionIsError) == 3128);
static_assert(offsetof(appPrefsRec, alwaysUseDocumentDDF) == 3129);
static_assert(offsetof(appPrefsRec, confirmEmptyKey) == 3131);
static_assert(offsetof(appPrefsRec, dialogFlag3132) == 3132);
static_assert(offsetof(appPrefsRec, trimTagText) == 3133);
static_assert(offsetof(appPrefsRec, reportLevel) == 3136);
static_assert(offsetof(appPrefsRec, linkKeyFieldsEnabled) == 3138);
static_assert(offsetof(appPrefsRec, verifyDataFiles) == 3139);
static_assert(offsetof(appPrefsRec, tagDisplayChecks) == 3140);
static_assert(offsetof(appPrefsRec, affixWithStyle) == 3141);
static_assert(offsetof(appPrefsRec, showProgress) == 3142);
static_assert(offsetof(appPrefsRec, offerProcessChooser) == 3143);
static_assert(offsetof(appPrefsRec, framesFirst) == 3144);
static_assert(offsetof(appPrefsRec, indexKeepsDuplicates) == 3146);
static_assert(offsetof(appPrefsRec, dialogFlag3147) == 3147);
static_assert(offsetof(appPrefsRec, dialogPopup3148) == 3148);
static_assert(offsetof(appPrefsRec, confirmDeletes) == 3150);
static_assert(offsetof(appPrefsRec, noSummary) == 3151);
static_assert(offsetof(appPrefsRec, reportAlways) == 3152);
static_assert(offsetof(appPrefsRec, skipPasteboard) == 3156);
static_assert(offsetof(appPrefsRec, priceTrailingText) == 3158);
static_assert(offsetof(appPrefsRec, tagDisplayExtra) == 3159);
static_assert(offsetof(appPrefsRec, saveSlugWithDocument) == 3160);
static_assert(offsetof(appPrefsRec, linkDefaults) == 3162);
static_assert(offsetof(appPrefsRec, criteriaDefaults) == 6002);
static_assert(offsetof(appPrefsRec, priceStyleDefaults) == 6852);
static_assert(offsetof(appPrefsRec, confirmDataFile) == 8617);
static_assert(offsetof(appPrefsRec, dialogFlag8618) == 8618);
static_assert(offsetof(appPrefsRec, autoProofLinks) == 8622);
static_assert(offsetof(appPrefsRec, assignOnSelection) == 8623);
static_assert(offsetof(appPrefsRec, logMissing) == 8625);
static_assert(offsetof(appPrefsRec, replicateSections) == 8626);
static_assert(offsetof(appPrefsRec, commandFlag8627) == 8627);
static_assert(offsetof(appPrefsRec, recordPassMode) == 8628);
static_assert(offsetof(appPrefsRec, extensionTable) == 8632);
static_assert(offsetof(appPrefsRec, fileAffixEnabled) == 8752);
static_assert(offsetof(appPrefsRec, fileAffixPosition) == 8754);
static_assert(offsetof(appPrefsRec, fileAffixSeparator) == 8756);
static_assert(offsetof(appPrefsRec, chunkAutomatic) == 8760);
static_assert(offsetof(appPrefsRec, chunkRecords) == 8764);
static_assert(offsetof(appPrefsRec, workingCopyHidden) == 8768);
static_assert(offsetof(appPrefsRec, driverOptionA) == 8769);
static_assert(offsetof(appPrefsRec, controlFramesEnabled) == 8770);
static_assert(offsetof(appPrefsRec, skipEmptySlots) == 8771);
static_assert(offsetof(appPrefsRec, skipErrorSlots) == 8772);
static_assert(offsetof(appPrefsRec, driverOptionB) == 8773);
static_assert(offsetof(appPrefsRec, driverOptionC) == 8774);
static_assert(offsetof(appPrefsRec, copyDocumentFonts) == 8775);
static_assert(offsetof(appPrefsRec, flagTextErrors) == 8776);
static_assert(offsetof(appPrefsRec, flagPictureErrors) == 8778);
static_assert(offsetof(appPrefsRec, runOption8780) == 8780);
static_assert(offsetof(appPrefsRec, reportOption8781) == 8781);
static_assert(offsetof(appPrefsRec, reportExtension) == 8782);
static_assert(offsetof(appPrefsRec, reportOption8786) == 8786);
static_assert(offsetof(appPrefsRec, searchDataFolder) == 8788);
static_assert(offsetof(appPrefsRec, searchDocumentFolder) == 8789);
static_assert(offsetof(appPrefsRec, searchOwnFolder) == 8790);
static_assert(offsetof(appPrefsRec, searchSubfolders) == 8791);
static_assert(offsetof(appPrefsRec, searchPaths) == 8792);
static_assert(offsetof(appPrefsRec, ruleChanged) == 19037);
static_assert(offsetof(appPrefsRec, rulesEnabled) == 19038);
static_assert(offsetof(appPrefsRec, warnAtEnd) == 19039);
static_assert(offsetof(appPrefsRec, commandFlag19040) == 19040);
static_assert(offsetof(appPrefsRec, pastEndCounts) == 19041);
static_assert(offsetof(appPrefsRec, dialogFlag19064) == 19064);
static_assert(offsetof(appPrefsRec, walkDeferredStories) == 19065);
static_assert(offsetof(appPrefsRec, runOption19066) == 19066);
static_assert(offsetof(appPrefsRec, groupPicturesUseMasters) == 19067);
static_assert(offsetof(appPrefsRec, previewTaggedText) == 19068);
static_assert(offsetof(appPrefsRec, previewRevert) == 19069);
static_assert(offsetof(appPrefsRec, previewPosition) == 19072);
static_assert(offsetof(appPrefsRec, dataAccessLimit) == 19080);
static_assert(offsetof(appPrefsRec, encodingScanBytes) == 19084);
static_assert(offsetof(appPrefsRec, lastEngineMode) == 19092);
static_assert(offsetof(appPrefsRec, commandFlag19610) == 19610);
static_assert(offsetof(appPrefsRec, previewDialogFlag) == 19611);
static_assert(offsetof(appPrefsRec, oversetCheck) == 19612);
static_assert(offsetof(appPrefsRec, modeSettings) == 19613);
static_assert(offsetof(appPrefsRec, pdfPlaceCrop) == 19624);
static_assert(offsetof(appPrefsRec, pdfPlaceTransparent) == 19628);
static_assert(offsetof(appPrefsRec, trimValues) == 19632);
static_assert(offsetof(appPrefsRec, startFlags) == 19636);
static_assert(offsetof(appPrefsRec, copyfitAvailable) == 19640);
static_assert(offsetof(appPrefsRec, modulePresence) == 19641);
static_assert(offsetof(appPrefsRec, processLinks) == 19650);
static_assert(offsetof(appPrefsRec, processScope) == 19654);
static_assert(offsetof(appPrefsRec, linkKinds) == 19656);
static_assert(offsetof(appPrefsRec, useDocumentDefinition) == 19658);
static_assert(offsetof(appPrefsRec, processDefinitionName) == 19659);
static_assert(offsetof(appPrefsRec, skipHiddenLayers) == 19694);
static_assert(offsetof(appPrefsRec, processChoice) == 19696);
static_assert(offsetof(appPrefsRec, batchReport) == 19698);
static_assert(offsetof(appPrefsRec, reportType) == 19700);
static_assert(offsetof(appPrefsRec, reportColKey) == 19702);
static_assert(offsetof(appPrefsRec, reportColNewValue) == 19703);
static_assert(offsetof(appPrefsRec, reportColOldValue) == 19704);
static_assert(offsetof(appPrefsRec, reportColLink) == 19705);
static_assert(offsetof(appPrefsRec, reportColRule) == 19706);
static_assert(offsetof(appPrefsRec, reportColCriteria) == 19707);
static_assert(offsetof(appPrefsRec, reportColStyle) == 19708);
static_assert(offsetof(appPrefsRec, reportColPage) == 19709);
static_assert(offsetof(appPrefsRec, reportColDocument) == 19710);
static_assert(offsetof(appPrefsRec, reportColFrameStatus) == 19711);
static_assert(offsetof(appPrefsRec, reportColStatus) == 19712);
static_assert(offsetof(appPrefsRec, reportColNotes) == 19713);
static_assert(offsetof(appPrefsRec, reportSortOrder) == 19714);
static_assert(offsetof(appPrefsRec, reportRawText) == 19716);
static_assert(offsetof(appPrefsRec, reportCreator) == 19717);
static_assert(offsetof(appPrefsRec, reportUsesData) == 19725);
static_assert(offsetof(appPrefsRec, reportColExtra) == 19727);
static_assert(offsetof(appPrefsRec, reportCaseFolded) == 19728);
static_assert(offsetof(appPrefsRec, reportWriteBOM) == 19729);
static_assert(offsetof(appPrefsRec, exportOptions19731) == 19731);
static_assert(offsetof(appPrefsRec, exportOptions19734) == 19734);
static_assert(offsetof(appPrefsRec, exportOptions19742) == 19742);
static_assert(offsetof(appPrefsRec, exportOption19753) == 19753);
static_assert(offsetof(appPrefsRec, priceBatchFlag) == 20010);
static_assert(offsetof(appPrefsRec, saveWithSuffix) == 20011);
static_assert(offsetof(appPrefsRec, saveSuffix) == 20012);
static_assert(offsetof(appPrefsRec, hideDocuments) == 20020);
static_assert(offsetof(appPrefsRec, batchSingleReport) == 20022);
static_assert(offsetof(appPrefsRec, askOnDataProblems) == 20026);
static_assert(offsetof(appPrefsRec, keyDigitsOnly) == 20029);
static_assert(offsetof(appPrefsRec, keyLettersOnly) == 20030);
static_assert(offsetof(appPrefsRec, keyFilterInDialogs) == 20031);
static_assert(offsetof(appPrefsRec, keyPrefixMode) == 20032);
static_assert(offsetof(appPrefsRec, keyPrefix) == 20034);
static_assert(offsetof(appPrefsRec, keySuffixMode) == 20290);
static_assert(offsetof(appPrefsRec, keySuffix) == 20292);
static_assert(offsetof(appPrefsRec, skipDollar) == 20548);
static_assert(offsetof(appPrefsRec, trimNumbers) == 20550);
static_assert(offsetof(appPrefsRec, tableColumnCount) == 20552);
static_assert(offsetof(appPrefsRec, auxKeyMode) == 20556);
static_assert(offsetof(appPrefsRec, skipSingleCellRows) == 20562);
static_assert(offsetof(appPrefsRec, searchReplace) == 20564);
static_assert(offsetof(appPrefsRec, panelColumns) == 22112);
static_assert(offsetof(appPrefsRec, panelExpanded) == 22116);
static_assert(offsetof(appPrefsRec, panelSize) == 22120);
static_assert(offsetof(appPrefsRec, commandFlag22124) == 22124);
static_assert(offsetof(appPrefsRec, hasHeaderRecord) == 22126);
static_assert(offsetof(appPrefsRec, mergeRunType) == 22128);
static_assert(offsetof(appPrefsRec, preflightAssetsOnly) == 22137);
static_assert(offsetof(appPrefsRec, rangeAll) == 22141);
static_assert(offsetof(appPrefsRec, rangeFrom) == 22144);
static_assert(offsetof(appPrefsRec, rangeTo) == 22148);
static_assert(offsetof(appPrefsRec, rangeStep) == 22152);
static_assert(offsetof(appPrefsRec, rangeText) == 22156);
static_assert(offsetof(appPrefsRec, selectedDriverId) == 22616);
static_assert(offsetof(appPrefsRec, selectedDriverId2) == 22620);
static_assert(offsetof(appPrefsRec, driverTable) == 22624);
static_assert(offsetof(appPrefsRec, sequenceGrid) == 24608);
static_assert(offsetof(appPrefsRec, recentRanges) == 24632);
static_assert(offsetof(appPrefsRec, rangeTextLong) == 24872);
static_assert(offsetof(appPrefsRec, rangeLongStep) == 25908);
static_assert(offsetof(appPrefsRec, rangeLongSkip) == 25912);
static_assert(offsetof(appPrefsRec, rangeLongPass) == 25916);
static_assert(offsetof(appPrefsRec, numberingOptions) == 25920);
static_assert(offsetof(appPrefsRec, numberingPad) == 26180);
static_assert(offsetof(appPrefsRec, labelSort) == 26184);
static_assert(offsetof(appPrefsRec, recordDuplicationOn) == 26204);
static_assert(offsetof(appPrefsRec, duplicationKind) == 26208);
static_assert(offsetof(appPrefsRec, duplicationCopies) == 26212);
static_assert(offsetof(appPrefsRec, duplicationFieldName) == 26216);
static_assert(offsetof(appPrefsRec, mergeFrameWalkFlag) == 26471);
static_assert(offsetof(appPrefsRec, loadStamp) == 30608);

/// The session's preferences: the only live copy.
[[nodiscard]] appPrefsRec& appPrefs();

/// Writes the defaults of the engine mode into `prefs`. With `keepDrivers` the driver table, the selected drivers and
/// all reserved bytes without a default stay; without it the record is cleared first.
void writeDefaultPreferences(appPrefsRec& prefs, std::uint16_t engineMode, bool keepDrivers);

/// The same for the session's preferences and mode.
void resetPreferences(bool keepDrivers);

/// What each start of a program sets anew: the flags of features, and a driver table with nothing but the entry that
/// says that no driver is installed.
void resetStartFlags(appPrefsRec& prefs);
void resetDriverTable(appPrefsRec& prefs);

/// The four settings that each mode has for itself, as they stand now, and their replacement.
[[nodiscard]] modeSettingsRec liveModeSettings(const appPrefsRec& prefs);
void setLiveModeSettings(appPrefsRec& prefs, const modeSettingsRec& settings);

}  // namespace tarnova
