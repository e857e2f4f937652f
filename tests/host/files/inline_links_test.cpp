#include "host/files/inline_links.h"

#include <gtest/gtest.h>

#include "engine/toolkit/text_encoding.h"
#include "host/model/story_text.h"
#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

/// Pieces in one text: links as <key,name,rule,style|text>.
std::string shown(const std::vector<InlinePiece>& pieces) {
    std::string out;
    for (const InlinePiece& piece : pieces) {
        const TagFields& tag = piece.tag;
        const bool isLink = piece.kind == InlinePiece::Kind::link;
        if (isLink) out += "<" + tag.key + "," + tag.link + "," + tag.rule + "," + tag.style + "|";
        out += piece.text;
        if (isLink) out += ">";
    }
    return out;
}

TEST(InlineLinks, Forms) {
    const std::pair<const char*, const char*> rows[] = {
        {"plain \\ text", "plain \\ text"},
        {"a\nb\r\nc\rd", "a\rb\rc\rd"},
        {"{{Name}}", "<1,Name,,|Name>"},
        {"a{{ Name |you}}b", "a<1,Name,,|you>b"},
        {"{{2:Name}}", "<2,Name,,|Name>"},
        {"{{2:Name|a:b|c}}", "<2,Name,,|a:b|c>"},
        {"{{A}}{{B}}", "<1,A,,|A><1,B,,|B>"},
        {"{{a\\:b\\|c\\}}}", "<1,a:b|c},,|a:b|c}>"},
        {"\\{{Name}}", "{{Name}}"},
        {"\\\\{{Name}}", "\\<1,Name,,|Name>"},
        {"a\\\nb", "a\nb"},
        {"a\\\r\nb", "a\nb"},
        {"<!$K1;Name;;;:some data>", "<K1,Name,,|some data>"},
        {"[!$K1; Name;R;S:]some data[!!]!", "<K1,Name,R,S|some data>!"},
        {"<!$K%3b;N%20:x>", "<K;,N ,,|x>"},
        {"<!$K;N:>  a\nb <!!>", "<K,N,,|a\rb >"},
        {"<!$K;N;;;;;;;;1;a;b;c:x>", "<!$K;N;;;;;;;;1;a;b;c:x>"},
        {"\\<!$ and \\[!$", "<!$ and [!$"},
        {"<!$A;B:x><!$C;D:y>", "<A,B,,|x><C,D,,|y>"},
    };
    for (const auto& [text, pieces] : rows) {
        std::string problem;
        EXPECT_EQ(shown(parseInlineText(text, problem)), pieces) << text;
        EXPECT_EQ(problem, "") << text;
    }
}

TEST(InlineLinks, Faults) {
    const std::pair<const char*, const char*> rows[] = {{"{{Name", "\"}}\""},
                                                        {"{{Na\nme}}", "\"}}\""},
                                                        {"{{}}", "no name"},
                                                        {"{{:Name}}", "no key"},
                                                        {"{{Name|}}", "no text"},
                                                        {"{{12345678901234567890123456789012}}", "31 bytes"},
                                                        {"<!$K;Name", "no \">\""},
                                                        {"<!$K>", "semicolons"},
                                                        {"<!$K;N>", "one colon"},
                                                        {"<!$K:x;N:y>", "%3A"},
                                                        {"<!$K;N:a:b>", "one colon"},
                                                        {"<!$K;N:>", "closing <!!>"},
                                                        {"<!$K;N:><!!>", "no text"},
                                                        {"<!$K;N<!!>", "no \">\""},
                                                        {"<!$;N:x>", "no key"},
                                                        {"<!$K; :x>", "no name"},
                                                        {"<!$K%;N:x>", "%25"},
                                                        {"<!$K;N;;;;;;1:x>", "media data"},
                                                        {"<!$K;N;;;;;;2;abc:x>", "pairs"}};
    for (const auto& [text, says] : rows) {
        std::string problem;
        static_cast<void>(parseInlineText(text, problem));
        EXPECT_NE(problem.find(says), std::string::npos) << text << ": " << problem;
    }
}

TEST(InlineLinks, EscapedTextComesBack) {
    for (const char* text : {"", "a\\", "\\\\{{{", "{{{{", "\n\n", "\\\n", "<!$[!$", "a{b{{c\\{{", "}}"}) {
        std::string problem;
        const std::vector<InlinePiece> pieces = parseInlineText(escapeInlineText(text), problem);
        EXPECT_EQ(shown(pieces), text);
        EXPECT_EQ(problem, "");
    }
}

/// The stored record of a link, byte by byte, in a document that was opened.
TEST(InlineLinks, BecomeTagsWithARecord) {
    const auto document = opened(frameWith("\"{{K1:Name|text}}{{K1:Name|text}}\""));
    const UID story = document->stories()[0];
    EXPECT_EQ(document->textRead(story, 0, 99), U"texttext\r");
    const attributeRunRec run = document->attributeRunAt(story, 0);
    EXPECT_EQ(run.length, 4) << "two links side by side stay two";
    const auto* tag = dynamic_cast<const TagAttribute*>(run.attributes->QueryByClassID(TextAttributeClass::kelvaneTag));
    ASSERT_NE(tag, nullptr);
    const unsigned char record[] = {0,   0,   0,   0x3B, 0,   1,   0, 0,   0,   0x0B, 5,   'k', 'y', '.', 'r',
                                    '1', 2,   'K', '1',  0,   9,   5, 's', 'c', '.',  'r', '1', 0,   0,   0x0D,
                                    5,   'e', 'r', '.',  'r', '1', 4, 'N', 'a', 'm',  'e', 0,   9,   5,   'r',
                                    'l', '.', 'r', '1',  0,   0,   9, 5,   's', 'r',  '.', 'r', '1', 0};
    EXPECT_EQ(tag->data(), std::string(std::begin(record), std::end(record)));
    EXPECT_EQ(tag->label(), "<Kelvane_Highlight_Green_Spare>");
    EXPECT_EQ(document->attributeRunAt(story, 8).attributes->QueryByClassID(TextAttributeClass::kelvaneTag), nullptr)
        << "the return carries no link";
    EXPECT_EQ(document->nextTagId(), 3u);
    expectStable(*document);
}

