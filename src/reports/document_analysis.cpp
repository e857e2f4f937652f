#include "reports/document_analysis.h"

#include <algorithm>
#include <set>

#include "document/frame_callback.h"
#include "document/walk.h"
#include "engine/toolkit/pm_string.h"

namespace tarnova {
namespace {

/// Looks at the pictures in frames and brings them up to date.
class ZavoUpdtLnkdFilesFrameCallback final : public ZavoFrameCallback {
 public:
    explicit ZavoUpdtLnkdFilesFrameCallback(documentAnalysisRec& itsOut) : out(itsOut) {}

    bool FrameBegin() override {
        Document& document = *frameRef.database;
        for (std::int32_t i = 0; i < document.childCount(frameRef.uid); ++i) {
            const UID child = document.childAt(frameRef.uid, i);
            if (document.itemClass(child) == ItemClass::graphic) look(document, child);
        }
        return false;
    }

 private:
    void look(Document& document, UID picture) {
        const std::string path = document.linkPath(picture);
        if (path.empty()) return;
        LinkStatus status = document.linkStatus(picture);
        if (status == LinkStatus::outOfDate && document.updateLink(picture) == 0) status = LinkStatus::good;
        if (status != LinkStatus::good) ++out.problems;
        if (seen.insert(path).second) out.pictures.push_back(path);
        if (status == LinkStatus::missing && missing.insert(path).second) out.missingPictures.push_back(path);
    }

    documentAnalysisRec& out;
    std::set<std::string> seen;
    std::set<std::string> missing;
};

}  // namespace

errorWord analyseDocument(UIDRef reference, documentAnalysisRec& out, errorWord priorError) {
    if (priorError != 0) return priorError;
    Document& document = *reference.database;
    out = {};
    const PMString name = PMString::ofKey("kZavoUpdateLinkedFilesStringKey");
    if (document.BeginCommandSequence(name.view()) != 0) return errCommandSequence;
    ZavoUpdtLnkdFilesFrameCallback pictures(out);
    std::uint16_t cancel = 0;
    walkDocument(document, &pictures, nullptr, 0, 0, WalkScope::everything, false, false, nullptr, nullptr, &cancel,
                 true);
    document.EndCommandSequence();
    out.pages = document.pageCount();
    out.fonts = document.usedFonts();
    const auto isMissing = [](const usedFontRec& font) { return font.isMissing; };
    out.problems += static_cast<std::uint32_t>(std::count_if(out.fonts.begin(), out.fonts.end(), isMissing));
    for (const UID story : document.stories())
        out.problems += document.isOverset(story) ? 1 : 0;
    return 0;
}

}  // namespace tarnova
