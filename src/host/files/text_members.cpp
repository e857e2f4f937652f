#include "host/files/text_members.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "engine/toolkit/text_encoding.h"
#include "host/files/tag_members.h"

namespace tarnova {

namespace {

constexpr const char* specialWords[] = {"pageNumber",    "nextPageNumber", "previousPageNumber",
                                        "sectionMarker", "pageCount",      "sectionPageCount"};
static_assert(std::size(specialWords) == pageCharacterCount);

constexpr TextAttributeClass stores[2] = {TextAttributeClass::kelvaneTag, TextAttributeClass::tallyraTag};

RunDescription withoutTags(RunDescription run) {
    run.tags[0].reset();
    run.tags[1].reset();
    return run;
}

/// Like the run, without tags; what the return of a paragraph takes when the file doesn't say.
const RunAttributes* returnOf(AttributePool& pool, const RunAttributes* run) {
    if (run == nullptr) return pool.plainRun();
    return pool.run(withoutTags({run->characterStyle, run->overrides, {}}));
}

}  // namespace

std::shared_ptr<StoryText> TextReader::read(const JsonValue& value) {
    text = StoryTextBuilder();
    anchoredValues.clear();
    if (!value.is(JsonValue::Type::object)) {
        readThread(value);
        return text.finish();
    }
    static constexpr Member<TextReader> rows[] = {
        {"threads",
         [](TextReader& reader, const JsonValue& v) {
             requireArray(v);
             for (const JsonValue& thread : v)
                 reader.readThread(thread);
         }},
    };
    readMembers<TextReader>(value, "a text with threads", rows, *this);
    if (text.length() == 0) faultAt(value, "A text needs at least one thread.");
    return text.finish();
}

void TextReader::readThread(const JsonValue& value) {
    if (value.is(JsonValue::Type::string)) {
        readParagraph(value);
    } else {
        requireArray(value);
        for (const JsonValue& paragraph : value)
            readParagraph(paragraph);
        if (value.count == 0) endParagraph({builder.attributePool().paragraph({}), {}}, {});
    }
    text.endThread();
}

void TextReader::readParagraph(const JsonValue& value) {
    FormatTarget target(names);
    if (!value.is(JsonValue::Type::string)) readFormat(value, "a paragraph", paragraphMembers(), target);
    const JsonValue* content = value.is(JsonValue::Type::string) ? &value : target.text;
    ParagraphAttributes attributes;
    if (target.style != nullptr) {
        attributes.style = namedIndex(names.paragraphStyles, *target.style, "paragraph style");
    }
    attributes.overrides = std::move(target.paras);
    attributes.charOverrides = std::move(target.chars);
    Paragraph paragraph{builder.attributePool().paragraph(attributes), {}};
    if (content != nullptr && content->is(JsonValue::Type::array)) {
        for (const JsonValue& run : *content)
            readRun(run, paragraph);
    } else if (content != nullptr) {
        appendInline(*content, {}, paragraph);
    }
    if (target.returnFormat == nullptr) {
        endParagraph(paragraph, paragraph.last);
        return;
    }
    FormatTarget format(names);
    readFormat(*target.returnFormat, "a return", returnMembers(), format);
    endParagraph(paragraph, describe(format));
}

void TextReader::readRun(const JsonValue& value, Paragraph& paragraph) {
    if (value.is(JsonValue::Type::string)) {
        appendInline(value, {}, paragraph);
        return;
    }
    FormatTarget target(names);
    readFormat(value, "a run", runMembers(), target);
    const bool hasText = target.text != nullptr, isSpecial = target.special != nullptr, isItem = target.item != nullptr;
    if (int(hasText) + int(isSpecial) + int(isItem) != 1) {
        faultAt(value, "A run needs either \"text\", \"special\" or \"item\".");
    }
    const RunDescription run = describe(target);
    if (hasText) {
        appendInline(*target.text, run, paragraph);
    } else if (isSpecial) {
        appendSpecial(*target.special, run, paragraph);
    } else {
        appendItem(*target.item, run, paragraph);
    }
}

RunDescription TextReader::describe(const FormatTarget& target) {
    RunDescription out;
    if (target.style != nullptr) {
        out.characterStyle = namedIndex(names.characterStyles, *target.style, "character style");
    }
    out.overrides = target.chars;
    for (std::size_t store = 0; store < 2; ++store) {
        if (target.tags[store] == nullptr) continue;
        ReadTag tag = readTag(*target.tags[store], stores[store]);
        if (!tag.hasId) tag.content.tagId = builder.newTagId();
        out.tags[store] = builder.attributePool().tag(std::make_shared<TagAttribute>(stores[store], tag.content));
    }
    return out;
}

/// An anchor character for an item that is read later.
void TextReader::appendItem(const JsonValue& item, const RunDescription& run, Paragraph& paragraph) {
    paragraph.last = withoutTags(run);
    anchoredValues.push_back({static_cast<std::int32_t>(text.length()), &item});
    text.append({&anchorCharacter, 1}, builder.attributePool().run(run));
}

void TextReader::appendInline(const JsonValue& value, const RunDescription& run, Paragraph& paragraph) {
    AttributePool& pool = builder.attributePool();
    std::string problem;
    const std::vector<InlinePiece> pieces = parseInlineText(stringOf(value), problem);
    if (!problem.empty()) faultAt(value, problem);
    paragraph.last = withoutTags(run);
    for (const InlinePiece& piece : pieces) {
        if (piece.kind == InlinePiece::Kind::text) {
            appendPiece(piece.text, pool.run(run), paragraph);
            continue;
        }
        if (run.tags[0] != nullptr) faultAt(value, "A run with a \"tag\" can't hold a second link in its text.");
        RunDescription linked = run;
        linked.tags[0] = tagOf(piece.tag);
        appendPiece(piece.text, pool.run(linked), paragraph);
    }
}

void TextReader::appendSpecial(const JsonValue& value, const RunDescription& run, Paragraph& paragraph) {
    const char32_t character = characterOf(wordAs<PageCharacter>(value, specialWords));
    paragraph.last = withoutTags(run);
    text.append(std::u32string_view(&character, 1), builder.attributePool().run(run));
}

/// Text in which a return ends the paragraph and begins another with the same format.
void TextReader::appendPiece(const std::string& utf8, const RunAttributes* run, const Paragraph& paragraph) {
    const std::u32string characters = utf8ToUtf32(utf8);
    if (characters.size() >= static_cast<std::size_t>(storyLengthLimit) - text.length()) {
        throw LayoutFault(0, "A text is too long.");
    }
    std::u32string_view left = characters;
    for (std::size_t at; (at = left.find(returnCharacter)) != std::u32string_view::npos;) {
        text.append(left.substr(0, at), run);
        text.endParagraph(paragraph.attributes, run);
        left.remove_prefix(at + 1);
    }
    text.append(left, run);
}

void TextReader::endParagraph(const Paragraph& paragraph, const RunDescription& run) {
    text.endParagraph(paragraph.attributes, builder.attributePool().run(run));
}

std::shared_ptr<const TagAttribute> TextReader::tagOf(const TagFields& fields) {
    TagAttribute::Content content = defaultTagContent(stores[0]);
    content.tagId = builder.newTagId();
    content.data = encodeTagFields(fields);
    return builder.attributePool().tag(std::make_shared<TagAttribute>(stores[0], content));
}

namespace {

class TextWriter {
 public:
    TextWriter(JsonWriter& itsOut, const StoryText& itsText, const DocumentModel& itsDocument,
               const std::function<void(UID)>& itsWriteItem)
        : out(itsOut),
          text(itsText),
          document(itsDocument),
          writeItem(itsWriteItem),
          plain(document.attributePool().plainRun()) {}

