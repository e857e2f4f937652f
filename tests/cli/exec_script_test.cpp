// Scripts of commands and requests, good and bad, with what is answered to each; and lines that nobody meant to send.

#include <rapidjson/document.h>

#include <random>
#include <span>

#include "cli/exec/exec_session.h"
#include "engine/session/preferences_file.h"
#include "engine/session/session.h"
#include "program_fixture.h"
#include "shell/startup.h"

namespace tarnova {
namespace {

constexpr int host = 1000;  // the status of a request to the host, which has none

// In their order: each row works on what those before it left. `holds`: pieces of the answer, with | between them.
struct scriptRow {
    const char* line;
    int status;
    const char* holds = "";
};

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

// A linked text with a frame beside it, and two frames with the mark of a file name.
constexpr const char* cardLayout = R"({"tarnovaLayout": 1, "uid": 1, "pageSize": [200, 100], "pages": [{"items": [
    {"uid": 100, "bounds": [10, 10, 190, 90], "text": "To {{City}} and {{Code}}"},
    {"uid": 200, "bounds": [10, 10, 50, 50], "data": {"kelvane": "AAAADAAAAAEAAAAEYXFtRwAAAAM="}}]}, {}]})";
constexpr const char* twiceLayout = R"({"tarnovaLayout": 1, "pages": [{"items": [
    {"bounds": [10, 10, 190, 90], "text": "{{City}}"},
    {"bounds": [0, 0, 9, 9], "data": {"kelvane": "AAAADAAAAAEAAAAEYXFtRwAAAAA="}},
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
    void play(std::span<const scriptRow> rows) {
        ExecSession exec;
        for (const auto& [line, status, holds] : rows) {
            const std::string text = exec.answer(line).value_or("{}");
            rapidjson::Document answer;
            answer.Parse(text);
            EXPECT_FALSE(answer.HasMember("error")) << line << "\n" << text;
            if (status != host) {
                ASSERT_TRUE(answer.HasMember("reply") && answer["reply"].IsObject()) << line << "\n" << text;
                EXPECT_EQ(answer["reply"]["status"].GetInt(), status) << line << "\n" << text;
            }
            std::istringstream pieces(holds);
            for (std::string piece; std::getline(pieces, piece, '|');)
                EXPECT_NE(text.find(piece), std::string::npos) << line << "\n" << piece << " in\n" << text;
        }
        EXPECT_FALSE(exec.hadError());
    }

    ZavoStartupShutdown shell;
    std::filesystem::path before;
};

constexpr scriptRow engineRows[] = {
    {R"({"command":401})", 0, R"("versionMajor":5,"versionMinor":12)"},
    {R"({"command":4711})", 0, R"("result":0)"},
    {R"({"command":545})", 0, R"("isSubset":0)"},
    {R"({"command":1262})", -6023, R"("result":0)"},
    {R"({"command":560,"args":{"item0":1,"item1":2}})", -6023, R"("result":-1)"},
    {R"({"command":1400})", 0},
    {R"({"command":1401})", 0},
    {R"({"command":545})", 0, R"("isSubset":1)"},
    {R"({"command":1256,"out":["item1"]})", 0, R"("item1":0)"},
    {R"({"command":560,"args":{"item0":1,"item1":2},"module":"Tallyra"})", 0},
    {R"({"command":1288})", 0},
    {R"({"command":1256,"out":["item1"]})", 0, R"("item1":1)"},
    {R"({"command":1263})", 0},
    {R"({"command":1408,"out":["item0"]})", 0, R"("item0":"18.8.0.2")"},
    {R"({"command":537})", -1},
    {R"({"command":537,"out":["item0"]})", 0, R"(/home/Tarnova/Ostreon Tag Display/TempFiles")"},
    {R"({"command":571})", 0},
    {R"({"command":577})", 0},
    {R"({"command":1306})", 0},
    {R"({"command":1274})", 0},
    {R"({"host":"session","fields":["panelsStale","languageIsEnglish","monthNames"]})", host,
     R"("panelsStale":1,"languageIsEnglish":1,"monthNames":["January",)"},
    {R"({"command":549})", -1},
    {R"({"command":562})", -1},
    {R"({"command":1263})", 0},
    {R"({"command":243,"reply":{"driverId":11007,"driverName":"PDF","driverModule":"AqmP"}})", 0},
    {R"({"command":538,"args":{"item0":"PDF","item1":"1","item2":"50","item3":"mailing"},"out":["item3"]})", 0,
     R"("mailing_1-50.pdf")"},
    {R"({"command":538,"args":{"item0":"pdf","item1":"1","item3":"mailing"},"out":["item3"]})", 0,
     R"("mailing_1.pdf")"},
    {R"({"command":538,"args":{"item0":"VIPP","item1":"1","item2":"2","item3":"x"},"out":["item3"]})", 0, R"("x_1-2")"},
    {R"({"command":538,"args":{"item0":"thing","item1":"1","item2":"2","item3":"x"},"out":["item3"]})", 0,
     R"("x_1-2")"},
    {R"({"host":"prefs","set":{"fileAffixPosition":1}})", host},
    {R"({"command":538,"args":{"item0":"PostScript","item2":"50","item3":"x"},"out":["item3"]})", 0, R"("50_x.ps")"},
    {R"({"host":"prefs","set":{"fileAffixPosition":3}})", host},
    {R"({"command":538,"args":{"item0":"PDF","item1":"1","item3":"x"},"out":["item3"]})", 0, R"("x.pdf")"},
    {R"({"command":538,"args":{"item0":"PDF"}})", -1},
    {R"({"command":539})", 1},
    {R"({"command":541,"args":{"item0":0,"item1":1}})", 1},
    {R"({"command":542,"args":{"item0":7}})", 1},
    {R"({"command":543,"args":{"item0":-1}})", 1},
    {R"({"command":579,"args":{"item0":0}})", 1},
    {R"({"command":1214})", -1},
    {R"({"command":1204,"args":{"item0":"lines.log"}})", 0},
    {R"({"command":1214,"args":{"item0":"first line","item1":5}})", 0},
    {R"({"command":1214,"args":{"item0":"first line","item1":5000}})", 0},
    {R"({"command":1223,"args":{"item0":"AqmD"}})", 0},
    {R"({"command":1223})", -1},
    {R"({"command":1252,"args":{"item0":"logo.eps"}})", 0},
    {R"({"command":1253,"out":["item3"]})", 1, R"(["AqmD"])"},
    {R"({"command":1251,"args":{"item0":0},"out":["item1"]})", 0, R"("logo.eps")"},
    {R"({"command":1251,"args":{"item0":1}})", -6070},
    {R"({"command":1235,"args":{"item0":0}})", -6052},
    {R"({"command":1277})", -6022},
    {R"({"command":569,"reply":{"count":3}})", 0},
    {R"({"command":609})", 0},
};

