#include "host/render/pdf_pictures.h"

#include <fmt/format.h>

#include <memory>

#include "host/render/pdf_rows.h"

namespace tarnova {

namespace {

constexpr const char* deviceSpaces[] = {"/DeviceGray", "/DeviceGray", "/DeviceRGB", "/DeviceCMYK"};

/// The page's coordinates run upward in the unit square, a picture's downward.
PMMatrix toUnitSquare(const PMMatrix& toPicture, PMPoint size) {
    return toPicture.then({1 / size.x, 0, 0, -1 / size.y, 0, 1});
}

}  // namespace

std::uint32_t PdfPictures::place(PdfObjects& objects, const PlacedGraphic& graphic, const std::string& folder) {
    const OpenedPicture opened = openGraphic(graphic, folder);
    if (opened.picture == nullptr) {
        notePicture(found, graphic, opened.reason);
        return placeholder(objects, graphic.bounds);
    }
    const auto [entry, isNew] = written.try_emplace(opened.picture->contentKey(), 0);
    if (isNew) entry->second = write(objects, *opened.picture);
    if (entry->second != 0) return entry->second;
    notePicture(found, graphic, unreadablePicture);
    return placeholder(objects, graphic.bounds);
}

std::uint32_t PdfPictures::write(PdfObjects& objects, const Picture& picture) {
    return picture.info().kind == PictureKind::page ? writePage(objects, picture) : writeRaster(objects, picture);
}

std::uint32_t PdfPictures::writePage(PdfObjects& objects, const Picture& picture) {
    const PageInfo& page = picture.info().page;
    const std::shared_ptr<const std::string> bytes = picture.pdfBytes();
    if (bytes == nullptr) return 0;
    const std::uint32_t form =
        pages.write(objects, bytes, page.page, page.box, toUnitSquare(picture.pageMatrix(), picture.size()));
    if (form == 0 || page.transparent) return form;
    return writeHolder(objects, "1 g 0 0 1 1 re f 0 g", form);
}

/// An image whose first row isn't its upper edge is turned by a form around it.
std::uint32_t PdfPictures::writeRaster(PdfObjects& objects, const Picture& picture) {
    const PictureInfo& info = picture.info();
    std::uint32_t image = 0;
    if (info.raster.jpegPassesThrough) {
        const std::shared_ptr<const std::string> bytes = picture.fileBytes();
        if (bytes != nullptr) image = writeJpeg(objects, info, *bytes);
    } else {
        const std::shared_ptr<const PictureSamples> samples = picture.samples();
        if (samples != nullptr) image = writeSamples(objects, info, *samples);
    }
    if (image == 0 || info.raster.orientation <= 1) return image;
    const PMMatrix m = PMMatrix{1, 0, 0, -1, 0, 1}.then(toUnitSquare(picture.imageMatrix(), picture.size()));
    return writeHolder(objects, fmt::format("{:g} {:g} {:g} {:g} {:g} {:g} cm", m.a, m.b, m.c, m.d, m.tx, m.ty), image);
}

void PdfPictures::beginImage(std::uint32_t width, std::uint32_t height, int bits) {
    body.clear();
    body.put(fmt::format("/Type/XObject/Subtype/Image/Width {}/Height {}/BitsPerComponent {}", width, height, bits));
}

void PdfPictures::putColorSpace(PdfObjects& objects, PictureColor color, const std::string& profile) {
    body.put("/ColorSpace");
    const char* const device = deviceSpaces[static_cast<int>(color)];
    if (profile.empty()) return body.put(device);
    const auto [entry, isNew] = profiles.try_emplace(profile, 0);
    if (isNew) {
        entry->second = objects.reserve();
        objects.writeStream(entry->second, fmt::format("/N {}/Alternate{}", componentsOf(color), device), profile);
    }
    body.put(fmt::format("[/ICCBased {} 0 R]", entry->second));
}

std::uint32_t PdfPictures::writeJpeg(PdfObjects& objects, const PictureInfo& info, std::string_view bytes) {
    const RasterInfo& raster = info.raster;
    beginImage(raster.width, raster.height, 8);
    putColorSpace(objects, raster.color, raster.iccProfile);
    if (raster.jpegInverted) body.put("/Decode[1 0 1 0 1 0 1 0]");
    body.put("/Filter/DCTDecode");
    const std::uint32_t number = objects.reserve();
    objects.writePlainStream(number, body.view(), bytes);
    return number;
}

std::uint32_t PdfPictures::writeSamples(PdfObjects& objects, const PictureInfo& info, const PictureSamples& samples) {
    std::uint32_t mask = 0;
    if (!samples.alpha.empty()) {
        beginImage(samples.width, samples.height, 8);
        body.put("/ColorSpace/DeviceGray");
        mask = objects.reserve();
        writeRows(objects, mask, body, {samples.alpha.data(), samples.width, samples.height, 1});
    }
    const bool isBilevel = samples.color == PictureColor::bilevel;
    beginImage(samples.width, samples.height, isBilevel ? 1 : 8);
    putColorSpace(objects, samples.color, info.raster.iccProfile);
    if (mask != 0) body.put(fmt::format("/SMask {} 0 R", mask));
    const std::uint32_t number = objects.reserve();
    if (isBilevel) {
        objects.writeStream(number, body.view(), packedBits(samples.values, samples.width, samples.height));
    } else {
        writeRows(objects, number, body,
                  {samples.values.data(), samples.width, samples.height, componentsOf(samples.color)});
    }
    return number;
}

/// A form that fills the unit square as what it holds does, behind some operators.
std::uint32_t PdfPictures::writeHolder(PdfObjects& objects, std::string_view before, std::uint32_t held) {
    const std::uint32_t number = objects.reserve();
    objects.writeStream(
        number, fmt::format("/Type/XObject/Subtype/Form/BBox[0 0 1 1]/Resources<</XObject<</P {} 0 R>>>>", held),
        fmt::format("{} /P Do", before));
    return number;
}

std::uint32_t PdfPictures::placeholder(PdfObjects& objects, const PMRect& bounds) {
    const double w = std::max(bounds.width(), 0.001), h = std::max(bounds.height(), 0.001);
    const auto [entry, isNew] =
        placeholders.try_emplace({ByteBuffer::quantize(w, 1000), ByteBuffer::quantize(h, 1000)}, 0);
    if (!isNew) return entry->second;
    entry->second = objects.reserve();
    objects.writeStream(
        entry->second,
        fmt::format("/Type/XObject/Subtype/Form/BBox[0 0 {0:.3f} {1:.3f}]/Matrix[{2:.12f} 0 0 {3:.12f} 0 0]", w, h,
                    1 / w, 1 / h),
        fmt::format(
            "{2} g 0 0 {0:.3f} {1:.3f} re f {3} G {4} w []0 d 0 J 0 0 m {0:.3f} {1:.3f} l 0 {1:.3f} m {0:.3f} 0 l S", w,
            h, placeholderGround, placeholderCross, placeholderLine));
    return entry->second;
}

}  // namespace tarnova
