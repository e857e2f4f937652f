#include "host/files/json_writer.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace tarnova {

void JsonWriter::begin(char open, char close, Shape shape) {
    separate();
    out += open;
    levels.push_back({close, shape});
}

void JsonWriter::end() {
    const Level level = levels.back();
    levels.pop_back();
    if (level.shape == Shape::lines && !level.isEmpty) newLine();
    out += level.close;
}

void JsonWriter::newLine() {
    out += '\n';
    out.append(2 * levels.size(), ' ');
}

/// What stands between a value or key and the one in front of it.
void JsonWriter::separate() {
    if (std::exchange(afterKey, false) || levels.empty()) return;
    Level& level = levels.back();
    if (!level.isEmpty) out += ',';
    if (level.shape == Shape::lines) {
        newLine();
    } else if (!level.isEmpty) {
        out += ' ';
    }
    level.isEmpty = false;
}

void JsonWriter::key(std::string_view name) {
    separate();
    quote(name);
    out += ": ";
    afterKey = true;
}

void JsonWriter::quote(std::string_view utf8) {
    static constexpr char hex[] = "0123456789abcdef";
    out += '"';
    for (char c : utf8) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\t') {
            out += "\\t";
        } else if (byte < 0x20) {
            out += "\\u00";
            out += hex[byte >> 4];
            out += hex[byte & 15];
        } else {
            out += c;
        }
    }
    out += '"';
}

void JsonWriter::string(std::string_view utf8) {
    separate();
    quote(utf8);
}

void JsonWriter::number(double value) {
    separate();
    char text[32];
    const auto result = std::to_chars(text, text + sizeof text, value == 0 ? 0.0 : value);
    out.append(text, result.ptr);
}

void JsonWriter::integer(std::int64_t value) {
    separate();
    out += std::to_string(value);
}

void JsonWriter::boolean(bool value) {
    separate();
    out += value ? "true" : "false";
}

void JsonWriter::member(std::string_view name, std::string_view utf8) {
    key(name);
    string(utf8);
}

void JsonWriter::member(std::string_view name, double value) {
    key(name);
    number(value);
}

void JsonWriter::member(std::string_view name, std::int64_t value) {
    key(name);
    integer(value);
}

void JsonWriter::member(std::string_view name, bool value) {
    key(name);
    boolean(value);
}

void JsonWriter::numbers(std::string_view name, const std::vector<double>& values) {
    key(name);
    beginArray();
    for (double value : values)
        number(value);
    end();
}

std::string JsonWriter::take() {
    out += '\n';
    return std::move(out);
}

}  // namespace tarnova
