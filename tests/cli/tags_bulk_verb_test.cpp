// `tarnova tags replace`, `tags sequence`, `tags remove` and `import-text` as a person calls them, and formatted values
// in a merge.

#include "tests/cli/program_fixture.h"

namespace tarnova {
namespace {

class TagsBulkVerb : public ProgramTest {
 protected:
    void SetUp() override {
        write("in.tvd", R"({"tarnovaLayout": 1, "pages": [{"items": [
            {"bounds": [20, 200, 400, 100], "text": "{{A1:Name}} and {{A2:City}}", "name": "Low"},
            {"bounds": [20, 20, 400, 100], "text": "{{A3:Name}}", "name": "High"}]}]})");
    }
    /// "key:link " of each link.
    std::string links(const std::string& layout) {
        std::string out;
        std::istringstream lines(run("tags list " + layout).output);
        for (std::string line; std::getline(lines, line);) {
            const auto quoted = [&line](std::size_t from) { return line.substr(from, line.find('"', from) - from); };
            out += quoted(line.find("key \"") + 5) + ":" + quoted(line.find(": \"") + 3) + " ";
        }
        return out;
    }
};

TEST_F(TagsBulkVerb, ReplacesNumbersAndRemoves) {
    EXPECT_EQ(run("tags replace in.tvd --key '*' A --key-mode cut-prefix --link name Full -o a.tvd").output,
              "a.tvd: 3 links changed, 0 removed\n");
    EXPECT_EQ(links("a.tvd"), "3:Full 1:Full 2:City ");
    EXPECT_EQ(run("tags sequence a.tvd --first 10 --increment 5 -o b.tvd").output, "b.tvd: 2 items numbered\n");
    EXPECT_EQ(links("b.tvd"), "10:Full 15:Full 15:City ");
    EXPECT_EQ(run("tags remove b.tvd -o c.tvd").output, "c.tvd: 3 links removed from text, 0 from frames\n");
    EXPECT_EQ(links("c.tvd"), "");
    EXPECT_NE(run("tags replace in.tvd --key A '' -o d.tvd").messages.find("can't lose its key"), std::string::npos);
    EXPECT_EQ(run("tags replace in.tvd -o d.tvd").status, 2);
    EXPECT_EQ(run("tags sequence in.tvd --page 2 -o d.tvd").status, 1);
    EXPECT_FALSE(exists("d.tvd"));
}

TEST_F(TagsBulkVerb, ImportsFormattedText) {
    write("a.rtf", "{\\rtf1 plain {\\b bold}\\par}");
    EXPECT_EQ(run("import-text in.tvd a.rtf --frame High -o a.tvd").output,
              "a.tvd: RTF Import Filter imported, the text had 4 characters and has 10\n");
    EXPECT_NE(read("a.tvd").find("\"Bold\""), std::string::npos);
    write("b.xtg", "<v1.70><e1>\r\n@$:Dear <B>you<P> <!$1;Name;;: >x<!!>!\r\n");
    EXPECT_EQ(run("import-text in.tvd b.xtg --frame High -o b.tvd").status, 0);
    EXPECT_EQ(links("b.tvd"), "1:Name A1:Name A2:City ");
    EXPECT_EQ(run("import-text in.tvd b.xtg --frame Low --as xpress-markup -o c.tvd").status, 0);
    EXPECT_NE(read("c.tvd").find("<ct:><ct:Bold>you"), std::string::npos);
    for (const char* wrong :
         {"nowhere.rtf --frame High", "a.rtf --frame None", "a.rtf", "a.rtf --frame High --at 99"}) {
        const outcomeRec outcome = run(std::string("import-text in.tvd ") + wrong + " -o d.tvd");
        EXPECT_EQ(outcome.status, 1) << wrong;
        EXPECT_NE(outcome.messages, "") << wrong;
    }
}

TEST_F(TagsBulkVerb, FormattedValuesArriveStyled) {
    write("data.csv", "Tagged,Rtf,Xpress\n\"<ct:Bold>big<ct:> <0x2014>\",\"{\\rtf1 a {\\i b}}\",\"<B>x</B> <z20>y\"\n");
    write("card.tvd", R"({"tarnovaLayout": 1, "pages": [{"items": [
        {"bounds": [20, 20, 400, 100], "text": "{{Tagged}}, {{Rtf}}, {{Xpress}}."}]}]})");
    ASSERT_EQ(run("ddf from-data data.csv -o data.ddf").status, 0);
    std::string ddf = read("data.ddf");
    const auto setFilter = [&ddf](const char* link, const char* filter) {
        const std::size_t at = ddf.find("0 importFilter", ddf.find(link + std::string("\" extractionRecord")));
        ddf.replace(at, 1, filter);
    };
    setFilter("\"Tagged", "1");
    setFilter("\"Rtf", "2");
    setFilter("\"Xpress", "4");
    write("data.ddf", ddf);
    const outcomeRec merged = run("merge card.tvd --data data.csv --ddf data.ddf -o out.tvd");
    EXPECT_EQ(merged.status, 0) << merged.messages;
    EXPECT_EQ(links("out.tvd"), "1:Tagged 1:Rtf 1:Xpress ");
    const std::string list = run("tags list out.tvd").output;
    for (const char* text : {"over \"big \u2014\"", "over \"a b\"", "over \"x y\""})
        EXPECT_NE(list.find(text), std::string::npos) << list;
    const std::string out = read("out.tvd");
    for (const char* look : {"\"Bold\"", "\"Italic\"", "\"size\": 20"})
        EXPECT_NE(out.find(look), std::string::npos) << look << "\n" << out;
}

}  // namespace
}  // namespace tarnova
