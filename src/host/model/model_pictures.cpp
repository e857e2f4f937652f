// Pictures of a document: how they lie in their frames.

#include <algorithm>
#include <cmath>

#include "host/model/item_drawing.h"
#include "host/model/item_shape.h"
#include "host/model/limits.h"
#include "host/model/model_document.h"

namespace tarnova {

namespace {

bool withinCoordinates(const PMRect& r) {
    return tarnova::withinCoordinates({r.left, r.top, r.right, r.bottom, 0, 0});
}

}  // namespace

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

errorWord ModelDocument::resetPictureTransform(UID uid) {
    const auto [picture, frame] = fitted(uid);
    if (picture == nullptr) return errFailed;
    const PMRect& bounds = picture->graphic->bounds;
    const PMPoint corner = picture->toParent.map({bounds.left, bounds.top});
    return placePicture(uid, {1, 0, 0, 1, corner.x - bounds.left, corner.y - bounds.top});
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
