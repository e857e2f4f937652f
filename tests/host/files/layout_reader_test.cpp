#include <gtest/gtest.h>

#include "host/files/base64.h"
#include "host/model/story_reader.h"
#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

/// Every way to be wrong, with the line and a piece of the message.
TEST(LayoutReader, FaultsNameTheirLine) {
    struct testRow {
        const char* name;
        std::string json;
        int line;
        const char* says;
    };
    const std::string head = "{\"tarnovaLayout\": 1,\n";
    const std::string deep(300, '[');
    const testRow rows[] = {
        {"empty file", "", 1, "no valid JSON"},
        {"cut off", head + "\"pages\": [", 2, "no valid JSON"},
        {"two values", "{}\n{}", 2, "no valid JSON"},
        {"no UTF-8", head + "\"title\": \"\xFF\"}", 2, "no valid JSON"},
        {"lone surrogate", head + R"("title": "\uD800"})", 2, "no valid JSON"},
        {"zero byte", head + std::string("\"title\": \"a\0\"}", 14), 2, "zero byte"},
        {"too deep", head + "\"title\": " + deep, 2, "nested"},
        {"number too large", head + "\"pageSize\": [1e999, 1]}", 2, "too big"},
        {"no object", "[]", 1, "must be an object"},
        {"no version", "{\n\"title\": \"x\"}", 1, "tarnovaLayout"},
        {"other version", "{\"tarnovaLayout\":\n2}", 2, "version"},
        {"unknown member", head + "\"colour\": 1}", 2,
         "\"colour\" is no member of a layout. It may have: tarnovaLayout, title"},
        {"member twice", head + "\"title\": \"a\",\n\"title\": \"b\"}", 3, "second time"},
        {"wrong type", head + "\"title\": 3}", 2, "must be a text, not a number"},
        {"unknown unit", head + "\"pageSize\": [\"3 yards\", 4]}", 2, "\"20mm\""},
        {"infinite length", head + "\"pageSize\": [\"inf pt\", 4]}", 2, "must be a length"},
        {"length without number", head + "\"pageSize\": [\"mm\", 4]}", 2, "must be a length"},
        {"size of nothing", head + "\"pageSize\": [0, 4]}", 2, "above 0"},
        {"too few lengths", head + "\"pageSize\": [4]}", 2, "2 lengths"},
        {"swatch without colour", head + "\"swatches\": [{\"name\": \"a\"}]}", 2, "cmyk"},
        {"colour out of range", head + "\"swatches\": [{\"name\": \"a\", \"rgb\": [0, 0, 1.1]}]}", 2, "1.1"},
        {"two swatches of a name",
         head + "\"swatches\": [{\"name\": \"a\", \"rgb\": [0, 0, 1]},\n{\"name\": \"a\", \"rgb\": [0, 0, 1]}]}", 3,
         "two swatches"},
        {"None is taken", head + "\"swatches\": [{\"name\": \"None\", \"rgb\": [0, 0, 1]}]}", 2, "two swatches"},
        {"style without name", head + "\"characterStyles\": [{}]}", 2, "needs \"name\""},
        {"style on a style that isn't there", head + "\"characterStyles\": [{\"name\": \"a\", \"basedOn\": \"b\"}]}", 2,
         "no style \"b\""},
        {"styles in a circle",
         head + "\"paragraphStyles\": [{\"name\": \"a\",\n\"basedOn\": \"b\"}, {\"name\": \"b\", \"basedOn\": \"a\"}]}",
         3, "based on itself"},
        {"font style twice", head + R"("characterStyles": [{"name": "a", "bold": true, "fontStyle": "Light"}]})", 2,
         "leave one"},
        {"unknown word", head + R"("paragraphStyles": [{"name": "a", "align": "middle"}]})", 2, "\"center\""},
        {"no layer", head + "\"layers\": []}", 2, "at least one layer"},
        {"pages and spreads", head + "\"pages\": [], \"spreads\": []}", 2, "either"},
        {"spread without pages", head + "\"spreads\": [{}]}", 2, "at least one"},
        {"unknown master", head + "\"pages\": [{\"master\": \"M\"}]}", 2, "no master \"M\""},
        {"master based on itself", head + R"("masters": [{"name": "A", "pages": [{"master": "A"}]}]})", 2,
         "in a circle"},
        {"masters in a circle by way of their second pages",
         head +
             R"("masters": [{"name": "A", "pages": [{"master": "B"}]}, {"name": "B", "pages": [{}, {"master": "C"}]},)" +
             "\n" + R"({"name": "C", "pages": [{"master": "D"}, {"master": "A"}]}, {"name": "D", "pages": [{}]}]})",
         2, "in a circle"},
        {"overrides nothing that is there", pageWith("{\"bounds\": [0, 0, 1, 1],\n\"overrides\": \"x\"}"), 2,
         "No master has an item named \"x\""},
        {"overrides an item of a page", pageWith("{\"uid\": 9, \"bounds\": [0, 0, 1, 1],\n\"overrides\": 9}"), 2,
         "No master has an item with this UID"},
        {"section without page", head + "\"pages\": [{}], \"sections\": [{}]}", 2, "first page"},
        {"section behind the end", head + "\"pages\": [{}], \"sections\": [{\"page\": 2}]}", 2, "must lie from 1 to 1"},
        {"UID twice", head + "\"pages\": [{\"uid\": 5},\n{\"uid\": 5}]}", 3, "UID 5"},
        {"UID 0", head + "\"pages\": [{\"uid\": 0}]}", 2, "from 1"},
        {"UID with a fraction", head + "\"pages\": [{\"uid\": 1.5}]}", 2, "whole number"},
        {"UID too large", head + "\"pages\": [{\"uid\": 4294967295}]}", 2, "must lie"},
        {"no place for an item", pageWith("\n{}"), 2, "needs \"bounds\""},
        {"negative width", pageWith("\n{\"bounds\": [0, 0, -1, 1]}"), 2, "below 0"},
        {"bounds and matrix", pageWith("\n{\"bounds\": [0, 0, 1, 1], \"at\": [1, 1]}"), 2, "one of"},
        {"unknown swatch", pageWith("{\"bounds\": [0, 0, 1, 1],\n\"fill\": \"Red\"}"), 2, "no swatch \"Red\""},
        {"unknown layer", pageWith("{\"bounds\": [0, 0, 1, 1],\n\"layer\": \"L\"}"), 2, "no layer \"L\""},
        {"too many columns", pageWith("{\"bounds\": [0, 0, 1, 1],\n\"columns\": 41, \"text\": \"\"}"), 2, "1 to 40"},
        {"path without M", pageWith("{\"path\":\n\"L 1 1\"}"), 2, "begins with M"},
        {"path cut off", pageWith("{\"path\":\n\"M 1\"}"), 2, "coordinate"},
        {"path of nothing", pageWith("{\"path\": \"\"}"), 1, "needs \"bounds\""},
        {"text and shared text", pageWith("{\"bounds\": [0, 0, 1, 1], \"text\": \"\", \"sharedText\": 0}"), 1,
         "one of"},
        {"shared shape out of range",
         head + "\"shapes\": [{\"inner\": [0, 0, 1, 1]}], \"pages\": [{\"items\": [\n{\"shape\": 1}]}]}", 3,
         "from 0 to 0"},
        {"text in a shared picture",
         head +
             "\"shapes\": [{\"inner\": [0, 0, 1, 1]}], \"pages\": [{\"items\": [\n{\"shape\": 0, \"text\": \"\"}]}]}",
         3, "content \"text\""},
        {"flows from nowhere", pageWith("{\"bounds\": [0, 0, 1, 1],\n\"flowsFrom\": \"x\"}"), 2,
         "no text frame named \"x\""},
        {"flows from itself", pageWith("{\"uid\": 8, \"bounds\": [0, 0, 1, 1],\n\"flowsFrom\": 8}"), 2, "circle"},
        {"two flow from one",
         pageWith(
             R"({"name": "a", "bounds": [0, 0, 1, 1], "text": ""}, {"bounds": [0, 0, 1, 1], "flowsFrom": "a"}, {"bounds": [0, 0, 1, 1], "flowsFrom": "a"})"),
         1, "Two frames"},
        {"picture in a text frame",
         pageWith(
             "{\"bounds\": [0, 0, 1, 1], \"text\": \"\",\n\"picture\": {\"file\": \"a\", \"inner\": [0, 0, 1, 1]}}"),
         2, "either a picture or text"},
        {"picture of a group", pageWith("{\"group\": [], \"picture\": {}}"), 1, "A group has no look"},
        {"picture without a file", pageWith("{\"bounds\": [0, 0, 1, 1],\n\"picture\": {\"inner\": [0, 0, 1, 1]}}"), 2,
         "needs \"file\""},
        {"picture from two places",
         pageWith("{\"bounds\": [0, 0, 1, 1],\n\"picture\": {\"file\": \"a\", \"embedded\": \"AAAA\"}}"), 2, "or else"},
        {"page 0 of a picture", pageWith("{\"bounds\": [0, 0, 1, 1], \"picture\":\n{\"page\": 0}}"), 2, "from 1"},
        {"unknown clip", pageWith("{\"bounds\": [0, 0, 1, 1], \"picture\": {\"clip\":\n{\"type\": \"x\"}}}"), 2,
         "\"detectedEdges\""},
        {"picture with a fill", pageWith("{\"bounds\": [0, 0, 1, 1], \"picture\":\n{\"fill\": \"Black\"}}"), 2,
         "\"fill\" is no member of a picture"},
        {"group with a look", pageWith("{\"group\": [], \"fill\": \"Black\"}"), 1, "A group has no look"},
        {"groups too deep", pageWith("\n" + inGroups(25, "")), 2, "more than 24 deep"},
        {"item too far away", pageWith("\n{\"bounds\": [10000000, 10000000, 9, 9], \"rotate\": 90}"), 2,
         "10,000,000 points"},
        {"page too far away",
         head + "\"spreads\": [{\"pages\": [{\"size\": [9000000, 9]},\n{\"size\": [9000000, 9]}]}]}", 3,
         "10,000,000 points"},
        {"link of an item without a name", pageWith("{\"bounds\": [0, 0, 1, 1],\n\"tag\": {}}"), 2, "needs \"link\""},
        {"link of an item with an id", pageWith("{\"bounds\": [0, 0, 1, 1], \"tag\":\n{\"link\": \"a\", \"id\": 1}}"),
         2, "\"id\" is no member of the link of a frame. It may have: key, link"},
        {"link beside data of its store",
         pageWith("{\"bounds\": [0, 0, 1, 1], \"tag\":\n{\"link\": \"a\"}, \"data\": {\"kelvane\": \"\"}}"), 2,
         "not both"},
        {"data is no base64", pageWith("{\"bounds\": [0, 0, 1, 1], \"data\": {\"kelvane\": \"A\"}}"), 1, "base64"},
        {"unknown paragraph style", frameWith("[{\"style\":\n\"x\"}]"), 2, "no paragraph style \"x\""},
        {"run without text", frameWith("[{\"text\": [\n{\"size\": 3}]}]"), 2,
         "either \"text\", \"special\" or \"item\""},
        {"run with text and item",
         frameWith("[{\"text\": [\n{\"text\": \"a\", \"item\": {\"bounds\": [0, 0, 1, 1]}}]}]"), 2,
         "either \"text\", \"special\" or \"item\""},
        {"layer of an item in a text",
         frameWith(R"([{"text": [{"item": {"bounds": [0, 0, 1, 1], "layer": "Layer 1"}}]}])"), 1, "layer of its frame"},
        {"override of an item in a text",
         frameWith(R"([{"text": [{"item": {"bounds": [0, 0, 1, 1], "overrides": "x"}}]}])"), 1, "overrides nothing"},
        {"anchor of an item on a page", pageWith("{\"bounds\": [0, 0, 1, 1],\n\"anchor\": \"above\"}"), 2, "in a text"},
        {"kind of anchor", frameWith(R"([{"text": [{"item": {"bounds": [0, 0, 1, 1], "anchor": "on"}}]}])"), 1,
         "\"inline\""},
        {"text that flows out of a text", pageWith(R"({"name": "A", "bounds": [0, 0, 9, 9], "text": [{"text": [{"item":
         {"bounds": [0, 0, 1, 1], "flowsFrom": "A"}}]}]})"),
         2, "from each other only"},
        {"texts in texts too deep", frameWith(inTexts(4)), 1, "more than 3 deep"},
        {"wrap with an unknown side", pageWith("{\"bounds\": [0, 0, 1, 1], \"wrap\":\n{\"side\": \"up\"}}"), 2,
         "\"largest\""},
        {"link without end", frameWith("\n\"a {{Name\""), 2, "\"}}\""},
        {"link on a link", frameWith(R"([{"text": [{"text": "{{A}}", "tag": {"link": "B"}}]}])"), 1, "second link"},
        {"empty tag", frameWith(R"([{"text": [{"text": "a", "tag": {}}]}])"), 1, "needs \"link\""},
        {"tag name too long",
         frameWith(R"([{"text": [{"text": "a", "tag": {"link": "12345678901234567890123456789012"}}]}])"), 1,
         "31 bytes"},
        {"record and fields", frameWith(R"([{"text": [{"text": "a", "tag": {"link": "x", "record": ""}}]}])"), 1,
         "not both"},
    };
    for (const testRow& row : rows) {
        layoutError error;
        EXPECT_EQ(readLayout(row.json, error), nullptr) << row.name;
        EXPECT_EQ(error.line, row.line) << row.name << ": " << error.message;
        EXPECT_NE(error.message.find(row.says), std::string::npos) << row.name << ": " << error.message;
    }
}

