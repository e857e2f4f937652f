#include "merge/picture_placing.h"

#include <optional>

#include "engine/toolkit/id_file.h"
#include "engine/toolkit/pstring.h"

namespace tarnova {
namespace {

constexpr std::int16_t positionMessage = 2;
constexpr std::int16_t positionKeep = 4;

/// The host's PDF preferences as long as it lives; then as they were.
class PdfPrefsSet {
 public:
    PdfPrefsSet(Document& itsDocument, const pdfPlacePrefsRec& wanted)
        : document(itsDocument), before(itsDocument.pdfPlacePrefs()) {
        if (before != wanted) document.setPdfPlacePrefs(wanted.page, wanted.crop, wanted.transparent);
    }
    ~PdfPrefsSet() { document.setPdfPlacePrefs(before.page, before.crop, before.transparent); }
    PdfPrefsSet(const PdfPrefsSet&) = delete;
    PdfPrefsSet& operator=(const PdfPrefsSet&) = delete;

 private:
    Document& document;
    pdfPlacePrefsRec before;
};

UID pictureIn(UIDRef frame) {
    const Document& document = *frame.database;
    for (std::int32_t i = 0; i < document.childCount(frame.uid); ++i) {
        const UID child = document.childAt(frame.uid, i);
        if (document.itemClass(child) == ItemClass::graphic) return child;
    }
    return kInvalidUID;
}

errorWord fitPicture(Document& document, UID picture, std::int16_t picturePosition) {
    errorWord error = 0;
    switch (picturePosition) {
        case 0:
            return document.fitOperation1(picture, {0, 0});
        case 1:
            return document.fitOperation2(picture);
        case 2:
            error = document.fitOperation3(picture);
            return error != 0 ? error : document.fitOperation2(picture);
        case 3:
            return document.fitOperation4(picture);
        case 5:
        case 6:
        case 7:
            error = document.fitOperation5(picture);
            return error != 0 ? error : document.fitOperation2(picture);
        case 8:
            return document.fitOperation6(picture);
        default:
            return 0;
    }
}

/// How far a side moves: to the frame's first edge, its middle or its last edge.
double shiftOf(std::int16_t align, double frameStart, double frameSize, double start, double size) {
    switch (align) {
        case 1:
            return frameStart - start;
        case 2:
            return frameStart + (frameSize - size) * 0.5 - start;
        case 3:
            return frameStart + frameSize - size - start;
        default:
            return 0;
    }
}

errorWord alignPicture(UIDRef frame, UID picture, const pictureFitRec& fit) {
    if (fit.hAlign == 0 && fit.vAlign == 0) return 0;
    Document& document = *frame.database;
    const PMRect box = document.boundsInSpread(frame.uid), at = document.boundsInSpread(picture);
    return document.moveBy(picture, shiftOf(fit.hAlign, box.left, box.width(), at.left, at.width()),
                           shiftOf(fit.vAlign, box.top, box.height(), at.top, at.height()));
}

/// Gives the picture the clip that the one before it had, made anew from its own content.
errorWord carryClip(Document& document, UID picture, const clipSettingsRec& clip) {
    errorWord error = document.BeginCommandSequence("Set Clipping Path");
    if (error != 0) return error;
    error = document.setClipSettings(picture, clip);
    if (error == 0 && document.makeClippingPath(picture, clip) != 0)
        error = document.setClipSettings(picture, {});  // nothing in this picture to clip it by
    document.EndCommandSequence();
    return error;
}

bool isPdf(const std::string& path) {
    return ascii::equalNoCase(IDFile(path).extension(), "pdf");
}

}  // namespace

std::uint16_t placeFile(UIDRef frame, const std::string& path, const pictureFitRec& fit, const pdfPlacePrefsRec& pdf,
                        bool refreshLink) {
    Document& document = *frame.database;
    const bool wasUnassigned = document.contentKind(frame.uid) == ContentKind::unassigned;
    const UID old = pictureIn(frame);
    const clipSettingsRec clip = old == kInvalidUID ? clipSettingsRec{} : document.clipSettings(old);
    UID picture = kInvalidUID;
    errorWord error = 0;
    {
        const PdfPrefsSet prefs(document, pdf);
        error = document.placeIntoFrame(path, frame.uid, {}, picture);
    }
    if (error != 0) return frameDamaged;
    if (picture == kInvalidUID) return framePlaced;  // a text
    if (fit.picturePosition != positionKeep) error = document.resetPictureTransform(picture);
    if (error == 0) error = fitPicture(document, picture, fit.picturePosition);
    if (error == 0) error = alignPicture(frame, picture, fit);
    if (error == 0 && clip.type != clipSettingsRec::Type::none) error = carryClip(document, picture, clip);
    if (error == 0 && wasUnassigned) error = document.setContentKind(frame.uid, ContentKind::unassigned);
    if (error == 0 && refreshLink) error = document.updateLink(picture);
    if (error != 0) return frameDamaged;
    if (!isPdf(path)) return framePlaced;
    const auto shown = static_cast<std::uint32_t>(document.placedPdfPage(picture)) + 1;
    return shown == pdf.page ? framePlaced : frameOtherPage;
}

errorWord placePictureBytes(UIDRef frame, std::string bytes) {
    Document& document = *frame.database;
    UID picture = kInvalidUID;
    errorWord error = document.placeBytesIntoFrame(std::move(bytes), frame.uid, picture);
    if (error == 0) error = document.resetPictureTransform(picture);
    return error == 0 ? fitPicture(document, picture, positionMessage) : error;
}

errorWord setFrameText(UIDRef frame, std::u32string_view text) {
    Document& document = *frame.database;
    const UID story = document.textOfFrame(frame.uid);
    if (story == kInvalidUID) return 0;
    const textSpanRec thread = document.threadSpan(story, 0);
    return document.textReplace(story, thread.start, thread.length - 1, text, false);
}

}  // namespace tarnova
