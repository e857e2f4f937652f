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

/// How the file of a picture stands to what was placed.
enum class LinkStatus : std::uint8_t { good, missing, outOfDate };

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
    /// Places a file into a frame, in the place of the picture in it, whose turn, scale, skew and top left corner the
    /// new one takes; in a frame without one it lies at the frame's top left corner at 100 %. What kind of file it is,
    /// its content tells. Of a PDF the page of the preferences is placed, and the first one when it has no such page. A
    /// text file makes the frame a text frame and replaces its text; there is no picture then. An error (`placeFailure`
    /// says why) leaves the frame as it was.
    [[nodiscard]] virtual errorWord placeIntoFrame(const std::string& filePath, UID frame,
                                                   const placeOptionsRec& options, UID& outPicture) = 0;
    /// The same from a picture file's bytes, which the document then keeps; the picture has no link.
    [[nodiscard]] virtual errorWord placeBytesIntoFrame(std::string bytes, UID frame, UID& outPicture) = 0;
    /// Why the last placing or update failed, as a sentence for people.
    [[nodiscard]] virtual const std::string& placeFailure() const = 0;
    /// The file of a placed picture; empty for other items.
    [[nodiscard]] virtual std::string linkPath(UID picture) const = 0;
    /// `missing` as well for an item without a link.
    [[nodiscard]] virtual LinkStatus linkStatus(UID picture) const = 0;
    /// Reads the file anew. Turn, scale, skew and the top left corner stay, and the clip is made again. An error leaves
    /// the picture as it was.
    [[nodiscard]] virtual errorWord updateLink(UID picture) = 0;

    /// The host's preferences, which no document keeps.
    [[nodiscard]] virtual pdfPlacePrefsRec pdfPlacePrefs() const = 0;
    virtual void setPdfPlacePrefs(std::uint32_t page, std::uint32_t crop, std::uint16_t transparent) = 0;
    /// The page that a placed PDF shows, from 0; 0 for other items.
    [[nodiscard]] virtual std::int32_t placedPdfPage(UID picture) const = 0;

    [[nodiscard]] virtual clipSettingsRec clipSettings(UID picture) const = 0;
    /// `none` takes the clip away; for the other types the outline stays that there is.
    [[nodiscard]] virtual errorWord setClipSettings(UID picture, const clipSettingsRec& settings) = 0;
    /// Makes the clip from the picture's content by the settings: its edges, or the path of that name that its file
    /// holds (with an empty name the one that the file clips with, else its first). A user's path stays as it is. An
    /// error, for a picture without edges or without such a path, leaves everything as it was.
    [[nodiscard]] virtual errorWord makeClippingPath(UID picture, const clipSettingsRec& settings) = 0;

    // The fit works along the frame's own sides, however the frame is turned. The picture's bounds are those of what is
    // seen of it when nothing clips it, so a picture that is turned in its frame is fitted by the box around it.
    /// Takes turn, scale and skew off the picture, whose top left corner stays.
    [[nodiscard]] virtual errorWord resetPictureTransform(UID picture) = 0;
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
