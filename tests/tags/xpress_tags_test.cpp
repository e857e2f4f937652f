// XPress Tags into tagged text, and the head of tagged text.

#include "tags/xpress_tags.h"

#include <gtest/gtest.h>

#include "host/model/document_builder.h"
#include "host/model/story_text.h"
#include "tags/tagged_text.h"

namespace tarnova {
namespace {

TEST(XpressTags, WhatEachBecomes) {
    struct testRow {
        std::string input, output;
    };
    const testRow rows[] = {
        {"@Body:Hello<B>big</B>", "<pstyle:Body>Hello<ct:><ct:Bold>big<ct:>"},
        {"@:x@$:y", "<cstyle:><pstyle:>x<pstyle:NormalParagraphStyle>y"},
        {"a@b.c:d", "a@b.c:d"},
        {"@" + std::string(64, 'n') + ":x", "<pstyle:" + std::string(64, 'n') + ">x"},
        {"@" + std::string(65, 'n') + ":x", "@" + std::string(65, 'n') + ":x"},
        {"<B><I>x<b>y</i>", "<ct:><ct:Bold><ct:><ct:Bold Italic>x<ct:><ct:Italic>y<ct:>"},
        {"\\<B>\\\\", "<B>\\"},
        {"<!$K1;Name:>@c:Text<!!>@p:", "[!$K1;Name:]<cstyle:c>Text[!!]<pstyle:p>"},
        {"<f\"Arial\">a<f\xD2"
         "Arial\xD3>b<f>",
         "<cFont:Arial>a<cFont:Arial>b<f>"},
        {"<z12>a<z\"9\">", "<cSize:12>a<cSize:\"9>"},
        {"<c\"Red 1\">a<cx>", "<cColor:Red 1>a<cx>"},
        {"<@Bold>a<@>b<@c:d", "<cstyle:Bold>a<cstyle:>b<cstyle:c>d"},
        {"<\\s><\\p><\\n><\\#><\\#13><#13><#9><\\#9><\\{><\\a><\\z>",
         "<0x0020><0x0020><0x000A><0x2004><0x000D><0x000D>\t\t<0x200A><0x2013><z>"},
        {"<*L><*R><*C><*J>", "<pta:><pta:Left><pta:><pta:Right><pta:><pta:Center><pta:><pta:JustifyLeft>"},
        {"a\nb\r\nc\rd", "a\rb\rc\rd"},
        {"<v1.70><e1>\r\nx<v1.70><e1>\ny", "xy"},
        {"<P>", "<ct:>"},
        {"<V><U></><K><P><V><->",
         "<cp:Superscript><cu:1><cstrike:1><ccase:All Caps><cp:><ct:><cu:><cstrike:><ccase:>"
         "<cp:Superscript><cp:Subscript>"},
        {"<+>a<V></U><u></U><H><H>", "<cp:Superscript>a<cp:><cu:1><cu:><ccase:Small Caps><ccase:>"},
        {"<Q>a>b", "<Q>a>b"},
        {"a<z12", "a<z12"},
        {"a<!$K; N", "a<!$K; N"},
        {"a<@name", "a<@name"},
        {"a\\", "a\\"},
    };
    for (const auto& [input, output] : rows)
        EXPECT_EQ(xpressTagsConvert(input, false), output) << input;
    EXPECT_EQ(xpressTagsConvert("<\\n>", true), "<0x000D>");
}

TEST(TaggedText, HeadSaysWhatTheTextDoesNot) {
    DocumentBuilder builder;
    const std::int32_t strong = builder.addCharacterStyle({"Strong", -1, {}});
    const std::int32_t red = builder.addSwatch({"R=1 G", Swatch::Space::rgb, {1, 0, 0, 0}});
    AttributePool& pool = builder.attributePool();
    RunDescription local, styled;
    local.overrides.family = "Arial";
    local.overrides.color = Paint{red, 1};
    local.overrides.pointSize = 10.5;
    styled.characterStyle = strong;
    ParagraphAttributes paragraph;
    paragraph.overrides.alignment = Alignment::justifyAll;
    StoryTextBuilder text;
    text.append(U"a", pool.run(local));
    text.append(U"b", pool.run(styled));
    text.endParagraph(pool.paragraph(paragraph), pool.plainRun());
    text.endThread();
    PageItem item;
    ItemShape shape;
    shape.bounds = {0, 0, 50, 50};
    shape.content = ContentKind::text;
    item.shape = std::make_shared<const ItemShape>(shape);
    const UID page = builder.addSinglePage(100, 100);
    const UID story =
        builder.addStory({builder.addItem(builder.layerNode(builder.spreadOf(page), 1), item)}, text.finish());
    const auto document = builder.finish();
    const std::string made =
        "<ASCII-WIN>\r\n<vsn:5><fset:InDesign-Roman><ctable:=<Black:COLOR:CMYK:Process:0,0,0,1>>\r\n";
    const std::string look = "<cstyle:><cf:Arial><ct:Regular><cc:R\\=1 G><cs:10.5><pta:JustifyFull>";
    struct testRow {
        std::string text;
        std::int32_t position;
        std::string headed;
    };
    const testRow rows[] = {
        {"x", 0, made + "<pstyle:Basic Paragraph>" + look + "x\r\n"},
        {"x<pstyle:A>", 0, made + look + "x<pstyle:A>\r\n"},
        {"x", 1, made + "<pstyle:Basic Paragraph><cstyle:Strong><pta:JustifyFull>x\r\n"},
        {"<ASCII-MAC>x", 0, "<ASCII-MAC>\rx\r"},
        {"<ASCII-MAC>\rx", 0, "<ASCII-MAC>\rx\r"},
        {"<ASCII-WIN>\rx", 0, "<ASCII-WIN>\r\n\rx\r\n"},
    };
    for (const auto& [value, position, headed] : rows)
        EXPECT_EQ(taggedTextHead(value, {document.get(), story}, position), headed) << value;
}

}  // namespace
}  // namespace tarnova
