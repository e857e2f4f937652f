// Placing files into frames: the links, clips and contents of pictures.

#include <algorithm>
#include <cmath>
#include <utility>

#include "engine/toolkit/text_encoding.h"
#include "host/model/limits.h"
#include "host/model/model_document.h"
#include "host/model/placed_picture.h"
#include "host/pictures/clip_outline.h"

namespace tarnova {

namespace {

bool canBeSaved(const clipSettingsRec& clip) {
    const auto isLength = [](double value) { return std::abs(value) <= coordinateLimit; };
    return isLength(clip.threshold) && isLength(clip.tolerance) && isLength(clip.inset) && isUtf8(clip.pathName);
}

/// What a graphic knows of a picture, but where it came from.
void takePicture(PlacedGraphic& graphic, const OpenedPicture& opened) {
    const PictureInfo& info = opened.picture->info();
    graphic.bounds = {0, 0, info.size.x, info.size.y};
    graphic.pdfPage = info.page.page;
    if (info.kind == PictureKind::raster) {
        graphic.pdfCrop = PlacedGraphic().pdfCrop;
        graphic.pdfTransparent = true;
    }
    graphic.fileTime = millisecondsOf(opened.stamp);
    graphic.fileSize = opened.stamp.size;
}

/// False, with the graphic unchanged: the picture has nothing to make such a clip of.
bool takeClip(PlacedGraphic& graphic, const Picture& picture, const clipSettingsRec& settings) {
    using Type = clipSettingsRec::Type;
    if (settings.type == Type::detectedEdges || settings.type == Type::embeddedPath) {
        PictureOutline outline;
        if (!makeClipOutline(picture, settings, outline)) return false;
        graphic.clipPath = subPathsOf(outline, pictureToItem(graphic, picture.size()));
    } else if (settings.type == Type::none) {
        graphic.clipPath.clear();
    }
    graphic.clip = settings;
    return true;
}

/// The transform of a picture in whose place another comes, which begins at (0, 0).
PMMatrix placeOfCorner(const PageItem& picture) {
    const PMRect& bounds = picture.graphic->bounds;
    return PMMatrix{1, 0, 0, 1, bounds.left, bounds.top}.then(picture.toParent);
}

}  // namespace

std::string ModelDocument::linkPath(UID uid) const {
    const PageItem* found = item(uid);
    return found == nullptr || found->graphic == nullptr ? std::string() : pathOfGraphic(*found->graphic, folder);
}

LinkStatus ModelDocument::linkStatus(UID uid) const {
    const PageItem* found = item(uid);
    if (found == nullptr || found->graphic == nullptr || found->graphic->embedded != nullptr)
        return LinkStatus::missing;
    return linkStatusOf(*found->graphic, folder);
}

void ModelDocument::setPdfPlacePrefs(std::uint32_t page, std::uint32_t crop, std::uint16_t transparent) {
    pdfPreferences = {page, crop, transparent};
}

std::int32_t ModelDocument::placedPdfPage(UID uid) const {
    const PageItem* found = item(uid);
    return found == nullptr || found->graphic == nullptr ? 0 : found->graphic->pdfPage;
}

errorWord ModelDocument::failPlacing(std::string reason) {
    whyNotPlaced = std::move(reason);
    return errFailed;
}

errorWord ModelDocument::placeIntoFrame(const std::string& filePath, UID frame, const placeOptionsRec&,
                                        UID& outPicture) {
    outPicture = kInvalidUID;
    PlacedGraphic graphic;
    graphic.filePath = filePath;
    graphic.pdfPage = static_cast<std::int32_t>(std::clamp<std::uint32_t>(pdfPreferences.page, 1, pdfPageLimit)) - 1;
    graphic.pdfCrop = pdfPreferences.crop;
    graphic.pdfTransparent = pdfPreferences.transparent != 0;
    if (filePath.empty() || filePath.size() > picturePathLimit || !isUtf8(filePath)) {
        return failPlacing("The path of the file is empty, too long or no UTF-8.");
    }
    const std::string path = pathOfGraphic(graphic, folder);
    if (isPlacedAsText(path)) return placeText(path, frame);
    return placeGraphic(std::move(graphic), frame, outPicture);
}

errorWord ModelDocument::placeBytesIntoFrame(std::string bytes, UID frame, UID& outPicture) {
    PlacedGraphic graphic;
    graphic.embedded = std::make_shared<const std::string>(std::move(bytes));
    return placeGraphic(std::move(graphic), frame, outPicture);
}

/// A file whose name isn't that of a picture, and whose content a text filter takes.
bool ModelDocument::isPlacedAsText(const std::string& path) const {
    return !hasPictureName(path) && stampOfFile(path).size > 0 &&
           PictureLibrary::shared().open(path).status != PictureStatus::good && !importFilterFor(path).empty();
}

errorWord ModelDocument::placeGraphic(PlacedGraphic graphic, UID frameUid, UID& outPicture) {
    outPicture = kInvalidUID;
    const PageItem* frame = item(frameUid);
    if (frame == nullptr || frame->itemClass != ItemClass::splineItem || frame->shape == nullptr) {
        return failPlacing("Pictures are placed into frames only.");
    }
    const OpenedPicture opened = openGraphic(graphic, folder);
    if (opened.status != PictureStatus::good) return failPlacing(opened.reason);
    if (!uidsLeft(1)) return errRunMemory;
    takePicture(graphic, opened);

    Command command(*this, "Place");
    if (frame->shape->content == ContentKind::text) {
        if (leaveText(frameUid, ContentKind::graphic) != 0) return failPlacing("The frame has text in it.");
    } else if (frame->shape->content == ContentKind::unassigned) {
        setContent(*changeable<PageItem>(frameUid), ContentKind::graphic);
    }
    PageItem picture;
    picture.itemClass = ItemClass::graphic;
    picture.parent = frameUid;
    picture.spread = frame->spread;
    picture.stamp = newStamp();
    picture.toParent = {1, 0, 0, 1, frame->shape->bounds.left, frame->shape->bounds.top};
    for (UID child : frame->children) {
        if (item(child)->graphic != nullptr) picture.toParent = placeOfCorner(*item(child));
        destroyTree(child);
    }
    picture.graphic = std::make_shared<const PlacedGraphic>(std::move(graphic));
    outPicture = create(std::move(picture), takeUid())->uid;
    changeable<PageItem>(frameUid)->children = {outPicture};
    restampAround(frameUid);
    return 0;
}

/// The text of the file in the place of that of the frame.
errorWord ModelDocument::placeText(const std::string& filePath, UID frame) {
    Command command(*this, "Place");
    if (contentKind(frame) != ContentKind::text && convertToTextFrame(frame) != 0) {
        return failPlacing("The frame can't hold text.");
    }
    const UID text = item(frame)->story;
    std::int32_t length = 0;
    if (importText(text, 0, totalLength(text) - 1, {{}, filePath}, importFilterFor(filePath), length) != 0) {
        return failPlacing("The text of the file can't be read.");
    }
    return 0;
}

errorWord ModelDocument::changeGraphic(UID uid, PlacedGraphic graphic, std::string_view name) {
    Command command(*this, name);
    PageItem* picture = changeable<PageItem>(uid);
    picture->graphic = std::make_shared<const PlacedGraphic>(std::move(graphic));
    picture->stamp = newStamp();
    restampAround(picture->parent);
    return 0;
}

errorWord ModelDocument::updateLink(UID uid) {
    const PageItem* found = item(uid);
    if (found == nullptr || found->graphic == nullptr) return failPlacing("The item is no picture.");
    const OpenedPicture opened = openGraphic(*found->graphic, folder);
    if (opened.status != PictureStatus::good) return failPlacing(opened.reason);
    PlacedGraphic graphic = *found->graphic;
    const PMRect before = graphic.bounds;
    takePicture(graphic, opened);
    const double dx = before.left, dy = before.top;
    graphic.bounds = {dx, dy, dx + graphic.bounds.right, dy + graphic.bounds.bottom};
    if (!takeClip(graphic, *opened.picture, graphic.clip)) graphic.clipPath.clear();
    return changeGraphic(uid, std::move(graphic), "Update Link");
}

clipSettingsRec ModelDocument::clipSettings(UID uid) const {
    const PageItem* found = item(uid);
    return found == nullptr || found->graphic == nullptr ? clipSettingsRec{} : found->graphic->clip;
}

errorWord ModelDocument::setClipSettings(UID uid, const clipSettingsRec& settings) {
    const PageItem* found = item(uid);
    if (found == nullptr || found->graphic == nullptr || !canBeSaved(settings)) return errFailed;
    PlacedGraphic graphic = *found->graphic;
    graphic.clip = settings;
    if (settings.type == clipSettingsRec::Type::none) graphic.clipPath.clear();
    return changeGraphic(uid, std::move(graphic), "Set Clipping Path");
}

errorWord ModelDocument::makeClippingPath(UID uid, const clipSettingsRec& settings) {
    const PageItem* found = item(uid);
    if (found == nullptr || found->graphic == nullptr || !canBeSaved(settings)) return errFailed;
    const OpenedPicture opened = openGraphic(*found->graphic, folder);
    if (opened.status != PictureStatus::good) return failPlacing(opened.reason);
    PlacedGraphic graphic = *found->graphic;
    if (!takeClip(graphic, *opened.picture, settings)) return failPlacing("The picture has no such clipping path.");
    return changeGraphic(uid, std::move(graphic), "Set Clipping Path");
}

}  // namespace tarnova
