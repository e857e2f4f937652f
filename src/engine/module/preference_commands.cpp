// Commands that set and give preferences: reports, stand-in texts, output files, flags, and their reset. A setter keeps
// the fields in front of one that it refuses, and saves when it took them all.

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "data/data_source.h"
#include "data/key_index.h"
#include "definitions/definition_store.h"
#include "engine/module/command_rows.h"
#include "engine/module/driver_table.h"
#include "engine/module/preference_access.h"
#include "engine/session/preferences_file.h"
#include "engine/session/session.h"

namespace tarnova {

namespace {

// Reports and stand-in texts.

constexpr std::uint16_t reportYes = 1, reportNo = 2;     // of flagTextErrors and flagPictureErrors
constexpr std::uint16_t optionSet = 2, optionClear = 1;  // of reportOption8786

void takeReportFlag(const commandCall& call, unsigned item, std::uint16_t& field, std::uint16_t yes, std::uint16_t no) {
    if (call.given(item)) field = *call.item<std::uint8_t>(item) != 0 ? yes : no;
}

std::int32_t setReportOptions(commandCall& call) {
    appPrefsRec& prefs = appPrefs();
    if (call.given(0)) prefs.logMissing = flagOf(*call.item<std::uint8_t>(0));
    takeReportFlag(call, 1, prefs.flagTextErrors, reportYes, reportNo);
    takeReportFlag(call, 2, prefs.flagPictureErrors, reportYes, reportNo);
    if (call.given(3)) prefs.reportOption8781 = flagOf(*call.item<std::uint8_t>(3));
    if (call.given(4)) {
        if (call.string(4).size() > sizeof prefs.reportExtension - 1) return commandReportExtension;
        pstrSet(prefs.reportExtension, call.string(4));
    }
    takeReportFlag(call, 5, prefs.reportOption8786, optionSet, optionClear);
    return saved(commandDone);
}

std::int32_t getReportOptions(commandCall& call) {
    const appPrefsRec& prefs = appPrefs();
    call.put(0, prefs.logMissing);
    call.put<std::uint8_t>(1, prefs.flagTextErrors == reportYes);
    call.put<std::uint8_t>(2, prefs.flagPictureErrors == reportYes);
    call.put(3, prefs.reportOption8781);
    call.putString(4, pstrView(prefs.reportExtension));
    call.put<std::uint8_t>(5, prefs.reportOption8786 == optionSet);
    return commandDone;
}

/// A stand-in text by its item, and the sets that have it.
struct standInRow {
    unsigned item;
    defaultStringRec defaultStringSet::*text;
    bool inText;
    bool inPictures;
};
constexpr standInRow standIns[] = {{0, &defaultStringSet::noData, true, true},
                                   {1, &defaultStringSet::missingAsset, false, true},
                                   {2, &defaultStringSet::missingAsset, true, false},
                                   {3, &defaultStringSet::endOfFile, true, true},
                                   {4, &defaultStringSet::stackPad, true, true}};

std::int32_t setDefaultStrings(commandCall& call) {
    for (const standInRow& row : standIns) {
        if (!call.given(row.item)) continue;
        if (row.inText) pstrSet((appPrefs().textDefaults.*row.text).string, call.string(row.item));
        if (row.inPictures) pstrSet((appPrefs().pictureDefaults.*row.text).string, call.string(row.item));
    }
    return saved(commandDone);
}

std::int32_t getDefaultStrings(commandCall& call) {
    for (const standInRow& row : standIns) {
        const defaultStringSet& set = row.inText ? appPrefs().textDefaults : appPrefs().pictureDefaults;
        call.putString(row.item, pstrView((set.*row.text).string));
    }
    return commandDone;
}

// Output files.

constexpr std::uint32_t chunkHighest = 250;

fileExtensionRec* extensionOf(std::uint32_t format) {
    fileExtensionRec* const end = std::end(appPrefs().extensionTable);
    fileExtensionRec* const found =
        std::find_if(appPrefs().extensionTable, end,
                     [format](const fileExtensionRec& entry) { return format != 0 && entry.fileType == format; });
    return found == end ? nullptr : found;
}

std::int32_t takeExtension(const commandCall& call) {
    constexpr std::size_t extensionLongest = 5;
    const auto format = call.valueOr<std::uint32_t>(0, 0);
    if (!call.given(0) && !call.given(1)) return commandDone;
    if (format == 0) return call.string(1).empty() ? commandDone : commandFormatMissing;
    if (call.string(1).empty()) return commandExtensionEmpty;
    if (call.string(1).size() > extensionLongest) return commandExtensionLong;
    fileExtensionRec* const entry = extensionOf(format);
    if (entry == nullptr) return commandFormat;
    pstrSet(entry->extension, call.string(1));
    return commandDone;
}

std::int32_t takeFileName(const commandCall& call) {
    appPrefsRec& prefs = appPrefs();
    if (call.given(2)) prefs.fileAffixPosition = *call.item<std::uint8_t>(2) != 0 ? fileAffixBehind : fileAffixInFront;
    if (call.given(3)) {
        if (call.string(3).size() > sizeof prefs.fileAffixSeparator - 1) return commandSeparator;
        pstrSet(prefs.fileAffixSeparator, call.string(3));
    }
    if (!call.given(4)) return commandDone;
    const auto chunk = *call.item<std::uint32_t>(4);
    if (chunk > chunkHighest) return commandChunk;
    prefs.chunkAutomatic = chunk == 0 ? 1 : 0;
    if (chunk != 0) prefs.chunkRecords = chunk;
    return commandDone;
}

constexpr preferenceByte outputBytes[] = {{5, &appPrefsRec::driverOptionA},
                                          {6, &appPrefsRec::controlFramesEnabled},
                                          {7, &appPrefsRec::copyDocumentFonts},
                                          {8, &appPrefsRec::workingCopyHidden}};

std::int32_t setOutputOptions(commandCall& call) {
    std::int32_t status = takeExtension(call);
    if (status == commandDone) status = takeFileName(call);
    if (status != commandDone) return status;
    takeBytes(call, outputBytes);
    if (call.given(9)) appPrefs().driverOptionC = *call.item<std::uint8_t>(9) != 0 ? 0 : 1;
    return saved(commandDone);
}

std::int32_t getOutputOptions(commandCall& call) {
    const appPrefsRec& prefs = appPrefs();
    if (call.given(0)) {
        const fileExtensionRec* const entry = extensionOf(*call.item<std::uint32_t>(0));
        if (entry == nullptr) return commandFormat;
        call.putString(1, pstrView(entry->extension));
    }
    call.put<std::uint8_t>(2, prefs.fileAffixPosition == fileAffixBehind);
    call.putString(3, pstrView(prefs.fileAffixSeparator));
    call.put<std::uint32_t>(4, prefs.chunkAutomatic != 0 ? 0 : prefs.chunkRecords);
    giveBytes(call, outputBytes);
    call.put<std::uint8_t>(9, prefs.driverOptionC == 0);
    return commandDone;
}

// Flags.

constexpr preferenceByte flagBytes[] = {{0, &appPrefsRec::previewRevert},     {1, &appPrefsRec::alwaysUseDocumentDDF},
                                        {2, &appPrefsRec::verifyDataFiles},   {3, &appPrefsRec::replicateSections},
                                        {4, &appPrefsRec::logMissing},        {5, &appPrefsRec::commandFlag19040},
                                        {6, &appPrefsRec::confirmDataFile},   {7, &appPrefsRec::warnAtEnd},
                                        {8, &appPrefsRec::commandFlag22124},  {9, &appPrefsRec::previewTaggedText},
                                        {10, &appPrefsRec::commandFlag19610}, {11, &appPrefsRec::trimValues}};

std::int32_t setFlags(commandCall& call) {
    takeBytes(call, flagBytes);
    return saved(commandDone);
}

std::int32_t getFlags(commandCall& call) {
    giveBytes(call, flagBytes);
    return commandDone;
}

std::int32_t setPriceFlags(commandCall& call) {
    if (call.given(0)) appPrefs().commandFlag19610 = flagOf(*call.item<std::uint8_t>(0));
    if (call.given(1)) session().priceFlag = flagOf(*call.item<std::uint8_t>(1));
    return saved(commandDone);
}

// Reset.

constexpr std::uint32_t resetStandard = 1, resetFromNew = 2;

void clearFolder(const std::string& folder) {
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ignored))
        std::filesystem::remove_all(entry.path(), ignored);
}

