// `tarnova describe` as a person calls it.

#include "tests/cli/program_fixture.h"

namespace tarnova {
namespace {

class DescribeVerb : public ProgramTest {
 protected:
    DescribeVerb() {
        write("two.tvd", R"({"tarnovaLayout": 1, "pageSize": [200, 100], "pages": [{"uid": 10, "items": [
            {"uid": 11, "name": "head", "bounds": [10, 20, 180, 50], "text": "Dear {{name}}"}]}, {"uid": 20, "items": [
            {"uid": 21, "name": "tight", "bounds": [10, 10, 60, 20], "text": "Second page with too many words"}]}],
            "sections": [{"page": 2, "prefix": "A-", "startNumber": 4, "includePrefix": true}]})");
    }
    /// The answer in JSON holds these pieces, in this order.
    void expect(const std::string& arguments, std::initializer_list<const char*> pieces) {
        const outcomeRec outcome = run("describe " + arguments + " --json");
        EXPECT_EQ(outcome.status, 0) << outcome.messages;
        std::size_t at = 0;
        for (const char* piece : pieces) {
            const std::size_t found = outcome.output.find(piece, at);
            EXPECT_NE(found, std::string::npos) << piece << " in " << outcome.output.substr(at);
            if (found != std::string::npos) at = found;
        }
    }
};

TEST_F(DescribeVerb, TellsPagesItemsAndStoriesByTheirUids) {
    expect("two.tvd", {R"({"pages":[{"uid":10,"index":0,"name":"1",)",
                       R"({"uid":20,"index":1,"name":"A-4","size":[200.0,100.0],"spread":)", R"("layers":[{)",
                       R"("name":"Layer 1","visible":true,"locked":false,"printable":true}],"items":[)",
                       R"({"uid":11,"class":"splineItem","parent":)",
                       R"("page":10,"bounds":[10.0,20.0,190.0,70.0],"name":"head","story":)", R"("stories":[)",
                       R"("frames":[11],"length":10,"overset":false,"text":"Dear name\r"})",
                       R"("frames":[21],"length":32,"overset":true,)", R"("tags":[)", R"("link":"name",)",
                       R"("tables":[],"itemData":[)"});
    write("path.tvd", R"({"tarnovaLayout": 1, "pages": [{"items": [{"uid": 30, "kind": "line", "bounds": [0, 50, 90, 0],
        "pathText": {"text": "along a line that is too short for it"}}]}]})");
    expect("path.tvd", {R"({"uid":30,)", R"(,"pathStory":)", R"("frames":[30],)", R"("overset":true)"});
}

TEST_F(DescribeVerb, TellsOnlyThePartThatIsWanted) {
    expect("two.tvd --what layers", {R"({"layers":[{"uid":)", "\"printable\":true}]}\n"});
    const outcomeRec lines = run("describe two.tvd --what stories");
    EXPECT_EQ(lines.status, 0);
    EXPECT_EQ(lines.output.substr(0, 13), "stories:\nuid ") << lines.output;
    EXPECT_NE(lines.output.find("overset yes, text \"Second page with too many words \"\n"), std::string::npos)
        << lines.output;
    const std::string tags = run("describe two.tvd --what tags").output;
    EXPECT_EQ(tags, "tags:\n" + run("tags list two.tvd").output);
}

TEST_F(DescribeVerb, TellsTheEntriesOfItemData) {
    // A frame named in one entry of three bytes, and a block whose size is wrong.
    write("data.tvd", R"({"tarnovaLayout": 1, "pageSize": [200, 100], "pages": [{"items": [
        {"uid": 40, "bounds": [0, 0, 10, 10], "data": {"kelvane": "AAAACwAAAAEAAAADYXFtSmFiYw=="}},
        {"uid": 50, "bounds": [0, 0, 10, 10], "data": {"tallyra": "AAAAZAAAAAE="}}]}]})");
    expect("data.tvd --what itemData",
           {R"({"itemData":[{"owner":40,"store":"Kelvane","type":"aqmJ","size":3},)"
            R"({"owner":50,"store":"Tallyra","error":"the sizes of the block don't hold"}]})"});
}

TEST_F(DescribeVerb, WrongUseIsTold) {
    const outcomeRec part = run("describe two.tvd --what colours");
    EXPECT_EQ(part.status, 2);
    EXPECT_NE(part.messages.find("--what"), std::string::npos) << part.messages;
    const outcomeRec gone = run("describe none.tvd");
    EXPECT_EQ(gone.status, 1);
    EXPECT_EQ(gone.output, "");
    EXPECT_NE(gone.messages.find("none.tvd"), std::string::npos) << gone.messages;
}

}  // namespace
}  // namespace tarnova
