// `tarnova render` as a person calls it.

#include "tests/cli/program_fixture.h"

namespace tarnova {
namespace {

class RenderVerb : public ProgramTest {
 protected:
    RenderVerb() {
        write("three.tvd", R"({"tarnovaLayout": 1, "title": "Three", "pageSize": [200, 100], "pages": [
            {"items": [{"bounds": [10, 10, 180, 50], "text": "First page"}]},
            {"items": [{"name": "tight", "bounds": [10, 10, 60, 20], "text": "Second page with too many words"}]},
            {"items": [{"bounds": [10, 10, 180, 50], "text": "Third page"}]}]})");
    }
    [[nodiscard]] std::string textOf(const std::string& pdf) { return shell("pdftotext " + pdf + " -").output; }
};

TEST_F(RenderVerb, MakesAPdfOfThePagesThatAreWanted) {
    const outcomeRec all = run("render three.tvd -o all.pdf");
    EXPECT_EQ(all.status, 0) << all.messages;
    EXPECT_EQ(shell("qpdf --show-npages all.pdf").output, "3\n");
    EXPECT_NE(shell("pdfinfo all.pdf").output.find("Title:           Three"), std::string::npos);

    EXPECT_EQ(run("render three.tvd -o some.pdf --pages 3,1").status, 0);
    const std::string text = textOf("some.pdf");
    EXPECT_LT(text.find("First"), text.find("Third"));
    EXPECT_EQ(text.find("Second"), std::string::npos);
}

TEST_F(RenderVerb, MakesPicturesNamedByTheirPage) {
    EXPECT_EQ(run("render three.tvd -o page.png --dpi 72 --pages 2-").status, 0);
    EXPECT_FALSE(exists("page-001.png"));
    EXPECT_TRUE(exists("page-002.png") && exists("page-003.png"));
    EXPECT_EQ(shell("identify -format '%w %h' page-003.png").output, "200 100");
    EXPECT_EQ(run("render three.tvd -o one.png --dpi 72 --pages 3").status, 0);
    EXPECT_EQ(read("one.png"), read("page-003.png"));
}

TEST_F(RenderVerb, PutsTheBleedAroundThePage) {
    EXPECT_EQ(run("render three.tvd -o plain.pdf").status, 0);
    EXPECT_EQ(run("render three.tvd -o bleed.pdf --bleed 0.125in").status, 0);
    const std::string boxes = shell("pdfinfo -box bleed.pdf").output;
    EXPECT_NE(boxes.find(" 0.00     0.00   218.00   118.00"), std::string::npos) << boxes;
    EXPECT_NE(boxes.find(" 9.00     9.00   209.00   109.00"), std::string::npos) << boxes;
    EXPECT_NE(shell("pdfinfo plain.pdf").output.find("200 x 100 pts"), std::string::npos);
}

TEST_F(RenderVerb, NamesPagesByTheirSections) {
    write("parts.tvd", R"({"tarnovaLayout": 1, "pageSize": [200, 100], "pages": [{}, {}, {}], "sections": [
            {"page": 2, "prefix": "A-", "startNumber": 4, "style": "lowerRoman", "includePrefix": true}]})");
    EXPECT_EQ(run("render parts.tvd -o parts.pdf --bookmarks").status, 0);
    const std::string told =
        shell("qpdf --json=2 --json-key=outlines --json-key=pagelabels parts.pdf | tr -d ' \\n'").output;
    for (const char* part : {R"("title":"1")", R"("title":"A-iv")", R"("title":"A-v")",
                             R"("index":1,"label":{"/P":"u:A-","/S":"/r","/St":4})"}) {
        EXPECT_NE(told.find(part), std::string::npos) << part << " in " << told;
    }
    EXPECT_EQ(run("render parts.tvd -o parts.pdf").status, 0);
    EXPECT_EQ(shell("qpdf --json=2 --json-key=outlines parts.pdf").output.find("A-iv"), std::string::npos);
}

