#include "merge/group_pictures.h"

#include "definitions/definition_state.h"
#include "definitions/record_def_set.h"
#include "document/document.h"
#include "document/walk.h"
#include "engine/module/execute.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "merge/picture_placing.h"

namespace tarnova {
namespace {

constexpr std::uint32_t groupPictureModule = signatureOf("AQME");
constexpr std::uint32_t commandPlaceFile = 56;
constexpr std::uint32_t commandPlaceMaster = 57;
constexpr std::uint32_t commandHasPicture = 58;
constexpr std::uint32_t commandRemovePicture = 59;

/// Sends the frame to the module; false when it failed or isn't there.
bool sendFrame(std::uint32_t command, UIDRef& frame, std::uint8_t* outFirst, std::uint8_t* outSecond) {
    commandArgs args{};
    args.item0 = &frame;
    args.item1 = outFirst;
    args.item2 = outSecond;
    commandReply reply{};
    commandBlock block{resultNobodyAnswered, command, &reply, &args};
    moduleCall(groupPictureModule, 0, block);
    return block.result == 0 && reply.status == 0;
}

/// A link that the definition doesn't have counts as locked.
bool linkIsLocked(const tagDataRec& tag) {
    extractionRec* link = nullptr;
    const recordDefRec* const definition = definitionState().currentRecordDef;
    if (definition == nullptr || findExtraction(definition, tag.extractionRecordName, link, 0) != 0) return true;
    return link == nullptr || link->locked != 0;
}

}  // namespace

bool ZavoDeleteGroupPictureCallback::TagIsMine(std::string_view data) {
    return !frameRef.database->isTextFrame(frameRef.uid) && tagRecordDecode(data, &tag, nullptr, nullptr, 0) == 0 &&
           tag.linkLocked == 0 && !linkIsLocked(tag);
}

std::int32_t ZavoDeleteGroupPictureCallback::TagProcess() {
    std::uint8_t hasGroup = 0, isPicture = 0;
    if (!sendFrame(commandHasPicture, frameRef, &hasGroup, &isPicture) || hasGroup == 0 || isPicture == 0) return 0;
    if (sendFrame(commandRemovePicture, frameRef, nullptr, nullptr)) ++removedCount;
    return 0;
}

std::uint16_t placeGroup(UIDRef frame, const std::string& path, std::uint32_t assetKind, const extractionRec& link) {
    auto& run = session();
    if (!run.companionModules.contains(groupPictureModule)) return frameMissing;
    IDFile file(path);
    PMString name(path);
    std::int16_t boxAction = link.pictureBoxAction, importPosition = link.importPosition;
    std::uint8_t takesBox = link.addPicBoxToGroup;
    UIDRef group;
    std::uint16_t added = 0;
    commandArgs args{};
    args.item0 = &frame;
    args.item1 = &file;
    args.item2 = &name;
    args.item3 = &boxAction;
    args.item4 = &takesBox;
    args.item5 = &importPosition;
    args.item6 = &group;
    args.item7 = &added;
    commandReply reply{};
    const std::uint32_t command = assetKind == assetKindMaster ? commandPlaceMaster : commandPlaceFile;
    commandBlock block{resultNobodyAnswered, command, &reply, &args};
    moduleCall(groupPictureModule, 0, block);
    if (block.result != 0 || reply.status != 0) {
        PMString text = PMString::ofKey("kZavoGroupPictureImportErrPart1Key");
        text.append(file.fileName()).append(PMString::ofKey("kZavoGroupPictureImportErrPart2Key"));
        reportErrorString(text);
        return frameAborted;
    }
    constexpr std::int16_t besideFrame = 1;
    if (importPosition == besideFrame) run.insertedItems = static_cast<std::uint16_t>(run.insertedItems + added);
    if (group && run.deferredItems) run.deferredItems->uids.push_back(group.uid);
    return framePlaced;
}

errorWord removeGroupPictures(UIDRef document, bool showProgress, std::uint32_t* outCount, errorWord priorError) {
    if (outCount != nullptr) *outCount = 0;
    auto& run = session();
    if (priorError != 0 || !run.companionModules.contains(groupPictureModule)) return priorError;
    ZavoDeleteGroupPictureCallback pictures(showProgress,
                                            PMString::ofKey("kZavoProcessingDocumentFramesMessageStringKey"));
    std::uint16_t cancel = 0;
    walkDocument(*document.database, &pictures, nullptr, run.walkFirstPage, run.walkLastPage, WalkScope::everything,
                 appPrefs().skipHiddenLayers != 0, appPrefs().skipPasteboard != 0, nullptr, nullptr, &cancel, false);
    if (cancel != 0) run.cancelRun = 1;
    if (outCount != nullptr) *outCount = pictures.removedCount;
    return run.engineError;
}

}  // namespace tarnova
