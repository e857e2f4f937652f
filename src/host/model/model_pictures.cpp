// Pictures of a document: their links, clips and places in their frames. Their files aren't read.

#include <algorithm>
#include <cmath>

#include "engine/toolkit/text_encoding.h"
#include "host/model/item_drawing.h"
#include "host/model/item_shape.h"
#include "host/model/limits.h"
#include "host/model/model_document.h"

namespace tarnova {

namespace {

bool canBeSaved(const clipSettingsRec& clip) {
    const auto isLength = [](double value) { return std::abs(value) <= coordinateLimit; };
    return isLength(clip.threshold) && isLength(clip.tolerance) && isLength(clip.inset) && isUtf8(clip.pathName);
}

bool withinCoordinates(const PMRect& r) {
    return tarnova::withinCoordinates({r.left, r.top, r.right, r.bottom, 0, 0});
}

}  // namespace

std::string ModelDocument::linkPath(UID uid) const {
    const PageItem* found = item(uid);
    return found == nullptr || found->graphic == nullptr ? std::string() : found->graphic->filePath;
}

void ModelDocument::setPdfPlacePrefs(std::uint32_t page, std::uint32_t crop, std::uint16_t transparent) {
    pdfPreferences = {page, crop, transparent};
}

std::int32_t ModelDocument::placedPdfPage(UID uid) const {
    const PageItem* found = item(uid);
    return found == nullptr || found->graphic == nullptr ? 0 : found->graphic->pdfPage;
}

clipSettingsRec ModelDocument::clipSettings(UID uid) const {
    const PageItem* found = item(uid);
    return found == nullptr || found->graphic == nullptr ? clipSettingsRec{} : found->graphic->clip;
}

errorWord ModelDocument::setClipSettings(UID uid, const clipSettingsRec& settings) {
    const PageItem* found = item(uid);
    if (found == nullptr || found->graphic == nullptr || !canBeSaved(settings)) return errFailed;
    Command command(*this, "Set Clipping Path");
    auto graphic = std::make_shared<PlacedGraphic>(*found->graphic);
    graphic->clip = settings;
    PageItem* picture = changeable<PageItem>(uid);
    picture->graphic = std::move(graphic);
    picture->stamp = newStamp();
    restampAround(picture->parent);
    return 0;
}

ModelDocument::FittedPicture ModelDocument::fitted(UID uid) const {
    const PageItem* picture = item(uid);
    if (picture == nullptr || picture->graphic == nullptr) return {};
    const PageItem* frame = item(picture->parent);
    return frame == nullptr || frame->shape == nullptr ? FittedPicture{} : FittedPicture{picture, frame};
}

errorWord ModelDocument::placePicture(UID uid, const PMMatrix& place) {
    if (!withinCoordinates(place)) return errFailed;
    Command command(*this, "Fit");
    PageItem* picture = changeable<PageItem>(uid);
    picture->toParent = place;
    picture->stamp = newStamp();
    restampAround(picture->parent);
    return 0;
}

errorWord ModelDocument::fitOperation1(UID uid, PMPoint offset) {
    const auto [picture, frame] = fitted(uid);
    if (picture == nullptr) return errFailed;
    const PMRect at = picture->toParent.mapBounds(picture->graphic->bounds);
    const PMRect& box = frame->shape->bounds;
    return placePicture(
        uid, picture->toParent.then({1, 0, 0, 1, box.left + offset.x - at.left, box.top + offset.y - at.top}));
}

errorWord ModelDocument::fitOperation2(UID uid) {
    const auto [picture, frame] = fitted(uid);
    if (picture == nullptr) return errFailed;
    const PMRect at = picture->toParent.mapBounds(picture->graphic->bounds);
    const PMRect& box = frame->shape->bounds;
    const double dx = (box.left + box.right - at.left - at.right) / 2;
    const double dy = (box.top + box.bottom - at.top - at.bottom) / 2;
    return placePicture(uid, picture->toParent.then({1, 0, 0, 1, dx, dy}));
}

/// Scales in proportion: to the largest size that fits, or to the smallest that fills.
errorWord ModelDocument::scalePicture(UID uid, bool fills) {
    const auto [picture, frame] = fitted(uid);
    if (picture == nullptr) return errFailed;
    const PMRect at = picture->toParent.mapBounds(picture->graphic->bounds);
    const PMRect& box = frame->shape->bounds;
    const double wide = box.width() / at.width(), high = box.height() / at.height();
    const double scale = fills ? std::max(wide, high) : std::min(wide, high);
    if (!(scale > 0)) return errFailed;
    return placePicture(uid, picture->toParent.then({scale, 0, 0, scale, 0, 0}));
}

errorWord ModelDocument::fitOperation3(UID uid) {
    return scalePicture(uid, false);
}

errorWord ModelDocument::fitOperation4(UID uid) {
    const auto [picture, frame] = fitted(uid);
    if (picture == nullptr) return errFailed;
    const PMRect at = picture->toParent.mapBounds(picture->graphic->bounds);
    const PMRect& box = frame->shape->bounds;
    const double wide = box.width() / at.width(), high = box.height() / at.height();
    if (!(wide > 0 && high > 0)) return errFailed;
    return placePicture(uid,
                        picture->toParent.then({wide, 0, 0, high, box.left - at.left * wide, box.top - at.top * high}));
}

errorWord ModelDocument::fitOperation5(UID uid) {
    return scalePicture(uid, true);
}

/// The frame becomes a rectangle of the picture's bounds; the picture stays where it is.
errorWord ModelDocument::fitOperation6(UID uid) {
    const auto [picture, frame] = fitted(uid);
    if (picture == nullptr) return errFailed;
    const PMRect bounds = picture->toParent.mapBounds(picture->graphic->bounds);
    if (!withinCoordinates(bounds)) return errFailed;
    Command command(*this, "Fit Frame");
    auto shape = std::make_shared<ItemShape>(*frame->shape);
    shape->kind = pathInfoRec::Kind::rectangle;
    shape->bounds = bounds;
    shape->path = pathOf(shape->kind, shape->bounds);
    changeable<PageItem>(frame->uid)->shape = std::move(shape);
    if (frame->pathStory != kInvalidUID) restampText(frame->pathStory);
    restampAround(frame->uid);
    return 0;
}

errorWord ModelDocument::snapshotItem(UID item, double pixelsPerInch, std::string& outTiff) const {
    return itemDrawing() == nullptr ? errFailed : itemDrawing()(*this, item, pixelsPerInch, outTiff);
}

}  // namespace tarnova
