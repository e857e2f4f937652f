// Commands on page items: their names, their marks, what is selected, pages of placed PDFs.

#include <algorithm>

#include "document/document_host.h"
#include "document/item_data.h"
#include "document/walk.h"
#include "engine/module/command_rows.h"
#include "engine/module/front_document.h"
#include "engine/session/session.h"
#include "engine/toolkit/byte_order.h"
#include "merge/group_pictures.h"
#include "merge/pdf_options.h"
#include "output/control_frames.h"

namespace tarnova {

namespace {

constexpr std::int32_t noneFound = 1;

// Names.

constexpr std::uint32_t frameNameVersion = 1;
constexpr std::size_t frameNameOffset = 4;  // of the Pascal string, behind the version

/// The name in a stored entry, as far as it is there.
std::string_view frameNameIn(std::string_view entry) {
    if (entry.size() <= frameNameOffset) return {};
    return entry.substr(frameNameOffset + 1, static_cast<std::uint8_t>(entry[frameNameOffset]));
}

std::int32_t setFrameName(commandCall& call) {
    const auto frame = call.valueOr<UIDRef>(0, {});
    if (!objectExists(frame)) return commandDocument;
    struct {
        std::uint8_t version[frameNameOffset];
        Str255 name;
    } entry{};
    storeBig32(entry.version, frameNameVersion);
    pstrSet(entry.name, call.string(1));
    const void* const data = entry.name[0] == 0 ? nullptr : &entry;
    const std::uint16_t done =
        itemDataSet(frame, ItemDataPlace::pageItem, itemDataFrameName, data, sizeof entry, session().engineMode);
    return done != 0 ? commandDone : commandFailed;
}

std::int32_t getFrameName(commandCall& call) {
    const auto frame = call.valueOr<UIDRef>(0, {});
    if (!objectExists(frame)) return commandDocument;
    const auto entry = itemDataView(frame, ItemDataPlace::pageItem, itemDataFrameName, session().engineMode);
    if (entry) call.putString(1, frameNameIn(*entry));
    return commandDone;
}

/// Ends its walk at the first frame of a name, on one page or any.
class ZavoNamedObjectCallback final : public ZavoFrameCallback {
 public:
    ZavoNamedObjectCallback(std::string_view itsName, UID itsPage) : name(itsName), page(itsPage) {
        SetSignature(itemDataFrameName);
    }
    bool TagIsMine(std::string_view data) override {
        const bool onPage = page == kInvalidUID || frameRef.database->pageOfItem(frameRef.uid).page == page;
        if (!onPage || !ascii::equalNoCase(frameNameIn(data), name)) return false;
        found = frameRef;
        *cancel = 1;
        return false;
    }

    UIDRef found;

