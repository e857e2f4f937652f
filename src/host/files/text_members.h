// Text in a layout file: paragraphs, runs and the links on them.

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/files/format_members.h"
#include "host/files/inline_links.h"
#include "host/files/json_tree.h"
#include "host/files/json_writer.h"
#include "host/model/attribute_pool.h"
#include "host/model/document_builder.h"
#include "host/model/story_text.h"

namespace tarnova {

/// An item in a text that is read when the text has a story.
struct AnchoredValue {
    std::int32_t position = 0;  // of its anchor character
    const JsonValue* item = nullptr;
};

class TextReader {
 public:
    TextReader(DocumentBuilder& itsBuilder, const LayoutNames& itsNames) : builder(itsBuilder), names(itsNames) {}
    /// A text, an array of paragraphs, or an object with "threads". Throws LayoutFault.
    [[nodiscard]] std::shared_ptr<StoryText> read(const JsonValue& value);
    /// The items that stand in the text that was read last.
    [[nodiscard]] const std::vector<AnchoredValue>& anchored() const { return anchoredValues; }

 private:
    struct Paragraph {
        const ParagraphAttributes* attributes;
        RunDescription last;  // of the last run, without tags: what the return takes
    };

    void readThread(const JsonValue& value);
    void readParagraph(const JsonValue& value);
    void readRun(const JsonValue& value, Paragraph& paragraph);
    void appendItem(const JsonValue& item, const RunDescription& run, Paragraph& paragraph);
    void appendInline(const JsonValue& text, const RunDescription& run, Paragraph& paragraph);
    void appendSpecial(const JsonValue& word, const RunDescription& run, Paragraph& paragraph);
    void appendPiece(const std::string& utf8, const RunAttributes* run, const Paragraph& paragraph);
    void endParagraph(const Paragraph& paragraph, const RunDescription& run);
    [[nodiscard]] RunDescription describe(const FormatTarget& target);
    [[nodiscard]] std::shared_ptr<const TagAttribute> tagOf(const TagFields& fields);

    DocumentBuilder& builder;
    const LayoutNames& names;
    StoryTextBuilder text;
    std::vector<AnchoredValue> anchoredValues;
};

/// Writes a content in the form that `TextReader` reads; `writeItem` writes an anchored item.
void writeText(JsonWriter& out, const StoryText& text, const DocumentModel& document,
               const std::function<void(UID)>& writeItem);

}  // namespace tarnova
