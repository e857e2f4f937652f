#include "merge/message_picture.h"

#include <algorithm>
#include <memory>

#include "document/document.h"
#include "document/document_looks.h"
#include "engine/toolkit/text_encoding.h"
#include "merge/picture_placing.h"
#include "merge/placed_pictures.h"

namespace tarnova {
namespace {

constexpr double pixelsPerInch = 72;
constexpr std::int32_t leastSize = 1, mostSize = 36, leastSizeForWords = 10;  // points

/// A text frame of a frame's shape, upright, for the time of the work.
class MessageFrame {
 public:
    explicit MessageFrame(UIDRef frame) : document(*frame.database) {
        if (document.duplicateItem(frame.uid, copy) != 0) return;
        double turned = 0;
        for (UID item = copy; document.itemExists(item); item = document.parent(item))
            turned += document.transformValues(item).rotationDegrees;
        const bool isUpright = turned == 0 || document.rotateBy(copy, -turned) == 0;
        if (isUpright && document.setItemDataBlock(copy, 0, std::nullopt) == 0 &&
            document.setItemDataBlock(copy, 1, std::nullopt) == 0 && document.convertToTextFrame(copy) == 0)
            story = document.textOfFrame(copy);
    }
    ~MessageFrame() {
        if (copy != kInvalidUID) static_cast<void>(document.deleteItem(copy));
    }
    MessageFrame(const MessageFrame&) = delete;
    MessageFrame& operator=(const MessageFrame&) = delete;

    [[nodiscard]] bool isReady() const { return story != kInvalidUID; }
    [[nodiscard]] errorWord setText(std::u32string_view text, std::string_view swatch);
    /// Sets the text as large as it fits.
    [[nodiscard]] errorWord enlarge(bool keepsWords);
    /// Nothing where nobody draws.
    [[nodiscard]] std::string drawn() const {
        std::string tiff;
        return document.snapshotItem(copy, pixelsPerInch, tiff) == 0 ? tiff : std::string();
    }

 private:
    [[nodiscard]] std::int32_t length() const { return document.totalLength(story) - 1; }
    [[nodiscard]] errorWord setSize(std::int32_t points) {
        return document.attributeApply(story, 0, length(),
                                       std::make_shared<NumberAttribute>(TextAttributeClass::pointSize, points));
    }
    [[nodiscard]] bool breaksWord(std::int32_t points);

    Document& document;
    UID copy = kInvalidUID;
    UID story = kInvalidUID;
};

errorWord MessageFrame::setText(std::u32string_view text, std::string_view swatch) {
    const errorWord error = document.textReplace(story, 0, length(), text, false);
    DocumentLooks* const looks = looksOf(document);
    if (error != 0 || looks == nullptr) return error;
    if (swatch == messageSwatch) looks->ensureSwatch(swatch, {0, 1, 0, 0});
    static_cast<void>(looks->applySwatch(story, 0, length(), swatch));  // without the swatch it stays as it is
    return 0;
}

errorWord MessageFrame::enlarge(bool keepsWords) {
    std::int32_t fits = leastSize, above = mostSize + 1;
    while (above - fits > 1) {
        const std::int32_t middle = (fits + above) / 2;
        const errorWord error = setSize(middle);
        if (error != 0) return error;
        (document.isOverset(story) ? above : fits) = middle;
    }
    errorWord error = setSize(fits);
    while (keepsWords && error == 0 && fits > leastSizeForWords && breaksWord(fits))
        error = setSize(--fits);
    return error;
}

/// Whether a word stands on two lines: what shows it is then higher than a line.
bool MessageFrame::breaksWord(std::int32_t points) {
    constexpr double twoLines = 1.9;
    const std::u32string text = document.textRead(story, 0, length());
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t limit = std::min(text.find(U' ', start), text.size());
        const auto shown =
            document.textBounds(story, static_cast<std::int32_t>(start), static_cast<std::int32_t>(limit - start));
        if (limit > start && shown && shown->height() > twoLines * points) return true;
        start = limit + 1;
    }
    return false;
}

errorWord drawMessage(UIDRef frame, std::u32string_view text, std::string_view swatch, bool keepsWords,
                      std::string& outTiff) {
    MessageFrame message(frame);
    if (!message.isReady()) return 0;
    errorWord error = message.setText(text, swatch);
    if (error == 0) error = message.enlarge(keepsWords);
    if (error == 0) outTiff = message.drawn();
    return error;
}

}  // namespace

errorWord messagePicture(UIDRef frame, std::u32string_view text, std::uint32_t pdfPage, std::string_view swatch,
                         bool keepsWords) {
    if (text.empty()) return 0;
    const bool tracks = pictureRun().trackPlacedPictures;
    const std::string path = utf32ToUtf8(text);
    if (tracks) {
        const auto known = findPlacedPicture(describePlacedPicture(frame, path, picturePositionMessage, pdfPage));
        if (known) return notePlacedPicture(frame, *known, false);
    }
    std::string tiff;
    errorWord error = drawMessage(frame, text, swatch, keepsWords, tiff);
    if (error != 0 || tiff.empty()) return error;
    error = placePictureBytes(frame, std::move(tiff));
    if (error != 0 || !tracks) return error;
    const auto placed = describePlacedPicture(frame, path, picturePositionMessage, pdfPage);
    return notePlacedPicture(frame, addPlacedPicture(placed), true);
}

}  // namespace tarnova