/// The flags of modules that have announced themselves stay.
void restorePreferences() {
    constexpr std::size_t start = offsetof(appPrefsRec, startFlags), limit = 19647;
    auto* const bytes = reinterpret_cast<std::uint8_t*>(&appPrefs());
    std::uint8_t kept[limit - start];
    std::memcpy(kept, bytes + start, sizeof kept);
    resetPreferences(false);
    std::memcpy(bytes + start, kept, sizeof kept);
}

std::int32_t resetDefinitionsAs(std::uint32_t selector) {
    if (selector == 0) return commandDone;
    if (selector > resetFromNew) return commandResetDefinitions;
    const errorWord err = selector == resetFromNew ? openDefinitionStore(true, nullptr, 0) : resetDefinitions(0);
    return err == 0 ? commandDone : failWith(err, commandDefinition);
}

std::int32_t resetPreferencesAs(std::uint32_t selector) {
    if (selector == 0) return commandDone;
    if (selector > resetFromNew) return commandResetPreferences;
    if (selector == resetStandard) restorePreferences();
    if (selector == resetFromNew) appPrefs().prefsVersion = prefsVersionForgotten;
    return saved(commandDone);
}

std::int32_t resetEnvironment(commandCall& call) {
    if (call.valueOr<std::uint8_t>(0, 0) != 0) {
        dataSourceCloseAll();
        clearFolder(indexFolderPath());
    }
    if (call.valueOr<std::uint8_t>(1, 0) != 0 && !tempFilesFolder().empty()) clearFolder(tempFilesFolder());
    const std::int32_t status = resetDefinitionsAs(call.valueOr<std::uint32_t>(2, 0));
    return status == commandDone ? resetPreferencesAs(call.valueOr<std::uint32_t>(3, 0)) : status;
}

