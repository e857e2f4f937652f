// The members by which a layout file gives character and paragraph formats, in styles, paragraphs and runs alike.

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/files/json_values.h"
#include "host/files/json_writer.h"
#include "host/model/document_model.h"

namespace tarnova {

/// What the file's names stand for.
struct LayoutNames {
    std::unordered_map<std::string, std::int32_t> swatches;
    std::unordered_map<std::string, std::int32_t> characterStyles;
    std::unordered_map<std::string, std::int32_t> paragraphStyles;
    std::unordered_map<std::string, UID> masters;
};

/// The index behind a name; a fault that calls it `kind` ("swatch") when there is none.
template <typename Index>
[[nodiscard]] Index namedIndex(const std::unordered_map<std::string, Index>& names, const JsonValue& value,
                               const std::string& kind) {
    const auto found = names.find(nameOf(value));
    if (found == names.end()) {
        faultAt(value, "The layout has no " + kind + " \"" + std::string(value.text.substr(0, 80)) + "\".");
    }
    return found->second;
}

/// A style, paragraph or run while it is read. What isn't a format is kept for the caller.
struct FormatTarget {
    explicit FormatTarget(const LayoutNames& itsNames) : names(itsNames) {}

    const LayoutNames& names;
    CharOverrides chars;
    ParaOverrides paras;
    std::optional<bool> bold, italic;  // short for a font style
    const JsonValue* name = nullptr;
    const JsonValue* basedOn = nullptr;
    const JsonValue* style = nullptr;
    const JsonValue* text = nullptr;
    const JsonValue* special = nullptr;
    const JsonValue* returnFormat = nullptr;
    const JsonValue* item = nullptr;
    const JsonValue* tags[2] = {nullptr, nullptr};
};

using FormatMembers = std::vector<Member<FormatTarget>>;
[[nodiscard]] const FormatMembers& characterStyleMembers();
[[nodiscard]] const FormatMembers& paragraphStyleMembers();
[[nodiscard]] const FormatMembers& paragraphMembers();
[[nodiscard]] const FormatMembers& runMembers();
[[nodiscard]] const FormatMembers& returnMembers();

/// Reads the members of an object, called `object` in messages.
void readFormat(const JsonValue& value, const std::string& object, const FormatMembers& members, FormatTarget& target);

[[nodiscard]] Paint readPaint(const JsonValue& value, const LayoutNames& names);

void writePaint(JsonWriter& out, std::string_view name, const Paint& paint, const DocumentModel& document);
void writeChars(JsonWriter& out, const CharOverrides& chars, const DocumentModel& document);
void writeParas(JsonWriter& out, const ParaOverrides& paras);

}  // namespace tarnova
