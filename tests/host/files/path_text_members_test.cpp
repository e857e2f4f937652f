#include "host/files/path_text_members.h"

#include <gtest/gtest.h>

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

TEST(PathTextMembers, CopiesShareTheirText) {
    const auto document = opened(ellipseWith(R"({"text": "around and around", "flip": true})"));
    ASSERT_EQ(document->duplicateSpread(document->spreadAt(0)), 0);
    const std::string written = writeLayout(*document);
    EXPECT_EQ(written.find("around and around"), written.rfind("around and around")) << written;
    const auto again = opened(written);
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(writeLayout(*again), written);
    const UID first = again->textOnPath(onlyItem(*again));
    EXPECT_EQ(again->totalLength(first), 18);
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
