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

std::vector<SubPath> subPathsOf(const PictureOutline& outline, const PMMatrix& toItem) {
    std::vector<SubPath> out;
    for (const PictureContour& contour : outline) {
        SubPath part;
        part.start = toItem.map(contour.front().at);
        for (std::size_t i = 0; i < contour.size(); ++i) {
            const OutlineKnot &from = contour[i], &to = contour[(i + 1) % contour.size()];
            const bool straight = from.out == from.at && to.in == to.at;
            part.segments.push_back({straight ? PathSegment::Kind::line : PathSegment::Kind::curve,
                                     toItem.map(from.out), toItem.map(to.in), toItem.map(to.at)});
        }
        out.push_back(std::move(part));
    }
    return out;
}

LinkStatus linkStatusOf(const PlacedGraphic& graphic, const std::string& documentFolder) {
    if (graphic.embedded != nullptr) return LinkStatus::good;
    const FileStamp now = stampOfFile(pathOfGraphic(graphic, documentFolder));
    if (!now.isKnown()) return LinkStatus::missing;
    const bool isKnown = graphic.fileSize >= 0;
    const bool isSame = graphic.fileSize == now.size && graphic.fileTime == millisecondsOf(now);
    return !isKnown || isSame ? LinkStatus::good : LinkStatus::outOfDate;
}

}  // namespace tarnova