    void write() {
        if (text.threadCount() == 1) {
            writeThread();
            return;
        }
        out.beginObject();
        out.key("threads");
        out.beginArray();
        for (std::int32_t i = 0; i < text.threadCount(); ++i)
            writeThread();
        out.end();
        out.end();
    }

 private:
    struct Run {
        std::int32_t start;
        std::int32_t length;
        const RunAttributes* attributes;
        enum class Kind { text, special, item } kind;  // what isn't text is a single character
    };

    /// One plain paragraph stands as its text alone.
    void writeThread() {
        const textSpanRec thread = threadAt(text, start);
        const std::int32_t limit = thread.start + thread.length;
        const StoryParagraph first = reader.paragraphAt(start);
        if (first.endsThread && isPlain(first)) {
            writeParagraph();
            return;
        }
        out.beginArray();
        while (start < limit)
            writeParagraph();
        out.end();
    }

    [[nodiscard]] std::vector<Run> runsOf(std::int32_t from, std::int32_t limit) {
        std::vector<Run> runs;
        while (from < limit) {
            const RunSpan run = reader.runAt(from);
            const std::int32_t runLimit = std::min(limit, run.limit);
            const std::int32_t other = otherFrom(from, runLimit);
            Run::Kind kind = Run::Kind::text;
            if (other == from) kind = itemAt(from) != kInvalidUID ? Run::Kind::item : Run::Kind::special;
            const std::int32_t length = kind == Run::Kind::text ? other - from : 1;
            runs.push_back({from, length, run.attributes, kind});
            from += length;
        }
        return runs;
    }

