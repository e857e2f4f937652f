// Files that aren't the pictures they say they are: each is damaged, soon, with a reason, and costs little memory.

#include <libdeflate.h>
#include <sys/resource.h>

#include <chrono>
#include <vector>

#include "engine/toolkit/byte_order.h"
#include "host/pictures/converter.h"
#include "host/pictures/picture_library.h"
#include "tests/host/pictures/picture_kit.h"

namespace tarnova {
namespace {

std::string big32Text(std::uint32_t value) {
    std::string out(4, '\0');
    storeBig32(out.data(), value);
    return out;
}

void expectDamaged(const std::string& path, const std::string& reason) {
    const auto start = std::chrono::steady_clock::now();
    const OpenedPicture opened = PictureLibrary().open(path);
    EXPECT_EQ(opened.status, PictureStatus::damaged) << path;
    EXPECT_EQ(opened.picture, nullptr) << path;
    EXPECT_NE(opened.reason.find(reason), std::string::npos) << path << ": " << opened.reason;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30)) << path;
}

constexpr const char *epsStart = "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 9 9\n",
                     *svgFile = "<svg xmlns='http://www.w3.org/2000/svg'><g><rect width='5' height='5'/></g></svg>";

TEST(HostilePictures, CutOff) {
    const PictureFiles files;
    struct testRow {
        std::string name, bytes;
    };
    std::vector<testRow> rows = {{"a.pdf", pdfOf("", "0 0 9 9 re f")},
                                 {"a.svg", svgFile},
                                 {"a.eps", std::string(epsStart) + "1 1 moveto (" + std::string(200, 'a') + ") show"}};
    for (const char* name : {"a.jpg", "a.png", "a.tif", "a.gif", "a.bmp", "a.webp"})
        rows.push_back({name, files.makeBytes("", name)});
    for (const auto& [name, bytes] : rows) {
        for (const double share : {0.0, 0.5, 0.9}) {
            const std::string cut = bytes.substr(0, static_cast<std::size_t>(double(bytes.size()) * share));
            expectDamaged(files.file(std::to_string(share) + name, cut), share == 0 ? "empty" : "");
        }
    }
}

TEST(HostilePictures, SayMoreThanTheyHold) {
    const PictureFiles files;
    std::string png = files.makeBytes("", "a.png");
    png[20] ^= 1;  // a byte of the header, under its checksum
    std::string jpeg = files.makeBytes("", "a.jpg");
    jpeg[jpeg.find("\xFF\xC0") + 5] = '\0';  // height 0, as one that is told behind the pixels
    jpeg[jpeg.find("\xFF\xC0") + 6] = '\0';
    std::string gif = files.makeBytes("", "a.gif");
    for (const std::size_t at : {6u, 7u, 8u, 9u})
        gif[at] = '\xFF';
    std::string bmp = files.makeBytes("", "a.bmp");
    bmp[20] = bmp[24] = '\x01';  // 65,576 pixels a side
    struct testRow {
        const char* name;
        std::string bytes;
        const char* reason;
    };
    const testRow rows[] = {
        {"text.jpg", "To whom it may concern", "no picture of a type"},
        {"header.png", png, "checksum"},
        {"height.jpg", jpeg, "no pixels"},
        {"screen.gif", gif, "65535 x 65535 pixels"},
        {"side.bmp", bmp, "pixels"},
        {"size.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='1e9' height='2'/>", "no size"},
        {"files.eps", std::string(epsStart) + "(/etc/passwd) (r) file\n", "damaged"},
        {"number.pdf",
         "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 99999999999999999999 0 R>>endobj\n"
         "trailer<</Root 1 0 R/Size 99999999999999999999>>\n%%EOF",
         "PDF"},
        {"header.bmp", std::string(files.makeBytes("", "b.bmp")).replace(17, 1, "\xC0"), "header"},
        {"pages.pdf", "%PDF-1.4\n1 0 obj<</Type/Catalog>>endobj\ntrailer<</Root 1 0 R>>\n%%EOF", "PDF"},
    };
    for (const auto& [name, bytes, reason] : rows)
        expectDamaged(files.file(name, bytes), reason);
}

std::string chunk(const std::string& typeAndData) {
    const std::uint32_t sum = libdeflate_crc32(0, typeAndData.data(), typeAndData.size());
    return big32Text(static_cast<std::uint32_t>(typeAndData.size() - 4)) + typeAndData + big32Text(sum);
}

/// 20,000 black and white pixels a side in 50 kilobytes, and the same pixels promised by fewer bytes.
TEST(HostilePictures, Bombs) {
    const std::string rows(20'000 * 2'501, '\0');
    std::string packed(1 << 20, '\0');
    libdeflate_compressor* packer = libdeflate_alloc_compressor(9);
    packed.resize(libdeflate_zlib_compress(packer, rows.data(), rows.size(), packed.data(), packed.size()));
    libdeflate_free_compressor(packer);
    const auto png = [&](std::uint32_t side, const std::string& data) {
        return "\x89PNG\r\n\x1a\n" + chunk("IHDR" + big32Text(side) + big32Text(side) + std::string("\1\0\0\0\0", 5)) +
               chunk("IDAT" + data) + chunk("IEND");
    };
    const PictureFiles files;
    expectDamaged(files.file("bomb.png", png(20'000, packed)), "20000 x 20000 pixels");
    expectDamaged(files.file("empty.png", png(12'000, packed.substr(0, 1'000))), "fewer data");
    rusage usage{};
    ASSERT_EQ(::getrusage(RUSAGE_SELF, &usage), 0);
    EXPECT_LT(usage.ru_maxrss, 1 << 20) << "kilobytes";
}

TEST(HostilePictures, EncryptedPdf) {
    const PictureFiles files;
    files.file("open.pdf", pdfOf("", ""));
    // What is wrong in a file without a table of objects, qpdf mends with a warning.
    const std::string command = "qpdf --warning-exit-0 --no-warn --encrypt '' owner 256 -- " + files.path("open.pdf") +
                                " " + files.path("closed.pdf");
    ASSERT_EQ(std::system(command.c_str()), 0);
    expectDamaged(files.path("closed.pdf"), "encrypted");
}

TEST(HostilePictures, ConvertersAreBounded) {
    struct testRow {
        const char* program;
        const char* argument;
        ConverterEnd end;
        const char* output;
    };
    for (const auto& [program, argument, end, output] : {testRow{"cat", "-", ConverterEnd::done, "in"},
                                                         {"false", nullptr, ConverterEnd::failed, ""},
                                                         {"no-such-program", nullptr, ConverterEnd::notThere, ""},
                                                         {"sleep", "20", ConverterEnd::outOfBounds, ""}}) {
        const char* const command[] = {program, argument, nullptr};
        std::string out;
        EXPECT_EQ(runConverter(command, "in", 1, out), end) << program;
        EXPECT_EQ(out, output) << program;
    }
}

}  // namespace
}  // namespace tarnova
