// What a run remembers of its pictures: whether it still asks about missing ones, and what was placed, so that an
// output that can refer to a picture isn't given it twice.
//
// The note of a frame ('aqmI' of its item data) is an index into the list of placed pictures and a flag, in the
// machine's byte order: 32 and 16 bits, and 16 bits of zero.

#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "document/document.h"
#include "engine/toolkit/types.h"

namespace tarnova {

inline constexpr std::uint32_t picturePositionKeep = 4;     // the old picture's scale and offset hold
inline constexpr std::uint32_t picturePositionMessage = 2;  // of a message picture

/// A picture in a frame. Rectangles are in points of the spread.
struct placedPictureRec {
    std::uint32_t picturePosition = 0;
    std::uint32_t pdfPage = 1;
    PMRect frameBounds;
    PMRect visibleBounds;      // how far each side of the frame lies outside of the page,
    PMRect bleedBounds;        // and outside of the page with the margins around it
    std::string picturePath;   // of a message picture its text
    std::int32_t pageInCycle;  // index of the frame's page among the template's
    ItemClass frameClass = ItemClass::none;
    transformValuesRec frameTransform;
    ItemClass childClass = ItemClass::none;
    transformValuesRec childTransform;
    PMPoint childOffset;  // the picture's top left corner from that of the frame
};

struct pictureRunRec {
    // Cleared when the user wants no more questions of the kind.
    bool promptPictures = true;
    bool promptArticles = true;
    std::set<std::string> namesAskedFor;  // of files that aren't there; each is asked about once
    // As the driver of the run says with each chunk.
    bool trackPlacedPictures = false;
    bool strictPlacedPictures = false;
    PMRect bleedMargins;  // beyond the page's sides, points
    PMPoint pageSize;     // points
    std::vector<placedPictureRec> placedPictures;
};
[[nodiscard]] pictureRunRec& pictureRun();
/// At the start of a run and at its end.
void resetPictureRun();

/// How a frame and the picture in it look to the comparison, for a picture from `path`.
[[nodiscard]] placedPictureRec describePlacedPicture(UIDRef frame, const std::string& path,
                                                     std::uint32_t picturePosition, std::uint32_t pdfPage);

/// An entry of the list that shows what `wanted` would; nothing when the picture has to be placed.
[[nodiscard]] std::optional<std::uint32_t> findPlacedPicture(const placedPictureRec& wanted);

/// Enters a placed picture and gives its index.
[[nodiscard]] std::uint32_t addPlacedPicture(const placedPictureRec& placed);

/// Writes the frame's note. `holdsPicture`: the picture really lies in the frame.
[[nodiscard]] errorWord notePlacedPicture(UIDRef frame, std::uint32_t index, bool holdsPicture);

/// The entry that the frame's note names, or null.
[[nodiscard]] const placedPictureRec* placedPictureOf(UIDRef frame);

}  // namespace tarnova