TEST(TagMembers, EveryRecordComesBack) {
    const std::pair<const char*, const char*> rows[] = {
        {R"({"id": 9, "link": "L"})", nullptr},
        {R"({"id": 9, "key": "", "link": "L", "notes": ["a", "", "c"], "locked": true, "associate": true})", nullptr},
        {R"({"id": 0, "kind": 1})", nullptr},
        {R"({"id": 9, "kind": 2, "link": "L", "rule": "R", "criteria": "C", "style": "S", "spare": ""})", nullptr},
        // Records that fields can't show: cut short, wrong length, a byte behind, a field of length 0.
        {R"({"id": 9, "record": "AAAA"})", nullptr},
        {R"({"id": 9, "record": "AAAACQABAAA="})", nullptr},
        {R"({"id": 9, "record": "AAAACQABAAAA"})", nullptr},
        {R"({"id": 9, "record": "AAAAEAABAAAAAAVreS5yMQ=="})", nullptr},
        // A record of kind 1 without fields is what fields show.
        {R"({"id": 9, "record": "AAAACAABAAI="})", R"({"id": 9, "kind": 1})"},
    };
    for (const auto& [tag, other] : rows) {
        const std::string written = other == nullptr ? tag : other;
        const auto document = opened(frameWith(R"([{"text": [{"text": "a", "tag": )" + std::string(tag) + "}]}]"));
        EXPECT_NE(writeLayout(*document).find(R"("tag": )" + written + "}"), std::string::npos)
            << tag << "\n"
            << writeLayout(*document);
        expectStable(*document);
    }
}

/// Links on items, as they are written again.
TEST(TagMembers, LinksOfItems) {
    struct testRow {
        const char *name, *members, *other;  // what is written instead, if it isn't the same
    };
    const testRow rows[] = {
        {"a name", R"("tag": {"link": "Photo"})", nullptr},
        {"all fields",
         R"("tag": {"associate": true, "notes": ["n"], "kind": 2, "key": "K", "link": "L", "rule": "R", "criteria": "C", "style": "S"})",
         R"("tag": {"kind": 2, "key": "K", "link": "L", "rule": "R", "criteria": "C", "style": "S", "notes": ["n", "", ""], "associate": true}})"},
        {"media only", R"("tallyraTag": {"kind": 1, "locked": true})", nullptr},
        {"both stores", R"("tag": {"link": "A"}, "tallyraTag": {"link": "B"})", nullptr},
        {"a link beside other data", R"("tag": {"link": "A"}, "data": {"tallyra": "AAAAAAAAAAE="})", nullptr},
        {"data that is a link", R"("data": {"kelvane": "AAAAEAAAAAEAAAAIQVFNcAAAAAgAAQAC"})", R"("tag": {"kind": 1}})"},
        {"a link of another version", R"("data": {"kelvane": "AAAAEAAAAAIAAAAIQVFNcAAAAAgAAQAC"})", nullptr},
        {"an entry of another type", R"("data": {"kelvane": "AAAAEAAAAAEAAAAIQVFNcQAAAAgAAQAC"})", nullptr},
        {"a second entry", R"("data": {"kelvane": "AAAAGAAAAAEAAAAIQVFNcAAAAAgAAQACAAAAAGFxbUg="})", nullptr},
        {"no entry", R"("data": {"kelvane": ""})", nullptr},
    };
    for (const auto& [name, members, other] : rows) {
        const std::string written = other == nullptr ? std::string(members) + "}" : other;
        const auto document = opened(pageWith(R"({"bounds": [0, 0, 9, 9], )" + std::string(members) + "}"));
        ASSERT_NE(document, nullptr) << name;
        EXPECT_NE(writeLayout(*document).find(written), std::string::npos) << name << "\n" << writeLayout(*document);
        expectStable(*document);
    }
    TagFields unknownKind;
    unknownKind.kind = 3;
    EXPECT_FALSE(decodeTagFields(encodeTagFields(unknownKind))) << "a kind that the members can't say";
}

TEST(TextMembers, ParagraphsRunsAndReturns) {
    const auto document = opened(frameWith(R"(["one\ntwo", {"size": 8, "text": ["a", {"text": "b\nc", "italic": true}],
        "return": {"underline": true}}, ""])"));
    const StoryText& text = *document->story(document->stories()[0])->content;
    EXPECT_EQ(utf32ToUtf8(charactersOf(text, 0, text.length())), "one\rtwo\rab\rc\r\r");
    ASSERT_EQ(text.paragraphCount(), 5);
    EXPECT_EQ(paragraphAt(text, 8).attributes, paragraphAt(text, 11).attributes);
    EXPECT_EQ(paragraphAt(text, 11).attributes->charOverrides.pointSize, 8);
    std::string limits;
    for (std::int32_t at = 0; at < text.length(); at = runAt(text, at).limit)
        limits += std::to_string(runAt(text, at).limit) + " ";
    EXPECT_EQ(limits, "9 12 13 14 ");
    EXPECT_EQ(runAt(text, 9).attributes->overrides.fontStyle, "Italic");
    EXPECT_EQ(runAt(text, 12).attributes->overrides.underline, true);
    EXPECT_TRUE(storyIsConsistent(text));
    expectStable(*document);
}

}  // namespace
}  // namespace tarnova