TEST(LayoutReader, StylesMayStandInAnyOrder) {
    const auto document = opened(R"({"tarnovaLayout": 1, "paragraphStyles": [
        {"name": "Head", "basedOn": "Body", "bold": true}, {"name": "Body", "basedOn": "Basic Paragraph", "size": 9},
        {"name": "Basic Paragraph", "font": "Times"}],
        "pages": [{"items": [{"bounds": [0, 0, 9, 9], "text": [{"style": "Head", "text": "x"}]}]}]})");
    const StoryText& text = *document->story(document->stories()[0])->content;
    const CharFormat* format = document->resolveChar(*paragraphAt(text, 0).attributes, *runAt(text, 0).attributes);
    EXPECT_EQ(format->family, "Times");
    EXPECT_EQ(format->pointSize, 9);
    EXPECT_EQ(format->fontStyle, "Bold");
    expectStable(*document);
}

TEST(LayoutReader, APathOfItsOwnIsAPolygon) {
    using Kind = pathInfoRec::Kind;
    struct testRow {
        const char* look;
        Kind kind;
        std::size_t segments;
    };
    const testRow rows[] = {
        {R"("path": "M 0 0 L 9 0 L 0 9 Z")", Kind::polygon, 2},
        {R"("kind": "ellipse", "path": "M 0 0 L 9 0 L 0 9 Z")", Kind::ellipse, 2},
        {R"("kind": "rectangle", "path": "M 0 0 L 9 0 L 0 9 Z")", Kind::rectangle, 2},
        {R"("path": "M 0 0 L 9 0 L 9 9 L 0 9 Z")", Kind::rectangle, 3},
        {R"("kind": "line", "path": "M 0 9 L 9 0")", Kind::line, 1},
        {R"("bounds": [0, 0, 9, 9], "path": "M 1 1 L 2 2")", Kind::polygon, 1},
    };
    for (const testRow& row : rows) {
        const auto document = opened(pageWith("{" + std::string(row.look) + "}"));
        std::vector<const PageItem*> drawn;
        document->drawnItems(document->pageAt(0), drawn);
        ASSERT_EQ(drawn.size(), 1U) << row.look;
        EXPECT_EQ(drawn[0]->shape->kind, row.kind) << row.look;
        EXPECT_EQ(drawn[0]->shape->path[0].segments.size(), row.segments) << row.look;
        expectStable(*document);
    }
}

