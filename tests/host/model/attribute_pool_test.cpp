#include "host/model/attribute_pool.h"

#include <gtest/gtest.h>

namespace tarnova {
namespace {

double numberIn(const RunAttributes& list, TextAttributeClass kind) {
    const auto* number = dynamic_cast<const NumberAttribute*>(list.QueryByClassID(kind));
    return number == nullptr ? -1 : number->value();
}

TEST(AttributePool, EqualListsAreOneObject) {
    AttributePool pool;
    RunDescription big;
    big.overrides.pointSize = 20;
    EXPECT_EQ(pool.run(big), pool.run(big));
    EXPECT_NE(pool.run(big), pool.plainRun());
    RunDescription named;
    named.characterStyle = 0;
    EXPECT_NE(pool.run(named), pool.plainRun());
    ParagraphAttributes tabs;
    tabs.overrides.tabs = {{20, TabStop::Kind::right}};
    EXPECT_EQ(pool.paragraph(tabs), pool.paragraph(tabs));
    EXPECT_NE(pool.paragraph(tabs), pool.paragraph({}));
    const auto tagged = [&pool](TextAttributeClass store) {
        const TagAttribute::Content content{"Kelvane", "", "", "", 3, "data"};
        return pool.with(*pool.plainRun(), std::make_shared<TagAttribute>(store, content));
    };
    EXPECT_EQ(tagged(TextAttributeClass::kelvaneTag), tagged(TextAttributeClass::kelvaneTag));
    EXPECT_NE(tagged(TextAttributeClass::kelvaneTag), tagged(TextAttributeClass::tallyraTag));
}

TEST(AttributePool, EveryNumberGoesInAndOut) {
    struct testRow {
        TextAttributeClass kind;
        double value, found;
    };
    const testRow rows[] = {{TextAttributeClass::pointSize, 18.5, 18.5}, {TextAttributeClass::baselineShift, -3, -3},
                            {TextAttributeClass::kerning, 40, 40},       {TextAttributeClass::underline, 1, 1},
                            {TextAttributeClass::underline, 0, 0},       {TextAttributeClass::position, 2, 2},
                            {TextAttributeClass::position, 77, 2}};
    AttributePool pool;
    for (const auto& [kind, value, found] : rows) {
        const auto* list = pool.with(*pool.plainRun(), std::make_shared<NumberAttribute>(kind, value));
        EXPECT_EQ(numberIn(*list, kind), found);
        EXPECT_EQ(pool.with(*list, std::make_shared<NumberAttribute>(kind, value)), list);
        EXPECT_EQ(pool.without(*list, kind), pool.plainRun());
    }
}

TEST(AttributePool, TagsOfTheTwoStoresStandSideBySide) {
    AttributePool pool;
    const auto tagOf = [](TextAttributeClass store) {
        return std::make_shared<const TagAttribute>(store, TagAttribute::Content{});
    };
    const auto kelvane = tagOf(TextAttributeClass::kelvaneTag), tallyra = tagOf(TextAttributeClass::tallyraTag);
    const auto* one = pool.with(*pool.plainRun(), kelvane);
    const auto* both = pool.with(*one, tallyra);
    EXPECT_EQ(both->QueryByClassID(TextAttributeClass::kelvaneTag), kelvane.get());
    EXPECT_EQ(both->QueryByClassID(TextAttributeClass::tallyraTag), tallyra.get());
    EXPECT_EQ(pool.without(*both, TextAttributeClass::tallyraTag), one);
}

}  // namespace
}  // namespace tarnova
