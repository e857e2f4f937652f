// Where a range of a text stands on its spread, and the numbers in force at its characters.

#include <gtest/gtest.h>

#include "host/model/document_builder.h"
#include "host/text/composer.h"

namespace tarnova {
namespace {

struct TextBoundsTest : testing::Test {
    void make(std::u32string_view text) {
        DocumentBuilder builder;
        const UID page = builder.addSinglePage(400, 400);
        frame = builder.addTextFrame(page, {100, 50, 220, 200}, text);
        document = builder.finish();
        document->setComposer(makeComposer());
        story = document->textOfFrame(frame);
    }
    PMRect bounds(std::int32_t start, std::int32_t count) {
        return document->textBounds(story, start, count).value_or(PMRect{});
    }

    std::unique_ptr<DocumentModel> document;
    UID frame = kInvalidUID, story = kInvalidUID;
};

TEST_F(TextBoundsTest, CoverTheLinesOfARange) {
    make(U"one two\rthree");
    const PMRect one = bounds(0, 3), two = bounds(4, 3), three = bounds(8, 5);
    EXPECT_DOUBLE_EQ(one.left, 100);
    EXPECT_GT(two.left, one.right);  // a space lies between
    EXPECT_DOUBLE_EQ(one.top, two.top);
    EXPECT_DOUBLE_EQ(three.left, 100);
    EXPECT_NEAR(three.top - one.top, 12, 0.01);  // a line of 10 points
    EXPECT_EQ(bounds(0, 13), one.united(two).united(three));
    EXPECT_FALSE(document->textBounds(story, 7, 1).has_value());  // the return shows nothing
    EXPECT_FALSE(document->textBounds(story, 14, 3).has_value());
}

TEST_F(TextBoundsTest, FollowTheirFrame) {
    make(U"one two");
    const PMRect before = bounds(4, 3);
    ASSERT_EQ(document->moveBy(frame, 7, -5), 0);
    EXPECT_EQ(bounds(4, 3), (PMRect{before.left + 7, before.top - 5, before.right + 7, before.bottom - 5}));
    ASSERT_EQ(document->moveBy(frame, -7, 5), 0);
    ASSERT_EQ(document->rotateBy(frame, 90), 0);
    const PMRect turned = bounds(4, 3);
    EXPECT_NEAR(turned.height(), before.width(), 1e-9);
    EXPECT_NEAR(turned.width(), before.height(), 1e-9);
}

TEST_F(TextBoundsTest, LeaveOutOversetText) {
    std::u32string text;
    for (int i = 0; i < 40; ++i)
        text += U"line\r";
    make(text);
    EXPECT_FALSE(document->textBounds(story, 190, 4).has_value());
    EXPECT_EQ(bounds(0, 200).left, 100);
    EXPECT_LE(bounds(0, 200).bottom, 200);
}

TEST_F(TextBoundsTest, NumbersComeFromTheRunOrItsStyle) {
    make(U"price");
    const auto at = [&](std::int32_t position, TextAttributeClass kind) {
        return document->numberAttributeAt(story, position, kind);
    };
    EXPECT_EQ(at(0, TextAttributeClass::pointSize), 10);
    const struct {
        TextAttributeClass kind;
        double value;
    } numbers[] = {{TextAttributeClass::pointSize, 24},
                   {TextAttributeClass::baselineShift, -3},
                   {TextAttributeClass::kerning, 40},
                   {TextAttributeClass::position, static_cast<double>(TextPosition::subscript)},
                   {TextAttributeClass::underline, 1}};
    for (const auto& [kind, value] : numbers) {
        ASSERT_EQ(document->attributeApply(story, 1, 2, std::make_shared<NumberAttribute>(kind, value)), 0);
        EXPECT_EQ(at(2, kind), value);
        EXPECT_NE(at(3, kind), value);
    }
}

}  // namespace
}  // namespace tarnova
