// A page as a list of things to paint, back to front: what all outputs read.
//
// Groups are flattened. A frame gives up to three entries: its shape (when it has a fill or a stroke), the text on its
// path and the text in it. With a picture it gives its fill, the picture and its stroke, which runs over the picture.
// The list borrows from the document: it is valid until the document changes.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "document/geometry.h"
#include "document/uid.h"
#include "host/model/document_model.h"
#include "host/text/composed_story.h"

namespace tarnova {

/// What of a shape is painted.
enum class ShapePart : std::uint8_t { all, fill, stroke };

struct DisplayItem {
    PMMatrix toPage;                   // inner coordinates of the frame to points from the page's top left, y downward
    const ItemShape* shape = nullptr;  // of a shape; of a picture, which it clips; null for text
    const ComposedStory* text = nullptr;    // of text; null for others
    const PageItem* picture = nullptr;      // of a picture; null for others
    ShapePart part = ShapePart::all;        // of a shape
    const StoryText* characters = nullptr;  // what the glyphs of `text` stand for
    std::int32_t textStart = 0;             // of the story; what positions in `text` count from
    std::uint32_t firstColumn = 0;          // of `text`, those of this frame
    std::uint32_t columnCount = 0;
    std::uint64_t itemStamp = 0;
    std::uint64_t storyStamp = 0;  // of text
    bool repeats = false;          // unchanged since the template was marked, and the same on every page
};

/// A story with more text than its frames hold. It is told on the page of its last frame, so once in a
/// document; text of a master on each page that shows it.
struct OversetText {
    UID story = kInvalidUID;
    UID frame = kInvalidUID;  // its last
    UID page = kInvalidUID;
};

struct DisplayList {
    PMRect page;  // in the coordinates of the spread
    const std::vector<Swatch>* swatches = nullptr;
    std::string pictureFolder;  // from which relative paths of pictures count
    std::vector<DisplayItem> items;
    std::vector<OversetText> overset;
    std::vector<std::shared_ptr<const StoryLayout>> ownTexts;  // composed for this page alone
};

/// Fills `list`, whose buffers are used again, with what the page shows. Items that paint nothing are left out. False:
/// no such page, or its text can't be composed.
[[nodiscard]] bool buildDisplayList(const DocumentModel& document, UID page, DisplayList& list);

/// The same for an item alone, wherever it lies; the page is its bounds in its spread.
[[nodiscard]] bool buildItemList(const DocumentModel& document, UID item, DisplayList& list);

/// Why `buildDisplayList` said no, for people. Valid until the document changes.
[[nodiscard]] const char* whyNoDisplayList(const DocumentModel& document, UID page);

/// A colour ready to paint: the swatch with the tint applied. `Space::none` paints nothing.
struct PaintColor {
    Swatch::Space space = Swatch::Space::none;
    double values[4] = {0, 0, 0, 0};  // 0 to 1; C M Y K or R G B
};
[[nodiscard]] PaintColor resolvePaint(const Paint& paint, const std::vector<Swatch>& swatches);

}  // namespace tarnova
