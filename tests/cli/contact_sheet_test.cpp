// The contact sheet of fits and alignments: where each picture lies in its frame, by its sizes alone, and that its PDF
// shows what its picture shows.

#include <fmt/format.h>

#include "host/files/layout_file.h"
#include "tests/cli/program_fixture.h"
#include "tests/host/render/picture.h"

namespace tarnova {
namespace {

struct sheetRec {
    const char* picture;
    PMPoint size;         // at 100 %
    bool isCmyk = false;  // which programs turn into other screen colours
};
constexpr sheetRec sheets[] = {{"wide.png", {72, 24}},    {"tall.jpg", {24, 60}}, {"ink.jpg", {48, 32}, true},
                               {"drawing.svg", {60, 40}}, {"page.pdf", {80, 50}}, {"ring.png", {64, 64}}};

/// Where the picture lies in the frame's own coordinates. Fit 8 leaves it and moves the frame's sides.
PMRect placeOf(int fit, int hAlign, int vAlign, PMPoint size, PMRect frame) {
    const double wide = frame.width() / size.x, high = frame.height() / size.y;
    const double least = std::min(wide, high), most = std::max(wide, high);
    const double scales[] = {1, 1, least, 0, 1, most, most, most, 1};
    const double w = fit == 3 ? frame.width() : size.x * scales[fit],
                 h = fit == 3 ? frame.height() : size.y * scales[fit];
    if (fit == 8) frame = {frame.left, frame.top, frame.left + w, frame.top + h};
    const bool isCentred = fit == 1 || fit == 2 || (fit >= 5 && fit <= 7);
    const auto align = [isCentred](int how, double from, double room) {
        const int edge = how != 0 ? how : isCentred ? 2 : 1;
        return from + room * (edge - 1) / 2;
    };
    const double left = align(hAlign, frame.left, frame.width() - w),
                 top = align(vAlign, frame.top, frame.height() - h);
    return {left, top, left + w, top + h};
}

class ContactSheetTest : public ProgramTest {
 protected:
    outcomeRec merge(const std::string& output) {
        const std::string sheet = source("examples/pictures/sheet");
        return run(fmt::format("merge {0}.tvd --ddf {0}.ddf --data {0}.csv -o {1}", sheet, output));
    }
};

TEST_F(ContactSheetTest, PicturesLieWhereTheirFitsAndAlignmentsSay) {
    const outcomeRec merged = merge("sheet.tvd");
    ASSERT_EQ(merged.status, 0) << merged.messages;
    layoutError error;
    const auto document = openLayout(folder + "/sheet.tvd", error);
    ASSERT_NE(document, nullptr) << error.message;
    ASSERT_EQ(document->pageCount(), static_cast<std::int32_t>(std::size(sheets)));
    for (std::int32_t page = 0; page < document->pageCount(); ++page) {
        const sheetRec& sheet = sheets[page];
        std::vector<const PageItem*> items;
        document->drawnItems(document->pageAt(page), items);
        int frames = 0;
        for (const PageItem* item : items) {
            int fit = 0, hAlign = 0, vAlign = 0;
            if (std::sscanf(item->name.c_str(), "%d %d %d", &fit, &hAlign, &vAlign) != 3) continue;
            const std::string where = fmt::format("{} in {}", sheet.picture, item->name);
            const PageItem* picture = item->children.empty() ? nullptr : document->item(item->children.front());
            ASSERT_NE(picture, nullptr) << where;
            ASSERT_NE(picture->graphic, nullptr) << where;
            const bool isTurned = item->toParent.b != 0;
            const PMRect frame{0, 0, isTurned ? 36.0 : 40.0, isTurned ? 28.0 : 34.0};
            const PMRect wanted = placeOf(fit, hAlign, vAlign, sheet.size, frame);
            const PMRect lies = picture->toParent.mapBounds(picture->graphic->bounds);
            for (const auto& [name, a, b] : {std::tuple{"left", lies.left, wanted.left},
                                             {"top", lies.top, wanted.top},
                                             {"right", lies.right, wanted.right},
                                             {"bottom", lies.bottom, wanted.bottom}}) {
                EXPECT_NEAR(a, b, 0.01) << where << ", " << name;
            }
            if (fit == 8) {
                EXPECT_NEAR(item->shape->bounds.width(), sheet.size.x, 0.01) << where;
            }
            ++frames;
        }
        EXPECT_EQ(frames, 90);
    }
}

TEST_F(ContactSheetTest, PdfAndPictureShowTheSame) {
    ASSERT_EQ(merge("sheet.pdf").status, 0);
    ASSERT_EQ(merge("own.png --dpi 96").status, 0);
    ASSERT_EQ(shell("pdftoppm -r 96 -png sheet.pdf pdf").status, 0);
    for (std::size_t i = 0; i < std::size(sheets); ++i) {
        if (sheets[i].isCmyk) continue;
        SCOPED_TRACE(sheets[i].picture);
        testing::expectTheSamePicture(testing::PngPicture(fmt::format("{}/own-{:03}.png", folder, i + 1)),
                                      testing::PngPicture(fmt::format("{}/pdf-{}.png", folder, i + 1)));
    }
}

}  // namespace
}  // namespace tarnova
