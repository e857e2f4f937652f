#include "host/pictures/picture.h"

namespace tarnova {

PMMatrix imageMatrixOf(const PictureInfo& info) {
    const double w = info.size.x, h = info.size.y;
    switch (info.raster.orientation) {  // where the first stored row and the first pixel of a row are seen
        case 2:
            return {-w, 0, 0, h, w, 0};
        case 3:
            return {-w, 0, 0, -h, w, h};
        case 4:
            return {w, 0, 0, -h, 0, h};
        case 5:
            return {0, h, w, 0, 0, 0};
        case 6:
            return {0, h, -w, 0, w, 0};
        case 7:
            return {0, -h, -w, 0, w, h};
        case 8:
            return {0, -h, w, 0, 0, h};
        default:
            return {w, 0, 0, h, 0, 0};
    }
}

PMMatrix pageMatrixOf(const PictureInfo& info) {
    const PMRect& box = info.page.box;
    const double u = info.page.userUnit;
    switch (info.page.rotation) {
        case 90:
            return {0, u, u, 0, -box.top * u, -box.left * u};
        case 180:
            return {-u, 0, 0, u, box.right * u, -box.top * u};
        case 270:
            return {0, -u, -u, 0, box.bottom * u, box.right * u};
        default:
            return {u, 0, 0, -u, -box.left * u, box.bottom * u};
    }
}

}  // namespace tarnova
