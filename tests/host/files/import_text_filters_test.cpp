// The import filters for formatted text, through documents: what arrives looks as the file says.

#include "host/files/import_text_filters.h"

#include <gtest/gtest.h>

#include "document/document_looks.h"
#include "engine/toolkit/text_encoding.h"
#include "host/model/story_reader.h"
#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

class ImportFilters : public ::testing::Test {
 protected:
    void SetUp() override {
        addTextImportFilters();
        document = opened(R"({"tarnovaLayout": 1, "characterStyles": [{"name": "Strong", "bold": true}],
            "paragraphStyles": [{"name": "Body", "size": 9}], "pages": [{"items": [{"bounds": [0, 0, 90, 90],
            "text": [{"leftIndent": 4, "text": ["ab", {"text": "N", "tag": {"link": "L"}}, "cd"]}]}]}]})");
        story = document->stories().front();
    }
    /// Imports in place of the link's text; gives what `shown` tells of all.
    std::string imported(std::string_view filter, std::string_view bytes) {
        std::int32_t length = 0;
        if (document->importText(story, 2, 1, {bytes, {}}, filter, length) != 0) return "refused";
        const std::string result = shown();
        document->undo();
        return result;
    }
    /// "text{what its run says}" of each run, "|style what the paragraph says|" behind each paragraph.
    [[nodiscard]] std::string shown() const {
        std::string out;
        const StoryText& content = *document->story(story)->content;
        for (std::int32_t at = 0; at < content.length();) {
            const StoryParagraph paragraph = paragraphAt(content, at);
            for (std::int32_t i = at; i < paragraph.limit() - 1;) {
                const RunSpan run = runAt(content, i);
                const std::int32_t limit = std::min(run.limit, paragraph.limit() - 1);
                out += utf32ToUtf8(charactersOf(content, i, limit)) + looks(*run.attributes);
                i = limit;
            }
            const ParaOverrides& own = paragraph.attributes->overrides;
            out += "|" + document->paragraphStyles()[static_cast<std::size_t>(paragraph.attributes->style)].name;
            if (own.alignment) out += " align " + std::to_string(static_cast<int>(*own.alignment));
            if (own.leftIndent) out += " left " + std::to_string(static_cast<int>(*own.leftIndent));
            out += "|";
            at = paragraph.limit();
        }
        return out;
    }
    [[nodiscard]] std::string looks(const RunAttributes& run) const {
        std::string out;
        const auto add = [&out](const std::string& what) { out += (out.empty() ? "" : ",") + what; };
        const CharOverrides& own = run.overrides;
        if (run.tags[0] != nullptr) add("link");
        if (run.characterStyle >= 0)
            add(document->characterStyles()[static_cast<std::size_t>(run.characterStyle)].name);
        if (own.family) add(*own.family);
        if (own.fontStyle) add(*own.fontStyle);
        if (own.pointSize) add(std::to_string(static_cast<int>(*own.pointSize)));
        if (own.color) add(document->swatches()[static_cast<std::size_t>(own.color->swatch)].name);
        if (own.position) add(*own.position == TextPosition::superscript ? "super" : "other");
        if (own.underline) add(*own.underline ? "underlined" : "not underlined");
        if (own.strikeThrough) add("struck");
        if (own.caps) add(*own.caps == CharFormat::Caps::allCaps ? "caps" : "small caps");
        return out.empty() ? out : "{" + out + "}";
    }

    std::unique_ptr<DocumentModel> document;
    UID story = kInvalidUID;
};

