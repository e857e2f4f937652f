// A script of commands, good and bad, with the status of each; and lines that nobody meant to send.

#include <rapidjson/document.h>

#include <random>

#include "cli/exec/exec_session.h"
#include "engine/session/session.h"
#include "program_fixture.h"
#include "shell/startup.h"

namespace tarnova {
namespace {

struct scriptRow {
    const char* line;
    int status;
};

// In this order: each row works on what those before it left.
constexpr scriptRow script[] = {
    {R"({"command":401})", 0},
    {R"({"command":4711})", 0},
    {R"({"command":545})", 0},
    {R"({"command":1262})", -6023},
    {R"({"command":560,"args":{"item0":1,"item1":2}})", -6023},
    {R"({"command":1400})", 0},
    {R"({"command":1401})", 0},
    {R"({"command":1256})", 0},
    {R"({"command":1262})", 0},
    {R"({"command":1263})", 0},
    {R"({"command":1408,"out":["item0"]})", 0},
    {R"({"command":537})", -1},
    {R"({"command":537,"out":["item0"]})", 0},
    {R"({"command":571})", 0},
    {R"({"command":577})", 0},
    {R"({"command":1306})", 0},
    {R"({"command":1274})", 0},
    {R"({"command":556})", 0},
    {R"({"command":569,"reply":{"count":3}})", 0},
    {R"({"command":546})", -1},
    {R"({"command":549})", -1},
    {R"({"command":243,"reply":{"driverId":11007,"driverName":"PDF","driverModule":"AqmP"}})", 0},
    {R"({"command":538,"args":{"item0":"PDF","item1":"1","item3":"x"},"out":["item3"]})", 0},
    {R"({"command":538,"args":{"item0":"PDF"}})", -1},
    {R"({"command":539})", 1},
    {R"({"command":541,"args":{"item0":0,"item1":1}})", 1},
    {R"({"command":542,"args":{"item0":7}})", 1},
    {R"({"command":543,"args":{"item0":-1}})", 1},
    {R"({"command":579,"args":{"item0":0}})", 1},
    {R"({"command":528})", 0},
    {R"({"command":2025})", 0},
    {R"({"command":1405,"args":{"item0":"missing.ddf"}})", 45},
    {R"({"command":1405,"args":{"item0":"bad.ddf"}})", 108},
    {R"({"command":1405})", -1},
    {R"({"command":1405,"args":{"item0":"customers.ddf"}})", 0},
    {R"({"command":1207,"args":{"item1":"Others"}})", -6002},
    {R"({"command":1207})", -6005},
    {R"({"command":1207,"args":{"item1":"Customers"}})", 0},
    {R"({"command":529})", -6018},
    {R"({"command":1209,"args":{"item0":"missing.csv"}})", -6018},
    {R"({"command":1209,"args":{"item0":"customers.csv"}})", 0},
    {R"({"command":503,"reply":{"text":"customers.csv"}})", 0},
    {R"({"command":529})", 0},
    {R"({"command":1292})", 0},
    {R"({"command":512,"reply":{"inValue":0}})", 0},
    {R"({"command":512,"reply":{"inValue":9}})", -6006},
    {R"({"command":584,"args":{"item0":"City"}})", 0},
    {R"({"command":584,"args":{"item0":"Town"}})", -6006},
    {R"({"command":593,"args":{"item1":"Others"}})", -6002},
    {R"({"command":593})", 0},
    {R"({"command":1237,"args":{"item0":9}})", -6048},
    {R"({"command":1237,"args":{"item1":"Street"}})", -6049},
    {R"({"command":1237,"args":{"item1":"city"}})", 0},
    {R"({"command":594,"args":{"item0":5}})", -6006},
    {R"({"command":594})", 0},
    {R"({"command":596})", -6050},
    {R"({"command":1404,"args":{"item0":"nowhere/out.ddf"}})", 49},
    {R"({"command":1404,"args":{"item0":"out.ddf"}})", 0},
    {R"({"command":525,"reply":{"text":"City"},"args":{"num0":1},"out":["item0"]})", 0},
    {R"({"command":525,"reply":{"text":"City"},"args":{"num0":9}})", -6042},
    {R"({"command":525,"reply":{"text":"City"},"args":{"text0":"Z9"}})", -6042},
    {R"({"command":525,"reply":{"text":"Town"},"args":{"num0":1}})", -6006},
    {R"({"command":1208,"args":{"item0":1,"item1":"City"}})", 0},
    {R"({"command":1208,"args":{"item0":9,"item1":"City"}})", -6042},
    {R"({"command":1208,"args":{"item0":1,"item1":"City","item2":"Sale"}})", -6029},
    {R"({"command":1258})", -6072},
    {R"({"command":1258,"args":{"item0":"Town"}})", -6073},
    {R"({"command":1258,"args":{"item0":"City","item2":"Town"}})", -6074},
    {R"({"command":1258,"args":{"item0":"City"},"out":["item1"]})", 0},
    {R"({"command":1234,"args":{"item0":[[["Town",""]]],"item1":1,"item2":1},"out":["item3"]})", -6029},
    {R"({"command":1234,"args":{"item0":[[["City",""]]],"item1":1,"item2":9},"out":["item3"]})", -6028},
    {R"({"command":1234,"args":{"item0":[[["City",""]]],"item1":1,"item2":2},"out":["item3"]})", 0},
    {R"({"command":506,"args":{"item0":5,"item1":2}})", -6026},
    {R"({"command":506,"args":{"item0":-1,"item1":2}})", -6026},
    {R"({"command":506,"args":{"item0":0,"item1":0}})", 0},
    {R"({"command":610,"args":{"item0":"3,2"}})", -6026},
    {R"({"command":610,"args":{"item0":"1,3","item3":9}})", -6081},
    {R"({"command":610,"args":{"item0":""}})", 0},
    {R"({"command":1205,"args":{"item5":11}})", -6039},
    {R"({"command":1205,"args":{"item5":11,"item6":3}})", -6038},
    {R"({"command":1205,"args":{"item4":5}})", -6081},
    {R"({"command":1205,"args":{"item0":1,"item1":2,"item5":0}})", 0},
    {R"({"command":1222,"args":{"item0":"missing"}})", -6025},
    {R"({"command":1221})", 0},
    {R"({"command":1255,"out":["item4"]})", 0},
    {R"({"command":1229,"args":{"item4":"text"}})", -6037},
    {R"({"command":1229,"args":{"item4":"txt"}})", 0},
    {R"({"command":1230,"args":{"item0":"none"}})", 0},
    {R"({"command":1290,"out":["item0"]})", 0},
    {R"({"command":1231,"args":{"item1":".x"}})", -6033},
    {R"({"command":1231,"args":{"item0":3}})", -6034},
    {R"({"command":1231,"args":{"item0":3,"item1":".longer"}})", -6035},
    {R"({"command":1231,"args":{"item0":9,"item1":".x"}})", -6036},
    {R"({"command":1231,"args":{"item3":"----"}})", -6031},
    {R"({"command":1231,"args":{"item4":251}})", -6032},
    {R"({"command":1291,"args":{"item0":9}})", -6036},
    {R"({"command":1261,"args":{"item11":1}})", 0},
    {R"({"command":1288,"out":["item11"]})", 0},
    {R"({"command":1223,"args":{"item0":"AqmD"}})", 0},
    {R"({"command":1223})", -1},
    {R"({"command":1252,"args":{"item0":"logo.eps"}})", 0},
    {R"({"command":1253})", 1},
    {R"({"command":1251,"args":{"item0":0},"out":["item1"]})", 0},
    {R"({"command":1251,"args":{"item0":1}})", -6070},
    {R"({"command":1235,"args":{"item0":0}})", -6052},
    {R"({"command":1277})", -6022},
    {R"({"command":1294,"out":["item0"]})", 0},
    {R"({"command":508})", -6005},
    {R"({"command":1212})", -6022},
    {R"({"command":1210})", -6022},
    {R"({"command":1206,"out":["item2"]})", 0},
    {R"({"command":548})", -6005},
    {R"({"command":1271})", -6005},
    {R"({"command":561,"args":{"item3":3}})", -6038},
    {R"({"command":561,"args":{"item0":3,"item1":1}})", -6026},
    {R"({"command":550})", -6005},
    {R"({"command":562})", -1},
    {R"({"command":1232,"args":{"item2":3}})", -6040},
    {R"({"command":1232,"args":{"item3":3}})", -6041},
    {R"({"command":1232,"args":{"item0":1,"item1":1,"item2":1,"item3":1}})", 0},
};
static_assert(std::size(script) > 100);

class ExecScript : public ProgramTest {
 protected:
    ExecScript() {
        write("customers.ddf",
              "\"Customers\" recordDefinition; TARNOVAJNT signature; 1:\"Code\", 2:\"City\" fieldName; \"Code\" "
              "keyField;\n"
              "1 dataType; 1 fileType; 2 osType;\n\"City\" extractionRecord; \"City\" field;\n");
        write("bad.ddf", "nothing");
        write("customers.csv", "Code,City\nA1,Graz\nB2,Linz\nC3,Wien\n");
        before = std::filesystem::current_path();
        std::filesystem::current_path(folder);
        sessionReset();
        EXPECT_EQ(shell.Startup(folder + "/app", folder + "/home"), 0);
    }
    ~ExecScript() override {
        shell.Shutdown();
        sessionReset();
        std::filesystem::current_path(before);
    }

    ZavoStartupShutdown shell;
    std::filesystem::path before;
};

TEST_F(ExecScript, AHundredCommandsGiveTheirCodes) {
    ExecSession exec;
    for (const auto& [line, status] : script) {
        rapidjson::Document answer;
        answer.Parse(exec.answer(line).value_or("{}"));
        ASSERT_TRUE(answer.HasMember("reply")) << line;
        EXPECT_EQ(answer["reply"]["status"].GetInt(), status) << line;
    }
    EXPECT_FALSE(exec.hadError());
}

// Bytes of the script are changed, dropped and swapped between lines. Whatever comes of it is answered with one object.
TEST_F(ExecScript, SpoiltLinesAreAnswered) {
    ExecSession exec;
    std::mt19937 random(20261123);
    const auto below = [&random](std::size_t limit) { return random() % limit; };
    for (int round = 0; round < 3000; ++round) {
        std::string line = script[below(std::size(script))].line;
        for (std::size_t changes = below(4); changes > 0 && !line.empty(); --changes) {
            const std::string other = script[below(std::size(script))].line;
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
        ASSERT_TRUE(answer.IsObject() && (answer.HasMember("error") || answer.HasMember("command"))) << line;
    }
}

}  // namespace
}  // namespace tarnova
