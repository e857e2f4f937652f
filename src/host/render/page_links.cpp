#include "host/render/page_links.h"

#include <algorithm>
#include <utility>

namespace tarnova {

namespace {

bool isTurned(const GlyphRun& run) {
    return run.directionX != 1;
}

/// Adds the area of some runs, from the line's descent to its ascent; on a path that of one run, which turns with it.
void addArea(const DisplayItem& item, const ComposedLine& line, const GlyphRun& first, const GlyphRun& last,
             LinkTarget target, std::vector<PageLink>& links) {
    const PMPoint along{static_cast<double>(first.directionX), static_cast<double>(first.directionY)};
    const double originX = static_cast<double>(first.x);
    const double originY = static_cast<double>(isTurned(first) ? first.y : line.baseline);
    const double width = static_cast<double>(isTurned(first) ? first.width : last.x + last.width - first.x);
    const auto corner = [&](double x, double up) {
        return item.toPage.map({originX + x * along.x + up * along.y, originY + x * along.y - up * along.x});
    };
    const double top = static_cast<double>(line.ascent), bottom = -static_cast<double>(line.descent);
    links.push_back(
        {std::move(target), {corner(0, bottom), corner(width, bottom), corner(width, top), corner(0, top)}});
}

/// Runs side by side on a line with one link make one area, whatever else they differ in.
void addLine(const DisplayItem& item, const ComposedLine& line, std::vector<PageLink>& links) {
    const GlyphRun* const runs = item.text->runs.data();
    const std::uint32_t limit = line.firstRun + line.runCount;
    for (std::uint32_t first = line.firstRun, next; first < limit; first = next) {
        next = first + 1;
        const std::string& link = runs[first].format->link;
        while (next < limit && runs[next].format->link == link && !isTurned(runs[first]) && !isTurned(runs[next]))
            ++next;
        std::string problem;
        auto target = readLinkTarget(link, problem);
        if (target) addArea(item, line, runs[first], runs[next - 1], *std::move(target), links);
    }
}

void addText(const DisplayItem& item, std::vector<PageLink>& links) {
    const ComposedStory& text = *item.text;
    for (std::uint32_t c = item.firstColumn; c < item.firstColumn + item.columnCount; ++c) {
        const ComposedColumn& column = text.columns[c];
        for (std::uint32_t i = 0; i < column.lineCount; ++i)
            addLine(item, text.lines[column.firstLine + i], links);
    }
}

}  // namespace

std::vector<PageLink> linksOf(const DisplayList& page) {
    std::vector<PageLink> links;
    for (const DisplayItem& item : page.items) {
        if (item.text != nullptr && item.text->hasLinks) addText(item, links);
    }
    return links;
}

PMRect boundsOf(const PageLink& link) {
    const auto [left, right] =
        std::minmax({link.corners[0].x, link.corners[1].x, link.corners[2].x, link.corners[3].x});
    const auto [top, bottom] =
        std::minmax({link.corners[0].y, link.corners[1].y, link.corners[2].y, link.corners[3].y});
    return {left, top, right, bottom};
}

bool isUpright(const PageLink& link) {
    const PMPoint* const c = link.corners;
    return (c[0].y == c[1].y && c[1].x == c[2].x) || (c[0].x == c[1].x && c[1].y == c[2].y);
}

}  // namespace tarnova
