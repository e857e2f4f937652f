// A long story after composition, column by column: texts of columns are shared between the compositions of a story
// before and after a change, which then costs the columns that really differ.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/text/compose_input.h"
#include "host/text/composed_story.h"

namespace tarnova {

/// A column of a long story. Its lines stand in `text`, at the same index among the columns as here.
struct PartColumn {
    std::shared_ptr<const ComposedStory> text;  // null: nothing is shown
    std::int32_t textStart = 0;                 // what positions in `text` count from
    std::int32_t limit = 0;                     // behind the characters that are shown here and in front
    FlowStart begin;                            // with the position in the story
    bool isBegun = false;                       // `begin` is known
};

/// What making a composition took.
struct CompositionWork {
    std::int32_t paragraphs = 0;
    std::int32_t characters = 0;  // of them
};

class ComposedParts final : public StoryLayout {
 public:
    std::shared_ptr<const StoryText> content;  // what was composed
    std::vector<ColumnBox> boxes;
    std::vector<std::shared_ptr<const ItemShape>> shapes;  // of the frames: `boxes` points into them
    std::vector<PartColumn> columns;                       // one for each box
    std::size_t composedColumns = 0;  // those behind are still to be filled; the first of them is begun
    std::int32_t composedLimit = 0;
    std::int32_t shownLimit = 0;  // characters from here on are overset, when all is composed
    bool overset = false;
    bool dependsOnFramePlaces = false;
    CompositionWork work;
    /// The last composition that went further than this one, of another text: what of it may still be found to hold.
    std::shared_ptr<const ComposedParts> further;

    [[nodiscard]] std::int32_t composedThrough() const override { return composedLimit; }
    [[nodiscard]] std::int32_t filledFrames() const override;
    [[nodiscard]] std::int32_t columnOf(std::int32_t position) const override;
    [[nodiscard]] bool isOverset() const override { return overset; }
    [[nodiscard]] std::optional<AnchorPoint> anchorAt(std::int32_t) const override { return std::nullopt; }
    void addBounds(std::int32_t start, std::int32_t limit, std::vector<LineBounds>& out) const override;
    [[nodiscard]] bool dependsOnPlaces() const override { return dependsOnFramePlaces; }
    [[nodiscard]] bool mayBeTakenUp() const override { return !dependsOnFramePlaces; }
};

/// Columns of a composed story that follow each other.
struct ShownColumns {
    const ComposedStory* text = nullptr;
    std::int32_t textStart = 0;  // of the story; what positions in `text` count from
    std::uint32_t firstColumn = 0;
    std::uint32_t columnCount = 0;
};

/// Sets `out` to the columns of a frame that show lines, by its index in `Story::frames`.
void columnsOfFrame(const StoryLayout& layout, std::int32_t frameIndex, std::vector<ShownColumns>& out);

/// Why nothing could be composed, for people; else empty.
[[nodiscard]] std::string faultOf(const StoryLayout& layout);

}  // namespace tarnova