TEST_F(RenderVerb, MakesOnePostScriptFileOfAllPages) {
    const outcomeRec outcome = run("render three.tvd -o all.ps --pages 2-");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.messages.find("page 2: the text of story "), std::string::npos) << outcome.messages;
    EXPECT_EQ(shell("gs -q -dSAFER -sDEVICE=pdfwrite -o all.pdf all.ps").output, "");
    EXPECT_EQ(shell("qpdf --show-npages all.pdf").output, "2\n");
    EXPECT_NE(read("all.ps").find("%%Title: (Three)\n"), std::string::npos);
}

TEST_F(RenderVerb, MakesDrawingsNamedByTheirPage) {
    for (const std::string kind : {"svg", "eps"}) {
        const outcomeRec outcome = run("render three.tvd -o page." + kind + " --pages 1,3");
        EXPECT_EQ(outcome.status, 0) << outcome.messages;
        EXPECT_TRUE(exists("page-001." + kind) && exists("page-003." + kind)) << kind;
        EXPECT_FALSE(exists("page-002." + kind)) << kind;
        EXPECT_EQ(run("render three.tvd -o one." + kind + " --pages 3").status, 0);
        EXPECT_EQ(read("one." + kind), read("page-003." + kind)) << kind;
    }
    EXPECT_EQ(shell("xmllint --xpath \"string(/*/@viewBox)\" one.svg").output, "0 0 200 100\n");
    EXPECT_NE(read("one.eps").find("%%BoundingBox: 0 0 200 100\n"), std::string::npos);
}

TEST_F(RenderVerb, TellsWhichTextDoesNotFitAndGoesOn) {
    const outcomeRec outcome = run("render three.tvd -o all.pdf");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.messages.find("three.tvd: page 2: the text of story "), std::string::npos) << outcome.messages;
    EXPECT_NE(outcome.messages.find(" \"tight\""), std::string::npos) << outcome.messages;
    EXPECT_EQ(outcome.messages.find("page 1"), std::string::npos);
}

TEST_F(RenderVerb, WrongUseSaysWhatIsPossible) {
    struct testRow {
        const char* arguments;
        int status;
        const char* message;
    };
    const testRow rows[] = {
        {"three.tvd -o out.gif", 2, "out.gif: the output's name must end in .pdf, .ps, .png, .svg or .eps"},
        {"three.tvd -o out", 2, "out: the output's name must end in .pdf, .ps, .png, .svg or .eps"},
        {"three.tvd -o out.pdf --pages 4", 2, "there is no page 4; the document has pages 1 to 3"},
        {"three.tvd -o out.png --dpi 0", 2, "--dpi"},
        {"three.tvd -o out.pdf --bleed 3zz", 2, "--bleed: zz unit not recognized"},
        {"three.tvd -o out.pdf --bleed -1mm", 2, "--bleed"},
        {"three.tvd -o out.pdf --bleed 11in", 2, "--bleed"},
        {"three.tvd -o out.ps --bleed 3mm", 2, "out.ps: --bleed and --bookmarks are for .pdf"},
        {"three.tvd -o out.svg --bookmarks", 2, "out.svg: --bleed and --bookmarks are for .pdf"},
        {"three.tvd", 2, "--output"},
        {"none.tvd -o out.pdf", 1, "none.tvd"},
        {"three.tvd -o none/out.ps", 1, "\"none/out.ps\" can't be written: No such file or directory"},
        {"three.tvd -o none/out.svg", 1, "\"none/out-001.svg\" can't be written: No such file or directory"},
        {"three.tvd -o none/out.eps", 1, "\"none/out-001.eps\" can't be written: No such file or directory"},
        {"three.tvd -o none/out.pdf", 1, "\"none/out.pdf\" can't be written: No such file or directory"},
    };
    for (const auto& [arguments, status, message] : rows) {
        const outcomeRec outcome = run(std::string("render ") + arguments);
        EXPECT_EQ(outcome.status, status) << arguments;
        EXPECT_NE(outcome.messages.find(message), std::string::npos) << outcome.messages;
    }
    EXPECT_FALSE(exists("out.pdf") || exists("out.gif") || exists("out.png"));
    EXPECT_NE(run("render --help").output.find("Example: tarnova render"), std::string::npos);
}

}  // namespace
}  // namespace tarnova
