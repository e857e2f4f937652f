#include "host/files/json_values.h"

#include <charconv>
#include <cmath>

#include "host/files/base64.h"

namespace tarnova {

namespace {

constexpr const char* typeWords[] = {"null", "true or false", "a number", "a text", "an array", "an object"};

std::string shortNumber(double value) {
    char text[32];
    const auto [end, code] = std::to_chars(text, text + sizeof text, value);
    return code == std::errc() ? std::string(text, end) : std::string();
}

void requireType(const JsonValue& value, JsonValue::Type type) {
    if (value.is(type)) return;
    faultAt(value, whatIs(value) + " must be " + typeWords[static_cast<std::size_t>(type)] + ", not " +
                       typeWords[static_cast<std::size_t>(value.type)] + ".");
}

double checkedRange(const JsonValue& value, double number, double lowest, double highest) {
    if (number >= lowest && number <= highest) return number;
    faultAt(value, whatIs(value) + " is " + shortNumber(number) + "; it must lie from " + shortNumber(lowest) + " to " +
                       shortNumber(highest) + ".");
}

struct UnitRow {
    std::string_view name;
    double points;
};
constexpr UnitRow units[] = {{"pt", 1}, {"mm", 72 / 25.4}, {"cm", 72 / 2.54}, {"in", 72}, {"pc", 12}};

std::string quoted(std::string_view text) {
    return "\"" + std::string(text.substr(0, 80)) + "\"";
}

}  // namespace

std::string whatIs(const JsonValue& value) {
    if (!value.name.empty()) return quoted(value.name);
    if (value.parent == nullptr) return "The layout";
    return value.parent->name.empty() ? "An element" : "An element of " + quoted(value.parent->name);
}

void faultAt(const JsonValue& value, const std::string& message) {
    throw LayoutFault(value.line, message);
}

std::string_view stringOf(const JsonValue& value) {
    requireType(value, JsonValue::Type::string);
    return value.text;
}

std::string nameOf(const JsonValue& value) {
    const std::string_view text = stringOf(value);
    if (text.empty()) faultAt(value, whatIs(value) + " must not be empty.");
    if (text.size() > nameBytesLimit) {
        faultAt(value, whatIs(value) + " is longer than " + std::to_string(nameBytesLimit) + " bytes.");
    }
    return std::string(text);
}

bool boolOf(const JsonValue& value) {
    requireType(value, JsonValue::Type::boolean);
    return value.flag;
}

double numberOf(const JsonValue& value, double lowest, double highest) {
    requireType(value, JsonValue::Type::number);
    return checkedRange(value, value.number, lowest, highest);
}

std::int64_t integerOf(const JsonValue& value, std::int64_t lowest, std::int64_t highest) {
    const double number = numberOf(value, static_cast<double>(lowest), static_cast<double>(highest));
    if (number != std::floor(number)) faultAt(value, whatIs(value) + " must be a whole number.");
    return static_cast<std::int64_t>(number);
}

double lengthOf(const JsonValue& value, double lowest, double highest) {
    if (value.is(JsonValue::Type::number)) return numberOf(value, lowest, highest);
    const char* help = " must be a length: a number of points, or a text like \"20mm\" (pt, mm, cm, in or pc).";
    if (!value.is(JsonValue::Type::string)) faultAt(value, whatIs(value) + help);
    double number = 0;
    const char* limit = value.text.data() + value.text.size();
    const auto [end, code] = std::from_chars(value.text.data(), limit, number);
    std::string_view unit(end, static_cast<std::size_t>(limit - end));
    while (!unit.empty() && unit.front() == ' ')
        unit.remove_prefix(1);
    for (const UnitRow& row : units) {
        if (code != std::errc() || row.name != unit || !std::isfinite(number)) continue;
        return checkedRange(value, number * row.points, lowest, highest);
    }
    faultAt(value, whatIs(value) + help);
}

std::vector<double> lengthsOf(const JsonValue& value, std::size_t count) {
    requireArray(value);
    if (value.count != count) faultAt(value, whatIs(value) + " must have " + std::to_string(count) + " lengths.");
    std::vector<double> out;
    for (const JsonValue& element : value)
        out.push_back(lengthOf(element));
    return out;
}

std::vector<double> numbersOf(const JsonValue& value, std::size_t count, double lowest, double highest) {
    requireArray(value);
    if (value.count != count) faultAt(value, whatIs(value) + " must have " + std::to_string(count) + " numbers.");
    std::vector<double> out;
    for (const JsonValue& element : value)
        out.push_back(numberOf(element, lowest, highest));
    return out;
}

void requireArray(const JsonValue& value) {
    requireType(value, JsonValue::Type::array);
}

void requireObject(const JsonValue& value) {
    requireType(value, JsonValue::Type::object);
}

const JsonValue& elementsOf(const JsonValue* value) {
    static const JsonValue none;
    if (value == nullptr) return none;
    requireArray(*value);
    return *value;
}

std::string bytesOf(const JsonValue& value) {
    std::string out;
    if (!fromBase64(stringOf(value), out)) faultAt(value, whatIs(value) + " is no base64.");
    return out;
}

std::size_t wordOf(const JsonValue& value, std::span<const char* const> words) {
    const std::string_view word = stringOf(value);
    std::string list;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (word == words[i]) return i;
        list += (i == 0 ? "\"" : ", \"") + std::string(words[i]) + "\"";
    }
    faultAt(value, whatIs(value) + " is " + quoted(word) + "; it must be one of " + list + ".");
}

void faultUnknownMember(const JsonValue& member, const std::string& object,
                        const std::vector<std::string_view>& allowed) {
    std::string list;
    for (std::string_view name : allowed)
        list += (list.empty() ? "" : ", ") + std::string(name);
    faultAt(member, quoted(member.name) + " is no member of " + object + ". It may have: " + list + ".");
}

void faultTwice(const JsonValue& member) {
    faultAt(member, quoted(member.name) + " stands here a second time; leave one of the two.");
}

}  // namespace tarnova
