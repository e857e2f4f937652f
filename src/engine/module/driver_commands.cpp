// Commands by which output drivers register, name their files and read what a build has made.

#include <algorithm>
#include <cstring>

#include "engine/module/command_call.h"
#include "engine/module/command_rows.h"
#include "engine/module/driver_table.h"
#include "engine/session/preferences_file.h"
#include "engine/session/session.h"
#include "output/build_tables.h"

namespace tarnova {

namespace {

std::int32_t registerDriver(commandCall& call) {
    if (call.block.reply == nullptr) return commandFailed;
    driverRegistrationRec registration;
    std::memcpy(&registration, call.block.reply, sizeof registration);
    registerOutputDriver(registration);
    savePreferences();
    return commandDone;
}

struct formatRow {
    const char* name;
    std::uint32_t fileType;
};
constexpr formatRow formats[] = {{"Native", 1}, {"EPS", 2},  {"PDF", 3}, {"PostScript", 4},
                                 {"PPML", 5},   {"VIPP", 6}, {"VPS", 7}, {"JDT", 8}};

std::uint32_t fileTypeOf(std::string_view name) {
    const auto* const found = std::find_if(std::begin(formats), std::end(formats),
                                           [name](const formatRow& row) { return ascii::equalNoCase(row.name, name); });
    return found == std::end(formats) ? 0 : found->fileType;
}

std::string nameAffix(const appPrefsRec& prefs, std::string_view first, std::string_view secondText) {
    const std::string separator(pstrView(prefs.fileAffixSeparator));
    std::string affix = prefs.fileAffixPosition == fileAffixBehind ? separator : "";
    affix += first;
    if (!first.empty() && !secondText.empty()) affix += "-";
    affix += secondText;
    if (prefs.fileAffixPosition == fileAffixInFront) affix += separator;
    return affix;
}

/// Appends the extension of the file type. The table ends at its first free row.
std::int32_t appendExtension(const appPrefsRec& prefs, std::uint32_t fileType, std::string& name) {
    if (fileType == 0) return commandDone;
    for (const fileExtensionRec& entry : prefs.extensionTable) {
        if (entry.fileType == 0) return commandDone;
        if (entry.fileType != fileType) continue;
        name += pstrView(entry.extension);
        return commandDone;
    }
    return 1;
}

std::int32_t makeOutputName(commandCall& call) {
    if (!call.given(3)) return commandFailed;
    const appPrefsRec& prefs = appPrefs();
    std::string name(call.pascal(3));
    const std::string affix = nameAffix(prefs, call.pascal(1), call.pascal(2));
    if (prefs.fileAffixPosition == fileAffixInFront) name.insert(0, affix);
    if (prefs.fileAffixPosition == fileAffixBehind) name += affix;
    const std::int32_t status = appendExtension(prefs, fileTypeOf(call.pascal(0)), name);
    call.putPascal(3, name);
    return status;
}

std::int32_t getSlotCounts(commandCall& call) {
    const std::int32_t firstSlot = call.valueOr<std::int32_t>(0, 0);
    const std::int32_t wanted = call.valueOr<std::int32_t>(1, 0);
    if (firstSlot < 0 || firstSlot >= session().slotCount) return 1;
    const appPrefsRec& prefs = appPrefs();
    std::int32_t all = 0, window = 0, print = 0;
    for (std::int32_t i = 0; i < session().slotCount; ++i) {
        const recordSlotRec& slot = *recordSlotAt(i);
        if ((slot.hasData & 1) == 0 && prefs.skipEmptySlots != 0) continue;
        ++all;
        if (i < firstSlot || print >= wanted) continue;
        ++window;
        if ((slot.hasMergeError & 1) == 0 || prefs.skipErrorSlots == 0) ++print;
    }
    call.put(2, all);
    call.put(3, window);
    call.put(4, print);
    return commandDone;
}

std::int32_t flagsOfPage(const pageMapRec& page, const recordSlotRec& slot) {
    return (page.linkCount > 0 ? 4 : 0) | ((slot.hasMergeError & 1) != 0 ? 2 : 0) | (page.pageFlags != 0 ? 1 : 0);
}

std::int32_t getPagesOfSlots(commandCall& call) {
    const sessionRec& run = session();
    const auto firstSlot = call.valueOr<std::int32_t>(0, 0);
    const std::int64_t limitSlot = std::int64_t{firstSlot} + call.valueOr<std::int32_t>(1, 0);
    if (run.templateDoc.database == nullptr) return 1;
    std::vector<std::int32_t> pages, flags;
    for (std::int32_t i = 0; i < run.pageEntryCount; ++i) {
        const pageMapRec& page = *pageMapAt(i);
        const recordSlotRec* const slot = recordSlotAt(page.slot);
        if (page.slot < firstSlot || page.slot >= limitSlot || slot == nullptr || (slot->hasData & 1) == 0) continue;
        pages.push_back(i);
        flags.push_back(flagsOfPage(page, *slot));
    }
    call.put(2, pages);
    call.put(3, flags);
    call.put(4, run.templateDoc);
    return commandDone;
}

pageMapRec* pageOf(const commandCall& call) {
    return call.given(0) ? pageMapAt(call.valueOr<std::int32_t>(0, 0)) : nullptr;
}

std::int32_t flagPage(commandCall& call) {
    pageMapRec* const page = pageOf(call);
    if (page == nullptr) return 1;
    page->pageFlags |= call.valueOr<std::uint16_t>(1, 0);
    return commandDone;
}

std::int32_t removePage(commandCall& call) {
    pageMapRec* const page = pageOf(call);
    if (page == nullptr) return 1;
    page->removeMe |= 1;
    return commandDone;
}

std::int32_t userNumber(std::int32_t record) {
    return record - static_cast<std::int32_t>(session().skipFirst) + 1;
}

std::int32_t paddedInUse(const recordSlotRec& slot) {
    const std::size_t count = handleSize(slot.paddedRecords) / sizeof(std::int32_t);
    const auto* const records = count == 0 ? nullptr : reinterpret_cast<const std::int32_t*>(*slot.paddedRecords);
    return static_cast<std::int32_t>(
        std::count_if(records, records + count, [](std::int32_t record) { return record != noPaddedRecord; }));
}

std::int32_t getSlotInfo(commandCall& call) {
    const recordSlotRec* const slot = call.given(0) ? recordSlotAt(call.valueOr<std::int32_t>(0, 0)) : nullptr;
    if (slot == nullptr) return 1;
    call.put<std::uint8_t>(1, slot->hasMergeError & 1);
    call.put(2, userNumber(slot->firstRecord));
    call.put(3, userNumber(slot->lastRecord));
    call.put(4, slot->missingTextCount);
    call.put(5, slot->missingPictureCount);
    call.put(6, paddedInUse(*slot));
    call.put(7, slot->damagedPictureCount);
    return commandDone;
}

std::int32_t getPageInfo(commandCall& call) {
    const pageMapRec* const page = pageOf(call);
    const recordSlotRec* const slot = page == nullptr ? nullptr : recordSlotAt(page->slot);
    if (slot == nullptr) return 1;
    call.put(1, page->slot);
    call.put(2, page->pageInSlot);
    call.put(3, userNumber(slot->firstRecord));
    call.put(4, userNumber(slot->lastRecord));
    return commandDone;
}

using enum commandStage;
constexpr auto any = commandMode::any;
constexpr auto merge = commandMode::merge;
using enum argumentType;

constexpr commandArgument registrationArg(registrationField field, argumentType type, const char* meaning) {
    return {argumentPlace::registration, static_cast<std::uint8_t>(field), type, argumentWay::in, meaning};
}
constexpr commandArgument registerArgs[] = {
    registrationArg(registrationField::driverId, u32, "id of the driver"),
    registrationArg(registrationField::driverGroup, u32, "0, or 1 for drivers that are listed behind the others"),
    registrationArg(registrationField::driverFlagA, u16, "kept for the driver"),
    registrationArg(registrationField::driverFlagB, u16, "kept for the driver"),
    registrationArg(registrationField::driverFlagC, u16, "kept for the driver"),
    registrationArg(registrationField::driverName, pascal, "name that people see"),
    registrationArg(registrationField::driverModule, signature, "signature of the module"),
};
constexpr commandArgument nameArgs[] = {
    itemIn(0, pascal, "format: None, Native, EPS, PDF, PostScript, VIPP, PPML, JDT or VPS, in any case"),
    itemIn(1, pascal, "first text of the affix"),
    itemIn(2, pascal, "second text of the affix"),
    itemInOut(3, pascal, "the base name, then the whole name"),
};
constexpr commandArgument slotCountArgs[] = {
    itemIn(0, i32, "first slot, from 0"),
    itemIn(1, i32, "number of slots"),
    itemOut(2, i32, "slots that count"),
    itemOut(3, i32, "slots in the window"),
    itemOut(4, i32, "slots of them to be printed"),
};
constexpr commandArgument pagesOfSlotsArgs[] = {
    itemIn(0, i32, "first slot, from 0"),        itemIn(1, i32, "number of slots"),
    itemOut(2, numbers, "indexes of the pages"), itemOut(3, numbers, "flags of the pages"),
    itemOut(4, uidRef, "the working copy"),
};
constexpr commandArgument flagPageArgs[] = {
    itemIn(0, i32, "index of the page, from 0"),
    itemIn(1, u16, "bits to set; a page with any is left out of printed numbering and never pruned"),
};
constexpr commandArgument removePageArgs[] = {itemIn(0, i32, "index of the page, from 0")};
constexpr commandArgument slotInfoArgs[] = {
    itemIn(0, i32, "index of the slot, from 0"), itemOut(1, u8, "it has a merge error"),
    itemOut(2, i32, "first record, from 1"),     itemOut(3, i32, "last record, from 1"),
    itemOut(4, i32, "overset stories"),          itemOut(5, i32, "missing pictures"),
    itemOut(6, i32, "records behind the range"), itemOut(7, i32, "damaged pictures"),
};
constexpr commandArgument pageInfoArgs[] = {
    itemIn(0, i32, "index of the page, from 0"),        itemOut(1, i32, "its slot"),
    itemOut(2, i32, "its place in the slot"),           itemOut(3, i32, "first record of the slot, from 1"),
    itemOut(4, i32, "last record of the slot, from 1"),
};
constexpr commandArgument documentInArgs[] = {itemIn(0, uidRef, "the document")};
constexpr commandArgument controlTextArgs[] = {
    itemIn(0, i32, "index of the page, from 0"),
    itemIn(1, u16, "0 file name, 1 number of copies"),
    itemOut(2, ownedText, "text of the control frame"),
    itemOut(3, u8, "record duplication gives it"),
};
constexpr commandArgument checkArgs[] = {
    itemIn(0, uidRef, "the document"),       itemIn(1, u8, "alert"),
    itemIn(2, u8, "show progress"),          itemIn(3, u8, "stop at the first problem"),
    itemIn(4, u8, "scan the stories' text"), itemOut(5, u8, "what that scan found"),
};

constexpr commandRow rows[] = {
    {243, "kKelvaneCmdRegisterOutputDriver", any, first, registerDriver, registerArgs, "Registers an output driver."},
    {246, "kKelvaneCmdRegisterOutputDriver", any, first, registerDriver, registerArgs, "Registers an output driver."},
    {538, "kKelvaneCmdMakeOutputName", any, second, makeOutputName, nameArgs,
     "Makes the name of an output file by the preferences."},
    {539, "kKelvaneCmdGetSlotCounts", any, second, getSlotCounts, slotCountArgs, "Counts the slots of a build."},
    {540, "kKelvaneCmdGetPagesOfSlots", any, second, getPagesOfSlots, pagesOfSlotsArgs, "Lists the pages of slots."},
    {541, "kKelvaneCmdFlagPage", merge, second, flagPage, flagPageArgs, "Marks a page of a build."},
    {542, "kKelvaneCmdGetSlotInfo", any, second, getSlotInfo, slotInfoArgs, "What a slot of a build received."},
    {543, "kKelvaneCmdGetPageInfo", any, second, getPageInfo, pageInfoArgs, "Where a page of a build belongs."},
    {547, "kKelvaneCmdGetControlFrameText", any, second, nullptr, controlTextArgs, "Text of a slot's control frame."},
    {570, "kKelvaneCmdCheckResources", any, second, nullptr, checkArgs, "Looks for missing fonts and links."},
    {572, "kKelvaneCmdCollectFonts", any, second, nullptr, documentInArgs, "Writes the document's fonts as resources."},
    {579, "kKelvaneCmdRemovePage", merge, second, removePage, removePageArgs, "Marks a page of a build for deletion."},
};

}  // namespace

std::span<const commandRow> driverRows() {
    return rows;
}

}  // namespace tarnova