TEST_F(ExecScript, TheEngineItself) {
    play(engineRows);
    EXPECT_EQ(read("lines.log"), "first\r\nfirst line\r\n") << "the length is held to the text";
    constexpr scriptRow next[] = {
        {R"({"host":"prefs","get":["19646:u8","19647:u8","19648:u8"]})", host,
         R"("19646:u8":0,"19647:u8":1,"19648:u8":1)"},
        {R"({"command":1401})", 0},
        {R"({"command":1256,"out":["item1"]})", 0, R"("item1":1)"},
        {R"({"command":506})", -6023, R"("result":-1)"},
    };
    session().prefs.lastEngineMode = modePrice;
    savePreferences();
    restart();
    play(next);
}

constexpr scriptRow definitionRows[] = {
    {R"({"command":528})", 0, R"("auxText":"Record Definitions")"},
    {R"({"command":2025})", 0},
    {R"({"command":1405,"args":{"item0":"missing.ddf"}})", 45, R"("number":45)"},
    {R"({"command":1405,"args":{"item0":"bad.ddf"}})", 108},
    {R"({"command":1405})", -1},
    {R"({"command":1405,"args":{"item0":"customers.ddf"}})", 0},
    {R"({"command":1400})", 0},
    {R"({"command":1207,"args":{"item1":"Others"}})", -6002},
    {R"({"command":1207})", -6005},
    {R"({"command":1207,"args":{"item1":"Customers"}})", 0},
    {R"({"command":1405,"args":{"item0":"bad.ddf"}})", 108},
    {R"({"command":528})", 0, R"("text":"Customers")"},  // a failed import leaves what was there
    {R"({"command":512,"reply":{"inValue":0}})", 0, R"("outValue":2,"outFlag":1,"outWord":2,"text":"City")"},
    {R"({"command":512,"reply":{"inValue":2}})", 0, R"("outValue":-1)"},  // its field isn't in the list
    {R"({"command":512,"reply":{"inValue":3}})", -6006},
    {R"({"command":512,"reply":{"inValue":4294967295}})", -6006},
    {R"({"command":584,"args":{"item0":"Code"},"out":["item1"]})", 0, R"("item1":1)"},
    {R"({"command":584,"args":{"item0":"Town"},"out":["item1"]})", -6006, R"("item1":0)"},
    {R"({"command":593,"args":{"item1":"Others"}})", -6002},
    {R"({"command":593,"args":{"item1":"Customers"},"out":["item0","item2","item3","item7"]})", 0,
     R"("item0":"Customers","item2":0,"item3":"Code","item7":"\"")"},
    {R"({"command":595,"args":{"item0":2},"out":["item1"]})", 0, R"("item1":"City")"},
    {R"({"command":1237,"args":{"item0":3}})", -6048},
    {R"({"command":1237,"args":{"item1":"Street"}})", -6049},
    {R"({"command":1237,"args":{"item1":"code"},"out":["item0","item1"]})", 0, R"("item0":1,"item1":"Code")"},
    {R"({"command":594,"args":{"item0":3}})", -6006},
    {R"({"command":594,"out":["item4"]})", 0, R"("item4":3)"},
    {R"({"command":594,"args":{"item2":"city"},"out":["item5","item9","item11","item13"]})", 0,
     R"("item5":"City","item9":2,"item11":"of \"A\"","item13":"Dear ")"},
    {R"({"command":596})", -6050},
    {R"({"command":1404,"args":{"item0":"nowhere/out.ddf"}})", 49},
    {R"({"command":1404,"args":{"item0":"out.ddf"}})", 0},
};

