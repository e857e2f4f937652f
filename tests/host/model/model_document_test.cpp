#include <gtest/gtest.h>

#include <cmath>

#include "document/walk.h"
#include "host/model/attribute_pool.h"
#include "host/model/document_builder.h"
#include "host/model/item_shape.h"
#include "host/model/page_numbers.h"
#include "host/model/story_text.h"
#include "tests/host/model/model_kit.h"

namespace tarnova {
namespace {

class ModelDocumentTest : public testing::Test {
 protected:
    /// A page of 200 by 100 points with a rectangle and two text frames.
    void SetUp() override {
        DocumentBuilder builder;
        const UID page = builder.addSinglePage(200, 100);
        box = builder.addRectangle(page, {10, 10, 30, 20}, {swatchBlack, 1});
        frame = builder.addTextFrame(page, {50, 10, 90, 60}, U"Dear Name,\nhello");
        builder.addTextFrame(page, {100, 10, 190, 60}, U"static");
        document = builder.finish();
        story = document->textOfFrame(frame);
    }

    std::u32string textOf(const Document& from, UID uid) const { return from.textRead(uid, 0, from.totalLength(uid)); }

    /// The item of a spread with this place among the items of layer 1.
    static UID itemAt(const Document& from, std::int32_t spread, std::int32_t index) {
        return from.childAt(from.spreadLayerNode(from.spreadAt(spread), from.layerAt(1)), index);
    }

