// Catalogs updated by the program, in place and to other files.

#include <gmock/gmock.h>

#include "tests/cli/program_fixture.h"

namespace tarnova {
namespace {

using testing::HasSubstr;

class PriceVerbTest : public ProgramTest {
 protected:
    PriceVerbTest() {
        std::string pages;
        for (const char* const key : {"A1", "B2", "C3", "Z9"}) {
            pages += pages.empty() ? "" : ",";
            pages += std::string(R"({"items": [{"bounds": [50, 50, 300, 50], "text": [{"text": ["at ", {"text": "9.50",
"tallyraTag": {"link": "Price", "key": ")") +
                     key + R"("}}, " on ", {"text": "?", "tallyraTag": {"link": "_YEAR"}}]}]}]})";
        }
        write("catalog.tvd", R"({"tarnovaLayout": 1, "pages": [)" + pages + "]}");
        write("list.csv", "Name,No,Price\nHammer,A1,12.50\nSaw,B2,9.50\nAxe,C3,\n");
    }
    std::string textOf(const std::string& layout) {
        EXPECT_EQ(run("render " + layout + " -o seen.pdf").status, 0);
        return shell("pdftotext seen.pdf - | grep -o 'at .* on' | tr '\\n' ' '").output;
    }
};

TEST_F(PriceVerbTest, UpdatesInPlaceUntilNothingChanges) {
    const outcomeRec first = run("price catalog.tvd --data list.csv --key No --json");
    ASSERT_EQ(first.status, 0) << first.messages;
    EXPECT_EQ(first.output,
              "{\"outputs\":[\"catalog.tvd\"],\"links\":8,\"changed\":5,\"unchanged\":1,\"emptied\":1,\"refused\":0,"
              "\"withoutRecord\":1,\"keysWithoutRecord\":[\"Z9\"],\"oversetStories\":0}\n");
    EXPECT_THAT(first.messages, HasSubstr("list.csv: no record has the key \"Z9\""));
    EXPECT_EQ(textOf("catalog.tvd"), "at 12.50 on at 9.50 on at [No Data] on at [No Match] on ");
    const std::string updated = read("catalog.tvd");
    EXPECT_THAT(run("price catalog.tvd --data list.csv --key No").output,
                HasSubstr("8 links: 0 changed, 7 unchanged, 0 emptied, 1 without a record"));
    EXPECT_EQ(read("catalog.tvd"), updated);
}

TEST_F(PriceVerbTest, TakesPagesAndKeepsWhatHasNoRecord) {
    const std::string before = read("catalog.tvd");
    ASSERT_EQ(run("price catalog.tvd --data list.csv --key No --keep-missing --pages 2- -o a.tvd -o a.pdf").status, 0);
    EXPECT_TRUE(exists("a.pdf"));
    EXPECT_EQ(textOf("a.tvd"), "at 9.50 on at 9.50 on at [No Data] on at 9.50 on ");
    EXPECT_EQ(run("price catalog.tvd --data list.csv --key No --kinds frame -o b.tvd").output,
              "b.tvd: 0 links: 0 changed, 0 unchanged, 0 emptied, 0 without a record\n");
    EXPECT_EQ(read("catalog.tvd"), before);
}

TEST_F(PriceVerbTest, SaysWhatIsWrong) {
    write("plain.tvd", R"({"tarnovaLayout": 1, "pages": [{"items": []}]})");
    write("other.csv", "No,Cost\nA1,1\n");
    const std::string before = read("catalog.tvd");
    const struct {
        const char* arguments;
        int status;
        const char* message;
    } cases[] = {
        {"catalog.tvd --data list.csv --key Number", 1, "list.csv: no field \"Number\""},
        {"catalog.tvd --data none.csv", 1, "none.csv: no such data file"},
        {"catalog.tvd --data other.csv", 1, "the link \"Price\" isn't in the definition of other.csv"},
        {"plain.tvd --data list.csv", 1, "plain.tvd: it has no links of price mode"},
        {"catalog.tvd --data list.csv --pages 5", 2, "catalog.tvd: there is no page 5"},
        {"catalog.tvd --data list.csv --pages 1,3", 2, "only pages that follow each other"},
        {"catalog.tvd --data list.csv --kinds picture", 2, "--kinds: "},
        {"catalog.tvd --data list.csv -o list.doc", 2, "list.doc: the output's name must end in .tvd"},
        {"catalog.tvd --data list.csv --key No -o missing/list.tvd", 1, "missing/list.tvd: "},
    };
    for (const auto& wrong : cases) {
        const outcomeRec outcome = run(std::string("price ") + wrong.arguments);
        EXPECT_EQ(outcome.status, wrong.status) << wrong.arguments;
        EXPECT_THAT(outcome.messages, HasSubstr(wrong.message)) << wrong.arguments;
        EXPECT_EQ(outcome.output, "");
    }
    EXPECT_EQ(read("catalog.tvd"), before);
}

}  // namespace
}  // namespace tarnova
