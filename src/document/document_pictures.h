// Pictures of a document: placing a file into a frame, what was placed, its clip, its fit. A picture is a `graphic`
// item, the only child of its frame.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "document/geometry.h"
#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// Two options of an import, taken from what the frame shows already.
struct placeOptionsRec {
    std::int32_t first = 1;
    std::int32_t second = 0;
};

/// How the next PDF file is placed.
struct pdfPlacePrefsRec {
    std::uint32_t page = 1;  // from 1
    std::uint32_t crop = 0;
    std::uint16_t transparent = 1;
    friend bool operator==(const pdfPlacePrefsRec&, const pdfPlacePrefsRec&) = default;
};

/// The clip of a picture.
struct clipSettingsRec {
    enum class Type : std::uint8_t { none, detectedEdges, embeddedPath, userPath } type = Type::none;
    double threshold = 25;  // of detected edges: 0 to 255
    double tolerance = 2;   // of detected edges: 0 to 10
    double inset = 0;       // points
    std::string pathName;   // of an embedded path
    bool invert = false;
    bool insideEdges = false;
    bool restrictToFrame = false;  // the option at the end of the settings
    friend bool operator==(const clipSettingsRec&, const clipSettingsRec&) = default;
};

class DocumentPictures {
 public:
    /// Places a file into a frame, in the place of the picture in it. Gives the new picture; an error leaves the frame
    /// as it was.
    [[nodiscard]] virtual errorWord placeIntoFrame(const std::string& filePath, UID frame,
                                                   const placeOptionsRec& options, UID& outPicture) = 0;
    /// The file of a placed picture; empty for other items.
    [[nodiscard]] virtual std::string linkPath(UID picture) const = 0;
    /// Reads the file anew.
    [[nodiscard]] virtual errorWord updateLink(UID picture) = 0;

    /// The host's preferences, which no document keeps.
    [[nodiscard]] virtual pdfPlacePrefsRec pdfPlacePrefs() const = 0;
    virtual void setPdfPlacePrefs(std::uint32_t page, std::uint32_t crop, std::uint16_t transparent) = 0;
    /// The page that a placed PDF shows, from 0; 0 for other items.
    [[nodiscard]] virtual std::int32_t placedPdfPage(UID picture) const = 0;

    [[nodiscard]] virtual clipSettingsRec clipSettings(UID picture) const = 0;
    [[nodiscard]] virtual errorWord setClipSettings(UID picture, const clipSettingsRec& settings) = 0;
    /// Makes the clip from the picture's content by the settings.
    [[nodiscard]] virtual errorWord makeClippingPath(UID picture, const clipSettingsRec& settings) = 0;

    /// Puts the picture's top left corner on the frame's, moved by the offset.
    [[nodiscard]] virtual errorWord fitOperation1(UID picture, PMPoint offset) = 0;
    /// Centres the picture in the frame.
    [[nodiscard]] virtual errorWord fitOperation2(UID picture) = 0;
    /// Scales the picture, in proportion, to the largest size that the frame shows whole.
    [[nodiscard]] virtual errorWord fitOperation3(UID picture) = 0;
    /// Scales the picture to the frame's width and height.
    [[nodiscard]] virtual errorWord fitOperation4(UID picture) = 0;
    /// Scales the picture, in proportion, to the smallest size that fills the frame.
    [[nodiscard]] virtual errorWord fitOperation5(UID picture) = 0;
    /// Gives the frame the size and place of the picture.
    [[nodiscard]] virtual errorWord fitOperation6(UID picture) = 0;

 protected:
    ~DocumentPictures() = default;
};

/// The drawing of an item to a picture.
class SnapshotUtils {
 public:
    /// The item as a TIFF file of this resolution, in memory.
    [[nodiscard]] virtual errorWord snapshotItem(UID item, double pixelsPerInch, std::string& outTiff) const = 0;

 protected:
    ~SnapshotUtils() = default;
};

}  // namespace tarnova
