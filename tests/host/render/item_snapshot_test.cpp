// Items drawn to TIFF files in memory.

#include <gtest/gtest.h>

#include "host/files/layout_file.h"
#include "host/model/item_drawing.h"
#include "host/render/item_snapshot.h"
#include "host/text/composer.h"
#include "tests/host/render/picture.h"

namespace tarnova {
namespace {

using namespace tarnova::testing;

TEST(ItemSnapshot, ShowsAnItemAloneAtItsResolution) {
    const ScratchFolder folder;
    const std::string path = folder.path("layout.tvd");
    std::ofstream(path) << R"({"tarnovaLayout": 1, "pageSize": [200, 200], "pages": [{"items": [
        {"uid": 101, "bounds": [0, 0, 200, 200], "fill": "Black"},
        {"uid": 102, "group": [{"uid": 103, "bounds": [50, 40, 60, 30], "rotate": 90, "stroke": {"weight": 20}},
                               {"bounds": [90, 60, 30, 30], "fill": "Black"}]},
        {"uid": 104, "bounds": [300, 0, 40, 30], "fill": "Black", "printing": false}]}]})";
    layoutError error;
    const auto document = openLayout(path, error);
    ASSERT_NE(document, nullptr) << error.message;
    setItemDrawing(drawItemTiff);
    struct testRow {
        UID item;
        double resolution;
        int width, height;
        std::pair<int, int> dark, white;
    };
    const testRow rows[] = {
        {101, 72, 200, 200, {0, 0}, {200, 200}},
        {102, 144, 110, 130, {100, 100}, {30, 60}},
        {103, 72, 30, 60, {5, 5}, {15, 30}},
        {104, 36, 20, 15, {10, 10}, {20, 15}},
    };
    for (const testRow& row : rows) {
        std::string tiff;
        ASSERT_EQ(document->snapshotItem(row.item, row.resolution, tiff), 0) << row.item;
        std::ofstream(folder.path("item.tif"), std::ios::binary) << tiff;
        const CommandResult converted =
            runCommand("convert '" + folder.path("item.tif") + "' '" + folder.path("item.png") + "'");
        ASSERT_EQ(converted.output, "") << row.item;
        const PngPicture shown(folder.path("item.png"));
        EXPECT_EQ(shown.width(), row.width) << row.item;
        EXPECT_EQ(shown.height(), row.height) << row.item;
        EXPECT_EQ(shown.at(row.dark.first, row.dark.second), 0u) << row.item;
        const bool hasWhite = row.white.first < row.width;
        EXPECT_TRUE(!hasWhite || shown.at(row.white.first, row.white.second) == 0xFFFFFF) << row.item;
        const std::string resolution = runCommand("identify -format '%x' '" + folder.path("item.tif") + "'").output;
        EXPECT_EQ(std::stod(resolution), row.resolution);
    }
    std::string tiff;
    EXPECT_NE(document->snapshotItem(999, 72, tiff), 0);
    EXPECT_NE(document->snapshotItem(101, 0, tiff), 0);
    setItemDrawing(nullptr);
    EXPECT_NE(document->snapshotItem(101, 72, tiff), 0);
}

}  // namespace
}  // namespace tarnova
