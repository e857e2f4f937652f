#include "host/model/placed_picture.h"

namespace tarnova {

std::string pathOfGraphic(const PlacedGraphic& graphic, const std::string& documentFolder) {
    const std::string& path = graphic.filePath;
    if (path.empty() || path.starts_with('/') || documentFolder.empty()) return path;
    return documentFolder + (documentFolder.ends_with('/') ? "" : "/") + path;
}

OpenedPicture openGraphic(const PlacedGraphic& graphic, const std::string& documentFolder) {
    const PageChoice choice{graphic.pdfPage, graphic.pdfCrop, graphic.pdfTransparent};
    PictureLibrary& library = PictureLibrary::shared();
    if (graphic.embedded != nullptr) return library.openBytes(graphic.embedded, choice);
    return library.open(pathOfGraphic(graphic, documentFolder), choice);
}

PMMatrix pictureToItem(const PlacedGraphic& graphic, PMPoint pictureSize) {
    const PMRect& box = graphic.bounds;
    return {box.width() / pictureSize.x, 0, 0, box.height() / pictureSize.y, box.left, box.top};
}

LinkStatus linkStatusOf(const PlacedGraphic& graphic, const std::string& documentFolder) {
    if (graphic.embedded != nullptr) return LinkStatus::good;
    const FileStamp now = stampOfFile(pathOfGraphic(graphic, documentFolder));
    if (!now.isKnown()) return LinkStatus::missing;
    const FileStamp placed{graphic.fileTime, graphic.fileSize};
    return !placed.isKnown() || placed == now ? LinkStatus::good : LinkStatus::outOfDate;
}

}  // namespace tarnova
