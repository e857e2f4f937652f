// The merge of frames that take a file: finding what the value names, placing it, and showing what went wrong.

#include "document/document.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/id_file.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/text_encoding.h"
#include "merge/asset_search.h"
#include "merge/group_pictures.h"
#include "merge/message_picture.h"
#include "merge/pdf_options.h"
#include "merge/placed_pictures.h"
#include "merge/pull_frame_callback.h"
#include "tags/change_keys.h"
#include "tags/tag_text.h"

namespace tarnova {
namespace {

constexpr std::int16_t runAborted = -1006;
constexpr std::uint16_t messageNotFound = 90;
constexpr std::string_view noPath = "???";  // of a substitute that isn't named

bool isUnattended() {
    return session().unattended != 0 && session().showAlertsUnattended == 0;
}

/// The files of a run that are made for each value keep their names.
bool linksGoStale() {
    if (isPriceRun()) return true;
    switch (appPrefs().mergeRunType) {
        case mergeRunBuildDocument:
        case mergeRunCurrentDocument:
        case mergeRunPreview:
        case mergeRunTest:
            return session().engineRunType == engineRunMerge;
        default:
            return false;
    }
}

bool isStandIn(std::string_view path) {
    const defaultStringSet& texts = appPrefs().textDefaults;
    return path == pstrView(texts.noData.string) || path == pstrView(texts.endOfFile.string) ||
           path == pstrView(texts.stackPad.string);
}

}  // namespace

/// Looks for the file that the value names. A text that stands in for missing data may name one too.
errorWord ZavoPullFrameCallback::findFrameAsset(errorWord priorError) {
    if (priorError != 0 || session().engineRunType == engineRunLineTest) return priorError;
    newPath = utf32ToUtf8(newText);
    const extractionRec* const link = value.extraction;
    if (link != nullptr) fit = {link->picturePosition, link->hAlign, link->vAlign};
    pdf = framePdfOptions(frameRef);
    if (value.status != fetchFound) {
        const bool isOwnText = value.status == fetchNoData && !newPath.empty() && link->nodata == nodataCustom;
        if (!isOwnText) return 0;
        value.status = fetchFound;
    }
    return findPath(newPath);
}

/// Searches for a name; `newPath` takes the path when there is one.
errorWord ZavoPullFrameCallback::findPath(const std::string& name) {
    assetSearchRec search = assetSearchOf(*frameRef.database, name, value.encoding);
    const bool isGroup = value.extraction != nullptr && value.extraction->type == linkTypeGroupPicture;
    search.useMasters = isGroup && appPrefs().groupPicturesUseMasters != 0;
    std::string path;
    const errorWord error = findAsset(search, path, assetFound, assetKind, 0);
    if (assetFound) newPath = path;
    return error;
}

errorWord ZavoPullFrameCallback::applyFrameValue(errorWord priorError) {
    if (priorError != 0 || session().engineRunType == engineRunLineTest) return priorError;
    Document& document = *frameRef.database;
    if (document.childCount(frameRef.uid) > 0) oldPath = document.linkPath(document.childAt(frameRef.uid, 0));
    if (value.status != fetchFound) return applyStatus();
    frameResult = placeAsset();
    if (frameResult == framePlaced) return session().engineError;
    if (frameResult == frameAborted) {
        *cancel |= 1;
        session().runResult = runAborted;
        return 0;
    }
    const errorWord error = clearPassThrough();
    if (error != 0) return error;
    if (frameResult == frameDamaged && promptsAreOn()) {
        tellDamaged();
        if (*cancel != 0) return 0;
    }
    return isMerged() && hasValue ? showProblem() : errorWord{0};
}

/// A picture that couldn't be placed can't be passed through to an output either.
errorWord ZavoPullFrameCallback::clearPassThrough() {
    if (appPrefs().mergeRunType != mergeRunDriver) return 0;
    const std::uint16_t store = session().engineMode;
    if (!itemDataView(frameRef, ItemDataPlace::pageItem, itemDataPassThrough, store)) return 0;
    const bool done = itemDataSet(frameRef, ItemDataPlace::pageItem, itemDataPassThrough, nullptr, 0, store) != 0;
    return done ? errorWord{0} : errFailed;
}

/// What a frame shows when there is no value to be placed.
errorWord ZavoPullFrameCallback::applyStatus() {
    if (!isMerged() || (!hasValue && !deleteMode)) {
        newPath = oldPath;
        return 0;
    }
    if (deleteMode) return deleteFrame("kZavoBoxDeletedStringKey");
    const appPrefsRec& prefs = appPrefs();
    const bool isText = frameRef.database->isTextFrame(frameRef.uid);
    const defaultStringSet& set = isText ? prefs.textDefaults : prefs.pictureDefaults;
    switch (value.status) {
        case fetchNoData:
            return showText(newText);
        case fetchNoMatch:
            return set.noMatch.enable != 0 ? showText(newText) : errorWord{0};
        case fetchBadTag:
            return set.badTag.enable != 0 ? showText(newText) : errorWord{0};
        default:
            return 0;
    }
}

errorWord ZavoPullFrameCallback::showText(std::u32string_view text) {
    if (frameRef.database->isTextFrame(frameRef.uid)) return setFrameText(frameRef, text);
    return messagePicture(frameRef, text, pdf.page);
}

bool ZavoPullFrameCallback::promptsAreOn() const {
    const bool isArticle = value.extraction != nullptr && value.extraction->type == linkTypeArticle;
    const bool wanted = isArticle ? pictureRun().promptArticles : pictureRun().promptPictures;
    return appPrefs().promptMissingAssets != 0 && wanted && !isUnattended();
}

/// Asks whether the run goes on with a file that can't be placed.
void ZavoPullFrameCallback::tellDamaged() {
    const IDFile file(newPath);
    const bool isPdf = ascii::equalNoCase(file.extension(), "pdf");
    const PMString name(file.fileName());
    PMString text = PMString::ofKey(isPdf ? "kZavoPDFPlaceErrorStringKey" : "kZavoFilePlaceErrorContinuePromptMsgKey");
    pmSubstitute(text, &name);
    Str255 pascal;
    pstrFromPm(text, pascal);
    const pictureAnswer answer = askPictureProblem(pascal, nullptr, nullptr, nullptr, nullptr);
    if (answer == pictureAnswer::abort) *cancel |= 1;
    if (answer == pictureAnswer::noPrompt) pictureRun().promptPictures = false;
}

/// Says in the frame what is wrong with its file, as far as the link and the preferences want it.
errorWord ZavoPullFrameCallback::showProblem() {
    const bool isMissing = frameResult == frameMissing;
    if (isMissing) {
        if (appPrefs().logMissing == 0) return 0;
        const std::int16_t missing = value.extraction != nullptr ? value.extraction->missingasset : 0;
        if (missing == missingAssetKeepFrame) return 0;
        if (missing == missingAssetDeleteFrame) return frameRef.database->deleteItem(frameRef.uid);
    }
    const PMString path(newPath);
    if (frameResult == frameOtherPage) {
        const PMString page(std::to_string(pdf.page));
        PMString text = PMString::ofKey("kZavoPDFPageImportErrorKey");
        pmSubstitute(text, &page, &path);
        return showText(text.codePoints());
    }
    return showText(PMString(isMissing ? "<MISSING!> " : "<DAMAGED!> ").append(path).codePoints());
}

/// Places what was found, or asks for it. Gives the frame's result.
std::uint16_t ZavoPullFrameCallback::placeAsset() {
    if (!isMerged() || !hasValue) {
        newPath = oldPath;
        return framePlaced;
    }
    if (!assetFound) {
        const std::uint16_t result = promptsAreOn()   ? askForAsset()
                                     : isUnattended() ? frameMissing
                                                      : missingSubstitute();
        if (!assetFound) return result;
    }
    return placeFound();
}

/// The question about a missing file. A chosen one is remembered for all later records with the same name.
std::uint16_t ZavoPullFrameCallback::askForAsset() {
    if (appPrefs().pastEndCounts == 0 && isStandIn(newPath)) return frameMissing;
    if (!pictureRun().namesAskedFor.insert(newPath).second) return missingSubstitute();
    Str255 text, name;
    messageText(text, messageNotFound);
    pstrFromView(name, sizeof(name), newPath);
    const bool isArticle = value.extraction != nullptr && value.extraction->type == linkTypeArticle;
    std::string chosen;
    switch (askPictureProblem(text, name, tagRec.extractionRecordName, nullptr, &chosen)) {
        case pictureAnswer::abort:
            *cancel |= 1;
            return framePlaced;
        case pictureAnswer::chooseFile:
            rememberAsset(newPath, chosen);
            newPath = chosen;
            assetKind = kindOfAsset(chosen);
            assetFound = true;
            return framePlaced;
        case pictureAnswer::noPrompt:
            (isArticle ? pictureRun().promptArticles : pictureRun().promptPictures) = false;
            break;
        case pictureAnswer::goOn:
            break;
    }
    return missingSubstitute();
}

/// The file that stands in for a missing one, when the link has one.
std::uint16_t ZavoPullFrameCallback::missingSubstitute() {
    const extractionRec* const link = value.extraction;
    if (link == nullptr || link->missingasset != missingAssetSubstitute) return frameMissing;
    if (link->missingassetstring[0] == 0) {
        newPath = noPath;
        return frameMissing;
    }
    newPath = link->missingassetstring;
    auto& error = session().engineError;
    if (error == 0) error = findPath(newPath);
    return assetFound ? framePlaced : frameMissing;
}

/// The tags that are written in an article become links, with the key of the article's own.
errorWord ZavoPullFrameCallback::readArticle() {
    const UIDRef story{frameRef.database, frameRef.database->textOfFrame(frameRef.uid)};
    const textSpanRec all{0, story.database->totalLength(story.uid)};
    if (convertTagText(story, all) == tagConversion::aborted) *cancel |= 1;
    const errorWord error = session().engineError;
    return error != 0 ? error : changeFrameTreeKeys(frameRef, pstrView(tagRec.searchKey), ItemKinds::all);
}

std::uint16_t ZavoPullFrameCallback::placeFound() {
    Document& document = *frameRef.database;
    const std::int16_t type = value.extraction != nullptr ? value.extraction->type : linkTypePicture;
    if (type == linkTypeGroupPicture) return placeGroup(frameRef, newPath, assetKind, *value.extraction);
    const auto position = static_cast<std::uint32_t>(fit.picturePosition);
    const bool tracks = pictureRun().trackPlacedPictures;
    auto& error = session().engineError;
    if (tracks) {
        const auto known = findPlacedPicture(describePlacedPicture(frameRef, newPath, position, pdf.page));
        if (known) {
            error = notePlacedPicture(frameRef, *known, false);
            return framePlaced;
        }
    }
    const ContentKind before = document.contentKind(frameRef.uid);
    const std::uint16_t result = placeFile(frameRef, newPath, fit, pdf, linksGoStale());
    if (document.contentKind(frameRef.uid) != before) noteChanged();
    if (type == linkTypeArticle && result == framePlaced && document.isTextFrame(frameRef.uid)) {
        error = readArticle();
        return framePlaced;
    }
    if (tracks && result != frameDamaged && document.childCount(frameRef.uid) > 0) {
        const UID child = document.childAt(frameRef.uid, 0);
        const clipSettingsRec clip = document.clipSettings(child);
        const bool mayRepeat = clip.type == clipSettingsRec::Type::none || clip.restrictToFrame;
        if (!document.linkPath(child).empty() && mayRepeat) {
            const auto placed = describePlacedPicture(frameRef, newPath, position, pdf.page);
            error = notePlacedPicture(frameRef, addPlacedPicture(placed), true);
        }
    }
    return result;
}

}  // namespace tarnova
