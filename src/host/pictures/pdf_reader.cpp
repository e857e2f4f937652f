// PDF pages (ISO 32000-2). The objects are QPDF's work.

#include <algorithm>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>

#include "host/pictures/page_raster.h"
#include "host/pictures/picture_format.h"

namespace tarnova {

namespace {

constexpr std::string_view pdfMark = "%PDF-", endMark = "%%EOF";
constexpr std::size_t markSearchBytes = 1024;  // in front and at the end; what readers of PDF allow

PMRect boxOf(QPDFObjectHandle array) {
    if (!array.isRectangle()) return {};
    const QPDFObjectHandle::Rectangle r = array.getArrayAsRectangle();
    return {std::min(r.llx, r.urx), std::min(r.lly, r.ury), std::max(r.llx, r.urx), std::max(r.lly, r.ury)};
}

PMRect common(const PMRect& a, const PMRect& b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
}

bool hasArea(const PMRect& r) {
    return r.width() > 0 && r.height() > 0;
}

PMRect chosenBox(QPDFPageObjectHelper& page, PdfCrop crop) {
    switch (crop) {
        case PdfCrop::art:
            return boxOf(page.getArtBox());
        case PdfCrop::trim:
            return boxOf(page.getTrimBox());
        case PdfCrop::bleed:
            return boxOf(page.getBleedBox());
        case PdfCrop::media:
            return boxOf(page.getMediaBox());
        default:
            return boxOf(page.getCropBox());
    }
}

/// The box around what the page paints; the crop box when that is nothing.
PMRect contentBox(std::string_view pdf, const PictureInfo& shownWhole, bool onAllLayers) {
    PictureInfo plain = shownWhole;
    plain.page.userUnit = 1;
    const PMRect painted = paintedBounds(pdf, plain.page.page, onAllLayers);
    const std::optional<PMMatrix> toUser = pageMatrixOf(plain).inverse();
    return hasArea(painted) && toUser ? toUser->mapBounds(painted) : plain.page.box;
}

std::int32_t turnOf(QPDFObjectHandle rotate) {
    const long long degrees = rotate.isInteger() ? rotate.getIntValue() % 360 : 0;
    return static_cast<std::int32_t>((degrees + 360) % 360 / 90 * 90);
}

double unitOf(QPDFObjectHandle unit) {
    const double value = unit.isNumber() ? unit.getNumericValue() : 1;
    return value > 0 ? value : 1;
}

void readPage(std::string_view bytes, const PageChoice& choice, PictureInfo& out) {
    QPDF pdf;
    pdf.setSuppressWarnings(true);
    pdf.processMemoryFile("picture", bytes.data(), bytes.size());
    if (pdf.isEncrypted()) throw PictureFault("The PDF file is encrypted.");
    std::vector<QPDFPageObjectHelper> pages = QPDFPageDocumentHelper(pdf).getAllPages();
    if (pages.empty()) throw PictureFault("The PDF file has no pages.");
    PageInfo& page = out.page;
    page.pageCount = static_cast<std::int32_t>(pages.size());
    page.page = choice.page >= 0 && choice.page < page.pageCount ? choice.page : 0;
    page.transparent = choice.transparent;
    QPDFPageObjectHelper& shown = pages[static_cast<std::size_t>(page.page)];
    page.rotation = turnOf(shown.getAttribute("/Rotate", false));
    page.userUnit = unitOf(shown.getObjectHandle().getKey("/UserUnit"));
    const PMRect media = boxOf(shown.getMediaBox());
    const auto crop = static_cast<PdfCrop>(choice.crop);
    page.box = common(chosenBox(shown, crop), media);
    if (!hasArea(page.box)) page.box = media;
    if (crop == PdfCrop::visibleContent || crop == PdfCrop::allContent) {
        page.box = contentBox(bytes, out, crop == PdfCrop::allContent);
    }
    out.size = {page.box.width() * page.userUnit, page.box.height() * page.userUnit};
    if (page.rotation % 180 != 0) std::swap(out.size.x, out.size.y);
}

}  // namespace

bool isPdf(std::string_view bytes) {
    return bytes.substr(0, markSearchBytes).find(pdfMark) != std::string_view::npos;
}

void readPdf(std::string_view bytes, const PageChoice& choice, PictureInfo& out) try {
    // What is wrong with cross-references QPDF mends; of a file that is cut off that would leave some pages.
    if (bytes.substr(bytes.size() - std::min(bytes.size(), markSearchBytes)).find(endMark) == std::string_view::npos) {
        throw PictureFault("The file is cut off.");
    }
    readPage(bytes, choice, out);
} catch (const PictureFault&) {
    throw;
} catch (const QPDFExc& fault) {
    throw PictureFault(fault.getErrorCode() == qpdf_e_password
                           ? "The PDF file is encrypted."
                           : "The PDF file is damaged: " + fault.getMessageDetail());
} catch (const std::exception&) {  // numbers out of range and other surprises
    throw PictureFault("The PDF file is damaged.");
}

}  // namespace tarnova
