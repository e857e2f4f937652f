// Text links merged through a whole run into a built document: data file, index, walk, replacement, paragraphs.

#include "merge/pull_story_callback.h"

#include "tests/merge/merge_fixture.h"

namespace tarnova {
namespace {

using testing::ElementsAre;

TEST_F(MergeTest, EachRecordFillsItsOwnCopy) {
    EXPECT_THAT(
        mergeOne("Name,City\nAnna,Rome\nBartholomew,Oslo\nC,Bern\n", "Dear {Name} of {City}, {Name}!"),
        ElementsAre("Dear Anna of Rome, Anna!", "Dear Bartholomew of Oslo, Bartholomew!", "Dear C of Bern, C!"));
    EXPECT_EQ(error, 0);
    EXPECT_EQ(document->pageCount(), 3);
    ASSERT_TRUE(document->undoNamedStep(PMString::ofKey("kZavoKelvaneMergeResultsFileBuildDocKey").view()));
    EXPECT_EQ(document->pageCount(), 1);
}

TEST_F(MergeTest, TagsStaySoThatTheNextRunMergesAgain) {
    EXPECT_THAT(mergeOne("Name\nAnna\n", "<{Name}>"), ElementsAre("<Anna>"));
    useData("Name\nBo\n");
    EXPECT_THAT(merge(), ElementsAre("<Bo>"));
}

TEST_F(MergeTest, AwkwardValuesComeOutRight) {
    struct testRow {
        const char* name;
        const char* data;
        const char* want;
    };
    const testRow rows[] = {
        {"quotes doubled", "A,B\n\"say \"\"hi\"\"\",\"x\"\n", "say \"hi\"-x"},
        {"delimiter in quotes", "A,B\n\"a,b\",x\n", "a,b-x"},
        {"line end in quotes", "A,B\n\"a\nb\",x\n", "a|b-x"},
        {"CR LF in quotes", "A,B\r\n\"a\r\nb\",x\r\n", "a|b-x"},
        {"blanks around", "A,B\n  a b  ,x\n", "a b-x"},
        {"UTF-8", "A,B\nÅsa Łódź 日本,x\n", "Åsa Łódź 日本-x"},
        {"UTF-8 with a mark",
         "\xEF\xBB\xBF"
         "A,B\nÅ,x\n",
         "Å-x"},
        {"Windows-1252", "A,B\n\xC5sa \x80 \x96,x\n", "Åsa € –-x"},
        {"semicolon in a tab file", "A\tB\na;b\tx\n", "a;b-x"},
    };
    for (const testRow& row : rows)
        EXPECT_THAT(mergeOne(row.data, "{A}-{B}"), ElementsAre(row.want)) << row.name;
}

TEST_F(MergeTest, NoDataByEachSetting) {
    struct testRow {
        const char* name;
        std::int16_t nodata, deleteline;
        const char* marked;
        const char* want;
    };
    const testRow rows[] = {
        {"default text", nodataGlobal, 0, "a|{A}|b", "a|none|b"},
        {"leave the placeholder", nodataPlaceholder, 0, "a|{A}|b", "a|A|b"},
        {"own text", nodataCustom, 0, "a|{A}|b", "a|own|b"},
        {"delete the text", nodataDelete, 0, "a|{A}|b", "a||b"},
        {"delete a blank line", nodataDelete, 1, "a|{A}|b", "a|b"},
        {"two links, one line", nodataDelete, 1, "a|{A} {A}|b", "a|b"},
        {"a line with other text", nodataDelete, 1, "a|x{A}|b", "a|x|b"},
        {"delete the line in any case", nodataDelete, 2, "a|x{A}y|b", "a|b"},
        {"first line", nodataDelete, 1, "{A}|b", "b"},
        {"last line keeps the closing mark", nodataDelete, 1, "a|{A}", "a|"},
        {"several lines", nodataDelete, 1, "{A}|x{B}|{A}|{A}|y", "xb|y"},
        {"missing last field", nodataDelete, 1, "{B}|{C}|y", "b|y"},
    };
    for (const testRow& row : rows) {
        useData("A,B,C\n,b\n");
        for (const char* name : {"A", "B", "C"}) {
            link(name).nodata = row.nodata;
            link(name).deleteline = row.deleteline;
            pstrFromView(link(name).nodatastring, sizeof(Str31), "own");
        }
        pstrFromView(appPrefs().textDefaults.noData.string, sizeof(Str255), "none");
        std::string marked = row.marked;
        for (char& c : marked)
            c = c == '|' ? '\r' : c;
        useTemplate(marked);
        EXPECT_THAT(merge(), ElementsAre(row.want)) << row.name;
        EXPECT_EQ(error, 0) << row.name;
    }
}

TEST_F(MergeTest, PrefixAndSuffixOnlyAroundAValue) {
    useData("A,B\nx,\n");
    for (const char* name : {"A", "B"}) {
        link(name).prefix.enable = 1;
        pstrFromView(link(name).prefix.string, sizeof(Str255), "«");
        link(name).suffix.enable = 1;
        pstrFromView(link(name).suffix.string, sizeof(Str255), "»");
        link(name).nodata = nodataCustom;
    }
    useTemplate("{A}{B}.");
    EXPECT_THAT(merge(), ElementsAre("«x»."));
}

TEST_F(MergeTest, ValuesAndTheArticlesThatTheyNameAreImported) {
    const std::string article = (folder / "article.txt").string();
    std::ofstream(article, std::ios::binary) << "\xEF\xBB\xBFÅ\nsecond";
    const struct {
        std::int16_t importFilter;
        std::uint8_t isafile;
        std::string value, text;
    } cases[] = {
        {3, 0, "plain", "<plain>"},
        {0, 1, article, "<Å|second>"},
        {0, 1, article + "x", "<A>"},  // it isn't there, and the run goes on
        {0, 0, article, "<" + article + ">"},
    };
    for (const auto& imported : cases) {
        SCOPED_TRACE(imported.value);
        useData("A\n" + imported.value + "\n");
        link("A").importFilter = imported.importFilter;
        link("A").isafile = imported.isafile;
        useTemplate("<{A}>");
        EXPECT_THAT(merge(), ElementsAre(imported.text));
        useData("A\nagain\n");
        EXPECT_THAT(merge(), ElementsAre("<again>")) << "the link is still there";
    }
    useData("A\n{\\rtf1 x}\n");
    link("A").importFilter = importFilterRtf;
    useTemplate("<{A}>");
    merge();
    EXPECT_EQ(error, errImportFilter);
}

TEST_F(MergeTest, LockedAndIgnoredLinksKeepTheirText) {
    lockNext = true;
    EXPECT_THAT(mergeOne("A\nx\n", "{A}."), ElementsAre("A."));
    lockNext = false;
    useTemplate("{A}.");
    link("A").locked = 1;
    EXPECT_THAT(merge(), ElementsAre("A."));
    link("A").locked = 0;
    link("A").ignoreLink = 1;
    EXPECT_THAT(merge(), ElementsAre("A."));
}

TEST_F(MergeTest, SeveralRecordsOnAPageAndBlanksBehindTheLast) {
    useData("A\nr1\nr2\nr3\nr4\nr5\n");
    useTemplate("{A} {2:A} {3:A}.");
    appPrefs().textDefaults.endOfFile.string[0] = 0;
    EXPECT_THAT(merge(), ElementsAre("r1 r2 r3.", "r4 r5 ."));
}

TEST_F(MergeTest, ARangeSaysWhichPagesThereAre) {
    useData("A\nr1\nr2\nr3\nr4\nr5\n");
    useTemplate("{A} {2:A}.");
    appPrefs().textDefaults.endOfFile.string[0] = 0;
    firstRecord = 2;
    lastRecord = 4;
    EXPECT_THAT(merge(), ElementsAre("r2 r3.", "r4 r5.")) << "the last page is filled up from behind the range";

    firstRecord = 6;
    lastRecord = 9;
    merge();
    EXPECT_EQ(error, errRangeBehindEnd);
}

TEST_F(MergeTest, AnUnknownLinkEndsTheRunWithItsName) {
    mergeOne("A\nr1\nr2\n", "{A} {Nobody}");
    ASSERT_EQ(alerts.shown.size(), 1U);
    EXPECT_EQ(alerts.shown[0].number, errTagRefused);
    EXPECT_THAT(alerts.shown[0].text, testing::HasSubstr("Nobody"));
    EXPECT_EQ(session().jobCancelled, 1);
}

TEST_F(MergeTest, ATemplateWithoutLinksIsRefused) {
    mergeOne("A\nr1\n", "plain");
    EXPECT_EQ(error, errNoLinks);
}

}  // namespace
}  // namespace tarnova
