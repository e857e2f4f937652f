#include <fmt/format.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <regex>

#include "program_fixture.h"

namespace tarnova {
namespace {

constexpr const char* customersDdf =
    "\"Customers\" recordDefinition; TARNOVAJNT signature; 1:\"Code\", 2:\"City\" fieldName; \"Code\" keyField;\n"
    "1 dataType; 1 fileType; 2 osType; TRUE \"\\\"\" textQualifier;\n"
    "\"City\" extractionRecord; \"City\" field;\n\"Code\" extractionRecord; \"Code\" field;\n";
constexpr const char* customersData = "Code,City\nA1,Graz\nB2,M\u00fcnchen\nC3,Wien\n";

class ExecVerb : public ProgramTest {
 protected:
    /// Runs the lines and keeps the answers.
    int exec(const std::vector<std::string>& lines) {
        std::string script;
        for (const std::string& line : lines)
            script += line + "\n";
        write("script", script);
        const outcomeRec outcome = run("exec --home data script");
        answers.clear();
        std::istringstream out(outcome.output);
        for (std::string line; std::getline(out, line);)
            answers.push_back(line);
        messages = outcome.messages;
        return outcome.status;
    }
    /// The lines that make "Customers" current with three records open, and open the layout "card.tvd" as document 1.
    std::vector<std::string> customers() const {
        write("customers.ddf", customersDdf);
        write("customers.csv", customersData);
        write("card.tvd", cardLayout);
        return {R"({"command":1400})", R"({"command":1405,"args":{"item0":"customers.ddf"}})",
                R"({"command":1207,"args":{"item1":"Customers"}})",
                R"({"command":1209,"args":{"item0":"customers.csv"},"out":["item1"]})",
                R"({"host":"open","path":"card.tvd"})"};
    }
    /// The value at a path such as "/reply/status" of answer `index`, as JSON; "(none)" when there is none.
    std::string at(std::size_t index, const std::string& path) const {
        if (index >= answers.size()) return "(no answer)";
        rapidjson::Document tree;
        tree.Parse(answers[index]);
        const rapidjson::Value* value = &tree;
        std::istringstream steps(path.substr(1));
        for (std::string step; std::getline(steps, step, '/');) {
            if (value->IsArray()) {
                const auto element = static_cast<rapidjson::SizeType>(std::stoul(step));
                if (element >= value->Size()) return "(none)";
                value = &(*value)[element];
                continue;
            }
            if (!value->IsObject() || !value->HasMember(step)) return "(none)";
            value = &(*value)[step];
        }
        rapidjson::StringBuffer text;
        rapidjson::Writer<rapidjson::StringBuffer> writer(text);
        value->Accept(writer);
        return text.GetString();
    }

    static constexpr const char* cardLayout = R"({"tarnovaLayout": 1, "pageSize": [200, 100],
        "pages": [{"items": [{"bounds": [10, 10, 190, 90], "text": "To {{City}}"}]}]})";
    std::vector<std::string> answers;
    std::string messages;
};

TEST_F(ExecVerb, AnswersInTheFormOfTheContract) {
    EXPECT_EQ(exec({R"({"command":1205,"args":{"item0":1,"item1":50,"item2":1,"item3":1},"out":["item5"]})"}), 0);
    ASSERT_EQ(answers.size(), 1U);
    EXPECT_EQ(answers[0],
              R"({"command":1205,"result":0,"reply":{"status":0,"outValue":0,"outFlag":0,"outWord":0,"text":"",)"
              R"("count":0,"hasHeader":0,"headerHint":0,"isSubset":0},"args":{"num0":0,"num1":0,"num2":0,"num3":0},)"
              R"("items":{"item5":12},"alerts":[]})");
    EXPECT_EQ(messages, "");
}

