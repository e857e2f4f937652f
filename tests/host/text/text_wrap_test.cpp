#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "host/text/composed_story.h"
#include "host/text/composer.h"
#include "host/text/line_room.h"
#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

constexpr float tolerance = 0.02F;

std::string words(int count) {
    std::string out;
    for (int i = 0; i < count; ++i)
        out += "some words ";
    return out;
}

/// A frame of 300 by 200 points at the page's top left with much text, and an item in its middle.
std::string pageAround(const std::string& wrap, const std::string& frame = "") {
    return R"({"bounds": [0, 0, 300, 200], "text": ")" + words(60) + "\"" + frame +
           R"(}, {"bounds": [120, 40, 60, 50], "wrap": )" + wrap + "}";
}

struct TextWrapTest : testing::Test {
    void load(const std::string& items, const std::string& masters = "", const std::string& page = "") {
        document = opened("{\"tarnovaLayout\": 1, \"pageSize\": [400, 400], " + masters + "\"pages\": [{" + page +
                          "\"items\": [" + items + "]}]}");
        ASSERT_NE(document, nullptr);
        document->setComposer(makeComposer());
    }
    UID top(std::int32_t index, std::int32_t spread = 0) const {
        return document->childAt(document->spreadLayerNode(document->spreadAt(spread), document->layerAt(1)), index);
    }
    const ComposedStory& lines(UID frame) const {
        const UID story = document->textOfFrame(frame);
        return dynamic_cast<const ComposedStory&>(*document->layoutOf(story, document->totalLength(story)));
    }
    std::uint64_t stamp(UID frame) const {
        static_cast<void>(lines(frame));
        return document->story(document->textOfFrame(frame))->stamp;
    }
    /// Nothing of a line stands in the box, but something does on each side that `left` and `right` say.
    void expectAround(const PMRect& box, bool left, bool right) const {
        bool onLeft = false, onRight = false;
        for (const ComposedLine& line : lines(top(0)).lines) {
            const double top = line.baseline - line.ascent, bottom = line.baseline + line.descent;
            if (bottom <= box.top + tolerance || top >= box.bottom - tolerance) continue;
            EXPECT_TRUE(line.right <= box.left + tolerance || line.left >= box.right - tolerance)
                << line.left << " to " << line.right << " at " << line.baseline;
            onLeft |= line.right <= box.left + tolerance;
            onRight |= line.left >= box.right - tolerance;
        }
        EXPECT_EQ(onLeft, left);
        EXPECT_EQ(onRight, right);
    }
    /// Every character is shown once, in order, or is overset.
    void expectWhole() const {
        const ComposedStory& story = lines(top(0));
        std::int32_t at = 0;
        for (const ComposedLine& line : story.lines) {
            EXPECT_EQ(line.start, at);
            at = line.limit;
        }
        EXPECT_EQ(at, story.shownLimit);
    }

    std::unique_ptr<DocumentModel> document;
};

TEST_F(TextWrapTest, TextStandsWhereTheWrapSays) {
    struct testRow {
        const char* name;
        std::string wrap;
        PMRect box;
        bool left, right;
    };
    const testRow rows[] = {
        {"both sides", R"("bounds")", {120, 40, 180, 90}, true, true},
        {"offsets", R"({"offsets": [5, 10, 15, 20]})", {110, 35, 200, 105}, true, true},
        {"left only", R"({"side": "left"})", {120, 40, 300, 90}, true, false},
        {"right only", R"({"side": "right"})", {0, 40, 180, 90}, false, true},
        {"the larger side", R"({"side": "largest", "offsets": [0, 30, 0, 0]})", {0, 40, 180, 90}, false, true},
        {"no side", R"("jumpObject")", {0, 40, 300, 90}, false, false},
        {"a strip too narrow", R"({"offsets": [0, 115, 0, 0]})", {0, 40, 180, 90}, false, true},
    };
    for (const auto& [name, wrap, box, left, right] : rows) {
        SCOPED_TRACE(name);
        load(pageAround(wrap));
        expectAround(box, left, right);
        expectWhole();
        EXPECT_GT(lines(top(0)).lines.back().baseline, 90);
    }
    load(pageAround(R"("jumpColumn")", R"(, "columns": 2, "gutter": 0)"));
    const ComposedStory& story = lines(top(0));
    for (const ComposedLine& line : story.lines)
        EXPECT_LE(line.baseline + line.descent, 40 + tolerance);
    EXPECT_GT(story.columns[1].lineCount, 0u);
    EXPECT_TRUE(story.overset);
}

TEST_F(TextWrapTest, AFrameMayIgnoreItAndIsNotInItsOwnWay) {
    load(pageAround(R"("bounds")", R"(, "ignoreWrap": true)"));
    const std::size_t whole = lines(top(0)).lines.size();
    load(pageAround(R"("none")", R"(, "wrap": "jumpObject")"));
    EXPECT_EQ(lines(top(0)).lines.size(), whole);
    load(R"({"wrap": "bounds", "group": [)" + pageAround(R"("none")") + "]}");
    EXPECT_EQ(lines(document->childAt(top(0), 0)).lines.size(), whole) << "nor is the group around it";
}

TEST_F(TextWrapTest, TurnedFramesSeeTheBoxInTheirOwnWay) {
    load(R"({"matrix": [0, -1, 1, 0, 50, 350], "inner": [0, 0, 300, 200], "text": ")" + words(60) +
         R"("}, {"bounds": [90, 170, 50, 60], "wrap": "bounds"})");
    expectAround({120, 40, 180, 90}, true, true);
}

