// What the outputs share of placed pictures: how the frame bounds them, and what is shown in the place of one that
// can't be drawn.

#pragma once

#include <string>
#include <vector>

#include "host/model/placed_picture.h"
#include "host/render/display_list.h"

namespace tarnova {

/// A picture in whose place an output shows a grey box with a cross.
struct PictureProblem {
    std::string path;    // as the layout has it, or words for one that it holds
    std::string reason;  // a sentence without the path
    friend bool operator==(const PictureProblem&, const PictureProblem&) = default;
};

/// Notes a picture that can't be drawn, once.
void notePicture(std::vector<PictureProblem>& problems, const PlacedGraphic& graphic, const std::string& reason);

/// What is to be told of pages that were drawn.
struct PageNotes {
    std::vector<OversetText> overset;
    std::vector<PictureProblem> pictures;
};

inline constexpr const char* unreadablePicture = "Its contents are damaged, or have changed while they were read.";

/// False when the frame is a rectangle that holds all of the picture.
[[nodiscard]] bool frameClips(const DisplayItem& item);

/// True for a rectangle that still has the path of one.
[[nodiscard]] bool isRectangle(const ItemShape& shape);

/// A sub path in other coordinates.
[[nodiscard]] SubPath mappedPath(const SubPath& path, const PMMatrix& matrix);

// The box in the place of a picture: its ground, and the cross from corner to corner.
inline constexpr double placeholderGround = 0.85;  // gray, 1 is white
inline constexpr double placeholderCross = 0.5;
inline constexpr double placeholderLine = 1;  // points

}  // namespace tarnova
