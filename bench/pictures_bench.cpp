// Records with pictures through the whole program: what a picture costs a record, how often the PDF holds it, and what
// memory takes as the records grow. Run: pictures_bench TARNOVA FOLDER

#include <cairo.h>
#include <fmt/format.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "bench/process.h"

namespace tarnova::bench {
namespace {

constexpr int pictureCount = 50;
constexpr int runs = 3;
constexpr std::array<std::uint32_t, 2> sizes = {1000, 10000};

/// Waves of colour: pixels that compress about as well as those of a photo.
void writePicture(const std::string& path, int number) {
    constexpr int width = 400, height = 300;
    cairo_surface_t* const surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
    unsigned char* const data = cairo_image_surface_get_data(surface);
    std::uint32_t noise = static_cast<std::uint32_t>(number) * 2654435761u + 1;
    for (int y = 0; y < height; ++y) {
        auto* const row = reinterpret_cast<std::uint32_t*>(data + y * cairo_image_surface_get_stride(surface));
        for (int x = 0; x < width; ++x) {
            noise = noise * 1664525u + 1013904223u;
            const auto wave = static_cast<std::uint32_t>(x * (number % 7 + 1) / 3 + y * (number % 5 + 1) / 2);
            row[x] = (wave & 0xFF) << 16 | (wave / 2 & 0xFF) << 8 | (wave + (noise >> 30)) % 256;
        }
    }
    cairo_surface_mark_dirty(surface);
    cairo_surface_write_to_png(surface, path.c_str());
    cairo_surface_destroy(surface);
}

void writeJob(const std::string& folder) {
    for (int i = 0; i < pictureCount; ++i)
        writePicture(fmt::format("{}/picture-{}.png", folder, i), i);
    std::ofstream data(folder + "/cards.csv");
    data << "Name,Picture\n";
    for (std::uint32_t i = 0; i < sizes.back(); ++i)
        data << fmt::format("Member {},picture-{}.png\n", i, i * 7 % pictureCount);
    const std::string text = R"({"bounds": [20, 20, 200, 20], "text": "Dear {{Name}}"})";
    const std::string frame =
        R"(, {"bounds": [20, 50, 200, 120], "content": "graphic", "tag": {"link": "Picture", "kind": 2}})";
    const auto writeLayout = [&](const char* name, const std::string& items) {
        std::ofstream(folder + name) << R"({"tarnovaLayout": 1, "pageSize": [240, 190], "pages": [{"items": [)" << items
                                     << "]}]}\n";
    };
    writeLayout("/plain.tvd", text);
    writeLayout("/cards.tvd", text + frame);
    std::ofstream(folder + "/cards.ddf") << R"("Cards" recordDefinition; TARNOVAJNT signature;
1:"Name", 2:"Picture" fieldName; 0 dataType; 1 fileType; "," fDelimiter; TRUE "\"" textQualifier; 3 osType;
"Name" extractionRecord; "Name" field;
"Picture" extractionRecord; 1 type; 1 missingasset; TRUE isafile; 2 picturePosition; "Picture" field;
)";
}

std::size_t imagesIn(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    std::size_t count = 0;
    for (std::size_t at = 0; (at = bytes.find("/Subtype/Image", at)) != std::string::npos; ++at)
        ++count;
    return count;
}

int measure(const std::string& tarnova, const std::string& folder) {
    fmt::print("cards with one of {} pictures of 400 x 300 pixels, best of {} runs\n", pictureCount, runs);
    std::array<double, 2> plain{};
    for (const char* layout : {"plain", "cards"}) {
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            const std::string output = fmt::format("{}.pdf", layout);
            const costRec cost =
                bestOf(runs,
                       {tarnova, "merge", fmt::format("{}.tvd", layout), "--data", "cards.csv", "--ddf", "cards.ddf",
                        "--records", fmt::format("1-{}", sizes[i]), "-o", output},
                       folder);
            if (!cost.ran) {
                fmt::print(stderr, "pictures_bench: tarnova failed in {}\n", folder);
                return 1;
            }
            const bool isPlain = layout[0] == 'p';
            if (isPlain) plain[i] = cost.cpuSeconds;
            fmt::print(
                "  {:<6} {:>6} records {:>8.3f} s CPU {:>7.1f} us a record {:>7.1f} MiB {:>4} images {:>10} bytes",
                layout, sizes[i], cost.cpuSeconds, cost.cpuSeconds * 1e6 / sizes[i], cost.peakMebibytes,
                imagesIn(folder + "/" + output), std::filesystem::file_size(folder + "/" + output));
            fmt::print("{}\n",
                       isPlain ? "" : fmt::format(" {:>5.2f} times the time without", cost.cpuSeconds / plain[i]));
        }
    }
    return 0;
}

}  // namespace
}  // namespace tarnova::bench

int main(int argumentCount, char** arguments) {
    if (argumentCount < 3) {
        fmt::print(stderr, "usage: pictures_bench TARNOVA FOLDER\n");
        return 2;
    }
    const std::string tarnova = std::filesystem::absolute(arguments[1]).string();
    const std::string folder = std::filesystem::absolute(arguments[2]).string();
    std::filesystem::create_directories(folder);
    setenv("XDG_DATA_HOME", (folder + "/home").c_str(), 1);
    tarnova::bench::writeJob(folder);
    return tarnova::bench::measure(tarnova, folder);
}
