// EPS, which Ghostscript makes a page of PDF, in a process of its own without access to files and within a time.

#include "host/pictures/byte_reader.h"
#include "host/pictures/converter.h"
#include "host/pictures/picture_format.h"

namespace tarnova {

namespace {

constexpr std::string_view dosMark("\xC5\xD0\xD3\xC6", 4);  // a file that holds a preview as well

std::string_view postScriptOf(std::string_view bytes) {
    if (!bytes.starts_with(dosMark)) return bytes;
    const ByteReader file(bytes, false);
    return file.span(file.u32(4), file.u32(8));
}

}  // namespace

bool isEps(std::string_view bytes) {
    return bytes.starts_with("%!PS") || bytes.starts_with(dosMark);
}

std::string epsToPdf(std::string_view bytes) {
    if (bytes.find("%%BoundingBox:") == std::string_view::npos) {
        throw PictureFault("The file is PostScript, but no EPS: it has no bounding box.");
    }
    const char* const command[] = {"gs",
                                   "-q",
                                   "-dSAFER",
                                   "-dBATCH",
                                   "-dNOPAUSE",
                                   "-dEPSCrop",
                                   "-sDEVICE=pdfwrite",
                                   "-dCompatibilityLevel=1.6",
                                   "-dAutoRotatePages=/None",
                                   "-dColorConversionStrategy=/LeaveColorUnchanged",
                                   "-dDownsampleColorImages=false",
                                   "-dDownsampleGrayImages=false",
                                   "-dDownsampleMonoImages=false",
                                   "-dAutoFilterColorImages=false",
                                   "-dAutoFilterGrayImages=false",
                                   "-dColorImageFilter=/FlateEncode",
                                   "-dGrayImageFilter=/FlateEncode",
                                   "-sstdout=%stderr",
                                   "-sOutputFile=%stdout",
                                   "-",
                                   nullptr};
    return convertedToPdf(command, postScriptOf(bytes), "EPS", "Ghostscript");
}

}  // namespace tarnova