TEST_F(ImportFilters, TaggedTextArrivesWithItsLooks) {
    const std::string end = "cd|Basic Paragraph left 4|";
    const std::pair<std::string, std::string> rows[] = {
        {"<ASCII-WIN>\r\nx\r\n", "abx{link}" + end},
        {"<ASCII-WIN>\r\n<vsn:5><ctable:=<Sky:COLOR:RGB:Process:0,0.5,1>>\r\n<ct:Bold>x<ct:><cc:Sky>y<cs:12>z\r\n",
         "abx{link,Bold}y{link,Sky}z{link,12,Sky}" + end},
        {"<ASCII-MAC>\r<cTypeface:Italic><cf:Arial>x<cf:><ct:><cp:Superscript>2<cp:><cu:1>u<cu:><cstrike:1>s<cstrike:>",
         "abx{link,Arial,Italic}2{link,super}u{link,underlined}s{link,struck}" + end},
        {"<ASCII-WIN>\n<ccase:All Caps>a<ccase:Small Caps>b<cstyle:Strong>c<cstyle:Unknown>d<cc:None of it>e",
         "aba{link,caps}b{link,small caps}c{link,Strong,small caps}de{link,small caps}" + end},
        {"<ASCII-WIN>\r\n<pstyle:Body>one\r\n<pta:Center>two\r\n<pstyle:NormalParagraphStyle><pli:7>three",
         "abone{link}|Body|two{link}|Body align 1|three{link}cd|Basic Paragraph left 7|"},
        {"<UNICODE-WIN>\n<0x201C>q\\<b\\>\\\\<0x000D>n<0x000A>l<Unknown:<nested>>",
         "ab\u201Cq<b>\\{link}|Basic Paragraph left 4|n\u2028l{link}" + end},
        {"<ASCII-WIN>\n<dps:New=<BasedOn:Body><pta:Right><ct:Bold>><dcs:C=<cs:5>><pstyle:New>x<cstyle:C>y < z",
         "abx{link}y < z{link,C}cd|New|"},
        {"<ASCII-MAC>\r\x8E\xD2", "ab\u00E9\u201C{link}" + end},
        {"<ASCII-WIN>\n\xE9", "ab\u00E9{link}" + end},
        {std::string("\xFF\xFE<\0U\0N\0I\0C\0O\0D\0E\0-\0W\0I\0N\0>\0x\0=\xD8\0\xDE", 34), "abx\U0001F600{link}" + end},
        {"x<ct:Bold>", "refused"},
    };
    for (const auto& [bytes, result] : rows)
        EXPECT_EQ(imported(textImportFilters[0], bytes), result) << bytes;
    const auto& styles = document->paragraphStyles();
    EXPECT_EQ(styles.back().name, "New");
    EXPECT_EQ(styles[static_cast<std::size_t>(styles.back().basedOn)].name, "Body");
    EXPECT_EQ(styles.back().charFormat.fontStyle, "Bold");
}

TEST_F(ImportFilters, RtfArrivesWithItsLooks) {
    const std::string end = "cd|Basic Paragraph left 4|";
    const std::pair<std::string, std::string> rows[] = {
        {R"({\rtf1\ansi{\fonttbl{\f0\fswiss Arial;}{\f1 Times New;}}{\colortbl;\red255\green0\blue0;\red0\green0\blue0;}
{\info{\author me}}\f1\fs24 x{\b b{\i c}}\cf1 r\cf2 k\cf0 a\par})",
         "abx{link,Times New,12}b{link,Times New,Bold,12}c{link,Times New,Bold Italic,12}"
         "r{link,Times New,12,R=255 G=0 B=0}k{link,Times New,12,Black}a{link,Times New,12}" +
             end},
        {R"({\rtf1 \qc one\par\pard\li100 two\par\pard three{\*\generator no}})",
         "abone{link}|Basic Paragraph align 1 left 4|two{link}|Basic Paragraph left 5|three{link}" + end},
        {R"({\rtf1\uc1 \'e9\u8364?\u-10179?\u-8704?\emdash\~\{\\\tab{\super 2}{\ul u\ulnone n}{\strike s}{\caps C}{\scaps S}})",
         "ab\u00E9\u20AC\U0001F600\u2014\u00A0{\\\t{link}2{link,super}u{link,underlined}n{link,not "
         "underlined}s{link,struck}"
         "C{link,caps}S{link,small caps}" +
             end},
        {R"({\rtf1\mac \'8e\line x\plain y} behind)", "ab\u00E9\u2028xy{link}" + end},
        {"{\\rtf1 unfinished {\\b bold", "abunfinished {link}bold{link,Bold}" + end},
        {"{\\rtf1" + std::string(2000, '{'), "refused"},
        {"text", "refused"},
    };
    for (const auto& [bytes, result] : rows)
        EXPECT_EQ(imported(textImportFilters[1], bytes), result) << bytes.substr(0, 200);
}

}  // namespace
}  // namespace tarnova