    /// Position of the next character that is written as a word, or the limit.
    [[nodiscard]] std::int32_t specialFrom(std::int32_t from, std::int32_t limit) const {
        if (text.pageCharacters() == 0) return limit;
        const std::u32string characters = charactersOf(text, from, limit);
        return from + static_cast<std::int32_t>(std::find_if(characters.begin(), characters.end(), isPageCharacter) -
                                                characters.begin());
    }

    /// The first item that is anchored in a range; a UID of 0 when there is none.
    [[nodiscard]] ownedItemRec anchoredIn(std::int32_t from, std::int32_t limit) const {
        if (!text.hasOwned()) return {};
        std::vector<ownedItemRec> found;
        ownedIn(text, from, limit, found);
        return found.empty() ? ownedItemRec{} : found.front();
    }

    [[nodiscard]] UID itemAt(std::int32_t position) const { return anchoredIn(position, position + 1).item; }

    /// Position of the next character that isn't written as text, or the limit.
    [[nodiscard]] std::int32_t otherFrom(std::int32_t from, std::int32_t limit) const {
        const ownedItemRec anchored = anchoredIn(from, limit);
        return specialFrom(from, anchored.item == kInvalidUID ? limit : anchored.position);
    }

    [[nodiscard]] bool isPlain(const StoryParagraph& paragraph) {
        const RunSpan run = reader.runAt(paragraph.start);
        return paragraph.attributes == document.attributePool().paragraph({}) && run.attributes == plain &&
               run.limit >= paragraph.limit() && otherFrom(paragraph.start, paragraph.limit()) == paragraph.limit();
    }

    void writeParagraph() {
        const StoryParagraph paragraph = reader.paragraphAt(start);
        const std::int32_t last = paragraph.limit() - 1;
        const std::int32_t from = start;
        if (isPlain(paragraph)) {
            writeCharacters(from, last - from);
            start = last + 1;
            return;
        }
        const std::vector<Run> runs = runsOf(from, last);
        out.beginObject();
        if (paragraph.attributes->style != 0) {
            out.member("style", document.paragraphStyles()[static_cast<std::size_t>(paragraph.attributes->style)].name);
        }
        writeParas(out, paragraph.attributes->overrides);
        writeChars(out, paragraph.attributes->charOverrides, document);
        writeRuns(runs);
        const RunAttributes* usual =
            returnOf(document.attributePool(), runs.empty() ? nullptr : runs.back().attributes);
        const RunAttributes* its = reader.runAt(last).attributes;
        if (its != usual) {
            out.key("return");
            out.beginObject();
            writeAttributes(*its);
            out.end();
        }
        out.end();
        start = last + 1;
    }

    void writeRuns(const std::vector<Run>& runs) {
        if (runs.empty()) return;
        out.key("text");
        if (runs.size() == 1 && runs[0].attributes == plain && runs[0].kind == Run::Kind::text) {
            writeCharacters(runs[0].start, runs[0].length);
            return;
        }
        out.beginArray();
        for (const Run& run : runs)
            writeRun(run);
        out.end();
    }

    void writeRun(const Run& run) {
        if (run.attributes == plain && run.kind == Run::Kind::text) {
            writeCharacters(run.start, run.length);
            return;
        }
        out.beginObject();
        if (run.kind == Run::Kind::special) {
            const char32_t character = charactersOf(text, run.start, run.start + 1).front();
            out.member("special", specialWords[character - firstPageCharacter]);
        } else if (run.kind == Run::Kind::item) {
            out.key("item");
            writeItem(itemAt(run.start));
        } else {
            out.key("text");
            writeCharacters(run.start, run.length);
        }
        writeAttributes(*run.attributes);
        out.end();
    }

    void writeAttributes(const RunAttributes& run) {
        if (run.characterStyle >= 0) {
            out.member("style", document.characterStyles()[static_cast<std::size_t>(run.characterStyle)].name);
        }
        writeChars(out, run.overrides, document);
        static constexpr const char* names[2] = {"tag", "tallyraTag"};
        for (std::size_t store = 0; store < 2; ++store) {
            if (run.tags[store] == nullptr) continue;
            out.key(names[store]);
            writeTag(out, *run.tags[store]);
        }
    }

    void writeCharacters(std::int32_t from, std::int32_t length) {
        out.string(escapeInlineText(utf32ToUtf8(charactersOf(text, from, from + length))));
    }

    JsonWriter& out;
    const StoryText& text;
    const DocumentModel& document;
    const std::function<void(UID)>& writeItem;
    const RunAttributes* plain;
    StoryReader reader{text};
    std::int32_t start = 0;
};

}  // namespace

void writeText(JsonWriter& out, const StoryText& text, const DocumentModel& document,
               const std::function<void(UID)>& writeItem) {
    TextWriter(out, text, document, writeItem).write();
}

}  // namespace tarnova