using enum commandStage;
constexpr auto any = commandMode::any;
constexpr auto merge = commandMode::merge;
constexpr auto price = commandMode::price;
using enum argumentType;

constexpr commandArgument setReportArgs[] = {
    itemIn(0, u8, "missing assets go to the run log"),
    itemIn(1, u8, "flags the record on overset text"),
    itemIn(2, u8, "flags the record on a missing or damaged picture"),
    itemIn(3, u8, "preference at 8,781"),
    itemIn(4, string, "extension of the report's file, at most 3 characters"),
    itemIn(5, u8, "preference at 8,786"),
};
constexpr commandArgument getReportArgs[] = {
    itemOut(0, u8, "missing assets go to the run log"),
    itemOut(1, u8, "flags the record on overset text"),
    itemOut(2, u8, "flags the record on a missing or damaged picture"),
    itemOut(3, u8, "preference at 8,781"),
    itemOut(4, string, "extension of the report's file"),
    itemOut(5, u8, "preference at 8,786"),
};
constexpr commandArgument setStringsArgs[] = {
    itemIn(0, string, "for no data"),
    itemIn(1, string, "for a missing picture"),
    itemIn(2, string, "for a missing article"),
    itemIn(3, string, "behind the end of the file"),
    itemIn(4, string, "stack pad"),
};
constexpr commandArgument getStringsArgs[] = {
    itemOut(0, string, "for no data"),
    itemOut(1, string, "for a missing picture"),
    itemOut(2, string, "for a missing article"),
    itemOut(3, string, "behind the end of the file"),
    itemOut(4, string, "stack pad"),
};
constexpr commandArgument setOutputArgs[] = {
    itemIn(0, u32, "file type: 1 native, 2 EPS, 3 PDF, 4 PostScript, 5 PPML, 6 VIPP, 7 VPS"),
    itemIn(1, string, "its extension, at most 5 characters"),
    itemIn(2, u8, "the affix of file names: 1 behind the name, 0 in front"),
    itemIn(3, string, "separator of the affix, at most 3 characters"),
    itemIn(4, u32, "records of a chunk, at most 250; 0 automatic"),
    itemIn(5, u8, "option A of drivers"),
    itemIn(6, u8, "control frames are honoured"),
    itemIn(7, u8, "document fonts are copied"),
    itemIn(8, u8, "the working copy has no window"),
    itemIn(9, u8, "option C of drivers, inverse"),
};
constexpr commandArgument getOutputArgs[] = {
    itemIn(0, u32, "file type"),
    itemOut(1, string, "its extension"),
    itemOut(2, u8, "the affix of file names: 1 behind the name, 0 in front"),
    itemOut(3, string, "separator of the affix"),
    itemOut(4, u32, "records of a chunk; 0 automatic"),
    itemOut(5, u8, "option A of drivers"),
    itemOut(6, u8, "control frames are honoured"),
    itemOut(7, u8, "document fonts are copied"),
    itemOut(8, u8, "the working copy has no window"),
    itemOut(9, u8, "option C of drivers, inverse"),
};
constexpr commandArgument setFlagArgs[] = {
    itemIn(0, u8, "preview reverts its changes"),
    itemIn(1, u8, "the document's definition is always used"),
    itemIn(2, u8, "data files are verified"),
    itemIn(3, u8, "sections are replicated"),
    itemIn(4, u8, "missing assets go to the run log"),
    itemIn(5, u8, "preference at 19,040"),
    itemIn(6, u8, "the data file is confirmed before a run"),
    itemIn(7, u8, "warns at the end"),
    itemIn(8, u8, "preference at 22,124"),
    itemIn(9, u8, "preview of tagged text"),
    itemIn(10, u8, "preference at 19,610"),
    itemIn(11, u8, "values are trimmed"),
};
constexpr commandArgument getFlagArgs[] = {
    itemOut(0, u8, "preview reverts its changes"),
    itemOut(1, u8, "the document's definition is always used"),
    itemOut(2, u8, "data files are verified"),
    itemOut(3, u8, "sections are replicated"),
    itemOut(4, u8, "missing assets go to the run log"),
    itemOut(5, u8, "preference at 19,040"),
    itemOut(6, u8, "the data file is confirmed before a run"),
    itemOut(7, u8, "warns at the end"),
    itemOut(8, u8, "preference at 22,124"),
    itemOut(9, u8, "preview of tagged text"),
    itemOut(10, u8, "preference at 19,610"),
    itemOut(11, u8, "values are trimmed"),
};
constexpr commandArgument priceFlagArgs[] = {
    itemIn(0, u8, "preference at 19,610"),
    itemIn(1, u8, "a flag of the price merge"),
};
constexpr commandArgument resetArgs[] = {
    itemIn(0, u8, "1 clears the folder of the index files"),
    itemIn(1, u8, "1 clears the folder of temporary files"),
    itemIn(2, u32, "1 forgets the definitions; 2 deletes their file first"),
    itemIn(3, u32, "1 restores the preferences; 2 lets the next start do so"),
};

