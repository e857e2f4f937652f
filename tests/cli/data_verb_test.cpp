// `tarnova data` as a person calls it.

#include <gmock/gmock.h>
#include <rapidjson/document.h>

#include "tests/cli/program_fixture.h"

namespace tarnova {
namespace {

class DataVerb : public ProgramTest {
 protected:
    DataVerb() { write("data.csv", "Code,Name,City\nb,\"Ann \"\"A\"\" B\",Caf\xE9 du Lac\na,Bob,\nCode,odd,row\n"); }
    [[nodiscard]] rapidjson::Document answer(const std::string& arguments) {
        const outcomeRec outcome = run("data " + arguments + " --json");
        EXPECT_EQ(outcome.status, 0) << outcome.messages;
        rapidjson::Document json;
        EXPECT_FALSE(json.Parse(outcome.output).HasParseError()) << outcome.output;
        return json;
    }
};

TEST_F(DataVerb, InspectTellsHowTheFileIsRead) {
    const auto json = answer("inspect data.csv");
    EXPECT_STREQ(json["encoding"].GetString(), "Windows-1252");
    EXPECT_STREQ(json["delimiter"].GetString(), "comma");
    EXPECT_STREQ(json["qualifier"].GetString(), "double");
    EXPECT_EQ(json["records"].GetUint(), 3u);
    EXPECT_EQ(json["fields"].Size(), 3u);
    const auto headless = answer("inspect data.csv --no-header");
    EXPECT_EQ(headless["records"].GetUint(), 4u);
    EXPECT_STREQ(headless["fields"][1].GetString(), "Field 2");
}

TEST_F(DataVerb, GetsRecordsByNumberAndKey) {
    struct row {
        const char* arguments;
        int status;
        const char* out;
    };
    const row rows[] = {
        {"--record 1", 0, "Code: b\nName: Ann \"A\" B\nCity: Caf\xC3\xA9 du Lac\n"},
        {"--record 2 --field city", 0, "\n"},
        {"--key a --field Name", 0, "Bob\n"},
        {"--key Code --field Name", 0, "odd\n"},  // not the header
        {"--key Code --no-header --field 'Field 2'", 0, "Name\n"},
        {"--key a --json", 0, "{\"record\":2,\"fields\":{\"Code\":\"a\",\"Name\":\"Bob\",\"City\":\"\"}}\n"},
        {"--key 'Caf\xC3\xA9 du Lac' --key-field City --field Code", 0, "b\n"},
        {"--record 4", 1, ""},
        {"--key z", 1, ""},
        {"--key a --field Nothing", 1, ""},
        {"--key a --key-field Nothing", 1, ""},
        {"--record 1 --delimiter toolong", 2, ""},
        {"--record 1 --key a", 2, ""},
        {"", 2, ""},
        {"--record 1 --delimiter semicolon --field 'Code,Name,City'", 0, "b,\"Ann \"\"A\"\" B\",Caf\xC3\xA9 du Lac\n"},
    };
    for (const auto& [arguments, status, expected] : rows) {
        const outcomeRec outcome = run(std::string("data get data.csv ") + arguments);
        EXPECT_EQ(outcome.status, status) << arguments << outcome.messages;
        EXPECT_EQ(outcome.output, expected) << arguments;
        EXPECT_EQ(outcome.messages.empty(), status == 0) << arguments << outcome.messages;
    }
}

TEST_F(DataVerb, IndexSaysWhereAndHowBig) {
    const auto json = answer("index data.csv --key-field City");
    const std::string path = json["index"].GetString();
    EXPECT_EQ(json["bytes"].GetUint64(), std::filesystem::file_size(path));
    EXPECT_EQ(json["records"].GetUint(), 3u);
    EXPECT_EQ(path.rfind(folder + "/home/Tarnova/Ostreon Tag Display/Index Files/data-", 0), 0u) << path;
}

TEST_F(DataVerb, FailuresSayWhere) {
    write("wide.csv", "a,b\n" + std::string(1501, ',') + "\n");
    for (const auto& [arguments, message] : {std::pair{"index wide.csv", "wide.csv: Record 2"},
                                             {"get wide.csv --record 1", "wide.csv: the data can't be read"},
                                             {"inspect nowhere", "nowhere"}}) {
        const outcomeRec outcome = run(std::string("data ") + arguments);
        EXPECT_EQ(outcome.status, 1) << arguments;
        EXPECT_NE(outcome.messages.find(message), std::string::npos) << outcome.messages;
    }
}

// What a verb's options change holds for its time alone.
TEST_F(DataVerb, LeavesTheSettingsAndDefinitionsOfTheUserAlone) {
    ASSERT_EQ(run("exec </dev/null").status, 0);
    const std::string preferences = "home/Tarnova/Config/Ostreon Tag Display.prf", before = read(preferences);
    ASSERT_EQ(before.size(), 30612U);
    EXPECT_EQ(run("data get data.csv --no-header --record 1").status, 0);
    EXPECT_TRUE(read(preferences) == before);
    EXPECT_FALSE(exists("home/Tarnova/Ostreon Tag Display/QelTestFile.txt"));
    EXPECT_EQ(read("data.csv").substr(0, 9), "Code,Name") << "and the data";
}

TEST_F(DataVerb, MakesFilesOfNumbers) {
    const struct {
        const char *arguments, *bytes;
    } cases[] = {
        {"--start 99 --end 101 --width 4 --prefix A- --suffix /x", "Number\r\nA-0099/x\r\nA-0100/x\r\nA-0101/x\r\n"},
        {"--start 1 --end -1 --pad . --width 2", "Number\r\n.1\r\n.0\r\n-1\r\n"},
    };
    for (const auto& made : cases) {
        EXPECT_EQ(run(std::string("data numbers -o numbers.txt ") + made.arguments).status, 0);
        EXPECT_EQ(read("numbers.txt"), made.bytes);
    }
    const outcomeRec refused = run("data numbers --end 5 -o missing/numbers.txt");
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.messages, testing::HasSubstr("missing/numbers.txt: The file can't be created"));
}

}  // namespace
}  // namespace tarnova
