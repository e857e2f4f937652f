// Text tags: the parser by cases, and documents converted to links and back.

#include <gtest/gtest.h>

#include "document/document_looks.h"
#include "document/walk_state.h"
#include "engine/module/execute.h"
#include "engine/session/session.h"
#include "engine/toolkit/text_encoding.h"
#include "host/model/document_builder.h"
#include "host/model/story_text.h"
#include "rules/rule_info.h"
#include "tags/tag_list.h"
#include "tags/tag_manager.h"
#include "tags/tag_syntax.h"
#include "tags/tag_text.h"
#include "tags/tag_walkers.h"
#include "tests/engine/toolkit/recording_alerts.h"

namespace tarnova {
namespace {

/// "key|link|rule|style|notes1|data" of a good tag, "error N" of another; "at S+L" in front where it doesn't take all.
std::string shown(const std::string& text) {
    std::string all;
    std::uint16_t status = 0;
    const auto size = static_cast<std::int32_t>(text.size());
    const parsedTagList list = tagTextParse(size, text.data(), status);
    for (const parsedTag* at = list.get(); at != nullptr; at = at->next) {
        if (!all.empty()) all += ' ';
        if (at->tagLength != size)
            all += "at " + std::to_string(at->tagStart) + "+" + std::to_string(at->tagLength) + " ";
        if (at->errorCode != 0) {
            all += "error " + std::to_string(at->errorCode);
            continue;
        }
        for (const std::uint8_t* field : {at->tag.searchKey, at->tag.extractionRecordName, at->tag.ruleName,
                                          at->tag.styleRecordName, at->tag.notes1})
            all += pstrString(field) + "|";
        all += text.substr(static_cast<std::size_t>(at->dataStart), static_cast<std::size_t>(at->dataLength));
    }
    return all;
}

TEST(TagSyntax, OutlinesFieldsAndErrors) {
    const std::string key64(64, 'k'), name31(31, 'n'), notes256(256, 'a'), long766(766, 'b');
    std::string hex255;
    for (int i = 0; i < 255; ++i)
        hex255 += "%41";
    struct testRow {
        std::string text, result;
    };
    const testRow rows[] = {
        {"<!$K1;Name;;;:some data>", "K1|Name||||some data"},
        {"[!$K1; Name;R;S;n1:some data ]", "K1|Name|R|S|n1|some data "},
        {"<!$K1 ; Name; ; ; : ]some <data<!!>", "K1 |Name||||some <data"},
        {"<!$K1; Name; ; ; : ><!!>", "K1|Name||||"},
        {"<!$K; N; : > [!!]", "K|N||||"},
        {"<!$K1:x; Name; : data>", "error 4"},
        {"<!$K1%3Ax; %4Eame; : data>", "K1:x|Name||||data"},
        {"<!$A; B>", "at 0+3 error 14"},
        {"<!$AB>", "at 0+3 error 15"},
        {"<!$A;;;;;;;;;;;>", "at 0+3 error 15"},
        {"<!$A;B;;;;;;;;;;;;;:x>", "at 0+3 error 15"},
        {"<!$A;B;;;;;;;;;;;;:x>", "A|B||||x"},
        {"<!$A; B: x: y>", "at 0+3 error 3"},
        {"<!$A; B: ", "at 0+3 error 1"},
        {"<!$A; B:<!!>", "at 0+3 error 1"},
        {"<!$A; B:>x", "at 0+3 error 2"},
        {"<!$A; B <!$C; D: x>", "at 0+3 error 1 at 8+11 C|D||||x"},
        {"<!$" + key64 + ";" + name31 + ":x>", key64 + "|" + name31 + "||||x"},
        {"<!$" + key64 + "k;N:x>", "error 4"},
        {"<!$K;" + name31 + "n:x>", "error 4"},
        {"<!$K;N;;;" + hex255 + ":x>", "K|N|||" + std::string(255, 'A') + "|x"},
        {"<!$K;N;;;" + notes256 + ":x>", "error 4"},
        {"<!$K;N;;;" + long766 + ":x>", "error 4"},
        {"<!$K%4;N:x>", "error 27"},
        {"<!$K%GZ;N:x>", "error 27"},
        {"<!$%G;" + name31 + "n:x>", "error 4"},
        {"<!$;N:x>", "error 5"},
        {"<!$;N;;;;;;1;41:x>", "|N||||x"},
        {"<!$K;N;;;;;;2:x>", "error 5"},
        {"<!$K;N;;;;;;7;:x>", "K|N||||x"},
        {"<!$K;N;;;;;;0;414:x>", "error 20"},
        {"<!$K;N;;;;;;0;4G:x>", "error 20"},
        {"<!$K;N;;;;;;" + std::string(31, '0') + ":x>", "error 4"},
        {"<!$K;N;;;;;;;;1;a;b;:x>", "error 5"},
        {"<!$K;N;;;;;;;;1;a;b;c:x>", "K|N||||x"},
        {"<!$K;N;;;;;;;;1;a;b;" + std::string(31, 'c') + ":x>", "error 4"},
        {"no tag <! $", ""},
    };
    for (const auto& [text, result] : rows)
        EXPECT_EQ(shown(text), result) << text;
}

/// Notes what the engine tells the rules module.
class RulesModule final : public IZavoKelvaneModule {
 public:
    RulesModule() { registerModule(signatureOf("AQMw"), this); }
    ~RulesModule() override { registerModule(signatureOf("AQMw"), nullptr); }
    void Execute(commandBlock& block) override {
        const bool isPage = block.command == rulesCmdSetPageRule;
        const auto* info = static_cast<const ruleInfoRec*>(isPage ? block.args->item2 : block.args->item1);
        const auto* frame = static_cast<const UIDRef*>(block.args->item0);
        const std::int32_t at =
            isPage ? *static_cast<const std::int32_t*>(block.args->item1) : static_cast<std::int32_t>(frame->uid);
        told += std::to_string(block.command) + " " + std::to_string(at) + " " + pstrString(info->ruleName) + ";";
        block.result = 0;
    }
    std::string told;
};

class TagText : public ::testing::Test {
 protected:
    void SetUp() override { sessionReset(); }
    /// A page with a text frame.
    void useText(std::u32string_view text) {
        DocumentBuilder builder;
        builder.addTextFrame(builder.addSinglePage(200, 200), {10, 10, 190, 100}, text);
        use(builder);
    }
    void use(DocumentBuilder& builder) {
        document = builder.finish();
        story = {document.get(), document->stories().front()};
    }
    [[nodiscard]] std::string text() const {
        return utf32ToUtf8(document->textRead(story.uid, 0, document->totalLength(story.uid) - 1));
    }
    /// "key:link=text" of all links.
    [[nodiscard]] std::string links() const {
        std::string all;
        for (const tagListRec& entry : listTags(*document, walkState().engineMode))
            all += pstrString(entry.tag.searchKey) + ":" + pstrString(entry.tag.extractionRecordName) + "=" +
                   (entry.onFrame ? "frame " + std::to_string(entry.owner) : utf32ToUtf8(entry.text)) + ";";
        return all;
    }