TEST_F(ExecVerb, BadLinesAreToldByNumberAndTheNextOneWorks) {
    struct testRow {
        const char* line;
        const char* reason;
    };
    const testRow rows[] = {
        {"nonsense", "no JSON"},
        {"[1,2]", "a JSON object is wanted, not an array"},
        {"{}", "\"command\" or \"host\""},
        {R"({"command":506,"colour":1})", "unknown member \"colour\""},
        {R"({"command":506,"command":507})", "stands there twice"},
        {R"({"command":-1})", "command: a whole number"},
        {R"({"command":"506"})", "not a string"},
        {R"({"command":506,"module":"Other"})", "\"Kelvane\" or \"Tallyra\""},
        {R"({"command":506,"args":[]})", "args: an object or null is wanted, not an array"},
        {R"({"command":506,"args":{"item0":"one"}})", "item0: a whole number from -2147483648 to 2147483647"},
        {R"({"command":506,"args":{"item0":1.5}})", "not a number"},
        {R"({"command":506,"args":{"item0":1,"item0":2}})", "stands there twice"},
        {R"({"command":506,"args":{"item26":1}})", "takes no \"item26\""},
        {R"({"command":506,"args":{"item3":1}})", "takes no \"item3\""},
        {R"({"command":506,"args":{"flag5":1}})", "takes no \"flag5\""},
        {R"({"command":506,"args":{"item2":300}})", "from 0 to 255 is wanted, not 300"},
        {R"({"command":506,"out":["item9"]})", "has no \"item9\""},
        {R"({"command":506,"reply":{"colour":1}})", "has no \"colour\""},
        {R"({"command":1222,"args":{"item0":7}})", "item0: a string is wanted, not a number"},
        {R"({"command":548,"args":{"item0":{"document":4}}})", "no open document 4"},
        {R"({"command":548,"args":{"item0":4}})", "an object with a document is wanted"},
        {R"({"command":1223,"args":{"item0":"abc"}})", "four characters"},
        {R"({"command":4711,"args":{"item0":1}})", "command 4711 takes no \"item0\""},
        {R"({"host":"dance"})", "knows no \"dance\""},
        {R"({"host":"open","path":"missing.tvd"})", "missing.tvd"},
        {R"({"host":"close","document":1})", "no open document 1"},
        {R"({"host":"prefs","set":{"framesFirst":2000}})", "framesFirst"},
        {R"({"host":"prefs","get":["30612:u8"]})", "no field \"30612:u8\""},
        {R"({"host":"session","fields":["colour"]})", "no field \"colour\""},
    };
    std::vector<std::string> lines = {"# a comment", ""};
    for (const testRow& row : rows) {
        lines.emplace_back(row.line);
        lines.emplace_back(R"({"command":401})");
    }
    EXPECT_EQ(exec(lines), 2);
    ASSERT_EQ(answers.size(), 2 * std::size(rows)) << messages;
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const std::string error = at(2 * i, "/error");
        EXPECT_EQ(error.find(fmt::format("\"line {}: ", 3 + 2 * i)), 0U) << rows[i].line << ": " << answers[2 * i];
        EXPECT_NE(std::regex_replace(error, std::regex("\\\\\""), "\"").find(rows[i].reason), std::string::npos)
            << rows[i].line << ": " << error;
        EXPECT_EQ(at(2 * i + 1, "/args/versionMinor"), "12") << rows[i].line;
    }
}

TEST_F(ExecVerb, DeepAndLongLinesAreSurvived) {
    EXPECT_EQ(exec({std::string(200000, '['), R"({"command":506,"args":{"item0":)" + std::string(100000, '9') + "}}",
                    R"({"command":1306,"module":")" + std::string(100000, 'x') + R"("})", R"({"command":1306})"}),
              2);
    ASSERT_EQ(answers.size(), 4U);
    EXPECT_EQ(at(3, "/result"), "0");
}

