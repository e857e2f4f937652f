// Values of a layout with the checks that every member needs. All throw LayoutFault with the value's line; the messages
// name the member.

#pragma once

#include <bitset>
#include <cassert>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "document/geometry.h"
#include "host/files/json_tree.h"
#include "host/files/layout_fault.h"
#include "host/model/limits.h"

namespace tarnova {

inline constexpr std::size_t nameBytesLimit = 1024;

/// How messages call a value: `"size"`, or `an element of "tabs"`.
[[nodiscard]] std::string whatIs(const JsonValue& value);
[[noreturn]] void faultAt(const JsonValue& value, const std::string& message);

[[nodiscard]] std::string_view stringOf(const JsonValue& value);
/// A name: not empty, at most `nameBytesLimit` bytes.
[[nodiscard]] std::string nameOf(const JsonValue& value);
[[nodiscard]] bool boolOf(const JsonValue& value);
[[nodiscard]] double numberOf(const JsonValue& value, double lowest, double highest);
[[nodiscard]] std::int64_t integerOf(const JsonValue& value, std::int64_t lowest, std::int64_t highest);
/// Points: a number, or a text with one of the units pt, mm, cm, in, pc.
[[nodiscard]] double lengthOf(const JsonValue& value, double lowest = -coordinateLimit,
                              double highest = coordinateLimit);
/// The elements of an array of `count` lengths.
[[nodiscard]] std::vector<double> lengthsOf(const JsonValue& value, std::size_t count);
[[nodiscard]] std::vector<double> numbersOf(const JsonValue& value, std::size_t count, double lowest, double highest);
void requireArray(const JsonValue& value);
void requireObject(const JsonValue& value);
/// The value, an array, to walk over; without elements when the member is absent (null).
[[nodiscard]] const JsonValue& elementsOf(const JsonValue* value);
/// Bytes written in base64.
[[nodiscard]] std::string bytesOf(const JsonValue& value);

/// One of some words; `words` are in the order of the enumeration's values.
[[nodiscard]] std::size_t wordOf(const JsonValue& value, std::span<const char* const> words);
template <typename Enumeration>
[[nodiscard]] Enumeration wordAs(const JsonValue& value, std::span<const char* const> words) {
    return static_cast<Enumeration>(wordOf(value, words));
}

/// A member of an object and what reads it into the target.
template <typename Target>
struct Member {
    std::string_view name;
    void (*read)(Target& target, const JsonValue& value);
};

/// A row's reader that keeps the value for later.
template <typename Target, const JsonValue* Target::*member>
void keep(Target& target, const JsonValue& value) {
    target.*member = &value;
}

/// Throws: the member isn't known, or stands there twice. `allowed` are the names that could stand there.
[[noreturn]] void faultUnknownMember(const JsonValue& member, const std::string& object,
                                     const std::vector<std::string_view>& allowed);
[[noreturn]] void faultTwice(const JsonValue& member);

/// Kinds of members that one object may have. Paragraphs have the most, more than fifty.
inline constexpr std::size_t memberLimit = 256;

/// Gives each member of an object to its row. `object` is how a message calls it: "a page".
template <typename Target>
void readMembers(const JsonValue& value, const std::string& object, std::span<const Member<Target>> rows,
                 Target& target) {
    requireObject(value);
    assert(rows.size() <= memberLimit);
    std::bitset<memberLimit> seen;
    for (const JsonValue& member : value) {
        std::size_t row = 0;
        while (row < rows.size() && rows[row].name != member.name)
            ++row;
        if (row == rows.size()) {
            std::vector<std::string_view> allowed;
            for (const Member<Target>& known : rows)
                allowed.push_back(known.name);
            faultUnknownMember(member, object, allowed);
        }
        if (seen.test(row)) faultTwice(member);
        seen.set(row);
        rows[row].read(target, member);
    }
}

}  // namespace tarnova
