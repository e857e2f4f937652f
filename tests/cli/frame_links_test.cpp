// Links on frames as a person makes and merges them.

#include <rapidjson/document.h>

#include "tests/cli/program_fixture.h"

namespace tarnova {
namespace {

class FrameLinks : public ProgramTest {
 protected:
    outcomeRec mergeCountries(const std::string& more) {
        const std::string example = source("examples/countries/");
        return run("merge " + example + "countries.tvd --data " + example + "countries.csv --ddf " + example +
                   "countries.ddf " + more);
    }
};

TEST_F(FrameLinks, PicturesThatCantBeShownAreToldWithAnyNumberOfJobs) {
    const std::string flags = " --search-path " + source("examples/countries/flags");
    struct testRow {
        const char* options;
        unsigned times;  // that each of the two shows up
    };
    // With a step of 1 each record stands on ten pages, too many for one chunk.
    const testRow rows[] = {
        {"-o cards.pdf", 1}, {"-o cards.tvd", 1}, {"--step 1 -o one.pdf", 10}, {"--step 1 --jobs 2 -o many.pdf", 10}};
    for (const testRow& row : rows) {
        const outcomeRec outcome = mergeCountries("--json" + flags + " " + row.options);
        EXPECT_EQ(outcome.status, 0) << row.options;
        rapidjson::Document json;
        ASSERT_FALSE(json.Parse(outcome.output).HasParseError()) << row.options << outcome.messages;
        EXPECT_EQ(json["records"].GetUint(), 68U) << row.options;
        EXPECT_EQ(json["missingPictures"].GetUint(), row.times) << row.options;
        EXPECT_EQ(json["damagedPictures"].GetUint(), row.times) << row.options;
        EXPECT_NE(outcome.messages.find("missing: na.png (record 39"), std::string::npos) << outcome.messages;
        EXPECT_NE(outcome.messages.find("li.png"), std::string::npos) << outcome.messages;
    }
    EXPECT_TRUE(read("one.pdf") == read("many.pdf"));
    const outcomeRec nowhere = mergeCountries("-o none.pdf --search-path /nowhere");
    EXPECT_EQ(nowhere.status, 1);
    EXPECT_NE(nowhere.messages.find("/nowhere: no folder"), std::string::npos) << nowhere.messages;
    EXPECT_FALSE(exists("none.pdf"));
}

TEST_F(FrameLinks, SetAndShow) {
    write("card.tvd", R"({"tarnovaLayout": 1, "pageSize": [200, 200], "pages": [{"items": [
        {"uid": 500, "bounds": [10, 10, 90, 60], "content": "graphic"},
        {"uid": 501, "bounds": [10, 90, 90, 60], "text": ["a word or two"], "storyUid": 600}]}]})");
    struct testRow {
        const char* set;
        const char* show;
        const char* want;
    };
    const testRow rows[] = {
        {"--frame 500 --link Photo --key 2 --locked --pdf-page 3", "--frame 500", "link: Photo\nkey: 2\npdfPage: 3\n"},
        {"--story 600 --start 2 --length 4 --link Word", "--story 600",
         "link: Word\nkey: 1\nstart: 2\nlength: 4\ntext: word\n"},
        {"--price --frame 500 --link Photo --key A1", "--price --frame 500", "link: Photo\nkey: A1\n"},
    };
    for (const testRow& row : rows) {
        const outcomeRec set = run(std::string("tags set card.tvd -o card.tvd ") + row.set);
        EXPECT_EQ(set.status, 0) << set.messages;
        const outcomeRec show = run(std::string("tags show card.tvd ") + row.show);
        EXPECT_EQ(show.output.substr(0, std::string_view(row.want).size()), row.want) << show.messages;
    }
    struct failureRow {
        const char* arguments;
        int status;
        const char* message;
    };
    const failureRow failures[] = {
        {"set card.tvd -o x.tvd --link A", 2, "--frame UID, or --story UID"},
        {"set card.tvd -o x.tvd --link A --story 600", 2, "--length N"},
        {"set card.tvd -o x.tvd --link A --frame 9", 1, "there is no frame 9"},
        {"show card.tvd --frame 501", 1, "frame 501 has no link there"},
    };
    for (const failureRow& row : failures) {
        const outcomeRec outcome = run(std::string("tags ") + row.arguments);
        EXPECT_EQ(outcome.status, row.status) << row.arguments;
        EXPECT_NE(outcome.messages.find(row.message), std::string::npos) << outcome.messages;
        EXPECT_FALSE(exists("x.tvd"));
    }
}

}  // namespace
}  // namespace tarnova
