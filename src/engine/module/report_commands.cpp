// Commands about what a run has left for its reports.

#include <algorithm>
#include <cmath>

#include "data/record_range.h"
#include "document/document.h"
#include "engine/module/command_call.h"
#include "engine/module/command_rows.h"
#include "engine/module/front_document.h"
#include "engine/session/session.h"
#include "merge/placed_pictures.h"
#include "reports/document_analysis.h"

namespace tarnova {

namespace {

constexpr std::int32_t tableFull = 1;

std::int32_t addSignature(commandCall& call) {
    const auto wanted = call.valueOr<std::uint32_t>(0, 0);
    if (wanted == 0) return commandFailed;
    auto& table = session().signatureTable;
    if (std::find(std::begin(table), std::end(table), wanted) != std::end(table)) return commandDone;
    std::uint32_t* const slot = std::find(std::begin(table), std::end(table), 0U);
    if (slot == std::end(table)) return tableFull;
    *slot = wanted;
    return commandDone;
}

/// The status is the number of missing assets.
std::int32_t getReportCounts(commandCall& call) {
    const runListsRec& lists = session();
    call.put(0, static_cast<std::uint32_t>(lists.fontsInUse.size()));
    call.put(1, static_cast<std::uint32_t>(lists.oversetFrames.size()));
    call.put(2, static_cast<std::uint32_t>(lists.missingPictures.size()));
    if (auto* const used = call.item<std::vector<std::uint32_t>>(3))
        std::copy_if(std::begin(lists.signatureTable), std::end(lists.signatureTable), std::back_inserter(*used),
                     [](std::uint32_t signature) { return signature != 0; });
    return static_cast<std::int32_t>(lists.assetList.size());
}

/// Entry `index` of those of a kind; 0 counts all. Null behind the last.
const reportOrderRec* reportEntryAt(std::uint32_t index, std::uint16_t kind) {
    for (const reportOrderRec& entry : session().reportOrder) {
        if (kind != 0 && entry.kind != kind) continue;
        if (index-- == 0) return &entry;
    }
    return nullptr;
}

void putRecord(const commandCall& call, std::int32_t record) {
    call.put<std::int32_t>(6, record + 1);
}

std::int32_t getReportEntry(commandCall& call) {
    const reportOrderRec* const entry =
        reportEntryAt(call.valueOr<std::uint32_t>(0, 0), call.valueOr<std::uint16_t>(1, 0));
    if (entry == nullptr) return commandReportEnd;
    const runListsRec& lists = session();
    call.put(2, entry->kind);
    if (entry->kind == reportKindFont) {
        const fontNoteRec& font = lists.fontsInUse[entry->position];
        call.putString(3, font.name.view());
    } else if (entry->kind == reportKindOverset) {
        const oversetNoteRec& note = lists.oversetFrames[entry->position];
        call.putString(3, note.name.view());
        call.putString(4, note.text.view());
        call.putString(5, note.page.view());
        putRecord(call, note.record);
        call.put(7, note.frame);
    } else {
        const pictureNoteRec& note = lists.missingPictures[entry->position];
        call.putString(3, note.fileName.view());
        call.putString(4, note.text.view());
        call.putString(5, note.page.view());
        putRecord(call, note.record);
        call.put(7, note.frame);
    }
    return commandDone;
}

std::int32_t addAssetEntry(commandCall& call) {
    std::array<PMString, assetTextCount> entry;
    for (unsigned i = 0; i < assetTextCount; ++i)
        entry[i].set(call.string(i));
    session().assetList.push_back(std::move(entry));
    return commandDone;
}

std::int32_t getAssetEntry(commandCall& call) {
    const auto& list = session().assetList;
    const auto index = call.valueOr<std::uint32_t>(0, 0);
    if (index >= list.size()) return commandAssetIndex;
    for (unsigned i = 0; i < assetTextCount; ++i)
        call.putString(1 + i, list[index][i].view());
    return commandDone;
}

std::int32_t analyse(commandCall& call) {
    const UIDRef document = documentOrFront(call, 0);
    if (document.database == nullptr) return commandDocument;
    documentAnalysisRec found;
    const errorWord error = analyseDocument(document, found, 0);
    if (error != 0) return failWith(error, commandFailed);
    std::vector<PMString> fonts, pictures, missing;
    std::vector<std::int32_t> fontFlags;
    for (const usedFontRec& font : found.fonts) {
        fonts.emplace_back(font.family + " " + font.style);
        fontFlags.push_back(font.isMissing ? 1 : 0);
    }
    for (const std::string& path : found.pictures)
        pictures.emplace_back(path);
    for (const std::string& path : found.missingPictures)
        missing.emplace_back(path);
    call.put(1, static_cast<std::uint32_t>(found.pages));
    call.put(2, found.problems);
    call.put(3, fonts);
    call.put(4, fontFlags);
    call.put(5, pictures);
    call.put(6, missing);
    return commandDone;
}

/// No rule is worked out while no module does it.
std::int32_t getRuleContext(commandCall&) {
    return commandRunState;
}

std::int32_t getSourcePath(commandCall& call) {
    const Document* const document = session().runDocument.database;
    if (document == nullptr && session().sourceFile.empty()) return commandRunState;
    if (document == nullptr) {
        call.putString(0, session().sourceFile);
        return commandDone;
    }
    const std::string folder = document->documentFolder();
    call.putString(0, folder.empty() ? document->documentName() : folder + "/" + document->documentName());
    return commandDone;
}

std::int32_t getWorkingCopy(commandCall& call) {
    if (session().workingCopyMade == 0 || session().templateFile.empty()) return commandFailed;
    call.put(0, IDFile(session().templateFile));
    call.put(1, session().templateDoc);
    return commandDone;
}

/// Record of a position, from 0, through the record list: moved over the places without a record.
std::int32_t mappedPosition(std::int32_t position, std::int32_t step, bool staysPut) {
    const auto& list = session().recordList;
    if (list.empty()) return position;
    const auto limit = static_cast<std::int32_t>(list.size());
    while (!staysPut && position >= 0 && position < limit && list[static_cast<std::size_t>(position)] == recordListPad)
        position += step;
    return position >= 0 && position < limit ? list[static_cast<std::size_t>(position)] : position;
}

std::int32_t getRunPosition(commandCall& call) {
    const bool staysPut = call.valueOr<std::uint8_t>(5, 0) != 0;
    if (call.given(0)) call.put(0, mappedPosition(call.valueOr<std::int32_t>(0, 0), 1, staysPut) + 1);
    if (call.given(1)) call.put(1, mappedPosition(call.valueOr<std::int32_t>(1, 0), -1, staysPut) + 1);
    const auto& run = session();
    call.put(2, run.rangeFirst);
    call.put(3, run.rangeLast);
    call.put(4, run.recordPassMode);
    call.put<std::uint8_t>(6, run.recordPassMode > 2 ? 1 : 0);
    return commandDone;
}

std::vector<std::int32_t> fixedNumbers(const PMRect& values) {
    constexpr double one = 65536;
    std::vector<std::int32_t> out;
    for (const double value : {values.left, values.top, values.right, values.bottom})
        out.push_back(static_cast<std::int32_t>(std::lround(std::clamp(value, -32768.0, 32767.0) * one)));
    return out;
}

std::int32_t getPlacedPicture(commandCall& call) {
    const auto frame = call.valueOr<UIDRef>(0, {});
    if (!objectExists(frame)) return commandDocument;
    const placedPictureRec* const placed = placedPictureOf(frame);
    if (placed == nullptr) return commandFailed;
    call.put(2, placed->picturePosition);
    call.put(3, fixedNumbers(placed->frameBounds));
    call.put(4, fixedNumbers(placed->bleedBounds));
    const transformValuesRec& scale = placed->childTransform;
    call.put(5, fixedNumbers({scale.scaleX, scale.scaleY, placed->childOffset.x, placed->childOffset.y}));
    return call.putOwned(1, placed->picturePath) ? commandDone : commandMemory;
}

/// People count from 1.
std::int32_t getRecordListText(commandCall& call) {
    std::vector<std::int32_t> records = session().recordList;
    if (records.empty()) return commandDone;
    std::erase(records, recordListPad);
    for (std::int32_t& record : records)
        ++record;
    return call.putOwned(0, rangeTextOf(records).view()) ? commandDone : commandMemory;
}

using enum commandStage;
constexpr auto any = commandMode::any;
constexpr auto merge = commandMode::merge;
constexpr auto price = commandMode::price;
using enum argumentType;

constexpr commandArgument countArgs[] = {
    itemOut(0, u32, "fonts in use"),
    itemOut(1, u32, "overset texts"),
    itemOut(2, u32, "missing and damaged pictures"),
    itemOut(3, signatures, "the signatures"),
};
constexpr commandArgument entryArgs[] = {
    itemIn(0, u32, "index of the entry, from 0"),
    itemIn(1, u16, "kind: 1 font, 2 overset text, 3 picture; 0 any"),
    itemOut(2, u16, "kind of the entry"),
    itemOut(3, string, "its name"),
    itemOut(4, string, "its text"),
    itemOut(5, string, "name of the page"),
    itemOut(6, i32, "number of the record, from 1"),
    itemOut(7, uidRef, "the frame"),
};
constexpr commandArgument assetArgs[] = {
    itemIn(0, u32, "index of the entry, from 0"),
    itemOut(1, string, "first text"),
    itemOut(2, string, "second text"),
    itemOut(3, string, "third text"),
    itemOut(4, string, "fourth text"),
    itemOut(5, string, "fifth text"),
    itemOut(6, string, "sixth text"),
};
constexpr commandArgument addAssetArgs[] = {
    itemIn(0, string, "first text"),  itemIn(1, string, "second text"), itemIn(2, string, "third text"),
    itemIn(3, string, "fourth text"), itemIn(4, string, "fifth text"),  itemIn(5, string, "sixth text"),
};
constexpr commandArgument signatureArgs[] = {itemIn(0, signature, "the signature")};
constexpr commandArgument tagsReportArgs[] = {
    itemIn(0, uidRef, "the document; the one in front when not given"),
    itemOut(1, string, "the report, JSON"),
    itemIn(2, u8, "an option, 0 when not given"),
    itemIn(3, u8, "an option, 1 when not given"),
    itemIn(4, u8, "an option, 1 when not given"),
    itemIn(5, u8, "an option, 1 when not given"),
    itemIn(6, u8, "an option, 0 when not given"),
};
constexpr commandArgument placedArgs[] = {
    itemIn(0, uidRef, "the frame"),
    itemOut(1, ownedText, "path of the picture"),
    itemOut(2, u32, "its fit: 0 top left to 8, the frame as large as the picture"),
    itemOut(3, numbers, "left, top, right and bottom of the frame on its spread, in points with 16 fraction bits"),
    itemOut(4, numbers, "how far these sides lie outside of the page and its margins (command 504), likewise"),
    itemOut(5, numbers, "scale of the picture across and down, its offset from the frame's corner across and down"),
};
constexpr commandArgument analyseArgs[] = {
    itemIn(0, uidRef, "the document; the one in front when not given"),
    itemOut(1, u32, "pages"),
    itemOut(2, u32, "missing or outdated pictures, missing fonts, overset texts"),
    itemOut(3, strings, "fonts, by family and style"),
    itemOut(4, numbers, "their flags: 1 when another one stands in for it"),
    itemOut(5, strings, "pictures"),
    itemOut(6, strings, "missing pictures"),
};
constexpr commandArgument sourcePathArgs[] = {itemOut(0, string, "path of the run's document")};
constexpr commandArgument workingCopyArgs[] = {itemOut(0, file, "its file"), itemOut(1, uidRef, "the document")};
constexpr commandArgument ruleContextArgs[] = {itemOut(0, uidRef, "the document")};
constexpr commandArgument preflightAssetArgs[] = {
    itemIn(0, u32, "index of the asset, from 0"),
    itemOut(1, string, "its name"),
    itemOut(2, string, "its path"),
};
constexpr commandArgument positionArgs[] = {
    itemInOut(0, i32, "a position, that moves upward over skipped ones"),
    itemInOut(1, i32, "a position, that moves downward"),
    itemOut(2, u32, "first record of the range"),
    itemOut(3, u32, "last record of the range"),
    itemOut(4, u32, "the pass mode"),
    itemIn(5, u8, "1: skipped positions stay"),
    itemOut(6, u8, "stacks are made"),
};
constexpr commandArgument listTextArgs[] = {itemOut(0, ownedText, "the record list as a range; none without a list")};
constexpr commandArgument preflightArgs[] = {itemIn(0, uidRef, "the document")};

constexpr commandRow rows[] = {
    {1253, "kKelvaneCmdGetReportCounts", any, second, getReportCounts, countArgs,
     "How many entries the reports have; the status is the number of missing assets."},
    {1235, "kKelvaneCmdGetReportEntry", merge, second, getReportEntry, entryArgs, "An entry of the report."},
    {1251, "kKelvaneCmdGetAssetEntry", merge, second, getAssetEntry, assetArgs, "An entry of the asset report."},
    {1252, "kKelvaneCmdAddAssetEntry", any, second, addAssetEntry, addAssetArgs, "Adds one to the asset report."},
    {1223, "kKelvaneCmdAddSignature", any, second, addSignature, signatureArgs,
     "Notes a signature once; 1 when the 40 places are taken."},
    {575, "kKelvaneCmdGetPlacedPicture", any, second, getPlacedPicture, placedArgs,
     "What the run placed in a frame, or in the one that it shows again."},
    {1220, "kKelvaneCmdAnalyseDocument", merge, second, analyse, analyseArgs,
     "Updates linked files and lists pages, fonts and pictures of a document."},
    {1264, "kKelvaneCmdAnalyseDocument", price, second, analyse, analyseArgs,
     "Updates linked files and lists pages, fonts and pictures of a document."},
    {612, "kKelvaneCmdWriteTagsReport", any, second, nullptr, tagsReportArgs, "JSON of a document's rules and links."},
    {1277, "kKelvaneCmdGetSourcePath", any, second, getSourcePath, sourcePathArgs, "Path of the run's document."},
    {1296, "kKelvaneCmdGetWorkingCopy", any, second, getWorkingCopy, workingCopyArgs, "The working copy of a run."},
    {566, "kKelvaneCmdGetRuleContext", price, second, getRuleContext, ruleContextArgs,
     "Values of the evaluation of a rule that is under way."},
    {1241, "kKelvaneCmdGetPreflightAsset", merge, second, nullptr, preflightAssetArgs, "An asset of a preflight."},
    {1293, "kKelvaneCmdGetRunPosition", merge, second, getRunPosition, positionArgs,
     "Positions of a run through its record list."},
    {1294, "kKelvaneCmdGetRecordListText", merge, second, getRecordListText, listTextArgs,
     "The record list as a text."},
    {618, "kKelvaneCmdReadPreflightInfo", any, second, nullptr, preflightArgs, "Reads a document's preflight."},
    {616, "kKelvaneCmdClonePreflightInfo", any, second, nullptr, preflightArgs, "Copies a document's preflight."},
    {617, "kKelvaneCmdCheckTableLinks", any, second, nullptr, preflightArgs, "Checks the links of tables."},
};

}  // namespace

std::span<const commandRow> reportRows() {
    return rows;
}

}  // namespace tarnova
