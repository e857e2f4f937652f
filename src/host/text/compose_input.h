// What composition needs of a story and its frames: formats resolved, columns as boxes.

#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "document/geometry.h"
#include "document/uid.h"
#include "host/model/format.h"
#include "host/model/page_item.h"
#include "host/text/composed_story.h"

namespace tarnova {

struct FormatSpan {
    std::int32_t length = 0;
    const CharFormat* format = nullptr;
};

/// A paragraph, its return included.
struct ParagraphSpan {
    std::int32_t length = 0;
    const ParaFormat* format = nullptr;
};

inline constexpr TextFrameOptions usualTextFrameOptions;

/// A column to fill, in the inner coordinates of its frame, insets taken off.
struct ColumnBox {
    UID frame = kInvalidUID;
    std::int32_t frameIndex = 0;
    std::int32_t columnIndex = 0;
    PMRect box;
    const TextFrameOptions* options = &usualTextFrameOptions;
};

/// What composition asks of the places of frames, and only when text needs it.
class FramePlaces {
 public:
    virtual ~FramePlaces() = default;
    /// The page that the frame lies on; kInvalidUID when it lies on none.
    [[nodiscard]] virtual UID pageOf(UID frame) const = 0;
    /// The document's baseline grid in the inner coordinates of the frame; nothing for one that is turned or skewed.
    [[nodiscard]] virtual std::optional<BaselineGrid> gridOf(UID frame) const = 0;
};

/// An item that is anchored in the text.
struct AnchorBox {
    std::int32_t position = 0;  // of its character
    AnchorOptions options;
    float width = 0;
    float height = 0;
};

/// What text of a frame runs around, in its inner coordinates.
struct WrapBox {
    std::int32_t frameIndex = 0;
    WrapArea area;
};

inline constexpr float noIndent = std::numeric_limits<float>::lowest();

/// The first line of a column: all that composition from there on depends on, beside the text.
struct FlowStart {
    std::size_t column = 0;
    std::int32_t position = 0;      // of the line's first character
    std::int32_t line = 0;          // of its paragraph
    std::int32_t hyphensAbove = 0;  // lines directly above that end in a hyphen
    float indent = noIndent;        // from an "indent to here" above
};

/// Who composes a story bit by bit.
class FlowFollower {
 public:
    virtual ~FlowFollower() = default;
    /// Adds another paragraph to the input. False: that was all.
    virtual bool addParagraph() = 0;
    /// A column is full. False: composition stops in front of the next one.
    virtual bool goesOn(const FlowStart& next) = 0;
};

/// Borrowed from the document while composing. The spans cover the text.
struct ComposeInput {
    std::u32string_view text;  // of the main thread, its closing mark included
    std::vector<FormatSpan> formats;
    std::vector<ParagraphSpan> paragraphs;
    std::vector<ColumnBox> columns;       // in the order in which text flows
    std::span<const ShownText> shown;     // what page characters are set as, by position
    std::vector<AnchorBox> anchors;       // by position
    std::vector<WrapBox> wraps;           // by frame
    const FramePlaces* places = nullptr;  // null: no frame lies on a page

    // Of a story that is composed bit by bit; else left as they are.
    FlowStart start;                          // its position lies in the first paragraph
    std::vector<std::uint32_t> linesInFront;  // of the columns in front of that one
    FlowFollower* follower = nullptr;         // null: the paragraphs above are all

    void clear() {
        clearText();
        columns.clear();
        shown = {};
        anchors.clear();
        wraps.clear();
        places = nullptr;
    }
    /// Leaves the columns.
    void clearText() {
        text = {};
        formats.clear();
        paragraphs.clear();
        start = {};
        linesInFront.clear();
        follower = nullptr;
    }
};

}  // namespace tarnova
