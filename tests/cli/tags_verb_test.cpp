#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <CLI/CLI.hpp>

#include "cli/verb.h"
#include "source_folder.h"

namespace tarnova {
namespace {

struct outcomeRec {
    int status = -1;
    std::string out, errors;
};

outcomeRec runTagsVerb(const std::string& arguments) {
    CLI::App app;
    verbContext context;
    addTagsVerb(app, context);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    app.parse("tags list " + arguments);
    std::fflush(stdout);
    outcomeRec outcome{context.exitStatus, testing::internal::GetCapturedStdout(), {}};
    outcome.errors = testing::internal::GetCapturedStderr();
    return outcome;
}

const std::string layout = std::string(TARNOVA_SOURCE_FOLDER) + "/fuzz/corpus/layout/everything.tvd";

TEST(TagsVerb, LinesTellPlaceLinkAndWhatIsDamaged) {
    const outcomeRec outcome = runTagsVerb(layout);
    EXPECT_EQ(outcome.status, exitDone) << outcome.errors;
    EXPECT_NE(outcome.out.find("Kelvane page A-ii, story 231 at 1+9: \"Name\" with key \"K1\" over \"some data\"\n"),
              std::string::npos)
        << outcome.out;
    EXPECT_NE(outcome.out.find("\"L\" with key \"1\" over \"b\", locked\n"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("damaged: the sizes in the stored record don't hold\n"), std::string::npos)
        << outcome.out;
}

TEST(TagsVerb, JsonHoldsTheSame) {
    rapidjson::Document json;
    json.Parse(runTagsVerb(layout + " --json").out);
    ASSERT_FALSE(json.HasParseError());
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

TEST(TagsVerb, ALayoutThatIsntThere) {
    const outcomeRec outcome = runTagsVerb("/nowhere/card.tvd");
    EXPECT_EQ(outcome.status, exitFailed);
    EXPECT_EQ(outcome.out, "");
    EXPECT_NE(outcome.errors.find("/nowhere/card.tvd"), std::string::npos);
}

}  // namespace
}  // namespace tarnova
