#include "host/files/shared_looks.h"

#include <algorithm>
#include <iterator>

namespace tarnova {

namespace {

constexpr std::string_view uidMembers[] = {"uid", "storyUid", "columnUids"};

void append(std::string& key, std::string_view text) {
    key += std::to_string(text.size());
    key += ':';
    key += text;
}

/// A value as text that no other value has, but for UIDs.
void append(std::string& key, const JsonValue& value) {
    append(key, value.name);
    key += static_cast<char>('0' + static_cast<int>(value.type));
    switch (value.type) {
        case JsonValue::Type::boolean:
            key += value.flag ? '1' : '0';
            break;
        case JsonValue::Type::number:
            key.append(reinterpret_cast<const char*>(&value.number), sizeof value.number);
            break;
        case JsonValue::Type::string:
            append(key, value.text);
            break;
        default:
            for (const JsonValue& member : value) {
                if (std::find(std::begin(uidMembers), std::end(uidMembers), member.name) == std::end(uidMembers)) {
                    append(key, member);
                }
            }
            key += ';';
    }
}

}  // namespace

StampTape& SharedLooks::tapeOf(const JsonValue& text, std::size_t shapeKey) {
    std::string key = std::to_string(shapeKey);
    append(key, text);
    return tapes[std::move(key)];
}

}  // namespace tarnova