TEST_F(TextWrapTest, ChangesAroundATextMakeItStale) {
    load(pageAround(R"("bounds")") + R"(, {"bounds": [0, 300, 90, 90], "text": "apart"})");
    const std::uint64_t first = stamp(top(0)), apart = stamp(top(2));
    const std::vector<std::function<void()>> changes = {
        [this] { EXPECT_EQ(document->moveBy(top(1), 30, 10), 0); },
        [this] { EXPECT_EQ(document->setItemFlow(top(1), {{}, {.kind = TextWrap::Kind::jumpObject}}), 0); },
        [this] { EXPECT_EQ(document->setItemFlow(top(1), {}), 0); },
        [this] { EXPECT_EQ(document->deleteItem(top(1)), 0); },
        [this] { EXPECT_EQ(document->moveBy(top(0), 10, 0), 0); },
    };
    for (const auto& change : changes) {
        const std::uint64_t before = stamp(top(0));
        const std::size_t partsBefore = lines(top(0)).lines.size();
        change();
        EXPECT_NE(stamp(top(0)), before);
        ASSERT_TRUE(document->undo());
        EXPECT_EQ(lines(top(0)).lines.size(), partsBefore);
        expectAround({120, 40, 180, 90}, true, true);
    }
    EXPECT_NE(stamp(top(0)), first);
    EXPECT_EQ(stamp(top(2)), apart) << "what isn't touched stays";
    const std::uint64_t before = stamp(top(0));
    ASSERT_EQ(document->setItemDataBlock(top(1), 0, "data"), 0);
    EXPECT_EQ(stamp(top(0)), before) << "data moves nothing";
}

TEST_F(TextWrapTest, CopiesShareTheirLines) {
    load(pageAround(R"("bounds")"));
    const ComposedStory* own = &lines(top(0));
    ASSERT_EQ(document->duplicateSpread(document->spreadAt(0)), 0);
    EXPECT_EQ(&lines(top(0, 1)), own);
    ASSERT_EQ(document->moveBy(top(1, 1), 50, 0), 0);
    EXPECT_NE(&lines(top(0, 1)), own);
    EXPECT_EQ(&lines(top(0)), own);
    const auto copy = document->documentCopy();
    EXPECT_EQ(dynamic_cast<DocumentModel&>(*copy).layoutOf(document->textOfFrame(top(0)), 0), own);
}

TEST_F(TextWrapTest, ItemsOfMastersActOnThePagesThatShowThem) {
    const std::string masters = R"("masters": [{"name": "A", "pages": [{"items": [{"name": "logo",
        "bounds": [120, 40, 60, 50], "wrap": "bounds"}]}]}, {"name": "B", "pages": [{}]}], )";
    load(R"({"bounds": [0, 0, 300, 200], "text": ")" + words(60) + "\"}", masters, R"("master": "A", )");
    expectAround({120, 40, 180, 90}, true, true);
    const std::size_t around = lines(top(0)).lines.size();
    ASSERT_EQ(document->applyMaster({document->pageAt(0)}, document->masterAt(1)), 0);
    EXPECT_LT(lines(top(0)).lines.size(), around);
    ASSERT_TRUE(document->undo());
    EXPECT_EQ(lines(top(0)).lines.size(), around);
    const UID logo = document->childAt(document->spreadLayerNode(document->masterAt(0), document->layerAt(1)), 0);
    ASSERT_EQ(document->moveBy(logo, 0, 20), 0);
    expectAround({120, 60, 180, 110}, true, true);
    const std::size_t moved = lines(top(0)).lines.size();
    ASSERT_EQ(document->overrideMasterItems({document->pageAt(0)}), 0);
    ASSERT_EQ(document->deleteItem(logo), 0);
    EXPECT_EQ(lines(top(1)).lines.size(), moved) << "now the page's own item does it";
}

TEST(LineRooms, KeepWhatIsFree) {
    using Kind = TextWrap::Kind;
    using Side = TextWrap::Side;
    LineRooms rooms;
    rooms.enter({{0, {{20, 10, 50, 30}, Kind::bounds, Side::both}},
                 {0, {{40, 20, 80, 60}, Kind::bounds, Side::both}},
                 {0, {{0, 80, 100, 90}, Kind::jumpObject, Side::both}},
                 {0, {{0, 500, 100, 590}, Kind::jumpColumn, Side::both}},
                 {1, {{0, 0, 100, 100}, Kind::bounds, Side::both}}},
                {.box = {0, 0, 100, 100}});
    const auto text = [&](float top, float bottom) {
        std::string out;
        for (const LineRoom& room : rooms.between(top, bottom, 0, 100))
            out += std::to_string(int(room.left)) + "-" + std::to_string(int(room.right)) + " ";
        return out;
    };
    EXPECT_EQ(text(0, 10), "0-100 ");
    EXPECT_EQ(text(5, 15), "0-20 50-100 ");
    EXPECT_EQ(text(15, 25), "0-20 80-100 ");
    EXPECT_EQ(text(75, 85), "");
    EXPECT_EQ(rooms.below(15, 25), 30);
    EXPECT_EQ(rooms.below(0, 10), 0) << "nothing is in the way";
    EXPECT_FALSE(rooms.isOverAt(1000)) << "that one stands below the column";
}

}  // namespace
}  // namespace tarnova
