#include "host/render/shown_picture.h"

#include <algorithm>

namespace tarnova {

namespace {

bool onlyLines(const SubPath& path) {
    return std::all_of(path.segments.begin(), path.segments.end(),
                       [](const PathSegment& segment) { return segment.kind == PathSegment::Kind::line; });
}

}  // namespace

void notePicture(std::vector<PictureProblem>& problems, const PlacedGraphic& graphic, const std::string& reason) {
    const PictureProblem found{graphic.filePath.empty() ? "that the layout holds" : graphic.filePath, reason};
    if (std::find(problems.begin(), problems.end(), found) == problems.end()) problems.push_back(found);
}

bool frameClips(const DisplayItem& item) {
    constexpr double rounding = 1e-6;
    const PMMatrix& place = item.picture->toParent;
    if (!isRectangle(*item.shape) || place.b != 0 || place.c != 0) return true;
    const PMRect shown = place.mapBounds(item.picture->graphic->bounds);
    const PMRect& frame = item.shape->bounds;
    return shown.left < frame.left - rounding || shown.top < frame.top - rounding ||
           shown.right > frame.right + rounding || shown.bottom > frame.bottom + rounding;
}

bool isRectangle(const ItemShape& shape) {
    if (shape.kind != pathInfoRec::Kind::rectangle) return false;
    if (shape.path.empty()) return true;
    const SubPath& path = shape.path.front();
    const PMRect& b = shape.bounds;
    return shape.path.size() == 1 && path.closed && path.segments.size() == 3 && path.start == PMPoint{b.left, b.top} &&
           path.segments[0].to == PMPoint{b.right, b.top} && path.segments[1].to == PMPoint{b.right, b.bottom} &&
           path.segments[2].to == PMPoint{b.left, b.bottom} && onlyLines(path);
}

SubPath mappedPath(const SubPath& path, const PMMatrix& matrix) {
    SubPath mapped{matrix.map(path.start), path.segments, path.closed};
    for (PathSegment& segment : mapped.segments) {
        segment.control1 = matrix.map(segment.control1);
        segment.control2 = matrix.map(segment.control2);
        segment.to = matrix.map(segment.to);
    }
    return mapped;
}

}  // namespace tarnova
