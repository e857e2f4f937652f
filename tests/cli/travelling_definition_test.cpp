#include <rapidjson/document.h>
#include <rapidjson/pointer.h>

#include "tests/cli/program_fixture.h"

namespace tarnova {
namespace {

/// A layout that is saved in one home and opened in another, as on two machines.
class TravellingDefinition : public ProgramTest {
 protected:
    TravellingDefinition() {
        write("customers.ddf", definition("Customers", "Code"));
        write("others.ddf", definition("Customers", "Number"));
        write("customers.csv", "Code,City\nA1,Graz\n");
        write("card.tvd",
              R"({"tarnovaLayout": 1, "pages": [{"items": [{"bounds": [9, 9, 90, 90], "text": "{{City}}"}]}]})");
    }
    static std::string definition(const std::string& name, const std::string& key) {
        return "\"" + name + "\" recordDefinition; TARNOVAJNT signature; 1:\"" + key + "\", 2:\"City\" fieldName; \"" +
               key + "\" keyField;\n1 dataType; 1 fileType; 2 osType;\n\"City\" extractionRecord; \"City\" field;\n";
    }
    /// Runs lines in a home; the answers, as JSON.
    std::vector<std::string> exec(const std::string& home, const std::string& lines) {
        write("script", lines);
        const outcomeRec outcome = run("exec --home " + home + " script");
        EXPECT_EQ(outcome.status, 0) << outcome.output << outcome.messages;
        std::istringstream out(outcome.output);
        std::vector<std::string> answers;
        for (std::string line; std::getline(out, line);)
            answers.push_back(line);
        return answers;
    }
    static std::string at(const std::string& answer, const char* place) {
        rapidjson::Document tree;
        tree.Parse(answer);
        const rapidjson::Value* const value = rapidjson::Pointer(place).Get(tree);
        if (value == nullptr) return "(none)";
        return value->IsString() ? value->GetString() : std::to_string(value->GetInt());
    }
    /// Name and key field of the current definition, and the status of opening its data, after these lines.
    std::string state(const std::string& home, const std::string& lines) {
        const std::vector<std::string> answers = exec(home, lines + R"({"command":528}
{"command":593,"out":["item3"]}
{"command":503}
)");
        const std::size_t first = answers.size() - 3;
        return at(answers[first], "/reply/text") + " " + at(answers[first + 1], "/items/item3") + " " +
               at(answers[first + 2], "/reply/status");
    }
    const std::string importAndSelect = R"({"command":1400}
{"command":1405,"args":{"item0":"customers.ddf"}}
{"command":1207,"args":{"item1":"Customers"}}
{"command":1209,"args":{"item0":"customers.csv"}}
)";
};

TEST_F(TravellingDefinition, ComesWithTheDocument) {
    EXPECT_EQ(state("home1", importAndSelect + R"({"host":"open","path":"card.tvd"}
{"host":"save","document":1,"path":"travels.tvd"}
)"),
              "Customers Code 0");
    const std::string open = R"({"command":1400}
{"host":"open","path":"travels.tvd"}
)";
    EXPECT_EQ(state("home2", open), "Default Definition Code -6017") << "poured into the default, without its data";
    const std::string ownNames = R"({"host":"prefs","set":{"alwaysUseDocumentDDF":0}}
)";
    EXPECT_EQ(state("home3", ownNames + open), "Default Definition  -6017") << "nothing is taken without a question";
    EXPECT_EQ(state("home3", ownNames + open + R"({"host":"answers","queue":[1]}
{"command":546}
)"),
              "Default Definition  -6017")
        << "refused";
    EXPECT_EQ(state("home3", ownNames + open + R"({"command":546}
)"),
              "Customers Code -6017");
    EXPECT_EQ(state("home4", ownNames + R"({"command":1405,"args":{"item0":"others.ddf"}}
)" + open),
              "Customers Number -6017")
        << "a definition of the same name in the set stays";
    EXPECT_EQ(state("home4", ownNames + open + R"({"command":1207,"args":{"item1":""}}
)"),
              "Customers Code -6017")
        << "unless that of the document is chosen";
    EXPECT_EQ(state("home5", open + R"({"host":"new"}
{"command":1260,"args":{"item0":{"document":1},"item1":{"document":2},"item2":1},"out":["item3"]}
{"host":"save","document":2,"path":"copy.tvd"}
)"),
              "Default Definition Code -6017");
    EXPECT_EQ(state("home6", R"({"command":1400}
{"host":"open","path":"copy.tvd"}
)"),
              "Default Definition Code -6017");
}

TEST_F(TravellingDefinition, IsKeptByTheVerbsOfTheStore) {
    const auto ddf = [this](const std::string& arguments) { return run("ddf " + arguments + " --home verbs"); };
    EXPECT_EQ(ddf("import customers.ddf").status, 0);
    EXPECT_EQ(ddf("import none.ddf").status, 1);
    const outcomeRec list = ddf("list");
    EXPECT_NE(list.output.find("Customers: 2 fields, 1 link"), std::string::npos) << list.output;
    EXPECT_NE(list.output.find("Default Definition: 0 fields, 1 link"), std::string::npos) << list.output;
    EXPECT_EQ(ddf("use card.tvd Nobody").status, 1);
    EXPECT_EQ(ddf("use card.tvd").status, 1) << "it carries none yet";
    const outcomeRec used = ddf("use card.tvd customers");
    EXPECT_EQ(used.status, 0) << used.messages;
    EXPECT_EQ(run("ddf use card.tvd --home other").status, 0);
    const outcomeRec json = run("ddf list --json --home other");
    rapidjson::Document tree;
    tree.Parse(json.output);
    ASSERT_TRUE(tree.IsObject() && tree["definitions"].IsArray()) << json.output;
    EXPECT_EQ(tree["definitions"].Size(), 1U);
    EXPECT_EQ(tree["definitions"][0]["fields"].GetUint(), 2U) << "poured into the default definition";
    EXPECT_EQ(run("ddf export out.ddf --home other").status, 0);
    EXPECT_NE(read("out.ddf").find("\"Code\" keyField"), std::string::npos);
    EXPECT_EQ(ddf("export none/out.ddf").status, 1);
    EXPECT_EQ(run("ddf import card.tvd --home third").status, 0);
    EXPECT_NE(run("ddf list --home third").output.find("Default Definition: 2 fields"), std::string::npos);
}

}  // namespace
}  // namespace tarnova
