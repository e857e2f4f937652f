// JSON of the automation protocol: members with their checks, and texts that may be no UTF-8.

#pragma once

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdint>
#include <initializer_list>
#include <set>
#include <string>
#include <string_view>

#include "cli/exec/exec_fault.h"

namespace tarnova {

using ExecWriter = rapidjson::Writer<rapidjson::StringBuffer>;

/// How a message calls what was given: "a string".
[[nodiscard]] std::string kindOf(const rapidjson::Value& value);

/// Calls `visit(name, value)` for each member; throws ExecFault at a name that stands there twice.
template <typename Visit>
void forEachMember(const rapidjson::Value& object, Visit visit) {
    std::set<std::string_view> seen;
    for (const auto& member : object.GetObject()) {
        const std::string_view name(member.name.GetString(), member.name.GetStringLength());
        if (!seen.insert(name).second) throw ExecFault("\"" + std::string(name) + "\" stands there twice");
        visit(name, member.value);
    }
}

/// Throws ExecFault when the object has a member that isn't in `allowed`, or one twice.
void requireMembers(const rapidjson::Value& object, std::initializer_list<std::string_view> allowed);

/// The member, or null when it is absent.
[[nodiscard]] const rapidjson::Value* memberOf(const rapidjson::Value& object, std::string_view name);

// The value of `what` as the type; each throws ExecFault that names `what` and the type wanted.
[[nodiscard]] std::int64_t integerOf(const rapidjson::Value& value, std::string_view what, std::int64_t lowest,
                                     std::int64_t highest);
[[nodiscard]] std::string_view stringOf(const rapidjson::Value& value, std::string_view what);
/// A text without a zero byte, as paths and C strings need it.
[[nodiscard]] std::string_view plainStringOf(const rapidjson::Value& value, std::string_view what);

// Members that a request must have.
[[nodiscard]] std::int64_t integerMember(const rapidjson::Value& object, const char* name, std::int64_t lowest,
                                         std::int64_t highest);
[[nodiscard]] std::string_view stringMember(const rapidjson::Value& object, const char* name);

/// Writes a text; bytes that are no UTF-8 come out as U+FFFD.
void writeText(ExecWriter& json, std::string_view text);
/// The same as a member, and a member "<name>Hex" behind it when bytes were replaced.
void writeTextMember(ExecWriter& json, std::string_view name, std::string_view text);
void writeKey(ExecWriter& json, std::string_view name);

}  // namespace tarnova