 private:
    std::string_view name;
    UID page;
};

std::int32_t findNamedFrame(commandCall& call) {
    const UIDRef document = documentOrFront(call, 0);
    if (document.database == nullptr) return commandDocument;
    const auto pageNumber = call.valueOr<std::int32_t>(2, 0);
    const bool hasPage = pageNumber >= 1 && pageNumber <= document.database->pageCount();
    if (call.string(1).empty() || (pageNumber != 0 && !hasPage)) return noneFound;
    ZavoNamedObjectCallback callback(call.string(1), hasPage ? document.database->pageAt(pageNumber - 1) : kInvalidUID);
    walkDocument(*document.database, &callback, nullptr, pageNumber, pageNumber, WalkScope::pagesOnly, false, false,
                 nullptr, nullptr, nullptr, true);
    call.put(3, callback.found);
    return callback.found ? commandDone : noneFound;
}

// Marks.

std::int32_t isVariableFrame(commandCall& call) {
    const auto frame = call.valueOr<UIDRef>(0, {});
    if (!objectExists(frame)) return commandDocument;
    const auto entry = itemDataView(frame, ItemDataPlace::pageItem, itemDataPassThrough, session().engineMode);
    call.put<std::uint16_t>(1, entry ? 1 : 0);
    return commandDone;
}

std::int32_t getControlFrameKind(commandCall& call) {
    const auto frame = call.valueOr<UIDRef>(0, {});
    if (!objectExists(frame)) return commandDocument;
    const std::optional<std::int32_t> kind = controlKindOf(frame);
    call.put<std::uint16_t>(1, kind ? 1 : 0);
    call.put<std::uint16_t>(2, static_cast<std::uint16_t>(kind.value_or(0)));
    return commandDone;
}

std::int32_t listControlFrames(commandCall& call) {
    const UIDRef document = documentOrFront(call, 0);
    if (document.database == nullptr) return commandDocument;
    call.put<UIDList>(1, {document.database, controlFramesOf(*document.database)});
    return commandDone;
}

/// Pages count from 1; both 0 mean all. A frame on the pasteboard lies on none.
std::int32_t filterControlFrames(commandCall& call) {
    const UIDList* const list = call.item<UIDList>(0);
    if (list == nullptr || list->database == nullptr) return commandDocument;
    const auto kind = call.valueOr<std::uint16_t>(1, 0);
    const auto firstPage = call.valueOr<std::int32_t>(2, 0), lastPage = call.valueOr<std::int32_t>(3, 0);
    UIDList kept{list->database, {}};
    for (const UID frame : list->uids) {
        if (!list->database->itemExists(frame) || controlKindOf({list->database, frame}) != kind) continue;
        const std::int32_t number = list->database->pageIndex(list->database->pageOfItem(frame).page) + 1;
        if ((firstPage != 0 || lastPage != 0) && (number < firstPage || number > lastPage || number == 0)) continue;
        kept.uids.push_back(frame);
    }
    call.put(4, kept);
    return commandDone;
}

// The selection.

/// The item, or with `expand` the members of a group in its place.
void listItem(const Document& document, UID item, bool expand, std::vector<UID>& items) {
    if (!expand || !document.isGroup(item)) return items.push_back(item);
    for (std::int32_t i = 0; i < document.childCount(item); ++i)
        listItem(document, document.childAt(item, i), expand, items);
}

std::int32_t getSelection(commandCall& call) {
    DocumentHost* const host = session().documentHost;
    const UIDRef document = frontDocument();
    if (document.database == nullptr) return commandDocument;
    UIDList listed{document.database, {}};
    for (const UID item : host->selection(document).items)
        listItem(*document.database, item, call.args.flag0 != 0, listed.uids);
    call.put(0, listed);
    return commandDone;
}

std::int32_t setSelection(commandCall& call) {
    DocumentHost* const host = session().documentHost;
    const UIDList* const list = call.item<UIDList>(0);
    const UIDRef document = list == nullptr || list->database == nullptr ? frontDocument() : list->database->ref();
    if (host == nullptr || document.database == nullptr) return commandDocument;
    selectionRec selection;
    if (call.args.flag0 != 0) selection.items = host->selection(document).items;
    for (const UID item : list == nullptr ? std::vector<UID>() : list->uids)
        if (std::find(selection.items.begin(), selection.items.end(), item) == selection.items.end())
            selection.items.push_back(item);
    const bool done = host->select(document, selection) == 0;
    call.put<std::uint16_t>(1, done ? 1 : 0);
    return done ? commandDone : commandFailed;
}

// Pages.

std::int32_t setPdfPage(commandCall& call) {
    const auto frame = call.valueOr<UIDRef>(0, {});
    if (!objectExists(frame)) return commandDocument;
    pdfPlacePrefsRec options = framePdfOptions(frame);
    const auto page = call.valueOr<std::int32_t>(1, 1);
    if (page < 1) return commandFailed;
    options.page = static_cast<std::uint32_t>(page);
    options.crop = call.valueOr(2, options.crop);
    options.transparent = call.valueOr(3, options.transparent);
    const PMString title = PMString::ofKey("kZavoSetPDFPageNumberMenuKey");
    errorWord err = frame.database->BeginCommandSequence(title.view());
    if (err != 0) return failWith(err, commandFailed);
    err = setFramePdfOptions(frame, options, 0);
    frame.database->EndCommandSequence();
    return err == 0 ? commandDone : failWith(err, commandFailed);
}

std::int32_t removeMastersOfPage(commandCall& call) {
    const auto page = call.valueOr<UIDRef>(0, {});
    if (page.database == nullptr || page.database->pageIndex(page.uid) < 0) return commandDocument;
    const errorWord err = page.database->applyMaster({page.uid}, kInvalidUID);
    return err == 0 ? commandDone : failWith(err, commandFailed);
}

std::int32_t deleteGroupPictures(commandCall& call) {
    const UIDRef document = documentOrFront(call, 0);
    if (document.database == nullptr) return commandDocument;
    std::uint32_t count = 0;
    const errorWord err = removeGroupPictures(document, appPrefs().showProgress != 0, &count, 0);
    call.put(1, count);
    return err == 0 ? commandDone : failWith(err, commandFailed);
}

using enum commandStage;
constexpr auto any = commandMode::any;
using enum argumentType;

constexpr commandArgument findFrameArgs[] = {
    itemIn(0, uidRef, "the document; the one in front when not given"),
    itemIn(1, string, "name of the frame, in any case"),
    itemIn(2, i32, "page, from 1; 0 for all"),
    itemOut(3, uidRef, "the first frame of that name"),
};
constexpr commandArgument setNameArgs[] = {itemIn(0, uidRef, "the frame"), itemIn(1, string, "name; empty for none")};
constexpr commandArgument getNameArgs[] = {itemIn(0, uidRef, "the frame"), itemOut(1, string, "its name")};
constexpr commandArgument variableArgs[] = {
    itemIn(0, uidRef, "the frame"),
    itemOut(1, u16, "1 when it is marked as pass-through"),
};
constexpr commandArgument controlKindArgs[] = {
    itemIn(0, uidRef, "the frame"),
    itemOut(1, u16, "1 when it is a control frame"),
    itemOut(
        2, u16,
        "its kind: 0 file name, 1 number of copies, 2 to 5 PostScript at document start and end, page start and end"),
};
constexpr commandArgument listFramesArgs[] = {
    itemIn(0, uidRef, "the document; the one in front when not given"),
    itemOut(1, uidList, "all control frames"),
};
constexpr commandArgument filterFramesArgs[] = {
    itemIn(0, uidList, "control frames"),
    itemIn(1, u16, "kind"),
    itemIn(2, i32, "first page, from 1"),
    itemIn(3, i32, "last page; both 0 for all"),
    itemOut(4, uidList, "those of the kind and pages"),
};
constexpr commandArgument listedArgs[] = {itemIn(0, u32, "number of a page item"), itemOut(1, u16, "its flag")};
constexpr commandArgument selectionArgs[] = {
    flagIn(0, "1 lists the members of groups in place of the groups"),
    itemOut(0, uidList, "the selected items of the document in front"),
};
constexpr commandArgument selectArgs[] = {
    itemIn(0, uidList, "page items; none to select nothing"),
    flagIn(0, "1 adds them to what is selected"),
    itemOut(1, u16, "1 when it was done"),
};
constexpr commandArgument pdfPageArgs[] = {
    itemIn(0, uidRef, "the frame"),
    itemIn(1, i32, "the page, from 1"),
    itemIn(2, u32, "crop, as the host counts; stays when not given"),
    itemIn(3, u16, "1: the ground is transparent; stays when not given"),
};
constexpr commandArgument pageArgs[] = {itemIn(0, uidRef, "the page")};
constexpr commandArgument groupPictureArgs[] = {itemIn(0, uidRef, "the document; the one in front when not given"),
                                                itemOut(1, u32, "how many went")};

constexpr commandRow rows[] = {
    {1217, "kKelvaneCmdFindNamedFrame", any, second, findNamedFrame, findFrameArgs,
     "Finds a frame by the name that command 1218 gave it; 1 for none."},
    {1218, "kKelvaneCmdSetFrameName", any, second, setFrameName, setNameArgs, "Names a frame."},
    {1219, "kKelvaneCmdGetFrameName", any, second, getFrameName, getNameArgs, "Name of a frame."},
    {587, "kKelvaneCmdIsVariableFrame", any, second, isVariableFrame, variableArgs, "Is a frame marked?"},
    {1406, "kKelvaneCmdGetControlFrameKind", any, second, getControlFrameKind, controlKindArgs,
     "Is a frame a control frame?"},
    {588, "kKelvaneCmdListControlFrames", any, second, listControlFrames, listFramesArgs,
     "All control frames of a document."},
    {589, "kKelvaneCmdFilterControlFrames", any, second, filterControlFrames, filterFramesArgs,
     "Control frames of a kind."},
    {1407, "kKelvaneCmdGetListedFlag", any, second, nullptr, listedArgs, "Flag of an item in the run's list."},
    {580, "kKelvaneCmdGetSelection", any, second, getSelection, selectionArgs, "The selected page items."},
    {581, "kKelvaneCmdSetSelection", any, second, setSelection, selectArgs, "Selects page items."},
    {1279, "kKelvaneCmdSetPdfPage", any, second, setPdfPage, pdfPageArgs,
     "Sets which page of a PDF a frame shows, in one step that can be undone."},
    {620, "kKelvaneCmdRemoveMastersOfPage", any, second, removeMastersOfPage, pageArgs, "Takes the master off a page."},
    {59, "kKelvaneCmdDeleteGroupPictures", any, second, deleteGroupPictures, groupPictureArgs,
     "Removes the group pictures of the page range."},
};

}  // namespace

std::span<const commandRow> frameRows() {
    return rows;
}

}  // namespace tarnova
