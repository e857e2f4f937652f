// `tarnova tags` as a person calls it.

#include <rapidjson/document.h>

#include "tests/cli/program_fixture.h"

namespace tarnova {
namespace {

class TagsVerb : public ProgramTest {
 protected:
    outcomeRec list(const std::string& options = "") {
        return run("tags list " + source("fuzz/corpus/layout/everything.tvd") + options);
    }
};

TEST_F(TagsVerb, LinesTellPlaceLinkAndWhatIsDamaged) {
    const outcomeRec outcome = list();
    EXPECT_EQ(outcome.status, 0) << outcome.messages;
    for (const char* part :
         {"Kelvane page A-ii, story 231 at 1+9: \"Name\" with key \"K1\" over \"some data\"\n",
          "\"L\" with key \"1\" over \"b\", locked\n", "damaged: the sizes in the stored record don't hold\n"})
        EXPECT_NE(outcome.output.find(part), std::string::npos) << outcome.output;
    const outcomeRec missing = run("tags list /nowhere/card.tvd");
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.output, "");
    EXPECT_NE(missing.messages.find("/nowhere/card.tvd"), std::string::npos);
}

TEST_F(TagsVerb, JsonHoldsTheSame) {
    rapidjson::Document json;
    ASSERT_FALSE(json.Parse(list(" --json").output).HasParseError());
    ASSERT_GT(json["tags"].Size(), 0U);
    const auto& first = json["tags"][0];
    EXPECT_STREQ(first["store"].GetString(), "Kelvane");
    EXPECT_STREQ(first["link"].GetString(), "Name");
    EXPECT_STREQ(first["text"].GetString(), "some data");
    EXPECT_EQ(first["story"].GetUint(), 231U);
    EXPECT_EQ(first["start"].GetInt(), 1);
    EXPECT_FALSE(first.HasMember("error"));
    const auto& last = json["tags"][json["tags"].Size() - 1];
    EXPECT_STREQ(last["store"].GetString(), "Tallyra");
    EXPECT_TRUE(last.HasMember("error"));
}

TEST_F(TagsVerb, TextTagsBecomeLinksThatMergeAndAreWrittenBack) {
    write("in.tvd", R"({"tarnovaLayout": 1, "pages": [{"items": [{"bounds": [20, 20, 400, 100],
        "text": "Dear \\<!$1; Name; : >you<!!> in \\[!$1;City;;;:town]. \\<!$A; B>"}]}]})");
    const outcomeRec made = run("tags to-links in.tvd -o links.tvd");
    EXPECT_EQ(made.output, "links.tvd: 2 links made, 1 text tag left\n");
    EXPECT_NE(made.messages.find("a text tag stays: no colon stands behind its last semicolon"), std::string::npos);
    write("data.csv", "Name,City\nAnna,Graz\n");
    EXPECT_EQ(run("merge links.tvd --data data.csv -o merged.tvd").status, 0);
    EXPECT_NE(read("merged.tvd").find("Anna"), std::string::npos);
    EXPECT_EQ(run("tags to-text links.tvd -o text.tvd").output, "text.tvd: 2 links written as text\n");
    EXPECT_EQ(run("tags to-links text.tvd -o again.tvd").output, "again.tvd: 2 links made, 1 text tag left\n");
    EXPECT_EQ(run("tags list again.tvd").output, run("tags list links.tvd").output);
    EXPECT_EQ(run("tags to-links in.tvd -o out.doc").status, 2);
}

}  // namespace
}  // namespace tarnova
