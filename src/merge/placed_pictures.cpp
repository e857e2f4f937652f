#include "merge/placed_pictures.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "document/item_data.h"
#include "engine/session/session.h"

namespace tarnova {
namespace {

constexpr double tolerance = 1e-8;

struct pictureNote {
    std::uint32_t index;
    std::uint16_t holdsPicture;
    std::uint16_t reserved;
};
static_assert(sizeof(pictureNote) == 8);

bool same(double a, double b) {
    return std::abs(a - b) <= tolerance;
}

bool same(const transformValuesRec& a, const transformValuesRec& b) {
    return same(a.rotationDegrees, b.rotationDegrees) && same(a.scaleX, b.scaleX) && same(a.scaleY, b.scaleY) &&
           same(a.skewDegrees, b.skewDegrees);
}

bool same(const PMRect& a, const PMRect& b) {
    return same(a.left, b.left) && same(a.top, b.top) && same(a.right, b.right) && same(a.bottom, b.bottom);
}

bool atMost(const PMRect& a, const PMRect& b) {
    return a.left <= b.left + tolerance && a.top <= b.top + tolerance && a.right <= b.right + tolerance &&
           a.bottom <= b.bottom + tolerance;
}

bool sameChild(const placedPictureRec& a, const placedPictureRec& b) {
    return a.childClass == b.childClass && same(a.childTransform, b.childTransform) &&
           same(a.childOffset.x, b.childOffset.x) && same(a.childOffset.y, b.childOffset.y);
}

bool sameStrictly(const placedPictureRec& placed, const placedPictureRec& wanted) {
    return same(placed.frameBounds.width(), wanted.frameBounds.width()) &&
           same(placed.frameBounds.height(), wanted.frameBounds.height()) &&
           atMost(placed.visibleBounds, wanted.visibleBounds) && atMost(placed.bleedBounds, wanted.bleedBounds) &&
           placed.frameClass == wanted.frameClass && same(placed.frameTransform, wanted.frameTransform) &&
           placed.picturePosition == wanted.picturePosition &&
           (placed.picturePosition != picturePositionKeep || sameChild(placed, wanted));
}

/// How far each side of `box` lies outside of `page`.
PMRect outside(const PMRect& box, const PMRect& page) {
    return {std::max(page.left - box.left, 0.0), std::max(page.top - box.top, 0.0),
            std::max(box.right - page.right, 0.0), std::max(box.bottom - page.bottom, 0.0)};
}

}  // namespace

pictureRunRec& pictureRun() {
    static pictureRunRec state;
    return state;
}

void resetPictureRun() {
    pictureRun() = pictureRunRec{};
}

placedPictureRec describePlacedPicture(UIDRef frame, const std::string& path, std::uint32_t picturePosition,
                                       std::uint32_t pdfPage) {
    const Document& document = *frame.database;
    const auto& run = pictureRun();
    placedPictureRec out{};
    out.picturePosition = picturePosition;
    out.pdfPage = pdfPage;
    out.picturePath = path;
    out.frameBounds = document.boundsInSpread(frame.uid);
    const PMRect& margins = run.bleedMargins;
    out.visibleBounds = outside(out.frameBounds, {0, 0, run.pageSize.x, run.pageSize.y});
    out.bleedBounds = outside(out.frameBounds, {-margins.left, -margins.top, run.pageSize.x + margins.right,
                                                run.pageSize.y + margins.bottom});
    const std::int32_t page = std::max(document.pageIndex(document.pageOfItem(frame.uid).page), 0);
    out.pageInCycle = page % std::max(session().templatePageCount, 1);
    out.frameClass = document.itemClass(frame.uid);
    out.frameTransform = document.transformValues(frame.uid);
    if (document.childCount(frame.uid) == 0) return out;
    const UID child = document.childAt(frame.uid, 0);
    const PMRect at = document.boundsInSpread(child);
    out.childClass = document.itemClass(child);
    out.childTransform = document.transformValues(child);
    out.childOffset = {at.left - out.frameBounds.left, at.top - out.frameBounds.top};
    return out;
}

std::optional<std::uint32_t> findPlacedPicture(const placedPictureRec& wanted) {
    const auto& run = pictureRun();
    const auto found = std::find_if(run.placedPictures.begin(), run.placedPictures.end(), [&](const auto& placed) {
        if (placed.picturePath != wanted.picturePath || placed.pdfPage != wanted.pdfPage) return false;
        if (run.strictPlacedPictures) return sameStrictly(placed, wanted);
        return placed.pageInCycle == wanted.pageInCycle && same(placed.frameBounds, wanted.frameBounds);
    });
    if (found == run.placedPictures.end()) return std::nullopt;
    return static_cast<std::uint32_t>(found - run.placedPictures.begin());
}

std::uint32_t addPlacedPicture(const placedPictureRec& placed) {
    auto& list = pictureRun().placedPictures;
    list.push_back(placed);
    return static_cast<std::uint32_t>(list.size() - 1);
}

errorWord notePlacedPicture(UIDRef frame, std::uint32_t index, bool holdsPicture) {
    const pictureNote note{index, static_cast<std::uint16_t>(holdsPicture ? 1 : 0), 0};
    const std::uint16_t done =
        itemDataSet(frame, ItemDataPlace::pageItem, itemDataPicturePlaced, &note, sizeof note, session().engineMode);
    return done != 0 ? errorWord{0} : errFailed;
}

const placedPictureRec* placedPictureOf(UIDRef frame) {
    const auto entry = itemDataView(frame, ItemDataPlace::pageItem, itemDataPicturePlaced, session().engineMode);
    if (!entry || entry->size() != sizeof(pictureNote)) return nullptr;
    pictureNote note{};
    std::memcpy(&note, entry->data(), sizeof note);
    const auto& list = pictureRun().placedPictures;
    return note.index < list.size() ? &list[note.index] : nullptr;
}

}  // namespace tarnova
