// Text on the paths of frames.

#include <algorithm>
#include <cmath>
#include <iterator>

#include "host/model/attribute_pool.h"
#include "host/model/limits.h"
#include "host/model/model_document.h"
#include "host/model/story_text.h"

namespace tarnova {

namespace {

bool canBeSaved(const PathTextOptions& options) {
    const double lengths[] = {options.start, options.end, options.offset};
    return std::all_of(std::begin(lengths), std::end(lengths), [](double v) { return std::abs(v) <= coordinateLimit; });
}

}  // namespace

UID ModelDocument::textOnPath(UID uid) const {
    const PageItem* found = item(uid);
    return found == nullptr ? kInvalidUID : found->pathStory;
}

errorWord ModelDocument::setPathText(UID uid, const std::optional<PathTextOptions>& options) {
    const PageItem* found = item(uid);
    if (found == nullptr || found->itemClass != ItemClass::splineItem || found->shape == nullptr) return errFailed;
    const UID storyUid = found->pathStory;
    if (options && (found->shape->path.empty() || !canBeSaved(*options))) return errFailed;
    Command command(*this, "Set Path Text");
    if (!options) {
        if (storyUid == kInvalidUID) return 0;
        changeable<PageItem>(uid)->pathStory = kInvalidUID;
        detachFrame(storyUid, uid);
        return 0;
    }
    if (storyUid == kInvalidUID) {
        if (!uidsLeft(1)) return errRunMemory;
        Story made;
        made.frames = {uid};
        made.content = emptyStoryText(formats->attributes.paragraph({}), formats->attributes.plainRun());
        changeable<PageItem>(uid)->pathStory = create(std::move(made), takeUid())->uid;
    }
    Story* onPath = changeable<Story>(item(uid)->pathStory);
    onPath->onPath = std::make_shared<const PathTextOptions>(*options);
    onPath->stamp = newStamp();
    onPath->layout.reset();
    onPath->earlier.reset();
    return 0;
}

}  // namespace tarnova