TEST_F(ExecScript, DefinitionsAndLinks) {
    play(definitionRows);
    EXPECT_NE(read("out.ddf").find("\"Customers\" recordDefinition;"), std::string::npos);
    restart();
    constexpr scriptRow next[] = {
        {R"({"command":593,"args":{"item1":"Customers"},"out":["item3"]})", 0, R"("item3":"Code")"}};
    play(next);  // the next session has them
}

constexpr scriptRow dataRows[] = {
    {R"({"command":1400})", 0},
    {R"({"command":1405,"args":{"item0":"customers.ddf"}})", 0},
    {R"({"command":1207,"args":{"item1":"Customers"}})", 0},
    {R"({"command":529})", -6018},  // no data file is chosen
    {R"({"command":1258,"args":{"item0":"City"}})", -6018},
    {R"({"command":1209,"args":{"item0":"missing.csv"},"out":["item1"]})", -6018, R"("item1":0)"},
    {R"({"command":1209,"args":{"item0":"wide.csv"}})", -6017},
    {R"({"command":503,"reply":{"text":"customers.csv"}})", 0, R"("count":3,"hasHeader":1)"},
    {R"({"command":529})", 0, R"("count":3)"},
    {R"({"command":1292})", 0, R"("text":"custome")"},
    {R"({"command":1401})", 0},
    {R"({"command":559,"args":{"item0":"customers.csv"},"out":["item1"]})", 0, R"("item1":3)"},
    {R"({"host":"session","fields":["unattended"]})", host, R"("unattended":1)"},
    {R"({"command":1209,"out":["item1"]})", 0, R"("item1":3)"},  // the file that the definition has
    {R"({"host":"session","fields":["unattended"]})", host, R"("unattended":0)"},

    {R"({"command":525,"reply":{"text":"City"},"args":{"num0":1},"out":["item0"]})", 0, R"("num0":4|"item0":"Graz")"},
    {R"({"command":525,"reply":{"text":"City"},"args":{"num0":3},"out":["item0"]})", 0, R"("num0":0|"item0":"")"},
    {R"({"command":525,"reply":{"text":"City"},"args":{"num0":4},"out":["item0"]})", -6042, R"("item0":null)"},
    {R"({"command":525,"reply":{"text":"City"},"args":{"num0":4294967295}})", -6042},
    {R"({"command":525,"reply":{"text":"City"},"args":{"text0":"B2"},"out":["item0"]})", 0,
     "\"num0\":8|\"num2\":2|\"item0\":\"M\u00fcnchen\""},
    {R"({"command":525,"reply":{"text":"City"},"args":{"text0":"Z9"}})", -6042},
    {R"({"command":525,"reply":{"text":"City"},"args":{"text0":"Code"}})", -6042},  // the header has no key
    {R"({"command":525,"reply":{"text":"Town"},"args":{"num0":1}})", -6006},
    {R"({"command":506,"args":{"item0":1,"item1":1}})", 0},
    {R"({"command":525,"reply":{"text":"City"},"args":{"num0":2},"out":["item0"]})", 0,
     R"("item0":"")"},  // out of range
    {R"({"command":506,"args":{"item0":0,"item1":0,"item2":0}})", 0},
    {R"({"command":525,"reply":{"text":"Code"},"args":{"num0":1},"out":["item0"]})", 0,
     R"("item0":"Code")"},  // no header
    {R"({"command":506,"args":{"item0":0,"item1":0,"item2":1}})", 0},
    {R"({"command":1208,"args":{"item0":1,"item1":"City"},"out":["item4","item5"]})", 0, R"("item4":"Graz","item5":4)"},
    {R"({"command":1208,"args":{"item0":1,"item1":"Nowhere"},"out":["item4"]})", 0, R"("item4":"")"},
    {R"({"command":1208,"args":{"item0":0,"item1":"City"}})", -6042},
    {R"({"command":1208,"args":{"item0":4,"item1":"City"}})", -6042},
    {R"({"command":1208,"args":{"item0":1,"item1":"Town"}})", -6006},
    {R"({"command":1208,"args":{"item0":1,"item1":"City","item2":"Sale"}})", -6029},
    {R"({"command":1242,"args":{"item0":"B2","item1":"Code"},"out":["item4"]})", 0, R"("item4":"B2")"},
    {R"({"command":1258})", -6072},
    {R"({"command":1258,"args":{"item0":"Town"}})", -6073},
    {R"({"command":1258,"args":{"item0":"City","item2":"Town"}})", -6074},
    {R"({"command":1258,"args":{"item0":"Code","item2":"City"},"out":["item1","item3"]})", 0,
     "[\"A1\",\"B2\",\"C3\"]|[\"Graz\",\"M\u00fcnchen\",\"\"]"},
    {R"({"command":1234,"args":{"item0":[[["Town",""]]],"item1":1,"item2":1},"out":["item3"]})", -6029},
    {R"({"command":1234,"args":{"item0":[[["City",""]]],"item1":1,"item2":9},"out":["item3"]})", -6028},
    {R"({"command":1234,"args":{"item0":[[["Code",""],["City",""]],[["City",""]]],"item1":2,"item2":3},"out":["item3"]})",
     0, "[\"B2M\u00fcnchen\",\"M\u00fcnchen\",\"C3\",\"\"]"},
    {R"({"command":1207,"args":{"item1":"Foreign"}})", 0},
    {R"({"command":525,"reply":{"text":"City"},"args":{"num0":1}})", -6015},
    {R"({"command":1207,"args":{"item1":"Old"}})", 0},
    {R"({"command":1209,"args":{"item0":"old.csv"}})", 0},
    {R"({"command":525,"reply":{"text":"City"},"args":{"text0":"A1"},"out":["item0"]})", 0, "\"item0\":\"K\u00f6ln\""},
    {"{\"command\":525,\"reply\":{\"text\":\"City\"},\"args\":{\"text0\":\"B\u00fc\"},\"out\":[\"item0\"]}", 0,
     R"("item0":"Linz")"},

    // Odd files, accepted while nobody is asked and refused by an answer.
    {R"({"command":1207,"args":{"item1":"Customers"}})", 0},
    {R"({"command":1209,"args":{"item0":"utf16.csv"}})", -6053},
    {R"({"command":1209,"args":{"item0":"old.csv"}})", -6055},
    {R"({"command":1213,"args":{"item0":1}})", 0},
    {R"({"host":"answers","queue":[1]})", host},
    {R"({"command":1209,"args":{"item0":"utf16.csv"}})", -6066, R"("answer":1)"},
    {R"({"host":"answers","queue":[1]})", host},
    {R"({"command":1209,"args":{"item0":"old.csv"}})", -6068},
    {R"({"command":1209,"args":{"item0":"no"}})", -6018, R"("number":31)"},
};

