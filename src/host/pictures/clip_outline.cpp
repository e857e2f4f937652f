#include "host/pictures/clip_outline.h"

#include <algorithm>
#include <cmath>

#include "host/pictures/outline_trace.h"
#include "host/pictures/page_raster.h"
#include "host/pictures/visible_mask.h"

namespace tarnova {

namespace {

using Type = clipSettingsRec::Type;

PictureOutline mapped(const PictureOutline& outline, const PMMatrix& matrix) {
    PictureOutline out = outline;
    for (PictureContour& contour : out) {
        for (OutlineKnot& knot : contour)
            knot = {matrix.map(knot.in), matrix.map(knot.at), matrix.map(knot.out)};
    }
    return out;
}

/// The traced outlines in the coordinates of the unit square around the mask.
PictureOutline tracedOutline(const VisibleMask& mask, double tolerance) {
    PictureOutline out;
    for (const TracedContour& traced : traceMask(mask, tolerance)) {
        PictureContour contour;
        for (const PMPoint& corner : traced.corners) {
            const PMPoint at{corner.x / mask.width, corner.y / mask.height};
            contour.push_back({at, at, at});
        }
        out.push_back(std::move(contour));
    }
    return out;
}

PictureContour rectangle(PMPoint size) {
    PictureContour out;
    for (const PMPoint& corner : {PMPoint{0, 0}, {size.x, 0}, {size.x, size.y}, {0, size.y}})
        out.push_back({corner, corner, corner});
    return out;
}

/// Pixels, or a page drawn to pixels, and the way from the unit square around them to the picture's coordinates.
std::shared_ptr<const PictureSamples> pixelsOf(const Picture& picture, PMMatrix& fromUnits) {
    if (picture.info().kind == PictureKind::raster) {
        fromUnits = picture.imageMatrix();
        return picture.samples();
    }
    fromUnits = {picture.size().x, 0, 0, picture.size().y, 0, 0};
    return drawPage(picture, traceSideLimit);
}

bool edgeOutline(const Picture& picture, const clipSettingsRec& settings, PictureOutline& out) {
    PMMatrix fromUnits;
    const auto samples = pixelsOf(picture, fromUnits);
    if (samples == nullptr) return false;
    constexpr double white = 255;
    VisibleMask mask = maskOfSamples(*samples, white - std::clamp(settings.threshold, 0.0, white), traceSideLimit);
    if (!settings.insideEdges) fillHoles(mask);
    const double pointsAPixel = std::hypot(fromUnits.a, fromUnits.b) / mask.width;
    shrinkMask(mask, settings.inset / pointsAPixel);
    const double pixelsAPoint = double(mask.width) / samples->width;
    out = mapped(tracedOutline(mask, std::max(settings.tolerance, 0.0) * pixelsAPoint), fromUnits);
    return !out.empty();
}

/// An inset is taken on a raster, as for detected edges; without one the path's own curves stay.
bool embeddedOutline(const Picture& picture, const clipSettingsRec& settings, PictureOutline& out) {
    const PictureInfo& info = picture.info();
    const std::string& wanted = settings.pathName.empty() ? info.clipPathName : settings.pathName;
    const auto found = std::ranges::find_if(
        info.paths, [&](const EmbeddedPath& path) { return wanted.empty() || path.name == wanted; });
    if (found == info.paths.end()) return false;
    out = found->outline;
    if (settings.inset == 0) return true;

    const PMPoint size = picture.size();
    const double pixelsAPoint = traceSideLimit / std::max(size.x, size.y);
    const auto side = [&](double points) {
        return std::max(static_cast<std::uint32_t>(std::lround(points * pixelsAPoint)), 1u);
    };
    const std::uint32_t width = side(size.x), height = side(size.y);
    VisibleMask mask = maskOfOutline(mapped(out, {width / size.x, 0, 0, height / size.y, 0, 0}), width, height);
    shrinkMask(mask, settings.inset * pixelsAPoint);
    constexpr double roundness = 0.75;  // pixels of the raster, so that slanted sides don't go by steps
    out = mapped(tracedOutline(mask, roundness), {size.x, 0, 0, size.y, 0, 0});
    return !out.empty();
}

}  // namespace

bool makeClipOutline(const Picture& picture, const clipSettingsRec& settings, PictureOutline& out) {
    PictureOutline made;
    const bool found = settings.type == Type::embeddedPath ? embeddedOutline(picture, settings, made)
                                                           : edgeOutline(picture, settings, made);
    if (!found) return false;
    if (settings.invert) made.push_back(rectangle(picture.size()));
    out = std::move(made);
    return true;
}

}  // namespace tarnova
