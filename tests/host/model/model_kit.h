// What tests of the model and of composition make documents from.

#pragma once

#include <memory>

#include "host/model/document_model.h"

namespace tarnova {

/// A frame for text; its story is added next.
inline PageItem textItem(const PMRect& bounds, const TextFrameOptions& options = {}) {
    auto shape = std::make_shared<ItemShape>();
    shape->bounds = bounds;
    shape->content = ContentKind::text;
    shape->text = options;
    PageItem item;
    item.itemClass = ItemClass::splineItem;
    item.shape = shape;
    return item;
}

/// Shows ten characters a frame and counts how often it is asked.
class TenCharacterComposer : public Composer {
 public:
    struct Layout : StoryLayout {
        std::int32_t frames = 0, length = 0;
        std::int32_t composedThrough() const override { return length; }
        std::int32_t columnOf(std::int32_t position) const override {
            return position / 10 < frames ? position / 10 : -1;
        }
        bool isOverset() const override { return length > frames * 10; }
        std::optional<AnchorPoint> anchorAt(std::int32_t position) const override {
            if (columnOf(position) < 0) return {};
            return AnchorPoint{columnOf(position), {0, 0, 40, 50}, double(position % 10), 12, 3};
        }
        void addBounds(std::int32_t, std::int32_t, std::vector<LineBounds>&) const override {}
    };
    bool hasFont(const std::string&, const std::string&) const override { return true; }
    std::shared_ptr<const StoryLayout> compose(const DocumentModel&, const Story& story, std::int32_t,
                                               const StoryPageTexts& pageTexts) override {
        ++calls;
        auto out = std::make_shared<Layout>();
        out->frames = static_cast<std::int32_t>(story.frames.size());
        out->length = story.length();
        out->pageTexts = pageTexts;
        return out;
    }
    int calls = 0;
};

}  // namespace tarnova