TEST_F(ExecScript, Data) {
    play(dataRows);
}

constexpr scriptRow pictureRows[] = {
    {R"({"command":1400})", 0},
    {R"({"command":1405,"args":{"item0":"customers.ddf"}})", 0},
    {R"({"command":1207,"args":{"item1":"Customers"}})", 0},
    {R"({"command":1209,"args":{"item0":"customers.csv"}})", 0},
    {R"({"host":"prefs","set":{"searchDocumentFolder":0,"searchDataFolder":0,"searchSubfolders":0}})", host},
    {R"({"command":525,"reply":{"text":"Code"},"args":{"num0":1,"flag0":1},"out":["item0","item1"]})", 0,
     R"("num1":0|"item0":"A1","item1":null)"},
    {R"({"command":1222,"args":{"item0":"pictures","item4":1}})", 0},
    {R"({"command":525,"reply":{"text":"Code"},"args":{"num0":1,"flag0":1},"out":["item1"]})", 0, R"("item1":null)"},
    {R"({"command":508})", -6005},  // the start of a run forgets what wasn't found
    {R"({"command":525,"reply":{"text":"Code"},"args":{"num0":1,"flag0":1},"out":["item1"]})", 0,
     R"("num1":16|"item1":"pictures/deep/A1")"},
    {R"({"command":1208,"args":{"item0":1,"item1":"Code","item3":1},"out":["item6"]})", 0,
     R"("item6":"pictures/deep/A1")"},
    {R"({"command":1208,"args":{"item0":2,"item1":"Code","item3":1},"out":["item6"]})", 0, R"("item6":"")"},
    {R"({"command":1208,"args":{"item0":1,"item1":"City","item3":1},"out":["item6"]})", 0, R"("item6":"")"},  // a text
};

TEST_F(ExecScript, PicturesThatValuesName) {
    play(pictureRows);
}

