// Commands about the engine itself: versions, modes, modules that announce themselves, the run log, folders.

#include <cstring>
#include <filesystem>

#include "engine/module/command_call.h"
#include "engine/module/command_rows.h"
#include "engine/session/preferences_file.h"
#include "engine/session/session.h"
#include "engine/toolkit/files.h"
#include "engine/toolkit/run_log.h"

namespace tarnova {

namespace {

constexpr char versionText[] = "18.8.0.2";
constexpr std::uint32_t interfaceMajor = 5;
constexpr std::uint32_t interfaceMinor = 12;

std::int32_t interfaceVersion(commandCall& call) {
    call.args.versionMajor = interfaceMajor;
    call.args.versionMinor = interfaceMinor;
    return commandDone;
}

std::int32_t doNothing(commandCall&) {
    return commandDone;
}

std::int32_t anyModeAttached(commandCall& call) {
    call.reply.isSubset = session().mergeAttached != 0 || session().priceAttached != 0 ? 1 : 0;
    return commandDone;
}

/// Notes that the modules of these presence bytes are there.
std::int32_t announce(std::initializer_list<std::size_t> presence) {
    for (const std::size_t index : presence)
        appPrefs().modulePresence[index] = 1;
    savePreferences();
    return commandDone;
}
std::int32_t announceModule1(commandCall&) {
    return announce({0, 1});
}
std::int32_t announceModule2(commandCall& call) {
    session().announcedCount = call.reply.count;
    return announce({6});
}
std::int32_t announceModule3(commandCall&) {
    return announce({5});
}
std::int32_t announceModule4(commandCall&) {
    return announce({7});
}
std::int32_t announceModule5(commandCall&) {
    return announce({8});
}

std::int32_t enterMode(std::uint16_t mode) {
    return codeOfError(switchEngineMode(mode, true));
}
std::int32_t enterPriceMode(commandCall&) {
    return enterMode(modePrice);
}
std::int32_t enterMergeMode(commandCall&) {
    return enterMode(modeMerge);
}

std::int32_t attachMergeMode(commandCall&) {
    session().mergeAttached = 1;
    return enterMode(modeMerge);
}

std::int32_t attachPriceMode(commandCall&) {
    session().priceAttached = 1;
    const bool wanted = session().mergeAttached == 0 || appPrefs().lastEngineMode == modePrice;
    return wanted ? enterMode(modePrice) : commandDone;
}

std::int32_t getMode(commandCall& call) {
    const std::uint16_t mode = session().engineMode;
    call.put<std::uint8_t>(0, mode == modePrice ? session().priceDocumentFlag : std::uint8_t{0});
    call.put<std::uint16_t>(1, mode);
    return commandDone;
}

std::int32_t getVersionText(commandCall& call) {
    call.put<const char*>(0, versionText);
    return commandDone;
}

std::int32_t refreshPanels(commandCall&) {
    session().panelsStale = 1;
    return commandDone;
}

std::int32_t markDocumentFile(commandCall& call) {
    const IDFile* const file = call.item<IDFile>(0);
    if (file == nullptr) return commandFailed;
    session().engineOpenedFile = *file;
    session().engineOpenedFileSet = 1;
    return commandDone;
}

std::int32_t clearDocumentFile(commandCall&) {
    session().engineOpenedFile.clear();
    session().engineOpenedFileSet = 0;
    return commandDone;
}

std::int32_t setLogFile(commandCall& call) {
    const char* const path = call.item<char>(0);
    session().runLogPath = path == nullptr ? "" : path;
    if (session().runLogPath.empty() || fileIsPlain(path) == 0) return commandDone;
    return fileDelete(path, nullptr, 0) == 0 ? commandDone : commandFailed;
}

std::int32_t showAlerts(commandCall& call) {
    session().showAlertsUnattended = call.valueOr<std::uint8_t>(0, session().showAlertsUnattended) != 0 ? 1 : 0;
    return commandDone;
}

/// The length is held to the text, which has a terminator.
std::int32_t logLine(commandCall& call) {
    const char* const text = call.item<char>(0);
    if (text == nullptr) return commandFailed;
    const std::size_t whole = std::strlen(text);
    const std::size_t length = std::min<std::size_t>(whole, call.valueOr<std::uint32_t>(1, UINT32_MAX));
    return runLogAppend(text, length);
}

std::int32_t getTempFolder(commandCall& call) {
    const std::string folder = tempFilesFolder();
    if (!call.given(0) || folder.empty()) return commandFailed;
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (failure) return commandFailed;
    return call.putOwned(0, folder) ? commandDone : commandMemory;
}

using enum commandStage;
constexpr auto any = commandMode::any;
constexpr auto merge = commandMode::merge;
using enum argumentType;

constexpr commandArgument versionArgs[] = {
    {argumentPlace::version, 0, u32, argumentWay::out, "5"},
    {argumentPlace::version, 1, u32, argumentWay::out, "12"},
};
constexpr commandArgument attachedArgs[] = {replyOut(replyField::isSubset, u8, "1 when a mode is attached")};
constexpr commandArgument announceArgs[] = {replyIn(replyField::count, u32, "kept for the module")};
constexpr commandArgument getModeArgs[] = {
    itemOut(0, u8, "the price document flag in price mode, else 0"),
    itemOut(1, u16, "0 merge mode, 1 price mode"),
};
constexpr commandArgument versionTextArgs[] = {itemOut(0, constantText, "the version of the engine")};
constexpr commandArgument documentFileArgs[] = {itemIn(0, file, "a document's file")};
constexpr commandArgument logFileArgs[] = {itemIn(0, cString, "path of the run log; empty or not given for none")};
constexpr commandArgument showAlertsArgs[] = {itemIn(0, u8, "1 shows alerts also in an unattended run")};
constexpr commandArgument logLineArgs[] = {
    itemIn(0, cString, "the line"),
    itemIn(1, u32, "bytes of it; all when not given"),
};
constexpr commandArgument tempFolderArgs[] = {itemOut(0, ownedText, "path of the folder, which is made")};
constexpr commandArgument editTextArgs[] = {itemInOut(0, string, "the text"), itemIn(1, string, "the dialog's title")};

constexpr commandRow rows[] = {
    {401, "kKelvaneCmdInterfaceVersion", any, first, interfaceVersion, versionArgs, "Version of this interface."},
    {545, "kKelvaneCmdAnyModeAttached", any, first, anyModeAttached, attachedArgs, "Is merge or price mode attached?"},
    {556, "kKelvaneCmdAnnounceModule1", any, first, announceModule1, {}, "A companion module tells that it is there."},
    {569, "kKelvaneCmdAnnounceModule2", any, first, announceModule2, announceArgs,
     "A companion module tells that it is there."},
    {585, "kKelvaneCmdAnnounceModule3", any, first, announceModule3, {}, "A companion module tells that it is there."},
    {609, "kKelvaneCmdAnnounceModule4", any, first, announceModule4, {}, "A companion module tells that it is there."},
    {619, "kKelvaneCmdAnnounceModule5", any, first, announceModule5, {}, "A companion module tells that it is there."},
    {1400, "kKelvaneCmdAttachMergeMode", any, first, attachMergeMode, {}, "Attaches merge mode and switches to it."},
    {1401,
     "kKelvaneCmdAttachPriceMode",
     any,
     first,
     attachPriceMode,
     {},
     "Attaches price mode; switches to it when merge mode isn't attached or price mode was the one last used."},
    {1262, "kKelvaneCmdEnterPriceMode", any, second, enterPriceMode, {}, "Switches to price mode."},
    {1263, "kKelvaneCmdEnterMergeMode", any, second, enterMergeMode, {}, "Switches to merge mode."},
    {1256, "kKelvaneCmdGetMode", any, second, getMode, getModeArgs, "The mode in force."},
    {1408, "kKelvaneCmdGetVersionText", any, second, getVersionText, versionTextArgs,
     "The engine's version as a text."},
    {1274, "kKelvaneCmdRefreshPanels", any, second, refreshPanels, {}, "Panels are drawn anew at the next idle turn."},
    {614, "kKelvaneCmdMarkDocumentFile", any, second, markDocumentFile, documentFileArgs,
     "Notes a file whose document the document watch leaves alone."},
    {615, "kKelvaneCmdClearDocumentFile", any, second, clearDocumentFile, {}, "Forgets that file."},
    {1204, "kKelvaneCmdSetLogFile", merge, second, setLogFile, logFileArgs,
     "Sets the run log; a file of that name is deleted."},
    {1213, "kKelvaneCmdShowAlerts", merge, second, showAlerts, showAlertsArgs,
     "Shows alerts in unattended runs, or not."},
    {1214, "kKelvaneCmdLogLine", any, second, logLine, logLineArgs, "Writes a line to the run log."},
    {537, "kKelvaneCmdGetTempFolder", any, second, getTempFolder, tempFolderArgs, "The folder for temporary files."},
    {549, "kKelvaneCmdShowDefinitionsDialog", any, second, nullptr, {}, "Opens the dialog of the definitions."},
    {1239, "kKelvaneCmdEditText", any, second, nullptr, editTextArgs, "Opens the text edit dialog."},
    {571, "kKelvaneCmdNothing571", any, second, doNothing, {}, "Does nothing."},
    {577, "kKelvaneCmdNothing577", any, second, doNothing, {}, "Does nothing."},
    {1306, "kKelvaneCmdNothing1306", any, second, doNothing, {}, "Does nothing."},
};

}  // namespace

std::span<const commandRow> moduleRows() {
    return rows;
}

}  // namespace tarnova
