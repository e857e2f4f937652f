// Scripts of commands and requests, good and bad, with what is answered to each; and lines that nobody meant to send.
//
// A line of a script is a request, "=>", the status of a command, and pieces that the answer holds, with " | " between
// them. Each line works on what those before it left. Blank lines and those that begin with "#" say nothing.

#include <rapidjson/document.h>

#include <random>
#include <sstream>

#include "cli/exec/exec_session.h"
#include "engine/session/preferences_file.h"
#include "engine/session/session.h"
#include "engine/toolkit/files.h"
#include "program_fixture.h"
#include "shell/startup.h"

namespace tarnova {
namespace {

constexpr const char* customersDdf =
    "\"Customers\" recordDefinition; TARNOVAJNT signature; 1:\"Code\", 2:\"City\" fieldName; \"Code\" keyField;\n"
    "1 dataType; 1 fileType; 2 osType; TRUE \"\\\"\" textQualifier;\n"
    "\"City\" extractionRecord; \"City\" field; 2 nodata; 1 deleteline; \"Dear \" prefix; \"of \\\"A\\\"\" notes;\n"
    "\"Code\" extractionRecord; \"Code\" field; 1 type;\n"
    "\"Nowhere\" extractionRecord; \"Country\" field;\n"
    "\"Bare\" recordDefinition; 1 dataType; 1 fileType; 2 osType; \"City\" extractionRecord; \"City\" field;\n"
    "\"Foreign\" recordDefinition; 1:\"Code\", 2:\"City\" fieldName; \"Code\" keyField; 1 fileType; 2 osType;\n"
    "TRUE \"Mac\" transTable; \"City\" extractionRecord; \"City\" field;\n"
    "\"Old\" recordDefinition; 1:\"Code\", 2:\"City\" fieldName; \"Code\" keyField; 1 fileType; 2 osType;\n"
    "\"City\" extractionRecord; \"City\" field;\n";

// A linked text with a frame beside it, a page with a master, and two frames with the mark of a file name.
constexpr const char* cardLayout = R"({"tarnovaLayout": 1, "uid": 1, "pageSize": [200, 100], "pages": [{"items": [
    {"uid": 100, "bounds": [10, 10, 190, 90], "text": "To {{City}} and {{Code}}"},
    {"uid": 200, "bounds": [10, 10, 50, 50], "data": {"kelvane": "AAAADAAAAAEAAAAEYXFtRwAAAAM="}}]},
    {"uid": 50, "master": "A"}], "masters": [{"name": "A", "uid": 60, "pages": [{}]}]})";
constexpr const char* twiceLayout = R"({"tarnovaLayout": 1, "pages": [{"items": [
    {"bounds": [10, 10, 190, 90], "text": "{{City}}"},
    {"bounds": [0, 0, 9, 9], "data": {"kelvane": "AAAADAAAAAEAAAAEYXFtRwAAAAA="}},
    {"bounds": [60, 10, 20, 20], "picture": {"file": "none.png"}},
    {"bounds": [0, 9, 9, 9], "data": {"kelvane": "AAAADAAAAAEAAAAEYXFtRwAAAAA="}}]}]})";

class ExecScript : public ProgramTest {
 protected:
    ExecScript() {
        write("customers.ddf", customersDdf);
        write("bad.ddf", "nothing");
        write("customers.csv", "Code,City\nA1,Graz\nB2,M\u00fcnchen\nC3,\n");
        write("old.csv", "Code,City\nA1,K\xF6ln\nB\xFC,Linz\n");
        write("utf16.csv", std::string("\xFF\xFE", 2) + std::string("C\0o\0d\0e\0\n\0", 10));
        write("wide.csv", "Code,City\n" + std::string(1501, ',') + "\n");
        write("card.tvd", cardLayout);
        write("twice.tvd", twiceLayout);
        std::filesystem::create_directories(folder + "/pictures/deep");
        write("pictures/deep/A1", "x");
        before = std::filesystem::current_path();
        std::filesystem::current_path(folder);
        restart();
    }
    ~ExecScript() override {
        shell.Shutdown();
        sessionReset();
        std::filesystem::current_path(before);
    }
    /// The session ends and a new one begins in the same folders.
    void restart() {
        shell.Shutdown();
        sessionReset();
        EXPECT_EQ(shell.Startup(folder + "/app", folder + "/home"), 0);
    }
    void play(const std::string& script) {
        ExecSession exec;
        std::istringstream lines(script);
        for (std::string line; std::getline(lines, line);)
            if (!line.empty() && line[0] != '#') check(exec, line);
        EXPECT_FALSE(exec.hadError());
    }
    static std::string script(const std::string& name) {
        std::string text;
        EXPECT_EQ(fileReadWhole(source("tests/cli/scripts/" + name + ".script").c_str(), text, 1 << 20, 0), 0) << name;
        return text;
    }

