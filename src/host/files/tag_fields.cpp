#include "host/files/tag_fields.h"

#include "document/stored_tag.h"
#include "engine/toolkit/text_encoding.h"

namespace tarnova {

namespace {

struct StringRow {
    std::string_view field;
    std::string TagFields::*member;
    std::size_t limit;
};

// In the order in which they are written.
constexpr StringRow stringRows[] = {{fieldKey, &TagFields::key, tagKeyBytes},
                                    {fieldCriteria, &TagFields::criteria, tagNameBytes},
                                    {fieldLink, &TagFields::link, tagNameBytes},
                                    {fieldRule, &TagFields::rule, tagNameBytes},
                                    {fieldStyle, &TagFields::style, tagNameBytes}};

/// The member that a field fills, or null.
std::string* memberOf(TagFields& fields, std::string_view name) {
    for (const StringRow& row : stringRows) {
        if (row.field == name) return &(fields.*row.member);
    }
    for (std::size_t i = 0; i < 3; ++i) {
        if (fieldNotes[i] == name) return &fields.notes[i];
    }
    return nullptr;
}

bool takeField(TagFields& fields, const StoredTagField& field) {
    if (field.name == fieldLocked || field.name == fieldAssociate) {
        (field.name == fieldLocked ? fields.locked : fields.associate) = true;
        return true;
    }
    std::string* member = memberOf(fields, field.name);
    if (member == nullptr || field.payload.empty()) return false;
    *member = field.payload.substr(1);
    return isUtf8(*member);
}

bool withinLimits(const TagFields& fields) {
    for (const StringRow& row : stringRows) {
        if ((fields.*row.member).size() > row.limit) return false;
    }
    return fields.kind <= tagKindLast;
}

}  // namespace

std::string encodeTagFields(const TagFields& fields) {
    StoredTagWriter writer(fields.kind, fields.locked);
    if (fields.locked) writer.stringField(fieldLocked, {});
    if (fields.associate) writer.stringField(fieldAssociate, {});
    if (fields.kind != 1) {
        for (const StringRow& row : stringRows)
            writer.stringField(row.field, fields.*row.member);
        for (std::size_t i = 0; i < 3; ++i) {
            if (!fields.notes[i].empty()) writer.stringField(fieldNotes[i], fields.notes[i]);
        }
    }
    return writer.finish().value_or(std::string());
}

std::optional<TagFields> decodeTagFields(std::string_view record) {
    StoredTagReader reader(record);
    if (!reader.headerIsGood()) return std::nullopt;
    TagFields fields;
    fields.kind = reader.storedKind() / 2;
    fields.key.clear();
    while (const auto field = reader.next()) {
        if (!takeField(fields, *field)) return std::nullopt;
    }
    if (!withinLimits(fields) || encodeTagFields(fields) != record) return std::nullopt;
    return fields;
}

}  // namespace tarnova
