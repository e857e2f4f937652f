// The look and place of items in a layout file.

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/files/format_members.h"
#include "host/files/json_values.h"
#include "host/files/json_writer.h"
#include "host/model/page_item.h"

namespace tarnova {

inline constexpr std::int32_t columnLimit = 40;

/// A path as "M x y L x y C x1 y1 x2 y2 x y Z": each M begins a part, Z closes it. Throws LayoutFault.
[[nodiscard]] std::vector<SubPath> readPath(const JsonValue& value);
[[nodiscard]] std::string pathText(const std::vector<SubPath>& path);

/// A baseline grid `{"start": length, "step": length}`, of a document or a frame. Throws LayoutFault.
[[nodiscard]] BaselineGrid readBaselineGrid(const JsonValue& value);
void writeBaselineGrid(JsonWriter& out, const BaselineGrid& grid);

/// What is read of an item's look; `finish` makes the shape.
struct ShapeTarget {
    explicit ShapeTarget(const LayoutNames& itsNames) : names(itsNames) {}

    const LayoutNames& names;
    ItemShape shape;
    bool hasKind = false;
    std::optional<ContentKind> content;
    std::optional<std::vector<SubPath>> path;
    std::optional<PMRect> inner;
    const JsonValue* firstMember = nullptr;  // of those that say how the item looks
};

// Readers of the members of a shape, for tables of members of whatever holds a ShapeTarget as `look`.
void readShapeKind(ShapeTarget& target, const JsonValue& value);
void readShapeInner(ShapeTarget& target, const JsonValue& value);
void readShapePath(ShapeTarget& target, const JsonValue& value);
void readShapeFill(ShapeTarget& target, const JsonValue& value);
void readShapeStroke(ShapeTarget& target, const JsonValue& value);
void readShapeContent(ShapeTarget& target, const JsonValue& value);
void readShapeInsets(ShapeTarget& target, const JsonValue& value);
void readShapeColumns(ShapeTarget& target, const JsonValue& value);
void readShapeGutter(ShapeTarget& target, const JsonValue& value);
void readShapeVerticalAlign(ShapeTarget& target, const JsonValue& value);
void readShapeParagraphSpaceLimit(ShapeTarget& target, const JsonValue& value);
void readShapeFirstBaseline(ShapeTarget& target, const JsonValue& value);
void readShapeLeastFirstBaseline(ShapeTarget& target, const JsonValue& value);
void readShapeBaselineGrid(ShapeTarget& target, const JsonValue& value);
void readShapeIgnoreWrap(ShapeTarget& target, const JsonValue& value);

/// The shape of an item that `value` describes, in inner coordinates; `usual` is what it is for when it doesn't say.
/// Throws LayoutFault when it has neither bounds nor path.
[[nodiscard]] std::shared_ptr<const ItemShape> finishShape(ShapeTarget& target, const JsonValue& value,
                                                           ContentKind usual);

/// What of a look doesn't follow from the item around it.
struct ShapeForm {
    bool inner;         // its bounds
    ContentKind usual;  // what it is for, as far as that follows
};

/// Writes the members of a look.
void writeShape(JsonWriter& out, const ItemShape& shape, ShapeForm form, const DocumentModel& document);

}  // namespace tarnova
