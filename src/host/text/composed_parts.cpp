#include "host/text/composed_parts.h"

#include <algorithm>

namespace tarnova {

namespace {

void addFlat(const ComposedStory& text, std::int32_t frameIndex, std::vector<ShownColumns>& out) {
    const auto byFrame = [](const ComposedColumn& column, std::int32_t index) { return column.frameIndex < index; };
    const auto first = std::lower_bound(text.columns.begin(), text.columns.end(), frameIndex, byFrame);
    auto limit = first;
    std::uint32_t lineCount = 0;
    for (; limit != text.columns.end() && limit->frameIndex == frameIndex; ++limit)
        lineCount += limit->lineCount;
    if (lineCount == 0) return;
    out.push_back({&text, 0, static_cast<std::uint32_t>(first - text.columns.begin()),
                   static_cast<std::uint32_t>(limit - first)});
}

void addParts(const ComposedParts& parts, std::int32_t frameIndex, std::vector<ShownColumns>& out) {
    const auto byFrame = [](const ColumnBox& column, std::int32_t index) { return column.frameIndex < index; };
    const auto first = std::lower_bound(parts.boxes.begin(), parts.boxes.end(), frameIndex, byFrame);
    for (auto at = static_cast<std::size_t>(first - parts.boxes.begin());
         at < parts.composedColumns && parts.boxes[at].frameIndex == frameIndex; ++at) {
        const PartColumn& column = parts.columns[at];
        if (column.text != nullptr && column.text->columns[at].lineCount > 0) {
            out.push_back({column.text.get(), column.textStart, static_cast<std::uint32_t>(at), 1});
        }
    }
}

}  // namespace

std::int32_t ComposedParts::filledFrames() const {
    return composedColumns < boxes.size() ? boxes[composedColumns].frameIndex : StoryLayout::filledFrames();
}

std::int32_t ComposedParts::columnOf(std::int32_t position) const {
    if (position < 0 || (composedColumns == columns.size() && position >= shownLimit)) return -1;
    const auto end = columns.begin() + static_cast<std::ptrdiff_t>(composedColumns);
    const auto behind = std::upper_bound(columns.begin(), end, position,
                                         [](std::int32_t at, const PartColumn& column) { return at < column.limit; });
    return behind == end ? -1 : static_cast<std::int32_t>(behind - columns.begin());
}

void ComposedParts::addBounds(std::int32_t start, std::int32_t limit, std::vector<LineBounds>& out) const {
    for (std::size_t at = 0; at < composedColumns; ++at) {
        if (columns[at].text != nullptr) columns[at].text->addBoundsOf(at, 1, columns[at].textStart, start, limit, out);
    }
}

void columnsOfFrame(const StoryLayout& layout, std::int32_t frameIndex, std::vector<ShownColumns>& out) {
    out.clear();
    if (const auto* text = dynamic_cast<const ComposedStory*>(&layout)) addFlat(*text, frameIndex, out);
    if (const auto* parts = dynamic_cast<const ComposedParts*>(&layout)) addParts(*parts, frameIndex, out);
}

std::string faultOf(const StoryLayout& layout) {
    const auto* text = dynamic_cast<const ComposedStory*>(&layout);
    return text == nullptr ? std::string() : text->fault;
}

}  // namespace tarnova
