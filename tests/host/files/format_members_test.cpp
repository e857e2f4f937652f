#include "host/files/format_members.h"

#include <gtest/gtest.h>

#include "host/files/layout_file.h"
#include "host/model/story_reader.h"
#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

const ParaFormat& paragraphOf(const DocumentModel& document) {
    const Story& story = *document.story(document.stories().at(0));
    return *document.resolvePara(*paragraphAt(*story.content, 0).attributes);
}

/// A layout whose one paragraph has these members.
std::string paragraphWith(const std::string& members) {
    return frameWith(R"([{"text": "a", )" + members + "}]");
}

TEST(FormatMembers, ParagraphFormatsAreReadAndKept) {
    const std::pair<const char*, ParaFormat> rows[] = {
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
        {R"("align": "justifyRight", "letterSpaceLeast": -100, "letterSpaceWanted": 1, "letterSpaceGreatest": 500)",
         {.alignment = Alignment::justifyRight,
          .letterSpaceLeast = -100,
          .letterSpaceWanted = 1,
          .letterSpaceGreatest = 500}},
        {R"("align": "justifyCenter", "glyphScaleLeast": 50, "glyphScaleWanted": 99.5, "glyphScaleGreatest": 200)",
         {.alignment = Alignment::justifyCenter,
          .glyphScaleLeast = 50,
          .glyphScaleWanted = 99.5,
          .glyphScaleGreatest = 200}},
        {R"("keepLines": "ends", "keepFirstLines": 1, "keepLastLines": 50, "keepWithNext": 3)",
         {.keepLines = KeepLines::ends, .keepFirstLines = 1, .keepLastLines = 50, .keepWithNext = 3}},
        {R"("keepLines": "all", "startIn": "nextPage", "gridLines": "first")",
         {.keepLines = KeepLines::all, .startIn = ParagraphStart::nextPage, .gridLines = GridLines::first}},
        {R"("tabs": [{"at": 9, "leader": "·–"}, {"at": 90, "kind": "decimal", "leader": ". ", "alignOn": "×"}, 100])",
         {.tabs = {{9, TabStop::Kind::left, U"\u00B7\u2013"},
                   {90, TabStop::Kind::decimal, U". ", U'\u00D7'},
                   {100, TabStop::Kind::left}}}},
    };
    for (const auto& [members, expected] : rows) {
        const auto document = opened(paragraphWith(members));
        EXPECT_EQ(paragraphOf(*document), expected) << members;
        expectStable(*document);
        EXPECT_EQ(paragraphOf(*opened(writeLayout(*document))), expected) << members;
    }
}

const CharFormat& firstRunOf(const DocumentModel& document) {
    const StoryText& text = *document.story(document.stories().at(0))->content;
    return *document.resolveChar(*paragraphAt(text, 0).attributes, *runAt(text, 0).attributes);
}

TEST(FormatMembers, LinksOfText) {
    const std::string styled = R"({"tarnovaLayout": 1,
        "characterStyles": [{"name": "Site", "link": "https://tarnova.example/"}],
        "pages": [{"items": [{"bounds": [0, 0, 99, 99], "text": [{"text": [{"style": "Site", "text": "a"RUN}]}]}]}]})";
    const std::pair<const char*, const char*> rows[] = {
        {"", "https://tarnova.example/"},
        {R"(, "link": "#page=12")", "#page=12"},
        {R"(, "link": "mailto:ada@tarnova.example?subject=\u00e9")", "mailto:ada@tarnova.example?subject=\u00e9"},
        {R"(, "link": "")", ""},
    };
    for (const auto& [run, link] : rows) {
        std::string layout = styled;
        layout.replace(layout.find("RUN"), 3, run);
        const auto document = opened(layout);
        EXPECT_EQ(firstRunOf(*document).link, link) << run;
        expectStable(*document);
        EXPECT_EQ(firstRunOf(*opened(writeLayout(*document))).link, link) << run;
    }
    layoutError error;
    EXPECT_EQ(readLayout(frameWith("[{\"text\": \"a\",\n\"link\": \"javascript:alert(1)\"}]"), error), nullptr);
    EXPECT_NE(error.message.find("\"link\" must begin with \"http:\""), std::string::npos) << error.message;
}

