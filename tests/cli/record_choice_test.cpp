#include "tests/cli/program_fixture.h"

namespace tarnova {
namespace {

class RecordChoice : public ProgramTest {
 protected:
    RecordChoice() {
        write("data.csv", "Code,City\nA1,Graz\nB2,\nC3,M\u00fcnchen\nD4,Graz\nE5,Wien\nF6,Linz\nG7,Rom\n");
        write("one.tvd", layoutOf("{{Code}}"));
        write("four.tvd", layoutOf("{{1:Code}}.{{2:Code}}.{{3:Code}}.{{4:Code}}"));
        write("swap.txt", "<A>\t<Z>\n$31\n");
    }
    static std::string layoutOf(const std::string& text) {
        return R"({"tarnovaLayout": 1, "pages": [{"items": [{"bounds": [20, 20, 400, 100], "text": ")" + text +
               "\"}]}]}";
    }
    /// The texts of the pages that a merge with these options makes, with blanks between.
    std::string merged(const std::string& options) {
        const outcomeRec outcome = run("merge " + options + " --data data.csv -o out.tvd");
        EXPECT_EQ(outcome.status, 0) << options << ": " << outcome.messages;
        return shell(std::string(TARNOVA_PROGRAM) +
                     " describe out.tvd --what stories --json | tr '{' '\\n' | sed -n "
                     "'s/.*\"text\":\"\\([^\"]*\\)\".*/\\1/p' "
                     "| sed 's/.r$//' | tr '\\n' ' '")
            .output;
    }
};

TEST_F(RecordChoice, PicksAndSortsRecords) {
    const std::pair<const char*, const char*> rows[] = {
        {"one.tvd --records 2-3", "B2 C3 "},
        {"one.tvd --records 6-", "F6 G7 "},
        {"one.tvd --records 1,3-4,7,9", "A1 C3 D4 G7 "},
        {"one.tvd --filter City=GRAZ", "A1 D4 "},
        {"one.tvd --filter City=m\u00dcn", "C3 "},
        {"one.tvd --filter City=", "B2 "},
        {"one.tvd --filter City --records 2-4", "C3 D4 "},
        {"one.tvd --records 1 --import-table swap.txt", "Z "},
        {"four.tvd --records 2-6", "B2.C3.D4.E5 F6... "},
        {"four.tvd --sort-labels 2x2", "A1.B2.E5.F6 C3.D4.G7. "},
        {"four.tvd --sort-labels 2x2,rows,reverse", "D4.C3..G7 B2.A1.F6.E5 "},
        {"four.tvd --sort-labels 4x1,spread --records 1,2,3,5,6", "A1.C3.F6. B2.E5.. "},
    };
    for (const auto& [options, pages] : rows)
        EXPECT_EQ(merged(options), pages) << options;
}

TEST_F(RecordChoice, RefusesWhatItCantDo) {
    struct testRow {
        const char* options;
        int status;
        const char* message;
    };
    const testRow rows[] = {
        {"one.tvd --records 3,2", 2, "--records 3,2: A sequence in the record range runs backward"},
        {"one.tvd --records 1-2-3", 2, "lacks its first or its last number"},
        {"one.tvd --records 0", 2, "The first record is 1"},
        {"one.tvd --records 9", 1, "starts behind the last record"},
        {"one.tvd --records 9,10", 1, "starts behind the last record"},
        {"one.tvd --filter Town=x", 1, "The specified variable link name was not found."},
        {"one.tvd --filter City=Oslo", 1, "no record found"},
        {"four.tvd --sort-labels 2", 2, "give the labels across and down"},
        {"four.tvd --sort-labels 2x2,upward", 2, "give the labels across and down"},
        {"four.tvd --sort-labels 3x2", 1, "A sheet of this layout has 4."},
        {"one.tvd --import-table none.txt", 1, "translation table"},
    };
    for (const auto& [options, status, message] : rows) {
        const outcomeRec outcome = run(std::string("merge ") + options + " --data data.csv -o none.pdf");
        EXPECT_EQ(outcome.status, status) << options;
        EXPECT_NE(outcome.messages.find(message), std::string::npos) << options << ": " << outcome.messages;
        EXPECT_FALSE(exists("none.pdf")) << options;
    }
}

}  // namespace
}  // namespace tarnova