    std::unique_ptr<DocumentModel> document;
    UID box = 0, frame = 0, story = 0;
};

TEST_F(ModelDocumentTest, HierarchyOfATextFrame) {
    EXPECT_EQ(document->itemClass(frame), ItemClass::splineItem);
    EXPECT_EQ(document->itemClass(document->parent(frame)), ItemClass::node);
    ASSERT_EQ(document->childCount(frame), 1);
    const UID column = document->childAt(frame, 0);
    EXPECT_EQ(document->itemClass(column), ItemClass::textColumnItem);
    EXPECT_EQ(document->textOfFrame(column), story);
    EXPECT_EQ(document->boundsInSpread(column), (PMRect{50, 10, 90, 60}));
    EXPECT_EQ(document->spreadLayerNode(document->spreadAt(0), document->layerAt(0)), kInvalidUID);
    EXPECT_EQ(document->itemClass(story), ItemClass::none);
    EXPECT_TRUE(document->itemExists(story));
    EXPECT_FALSE(document->itemExists(9999));
}

TEST_F(ModelDocumentTest, TextOperations) {
    EXPECT_EQ(textOf(*document, story), U"Dear Name,\rhello\r");
    EXPECT_EQ(document->textRead(story, -5, 9), U"Dear");
    EXPECT_EQ(document->textRead(story, 11, 2147483647), U"hello\r");
    EXPECT_EQ(document->paragraphAt(story, 12), (textSpanRec{11, 6}));
    EXPECT_EQ(document->textReplace(story, 5, 4, U"Sir\r\nor Madam", false), 0);
    EXPECT_EQ(textOf(*document, story), U"Dear Sir\ror Madam,\rhello\r");
    EXPECT_NE(document->textDelete(story, document->totalLength(story) - 1, 1), 0);
    EXPECT_NE(document->textReplace(box, 0, 0, U"x", true), 0);
    EXPECT_EQ(document->attributeRunAt(story, 500).attributes, nullptr);
}

TEST_F(ModelDocumentTest, TagAttributeOnARun) {
    const auto tag = std::make_shared<const TagAttribute>(TextAttributeClass::kelvaneTag,
                                                          TagAttribute::Content{"Kelvane", "", "", "", 7, "data"});
    EXPECT_EQ(document->attributeApply(story, 5, 4, tag), 0);
    const attributeRunRec run = document->attributeRunAt(story, 6);
    EXPECT_EQ(run.length, 3);
    EXPECT_EQ(run.attributes->QueryByClassID(TextAttributeClass::kelvaneTag), tag.get());
    EXPECT_EQ(run.attributes->QueryByClassID(TextAttributeClass::tallyraTag), nullptr);
    // Another attribute on half of it makes two runs, which keep the tag; taking it away makes one again.
    const auto size = std::make_shared<NumberAttribute>(TextAttributeClass::pointSize, 18);
    EXPECT_EQ(document->attributeApply(story, 5, 2, size), 0);
    EXPECT_EQ(document->attributeRunAt(story, 5).length, 2);
    const auto* number = dynamic_cast<const NumberAttribute*>(
        document->attributeRunAt(story, 5).attributes->QueryByClassID(TextAttributeClass::pointSize));
    ASSERT_NE(number, nullptr);
    EXPECT_EQ(number->value(), 18);
    EXPECT_EQ(document->attributeRunAt(story, 7).attributes->QueryByClassID(TextAttributeClass::kelvaneTag), tag.get());
    EXPECT_EQ(document->attributeRemove(story, 0, 10, TextAttributeClass::pointSize), 0);
    EXPECT_EQ(document->attributeRunAt(story, 5).length, 4);
    EXPECT_EQ(document->attributeRemove(story, 5, 4, TextAttributeClass::kelvaneTag), 0);
    EXPECT_EQ(document->attributeRunAt(story, 0).length, document->totalLength(story));
}

/// Values that a layout file couldn't hold are refused when they are made.
TEST_F(ModelDocumentTest, RefusesWhatCantBeSaved) {
    using enum TextAttributeClass;
    const auto number = [](TextAttributeClass kind, double value) {
        return std::make_shared<NumberAttribute>(kind, value);
    };
    const auto tag = [](std::string owner, std::string spare) {
        return std::make_shared<TagAttribute>(
            kelvaneTag, TagAttribute::Content{std::move(owner), "", "", std::move(spare), 1, "\xFF"});
    };
    struct testRow {
        const char* name;
        std::shared_ptr<const TextAttribute> attribute;
        bool isTaken;
    };
    const testRow rows[] = {
        {"largest size", number(pointSize, 1e7), true},
        {"size too large", number(pointSize, 1.1e7), false},
        {"size below 0", number(pointSize, -1), false},
        {"lowest kerning", number(kerning, -1e7), true},
        {"kerning too low", number(kerning, -1.1e7), false},
        {"no number", number(baselineShift, NAN), false},
        {"a link", tag("Kelvane", ""), true},
        {"owner is no UTF-8", tag("\xFF", ""), false},
        {"spare is no UTF-8", tag("", "\xC3"), false},
        {"nothing", nullptr, false},
    };
    for (const auto& [name, attribute, isTaken] : rows)
        EXPECT_EQ(document->attributeApply(story, 0, 1, attribute) == 0, isTaken) << name;
    EXPECT_NE(document->createSection({document->pageAt(0), "\xFF", "", 1, 0, false, true}), 0);
    EXPECT_NE(document->createSection({document->pageAt(0), "", "\xFF", 1, 0, false, true}), 0);
}

TEST_F(ModelDocumentTest, UndoTakesASequenceAsOneStep) {
    const std::string before = "block";
    const std::uint64_t stamp = document->story(story)->stamp;
    EXPECT_EQ(document->setItemDataBlock(box, 0, before), 0);
    ASSERT_EQ(document->BeginCommandSequence("Merge"), 0);
    EXPECT_EQ(document->textReplace(story, 0, 4, U"Hi", true), 0);
    ASSERT_EQ(document->BeginCommandSequence("Inner"), 0);
    EXPECT_EQ(document->duplicateSpread(document->spreadAt(0)), 0);
    EXPECT_EQ(document->deleteItem(frame), 0);
    EXPECT_EQ(document->setItemDataBlock(box, 0, std::nullopt), 0);
    EXPECT_EQ(document->setItemDataBlock(kInvalidUID, 1, "own"), 0);
    document->setItemLocked(box, true);
    document->EndCommandSequence();
    document->setLayerLocked(document->layerAt(1), true);
    document->EndCommandSequence();
    const UID copiedFrame = itemAt(*document, 1, 1);
    const UID next = document->nextUid();

    EXPECT_FALSE(document->undoNamedStep("Inner"));
    EXPECT_TRUE(document->undoNamedStep("Merge"));
    EXPECT_EQ(document->pageCount(), 1);
    EXPECT_FALSE(document->itemExists(copiedFrame));
    EXPECT_EQ(textOf(*document, story), U"Dear Name,\rhello\r");
    EXPECT_EQ(document->story(story)->stamp, stamp);
    EXPECT_EQ(*document->itemDataBlock(box, 0), before);
    EXPECT_EQ(document->itemDataBlock(kInvalidUID, 1), nullptr);
    EXPECT_FALSE(document->itemLocked(box));
    EXPECT_FALSE(document->layerLocked(document->layerAt(1)));
    EXPECT_EQ(document->childAt(document->parent(frame), 1), frame);
    EXPECT_EQ(document->nextUid(), next) << "UIDs are never used again";
    EXPECT_FALSE(document->undoNamedStep("Merge"));
    EXPECT_TRUE(document->undoNamedStep("Set Item Data"));
}

TEST_F(ModelDocumentTest, RedoDoesTheUndoneAgain) {
    ASSERT_EQ(document->textReplace(story, 0, 4, U"Hi", true), 0);
    ASSERT_EQ(document->deleteItem(box), 0);
    const std::uint64_t stamp = document->story(story)->stamp;
    EXPECT_EQ(document->redo(), std::nullopt);
    EXPECT_EQ(document->undo(), "Delete Item");
    EXPECT_EQ(document->undo(), "Replace Text");
    EXPECT_EQ(document->undo(), std::nullopt);
    EXPECT_TRUE(document->itemExists(box));
    EXPECT_EQ(document->redo(), "Replace Text");
    EXPECT_EQ(document->textRead(story, 0, 3), U"Hi ");
    EXPECT_EQ(document->story(story)->stamp, stamp) << "what was drawn of it holds again";
    EXPECT_TRUE(document->undoNamedStep("Replace Text"));
    EXPECT_EQ(document->redo(), "Replace Text");
    document->setItemLocked(frame, true);
    EXPECT_EQ(document->redo(), std::nullopt) << "a new step drops what was undone";
    EXPECT_TRUE(document->itemExists(box));
    EXPECT_EQ(document->undo(), "Lock Item");
    ASSERT_EQ(document->BeginCommandSequence("Run", false), 0);
    document->EndCommandSequence();
    EXPECT_EQ(document->redo(), std::nullopt);
    for (std::size_t i = 0; i <= undoStepCapacity; ++i)
        document->setItemLocked(frame, i % 2 == 0);
    std::size_t count = 0;
    while (document->undo())
        ++count;
    EXPECT_EQ(count, undoStepCapacity);
}

TEST_F(ModelDocumentTest, SequencesThatCantBeUndone) {
    EXPECT_EQ(document->textReplace(story, 0, 4, U"Hi", true), 0);
    ASSERT_EQ(document->BeginCommandSequence("Run", false), 0);
    EXPECT_EQ(document->textReplace(story, 0, 2, U"Oh", true), 0);
    document->EndCommandSequence();
    EXPECT_FALSE(document->undoNamedStep("Run"));
    EXPECT_FALSE(document->undoNamedStep("Replace Text"));
    // An inner one decides for the outer.
    ASSERT_EQ(document->BeginCommandSequence("Outer"), 0);
    ASSERT_EQ(document->BeginCommandSequence("Inner", false), 0);
    document->EndCommandSequence();
    EXPECT_EQ(document->textReplace(story, 0, 2, U"Ah", true), 0);
    document->EndCommandSequence();
    EXPECT_FALSE(document->undoNamedStep("Outer"));
    EXPECT_EQ(document->textRead(story, 0, 2), U"Ah");
}

/// Visiting a locked layer unlocks it, which is no step when nothing else happens.
TEST_F(ModelDocumentTest, WalksOfLockedLayersLeaveNoStep) {
    struct : ZavoFrameCallback {
        std::int32_t FrameEnd() override {
            if (changes) frameRef.database->setItemLocked(frameRef.uid, true);
            return 0;
        }
        bool changes = false;
    } locker;
    const auto walk = [&] {
        walkDocument(*document, &locker, nullptr, 0, 0, WalkScope::everything, false, false, nullptr, nullptr, nullptr,
                     false);
    };
    document->setLayerLocked(document->layerAt(1), true);
    ASSERT_EQ(document->textReplace(story, 0, 4, U"Hi", true), 0);
    ASSERT_TRUE(document->undo());
    document->setLocation("/nowhere", "saved.tvd");
    walk();
    EXPECT_TRUE(document->documentIsSaved());
    EXPECT_TRUE(document->layerLocked(document->layerAt(1)));
    EXPECT_EQ(document->redo(), "Replace Text") << "what was undone can be done again";
    locker.changes = true;
    walk();
    EXPECT_EQ(document->undo(), visitStepName);
    EXPECT_FALSE(document->itemLocked(box));
    EXPECT_EQ(document->undo(), "Replace Text");
    EXPECT_EQ(document->undo(), "Lock Layer");
}

TEST_F(ModelDocumentTest, CopiedSpreadSharesUntilChanged) {
    document->markTemplate();
    ASSERT_EQ(document->duplicateSpread(document->spreadAt(0)), 0);
    ASSERT_EQ(document->pageCount(), 2);
    EXPECT_EQ(document->pageIndex(document->pageAt(1)), 1);
    const UID copy = itemAt(*document, 1, 1), other = itemAt(*document, 1, 2);
    const UID copyStory = document->textOfFrame(copy);
    EXPECT_NE(copyStory, story);
    EXPECT_EQ(document->textOfFrame(document->childAt(copy, 0)), copyStory);
    EXPECT_EQ(document->framesOfStory(copyStory), std::vector<UID>{copy});
    EXPECT_EQ(document->pageOfItem(copy).page, document->pageAt(1));
    EXPECT_EQ(document->item(copy)->shape, document->item(frame)->shape);
    EXPECT_EQ(document->item(copy)->stamp, document->item(frame)->stamp);
    EXPECT_EQ(document->story(copyStory)->content, document->story(story)->content);

    ASSERT_EQ(document->textReplace(copyStory, 5, 4, U"Ann", true), 0);
    EXPECT_EQ(textOf(*document, story), U"Dear Name,\rhello\r");
    EXPECT_EQ(textOf(*document, copyStory), U"Dear Ann,\rhello\r");
    const StoryText* content = document->story(copyStory)->content.get();
    ASSERT_EQ(document->BeginCommandSequence("Run", false), 0);
    ASSERT_EQ(document->textReplace(copyStory, 5, 3, U"Bob", true), 0);
    EXPECT_EQ(document->story(copyStory)->content.get(), content) << "an unshared content is changed in place";
    document->EndCommandSequence();
    EXPECT_GE(document->story(copyStory)->stamp, document->templateStamp());
    EXPECT_LT(document->story(document->textOfFrame(other))->stamp, document->templateStamp());
    EXPECT_LT(document->item(copy)->stamp, document->templateStamp());
}

TEST_F(ModelDocumentTest, DocumentCopyIsIsolated) {
    document->setLocation("/jobs", "letter.tvd");
    const auto copy = document->documentCopy();
    EXPECT_EQ(copy->documentFolder(), "/jobs");
    EXPECT_FALSE(copy->documentIsSaved());
    ASSERT_EQ(copy->textReplace(story, 0, 4, U"Hi", true), 0);
    ASSERT_EQ(copy->deleteItem(box), 0);
    ASSERT_EQ(copy->duplicateSpread(copy->spreadAt(0)), 0);
    EXPECT_EQ(textOf(*document, story), U"Dear Name,\rhello\r");
    EXPECT_TRUE(document->itemExists(box));
    EXPECT_EQ(document->pageCount(), 1);
    EXPECT_TRUE(document->documentIsSaved());
    ASSERT_EQ(document->textReplace(story, 0, 4, U"Yo", true), 0);
    EXPECT_EQ(textOf(*copy, story), U"Hi Name,\rhello\r");
    EXPECT_FALSE(document->documentIsSaved());
}

TEST_F(ModelDocumentTest, RemovedPagesTakeTheirObjects) {
    for (int i = 0; i < 4; ++i)
        ASSERT_EQ(document->duplicateSpread(document->spreadAt(0)), 0);
    const UID gone = itemAt(*document, 2, 1), goneStory = document->textOfFrame(gone);
    const UID last = document->pageAt(4);
    ASSERT_EQ(document->removePages({document->pageAt(2), document->pageAt(0), document->pageAt(2)}), 0);
    EXPECT_EQ(document->pageCount(), 3);
    EXPECT_EQ(document->spreadCount(), 3);
    EXPECT_EQ(document->pageIndex(last), 2);
    EXPECT_FALSE(document->itemExists(gone));
    EXPECT_FALSE(document->itemExists(goneStory));
    EXPECT_EQ(document->stories().size(), 6u);
    EXPECT_NE(document->removePages({gone}), 0);
    EXPECT_TRUE(document->undoNamedStep("Remove Pages"));
    EXPECT_EQ(document->pageCount(), 5);
    EXPECT_EQ(document->pageIndex(last), 4);
    EXPECT_EQ(document->textOfFrame(gone), goneStory);
}

TEST_F(ModelDocumentTest, AddedPagesHaveTheFirstPagesSize) {
    ASSERT_EQ(document->addPages(2), 0);
    EXPECT_EQ(document->pageCount(), 3);
    EXPECT_EQ(document->page(document->pageAt(2))->bounds, (PMRect{0, 0, 200, 100}));
    EXPECT_EQ(document->childCount(document->spreadLayerNode(document->spreadAt(2), document->layerAt(1))), 0);
    EXPECT_NE(document->addPages(-1), 0);
    EXPECT_NE(document->addPages(2147483647), 0);
}

TEST_F(ModelDocumentTest, Sections) {
    ASSERT_EQ(document->addPages(5), 0);
    EXPECT_EQ(document->pageName(document->pageAt(5)), "6");
    ASSERT_EQ(document->createSection({document->pageAt(4), "", "", 9, 0, true, false}), 0);
    ASSERT_EQ(document->createSection({document->pageAt(2), "A-", "", 3, 2, false, true}), 0);
    const char* names[] = {"1", "2", "A-iii", "A-iv", "5", "6"};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(document->pageName(document->pageAt(i)), names[i]) << i;
    // The section goes on to the next page when its first page goes.
    ASSERT_EQ(document->removePages({document->pageAt(2)}), 0);
    EXPECT_EQ(document->pageName(document->pageAt(2)), "A-iii");
    ASSERT_EQ(document->removePages({document->pageAt(2)}), 0);
    EXPECT_EQ(document->sections().size(), 1u);
    EXPECT_NE(document->createSection({frame, "", "", 1, 0, false, false}), 0);
    EXPECT_NE(document->createSection({document->pageAt(0), "", "", -1, 0, false, false}), 0);
}

TEST_F(ModelDocumentTest, CompositionIsAskedForOnce) {
    const auto composer = std::make_shared<TenCharacterComposer>();
    EXPECT_EQ(document->frameAt(story, 16), frame) << "without a composer all text fits";
    document->setComposer(composer);
    EXPECT_EQ(document->frameAt(story, 3), frame);
    EXPECT_EQ(document->frameAt(story, 12), kInvalidUID);
    EXPECT_TRUE(document->isOverset(story));
    EXPECT_EQ(composer->calls, 1);
    EXPECT_EQ(document->soleFrame(story), frame);
    ASSERT_EQ(document->duplicateSpread(document->spreadAt(0)), 0);
    const UID copy = itemAt(*document, 1, 1);
    EXPECT_EQ(document->frameAt(document->textOfFrame(copy), 3), copy);
    EXPECT_EQ(composer->calls, 1) << "a copy shares the lines";
    ASSERT_EQ(document->textReplace(story, 0, 10, U"", true), 0);
    EXPECT_EQ(composer->calls, 1) << "a change composes nothing";
    EXPECT_FALSE(document->isOverset(story));
    EXPECT_EQ(composer->calls, 2);
}

TEST(ModelDocument, StoriesOverSeveralSpreads) {
    DocumentBuilder builder;
    const UID pages[] = {builder.addSinglePage(100, 100), builder.addSinglePage(100, 100)};
    std::vector<UID> frames;
    for (UID page : {pages[0], pages[0], pages[1]})
        frames.push_back(builder.addItem(builder.layerNode(builder.spreadOf(page), 1), textItem({0, 0, 50, 50})));
    StoryTextBuilder text;
    text.append(U"running text", builder.attributePool().plainRun());
    text.endParagraph(builder.attributePool().paragraph({}), builder.attributePool().plainRun());
    text.endThread();
    const UID story = builder.addStory(frames, text.finish());
    const auto document = builder.finish();
    document->setComposer(std::make_shared<TenCharacterComposer>());
    EXPECT_EQ(document->frameAt(story, 11), frames[1]);
    EXPECT_EQ(document->soleFrame(story), kInvalidUID);

    ASSERT_EQ(document->duplicateSpread(document->spreadAt(0)), 0);
    ASSERT_EQ(document->duplicateSpread(document->spreadAt(1)), 0);
    const auto copyOn = [&](std::int32_t spread) {
        const UID node = document->spreadLayerNode(document->spreadAt(spread), document->layerAt(1));
        return document->textOfFrame(document->childAt(node, 0));
    };
    EXPECT_EQ(document->framesOfStory(copyOn(2)).size(), 2u);
    EXPECT_EQ(document->textRead(copyOn(2), 0, 7), U"running");
    EXPECT_EQ(document->framesOfStory(copyOn(3)).size(), 1u);
    EXPECT_EQ(document->totalLength(copyOn(3)), 1);
    EXPECT_EQ(document->framesOfStory(story), frames);

    // The text flows on in the frames that stay, and goes with the last.
    ASSERT_EQ(document->deleteItem(frames[0]), 0);
    EXPECT_EQ(document->framesOfStory(story), (std::vector<UID>{frames[1], frames[2]}));
    EXPECT_EQ(document->frameAt(story, 3), frames[1]);
    ASSERT_EQ(document->deleteItem(frames[1]), 0);
    ASSERT_EQ(document->deleteItem(frames[2]), 0);
    EXPECT_FALSE(document->itemExists(story));
}

TEST(ModelDocument, LinkedFramesShareOneStory) {
    DocumentBuilder builder;
    const UID page = builder.addSinglePage(100, 100);
    const UID first = builder.addTextFrame(page, {0, 0, 9, 9}, U"first"),
              other = builder.addTextFrame(page, {0, 0, 9, 9}, U"x");
    const UID empty = builder.addTextFrame(page, {0, 0, 9, 9}, U""),
              last = builder.addTextFrame(page, {0, 0, 9, 9}, U"");
    const UID box = builder.addRectangle(page, {0, 0, 9, 9}, {});
    const UID onMaster = builder.addTextFrame(builder.addPage(builder.addMaster("M"), {0, 0, 9, 9}), {0, 0, 9, 9}, U"");
    const auto document = builder.finish();
    const UID story = document->textOfFrame(first), emptyStory = document->textOfFrame(empty);
    const std::uint64_t stamp = document->story(story)->stamp;
    struct testRow {
        const char* name;
        UID before, behind;
    };
    for (const auto& [name, before, behind] :
         {testRow{"text would be lost", first, other}, testRow{"itself", empty, empty}, testRow{"no text", first, box},
          testRow{"no text in front", box, empty}, testRow{"a master's", first, onMaster},
          testRow{"nothing", first, 0}})
        EXPECT_NE(document->linkFrames(before, behind), 0) << name;
    ASSERT_EQ(document->linkFrames(first, last), 0);
    ASSERT_EQ(document->linkFrames(first, empty), 0);
    EXPECT_EQ(document->framesOfStory(story), (std::vector<UID>{first, empty, last}));
    EXPECT_FALSE(document->itemExists(emptyStory));
    EXPECT_EQ(document->textOfFrame(document->childAt(empty, 0)), story);
    EXPECT_NE(document->story(story)->stamp, stamp);
    EXPECT_EQ(document->linkFrames(empty, last), 0) << "there already";
    EXPECT_NE(document->linkFrames(last, empty), 0) << "no circle";
    ASSERT_EQ(document->undo(), "Link Frames");
    EXPECT_EQ(document->framesOfStory(story), (std::vector<UID>{first, last}));
    EXPECT_EQ(document->framesOfStory(emptyStory), std::vector<UID>{empty});
    // Of an empty story with several frames only the one that is named goes.
    ASSERT_EQ(document->textDelete(story, 0, 5), 0);
    ASSERT_EQ(document->linkFrames(other, first), 0);
    EXPECT_EQ(document->framesOfStory(story), std::vector<UID>{last});
}

TEST(ModelDocument, GroupsPagesAndPasteboard) {
    DocumentBuilder builder;
    const UID spread = builder.addSpread();
    const UID left = builder.addPage(spread, {0, 0, 100, 100}), right = builder.addPage(spread, {100, 0, 200, 100});
    PageItem group;
    group.itemClass = ItemClass::group;
    group.toParent = {0, 1, -1, 0, 150, 50};  // a quarter turn to the right
    const UID groupUid = builder.addItem(builder.layerNode(spread, 1), group);
    const auto rectangle = [&](UID parent, double x, double y) {
        auto shape = std::make_shared<ItemShape>();
        shape->bounds = {0, 0, 10, 20};
        shape->path = pathOf(shape->kind, shape->bounds);
        PageItem item;
        item.shape = shape;
        item.toParent = {1, 0, 0, 1, x, y};
        return builder.addItem(parent, item);
    };
    const UID member = rectangle(groupUid, 0, 0), second = rectangle(groupUid, 10, 10);
    const UID away = rectangle(builder.layerNode(spread, 1), 500, 500);
    const UID across = rectangle(builder.layerNode(spread, 1), 92, 5);
    const auto document = builder.finish();
    EXPECT_EQ(document->boundsInSpread(member), (PMRect{130, 50, 150, 60}));
    EXPECT_EQ(document->boundsInSpread(groupUid), (PMRect{120, 50, 150, 70}));
    EXPECT_EQ(document->transformValues(member).rotationDegrees, -90);
    EXPECT_EQ(document->pageOfItem(groupUid).page, right);
    EXPECT_EQ(document->pageOfItem(member).page, right);
    EXPECT_EQ(document->pageOfItem(across).page, left);
    EXPECT_EQ(document->pageOfItem(away).page, kInvalidUID);
    std::vector<const PageItem*> drawn;
    document->drawnItems(left, drawn);
    ASSERT_EQ(drawn.size(), 1u);
    EXPECT_EQ(drawn[0]->uid, across);

    const std::uint64_t stamp = document->item(groupUid)->stamp;
    ASSERT_EQ(document->deleteItem(second), 0);
    EXPECT_GT(document->item(groupUid)->stamp, stamp) << "a group draws its members";
    EXPECT_EQ(document->boundsInSpread(groupUid), (PMRect{130, 50, 150, 60}));
    ASSERT_EQ(document->removePages({right}), 0);
    EXPECT_FALSE(document->itemExists(member));
    EXPECT_TRUE(document->itemExists(across));
    EXPECT_TRUE(document->itemExists(away));
    ASSERT_TRUE(document->undo());
    ASSERT_EQ(document->removePages({left}), 0);
    EXPECT_EQ(document->pageOfItem(member).page, right);
    ASSERT_TRUE(document->undo());
    EXPECT_EQ(document->pageOfItem(member).page, right) << "it lies on the second page again";
    EXPECT_NE(document->deleteItem(document->parent(away)), 0) << "a node stays";
}

TEST(ModelDocument, MastersLayersAndDrawing) {
    DocumentBuilder builder;
    Layer back, hidden, silent;
    back.name = "Back";
    hidden.name = "Hidden";
    hidden.visible = false;
    silent.name = "Silent";
    silent.printable = false;
    builder.setLayers({back, hidden, silent});
    const UID base = builder.addMaster("Base"), derived = builder.addMaster("Derived"), unused = builder.addMaster("U");
    const UID basePage = builder.addPage(base, {0, 0, 100, 100});
    const UID derivedPage = builder.addPage(derived, {10, 20, 110, 120}, base);
    builder.addPage(unused, {0, 0, 100, 100});
    const UID page = builder.addPage(builder.addSpread(), {0, 0, 100, 100}, derived);
    const UID own = builder.addRectangle(page, {1, 1, 2, 2}, {});
    const UID fromDerived = builder.addRectangle(derivedPage, {1, 1, 2, 2}, {});
    const UID fromBase = builder.addRectangle(basePage, {1, 1, 2, 2}, {});
    PageItem quiet;
    quiet.shape = std::make_shared<ItemShape>();
    for (std::size_t layer : {2, 3})
        builder.addItem(builder.layerNode(builder.spreadOf(page), layer), quiet);
    quiet.nonPrinting = true;
    builder.addItem(builder.layerNode(builder.spreadOf(page), 1), quiet);
    const auto document = builder.finish();
    EXPECT_TRUE(document->masterInUse(base));
    EXPECT_TRUE(document->masterInUse(derived));
    EXPECT_FALSE(document->masterInUse(unused));
    EXPECT_TRUE(document->pageOfItem(fromBase).isMaster);
    EXPECT_EQ(document->pageIndex(basePage), -1);
    EXPECT_EQ(document->pageCount(), 1);
    std::vector<const PageItem*> drawn;
    document->drawnItems(page, drawn);
    ASSERT_EQ(drawn.size(), 3u);
    EXPECT_EQ(drawn[0]->uid, fromBase);
    EXPECT_EQ(drawn[1]->uid, fromDerived);
    EXPECT_EQ(drawn[2]->uid, own);
    EXPECT_EQ(document->pageOrigin(page, *drawn[1]), (PMPoint{10, 20}));
    EXPECT_EQ(document->pageOrigin(page, *drawn[2]), (PMPoint{0, 0}));
    ASSERT_EQ(document->addPages(1), 0);
    ASSERT_EQ(document->removePages({page}), 0);
    EXPECT_FALSE(document->masterInUse(base)) << "the page that had it is gone";
}

TEST(ModelDocument, FormatsComeFromStylesAndOverrides) {
    DocumentBuilder builder;
    ParagraphStyle base{"Basic Paragraph", -1, {}, {}};
    base.charFormat.pointSize = 9;
    base.paraFormat.spaceAfter = 4;
    builder.addParagraphStyle(base);
    ParagraphStyle head{"Head", 0, {}, {}};
    head.charFormat.family = "Times";
    builder.addParagraphStyle(head);
    CharacterStyle strong{"Strong", -1, {}};
    strong.format.fontStyle = "Bold";
    builder.addCharacterStyle(strong);
    AttributePool& pool = builder.attributePool();
    ParagraphAttributes paragraph;
    paragraph.style = 1;
    paragraph.charOverrides.leading = 30;
    RunDescription run;
    run.characterStyle = 0;
    run.overrides.underline = true;
    const auto* interned = pool.paragraph(paragraph);
    const auto* list = pool.run(run);
    EXPECT_EQ(pool.run(run), list);
    const auto document = builder.finish();
    const CharFormat* format = document->resolveChar(*interned, *list);
    EXPECT_EQ(format->family, "Times");
    EXPECT_EQ(format->pointSize, 9);
    EXPECT_EQ(format->leading, 30);
    EXPECT_EQ(format->fontStyle, "Bold");
    EXPECT_TRUE(format->underline);
    EXPECT_EQ(document->resolvePara(*interned)->spaceAfter, 4);
    EXPECT_EQ(document->resolveChar(*interned, *list), format);
    EXPECT_NE(document->resolveChar(*interned, *pool.plainRun()), format);
}

TEST(PageNumbers, Styles) {
    struct testRow {
        std::int32_t number, style;
        const char* text;
    };
    const testRow rows[] = {{12, 0, "12"},   {1994, 1, "MCMXCIV"}, {4, 2, "iv"},  {4000, 1, "4000"},
                            {1, 3, "A"},     {26, 3, "Z"},         {27, 4, "aa"}, {53, 3, "AAA"},
                            {702, 3, "702"}, {0, 2, "0"},          {5, 99, "5"}};
    for (const auto& [number, style, text] : rows)
        EXPECT_EQ(pageNumberText(number, style), text) << number;
}

TEST(ItemShape, BoundsOfCurves) {
    const PMRect box{10, 20, 30, 60};
    const PMRect ellipse = boundsOfPath(pathOf(pathInfoRec::Kind::ellipse, box));
    EXPECT_NEAR(ellipse.left, 10, 1e-9);
    EXPECT_NEAR(ellipse.bottom, 60, 1e-9);
    const SubPath arch{{0, 0}, {{PathSegment::Kind::curve, {0, -40}, {30, -40}, {30, 0}}}, false};
    EXPECT_NEAR(boundsOfPath({arch}).top, -30, 1e-9) << "a curve reaches less far than its control points";
    EXPECT_EQ(boundsOfPath({}), PMRect{});
}

}  // namespace
}  // namespace tarnova
