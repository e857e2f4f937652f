// Where links of a price run have their keys from.

#include "merge/link_keys.h"

#include <gtest/gtest.h>

#include "definitions/definition_state.h"
#include "engine/run/price_run.h"
#include "host/text/composer.h"
#include "merge/link_report.h"
#include "tests/merge/merge_fixture.h"

namespace tarnova {
namespace {

class LinkKeyTest : public MergeTest {
 protected:
    std::string priced() {
        std::uint16_t cancel = 0;
        bool done = false;
        EXPECT_EQ(priceDocument(document->ref(), false, cancel, done, 0), 0);
        EXPECT_EQ(cancel, 0);
        return textsOf(*document).front();
    }
};

TEST_F(LinkKeyTest, AreTheirOwnOrThoseOfOthers) {
    const struct {
        std::int16_t keyType;
        const char *keyLink, *marked, *text;
    } cases[] = {
        {keyTypeOwn, "", "{B2:Price} {zz:Price}", "20 (none)"},
        {keyTypeFirstOnPage, "", "{x:Price} {B2:Key}", "20 B2"},
        {keyTypeFirstOnPage, "Name", "{x:Price} {B2:Key}", "(none) B2"},
        {keyTypeFirstOnSpread, "Key", "{x:Price} {B2:Key} {A1:Key}", "20 B2 A1"},
        {keyTypeTextBefore, "", "{A1:Key} {B2:Key} {x:Price}", "A1 B2 20"},
        {keyTypeTextBefore, "Name", "{B2:Key} {x:Price}", "B2 (none)"},
        {keyTypeTextBehind, "", "{x:Price} {B2:Key}", "Price B2"},  // its text is still "Key": the header
        {keyTypeTextHere, "", "{x:Price}", "77"},
        {keyTypeKeyBefore, "", "{B2:Key} {x:Price}", "B2 20"},
        {keyTypeKeyBehind, "Name", "{x:Price} {A1:Key} {B2:Name}", "20 A1 b"},
        {keyTypeKeyBehind, "", "{x:Price} {y:Price} {A1:Key}", "10 10 A1"},  // over one that looks for a key itself
        {keyTypeKeyBehind, "", "{A1:Key} {x:Price}", "A1 (none)"},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(testing::Message() << expected.keyType << " " << expected.marked);
        useData("Key,Price,Name\nA1,10,a\nB2,20,b\nPrice,77,d\n");
        pstrFromView(appPrefs().textDefaults.noMatch.string, sizeof(Str255), "(none)");
        link("Price").magicKeyNumbers[0] = expected.keyType;
        pstrFromView(link("Price").magicKey, sizeof(Str255), expected.keyLink);
        useTemplate(expected.marked);
        document->setComposer(makeComposer());
        EXPECT_EQ(priced(), expected.text);
    }
}

TEST_F(LinkKeyTest, WaitForTheSecondRoundWhereTheyStandOnThePage) {
    useData("Key,Price\nA1,10\nB2,20\n");
    link("Price").magicKeyNumbers[0] = keyTypeFirstOnPage;
    useTemplate("{x:Price} {B2:Key} {y:Price} {A1:Key}");
    document->setComposer(makeComposer());
    std::string order;
    linkReport().listener = [&](const linkReportRec& seen) {
        order += pstrString(seen.tag.extractionRecordName) + "=" + utf32ToUtf8(seen.newText) + " ";
    };
    EXPECT_EQ(priced(), "20 B2 20 A1");
    linkReport().listener = nullptr;
    EXPECT_EQ(order, "Key=B2 Key=A1 Price=20 Price=20 ");
}

TEST_F(LinkKeyTest, AreNotThoseOfLinksThatWereDeleted) {
    useData("Key,Price,Name\nA1,10,a\nB2,20,\n");
    link("Name").nodata = nodataDelete;
    link("Price").magicKeyNumbers[0] = keyTypeKeyBefore;
    useTemplate("{A1:Key} {B2:Name} {x:Price}");
    EXPECT_EQ(priced(), "A1  10");
}

TEST_F(LinkKeyTest, LoseTheBlanksOfTheirTextButNotTheText) {
    useData("Key,Price\nA1,10\n");
    appPrefs().trimTagText = 1;
    DocumentBuilder builder;
    const UID page = builder.addSinglePage(300, 300);
    const UID frame = builder.addTextFrame(page, {10, 10, 290, 290}, U"at  old\t each    ");
    document = builder.finish();
    const UIDRef story{document.get(), document->textOfFrame(frame)};
    tagRange(story, 2, 6, "A1", "Price");
    tagRange(story, 13, 3, "A1", "Price");
    EXPECT_EQ(priced(), "at  10\t each    ");
    EXPECT_EQ(priced(), "at  10\t each    ");  // the second tag is gone, the first stands as it did
}

TEST_F(LinkKeyTest, TrackerFindsTheFirstInEachOrder) {
    useData("Key,Price\nA1,10\n");
    DocumentBuilder builder;
    const UID page = builder.addSinglePage(300, 300);
    std::vector<UID> frames;
    for (const auto& [x, y] :
         std::initializer_list<std::pair<double, double>>{{100, 100}, {10, 100}, {100, 10}, {10, 10}})
        frames.push_back(builder.addTextFrame(page, {x, y, x + 80, y + 80}, U"link"));
    document = builder.finish();
    document->setComposer(makeComposer());
    const char* const keys[] = {"d", "c", "b", "a"};
    for (std::size_t i = 0; i < frames.size(); ++i)
        tagRange({document.get(), document->textOfFrame(frames[i])}, 0, 4, keys[i], i == 0 ? "Key" : "Price");

    ASSERT_EQ(reselectCurrentRecordDef(0), 0);
    FirstOnLinkTracker tracker(document->ref());
    const auto first = [&](std::int16_t corner, std::int16_t axis, const char* name) {
        tagDataRec tag{};
        const bool found = tracker.firstOnPage(0, {corner, axis}, name, tag);
        EXPECT_EQ(found, tag.searchKey[0] != 0);
        return pstrString(tag.searchKey);
    };
    std::string byHeight, bySide, ofPrice;
    for (std::int16_t corner = 0; corner < 4; ++corner) {
        byHeight += first(corner, 0, "");
        bySide += first(corner, 1, "");
        ofPrice += first(corner, 0, "Price");
    }
    EXPECT_EQ(byHeight, "abcd");
    EXPECT_EQ(bySide, "acbd");
    EXPECT_EQ(ofPrice, "abcc");
    EXPECT_EQ(first(0, 0, "Other"), "");
    ASSERT_EQ(document->moveBy(frames[3], 0, 150), 0);
    EXPECT_EQ(first(0, 0, ""), "a");  // the answer stays
    tagDataRec tag{};
    EXPECT_TRUE(FirstOnLinkTracker(document->ref()).firstOnSpread(0, {}, "", tag));
    EXPECT_EQ(pstrString(tag.searchKey), "b");
    EXPECT_FALSE(tracker.firstOnPage(7, {}, "", tag));
}

TEST_F(LinkKeyTest, PricedTwiceIsPricedOnce) {
    useData("Key,Price,None\nA1,5.00,\nB2,12.50 each,\n");
    Str31 name;
    pstrFromView(name, sizeof(name), "Price");
    styleRec* style = nullptr;
    ASSERT_EQ(insertStyle(*session().currentDefSet, *definition, name, style, 0), 0);
    for (priceGroupRec& group : style->groups) {
        group.price.format = priceFormatAll;
        group.price.specialCents = group.price.underline = 1;
        group.price.centsSize = fixedHundredPercent / 2;
        group.price.centsShift = fixedHundredPercent / 4;
        group.price.centsKerning = -50 * fixedHundredPercent;
        group.currency.enable = group.currency.superior = 1;
        group.currency.symbolKerning = 20 * fixedHundredPercent;
        pstrFromView(group.currency.string, sizeof(group.currency.string), "$");
    }
    styleNext = "Price";
    useTemplate("{A1:Price} and {B2:Price}");
    document->setComposer(makeComposer());
    EXPECT_EQ(priced(), "$500 and $1250 each");
    const auto look = [this] {
        const UID story = document->stories().front();
        std::vector<double> numbers;
        for (std::int32_t at = 0; at < document->totalLength(story); ++at)
            for (const TextAttributeClass kind : {TextAttributeClass::pointSize, TextAttributeClass::baselineShift,
                                                  TextAttributeClass::kerning, TextAttributeClass::position})
                numbers.push_back(document->numberAttributeAt(story, at, kind));
        return numbers;
    };
    const std::vector<double> once = look();
    EXPECT_EQ(priced(), "$500 and $1250 each");
    EXPECT_EQ(look(), once);
    // What stands in for a price begins where its symbol stood, and isn't superior.
    pstrFromView(link("Price").field, sizeof(Str31), "None");
    EXPECT_EQ(priced(), "[No Data] and [No Data]");
    const UID story = document->stories().front();
    EXPECT_EQ(document->numberAttributeAt(story, 0, TextAttributeClass::position), 0);
    EXPECT_EQ(document->numberAttributeAt(story, 0, TextAttributeClass::kerning), 0);
}

}  // namespace
}  // namespace tarnova
