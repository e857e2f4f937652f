#include "host/files/path_text_members.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

/// The layout of one page with an ellipse that has this `pathText`.
std::string ellipseWith(const std::string& pathText) {
    return pageWith(R"({"kind": "ellipse", "bounds": [10, 10, 80, 80], "pathText": )" + pathText + "}");
}

UID onlyItem(const DocumentModel& document) {
    return document.childAt(document.spreadLayerNode(document.spreadAt(0), document.layerAt(1)), 0);
}

TEST(PathTextMembers, GoThereAndBack) {
    const auto document = opened(ellipseWith(
        R"({"text": [{"align": "center", "text": ["a {{Name}}", {"special": "pageNumber"}]}], "start": "1in", "end": 2.5,
            "offset": -3, "align": "descender", "effect": "upright", "flip": true})"));
    ASSERT_NE(document, nullptr);
    const UID item = onlyItem(*document);
    const Story& story = *document->story(document->textOnPath(item));
    EXPECT_EQ(*story.onPath, (PathTextOptions{72, 2.5, -3, PathTextOptions::Align::descender,
                                              PathTextOptions::Effect::upright, true}));
    EXPECT_EQ(document->textRead(story.uid, 0, story.length()), U"a Name\xFDD0\r");
    EXPECT_FALSE(document->isTextFrame(item));
    expectStable(*document);
    const auto usual = opened(ellipseWith("{}"));
    const std::string written = writeLayout(*usual);
    EXPECT_NE(written.find("\"text\": \"\"}"), std::string::npos) << "nothing but its text and UID: " << written;
    expectStable(*usual);
}

/// The stamps of the item in front on a spread, of its texts, and of all in them.
std::vector<std::uint64_t> stampsOn(const DocumentModel& document, std::int32_t spread) {
    std::vector<std::uint64_t> stamps;
    const std::function<void(UID)> add = [&](UID uid) {
        const PageItem& item = *document.item(uid);
        stamps.push_back(item.stamp);
        for (UID text : {item.story, item.pathStory}) {
            if (item.itemClass != ItemClass::splineItem || text == kInvalidUID) continue;
            stamps.push_back(document.story(text)->stamp);
            for (const ownedItemRec& owned : document.ownedItems(text, 0, document.totalLength(text)))
                add(owned.item);
        }
        for (UID child : item.children)
            if (document.item(child)->itemClass != ItemClass::textColumnItem) add(child);
    };
    add(document.childAt(document.spreadLayerNode(document.spreadAt(spread), document.layerAt(1)), 0));
    return stamps;
}

/// Copies have their content in common when they are opened again, and draw the same until one is changed.
TEST(PathTextMembers, CopiesStayCopies) {
    struct testRow {
        const char* name;
        std::string layout;
        std::size_t stamps;
        std::size_t written;  // times that the text stands in the file
    };
    const char* const item = R"({"item": {"bounds": [0, 0, 9, 9], "fill": "Black", "text": "in"}})";
    const auto onPath = [](const std::string& text) { return ellipseWith("{\"text\": " + text + ", \"flip\": true}"); };
    const std::string withItem = std::string(R"([{"text": ["around and around", )") + item + "]}]";
    const testRow rows[] = {
        {"in a frame", frameWith("\"around and around\""), 2, 1},
        {"on a path", onPath("\"around and around\""), 2, 1},
        {"an item on a path", onPath(withItem), 4, 2},
        {"an item in a frame", frameWith(withItem), 4, 2},
        {"items in each other", frameWith(inTexts(2)), 6, 0},
    };
    for (const auto& [name, layout, count, times] : rows) {
        const auto document = opened(layout);
        ASSERT_EQ(document->duplicateSpread(document->spreadAt(0)), 0) << name;
        const std::string written = writeLayout(*document);
        std::size_t found = 0;
        for (std::size_t at = 0; (at = written.find("around and", at)) != std::string::npos; ++at)
            ++found;
        EXPECT_EQ(found, times) << name;
        const auto again = opened(written);
        ASSERT_NE(again, nullptr) << name;
        expectStable(*again);
        const std::vector<std::uint64_t> stamps = stampsOn(*again, 0);
        EXPECT_EQ(stamps.size(), count) << name;
        EXPECT_EQ(stampsOn(*again, 1), stamps) << name;
        EXPECT_EQ(std::set(stamps.begin(), stamps.end()).size(), count) << name << ": and no two are alike";
        ASSERT_EQ(again->textReplace(again->stories().back(), 0, 1, U"X", true), 0) << name;
        const auto changed = opened(writeLayout(*again));
        EXPECT_NE(stampsOn(*changed, 0), stampsOn(*changed, 1)) << name;
    }
}

TEST(PathTextMembers, RefusesWhatItCantBe) {
    struct testRow {
        const char* name;
        std::string items;
        const char* says;
    };
    const std::string ellipse = R"({"kind": "ellipse", "bounds": [0, 0, 9, 9], "pathText": )";
    const testRow rows[] = {
        {"no object", ellipse + "\"text\"}", "must be an object"},
        {"unknown member", ellipse + "{\"begin\": 1}}", "\"begin\" is no member of a text on a path"},
        {"length too large", ellipse + "{\"offset\": 1e8}}", "from -1e+07 to"},
        {"wrong word", ellipse + "{\"align\": \"middle\"}}", "\"ascender\""},
        {"two texts", ellipse + "{\"text\": \"a\", \"sharedText\": 0}}", "either"},
        {"no shared text", ellipse + "{\"sharedText\": 0}}", "no \"texts\""},
        {"UID taken", R"({"uid": 5, "bounds": [0, 0, 9, 9], "pathText": {"storyUid": 5}})", "two objects"},
        {"no path", R"({"kind": "none", "bounds": [0, 0, 9, 9], "pathText": {}})", "has a path"},
        {"an item above the line", ellipse + R"({"text": [{"text": [{"item": {"bounds": [0, 0, 1, 1], "anchor": "above"}}]}]}})",
         "its kind is \"inline\""},
        {"in a group", R"({"group": [], "pathText": {}})", "its members have"},
    };
    for (const testRow& row : rows) {
        layoutError error;
        EXPECT_EQ(readLayout(pageWith(row.items), error), nullptr) << row.name;
        EXPECT_NE(error.message.find(row.says), std::string::npos) << row.name << ": " << error.message;
    }
}

}  // namespace
}  // namespace tarnova