    RecordingAlerts alerts;
    std::unique_ptr<DocumentModel> document;
    UIDRef story;
};

TEST_F(TagText, ThereAndBackInOneStepEach) {
    const std::u32string written =
        U"Dear <!$1;Name;;;:Ann\u00E9 L.>, [!$2; City; R; S; n : ]in <b> Graz<!!> <!$1;Zip;;:> <!!>!";
    useText(written);
    ASSERT_TRUE(convertTextToLinks(document->ref()));
    EXPECT_EQ(links(), "1:Name=Ann\u00E9 L.;2:City=in <b> Graz;");
    EXPECT_EQ(text(), "Dear Ann\u00E9 L., in <b> Graz !") << "a tag without data leaves nothing";
    ASSERT_TRUE(convertLinksToText(document->ref()));
    EXPECT_EQ(links(), "");
    EXPECT_EQ(text(), "Dear <!$1; Name; ; ; : >Ann\u00E9 L.<!!>, <!$2; City; R; S; : >in <b> Graz<!!> !") << "no notes";
    const auto size = [&](std::int32_t at) {
        return document->numberAttributeAt(story.uid, at, TextAttributeClass::pointSize);
    };
    EXPECT_EQ(size(4), 10);
    EXPECT_EQ(size(5), 1);
    EXPECT_EQ(size(26), 10);
    const auto* looks = looksOf(*document);
    EXPECT_EQ(looks->textLookAt(story.uid, 5).swatch, "C=0 M=100 Y=0 K=0");
    EXPECT_EQ(looks->textLookAt(story.uid, 26).swatch, "Black");
    ASSERT_TRUE(convertTextToLinks(document->ref()));
    EXPECT_EQ(links(), "1:Name=Ann\u00E9 L.;2:City=in <b> Graz;");
    EXPECT_EQ(text(), "Dear Ann\u00E9 L., in <b> Graz !");
    ASSERT_TRUE(document->undo() && document->undo() && document->undo());
    EXPECT_EQ(text(), utf32ToUtf8(written));
    EXPECT_TRUE(alerts.shown.empty());
}

TEST_F(TagText, FaultsAreAskedAboutFromTheLastOn) {
    const std::u32string written =
        U"<!$1;A:a> <!$;B:b> <!$%20;C:c> <!$1; %20D:d> <!$1;E;;;;;;2:e> <!$1;F;;;;;;1;:f> <!$G>"
        U" <!$1;H;;;;;;;;1;x;y;z:h> <!$1;I:i>";
    useText(written);
    EXPECT_EQ(tagTextConvert(story, document->totalLength(story.uid)), 0);
    EXPECT_EQ(links(), "1:A=a;1:I=i;") << "a tag that is only checked stays without a word";
    std::string asked;
    for (const alertRec& alert : alerts.shown)
        asked += alert.text.substr(0, 32) + ";";
    EXPECT_EQ(asked,
              "A text tag can't be read (fault ;A text tag of the media kind has;A text tag lacks its media data.;"
              "A text tag has no name of a vari;A text tag has no key. Write the;A text tag has no key. Write the;");
    EXPECT_NE(alerts.shown.front().text.find("15"), std::string::npos);

    useText(written);
    alerts.answer = 2;
    EXPECT_TRUE(convertTextToLinks(document->ref()));
    EXPECT_EQ(links(), "1:I=i;") << "what stands in front of the tag that was aborted at is text still";
}

TEST_F(TagText, TheModeSaysWhatTheThirdFieldIs) {
    for (const std::uint16_t mode : {modeMerge, modePrice}) {
        walkState().engineMode = mode;
        useText(U"<!$7;Price;Third:9>");
        ASSERT_TRUE(convertTextToLinks(document->ref()));
        const std::vector<tagListRec> tags = listTags(*document, mode);
        ASSERT_EQ(tags.size(), 1U);
        EXPECT_EQ(pstrString(mode == modeMerge ? tags[0].tag.ruleName : tags[0].tag.searchCriteriaName), "Third");
        ASSERT_TRUE(convertLinksToText(document->ref()));
        EXPECT_EQ(text(), "<!$7; Price; Third; ; : >9<!!>");
    }
}

TEST_F(TagText, TagFramesTagWhatTheyLieOver) {
    DocumentBuilder builder;
    const std::int32_t magenta = builder.addSwatch({"C=0 M=100 Y=0 K=0", Swatch::Space::cmyk, {0, 1, 0, 0}});
    const UID page = builder.addSinglePage(300, 300), second = builder.addSinglePage(300, 300);
    const UID photo = builder.addRectangle(page, {100, 100, 150, 150}, {});
    const UID other = builder.addRectangle(second, {100, 100, 150, 150}, {});
    const auto addTagFrame = [&](UID onPage, const PMRect& bounds, std::u32string_view content, double weight) {
        PageItem item;
        ItemShape shape;
        shape.bounds = bounds;
        shape.content = ContentKind::text;
        shape.stroke.paint = {magenta, 1};
        shape.stroke.weight = weight;
        item.shape = std::make_shared<const ItemShape>(shape);
        item.name = "x_QELTAGGEDTEXT_1";
        const UID frame = builder.addItem(builder.layerNode(builder.spreadOf(onPage), 1), item);
        StoryTextBuilder made;
        made.append(content, builder.attributePool().plainRun());
        made.endParagraph(builder.attributePool().paragraph({}), builder.attributePool().plainRun());
        made.endThread();
        builder.addStory({frame}, made.finish());
        return frame;
    };
    addTagFrame(page, {101.9, 98.1, 150, 150}, U"<BT><!$3;Photo;:p></BT><BR> Big</BR>", 10);
    addTagFrame(second, {0, 0, 72, 72}, U"<PR> Spring</PR>", 10);
    const UID alone = addTagFrame(second, {100, 100, 150, 152}, U"<PT><!$4;Other;:p></PT>", 10);
    const UID plain = addTagFrame(second, {100, 100, 150, 150}, U"text", 9);
    document = builder.finish();
    RulesModule rules;
    ASSERT_TRUE(convertTextToLinks(document->ref()));
    EXPECT_EQ(links(), "3:Photo=frame " + std::to_string(photo) + ";4:Other=p;");
    EXPECT_EQ(rules.told, "2003 " + std::to_string(photo) + " Big;2004 2 Spring;");
    EXPECT_EQ(document->stories().size(), 2U) << "two tag frames are gone";
    EXPECT_TRUE(document->itemExists(alone) && document->itemExists(plain) && document->itemExists(other));
    ASSERT_EQ(alerts.shown.size(), 1U);
    EXPECT_EQ(alerts.shown[0].text, "This document contains 1 Qel Tag frame(s) with no corresponding standard frame.");
}

TEST_F(TagText, WalkersShowLabelsAndStepThrough) {
    useText(U"<!$1;A:one> and <!$1;B:two>");
    ASSERT_TRUE(convertTextToLinks(document->ref()));
    ASSERT_TRUE(showTagLabels(document->ref(), true));
    EXPECT_EQ(text(), "<Kelvane_Highlight_Green_Spare> and <Kelvane_Highlight_Green_Spare>");
    ASSERT_TRUE(showTagLabels(document->ref(), false));
    EXPECT_EQ(text(), "Spare and Spare");
    EXPECT_EQ(links(), "1:A=Spare;1:B=Spare;");
    traceTags(document->ref());
    ASSERT_EQ(alerts.shown.size(), 2U);
    EXPECT_EQ(alerts.shown[1].text.substr(0, 60), "<Kelvane_Highlight_Green_Spare>: starts at 10, 5 characters.");
    alerts.answer = 2;
    traceTags(document->ref());
    EXPECT_EQ(alerts.shown.size(), 3U);
}

}  // namespace
}  // namespace tarnova
