// Tables of a document: their cells, and the attribute that makes a table variable. The text of a cell is a thread of
// the table's story; a table stands in a text through an anchor, like an anchored item.

#pragma once

#include <cstdint>
#include <memory>

#include "document/table_attribute.h"
#include "document/text_span.h"
#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// Rows and columns of a table; the limits lie outside.
struct GridArea {
    std::int32_t topRow = 0;
    std::int32_t leftColumn = 0;
    std::int32_t bottomRow = 0;
    std::int32_t rightColumn = 0;
    friend bool operator==(const GridArea&, const GridArea&) = default;
};

/// The cells that are selected; no table: no selection, or one that isn't of cells.
struct cellSelectionRec {
    UID table = kInvalidUID;
    GridArea area;
};

/// What a table offers for its attribute. Borrowed from the document, valid as long as the table.
class ITableCommands {
 public:
    /// Whether the table can carry an attribute at all.
    [[nodiscard]] virtual bool CanApplyOverrides() const = 0;
    /// Lays the attribute over the table in the place of the one that is there, or with null takes that away; in a
    /// command.
    [[nodiscard]] virtual errorWord ApplyOverride(std::shared_ptr<const INokDataTagTableAttr> attribute) = 0;

 protected:
    ~ITableCommands() = default;
};

class DocumentTables {
 public:
    /// The table whose cell a position lies in, or `kInvalidUID`.
    [[nodiscard]] virtual UID tableOfCell(UID story, std::int32_t position) const = 0;
    /// The table that an owned item of a text stands for, or `kInvalidUID`.
    [[nodiscard]] virtual UID tableOfOwnedItem(UID item) const = 0;
    [[nodiscard]] virtual UID storyOfTable(UID table) const = 0;
    [[nodiscard]] virtual std::int32_t rowCount(UID table) const = 0;
    [[nodiscard]] virtual std::int32_t columnCount(UID table) const = 0;
    /// The area of the cell that covers a place. Its top left corner is the cell's anchor; an ordinary cell is one row
    /// by one column. Outside of the table the area is empty.
    [[nodiscard]] virtual GridArea cellAnchor(UID table, std::int32_t row, std::int32_t column) const = 0;
    /// False at the places that a merged cell covers besides its anchor.
    [[nodiscard]] virtual bool cellIsAnchor(UID table, std::int32_t row, std::int32_t column) const = 0;
    /// The text of the cell with this anchor, its closing mark included; empty where no anchor is.
    [[nodiscard]] virtual textSpanRec cellTextSpan(UID table, std::int32_t row, std::int32_t column) const = 0;
    [[nodiscard]] virtual errorWord deleteRows(UID table, std::int32_t first, std::int32_t count) = 0;
    /// The selection as it is when asked.
    [[nodiscard]] virtual cellSelectionRec selectedCells() const = 0;

    /// The table's attribute, valid until the table changes; null without one.
    [[nodiscard]] virtual const INokDataTagTableAttr* tableAttribute(UID table) const = 0;
    /// Null for a table that takes no commands.
    [[nodiscard]] virtual ITableCommands* tableCommands(UID table) = 0;

 protected:
    ~DocumentTables() = default;
};

}  // namespace tarnova
