#include "cli/exec/exec_json.h"

#include <fmt/format.h>

#include <algorithm>

#include "engine/toolkit/text_encoding.h"

namespace tarnova {

std::string kindOf(const rapidjson::Value& value) {
    if (value.IsString()) return "a string";
    if (value.IsNumber()) return "a number";
    if (value.IsBool()) return "a flag";
    if (value.IsArray()) return "an array";
    return value.IsObject() ? "an object" : "null";
}

void requireMembers(const rapidjson::Value& object, std::initializer_list<std::string_view> allowed) {
    forEachMember(object, [&](std::string_view name, const rapidjson::Value&) {
        if (std::find(allowed.begin(), allowed.end(), name) == allowed.end())
            throw ExecFault(fmt::format("unknown member \"{}\"; there are {}", name, fmt::join(allowed, ", ")));
    });
}

const rapidjson::Value* memberOf(const rapidjson::Value& object, std::string_view name) {
    const auto found = std::find_if(object.MemberBegin(), object.MemberEnd(), [name](const auto& member) {
        return std::string_view(member.name.GetString(), member.name.GetStringLength()) == name;
    });
    return found == object.MemberEnd() ? nullptr : &found->value;
}

std::int64_t integerOf(const rapidjson::Value& value, std::string_view what, std::int64_t lowest,
                       std::int64_t highest) {
    if (value.IsBool()) return value.GetBool() ? 1 : 0;
    const bool fits = value.IsInt64() && value.GetInt64() >= lowest && value.GetInt64() <= highest;
    if (!fits)
        throw ExecFault(fmt::format("{}: a whole number from {} to {} is wanted, not {}", what, lowest, highest,
                                    value.IsInt64() ? std::to_string(value.GetInt64()) : kindOf(value)));
    return value.GetInt64();
}

std::string_view stringOf(const rapidjson::Value& value, std::string_view what) {
    if (!value.IsString()) throw ExecFault(fmt::format("{}: a string is wanted, not {}", what, kindOf(value)));
    return {value.GetString(), value.GetStringLength()};
}

std::string_view plainStringOf(const rapidjson::Value& value, std::string_view what) {
    const std::string_view text = stringOf(value, what);
    if (text.find('\0') != std::string_view::npos)
        throw ExecFault(fmt::format("{}: a text without a zero character is wanted", what));
    return text;
}

std::int64_t integerMember(const rapidjson::Value& object, const char* name, std::int64_t lowest,
                           std::int64_t highest) {
    const rapidjson::Value* const value = memberOf(object, name);
    if (value == nullptr) throw ExecFault(fmt::format("the member \"{}\" is missing", name));
    return integerOf(*value, name, lowest, highest);
}

std::string_view stringMember(const rapidjson::Value& object, const char* name) {
    const rapidjson::Value* const value = memberOf(object, name);
    if (value == nullptr) throw ExecFault(fmt::format("the member \"{}\" is missing", name));
    return plainStringOf(*value, name);
}

void writeText(ExecWriter& json, std::string_view text) {
    if (isUtf8(text)) {
        json.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    } else {
        json.String(utf32ToUtf8(utf8ToUtf32(text)));
    }
}

void writeKey(ExecWriter& json, std::string_view name) {
    json.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
}

void writeTextMember(ExecWriter& json, std::string_view name, std::string_view text) {
    writeKey(json, name);
    writeText(json, text);
    if (isUtf8(text)) return;
    std::string hex;
    for (const char byte : text)
        hex += fmt::format("{:02X}", static_cast<unsigned char>(byte));
    writeKey(json, std::string(name) + "Hex");
    json.String(hex);
}

}  // namespace tarnova
