#include "host/files/tag_members.h"

#include <limits>
#include <optional>
#include <span>
#include <utility>

#include "document/item_data.h"
#include "host/files/base64.h"
#include "host/files/tag_fields.h"

namespace tarnova {

namespace {

struct TagTarget {
    TagAttribute::Content content;
    TagFields fields;
    std::optional<std::string> record;
    bool hasFields = false;
    bool hasId = false;
};

template <std::string TagAttribute::Content::*member>
void readOwn(TagTarget& target, const JsonValue& value) {
    target.content.*member = stringOf(value);
}

template <std::string TagFields::*member, std::size_t limit>
void readField(TagTarget& target, const JsonValue& value) {
    target.hasFields = true;
    target.fields.*member = stringOf(value);
    if (value.text.size() > limit) {
        faultAt(value, whatIs(value) + " is longer than " + std::to_string(limit) + " bytes.");
    }
}

void readNotes(TagTarget& target, const JsonValue& value) {
    target.hasFields = true;
    requireArray(value);
    if (value.count > 3) faultAt(value, "A link has at most three notes.");
    std::size_t i = 0;
    for (const JsonValue& element : value) {
        if (stringOf(element).size() > tagNotesBytes) {
            faultAt(element, "A link's notes are longer than " + std::to_string(tagNotesBytes) + " bytes.");
        }
        target.fields.notes[i++] = element.text;
    }
}

// The fields first: a frame's link has no other members.
constexpr Member<TagTarget> tagMembers[] = {
    {"key", readField<&TagFields::key, tagKeyBytes>},
    {"link", readField<&TagFields::link, tagNameBytes>},
    {"rule", readField<&TagFields::rule, tagNameBytes>},
    {"criteria", readField<&TagFields::criteria, tagNameBytes>},
    {"style", readField<&TagFields::style, tagNameBytes>},
    {"notes", readNotes},
    {"kind",
     [](TagTarget& t, const JsonValue& v) {
         t.hasFields = true;
         t.fields.kind = static_cast<std::uint16_t>(integerOf(v, 0, tagKindLast));
     }},
    {"locked",
     [](TagTarget& t, const JsonValue& v) {
         t.hasFields = true;
         t.fields.locked = boolOf(v);
     }},
    {"associate",
     [](TagTarget& t, const JsonValue& v) {
         t.hasFields = true;
         t.fields.associate = boolOf(v);
     }},
    {"id",
     [](TagTarget& t, const JsonValue& v) {
         t.hasId = true;
         t.content.tagId = static_cast<std::uint32_t>(integerOf(v, 0, std::numeric_limits<std::uint32_t>::max()));
     }},
    {"record", [](TagTarget& t, const JsonValue& v) { t.record = bytesOf(v); }},
    {"owner", readOwn<&TagAttribute::Content::ownerName>},
    {"highlightMode", readOwn<&TagAttribute::Content::highlightMode>},
    {"highlightColour", readOwn<&TagAttribute::Content::highlightColour>},
    {"spare", readOwn<&TagAttribute::Content::spare>},
};

constexpr std::size_t fieldMemberCount = 9;
static_assert(tagMembers[fieldMemberCount - 1].name == "associate" && tagMembers[fieldMemberCount].name == "id");

[[noreturn]] void faultWithoutLink(const JsonValue& value) {
    faultAt(value, "A link needs \"link\", the name of what it shows.");
}

void writeIfSet(JsonWriter& out, std::string_view name, const std::string& value) {
    if (!value.empty()) out.member(name, value);
}

void writeFields(JsonWriter& out, const TagFields& fields) {
    if (fields.kind != 0) out.member("kind", static_cast<std::int32_t>(fields.kind));
    if (fields.kind != 1) {
        if (fields.key != TagFields().key) out.member("key", fields.key);
        out.member("link", fields.link);
        writeIfSet(out, "rule", fields.rule);
        writeIfSet(out, "criteria", fields.criteria);
        writeIfSet(out, "style", fields.style);
        if (!fields.notes[0].empty() || !fields.notes[1].empty() || !fields.notes[2].empty()) {
            out.key("notes");
            out.beginArray();
            for (const std::string& notes : fields.notes)
                out.string(notes);
            out.end();
        }
    }
    if (fields.locked) out.member("locked", true);
    if (fields.associate) out.member("associate", true);
}

}  // namespace

TagAttribute::Content defaultTagContent(TextAttributeClass store) {
    return {store == TextAttributeClass::kelvaneTag ? "Kelvane" : "Tallyra", "Highlight", "Green", "Spare", 0, {}};
}

ReadTag readTag(const JsonValue& value, TextAttributeClass store) {
    TagTarget target;
    target.content = defaultTagContent(store);
    readMembers<TagTarget>(value, "a link", tagMembers, target);
    if (target.record && target.hasFields) {
        faultAt(value, "A link has either \"record\" or its fields, not both.");
    }
    if (!target.record && !target.hasFields) faultWithoutLink(value);
    target.content.data = target.record ? *target.record : encodeTagFields(target.fields);
    return {std::move(target.content), target.hasId};
}

std::string readFrameTag(const JsonValue& value) {
    TagTarget target;
    readMembers<TagTarget>(value, "the link of a frame", std::span(tagMembers).first(fieldMemberCount), target);
    if (!target.hasFields) faultWithoutLink(value);
    return itemDataReplace({}, itemDataFrameTag, encodeTagFields(target.fields)).value_or(std::string());
}

bool writeFrameTag(JsonWriter& out, const char* name, std::string_view block) {
    const std::optional<std::string_view> record = itemDataFind(block, itemDataFrameTag);
    if (!record || itemDataReplace({}, itemDataFrameTag, record) != block) return false;
    const std::optional<TagFields> fields = decodeTagFields(*record);
    if (!fields) return false;
    out.key(name);
    out.beginObject();
    writeFields(out, *fields);
    out.end();
    return true;
}

void writeTag(JsonWriter& out, const TagAttribute& tag) {
    const TagAttribute::Content usual = defaultTagContent(tag.attributeClass());
    out.beginObject();
    out.member("id", tag.tagId());
    if (const auto fields = decodeTagFields(tag.data())) {
        writeFields(out, *fields);
    } else {
        out.member("record", toBase64(tag.data()));
    }
    if (tag.ownerName() != usual.ownerName) out.member("owner", tag.ownerName());
    if (tag.highlightMode() != usual.highlightMode) out.member("highlightMode", tag.highlightMode());
    if (tag.highlightColour() != usual.highlightColour) out.member("highlightColour", tag.highlightColour());
    if (tag.spare() != usual.spare) out.member("spare", tag.spare());
    out.end();
}

}  // namespace tarnova