TEST(FormatMembers, ParagraphFormatsOutsideTheirLimits) {
    const char* const rows[] = {R"("hyphenate": 1)",
                                R"("hyphenWordLetters": 1)",
                                R"("hyphenWordLetters": 65)",
                                R"("hyphenLettersBefore": 0)",
                                R"("hyphenLettersAfter": 65)",
                                R"("hyphensInARow": -1)",
                                R"("hyphensInARow": 101)",
                                R"("hyphensInARow": 1.5)",
                                R"("wordSpaceLeast": -1)",
                                R"("wordSpaceWanted": 1001)",
                                R"("wordSpaceGreatest": 10001)",
                                R"("letterSpaceLeast": -101)",
                                R"("glyphScaleLeast": 49)",
                                R"("glyphScaleGreatest": 201)",
                                R"("keepFirstLines": 0)",
                                R"("keepWithNext": 51)",
                                R"("startIn": "nextLine")",
                                R"("gridLines": true)",
                                R"("leader": "")",
                                R"("leader": "123456789")",
                                R"("leader": "a\tb")",
                                R"("alignOn": "ab")",
                                R"("underlineWeight": -1)"};
    for (const char* member : rows) {
        layoutError error;
        const std::string name = std::string(member).substr(0, std::string(member).find(':'));
        const bool isOfTab = name == "\"leader\"" || name == "\"alignOn\"";
        const std::string tab = std::string(R"("tabs": [{"at": 1, )") + member + "}]";
        EXPECT_EQ(readLayout(paragraphWith(isOfTab ? tab : member), error), nullptr) << member;
        EXPECT_NE(error.message.find(name), std::string::npos) << error.message;
    }
}

TEST(FormatMembers, RulesOfCharactersAreReadAndKept) {
    const auto document = opened(
        paragraphWith(R"("underlineOffset": -2, "underlineWeight": "1mm", "strikeOffset": 3.5, "strikeWeight": 0)"));
    const Story& story = *document->story(document->stories().at(0));
    const CharFormat& format =
        *document->resolveChar(*paragraphAt(*story.content, 0).attributes, *runAt(*story.content, 0).attributes);
    EXPECT_EQ(format.underlineOffset, -2);
    EXPECT_NEAR(*format.underlineWeight, 72 / 25.4, 1e-9);
    EXPECT_EQ(format.strikeOffset, 3.5);
    EXPECT_EQ(format.strikeWeight, 0);
    expectStable(*document);
}

TEST(FormatMembers, ColumnOptionsOfFramesAreReadAndKept) {
    const auto document = opened(pageWith(
        R"({"bounds": [0, 0, 50, 50], "text": "a", "verticalAlign": "justify", "paragraphSpaceLimit": 7,
            "firstBaseline": "xHeight", "leastFirstBaseline": 9, "baselineGrid": {"start": -3, "step": 1}},
           {"bounds": [0, 0, 50, 50], "text": "a"})"));
    const auto optionsOf = [&](std::size_t index) {
        return document->item(document->story(document->stories().at(index))->frames.at(0))->shape->text;
    };
    const TextFrameOptions options = optionsOf(0);
    EXPECT_EQ(options.verticalAlignment, VerticalAlignment::justify);
    EXPECT_EQ(options.paragraphSpaceLimit, 7);
    EXPECT_EQ(options.firstBaseline, FirstBaseline::xHeight);
    EXPECT_EQ(options.leastFirstBaseline, 9);
    EXPECT_EQ(options.grid, (BaselineGrid{-3, 1}));
    EXPECT_EQ(optionsOf(1).grid, std::nullopt);
    expectStable(*document);
}

TEST(FormatMembers, TheDocumentsBaselineGrid) {
    const auto document = opened(R"({"tarnovaLayout": 1, "baselineGrid": {"start": "10mm", "step": 13.5}})");
    EXPECT_NEAR(document->baselineGrid().start, 720 / 25.4, 1e-9);
    EXPECT_EQ(document->baselineGrid().step, 13.5);
    expectStable(*document);
    EXPECT_EQ(writeLayout(*opened(pageWith(""))).find("baselineGrid"), std::string::npos);
    layoutError error;
    EXPECT_EQ(readLayout(R"({"tarnovaLayout": 1, "baselineGrid": {"step": 0.5}})", error), nullptr);
    EXPECT_NE(error.message.find("\"step\""), std::string::npos) << error.message;
}

}  // namespace
}  // namespace tarnova
