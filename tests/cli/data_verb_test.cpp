#include "cli/data_verb.h"

#include <rapidjson/document.h>

#include <CLI/CLI.hpp>

#include "cli/verb.h"
#include "engine/session/session.h"
#include "tests/data/data_fixture.h"

namespace tarnova {
namespace {

class DataVerb : public testing::Test {
 protected:
    void SetUp() override {
        sessionReset();
        std::string pattern = testing::TempDir() + "tarnova-verb-XXXXXX";
        folder = std::string(mkdtemp(pattern.data())) + "/";
        session().indexFolder = folder + "indexes";
        options.path = folder + "data.csv";
        writeFile(options.path, "Code,Name,City\nb,\"Ann \"\"A\"\" B\",Caf\xE9 du Lac\na,Bob,\nCode,odd,row\n");
    }
    void TearDown() override { std::filesystem::remove_all(folder); }

    int run(int (*verb)(const dataVerbRec&)) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int status = verb(options);
        std::fflush(stdout);
        out = testing::internal::GetCapturedStdout();
        errors = testing::internal::GetCapturedStderr();
        return status;
    }
    /// The whole command line, from "data" on.
    int runLine(const std::string& line) {
        CLI::App app;
        verbContext context;
        addDataVerb(app, context);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        try {
            app.parse(line);
        } catch (const CLI::ParseError&) {
            context.exitStatus = exitUsage;
        }
        std::fflush(stdout);
        out = testing::internal::GetCapturedStdout();
        errors = testing::internal::GetCapturedStderr();
        return context.exitStatus;
    }

    dataVerbRec options;
    std::string folder, out, errors;
};

TEST_F(DataVerb, InspectTellsHowTheFileIsRead) {
    options.json = true;
    ASSERT_EQ(run(inspectData), exitDone) << errors;
    rapidjson::Document json;
    json.Parse(out);
    ASSERT_FALSE(json.HasParseError()) << out;
    EXPECT_STREQ(json["encoding"].GetString(), "Windows-1252");
    EXPECT_STREQ(json["delimiter"].GetString(), "comma");
    EXPECT_STREQ(json["qualifier"].GetString(), "double");
    EXPECT_EQ(json["records"].GetUint(), 3u);
    EXPECT_EQ(json["fields"].Size(), 3u);
    options.noHeader = true;
    ASSERT_EQ(run(inspectData), exitDone);
    json.Parse(out);
    EXPECT_EQ(json["records"].GetUint(), 4u);
    EXPECT_STREQ(json["fields"][1].GetString(), "Field 2");
}

TEST_F(DataVerb, GetsRecordsByNumberAndKey) {
    struct row {
        const char* arguments;
        int status;
        const char* out;
    };
    const row rows[] = {
        {"--record 1", exitDone, "Code: b\nName: Ann \"A\" B\nCity: Caf\xC3\xA9 du Lac\n"},
        {"--record 2 --field city", exitDone, "\n"},
        {"--key a --field Name", exitDone, "Bob\n"},
        {"--key Code --field Name", exitDone, "odd\n"},  // not the header
        {"--key \"Caf\xC3\xA9 du Lac\" --key-field City --field Code", exitDone, "b\n"},
        {"--record 4", exitFailed, ""},
        {"--key z", exitFailed, ""},
        {"--key a --field Nothing", exitFailed, ""},
        {"--key a --key-field Nothing", exitFailed, ""},
        {"--record 1 --delimiter toolong", exitUsage, ""},
        {"--record 1 --key a", exitUsage, ""},
        {"", exitUsage, ""},
        {"--record 1 --delimiter semicolon --field \"Code,Name,City\"", exitDone,
         "b,\"Ann \"\"A\"\" B\",Caf\xC3\xA9 du Lac\n"},
    };
    for (const auto& [arguments, status, expected] : rows) {
        EXPECT_EQ(runLine("data get " + options.path + " " + arguments), status) << arguments << errors;
        EXPECT_EQ(out, expected) << arguments;
    }
}

TEST_F(DataVerb, IndexSaysWhereAndHowBig) {
    options.json = true;
    options.keyField = "City";
    ASSERT_EQ(run(indexData), exitDone) << errors;
    rapidjson::Document json;
    json.Parse(out);
    const std::string path = json["index"].GetString();
    EXPECT_EQ(json["bytes"].GetUint64(), std::filesystem::file_size(path));
    EXPECT_EQ(json["records"].GetUint(), 3u);
    EXPECT_EQ(path.rfind(folder + "indexes/data-", 0), 0u) << path;
}

TEST_F(DataVerb, FailuresSayWhere) {
    writeFile(options.path, "a,b\n" + std::string(1501, ',') + "\n");
    EXPECT_EQ(run(indexData), exitFailed);
    EXPECT_NE(errors.find("data.csv: Record 2"), std::string::npos) << errors;
    options.path = folder + "nowhere";
    EXPECT_EQ(run(indexData), exitFailed);
    EXPECT_NE(errors.find("nowhere"), std::string::npos) << errors;
}

}  // namespace
}  // namespace tarnova
