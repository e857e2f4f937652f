#include "host/render/svg_output.h"

#include <gtest/gtest.h>

#include "tests/host/render/page_kit.h"
#include "tests/host/render/page_kit.h"

namespace tarnova {
namespace {

using namespace tarnova::testing;

class SvgFile : public ::testing::Test {
 protected:
    void draw(const DisplayList& page) {
        std::string error;
        ASSERT_TRUE(writePageSvg(page, path, error)) << error;
        EXPECT_EQ(runCommand("xmllint --noout --nonet '" + path + "'").output, "");
    }

    ScratchFolder folder;
    std::string path = folder.path("page.svg");
    PageKit kit;  // 200 by 300 points
};

TEST_F(SvgFile, HoldsSizeColoursAndOutlinesOnly) {
    PageKit odd(200.5, 300.25);
    odd.rectangle({10, 20, 30, 40}, {PageKit::bluish, 0.5});
    odd.line(U"Hi", 10, 80);
    draw(odd.list);
    const std::string svg = fileBytes(path);
    EXPECT_NE(svg.find(R"(width="200.5pt" height="300.25pt" viewBox="0 0 200.5 300.25")"), std::string::npos) << svg;
    EXPECT_NE(svg.find("fill:rgb(50%,75%,100%)"), std::string::npos) << svg;
    EXPECT_EQ(countOf(svg, "<path"), 2u) << svg;
    EXPECT_EQ(countOf(svg, "<image") + countOf(svg, "<text") + countOf(svg, "href"), 0u) << svg;
}

TEST_F(SvgFile, GlyphsKeepTheShapeOfTheFontHoweverSmall) {
    CharFormat tiny;
    tiny.pointSize = 1;
    const PMMatrix enlarged = {50, 0, 0, 50, 10, 100};
    kit.line(U"O", 0, 0, tiny, enlarged);
    draw(kit.list);
    const std::string small = fileBytes(path);
    PageKit large;
    CharFormat fifty;
    fifty.pointSize = 50;
    large.line(U"O", 0, 0, fifty, {1, 0, 0, 1, 10, 100});
    draw(large.list);
    EXPECT_EQ(small, fileBytes(path));
}

}  // namespace
}  // namespace tarnova
