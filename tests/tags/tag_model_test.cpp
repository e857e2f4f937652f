// The manager and the walk over the concrete document.

#include <gtest/gtest.h>

#include "document/walk_state.h"
#include "host/model/document_builder.h"
#include "tags/link_check.h"
#include "tags/tag_list.h"
#include "tags/tag_manager.h"

namespace tarnova {
namespace {

class TagModel : public ::testing::Test {
 protected:
    void SetUp() override {
        DocumentBuilder builder;
        const UID page = builder.addSinglePage(200, 200);
        frame = builder.addTextFrame(page, {10, 10, 190, 100}, U"Dear Name, hello");
        rectangle = builder.addRectangle(page, {10, 110, 50, 150}, {});
        document = builder.finish();
        story = {document.get(), document->textOfFrame(frame)};
        tagStringsInit(strings, 0);
    }
    std::int32_t tagText(std::int32_t position, std::int32_t length, std::string_view link) {
        tagDataRec tag{};
        pstrSet(tag.extractionRecordName, link);
        std::byte* block = nullptr;
        EXPECT_EQ(tagRecordEncode(&tag, &block, 0), 0);
        const blockPtr<> owned(block);
        return dataTagManager().TagText(story, strings, {reinterpret_cast<const char*>(block), blockSize(block)},
                                        position, length);
    }
    /// "link@start+length" of all tags in the order of the walk.
    [[nodiscard]] std::string tags() const {
        std::string all;
        for (const tagListRec& entry : listTags(*document, 0))
            all += pstrString(entry.tag.extractionRecordName) + "@" + std::to_string(entry.start) + "+" +
                   std::to_string(entry.length) + " ";
        return all;
    }

    std::unique_ptr<DocumentModel> document;
    UID frame = kInvalidUID, rectangle = kInvalidUID;
    UIDRef story;
    tagStrings strings;
};

TEST_F(TagModel, TaggingTextIsUndoneInOneStep) {
    ASSERT_EQ(document->BeginCommandSequence("First"), 0);
    ASSERT_EQ(tagText(5, 4, "Name"), 0);
    document->EndCommandSequence();
    ASSERT_EQ(document->BeginCommandSequence("Second"), 0);
    ASSERT_EQ(tagText(7, 99, "Rest"), 0);
    document->EndCommandSequence();
    EXPECT_EQ(tags(), "Rest@7+9 ") << "without the closing mark";
    EXPECT_TRUE(document->undoNamedStep("Second"));
    EXPECT_EQ(tags(), "Name@5+4 ");
    EXPECT_TRUE(document->undoNamedStep("First"));
    EXPECT_EQ(tags(), "");
}

TEST_F(TagModel, NewTextOfATagKeepsIt) {
    ASSERT_EQ(tagText(5, 4, "Name"), 0);
    ASSERT_EQ(tagText(9, 1, "Comma"), 0);
    ASSERT_EQ(document->textReplace(story.uid, 5, 4, U"Alexander", true), 0);
    EXPECT_EQ(tags(), "Name@5+9 Comma@14+1 ");
    ASSERT_EQ(document->textReplace(story.uid, 5, 9, U"", true), 0);
    EXPECT_EQ(tags(), "Comma@5+1 ");
}

TEST_F(TagModel, FrameTagsAndCopiedPages) {
    tagDataRec tag{};
    pstrSet(tag.extractionRecordName, "Photo");
    ASSERT_EQ(writeFrameTag({document.get(), rectangle}, tag, 0), 0);
    ASSERT_EQ(tagText(5, 4, "Name"), 0);
    ASSERT_EQ(document->duplicateSpread(document->spreadAt(0)), 0);
    EXPECT_EQ(tags(), "Photo@0+0 Name@5+4 Photo@0+0 Name@5+4 ");
    EXPECT_TRUE(itemHasLinks({document.get(), frame}));
    dataTagManager().RemoveFrameTag({document.get(), rectangle});
    EXPECT_FALSE(itemHasLinks({document.get(), rectangle}));
    EXPECT_EQ(tags(), "Name@5+4 Photo@0+0 Name@5+4 ") << "the copy keeps its own";
}

}  // namespace
}  // namespace tarnova