TEST(LayoutReader, PicturesStayInTheirFrames) {
    const auto document = opened(pageWith(R"({"bounds": [10, 10, 50, 50], "picture": {"file": "a.pdf", "page": 3,
        "inner": [0, 0, 100, 100], "matrix": [0.5, 0, 0, 0.5, 0, 0], "name": "p", "tag": {"link": "L"}, "locked": true,
        "clip": {"type": "embeddedPath", "path": "Path 1", "inset": "1mm", "restrictToFrame": true}}},
        {"bounds": [0, 0, 9, 9], "content": "unassigned", "picture": {"file": "b", "inner": [0, 0, 1, 1]}})"));
    const UID node = document->spreadLayerNode(document->spreadAt(0), document->layerAt(1));
    const UID frame = document->childAt(node, 0), picture = document->childAt(frame, 0);
    EXPECT_EQ(document->itemClass(picture), ItemClass::graphic);
    EXPECT_TRUE(document->isGraphicFrame(frame));
    EXPECT_EQ(document->contentKind(document->childAt(node, 1)), ContentKind::unassigned);
    EXPECT_EQ(document->linkPath(picture), "a.pdf");
    EXPECT_EQ(document->placedPdfPage(picture), 2);
    EXPECT_EQ(document->boundsInSpread(picture), (PMRect{10, 10, 60, 60}));
    EXPECT_EQ(document->clipSettings(picture).pathName, "Path 1");
    EXPECT_TRUE(document->itemLocked(picture));
    EXPECT_NE(document->itemDataBlock(picture, 0), nullptr);
    expectStable(*document);
}

TEST(Base64, ThereAndBack) {
    const std::string all("\0\xFF\x10\x83\x7F", 5);
    for (std::size_t length = 0; length <= all.size(); ++length) {
        std::string back = "x";
        EXPECT_TRUE(fromBase64(toBase64(all.substr(0, length)), back));
        EXPECT_EQ(back, all.substr(0, length));
    }
    EXPECT_EQ(toBase64("fooba"), "Zm9vYmE=");
    std::string out = "kept";
    for (const char* bad : {"A", "AAA", "A===", "AA=A", "AB==", "AAB=", "A*==", "AAAA="}) {
        EXPECT_FALSE(fromBase64(bad, out)) << bad;
    }
    EXPECT_EQ(out, "kept");
}

}  // namespace
}  // namespace tarnova
