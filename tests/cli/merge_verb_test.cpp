// Whole jobs through the program, checked with other people's readers of PDF.

#include <gmock/gmock.h>

#include <vector>

#include "tests/cli/program_fixture.h"

namespace tarnova {
namespace {

using testing::HasSubstr;

class MergeVerbTest : public ProgramTest {
 protected:
    /// A page of one frame, as wide as a card, with this text.
    void writeLayout(std::string_view text) const {
        write("layout.tvd", std::string(R"({"tarnovaLayout": 1, "title": "Test", "pages": [{"items": [
{"bounds": [50, 50, 300, 200], "text": ")") +
                                std::string(text) + "\"}\n]}]}\n");
    }

    /// Words of each page, one blank between them.
    std::vector<std::string> pageTexts(const std::string& pdf) {
        const outcomeRec text = shell("pdftotext -layout '" + pdf + "' -");
        EXPECT_EQ(text.status, 0);
        std::vector<std::string> pages(1);
        bool inWord = false;
        for (const char c : text.output) {
            if (c == '\f') {
                pages.emplace_back();
                inWord = false;
            } else if (c == ' ' || c == '\n') {
                inWord = false;
            } else {
                if (!inWord && !pages.back().empty()) pages.back() += ' ';
                inWord = true;
                pages.back() += c;
            }
        }
        pages.pop_back();
        return pages;
    }

    std::vector<std::string> mergePdf(const std::string& more = "") {
        const outcomeRec merged = run("merge layout.tvd --data data.csv -o out.pdf " + more);
        EXPECT_EQ(merged.status, 0) << merged.messages;
        return merged.status == 0 ? pageTexts("out.pdf") : std::vector<std::string>();
    }
};

/// Splits the lines of a file whose texts are all in double quotes, a doubled quote standing for one.
std::vector<std::vector<std::string>> rowsOf(const std::string& csv) {
    std::vector<std::vector<std::string>> rows(1, std::vector<std::string>(1));
    bool quoted = false;
    for (std::size_t i = 0; i < csv.size(); ++i) {
        const char c = csv[i];
        if (c == '"' && quoted && i + 1 < csv.size() && csv[i + 1] == '"') {
            rows.back().back() += csv[++i];
        } else if (c == '"') {
            quoted = !quoted;
        } else if (c == ',' && !quoted) {
            rows.back().emplace_back();
        } else if (c == '\n' && !quoted) {
            rows.emplace_back(1);
        } else {
            rows.back().back() += c;
        }
    }
    rows.pop_back();
    return rows;
}

/// A line may break behind a hyphen, so words are compared without the blanks between them.
std::string withoutBlanks(std::string text) {
    std::erase(text, ' ');
    return text;
}

TEST_F(MergeVerbTest, TheMailingHoldsEachRecordOnItsPage) {
    const std::string data = source("examples/mailing/airports.csv");
    const outcomeRec merged =
        run("merge " + source("examples/mailing/mailing.tvd") + " --data " + data + " -o out.pdf --json");
    ASSERT_EQ(merged.status, 0) << merged.messages;
    EXPECT_THAT(merged.output, HasSubstr("\"records\":1000,\"pages\":1000,\"oversetStories\":0"));
    EXPECT_EQ(merged.messages, "");
    EXPECT_EQ(shell("qpdf --check out.pdf").status, 0);

    std::ifstream file(data, std::ios::binary);
    std::stringstream bytes;
    bytes << file.rdbuf();
    const auto rows = rowsOf(bytes.str());
    const std::vector<std::string> pages = pageTexts("out.pdf");
    ASSERT_EQ(rows.size(), 1001U);
    ASSERT_EQ(pages.size(), 1000U);
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const auto& row = rows[i + 1];
        const std::string text = withoutBlanks(pages[i]);
        const std::string wanted[] = {row[0] + " / " + row[1], row[3], row[5],
                                      "lists " + row[2] + " with an elevation of " + row[6] + " feet",
                                      "position of " + row[2] + " has changed"};
        for (const std::string& words : wanted)
            ASSERT_THAT(text, HasSubstr(withoutBlanks(words))) << i;
    }
}

TEST_F(MergeVerbTest, ALongNameWrapsAndMovesWhatFollows) {
    writeLayout("Dear {{name}},\\nwelcome.");
    write("data.csv", "name\nAnn\nAdolph Blaine Charles David Earl Frederick Gerald Hubert Irvin John Kenneth Lloyd\n");
    mergePdf();
    const auto lineOf = [&](int page) {
        const outcomeRec boxes = shell("pdftotext -bbox -f " + std::to_string(page) + " -l " + std::to_string(page) +
                                       " out.pdf - | grep welcome");
        return std::stod(boxes.output.substr(boxes.output.find("yMin=\"") + 6));
    };
    EXPECT_NEAR(lineOf(2) - lineOf(1), 12, 0.1);  // one line more of ten points with auto leading
}

TEST_F(MergeVerbTest, AwkwardDataComesOutRight) {
    struct testRow {
        const char* name;
        const char* data;
        const char* want;
    };
    const testRow rows[] = {
        {"quotes, delimiters, line ends", "A,B\n\"x \"\"y\"\", z\",\"p\nq\"\n", "[x \"y\", z] [p q]"},
        {"UTF-8", "A,B\nÅsa Łódź,Ελλάδα\n", "[Åsa Łódź] [Ελλάδα]"},
        {"Windows-1252",
         "A;B\r\nCr\xE8me br\xFBl\xE9"
         "e;50 \x80\r\n",
         "[Crème brûlée] [50 €]"},
        {"empty field and missing last one", "A,B\n,b\na\n", "[] [b]"},
        {"no line end at the end", "A,B\na,b", "[a] [b]"},
        {"ligatures", "A,B\noffice,final flow\n", "[office] [final flow]"},
    };
    writeLayout("[{{A}}] [{{B}}]");
    for (const testRow& row : rows) {
        write("data.csv", row.data);
        std::filesystem::remove_all(folder + "/home");
        const std::vector<std::string> pages = mergePdf();
        ASSERT_FALSE(pages.empty()) << row.name;
        EXPECT_EQ(pages[0], row.want) << row.name;
        const bool hasSecond = pages.size() > 1;
        EXPECT_EQ(hasSecond ? pages[1] : "[a] []", "[a] []") << row.name;
    }
}

TEST_F(MergeVerbTest, ChangedDataIsNeverMergedFromAnOldIndex) {
    writeLayout("<{{A}}>");
    write("data.csv", "A\none\n");
    EXPECT_EQ(mergePdf(), std::vector<std::string>{"<one>"});
    write("data.csv", "A\nthree\nfour\n");  // within the same second
    EXPECT_EQ(mergePdf(), (std::vector<std::string>{"<three>", "<four>"}));
    ASSERT_EQ(shell("touch -d '2001-01-01' data.csv").status, 0);
    write("old.csv", "A\nolder\n");
    ASSERT_EQ(shell("touch -d '2000-01-01' old.csv && mv old.csv data.csv").status, 0);
    EXPECT_EQ(mergePdf(), std::vector<std::string>{"<older>"});
}

TEST_F(MergeVerbTest, RecordsAndStepChooseWhatIsMerged) {
    writeLayout("{{A}} {{2:A}}.");
    write("data.csv", "A\nr1\nr2\nr3\nr4\nr5\n");
    EXPECT_EQ(mergePdf(), (std::vector<std::string>{"r1 r2.", "r3 r4.", "r5 ."}));
    EXPECT_EQ(mergePdf("--records 2-4"), (std::vector<std::string>{"r2 r3.", "r4 ."}));
    EXPECT_EQ(mergePdf("--records 5-"), (std::vector<std::string>{"r5 ."}));
    EXPECT_EQ(mergePdf("--step 3"), (std::vector<std::string>{"r1 r2.", "r4 r5."}));
}

TEST_F(MergeVerbTest, ModesLayRecordsOnPages) {
    writeLayout("{{A}} {{2:A}}.");
    write("data.csv", "A\nr1\nr2\nr3\nr4\nr5\nr6\nr7\nr8\nr9\n");
    EXPECT_EQ(mergePdf("--mode cut-and-stack"),
              (std::vector<std::string>{"r1 r6.", "r2 r7.", "r3 r8.", "r4 r9.", "r5 ."}));
    EXPECT_EQ(mergePdf("--mode stack-range --records 4-"), (std::vector<std::string>{"r4 r9.", "r5 ."}));
    EXPECT_EQ(mergePdf("--mode stack-subset --records 2-4"), (std::vector<std::string>{"r2 r4.", "r3 ."}));
    EXPECT_EQ(run("merge layout.tvd --data data.csv -o no.pdf --mode stack-range --records 1,3").status, 1);
    EXPECT_EQ(run("merge layout.tvd --data data.csv -o no.pdf --mode stack-range --records 6-").status, 1);
    EXPECT_FALSE(exists("no.pdf"));
    EXPECT_EQ(mergePdf("--mode step --step 3 --records 1-4"), (std::vector<std::string>{"r1 r2.", "r4 ."}));
}

TEST_F(MergeVerbTest, AProofShowsTheLinks) {
    writeLayout("Dear {{A}}, {{2:B}}.");
    write("data.csv", "A,B\na,b\n");
    EXPECT_EQ(run("proof layout.tvd --data data.csv -o proof.pdf").status, 0);
    EXPECT_EQ(pageTexts("proof.pdf"), std::vector<std::string>{"Dear {{A}}, {{2:B}}."});
    write("data.csv", "A,C\na,b\n");
    const outcomeRec wrong = run("proof layout.tvd --data data.csv -o proof.tvd");
    EXPECT_EQ(wrong.status, 1);
    EXPECT_THAT(wrong.messages, HasSubstr("\"B\" isn't in the definition"));
    EXPECT_TRUE(exists("proof.tvd")) << "a proof is for finding such links";
}

/// New glyphs, a font that stands in, ligatures and a text that two glyphs stand for come late and far apart.
TEST_F(MergeVerbTest, AnyNumberOfJobsGivesTheSameBytes) {
    std::string data = "A,B\n";
    for (int i = 1; i <= 1500; ++i) {
        const char* const odd = i % 401 == 0 ? " \xCE\xA9\xE4\xB8\xAD" : i % 97 == 0 ? " office fi\xC2\xAD" : "";
        data += "n" + std::to_string(i) + odd + ",http://example.org/" + std::to_string(i) + "\n";
    }
    write("data.csv", data);
    write("layout.tvd", R"({"tarnovaLayout": 1, "title": "Jobs",
"pages": [{"items": [{"bounds": [50, 50, 300, 200], "text": "{{A}} of {{2:B}}"}, {"bounds": [9, 9, 30, 20], "fill": "Black"}]},
          {"items": [{"bounds": [50, 50, 40, 14], "text": "{{2:A}} and more than fits"}]}]})");
    for (const char* more : {"", "--bookmarks --bleed 3mm --mode cut-and-stack"}) {
        const std::string merge = std::string("merge layout.tvd --data data.csv -o out.pdf --json ") + more;
        const outcomeRec one = run(merge);
        ASSERT_EQ(one.status, 0) << one.messages;
        std::filesystem::rename(folder + "/out.pdf", folder + "/one.pdf");
        const outcomeRec many = run(merge + " --jobs 3");
        ASSERT_EQ(many.status, 0) << many.messages;
        EXPECT_THAT(many.output, HasSubstr("\"records\":1500,\"pages\":1500,"));
        EXPECT_EQ(many.output, one.output) << "with what was counted";
        EXPECT_TRUE(read("one.pdf") == read("out.pdf")) << more;
    }
    // What a worker can't merge is told once, by the program.
    write("layout.tvd",
          R"({"tarnovaLayout": 1, "pages": [{"items": [{"bounds": [50, 50, 300, 200], "text": "{{A}}"}]}]})");
    const outcomeRec full = run("merge layout.tvd --data data.csv -o full.pdf --jobs 2");
    EXPECT_EQ(full.status, 0) << full.messages;
}

TEST_F(MergeVerbTest, InterruptedRunsAndFullDisksLeaveNothing) {
    writeLayout("{{A}} and {{A}}");
    std::string data = "A\n";
    for (int i = 1; i <= 60000; ++i)
        data += "name" + std::to_string(i) + "\n";
    write("data.csv", data);
    write("out.pdf", "older");
    const std::string merge = std::string(TARNOVA_PROGRAM) + " merge layout.tvd --data data.csv -o out.pdf";
    ASSERT_EQ(run("data index data.csv").status, 0);
    for (const char* jobs : {"", " --jobs 2"}) {
        EXPECT_EQ(shell(merge + jobs + " & sleep 1; kill -INT $!; wait $!").status, 130) << jobs;
        EXPECT_EQ(read("out.pdf"), "older") << jobs;
    }
    const outcomeRec full = shell("sh -c 'ulimit -f 64; " + merge + "'");
    EXPECT_EQ(full.status, 1);
    EXPECT_THAT(full.messages, HasSubstr("out.pdf"));
    EXPECT_EQ(read("out.pdf"), "older");
    const outcomeRec noFolder = shell("TMPDIR=/nonexistent " + merge);
    EXPECT_EQ(noFolder.status, 1);
    EXPECT_THAT(noFolder.messages, HasSubstr("working copy can't be saved"));
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        files += entry.is_regular_file() ? 1 : 0;
    EXPECT_EQ(files, 4) << "layout, data, messages and the older output";
}

/// A link on a master is merged on every page of every record: left and right pages, with the page's own sequence.
TEST_F(MergeVerbTest, LinksOnMastersTakeTheRecordOfTheirPage) {
    const std::string frame = R"("items": [{"bounds": [10, 10, 80, 30], "text": )";
    const std::string head = R"({"tarnovaLayout": 1, "facing": true, "pageSize": [100, 100],
        "layers": [{"name": "Back"}, {"name": "Front", "locked": true}],
        "masters": [{"name": "Base", "pages": [{"items": [{"bounds": [10, 60, 80, 30], "layer": "Front", "text": "b {{B}}"}]}]},
                    {"name": "M", "pages": [{"master": "Base", )" +
                             frame + R"("left {{A}}"}]},
                                            {"master": "Base", )" +
                             frame + R"("right {{2:A}}"}]}]}],)";
    write("data.csv", "A,B\na1,b1\na2,b2\na3,b3\na4,b4\n");
    write("layout.tvd", head + R"("pages": [{"master": "M"}, {"master": "M"}, {"master": "M"}]})");
    const std::vector<std::string> wanted = {"right a2 b b1", "left a1 b b1", "right a2 b b1",
                                             "right a4 b b3", "left a3 b b3", "right a4 b b3"};
    EXPECT_EQ(mergePdf(), wanted);
    ASSERT_EQ(run("merge layout.tvd --data data.csv -o built.tvd").status, 0);
    ASSERT_EQ(run("render built.tvd -o built.pdf").status, 0);
    EXPECT_EQ(pageTexts("built.pdf"), wanted);
    EXPECT_EQ(mergePdf("--records 3-"), std::vector<std::string>(wanted.begin() + 3, wanted.end())) << "a single slot";

    // So many pages that each chunk of the run holds one slot.
    std::string pages = "{\"master\": \"M\"}";
    for (int i = 1; i < 70; ++i)
        pages += ", {\"master\": \"M\"}";
    write("layout.tvd", head + "\"pages\": [" + pages + "]}");
    const std::vector<std::string> merged = mergePdf();
    ASSERT_EQ(merged.size(), 140U);
    EXPECT_EQ(merged[69], "left a1 b b1");
    EXPECT_EQ(merged[70], "right a4 b b3");
    EXPECT_EQ(merged[139], "left a3 b b3");
}

TEST_F(MergeVerbTest, TheBuiltDocumentRendersLikeTheDirectPdf) {
    writeLayout("Hello {{A}} of {{B}}!");
    write("data.csv", "A,B\nAnn,Bern\nBob,Rome\nCy,Oslo\n");
    const std::vector<std::string> direct = mergePdf();
    ASSERT_EQ(run("merge layout.tvd --data data.csv -o built.tvd").status, 0);
    ASSERT_EQ(run("render built.tvd -o built.pdf").status, 0);
    EXPECT_EQ(pageTexts("built.pdf"), direct);
    EXPECT_THAT(run("tags list built.tvd").output, HasSubstr("Rome"));

    ASSERT_EQ(run("merge layout.tvd --data data.csv -o page.png --dpi 40").status, 0);
    for (const char* name : {"page-001.png", "page-002.png", "page-003.png"})
        EXPECT_TRUE(exists(name)) << name;

    mergePdf();
    const std::string once = read("out.pdf");
    mergePdf();
    EXPECT_TRUE(once == read("out.pdf")) << "the same input must give the same bytes";
}

TEST_F(MergeVerbTest, ADefinitionFromADdf) {
    write("data.csv", "A,B\nann,bern\n");
    ASSERT_EQ(run("ddf from-data data.csv -o data.ddf").status, 0);
    writeLayout("{{A}}-{{B}}");
    EXPECT_EQ(mergePdf("--ddf data.ddf"), std::vector<std::string>{"ann-bern"});
    const outcomeRec wrong = run("merge layout.tvd --data data.csv --ddf data.ddf --definition Nobody -o x.pdf");
    EXPECT_EQ(wrong.status, 1);
    EXPECT_THAT(wrong.messages, HasSubstr("no definition \"Nobody\""));
}

TEST_F(MergeVerbTest, WhatIsWrongIsToldAndNothingIsWritten) {
    writeLayout("{{A}}");
    write("data.csv", "A\na\n");
    write("other.tvd", R"({"tarnovaLayout": 1, "pages": [{"items": [{"bounds": [0,0,99,99], "text": "{{Z}}"}]}]})");
    write("bad.tvd", "{\"tarnovaLayout\": 1,\n\"pages\": [\n{\"itemz\": []}]}");
    write("bad.ddf", "\"x\" recordDefinition;\r\n");
    std::filesystem::create_directory(folder + "/taken.pdf");
    struct testRow {
        const char* arguments;
        int status;
        const char* says;
    };
    const testRow rows[] = {
        {"merge layout.tvd --data data.csv -o out.doc", 2, ".pdf, .png or .tvd"},
        {"merge layout.tvd --data data.csv --records 3-1 -o out.pdf", 2, "--records 3-1"},
        {"merge layout.tvd --data data.csv --records 0 -o out.pdf", 2, "--records 0"},
        {"merge layout.tvd --data data.csv --step 0 -o out.pdf", 2, "--step"},
        {"merge layout.tvd -o out.pdf", 2, "--data is required"},
        {"merge nobody.tvd --data data.csv -o out.pdf", 1, "nobody.tvd"},
        {"merge layout.tvd --data nobody.csv -o out.pdf", 1, "nobody.csv"},
        {"merge bad.tvd --data data.csv -o out.pdf", 1, "bad.tvd:3:"},
        {"merge layout.tvd --data data.csv --ddf bad.ddf -o out.pdf", 1, "bad.ddf"},
        {"merge other.tvd --data data.csv -o out.pdf", 1, "\"Z\" isn't in the definition"},
        {"merge layout.tvd --data data.csv --records 9-12 -o out.pdf", 1, "record"},
        {"merge layout.tvd --data data.csv -o nobody/out.pdf", 1, "nobody/out.pdf"},
        {"merge layout.tvd --data data.csv -o taken.pdf", 1, "taken.pdf"},
        {"render layout.tvd -o out.pdf --pages 2", 2, "2"},
        {"nothing", 2, "nothing"},
    };
    for (const testRow& row : rows) {
        const outcomeRec outcome = run(row.arguments);
        EXPECT_EQ(outcome.status, row.status) << row.arguments << "\n" << outcome.messages;
        EXPECT_THAT(outcome.messages, HasSubstr(row.says)) << row.arguments;
        EXPECT_EQ(outcome.output, "") << row.arguments;
        EXPECT_FALSE(exists("out.pdf")) << row.arguments;
    }
    int leftovers = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        leftovers += entry.path().filename().string().find("out.pdf") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(leftovers, 0) << "a temporary file stayed behind";
}

TEST_F(MergeVerbTest, GarbledInputsEndInAMessage) {
    writeLayout("{{A}} and {{B}}");
    write("data.csv", "A,B\na,b\nc,d\n");
    mergePdf();
    const std::string layout = read("layout.tvd");
    for (std::size_t length = 0; length < layout.size(); length += 17) {
        write("cut.tvd", layout.substr(0, length));
        const outcomeRec outcome = run("render cut.tvd -o cut.pdf");
        ASSERT_EQ(outcome.status, 1) << length;
        ASSERT_THAT(outcome.messages, HasSubstr("cut.tvd")) << length;
        ASSERT_FALSE(exists("cut.pdf")) << length;
    }
    // A damaged index is built anew from the data.
    std::string index;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder + "/home")) {
        if (entry.is_regular_file() && entry.path().filename().string().front() != '.') index = entry.path().string();
    }
    ASSERT_NE(index, "");
    ASSERT_EQ(shell("touch -d '1 minute ago' data.csv").status, 0);
    const std::string good = "a and b";
    for (const char* damage : {"truncate -s 100 ", "truncate -s 75080 ", "truncate -s 0 ",
                               "dd if=/dev/urandom conv=notrunc bs=64 seek=20 count=2 of="}) {
        ASSERT_EQ(shell(std::string(damage) + "'" + index + "'").status, 0);
        const std::vector<std::string> pages = mergePdf();
        ASSERT_EQ(pages.size(), 2U) << damage;
        EXPECT_EQ(pages[0], good) << damage;
    }
    const outcomeRec binary = run("merge layout.tvd --data " TARNOVA_PROGRAM " -o binary.pdf");
    EXPECT_EQ(binary.status, 1);
    EXPECT_FALSE(exists("binary.pdf"));
}

TEST_F(MergeVerbTest, TextThatDoesNotFitIsTold) {
    write(
        "layout.tvd",
        R"({"tarnovaLayout": 1, "pages": [{"items": [{"bounds": [0,0,60,14], "text": "{{A}} {{A}} {{A}} {{A}} {{A}}"}]}]})");
    write("data.csv", "A\nlonger than that\nx\n");
    const outcomeRec outcome = run("merge layout.tvd --data data.csv -o out.pdf");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.messages, HasSubstr("doesn't fit its frame in 1 place;"));
}

TEST_F(MergeVerbTest, EveryVerbHasHelpWithAnExample) {
    for (const char* verb : {"merge", "render", "data inspect", "data get", "data index", "ddf check", "ddf format",
                             "ddf from-data", "tags list"}) {
        const outcomeRec help = run(std::string(verb) + " --help");
        EXPECT_EQ(help.status, 0) << verb;
        EXPECT_THAT(help.output, HasSubstr(std::string("tarnova ") + verb)) << verb;
    }
    EXPECT_EQ(run("--help").status, 0);
    EXPECT_EQ(run("").status, 2);
}

/// Pages count through the run, however it is cut into pieces, and a section begins anew with each record.
TEST_F(MergeVerbTest, PageNumbersGoThroughTheRun) {
    std::string data = "Name\n";
    for (int i = 1; i <= 70; ++i)
        data += "N" + std::to_string(i) + "\n";
    write("data.csv", data);
    const std::string layout = R"({"tarnovaLayout": 1,
"masters": [{"name": "M", "pages": [{"items": [{"bounds": [50, 300, 300, 20],
  "text": [{"text": [{"special": "pageNumber"}, "/", {"special": "pageCount"}, "/", {"special": "sectionPageCount"}]}]}]}]}],
"pages": [{"master": "M", "items": [{"bounds": [50, 50, 300, 20], "text": "{{Name}}"}]}, {"master": "M"}])";
    write("layout.tvd", layout + "}");
    std::vector<std::string> pages = mergePdf();
    ASSERT_EQ(pages.size(), 140u);
    EXPECT_EQ(pages[0], "N1 1/140/140");
    EXPECT_EQ(pages[1], "2/140/140");
    EXPECT_EQ(pages[138], "N70 139/140/140");
    write("layout.tvd", layout + R"(, "sections": [{"page": 1, "startNumber": 1}]})");
    pages = mergePdf();
    ASSERT_EQ(pages.size(), 140u);
    for (const std::size_t i : {0u, 1u, 62u, 64u, 138u, 139u}) {
        const std::string name = i % 2 == 0 ? "N" + std::to_string(i / 2 + 1) + " " : "";
        EXPECT_EQ(pages[i], name + std::to_string(i % 2 + 1) + "/140/2") << i;
    }
}

}  // namespace
}  // namespace tarnova