TEST_F(ExecVerb, MergesAJobIntoTheDocument) {
    std::vector<std::string> lines = customers();
    const std::size_t first = lines.size();
    lines.insert(
        lines.end(),
        {R"({"command":1212})", R"({"command":508,"args":{"item0":{"document":1}},"out":["item5","item6"]})",
         R"({"command":1205,"args":{"item0":2,"item1":3}})", R"({"command":1212})", R"({"command":1205})",
         R"({"command":1206,"out":["item2"]})", R"({"host":"idle","turns":100})",
         R"({"command":1206,"out":["item2","item3"]})", R"({"host":"describe","document":1,"what":"stories"})",
         R"({"host":"export","document":1,"path":"cards.pdf"})", R"({"host":"undo","document":1})",
         R"({"host":"describe","document":1,"what":"pages"})", R"({"host":"save","document":1,"path":"after.tvd"})",
         R"({"host":"close","document":1})", R"({"host":"front"})", R"({"command":508})"});
    EXPECT_EQ(exec(lines), 0) << messages;
    ASSERT_EQ(answers.size(), lines.size());
    EXPECT_EQ(at(first, "/reply/status"), "-6022") << "nothing is armed";
    EXPECT_EQ(at(first + 1, "/items"), R"({"item5":1,"item6":1})") << answers[first + 1];
    EXPECT_EQ(at(first + 3, "/reply/status"), "0") << answers[first + 3];
    EXPECT_EQ(at(first + 4, "/reply/status"), "-6022") << "a run is active";
    EXPECT_EQ(at(first + 6, "/turns"), "1");
    EXPECT_EQ(at(first + 6, "/runStage"), "0");
    EXPECT_EQ(at(first + 7, "/items"), R"({"item2":0,"item3":100})");
    const std::string stories = at(first + 8, "/stories");
    EXPECT_NE(stories.find("To M\u00fcnchen"), std::string::npos) << stories;
    EXPECT_NE(stories.find("To Wien"), std::string::npos);
    EXPECT_EQ(stories.find("Graz"), std::string::npos);
    EXPECT_EQ(at(first + 9, "/pages"), "2");
    EXPECT_TRUE(exists("cards.pdf"));
    EXPECT_NE(at(first + 10, "/step"), "null");
    EXPECT_EQ(at(first + 11, "/pages/1"), "(none)") << "undo leaves one page";
    EXPECT_TRUE(exists("after.tvd"));
    EXPECT_EQ(at(first + 14, "/document"), "null");
    EXPECT_EQ(at(first + 15, "/reply/status"), "-6005");
}

TEST_F(ExecVerb, PreferencesByNameAndOffset) {
    EXPECT_EQ(exec({R"({"host":"prefs","get":["framesFirst","rangeStep","8627:u8","numberingPad"]})",
                    R"({"host":"prefs","set":{"framesFirst":0,"22152:u32":7},"get":["framesFirst","rangeStep"]})",
                    R"({"host":"prefs","set":{"framesFirst":1,"rangeStep":-1}})",
                    R"({"host":"prefs","get":["framesFirst"]})"}),
              2);
    EXPECT_EQ(answers.at(0), R"({"framesFirst":1,"rangeStep":1,"8627:u8":1,"numberingPad":"0"})");
    EXPECT_EQ(answers.at(1), R"({"framesFirst":0,"rangeStep":7})");
    EXPECT_EQ(answers.at(3), R"({"framesFirst":0})") << "a refused set changes nothing";
    EXPECT_EQ(exec({R"({"host":"prefs","get":["rangeStep"]})"}), 0);
    EXPECT_EQ(answers.at(0), R"({"rangeStep":7})") << "the next session has them";
}

TEST_F(ExecVerb, StartsAndListsAndSaysWhyNot) {
    const outcomeRec list = run("exec --commands");
    EXPECT_EQ(list.status, 0);
    EXPECT_NE(list.output.find("1205  kKelvaneCmdSetRunOptions  merge mode\n"), std::string::npos);
    EXPECT_NE(list.output.find("1240  kKelvaneCmdRunPreflight  merge mode  not yet available\n"), std::string::npos);
    EXPECT_EQ(run("exec missing").status, 1);
    EXPECT_EQ(run("exec --home data </dev/null").output, "");
    EXPECT_EQ(read("data/Tarnova/Config/Ostreon Tag Display.prf").size(), 30612U);
    std::filesystem::create_directories(folder + "/data/Tarnova/Ostreon Tag Display");
    write("data/Tarnova/Ostreon Tag Display/Record Definitions", "no signature");
    const outcomeRec broken = run("exec --home data </dev/null");
    EXPECT_EQ(broken.status, 1);
    EXPECT_NE(broken.messages.find("could not be started"), std::string::npos) << broken.messages;
}

}  // namespace
}  // namespace tarnova
