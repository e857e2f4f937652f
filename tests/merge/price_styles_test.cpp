// Prices through a merge: what a style makes of values, and how the parts of a price look.

#include <gtest/gtest.h>

#include "merge/price_format.h"
#include "tests/merge/merge_fixture.h"

namespace tarnova {
namespace {

struct symbolCase {
    const char* text = "";
    bool behind = false;
};

class PriceTest : public MergeTest {
 protected:
    /// Merges one record for each value into "{V}" with the style that `set` fills in; what stands on the pages.
    template <typename Set>
    std::vector<std::string> merged(const std::vector<std::string>& values, const Set& set) {
        std::string data = "V\n";
        for (const std::string& value : values)
            data += "\"" + value + "\"\n";
        useData(data);
        Str31 name;
        pstrFromView(name, sizeof(name), "Price");
        styleRec* style = nullptr;
        EXPECT_EQ(insertStyle(*session().currentDefSet, *definition, name, style, 0), 0);
        style->checkPrice = 0;
        set(*style);
        styleNext = "Price";
        useTemplate("{V}");
        styleNext.clear();
        return merge();
    }

    static void setGroups(styleRec& style, std::int16_t format, std::int16_t useRadix, symbolCase symbol) {
        for (priceGroupRec& group : style.groups) {
            group.price.format = format;
            group.price.useRadix = useRadix;
            group.currency.enable = symbol.text[0] != 0 ? 1 : 0;
            group.currency.insAfter = symbol.behind ? 1 : 0;
            pstrFromView(group.currency.string, sizeof(group.currency.string), symbol.text);
        }
    }

