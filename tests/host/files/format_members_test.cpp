#include "host/files/format_members.h"

#include <gtest/gtest.h>

#include "host/files/layout_file.h"
#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

const ParaFormat& paragraphOf(const DocumentModel& document) {
    const Story& story = *document.story(document.stories().at(0));
    return *document.resolvePara(*story.content->paragraphs.at(0).attributes);
}

/// A layout whose one paragraph has these members.
std::string paragraphWith(const std::string& members) {
    return frameWith(R"([{"text": "a", )" + members + "}]");
}

TEST(FormatMembers, ParagraphFormatsAreReadAndKept) {
    struct Row {
        const char* members;
        ParaFormat expected;
    };
    const Row rows[] = {
        {R"("align": "left")", {}},
        {R"("hyphenate": true, "hyphenWordLetters": 64, "hyphenLettersBefore": 1, "hyphenLettersAfter": 9,
            "hyphensInARow": 0)",
         {.hyphenate = true,
          .hyphenWordLetters = 64,
          .hyphenLettersBefore = 1,
          .hyphenLettersAfter = 9,
          .hyphensInARow = 0}},
        {R"("wordSpaceLeast": 0, "wordSpaceWanted": 87.5, "wordSpaceGreatest": 10000)",
         {.wordSpaceLeast = 0, .wordSpaceWanted = 87.5, .wordSpaceGreatest = 10000}},
    };
    for (const Row& row : rows) {
        const auto document = opened(paragraphWith(row.members));
        EXPECT_EQ(paragraphOf(*document), row.expected) << row.members;
        expectStable(*document);
        EXPECT_EQ(paragraphOf(*opened(writeLayout(*document))), row.expected) << row.members;
    }
}

TEST(FormatMembers, ParagraphFormatsOutsideTheirLimits) {
    const char* const rows[] = {
        R"("hyphenate": 1)",           R"("hyphenWordLetters": 1)",     R"("hyphenWordLetters": 65)",
        R"("hyphenLettersBefore": 0)", R"("hyphenLettersAfter": 65)",   R"("hyphensInARow": -1)",
        R"("hyphensInARow": 101)",     R"("hyphensInARow": 1.5)",       R"("wordSpaceLeast": -1)",
        R"("wordSpaceWanted": 1001)",  R"("wordSpaceGreatest": 10001)",
    };
    for (const char* member : rows) {
        layoutError error;
        EXPECT_EQ(readLayout(paragraphWith(member), error), nullptr) << member;
        const std::string name = std::string(member).substr(0, std::string(member).find(':'));
        EXPECT_NE(error.message.find(name), std::string::npos) << error.message;
    }
}

}  // namespace
}  // namespace tarnova
