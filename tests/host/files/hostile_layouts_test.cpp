// Layouts made to hurt: each is refused with the reason, or opened with work and memory in proportion to the file. What
// is asked of the allocator is counted, so that the bounds don't depend on the machine; the sizes are such that
// anything that takes the square of them doesn't end.

#include <gtest/gtest.h>

#include <functional>

#include "tests/host/files/allocation_count.h"
#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

std::string repeated(int count, const std::string& part) {
    std::string out;
    out.reserve(part.size() * static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        out += part;
    return out;
}

/// Elements of an array, each made from its index.
std::string listOf(int count, const std::function<std::string(const std::string& index)>& element) {
    std::string out;
    for (int i = 0; i < count; ++i)
        out += (i == 0 ? "" : ",") + element(std::to_string(i));
    return out;
}

std::string layoutWith(const std::string& members) {
    return "{\"tarnovaLayout\": 1, " + members + "}";
}

std::string onFrame(const std::string& members) {
    return pageWith("{\"bounds\": [0, 0, 9, 9], " + members + "}");
}

std::string next(const std::string& index) {
    return std::to_string(std::stoi(index) + 1);
}

constexpr int many = 100'000;
constexpr int several = 20'000;  // of what takes longer to write

std::string chainOfStyles(int count, const std::string& last) {
    return layoutWith(
        "\"characterStyles\": [" +
        listOf(count,
               [](const std::string& i) { return "{\"name\": \"" + i + "\", \"basedOn\": \"" + next(i) + "\"}"; }) +
        ", {\"name\": \"" + std::to_string(count) + "\"" + last + "}]");
}

std::string chainOfMasters(int count, const std::string& last) {
    return layoutWith("\"masters\": [" +
                      listOf(count,
                             [](const std::string& i) {
                                 return "{\"name\": \"" + i + "\", \"pages\": [{\"master\": \"" + next(i) + "\"}]}";
                             }) +
                      ", {\"name\": \"" + std::to_string(count) + "\", \"pages\": [{" + last + "}]}]");
}

std::string chainOfFrames(int count, const std::string& first) {
    return pageWith(
        "{\"name\": \"0\", \"bounds\": [0, 0, 9, 9], " + first + "}, " + listOf(count, [](const std::string& i) {
            return "{\"name\": \"" + next(i) + "\", \"bounds\": [0, 0, 9, 9], \"flowsFrom\": \"" + i + "\"}";
        }));
}

struct hostileRow {
    const char* name;
    std::string json;
    const char* says;  // empty: it is opened
};

std::vector<hostileRow> depthsAndCircles() {
    return {
        {"a million arrays", repeated(1'000'000, "["), "nested"},
        {"a million objects", repeated(1'000'000, "{\"a\":"), "nested"},
        {"a million groups", pageWith(repeated(1'000'000, "{\"group\":[")), "nested"},
        {"groups as deep as allowed", pageWith(inGroups(24, "{\"bounds\": [0, 0, 1, 1]}")), ""},
        {"a long chain of styles", chainOfStyles(many, ""), "more than 100 deep"},
        {"styles as deep as allowed", chainOfStyles(100, ""), ""},
        {"styles one deeper", chainOfStyles(101, ""), "more than 100 deep"},
        {"a long circle of styles", chainOfStyles(many, ", \"basedOn\": \"0\""), "based on itself"},
        {"a long chain of masters", chainOfMasters(20'000, ""), "more than 100 deep"},
        {"masters as deep as allowed", chainOfMasters(100, ""), ""},
        {"masters one deeper", chainOfMasters(101, ""), "more than 100 deep"},
        {"a long circle of masters", chainOfMasters(20'000, "\"master\": \"0\""), "in a circle"},
        {"a master on a circle",
         layoutWith(R"("masters": [{"name": "A", "pages": [{"master": "B"}]}, {"name": "B", "pages": [{"master": "C"}]},
             {"name": "C", "pages": [{"master": "B"}]}])"),
         "in a circle"},
        {"a long thread", chainOfFrames(20'000, "\"text\": \"x\""), ""},
        {"a long thread in a circle", chainOfFrames(20'000, "\"flowsFrom\": \"20000\""), "circle"},
        {"overrides in a circle", layoutWith(R"("masters": [{"name": "A", "pages": [{"items": [
             {"name": "a", "bounds": [0, 0, 1, 1], "overrides": "b"}, {"name": "b", "bounds": [0, 0, 1, 1], "overrides": "a"}]}]}],
             "pages": [{"master": "A"}])"),
         ""},
    };
}

std::vector<hostileRow> counts() {
    return {
        {"layers times pages",
         layoutWith("\"layers\": [" + listOf(5000, [](const std::string& i) { return "{\"name\": \"" + i + "\"}"; }) +
                    "], \"pages\": [" + listOf(5000, [](const std::string&) { return std::string("{}"); }) + "]"),
         "too many for what it says"},
        {"columns",
         pageWith(listOf(
             several,
             [](const std::string&) { return std::string("{\"bounds\":[0,0,9,9],\"columns\":40,\"text\":\"\"}"); })),
         "too many for what it says"},
        {"swatches",
         layoutWith("\"swatches\": [" +
                    listOf(many, [](const std::string& i) { return "{\"name\": \"" + i + "\", \"rgb\": [0, 0, 0]}"; }) +
                    "]"),
         ""},
        {"styles",
         layoutWith("\"paragraphStyles\": [" +
                    listOf(many,
                           [](const std::string& i) {
                               return "{\"name\": \"" + i + "\", \"basedOn\": \"Basic Paragraph\"}";
                           }) +
                    "]"),
         ""},
        {"the same style twice, far apart",
         layoutWith("\"paragraphStyles\": [" +
                    listOf(many, [](const std::string& i) { return "{\"name\": \"" + i + "\"}"; }) +
                    ", {\"name\": \"0\"}]"),
         "two styles"},
        {"members of a group",
         pageWith("{\"group\": [" +
                  listOf(several, [](const std::string&) { return std::string("{\"bounds\":[0,0,9,9]}"); }) + "]}"),
         ""},
        {"sections",
         layoutWith(
             "\"pages\": [" + listOf(20'000, [](const std::string&) { return std::string("{}"); }) +
             "], \"sections\": [" +
             listOf(20'000, [](const std::string& i) { return "{\"page\": " + next(i) + ", \"continues\": true}"; }) +
             "]"),
         ""},
        {"UIDs far apart",
         pageWith(listOf(
             10'000, [](const std::string& i) { return "{\"bounds\": [0, 0, 9, 9], \"uid\": " + next(i) + "0000}"; })),
         ""},
        {"a UID twice, far apart",
         pageWith("{\"bounds\": [0, 0, 9, 9], \"uid\": 10000}," +
                  listOf(10'000,
                         [](const std::string& i) { return "{\"bounds\": [0, 0, 9, 9], \"uid\": " + next(i) + "}"; })),
         "UID 10000 stands on two objects"},
        {"paragraphs", frameWith("\"" + repeated(several, "x\\n") + "\""), ""},
        {"runs",
         frameWith(
             "[{\"text\": [" +
             listOf(several, [](const std::string& i) { return "{\"text\": \"x\", \"size\": " + next(i) + "}"; }) +
             "]}]"),
         ""},
        {"links", frameWith("\"" + repeated(several, "{{A}}") + "\""), ""},
        {"threads",
         frameWith("{\"threads\": [" + listOf(several, [](const std::string&) { return std::string("\"\""); }) + "]}"),
         ""},
        {"segments", pageWith("{\"path\": \"M 0 0" + repeated(several, " L 1 1") + "\"}"), ""},
        {"dashes", onFrame("\"stroke\": {\"dash\": [" + listOf(several, [](const std::string& i) { return i; }) + "]}"),
         ""},
        {"a name of a megabyte", onFrame("\"name\": \"" + repeated(1 << 20, "n") + "\""), "longer than 1024"},
    };
}

std::vector<hostileRow> numbers() {
    std::vector<hostileRow> rows = {
        {"bounds at the limit", onFrame("\"rotate\": 1"), ""},
        {"text of no size", frameWith("[{\"size\": 0, \"text\": \"x\"}]"), ""},
        {"the greatest text", frameWith("[{\"size\": 10000000, \"text\": \"x\"}]"), ""},
    };
    const std::string big[] = {"1e308", "-1e308", "1e-400", "9223372036854775808", "-9223372036854775809", "1e999"};
    for (const std::string& number : big) {
        const bool isTiny = number == "1e-400";
        const char* refused = number == "1e999" ? "too big" : "must ";
        const char* unlessTiny = isTiny ? "" : refused;
        rows.push_back({"page size", layoutWith("\"pageSize\": [" + number + ", 1]"), isTiny ? "above 0" : refused});
        rows.push_back(
            {"matrix",
             onFrame("\"kind\": \"none\"}, {\"inner\": [0, 0, 1, 1], \"matrix\": [" + number + ", 0, 0, 1, 0, 0]"),
             unlessTiny});
        rows.push_back({"UID", onFrame("\"uid\": " + number), refused});
        rows.push_back({"next UID", layoutWith("\"nextUid\": " + number), refused});
        rows.push_back({"columns", onFrame("\"columns\": " + number + ", \"text\": \"\""), refused});
        rows.push_back({"inset", onFrame("\"insets\": " + number + ", \"text\": \"\""), unlessTiny});
        rows.push_back({"stroke", onFrame("\"stroke\": {\"weight\": " + number + "}"), unlessTiny});
        rows.push_back({"size", frameWith("[{\"size\": " + number + ", \"text\": \"x\"}]"), unlessTiny});
        rows.push_back({"tab", frameWith("[{\"tabs\": [" + number + "], \"text\": \"x\"}]"), unlessTiny});
        rows.push_back({"section",
                        layoutWith("\"pages\": [{}], \"sections\": [{\"page\": 1, \"startNumber\": " + number + "}]"),
                        unlessTiny});
    }
    return rows;
}

void expectBounded(const hostileRow& row) {
    SCOPED_TRACE(row.name + std::string(": ") + row.json.substr(0, 150));
    layoutError error;
    const AllocationCount before = allocationCount();
    const auto document = readLayout(row.json, error);
    const AllocationCount after = allocationCount();
    const std::size_t size = row.json.size();
    EXPECT_LT(after.calls - before.calls, size + 2'000'000);
    EXPECT_LT(after.bytes - before.bytes, 200 * size + 200'000'000);
    if (*row.says == 0) {
        EXPECT_NE(document, nullptr) << error.message;
        if (document != nullptr) expectStable(*document);
    } else {
        EXPECT_EQ(document, nullptr);
        EXPECT_NE(error.message.find(row.says), std::string::npos) << error.message;
        EXPECT_GT(error.line, 0) << error.message;
    }
}

TEST(HostileLayouts, DepthsAndCircles) {
    for (const hostileRow& row : depthsAndCircles())
        expectBounded(row);
}

TEST(HostileLayouts, Counts) {
    for (const hostileRow& row : counts())
        expectBounded(row);
}

TEST(HostileLayouts, Numbers) {
    for (const hostileRow& row : numbers())
        expectBounded(row);
}

}  // namespace
}  // namespace tarnova
