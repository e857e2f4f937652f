// Page items: what is drawn and where. The drawn content is shared between copies until one of them changes it.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "document/document.h"
#include "document/geometry.h"
#include "host/model/format.h"

namespace tarnova {

/// One segment of a path: a line to `to`, or a cubic curve over the two control points.
struct PathSegment {
    enum class Kind : std::uint8_t { line, curve } kind = Kind::line;
    PMPoint control1, control2, to;
};

struct SubPath {
    PMPoint start;
    std::vector<PathSegment> segments;
    bool closed = true;
};

struct Stroke {
    Paint paint{swatchNone, 1};
    double weight = 1;
    enum class Join : std::uint8_t { miter, round, bevel } join = Join::miter;
    enum class Cap : std::uint8_t { butt, round, square } cap = Cap::butt;
    double miterLimit = 4;
    std::vector<double> dash;  // lengths on, off, on ...; empty is solid
};

/// `justify` spreads the lines over the column's height.
enum class VerticalAlignment : std::uint8_t { top, center, bottom, justify };

/// How far the first baseline lies below a column's top, by the line's largest font; `fixed` is the least offset alone.
enum class FirstBaseline : std::uint8_t { ascent, capHeight, xHeight, leading, fixed };

inline constexpr double leastGridStep = 1;  // points

/// Heights, at one distance from each other, on which lines may stand. Points.
struct BaselineGrid {
    double start = 36;
    double step = 12;  // `leastGridStep` at least
    friend bool operator==(const BaselineGrid&, const BaselineGrid&) = default;
};

struct TextFrameOptions {
    double insetTop = 0, insetLeft = 0, insetBottom = 0, insetRight = 0;
    std::int32_t columns = 1;
    double gutter = 12;
    VerticalAlignment verticalAlignment = VerticalAlignment::top;
    double paragraphSpaceLimit = 0;  // points that `justify` adds between two paragraphs before it spreads lines
    FirstBaseline firstBaseline = FirstBaseline::ascent;
    double leastFirstBaseline = 0;
    std::optional<BaselineGrid> grid{};  // of its own, from the top of its columns; else the document's
    bool ignoresWrap = false;            // its text runs over items that others run around
};

/// How an item that is anchored in a text stands there. Lengths in points, y downward.
struct AnchorOptions {
    /// `inLine`: on the baseline, as wide as it is. `aboveLine`: on a line of its own above the one that holds its
    /// character. `custom`: anywhere, and without taking room.
    enum class Kind : std::uint8_t { inLine, aboveLine, custom } kind = Kind::inLine;
    double x = 0;  // of a custom item, from the edge that `xFrom` and `align` say
    double y = 0;  // of an item in the line, from the baseline; of a custom one, from the edge that `yFrom` says
    enum class Align : std::uint8_t { left, center, right } align = Align::left;
    /// The place of the character (on the baseline), or the sides of the column or frame that holds it.
    enum class Edge : std::uint8_t { anchor, column, frame };
    Edge xFrom = Edge::anchor;
    Edge yFrom = Edge::anchor;
    double spaceBefore = 0;  // of an item above the line
    double spaceAfter = 0;
    friend bool operator==(const AnchorOptions&, const AnchorOptions&) = default;
};

/// How text in other frames of the spread runs around an item.
struct TextWrap {
    /// `bounds`: beside its bounds. `jumpObject`: no text beside it. `jumpColumn`: text goes on in the next column.
    enum class Kind : std::uint8_t { none, bounds, jumpObject, jumpColumn } kind = Kind::none;
    enum class Side : std::uint8_t { both, left, right, largest } side = Side::both;  // where text stands
    double top = 0, left = 0, bottom = 0, right = 0;                                  // kept free around the bounds
    friend bool operator==(const TextWrap&, const TextWrap&) = default;
};

/// An area that text runs around, its offsets included.
struct WrapArea {
    PMRect box;
    TextWrap::Kind kind = TextWrap::Kind::none;
    TextWrap::Side side = TextWrap::Side::both;
};

/// What text has to do with an item.
struct ItemFlow {
    AnchorOptions anchor;  // of an item whose parent is a story
    TextWrap wrap;
    friend bool operator==(const ItemFlow&, const ItemFlow&) = default;
};

/// The shape and look of an item in its own coordinates: immutable, shared by copies.
struct ItemShape {
    pathInfoRec::Kind kind = pathInfoRec::Kind::rectangle;
    PMRect bounds;              // of the path, inner coordinates
    std::vector<SubPath> path;  // what `kind` and `bounds` say, spelled out
    Paint fill{swatchNone, 1};
    Stroke stroke;
    ContentKind content = ContentKind::unassigned;
    TextFrameOptions text;  // for text frames
};

inline constexpr std::size_t picturePathLimit = 4096;     // bytes
inline constexpr std::uint32_t pdfPageLimit = 1'000'000;  // pages of a file that are counted

/// A picture in its frame: what was placed, in its own coordinates. Immutable, shared by copies.
struct PlacedGraphic {
    std::string filePath;                         // UTF-8; a relative one counts from the folder of the document
    std::shared_ptr<const std::string> embedded;  // a picture file that the document holds; then there is no path
    PMRect bounds;                                // the whole picture fills them
    std::int32_t pdfPage = 0;                     // of a PDF file, from 0
    std::uint32_t pdfCrop = 3;                    // a host crop value
    bool pdfTransparent = true;                   // false: a PDF page lies on a white ground
    std::int64_t fileTime = 0;                    // of the file as it was placed: milliseconds since 1970 of its change
    std::int64_t fileSize = -1;                   // bytes; -1: not known
    clipSettingsRec clip;
    std::vector<SubPath> clipPath;  // what the clip leaves visible (even-odd); empty: all
};

struct PageItem {
    UID uid = kInvalidUID;
    ItemClass itemClass = ItemClass::splineItem;
    UID parent = kInvalidUID;                // a node, a group or a frame; of an item anchored in a text its story
    std::vector<UID> children;               // back to front
    std::shared_ptr<const ItemShape> shape;  // null for nodes, groups, text columns and pictures
    std::shared_ptr<const PlacedGraphic> graphic;  // of a picture (`graphic`), which is the only child of its frame
    PMMatrix toParent;                     // inner coordinates to those of the parent (a node's are the spread's);
                                           // an anchored item is then moved to where its text is set
    std::shared_ptr<const ItemFlow> flow;  // null: all as usual
    UID story = kInvalidUID;               // of a text frame or a text column
    UID pathStory = kInvalidUID;           // on the path of a frame
    std::int32_t column = 0;               // of a text column: its index in the frame
    UID spread = kInvalidUID;              // unknown (0) of what is anchored: it lies where its text does
    bool locked = false;
    bool nonPrinting = false;
    std::string name;
    std::shared_ptr<const std::string> itemData[2];  // by store
    UID overrides = kInvalidUID;                     // the master's item in whose place it stands

    /// Two items with one stamp draw the same shape at the same place of their spread: copies keep it, a change of the
    /// item, of a group around it or of a member of it takes a new one. The text of a frame is stamped by its story.
    std::uint64_t stamp = 0;

    /// What `pageOfItem` found: the index of the page in the spread, `onPasteboard` or `pageUnknown`. Copies keep it.
    mutable std::int32_t pageInSpread = pageUnknown;
    static constexpr std::int32_t onPasteboard = -1;
    static constexpr std::int32_t pageUnknown = -2;
};

}  // namespace tarnova
