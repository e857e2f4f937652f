// `tarnova describe` as a person calls it.

#include <rapidjson/document.h>

#include "tests/cli/program_fixture.h"

namespace tarnova {
namespace {

class DescribeVerb : public ProgramTest {
 protected:
    DescribeVerb() {
        write("two.tvd", R"({"tarnovaLayout": 1, "pageSize": [200, 100], "pages": [
            {"items": [{"name": "head", "bounds": [10, 20, 180, 50], "text": "Dear {{name}}"}]},
            {"items": [{"name": "tight", "bounds": [10, 10, 60, 20], "text": "Second page with too many words"}]}],
            "sections": [{"page": 2, "prefix": "A-", "startNumber": 4, "includePrefix": true}]})");
    }
    [[nodiscard]] rapidjson::Document answer(const std::string& arguments) {
        const outcomeRec outcome = run("describe " + arguments + " --json");
        EXPECT_EQ(outcome.status, 0) << outcome.messages;
        rapidjson::Document json;
        json.Parse(outcome.output);
        EXPECT_FALSE(json.HasParseError()) << outcome.output;
        return json;
    }
};

TEST_F(DescribeVerb, TellsPagesItemsAndStoriesByTheirUids) {
    const rapidjson::Document all = answer("two.tvd");
    for (const char* part : {"pages", "layers", "items", "stories", "tags", "tables", "itemData"})
        ASSERT_TRUE(all.HasMember(part)) << part;
    ASSERT_EQ(all["pages"].Size(), 2U);
    const auto& page = all["pages"][1];
    EXPECT_EQ(page["index"].GetInt(), 1);
    EXPECT_STREQ(page["name"].GetString(), "A-4");
    EXPECT_EQ(page["size"][0].GetDouble(), 200);
    EXPECT_FALSE(page.HasMember("master"));
    EXPECT_STREQ(all["layers"][0]["name"].GetString(), "Layer 1");
    EXPECT_TRUE(all["layers"][0]["visible"].GetBool());

    const auto& item = all["items"][0];
    EXPECT_STREQ(item["name"].GetString(), "head");
    EXPECT_STREQ(item["class"].GetString(), "splineItem");
    EXPECT_EQ(item["page"].GetUint(), all["pages"][0]["uid"].GetUint());
    EXPECT_EQ(item["bounds"][1].GetDouble(), 20);
    EXPECT_EQ(item["bounds"][2].GetDouble(), 190);
    ASSERT_EQ(all["stories"].Size(), 2U);
    const auto& story = all["stories"][0];
    EXPECT_EQ(item["story"].GetUint(), story["uid"].GetUint());
    EXPECT_EQ(story["frames"][0].GetUint(), item["uid"].GetUint());
    EXPECT_FALSE(story["overset"].GetBool());
    EXPECT_TRUE(all["stories"][1]["overset"].GetBool());
    EXPECT_STREQ(all["tags"][0]["link"].GetString(), "name");
}

TEST_F(DescribeVerb, TellsTheStoryOnAPath) {
    write("path.tvd", R"({"tarnovaLayout": 1, "pages": [{"items": [
{"kind": "line", "bounds": [0, 50, 90, 0], "pathText": {"text": "along a line that is too short for it"}}]}]})");
    const rapidjson::Document all = answer("path.tvd");
    const auto& item = all["items"][0];
    const auto& story = all["stories"][0];
    EXPECT_FALSE(item.HasMember("story"));
    EXPECT_EQ(item["pathStory"].GetUint(), story["uid"].GetUint());
    EXPECT_EQ(story["frames"][0].GetUint(), item["uid"].GetUint());
    EXPECT_TRUE(story["overset"].GetBool());
}

TEST_F(DescribeVerb, TellsOnlyThePartThatIsWanted) {
    const rapidjson::Document stories = answer("two.tvd --what stories");
    EXPECT_EQ(stories.MemberCount(), 1U);
    const outcomeRec lines = run("describe two.tvd --what stories");
    EXPECT_EQ(lines.status, 0);
    EXPECT_EQ(lines.output.substr(0, 13), "stories:\nuid ") << lines.output;
    EXPECT_NE(lines.output.find("overset yes, text \"Second page with too many words \"\n"), std::string::npos)
        << lines.output;
    const std::string tags = run("describe two.tvd --what tags").output;
    EXPECT_EQ(tags, "tags:\n" + run("tags list two.tvd").output);
}

TEST_F(DescribeVerb, TellsTheEntriesOfItemData) {
    // A frame named in one entry of three bytes, and a block whose size is wrong.
    write("data.tvd", R"({"tarnovaLayout": 1, "pageSize": [200, 100], "pages": [{"items": [
        {"bounds": [0, 0, 10, 10], "data": {"kelvane": "AAAACwAAAAEAAAADYXFtSmFiYw=="}},
        {"bounds": [0, 0, 10, 10], "data": {"tallyra": "AAAAZAAAAAE="}}]}]})");
    const rapidjson::Document told = answer("data.tvd --what itemData");
    ASSERT_TRUE(told.IsObject() && told.HasMember("itemData"));
    ASSERT_EQ(told["itemData"].Size(), 2U);
    EXPECT_STREQ(told["itemData"][0]["store"].GetString(), "Kelvane");
    EXPECT_STREQ(told["itemData"][0]["type"].GetString(), "aqmJ");
    EXPECT_EQ(told["itemData"][0]["size"].GetInt(), 3);
    EXPECT_STREQ(told["itemData"][1]["store"].GetString(), "Tallyra");
    EXPECT_STREQ(told["itemData"][1]["error"].GetString(), "the sizes of the block don't hold");
}

TEST_F(DescribeVerb, WrongUseIsTold) {
    const outcomeRec part = run("describe two.tvd --what colours");
    EXPECT_EQ(part.status, 2);
    EXPECT_NE(part.messages.find("--what"), std::string::npos) << part.messages;
    const outcomeRec gone = run("describe none.tvd");
    EXPECT_EQ(gone.status, 1);
    EXPECT_EQ(gone.output, "");
    EXPECT_NE(gone.messages.find("none.tvd"), std::string::npos) << gone.messages;
}

}  // namespace
}  // namespace tarnova
