#include "cli/ddf_verb.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <fstream>
#include <sstream>

#include "cli/verb.h"

namespace tarnova {

namespace {

constexpr char crooked[] =
    "Orders recordDefinition;\n T signature;\n 1:Name, 2:City fieldName;\n x lastUpdate;\n"
    "\"F\xFCr\" extractionRecord;\n colour notes2;\n";

class DdfVerb : public testing::Test {
 protected:
    std::string file(const char* name, std::string_view text) {
        std::string path = testing::TempDir() + name;
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }

    static std::string textOf(const std::string& path) {
        std::ifstream stream(path, std::ios::binary);
        std::ostringstream text;
        text << stream.rdbuf();
        return text.str();
    }

    /// Runs a verb and keeps what it wrote.
    int run(int (*verb)(const ddfVerbRec&), const ddfVerbRec& options) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int status = verb(options);
        std::fflush(stdout);
        out_ = testing::internal::GetCapturedStdout();
        errors_ = testing::internal::GetCapturedStderr();
        return status;
    }

    std::string out_, errors_;
};

TEST_F(DdfVerb, CheckTellsCountsAndRemarks) {
    const std::string path = file("crooked.ddf", crooked);
    EXPECT_EQ(run(checkDdf, {.path = path, .outputPath = {}, .definitionName = {}, .json = false}), exitDone);
    EXPECT_EQ(out_, "Orders: 2 fields, 1 link, 0 search criteria records, 0 price styles\n" + path +
                        ":4: \"lastUpdate\": \"x\" is not a number\n" + path +
                        ":6: \"notes2\": unknown keyword, dropped\n");
    EXPECT_EQ(run(checkDdf, {.path = path, .outputPath = {}, .definitionName = {}, .json = true}), exitDone);
    rapidjson::Document json;
    json.Parse(out_);
    ASSERT_FALSE(json.HasParseError());
    EXPECT_TRUE(json["good"].GetBool());
    EXPECT_EQ(json["definitions"][0]["links"].GetUint(), 1u);
    EXPECT_EQ(json["remarks"].Size(), 2u);
    EXPECT_EQ(json["remarks"][1]["line"].GetUint(), 6u);
}

TEST_F(DdfVerb, ARefusedFileIsToldWithItsLine) {
    const std::string path = file("refused.ddf", "d recordDefinition;\nT signature;\n\"4x\" ruleSetData;\n");
    for (const bool json : {false, true}) {
        EXPECT_EQ(run(checkDdf, {.path = path, .outputPath = {}, .definitionName = {}, .json = json}), exitFailed);
        EXPECT_EQ(errors_.rfind("tarnova: " + path + ":3: ", 0), 0u) << errors_;
        EXPECT_EQ(out_.empty(), !json);
    }
    rapidjson::Document answer;
    answer.Parse(out_);
    ASSERT_FALSE(answer.HasParseError());
    EXPECT_FALSE(answer["good"].GetBool());
    EXPECT_EQ(answer["line"].GetUint(), 3u);
    EXPECT_EQ(run(formatDdf, {.path = path, .outputPath = path, .definitionName = {}, .json = false}), exitFailed);
    EXPECT_NE(textOf(path).find("4x"), std::string::npos) << "the file is left alone";
    EXPECT_EQ(run(checkDdf, {.path = path + ".none", .outputPath = {}, .definitionName = {}, .json = false}),
              exitFailed);
    EXPECT_NE(errors_.find("can't be opened"), std::string::npos);
}

TEST_F(DdfVerb, FormatSettlesAtOnce) {
    const std::string path = file("format.ddf", crooked);
    EXPECT_EQ(run(formatDdf, {.path = path, .outputPath = {}, .definitionName = {}, .json = false}), exitDone);
    EXPECT_NE(errors_.find("2 statements are left out"), std::string::npos) << errors_;
    const std::string formatted = out_;
    EXPECT_EQ(formatted.rfind("\"Orders\" recordDefinition;\r\n\r\n\tT signature;\r\n", 0), 0u);
    EXPECT_EQ(textOf(path), crooked);
    EXPECT_EQ(run(formatDdf, {.path = path, .outputPath = path, .definitionName = {}, .json = false}), exitDone);
    EXPECT_EQ(textOf(path), formatted);
    EXPECT_EQ(run(formatDdf, {.path = path, .outputPath = {}, .definitionName = {}, .json = false}), exitDone);
    EXPECT_EQ(out_, formatted);
    EXPECT_EQ(errors_, "");
}

TEST_F(DdfVerb, FromDataMakesADefinitionWithALinkForEachField) {
    const std::string data = file("customers.csv", "Name;City;@Photo\nAda;Graz;a.jpg\n");
    const std::string made = testing::TempDir() + "customers.ddf";
    EXPECT_EQ(run(makeDdfFromData, {.path = data, .outputPath = made, .definitionName = "Customers", .json = false}),
              exitDone)
        << errors_;
    EXPECT_EQ(run(checkDdf, {.path = made, .outputPath = {}, .definitionName = {}, .json = false}), exitDone);
    EXPECT_EQ(out_.rfind("Customers: 3 fields, 3 links, ", 0), 0u) << out_;
    EXPECT_NE(textOf(made).find("3 fileType;"), std::string::npos);
    EXPECT_EQ(run(makeDdfFromData, {.path = data + ".none", .outputPath = made, .definitionName = {}, .json = false}),
              exitFailed);
    EXPECT_NE(errors_.find("no such data file"), std::string::npos);
}

}  // namespace

}  // namespace tarnova
