// The session: the one set of long-lived fields that every operation of the engine reads and writes. It exists from the
// program's start to its end and is never reset as a whole; what a run starts with and leaves behind is told with the
// fields. Main thread only.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "data/data_state.h"
#include "definitions/definition_state.h"
#include "document/uid.h"
#include "document/walk_state.h"
#include "engine/session/preferences.h"
#include "engine/toolkit/id_file.h"
#include "engine/toolkit/pm_string.h"
#include "engine/toolkit/toolkit_state.h"

namespace tarnova {

struct dataSourceRec;
class IZavoKelvaneModule;
class DocumentHost;

inline constexpr errorWord errModeNotAttached = errorOfCode(-6023);

inline constexpr std::uint16_t modeMerge = 0;  // store `Kelvane`; a link's key is a sequence number
inline constexpr std::uint16_t modePrice = 1;  // store `Tallyra`; a link's key is a key into the data file

// Values of sessionRec::runStage.
inline constexpr std::uint32_t runStageIdle = 0;
inline constexpr std::uint32_t runStageSetUp = 1;
inline constexpr std::uint32_t runStageRunning = 2;
inline constexpr std::uint32_t runStageFinishing = 3;

// Values of sessionRec::engineRunType.
inline constexpr std::uint32_t engineRunPrice = 1;
inline constexpr std::uint32_t engineRunMerge = 2;
inline constexpr std::uint32_t engineRunLineTest = 3;

// Values of appPrefsRec::mergeRunType: what a merge produces.
inline constexpr std::uint32_t mergeRunDriver = 1;
inline constexpr std::uint32_t mergeRunBuildDocument = 0x10001;
inline constexpr std::uint32_t mergeRunCurrentDocument = 0x10002;
inline constexpr std::uint32_t mergeRunDriverBySlot = 0x10003;  // one slot a pass
inline constexpr std::uint32_t mergeRunPreview = 0x20001;
inline constexpr std::uint32_t mergeRunProof = 0x20002;  // the links in place of data
inline constexpr std::uint32_t mergeRunLinkReport = 0x20003;
inline constexpr std::uint32_t mergeRunShortestLine = 0x20004;
inline constexpr std::uint32_t mergeRunLongestLine = 0x20005;
inline constexpr std::uint32_t mergeRunPreflight = 0x20006;
inline constexpr std::uint32_t mergeRunTest = 0x20007;
inline constexpr std::uint32_t mergeRunOversetReport = 0x20009;

inline constexpr std::size_t sequenceTableCapacity = 2002;
inline constexpr std::size_t signatureCapacity = 40;
inline constexpr std::size_t assetTextCount = 6;
inline constexpr std::int32_t recordListPad = -2;  // a place in the record list without a record

/// The links of a document, filled by countLinks.
struct linkCensusRec {
    std::uint32_t allLinkCount = 0;  // of frames and of text together
    std::uint32_t frameLinkCount = 0;
    std::uint32_t textLinkCount = 0;
    std::uint32_t pictureLinkCount = 0;                       // links whose record's `type` is 2
    std::uint32_t highestSequence = 1;                        // the value that becomes the step
    std::uint32_t sequenceTable[sequenceTableCapacity] = {};  // element n: links with sequence number n
    std::uint32_t sequencesInUse = 0;                         // elements that aren't 0
    std::uint8_t hasNumberLink = 0;                           // a link uses the consecutive number keyword
    std::uint8_t hasBarcodeLink = 0;       // a barcode link other than the two that the engine makes itself
    std::uint8_t hasGroupPictureLink = 0;  // a link's `type` is 3
    std::uint32_t actionFrameCount = 0;    // frames with rule attributes
    Str31 nonBarcodeFrameLink = {};        // first link with the 2D barcode function on any other frame; empty: none
};

// Kinds of notes in sessionRec::reportOrder.
inline constexpr std::uint16_t reportKindFont = 1;
inline constexpr std::uint16_t reportKindOverset = 2;
inline constexpr std::uint16_t reportKindPicture = 3;

inline constexpr std::uint16_t fontIsMissing = 1;  // status of a fontNoteRec: another one stands in for it
struct fontNoteRec {
    PMString name;  // family and style
    std::uint16_t status = 0;
    std::uint32_t count = 0;
};
struct oversetNoteRec {
    UIDRef frame;
    PMString name;
    PMString page;
    std::int32_t record = -1;  // from 0
    PMString text;
};
struct pictureNoteRec {
    UIDRef frame;
    PMString page;
    std::int32_t record = -1;  // from 0
    PMString fileName;
    PMString text;
};
struct reportOrderRec {
    std::uint16_t kind = 0;
    std::uint32_t position = 0;  // in the list of the kind
};

// Values of assetMemoRec::assetKind.
inline constexpr std::uint32_t assetKindFile = 0;  // a picture or a text
inline constexpr std::uint32_t assetKindDocument = 1;
inline constexpr std::uint32_t assetKindMaster = 2;  // a master spread of the document
inline constexpr std::uint32_t assetKindGenerated = 3;

/// What a search for a picture or article came to.
struct assetMemoRec {
    PMString assetPath;  // empty: it isn't there
    std::uint32_t assetKind = assetKindFile;
    std::uint16_t assetEncoding = 0;  // in which the name was given: 0 that of the data, 1 UTF-8
};

/// Notes of a run, kept behind its end for the reports; resetRunLists empties them at the next start.
struct runListsRec {
    std::vector<fontNoteRec> fontsInUse;
    std::vector<oversetNoteRec> oversetFrames;
    std::vector<pictureNoteRec> missingPictures;  // damaged ones as well
    std::vector<reportOrderRec> reportOrder;      // of all notes, as they came
    std::vector<std::array<PMString, assetTextCount>> assetList;
    std::map<std::string, assetMemoRec, std::less<>> assetMemo;  // by the name as the data gave it
    std::uint32_t signatureTable[signatureCapacity] = {};        // 0: a free slot; a value is stored once
    // Status words that a driver updates at each tick. `jobPercent` is 100 when a run ended.
    std::uint32_t jobValue = 0;
    std::uint32_t jobPercent = 0;
    std::uint32_t jobCountA = 0;
    std::uint32_t jobCountB = 0;
    std::uint32_t jobCountC = 0;
    std::uint8_t jobFailed = 0;
    std::uint8_t jobCancelled = 0;
    // What the visitors of a run found.
    std::uint32_t fillerCount = 0;
    std::uint32_t noDataCount = 0;
    std::uint32_t badTagCount = 0;
};

// Bits of buildStateRec::fillersUsed.
inline constexpr std::uint8_t fillerStackPad = 1;
inline constexpr std::uint8_t fillerEndOfFile = 2;

/// A master spread of the document under build. `isVariable`: it, or a master related to it by what they are based on,
/// has an item that a record may change.
struct masterNoteRec {
    PMString name;
    UIDRef master;
    bool isVariable = false;
};

/// Used entries of the page map and its parts, taken and put back together with the tables.
struct buildCountsRec {
    std::int32_t slotCount = 0;
    std::int32_t pageEntryCount = 0;
    std::int32_t templatePageCount = 0;
};

/// State of a built document.
struct buildStateRec : buildCountsRec {
    std::int32_t nextPageIndex = 0;  // template pages that the expansion has consumed
    buildCountsRec countsSnapshot;
    std::int32_t slotTarget = 0;       // slots that this pass is to build
    std::uint32_t recordsToDo = 0;     // records of the run
    std::uint32_t recordsDone = 0;     // and those that are merged
    std::uint32_t recordBase = 0;      // first record of the current pass, from 0
    std::uint32_t skipFirst = 0;       // 1: the first record is a header, and is added to every record number
    std::uint32_t stepBy = 0;          // records per slot in step mode
    std::uint32_t recordPassMode = 0;  // as the preference of that name
    std::uint32_t totalRecords = 0;    // of the data after selection, less `skipFirst`
    std::uint32_t rangeFirst = 0;      // the user's range, from 1; both 0 mean all. Kept across runs
    std::uint32_t rangeLast = 0;
    std::uint32_t runFirst = 0;  // the same after validation against the file
    std::uint32_t runLast = 0;
    std::uint32_t stackFirst = 0;  // the part of the file that the stack modes walk
    std::uint32_t stackLast = 0;
    std::string templateFile;  // the working copy, UTF-8
    UIDRef templateDoc;        // while it is open
    /// The template as the working copy had it when it was opened, or when its first chunk was about to be built; what
    /// a chunk is put back to. In memory, so that what repeats keeps its identity through all chunks.
    std::shared_ptr<const Document> templateCopy;
    std::uint8_t templatePrepared = 0;  // composed, its masters' items detached
    std::string sourceFile;             // the user's document
    std::uint8_t sourceWindowShown = 0;
    std::uint8_t workingCopyMade = 0;
    std::uint8_t docWasReopened = 0;
    std::uint8_t smartTagsApplied = 0;  // in this run
    std::uint8_t trimDone = 0;          // all tags of the template were trimmed; they aren't trimmed one by one
    std::uint8_t fillersUsed = 0;       // fillerStackPad and fillerEndOfFile, as links were given them
    std::int32_t slotsInFront = 0;      // of the chunk, in the output that it is a part of,
    std::int32_t slotsOfOutput = 0;     // and in all; 0: the chunk is the whole output
    // Printed pages with their copies over all chunks so far. The second one is also cleared by command 621.
    std::uint32_t pageTotal = 0;
    std::uint32_t pageTotalOfFile = 0;
    std::vector<std::uint32_t> slotCopies;   // copies of each slot; a slot behind the list has those of the last
    std::vector<masterNoteRec> masterNotes;  // of a run of several slots; emptied at the run's end
};

/// How a run is steered. Cleared at its end unless told otherwise.
struct runControlRec {
    std::uint32_t runStage = runStageIdle;
    std::uint32_t armedState = 0;     // 0 not scripted, 1 armed, 2 a scripted run is under way
    std::uint32_t engineRunType = 0;  // set by the run's start
    std::int32_t savedRunType = -1;   // the `mergeRunType` to put back at the run's end; -1: none
    std::uint32_t selectedDriver = 0;
    std::uint8_t inRun = 0;             // document events are ignored
    std::uint16_t mergePassActive = 0;  // a merge pass is on the call stack
    std::uint16_t cancelRun = 0;        // tested between passes and by the walk
    std::uint8_t stageDone = 0;         // stage 2 has nothing more to do
    std::uint8_t warnsAtEnd = 0;        // records behind the end are told when the run is over,
    std::uint8_t paddingUsed = 0;       // once there were some (bit 0)
    std::uint8_t noAdvance = 0;         // a pass leaves `recordBase` where it is
    std::uint8_t askBeforeDelete = 0;   // a link without a value asks before its frame goes
    std::uint32_t passesDone = 0;       // of a report
    /// Frames whose content was replaced in this pass; a second walk leaves them alone. Nothing outside of a pass.
    std::optional<UIDList> changedFrames;
    std::uint8_t secondRound = 0;         // of a price document: the links that need the finished layout,
    std::uint32_t deferredLinkCount = 0;  // so many of them
    std::uint8_t ruleRefusedLink = 0;     // a rule refused a link of a price run
    UIDRef runDocument;                   // nothing once a driver owns the document
    recordDefRec* runDefinition = nullptr;
    dataSourceRec* runDataFile = nullptr;
    std::int16_t runDataStatus = 0;    // `openStatus` of the data file
    std::int16_t runDataEncoding = 0;  // and its text encoding
    std::uint8_t mergeOn = 0;          // the run merges
    std::uint8_t priceStart = 0;       // a price run was asked for,
    std::uint8_t priceActive = 0;      // is under way,
    std::uint8_t priceBatch = 0;       // belongs to a batch
    std::uint16_t panelsStale = 0;     // the shell brings its panels up to date. Not cleared by a run
    std::int16_t runResult = 0;        // of the visitors
    std::int32_t walkFirstPage = 0;    // page range of the walks, from 1; both 0 mean all
    std::int32_t walkLastPage = 0;
    std::uint32_t layerRulePages = 0;      // pages with rules that act on layers
    std::vector<std::int32_t> recordList;  // active record list, with recordListPad; empty: there is none
};

/// What the commands of the front door keep from call to call.
struct commandStateRec {
    std::map<std::uint32_t, IZavoKelvaneModule*> companionModules;  // by signature; see registerModule
    // Caller and number of a command that is answered when the host has done its part.
    std::uint32_t deferredCommand = 0;
    std::uint32_t deferredSignature = 0;
    std::uint32_t announcedCount = 0;      // of the module that command 569 announces
    std::uint8_t priceFlag = 0;            // second flag of command 1272
    std::uint8_t priceDocumentFlag = 0;    // given out by command 1256
    std::uint8_t engineOpenedFileSet = 0;  // the document watch leaves `engineOpenedFile` alone
    IDFile engineOpenedFile;
    // What an arming command hands to the driver.
    IDFile armedFile;
    std::uint32_t armedFileNumber = 0;
    IDFile armedSecondFile;
    std::uint32_t armedSecondNumber = 0;
    PMString armedText;
    std::uint32_t armedTextNumber = 0;
};

/// All of it. `engineMode` is among the words of the walk, `engineError` and the alert flags among the toolkit's.
struct sessionRec : toolkitStateRec,
                    definitionStateRec,
                    dataStateRec,
                    walkStateRec,
                    runControlRec,
                    buildStateRec,
                    linkCensusRec,
                    runListsRec,
                    commandStateRec {
    sessionRec();
    ~sessionRec();
    sessionRec(const sessionRec&) = delete;
    sessionRec& operator=(const sessionRec&) = delete;

    std::uint16_t mergeAttached = 0;  // set once, never cleared
    std::uint16_t priceAttached = 0;
    appPrefsRec prefs{};  // see appPrefs

    std::string applicationFolder;     // UTF-8; empty: there is none
    std::string dataFolder;            // of the preferences, definitions and index files, UTF-8; empty: nothing is kept
    std::uint8_t dataFolderInApp = 0;  // it lies below the application's folder
    std::uint8_t prefsAreTemporary = 0;   // settings hold for this session alone and are never saved
    std::array<PMString, 12> monthNames;  // in the host's language, read at the start
    std::uint8_t languageIsEnglish = 0;   // the host speaks English
    /// Reads the kinds of the rule attributes of a page from the rules module; false when that fails. Null without the
    /// module.
    bool (*readPageRuleKinds)(UIDRef page, std::vector<std::int32_t>& outKinds) = nullptr;
    /// The application around the documents; null in a program without one. Not the session's own.
    DocumentHost* documentHost = nullptr;
    /// Tells the shell that the mode is another one: titles, rule module, preview; null without a shell.
    void (*modeChanged)(std::uint16_t mode) = nullptr;
};

/// The one session. The first call makes it, with the preferences' defaults of mode 0.
[[nodiscard]] sessionRec& session();

/// Installs the session with the folders below it; calling it again changes nothing.
void sessionInit();

/// Throws the session away for a fresh one, for tests.
void sessionReset();

/// Changes the engine mode: brings in the mode's own settings, saves the preferences and tells the shell. With
/// `checked` a mode that is in force already is left alone. Gives 0, or errModeNotAttached with nothing changed.
[[nodiscard]] errorWord switchEngineMode(std::uint16_t mode, bool checked);

/// "Kelvane" in mode 0, "Tallyra" in mode 1: the name of the store.
[[nodiscard]] const char* engineName();

/// `runStage` isn't 0.
[[nodiscard]] bool runIsActive();

/// Empties the report lists with their order, the asset list, the job and visitor counters and the signatures.
void resetRunLists();

/// Counts the links of the document into the census, by two walks over masters and all pages that follow the
/// preferences for hidden layers and the pasteboard.
void countLinks(UIDRef document);

}  // namespace tarnova