constexpr scriptRow itemRows[] = {
    {R"({"command":548})", -6005},
    {R"({"command":1271})", -6005},
    {R"({"command":588})", -6005},
    {R"({"command":580,"out":["item0"]})", -6005},
    {R"({"command":1400})", 0},
    {R"({"command":1405,"args":{"item0":"customers.ddf"}})", 0},
    {R"({"command":1207,"args":{"item1":"Customers"}})", 0},
    {R"({"host":"open","path":"card.tvd"})", host, R"("document":1)"},
    {R"({"command":548,"out":["item1"]})", 0, R"("item1":1)"},
    // Text links. The story's UID is the frame's last relative, as the document gave it.
    {R"({"command":597,"args":{"item0":{"document":1,"uid":999999}}})", -6005},
    // Frames: names, marks, links, the selection.
    {R"({"command":1218,"args":{"item0":{"document":1,"uid":200},"item1":"Stamp"}})", 0},
    {R"({"command":1219,"args":{"item0":{"document":1,"uid":200}},"out":["item1"]})", 0, R"("item1":"Stamp")"},
    {R"({"command":1217,"args":{"item1":"stamp"},"out":["item3"]})", 0, R"("item3":{"document":1,"uid":200})"},
    {R"({"command":1217,"args":{"item1":"stamp","item2":1},"out":["item3"]})", 0, R"("uid":200)"},
    {R"({"command":1217,"args":{"item1":"stamp","item2":2},"out":["item3"]})", 1, R"("item3":null)"},
    {R"({"command":1217,"args":{"item1":"stamp","item2":3}})", 1},
    {R"({"command":1218,"args":{"item0":{"document":1,"uid":200},"item1":""}})", 0},
    {R"({"command":1217,"args":{"item1":"stamp"}})", 1},
    {R"({"command":1406,"args":{"item0":{"document":1,"uid":200}},"out":["item1","item2"]})", 0,
     R"("item1":1,"item2":3)"},
    {R"({"command":1406,"args":{"item0":{"document":1,"uid":100}},"out":["item1"]})", 0, R"("item1":0)"},
    {R"({"command":588,"out":["item1"]})", 0, R"({"document":1,"uids":[200]})"},
    {R"({"command":589,"args":{"item0":{"document":1,"uids":[100,200]},"item1":3,"item2":1,"item3":1},"out":["item4"]})",
     0, R"("uids":[200])"},
    {R"({"command":589,"args":{"item0":{"document":1,"uids":[200]},"item1":3,"item2":2,"item3":2},"out":["item4"]})", 0,
     R"("uids":[])"},
    {R"({"command":589,"args":{"item0":{"document":1,"uids":[200]},"item1":0},"out":["item4"]})", 0, R"("uids":[])"},
    {R"({"command":587,"args":{"item0":{"document":1,"uid":200}},"out":["item1"]})", 0, R"("item1":0)"},
    {R"({"command":598,"args":{"item0":{"document":1,"uid":100}}})", 1},
    {R"({"command":1278,"args":{"item0":{"document":1,"uid":100}},"out":["item1"]})", 0, R"("item1":1)"},
    {R"({"command":582,"args":{"item0":{"document":1,"uids":[100,200]},"item1":"City","item2":"Big","item3":"R","item5":7}})",
     0},
    {R"({"command":598,"args":{"item0":{"document":1,"uid":100},"item7":1},"out":["item1","item2","item3","item4","item8"]})",
     0, R"("item1":"7","item2":"City","item3":"Big","item4":"R","item8":"To )"},
    {R"({"command":1278,"args":{"item0":{"document":1,"uid":200}},"out":["item1"]})", 0, R"("item1":0)"},
    {R"({"host":"undo","document":1})", host, R"("step":"Assign Variable Links")"},
    {R"({"command":598,"args":{"item0":{"document":1,"uid":200}}})", 1},
    {R"({"host":"redo","document":1})", host},
    {R"({"command":583,"args":{"item0":{"document":1,"uids":[100,200]}}})", 0},
    {R"({"command":598,"args":{"item0":{"document":1,"uid":200}}})", 1},
    {R"({"command":582,"args":{"item0":{"document":1,"uids":[999999]}}})", -6005},
    {R"({"command":580,"out":["item0"]})", 0, R"("uids":[])"},
    {R"({"command":581,"args":{"item0":{"document":1,"uids":[100]}},"out":["item1"]})", 0, R"("item1":1)"},
    {R"({"command":581,"args":{"item0":{"document":1,"uids":[200,100]},"flag0":1},"out":["item1"]})", 0},
    {R"({"command":580,"out":["item0"]})", 0, R"("uids":[100,200])"},
    {R"({"command":581,"args":{"item0":{"document":1,"uids":[999999]}},"out":["item1"]})", -1, R"("item1":0)"},
    {R"({"host":"select","document":1,"frames":[200]})", host},
    {R"({"command":580,"out":["item0"]})", 0, R"("uids":[200])"},
    {R"({"host":"select","document":1})", host},
    {R"({"command":580,"out":["item0"]})", 0, R"("uids":[])"},
    {R"({"command":1279,"args":{"item0":{"document":1,"uid":200},"item1":0}})", -1},
    {R"({"command":1279,"args":{"item0":{"document":1,"uid":200},"item1":5}})", 0},
    {R"({"host":"describe","document":1,"what":"itemData"})", host, R"("type":"aqmM")"},
    {R"({"host":"undo","document":1})", host, R"("step":"Set PDF Page Number")"},
    {R"({"command":620,"args":{"item0":{"document":1,"uid":200}}})", -6005},
    {R"({"host":"describe","document":1,"what":"tables"})", host, R"({"tables":[]})"},
    // Keys.
    {R"({"command":568,"args":{"item1":", ","item2":1},"out":["item0"]})", 0, R"("item0":"1, 1")"},
    {R"({"command":568,"args":{"item1":", "},"out":["item0"]})", 0, R"("item0":"1")"},
};