constexpr commandRow rows[] = {
    {1229, "kKelvaneCmdSetReportOptions", merge, second, setReportOptions, setReportArgs, "Sets what runs report."},
    {1289, "kKelvaneCmdGetReportOptions", any, second, getReportOptions, getReportArgs, "What runs report."},
    {1230, "kKelvaneCmdSetDefaultStrings", merge, second, setDefaultStrings, setStringsArgs, "Sets stand-in texts."},
    {1290, "kKelvaneCmdGetDefaultStrings", any, second, getDefaultStrings, getStringsArgs, "The stand-in texts."},
    {1231, "kKelvaneCmdSetOutputOptions", merge, second, setOutputOptions, setOutputArgs,
     "Sets how outputs are named and made."},
    {1291, "kKelvaneCmdGetOutputOptions", any, second, getOutputOptions, getOutputArgs,
     "How outputs are named and made."},
    {1261, "kKelvaneCmdSetFlags", merge, second, setFlags, setFlagArgs, "Sets flags of the preferences."},
    {1288, "kKelvaneCmdGetFlags", any, second, getFlags, getFlagArgs, "Flags of the preferences."},
    {1272, "kKelvaneCmdSetPriceFlags", price, second, setPriceFlags, priceFlagArgs, "Sets flags of the price merge."},
    {1232, "kKelvaneCmdResetEnvironment", merge, second, resetEnvironment, resetArgs,
     "Clears folders, definitions, preferences."},
    {1267, "kKelvaneCmdResetEnvironment", price, second, resetEnvironment, resetArgs,
     "Clears folders, definitions, preferences."},
};

}  // namespace

std::span<const commandRow> preferenceRows() {
    return rows;
}

}  // namespace tarnova