    ZavoStartupShutdown shell;
    std::filesystem::path before;

 private:
    static void check(ExecSession& exec, const std::string& line) {
        const std::size_t arrow = line.find(" =>");
        std::istringstream expected(line.substr(arrow + 3));
        const std::string text = exec.answer(line.substr(0, arrow)).value_or("{}");
        rapidjson::Document answer;
        answer.Parse(text);
        EXPECT_FALSE(answer.HasMember("error")) << line << "\n" << text;
        if (answer.HasMember("reply") && answer["reply"].IsObject()) {
            int status = -1;
            expected >> status;
            EXPECT_EQ(answer["reply"]["status"].GetInt(), status) << line << "\n" << text;
        }
        std::string pieces;
        std::getline(expected >> std::ws, pieces);
        for (std::size_t at = 0; at < pieces.size();) {
            const std::size_t limit = std::min(pieces.find(" | ", at), pieces.size());
            const std::string piece = pieces.substr(at, limit - at);
            EXPECT_NE(text.find(piece), std::string::npos) << line << "\n" << piece << " in\n" << text;
            at = limit + 3;
        }
    }
};

TEST_F(ExecScript, TheEngineItself) {
    play(script("engine"));
    EXPECT_EQ(read("lines.log"), "first\r\nfirst line\r\n") << "the length is held to the text";
    session().prefs.lastEngineMode = modePrice;
    savePreferences();
    restart();
    play(R"({"host":"prefs","get":["19646:u8","19647:u8","19648:u8"]} => "19646:u8":0,"19647:u8":1,"19648:u8":1
{"command":1401} => 0
{"command":1256,"out":["item1"]} => 0 "item1":1
{"command":506} => -6023 "result":-1)");
}

TEST_F(ExecScript, DefinitionsAndLinks) {
    play(script("definitions"));
    EXPECT_NE(read("out.ddf").find("\"Customers\" recordDefinition;"), std::string::npos);
    restart();
    play(R"({"command":593,"args":{"item1":"Customers"},"out":["item3"]} => 0 "item3":"Code")");  // the next session
                                                                                                  // has them
}

TEST_F(ExecScript, Data) {
    play(script("data"));
}

TEST_F(ExecScript, PicturesThatValuesName) {
    play(script("pictures"));
}

TEST_F(ExecScript, LinksNamesMarksAndTheSelection) {
    play(script("items"));
}

TEST_F(ExecScript, LinksOfTexts) {
    ExecSession exec;
    const auto ask = [&exec](const std::string& line) { return exec.answer(line).value_or(""); };
    for (const char* line :
         {R"({"command":1400})", R"({"command":1405,"args":{"item0":"customers.ddf"}})",
          R"({"command":1207,"args":{"item1":"Customers"}})", R"({"host":"open","path":"card.tvd"})"})
        EXPECT_EQ(ask(line).find("error"), std::string::npos) << line;
    rapidjson::Document stories;
    stories.Parse(ask(R"({"host":"describe","document":1,"what":"stories"})"));
    const std::string uid = std::to_string(stories["stories"][0]["uid"].GetUint());
    const std::string ref = R"({"document":1,"uid":)" + uid + "}";
    const std::string links = R"({"command":597,"args":{"item0":)" + ref;
    const std::string select = R"({"host":"select","document":1,"story":)" + uid;
    const std::pair<std::string, const char*> rows[] = {
        {links + R"(,"item11":1},"out":["item3","item8","item9","item12"]})",
         R"("item3":"City","item8":3,"item9":4,"item12":"City")"},
        {links + R"(,"item10":1},"out":["item3"]})", R"("item3":"Code")"},
        {links + R"(,"item10":2}})", R"("status":1)"},
        {links + R"(,"item10":-2}})", R"("status":-6077)"},
        {links + R"(,"item10":5}})", R"("status":-6078)"},
        {links + R"(,"item1":9999}})", R"("status":1)"},
        {R"({"command":1271,"args":{"item0":)" + ref +
             R"(,"item1":0,"item2":2,"item3":"2","item4":"Code","item8":true}})",
         R"("status":0)"},
        {links + R"(},"out":["item2","item3","item8","item9"]})", R"("item2":"2","item3":"Code","item8":0,"item9":2)"},
        {select + R"(,"start":0,"length":2})", R"({"document":1})"},
        {select + R"(,"start":0,"length":99999})", "doesn't lie in story"},
        {select + R"(,"start":0,"length":1,"frames":[100]})", "only one of them"},
        {R"({"host":"select","document":1,"cells":{"table":7,"top":0,"left":0,"bottom":1,"right":1}})", "no table 7"},
        {R"({"host":"select","document":1,"frames":[999999]})", "no page item 999999"},
    };
    for (const auto& [line, piece] : rows) {
        const std::string answer = ask(line);
        EXPECT_NE(answer.find(piece), std::string::npos) << line << "\n" << answer;
    }
}

