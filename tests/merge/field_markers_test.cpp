// Field markers in values: nests, escapes, neighbours, and links that have nothing to say.

#include "merge/field_markers.h"

#include <gtest/gtest.h>

#include "tests/merge/merge_fixture.h"

namespace tarnova {
namespace {

class MarkerTest : public MergeTest {
 protected:
    /// What the markers of a value in the first of two records become.
    std::string expanded(const std::string& value) {
        useData("Value,Name,Empty,Next\n\"" + value + "\",Ada,,one\nplain,Bob,,two\n");
        if (prepare) prepare();
        useTemplate("{Value}");
        const auto texts = merge();
        return texts.empty() ? "" : texts.front();
    }
    std::function<void()> prepare;
};

TEST_F(MarkerTest, BecomeTheValuesOfTheirLinks) {
    const std::pair<const char*, const char*> cases[] = {
        {"Hello <$Name> and <$Name++>", "Hello Ada and Bob"},
        {"[$Name]-[$Next++]", "Ada-two"},
        {"<$Name--><$Name>", "AdaAda"},          // there is none in front of the first
        {"<$Name> [$Name]", "Ada [$Name]"},      // one form at a time
        {"[$Name] <$Name", "Ada <$Name"},        // the other is unfinished
        {"\\<$Name\\> <$Name>", "<$Name> Ada"},  // literal
        {"\\<$Name>", "\\Ada"},                  // a backslash at one end only
        {"<$Na<$Name>me>", "<$NaAdame>"},        // the innermost first
        {"<$>x<$Name>", "<$>xAda"},
        {"<$Unknown> <$Name>", "<$Unknown> Ada"},
        {"costs $5 <no marker>", "costs $5 <no marker>"},
    };
    for (const auto& [value, text] : cases)
        EXPECT_EQ(expanded(value), text) << value;
}

TEST_F(MarkerTest, WithoutDataFollowTheSettingOfTheirLink) {
    const std::pair<std::int16_t, const char*> cases[] = {
        {nodataGlobal, "(none)."}, {nodataPlaceholder, "<$Empty>."}, {nodataDelete, "."}, {nodataCustom, "custom."}};
    for (const auto& [nodata, text] : cases) {
        prepare = [&, setting = nodata] {
            link("Empty").nodata = setting;
            pstrFromView(link("Empty").nodatastring, sizeof(Str31), "custom");
            appPrefs().textDefaults.noData.enable = 1;
            pstrFromView(appPrefs().textDefaults.noData.string, sizeof(Str255), "(none)");
        };
        EXPECT_EQ(expanded("<$Empty>."), text) << nodata;
    }
}

TEST_F(MarkerTest, CanBeCheckedWithoutData) {
    useData("Name,Next\n1,2\n");
    EXPECT_TRUE(fieldMarkersAreKnown(U"<$Name>, <$Next++> and \\<$Other\\>", *definition));
    EXPECT_FALSE(fieldMarkersAreKnown(U"<$Name> <$Other>", *definition));
}

}  // namespace
}  // namespace tarnova
