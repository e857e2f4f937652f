// Text in a layout file: paragraphs, runs and the links on them.

#pragma once

#include <memory>
#include <string>

#include "host/files/format_members.h"
#include "host/files/inline_links.h"
#include "host/files/json_tree.h"
#include "host/files/json_writer.h"
#include "host/model/attribute_pool.h"
#include "host/model/document_builder.h"
#include "host/model/story_text.h"

namespace tarnova {

class TextReader {
 public:
    TextReader(DocumentBuilder& itsBuilder, const LayoutNames& itsNames) : builder(itsBuilder), names(itsNames) {}
    /// A text, an array of paragraphs, or an object with "threads". Throws LayoutFault.
    [[nodiscard]] std::shared_ptr<StoryText> read(const JsonValue& value);

 private:
    struct Paragraph {
        const ParagraphAttributes* attributes;
        RunDescription last;  // of the last run, without tags: what the return takes
    };

    void readThread(const JsonValue& value);
    void readParagraph(const JsonValue& value);
    void readRun(const JsonValue& value, Paragraph& paragraph);
    void appendInline(const JsonValue& text, const RunDescription& run, Paragraph& paragraph);
    void appendSpecial(const JsonValue& word, const RunDescription& run, Paragraph& paragraph);
    void appendPiece(const std::string& utf8, const RunAttributes* run, const Paragraph& paragraph);
    void endParagraph(const Paragraph& paragraph, const RunDescription& run);
    [[nodiscard]] RunDescription describe(const FormatTarget& target);
    [[nodiscard]] std::shared_ptr<const TagAttribute> tagOf(const TagFields& fields);

    DocumentBuilder& builder;
    const LayoutNames& names;
    StoryTextBuilder text;
};

/// Writes a content in the form that `TextReader` reads.
void writeText(JsonWriter& out, const StoryText& text, const DocumentModel& document);

}  // namespace tarnova