TEST_F(ExecScript, Options) {
    play(script("options"));
    ExecSession exec;
    const auto statusOf = [&exec](const std::string& path) {
        return exec.answer(R"({"command":1222,"args":{"item0":")" + path + R"("}})").value_or("");
    };
    for (int i = 1; i <= 10; ++i) {
        const std::string more = "more" + std::to_string(i);
        std::filesystem::create_directories(more);
        EXPECT_NE(statusOf(more).find(i < 10 ? R"("status":0)" : R"("status":-6027)"), std::string::npos) << i;
    }
    EXPECT_NE(statusOf("pictures").find(R"("status":0)"), std::string::npos) << "one that is listed, in a full table";
    play(R"({"command":1221} => 0
{"command":1255,"out":["item0","item4"]} => 0 {"item0":0,"item4":[]})");
}

TEST_F(ExecScript, ResetOfTheEnvironment) {
    play(R"({"command":1400} => 0
{"command":1405,"args":{"item0":"customers.ddf"}} => 0
{"command":1207,"args":{"item1":"Customers"}} => 0
{"command":1209,"args":{"item0":"customers.csv"}} => 0
{"command":537,"out":["item0"]} => 0
{"command":556} => 0)");
    const std::string home = "home/Tarnova/Ostreon Tag Display/";
    write(home + "TempFiles/left", "x");
    const auto isEmpty = [&](const char* name) { return std::filesystem::is_empty(home + name); };
    play(R"({"command":1232,"args":{"item1":1,"item2":3}} => -6040)");
    EXPECT_TRUE(isEmpty("TempFiles") && !isEmpty("Index Files"));
    play(R"({"command":1232,"args":{"item0":1,"item3":3}} => -6041
{"command":1232,"args":{"item2":1}} => 0
{"command":593,"args":{"item1":"Customers"}} => -6002
{"command":1232,"args":{"item2":2}} => 0
{"host":"prefs","set":{"rangeStep":9}} =>
{"command":1232,"args":{"item3":1}} => 0
{"host":"prefs","get":["rangeStep","19641:u8"]} => {"rangeStep":1,"19641:u8":1}
{"command":1232,"args":{"item3":2}} => 0)");
    EXPECT_TRUE(isEmpty("Index Files"));
    EXPECT_TRUE(exists(home + "Record Definitions"));
    restart();
    EXPECT_EQ(appPrefs().modulePresence[0], 0) << "the next start began anew";
}

TEST_F(ExecScript, ArmingAndRunning) {
    play(script("runs"));
}

// Bytes of the scripts are changed, dropped and swapped between lines. Whatever comes of it is answered with one
// object.
TEST_F(ExecScript, SpoiltLinesAreAnswered) {
    ExecSession exec;
    std::mt19937 random(20261123);
    const auto below = [&random](std::size_t limit) { return random() % limit; };
    std::vector<std::string> requests;
    for (const char* name : {"engine", "definitions", "data", "pictures", "items", "options", "runs"}) {
        std::istringstream lines(script(name));
        for (std::string line; std::getline(lines, line);)
            if (line.find(" =>") != std::string::npos) requests.push_back(line.substr(0, line.find(" =>")));
    }
    ASSERT_GT(requests.size(), 100U);
    const auto anyLine = [&] { return requests[below(requests.size())]; };
    for (int round = 0; round < 3000; ++round) {
        std::string line = anyLine();
        for (std::size_t changes = below(4); changes > 0 && !line.empty(); --changes) {
            const std::string other = anyLine();
            const std::size_t at = below(line.size());
            switch (below(4)) {
                case 0:
                    line[at] = static_cast<char>(below(256));
                    break;
                case 1:
                    line.erase(at, below(8));
                    break;
                case 2:
                    line.insert(at, other.substr(below(other.size()), below(24)));
                    break;
                default:
                    line = line.substr(0, at) + other.substr(below(other.size()));
            }
        }
        // Paths stay in this folder, and a line end would make two lines of it.
        if (line.find_first_of("/\\\n") != std::string::npos) continue;
        const auto text = exec.answer(line);
        if (!text) continue;
        rapidjson::Document answer;
        ASSERT_FALSE(answer.Parse(*text).HasParseError()) << line << "\n" << *text;
        ASSERT_TRUE(answer.IsObject()) << line;
    }
}

}  // namespace
}  // namespace tarnova
