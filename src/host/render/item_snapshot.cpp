#include "host/render/item_snapshot.h"

#include "host/pictures/surface_samples.h"
#include "host/pictures/tiff_writer.h"
#include "host/render/display_list.h"
#include "host/render/page_surface.h"

namespace tarnova {

errorWord drawItemTiff(const DocumentModel& document, UID item, double pixelsPerInch, std::string& outTiff) {
    DisplayList list;
    std::string reason;
    std::vector<PictureProblem> ignored;
    if (!buildItemList(document, item, list)) return errFailed;
    const SurfacePtr surface = pageSurface(list, pixelsPerInch, ignored, reason);
    if (surface == nullptr) return errFailed;
    outTiff = writeTiff(samplesOfSurface(surface.get()), pixelsPerInch);
    return outTiff.empty() ? errFailed : 0;
}

}  // namespace tarnova