    double at(std::size_t page, std::int32_t position, TextAttributeClass kind) const {
        return document->numberAttributeAt(document->stories()[page], position, kind);
    }
};

TEST_F(PriceTest, TakesNumbersApartAndPutsThemTogether) {
    const std::vector<std::string> values = {"12.50",  "12.50 each", "12.5",           "1,234.56", "12.50 each v1.2",
                                             "12.50 ", ".99",        "12.50each 3.00", "free",     "7"};
    const struct {
        std::int16_t format, useRadix;
        symbolCase symbol;
        std::vector<std::string> texts;
    } cases[] = {
        {priceFormatAll,
         0,
         {},
         {"1250", "1250 each", "12.5", "1,23456", "12.50 each v1.2", "1250", "99", "12.50each 300", "free", "7"}},
        {priceFormatAll,
         1,
         {},
         {"12.50", "12.50 each", "12.5", "1,234.56", "12.50 each v1.2", "12.50", ".99", "12.50each 3.00", "free", "7"}},
        {priceFormatAll,
         2,
         {"€ ", false},
         {"€ 12,50", "€ 12,50 each", "12.5", "€ 1,234,56", "12.50 each v1.2", "€ 12,50", "€ ,99", "€ 12.50each 3,00",
          "free", "7"}},
        {priceFormatAll,
         4,
         {},
         {"12,50", "12,50 each", "12.5", "1,234,56", "12.50 each v1.2", "12,50", ",99", "12.50each 3,00", "free", "7"}},
        {priceFormatDollars,
         0,
         {},
         {"12", "12", "12.5", "1,234", "12.50 each v1.2", "12", "", "12.50each 3", "free", "7"}},
        {priceFormatCents, 0, {}, {"50", "50 each", "12.5", "56", "12.50 each v1.2", "50", "99", "00", "free", "7"}},
        {priceFormatNone,
         0,
         {"$", false},
         {"$12.50", "$12.50 each", "$12.5", "$1,234.56", "$12.50 each v1.2", "$12.50", "$.99", "$12.50each 3.00",
          "$free", "$7"}},
        {priceFormatAll,
         1,
         {" EUR", true},
         {"12.50 EUR", "12.50 EUR each", "12.5", "1,234.56 EUR", "12.50 each v1.2", "12.50 EUR", ".99 EUR",
          "12.50each 3.00 EUR", "free", "7"}},
        {9, 0, {}, values},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(testing::Message() << "format " << expected.format << ", radix " << expected.useRadix);
        std::vector<std::string> texts = expected.texts;
        if (expected.format == 9) texts[5] = "12.50";  // the merge trims values
        EXPECT_EQ(
            merged(values,
                   [&](styleRec& style) { setGroups(style, expected.format, expected.useRadix, expected.symbol); }),
            texts);
    }
}

TEST_F(PriceTest, ChoosesTheGroupByDollarsAndCents) {
    const auto set = [](styleRec& style) {
        style.checkPrice = 1;
        setGroups(style, priceFormatNone, 0, {"o", false});
        pstrFromView(style.groups[priceCaseOnlyCents].currency.string, 256, "c");
        pstrFromView(style.groups[priceCaseOnlyDollars].currency.string, 256, "d");
    };
    EXPECT_EQ(merged({"12.50", "0.99", ".99", "12.00", "0.00", "000.10", "12.5", "7"}, set),
              (std::vector<std::string>{"o12.50", "c0.99", "c.99", "d12.00", "o0.00", "c000.10", "12.5", "c7"}));
}

TEST_F(PriceTest, LeavesSymbolsThatStandThereAndBlanksOnRequest) {
    const auto before = [](styleRec& style) { setGroups(style, priceFormatAll, 1, {"$", false}); };
    EXPECT_EQ(merged({"$12.50", "12.50"}, before), (std::vector<std::string>{"$12.50", "$12.50"}));
    const auto behind = [](styleRec& style) { setGroups(style, priceFormatAll, 2, {"€", true}); };
    EXPECT_EQ(merged({"12.50 €", "12.50"}, behind), (std::vector<std::string>{"12,50 €", "12,50€"}));
    appPrefs().priceTrailingText = 0;
    EXPECT_EQ(merged({"12.50 €", "12.50"}, behind), (std::vector<std::string>{"12.50 €", "12,50€"}));
}

TEST_F(PriceTest, SetsCentsAndSymbolApart) {
    const auto set = [](styleRec& style) {
        setGroups(style, priceFormatAll, 3, {"$", false});
        for (priceGroupRec& group : style.groups) {
            group.price.specialCents = group.price.underline = 1;
            group.price.centsSize = fixedHundredPercent / 10;
            group.price.centsShift = fixedHundredPercent / 2;
            group.price.centsKerning = -20 * fixedHundredPercent;
            group.currency.sizeSymbol = 1;
            group.currency.symbolSize = 100 * fixedHundredPercent;
            group.currency.symbolShift = fixedHundredPercent / 4;
            group.currency.symbolKerning = 30 * fixedHundredPercent;
        }
    };
    using enum TextAttributeClass;
    ASSERT_EQ(merged({"123.45 each"}, set), (std::vector<std::string>{"$123.45 each"}));
    const double size = at(0, 1, pointSize);
    EXPECT_EQ(at(0, 0, pointSize), 720);  // 100 times as large is cut
    EXPECT_EQ(at(0, 0, baselineShift), size / 4);
    EXPECT_EQ(at(0, 0, kerning), 30);
    EXPECT_EQ(at(0, 3, kerning), -20);
    for (const std::int32_t i : {4, 5, 6}) {  // the radix goes with the cents
        EXPECT_EQ(at(0, i, pointSize), 2);    // a tenth is too small
        EXPECT_EQ(at(0, i, baselineShift), size / 2);
        EXPECT_EQ(at(0, i, underline), 1);
    }
    EXPECT_EQ(at(0, 7, underline), 0);
    EXPECT_EQ(at(0, 7, pointSize), size);
}

TEST_F(PriceTest, RaisesWhatHasNoSizesOfItsOwn) {
    const auto set = [](styleRec& style) {
        setGroups(style, priceFormatAll, 0, {"€", true});
        for (priceGroupRec& group : style.groups)
            group.currency.superior = 1;
    };
    ASSERT_EQ(merged({"12.50 each"}, set), (std::vector<std::string>{"1250€ each"}));
    const auto raised = static_cast<double>(TextPosition::superscript);
    std::vector<double> positions;
    for (std::int32_t i = 0; i < 6; ++i)
        positions.push_back(at(0, i, TextAttributeClass::position));
    // What trails the symbol goes with it.
    EXPECT_EQ(positions, (std::vector<double>{0, 0, raised, raised, raised, raised}));
}

}  // namespace
}  // namespace tarnova