TEST_F(ExecScript, LinksNamesMarksAndTheSelection) {
    play(itemRows);
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

constexpr scriptRow optionRows[] = {
    {R"({"command":1400})", 0},
    {R"({"command":506,"args":{"item0":5,"item1":2}})", -6026},
    {R"({"command":506,"args":{"item0":-1,"item1":2}})", -6026},
    {R"({"command":506,"args":{"item0":0,"item1":-3}})", -6026},
    {R"({"command":506,"args":{"item0":0,"item1":0}})", 0},
    {R"({"command":506,"args":{"item0":1,"item1":50,"item2":0}})", 0},
    {R"({"host":"session","fields":["rangeFirst","rangeLast","skipFirst"]})", host,
     R"("rangeFirst":1,"rangeLast":50,"skipFirst":0)"},
    {R"({"host":"prefs","get":["rangeTo","hasHeaderRecord"]})", host, R"("rangeTo":50,"hasHeaderRecord":0)"},

    {R"({"command":610,"args":{"item0":"2-3,9","item2":4,"item3":4}})", 0},
    {R"({"host":"session","fields":["recordList","rangeLast","stepBy","recordPassMode"]})", host,
     R"("recordList":[1,2,8],"rangeLast":3,"stepBy":4,"recordPassMode":1)"},
    {R"({"command":529})", 0, R"("count":3|"isSubset":1)"},
    {R"({"command":1294,"out":["item0"]})", 0, R"("item0":"2,3,9")"},
    {R"({"command":610,"args":{"item0":"3,2"}})", -6026, R"("alerts":[{)"},
    {R"({"command":610,"args":{"item3":5}})", -6081},
    {R"({"command":529})", 0, R"("count":3)"},  // the old list stays
    {R"({"command":610,"args":{"item0":""}})", 0},
    {R"({"command":1294,"out":["item0"]})", 0, R"("item0":null)"},

    // The tests of 1205 in their order: kinds, copy-fit, range, layout.
    {R"({"command":1205,"args":{"item0":1,"item1":50,"item3":2,"item4":1,"item5":5,"item6":1}})", 0},
    {R"({"command":1205,"args":{"item0":1,"item1":60,"item5":11}})", -6039},
    {R"({"command":1205,"args":{"item0":1,"item1":60,"item5":-3}})", -6039},
    {R"({"command":1205,"args":{"item0":1,"item1":60,"item5":11,"item6":3}})", -6038},
    {R"({"command":1205,"args":{"item0":1,"item1":60,"item6":-1}})", -6038},
    {R"({"command":1205,"args":{"item0":9,"item1":2}})", -6026},
    {R"({"host":"prefs","get":["rangeTo","copyfitLevel","copyfitEnabled","recordPassMode"]})", host,
     R"("rangeTo":50,"copyfitLevel":5,"copyfitEnabled":1,"recordPassMode":3)"},
    {R"({"command":1205,"args":{"item0":1,"item1":70,"item4":5}})", -6081},
    {R"({"host":"session","fields":["rangeLast"]})", host, R"("rangeLast":70)"},
    {R"({"command":1205,"args":{"item4":2,"item5":-2}})", 0},
    {R"({"host":"prefs","get":["copyfitLevel","recordPassMode"]})", host, R"("copyfitLevel":5,"recordPassMode":5)"},
    {R"({"command":1205,"args":{"item4":3,"item5":-1}})", 0},
    {R"({"host":"prefs","get":["copyfitEnabled","recordPassMode"]})", host, R"("copyfitEnabled":0,"recordPassMode":4)"},
    {R"({"command":1205,"args":{"item3":0,"item5":0},"out":["item5"]})", 0, R"("item5":12)"},
    {R"({"host":"prefs","get":["copyfitEnabled","rangeStep"]})", host, R"("copyfitEnabled":1,"rangeStep":2)"},
    {R"({"command":1205,"args":{"item7":0,"item8":0,"item9":0,"item10":0,"item11":0}})", 0},
    {R"({"host":"prefs","get":["8626:u8","8780:u8","19065:u8","19066:u8","19067:u8"]})", host,
     R"({"8626:u8":0,"8780:u8":0,"19065:u8":0,"19066:u8":0,"19067:u8":0})"},

    {R"({"command":1401})", 0},
    {R"({"command":561,"args":{"item0":2,"item1":5,"item2":11,"item3":3}})", -6038},
    {R"({"command":561,"args":{"item0":2,"item1":5,"item2":11,"item3":1}})", -6039},
    {R"({"command":561,"args":{"item0":3,"item1":1}})", -6026},
    {R"({"command":561,"args":{"item0":2,"item1":5,"item2":3,"item3":1}})", 0},
    {R"({"command":560,"args":{"item0":5,"item1":2}})", -6026},
    {R"({"host":"prefs","get":["linkKinds","copyfitLevel"]})", host, R"("linkKinds":1,"copyfitLevel":3)"},
    {R"({"command":550})", -6005},

    {R"({"command":1229,"args":{"item0":0,"item1":0,"item2":1,"item3":1,"item4":"csv","item5":0}})", 0},
    {R"({"host":"prefs","get":["flagTextErrors","flagPictureErrors","8786:u16"]})", host,
     R"("flagTextErrors":2,"flagPictureErrors":1,"8786:u16":1)"},
    {R"({"command":1229,"args":{"item0":1,"item4":"json","item5":1}})", -6037},  // fields in front stay set
    {R"({"command":1289,"out":["item0","item1","item2","item3","item4","item5"]})", 0,
     R"({"item0":1,"item1":0,"item2":1,"item3":1,"item4":"csv","item5":0})"},
    {R"({"command":1230,"args":{"item0":"nix","item1":"no picture","item2":"no article"}})", 0},
    {R"({"host":"prefs","get":["41:u8","1583:u8","812:u8","2354:u8"]})", host,
     R"({"41:u8":3,"1583:u8":3,"812:u8":10,"2354:u8":10})"},
    {R"({"command":1290,"out":["item0","item1","item2"]})", 0,
     R"({"item0":"nix","item1":"no picture","item2":"no article"})"},

    {R"({"command":1231,"args":{"item0":3,"item1":".xpdf","item2":0,"item3":"--","item4":250,"item8":0,"item9":0}})",
     0},
    {R"({"command":1231,"args":{"item1":".x","item8":1}})", -6033},
    {R"({"command":1231,"args":{"item0":3,"item8":1}})", -6034},
    {R"({"command":1231,"args":{"item0":3,"item1":".longer","item8":1}})", -6035},
    {R"({"command":1231,"args":{"item0":9,"item1":".x","item8":1}})", -6036},
    {R"({"command":1231,"args":{"item3":"----","item8":1}})", -6031},
    {R"({"command":1231,"args":{"item4":251,"item8":1}})", -6032},
    {R"({"command":1231,"args":{"item4":0}})", 0},
    {R"({"command":1291,"args":{"item0":9}})", -6036},
    {R"({"command":1291,"args":{"item0":3},"out":["item1","item2","item3","item4","item8","item9"]})", 0,
     R"({"item1":".xpdf","item2":0,"item3":"--","item4":0,"item8":0,"item9":0})"},
    {R"({"command":1261,"args":{"item0":0,"item1":0,"item2":7,"item3":7,"item11":0}})", 0},
    {R"({"host":"prefs","get":["19069:u8","3129:u8","3139:u8","8626:u8","19632:u8"]})", host,
     R"({"19069:u8":0,"3129:u8":0,"3139:u8":1,"8626:u8":1,"19632:u8":0})"},
    {R"({"command":1261,"args":{"item4":0,"item5":0,"item6":0,"item7":9,"item8":0,"item9":9,"item10":0}})", 0},
    {R"({"host":"prefs","get":["8625:u8","19040:u8","8617:u8","19039:u8","22124:u8","19068:u8","19610:u8"]})", host,
     R"({"8625:u8":0,"19040:u8":0,"8617:u8":0,"19039:u8":1,"22124:u8":0,"19068:u8":1,"19610:u8":0})"},
    {R"({"command":1288,"out":["item2","item5","item7","item9","item11"]})", 0,
     R"({"item2":1,"item5":0,"item7":1,"item9":1,"item11":0})"},

    {R"({"command":1222,"args":{"item0":"missing","item1":1}})", -6025},
    {R"({"command":1222,"args":{"item0":"customers.csv"}})", -6025},
    {R"({"command":1222,"args":{"item0":"pictures","item1":1,"item2":0,"item3":0,"item4":0}})", 0},
    {R"({"command":1222,"args":{"item0":"PICTURES"}})", -6025},
    {R"({"command":1222,"args":{"item0":"pictures"}})", 0},
    {R"({"command":1255,"out":["item0","item1","item2","item3","item4"]})", 0,
     R"({"item0":1,"item1":0,"item2":0,"item3":0,"item4":["pictures"]})"},

    {R"({"command":613,"args":{"item1":3},"out":["item4"]})", 0, R"("item4":3)"},
    {R"({"command":613,"args":{"item1":3,"item2":"Copies"},"out":["item4","item5"]})", 0,
     R"("item4":0,"item5":"Copies")"},
    {R"({"host":"prefs","get":["duplicationKind"]})", host, R"("duplicationKind":2)"},
    {R"({"command":613,"args":{"item0":1}})", -1},
    {R"({"command":611,"args":{"item2":2,"item3":0,"item4":1},"out":["item8","item9","item10"]})", 0,
     R"({"item8":2,"item9":1,"item10":1})"},
};

TEST_F(ExecScript, Options) {
    play(optionRows);
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
    constexpr scriptRow clear[] = {{R"({"command":1221})", 0},
                                   {R"({"command":1255,"out":["item0","item4"]})", 0, R"({"item0":0,"item4":[]})"}};
    play(clear);
}

TEST_F(ExecScript, ResetOfTheEnvironment) {
    constexpr scriptRow useRows[] = {
        {R"({"command":1400})", 0},
        {R"({"command":1405,"args":{"item0":"customers.ddf"}})", 0},
        {R"({"command":1207,"args":{"item1":"Customers"}})", 0},
        {R"({"command":1209,"args":{"item0":"customers.csv"}})", 0},
        {R"({"command":537,"out":["item0"]})", 0},
        {R"({"command":556})", 0},
    };
    play(useRows);
    const std::string home = "home/Tarnova/Ostreon Tag Display/";
    write(home + "TempFiles/left", "x");
    const auto isEmpty = [&](const char* name) { return std::filesystem::is_empty(home + name); };
    constexpr scriptRow refused[] = {{R"({"command":1232,"args":{"item1":1,"item2":3}})", -6040}};
    play(refused);
    EXPECT_TRUE(isEmpty("TempFiles") && !isEmpty("Index Files"));
    constexpr scriptRow rows[] = {
        {R"({"command":1232,"args":{"item0":1,"item3":3}})", -6041},
        {R"({"command":1232,"args":{"item2":1}})", 0},
        {R"({"command":593,"args":{"item1":"Customers"}})", -6002},
        {R"({"command":1232,"args":{"item2":2}})", 0},
        {R"({"host":"prefs","set":{"rangeStep":9}})", host},
        {R"({"command":1232,"args":{"item3":1}})", 0},
        {R"({"host":"prefs","get":["rangeStep","19641:u8"]})", host,
         R"({"rangeStep":1,"19641:u8":1})"},  // announced stays
        {R"({"command":1232,"args":{"item3":2}})", 0},
    };
    play(rows);
    EXPECT_TRUE(isEmpty("Index Files"));
    EXPECT_TRUE(exists(home + "Record Definitions"));
    restart();
    EXPECT_EQ(appPrefs().modulePresence[0], 0) << "the next start began anew";
}

constexpr scriptRow runRows[] = {
    {R"({"command":1400})", 0},
    {R"({"command":508})", -6005},
    {R"({"command":1212})", -6022},
    {R"({"command":1210})", -6022},
    {R"({"command":1405,"args":{"item0":"customers.ddf"}})", 0},
    {R"({"command":1207,"args":{"item1":"Customers"}})", 0},
    {R"({"command":1209,"args":{"item0":"customers.csv"}})", 0},
    {R"({"host":"new","pages":2})", host},
    {R"({"command":508})", -6024},
    {R"({"command":1212})", -6022},
    {R"({"host":"open","path":"twice.tvd"})", host},
    {R"({"command":508})", -6019, R"("number":334)"},
    {R"({"host":"prefs","set":{"controlFramesEnabled":0}})", host},
    {R"({"command":508})", 0},
    {R"({"host":"open","path":"card.tvd"})", host},
    {R"({"command":508,"out":["item5","item6"]})", 0, R"("item5":2,"item6":1)"},
    {R"({"command":1210})", -6021},
    {R"({"command":1212})", -6022},
    {R"({"host":"session","fields":["armedState"]})", host, R"("armedState":0)"},  // a refused run disarms
    {R"({"command":508})", 0},
    {R"({"command":506,"args":{"item0":9,"item1":9}})", 0},
    {R"({"command":1212})", -6020},
    {R"({"command":1207,"args":{"item1":"Bare"}})", 0},
    {R"({"command":1209,"args":{"item0":"customers.csv"}})", 0},
    {R"({"command":508})", 0},
    {R"({"command":1212})", -6003},
    {R"({"command":1206,"out":["item2"]})", 0, R"("item2":0)"},
};

TEST_F(ExecScript, ArmingAndRunning) {
    play(runRows);
}

static_assert(std::size(engineRows) + std::size(definitionRows) + std::size(dataRows) + std::size(optionRows) > 100);

// Bytes of the scripts are changed, dropped and swapped between lines. Whatever comes of it is answered with one
// object.
TEST_F(ExecScript, SpoiltLinesAreAnswered) {
    ExecSession exec;
    std::mt19937 random(20261123);
    const auto below = [&random](std::size_t limit) { return random() % limit; };
    const auto anyLine = [&]() -> std::string {
        const std::span<const scriptRow> scripts[] = {engineRows, definitionRows, dataRows,
                                                      itemRows,   optionRows,     runRows};
        const std::span<const scriptRow> rows = scripts[below(std::size(scripts))];
        return rows[below(rows.size())].line;
    };
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
