#include "tags/tagged_text.h"

#include <algorithm>
#include <charconv>

#include "data/translation_table.h"
#include "definitions/definition_state.h"
#include "document/document_looks.h"
#include "engine/session/session.h"
#include "engine/toolkit/files.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/text_encoding.h"
#include "tags/tag_text.h"
#include "tags/xpress_tags.h"

namespace tarnova {

namespace {

constexpr std::string_view macMark = "<ASCII-MAC>";
constexpr std::string_view windowsMark = "<ASCII-WIN>";
constexpr std::string_view windowsLineEnd = "\r\n";
constexpr std::string_view madeHead =
    "<ASCII-WIN>\r\n<vsn:5><fset:InDesign-Roman><ctable:=<Black:COLOR:CMYK:Process:0,0,0,1>>\r\n";
constexpr std::string_view noStyleName = "NormalParagraphStyle";
constexpr double leastPointSize = 0.00000001;
constexpr std::string_view alignmentNames[] = {"Left",        "Center",        "Right",        "JustifyFull",
                                               "JustifyLeft", "JustifyCenter", "JustifyRight", "Auto",
                                               "ToSpine",     "AwayFromSpine"};

constexpr std::uint16_t messageOpen = 34;
constexpr std::uint16_t messageSize = 206;
constexpr std::uint16_t messageMemory = 70;
constexpr std::uint16_t messageRead = 35;
constexpr std::int64_t fileBytesLimit = std::int64_t{1} << 26;

/// A text with its own head: the line end belongs directly behind the mark and at the end.
std::string withLineEnds(std::string_view text, std::size_t mark, std::size_t markLength, std::string_view lineEnd) {
    std::string out(text);
    const std::size_t behind = mark + markLength;
    if (text.substr(behind, lineEnd.size()) != lineEnd) out.insert(behind, lineEnd);
    return out.append(lineEnd);
}

void appendTag(std::string& head, std::string_view name, std::string_view value) {
    head.append("<").append(name).append(":").append(value).append(">");
}

std::string escapedName(std::string_view name, std::string_view escaped) {
    std::string out;
    for (const char c : name) {
        if (escaped.find(c) != std::string_view::npos) out += '\\';
        out += c;
    }
    return out;
}

std::string numberText(double number) {
    char text[32];
    const auto [end, error] = std::to_chars(std::begin(text), std::end(text), number);
    return error == std::errc() ? std::string(text, end) : std::string();
}

/// What a character style would say.
void appendLook(std::string& head, const textLookRec& look) {
    constexpr std::string_view special = "<>\\";
    if (!look.family.empty()) appendTag(head, "cf", escapedName(look.family, special));
    if (!look.fontStyle.empty()) appendTag(head, "ct", escapedName(look.fontStyle, special));
    if (!look.swatch.empty()) appendTag(head, "cc", escapedName(look.swatch, "<>\\="));
    if (look.pointSize > leastPointSize) appendTag(head, "cs", numberText(look.pointSize));
}

std::string styleTag(const textLookRec& look) {
    return look.paragraphStyle == noParagraphStyle ? std::string(noStyleName)
                                                   : escapedName(look.paragraphStyle, "<>\\");
}

/// Bytes of a file; nothing after telling why.
bool readFile(const std::string& path, std::string& bytes) {
    const auto fail = [](std::uint16_t message) {
        reportErrorString(messageString(message));
        return false;
    };
    fileHandle handle = noFile;
    if (fileOpen(path.c_str(), fileReadOnly, &handle, nullptr, 0) != 0) return fail(messageOpen);
    std::int64_t size = 0;
    if (fileSize(handle, &size, nullptr, 0) != 0) {
        fileClose(handle);
        return fail(messageSize);
    }
    if (size > fileBytesLimit) {
        fileClose(handle);
        return fail(messageMemory);
    }
    bytes.resize(static_cast<std::size_t>(size));
    std::size_t count = bytes.size();
    const errorWord error = fileRead(handle, bytes.data(), &count, nullptr, 0);
    fileClose(handle);
    if (error != 0 || count != bytes.size()) return fail(messageRead);
    return true;
}

/// A file's bytes as the definition's table maps them.
void translate(std::string& bytes) {
    auto size = static_cast<std::uint32_t>(bytes.size());
    applyImportTable(reinterpret_cast<std::uint8_t*>(bytes.data()), size);
    bytes.resize(size);
}

std::string converted(std::string_view text) {
    return xpressTagsConvert(text, session().priceFlag != 0);
}

errorWord loadTables() {
    const recordDefRec* const definition = definitionState().currentRecordDef;
    return definition == nullptr ? 0 : loadTablesOf(*definition, 0);
}

errorWord insertMarkup(std::string_view text, UIDRef story, std::int32_t position) {
    const std::string headed = taggedTextHead(text, story, position);
    const std::u32string shown = isUtf8(headed) ? utf8ToUtf32(headed) : windows1252ToUtf32(headed);
    return story.database->textReplace(story.uid, position, 0, shown, false);
}

errorWord importAndConvert(std::string_view text, UIDRef story, textSpanRec range) {
    if (range.start == 0 && range.length == 0) range.length = story.database->threadSpan(story.uid, 0).length - 1;
    const errorWord error = importTaggedText(text, story, range.start, range.length, range.length);
    if (error == 0) static_cast<void>(convertTagText(story, range));
    return error;
}

}  // namespace

std::string taggedTextHead(std::string_view text, UIDRef story, std::int32_t position) {
    if (const std::size_t mark = text.find(macMark); mark != std::string_view::npos)
        return withLineEnds(text, mark, macMark.size(), "\r");
    if (const std::size_t mark = text.find(windowsMark); mark != std::string_view::npos)
        return withLineEnds(text, mark, windowsMark.size(), windowsLineEnd);
    const DocumentLooks* const looks = looksOf(*story.database);
    const textLookRec look = looks != nullptr ? looks->textLookAt(story.uid, position) : textLookRec{};
    std::string head(madeHead);
    const bool namesStyle =
        text.find("<ParaStyle:") != std::string_view::npos || text.find("<pstyle:") != std::string_view::npos;
    if (!namesStyle) appendTag(head, "pstyle", styleTag(look));
    const bool hasStyle = !look.characterStyle.empty() && look.characterStyle != noCharacterStyle;
    appendTag(head, "cstyle", hasStyle ? escapedName(look.characterStyle, "<>\\") : std::string());
    if (!hasStyle) appendLook(head, look);
    const bool isKnown = look.alignment >= 0 && static_cast<std::size_t>(look.alignment) < std::size(alignmentNames);
    appendTag(head, "pta", isKnown ? alignmentNames[look.alignment] : std::string_view());
    return head.append(text).append(windowsLineEnd);
}

errorWord importTaggedText(std::string_view text, UIDRef story, std::int32_t position, std::int32_t length,
                           std::int32_t& outLength) {
    const std::string headed = taggedTextHead(text, story, position);
    return story.database->importText(story.uid, position, length, {headed, {}}, textImportFilters[0], outLength);
}

errorWord importXpressText(std::string_view text, UIDRef story, std::int32_t position, std::int32_t length,
                           std::int32_t& outLength) {
    DocumentLooks* const looks = looksOf(*story.database);
    const auto local = looks != nullptr ? looks->localFormatsAt(story.uid, position) : nullptr;
    const errorWord error = importTaggedText(converted(text), story, position, length, outLength);
    if (error != 0 || local == nullptr || local->empty()) return error;
    return looks->applyLocalFormats(story.uid, position, outLength, *local);
}

std::int32_t importTaggedFile(UIDRef story, const std::string& filePath, bool convert, std::int32_t position,
                              std::int32_t length) {
    std::string bytes;
    if (!story || !readFile(filePath, bytes)) return -1;
    errorWord error = loadTables();
    if (error != 0) {
        reportErrorString(errorString(error));
        return -1;
    }
    translate(bytes);
    const std::string text = converted(bytes);
    Document& document = *story.database;
    error = document.BeginCommandSequence(PMString::ofKey("kZavoImportXPressTagsMenuKey").view());
    if (error == 0) {
        error = convert ? importAndConvert(text, story, {position, length}) : insertMarkup(text, story, position);
        document.EndCommandSequence();
    }
    if (error != 0) reportErrorString(errorString(error == errFailed ? errImportFilter : error));
    return error == 0 ? 0 : -1;
}

}  // namespace tarnova
