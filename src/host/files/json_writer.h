// Writes JSON that people can read: an object or array is either spread over lines or stands on one.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarnova {

class JsonWriter {
 public:
    enum class Shape { lines, line };

    void beginObject(Shape shape = Shape::line) { begin('{', '}', shape); }
    void beginArray(Shape shape = Shape::line) { begin('[', ']', shape); }
    /// Ends the innermost object or array.
    void end();
    void key(std::string_view name);

    void string(std::string_view utf8);
    /// The shortest digits that read back as the same number; minus zero is written as 0.
    void number(double value);
    void integer(std::int64_t value);
    void boolean(bool value);

    // A member in one step.
    void member(std::string_view name, std::string_view utf8);
    void member(std::string_view name, const char* utf8) { member(name, std::string_view(utf8)); }
    void member(std::string_view name, const std::string& utf8) { member(name, std::string_view(utf8)); }
    void member(std::string_view name, double value);
    void member(std::string_view name, std::int32_t value) { member(name, std::int64_t{value}); }
    void member(std::string_view name, std::uint32_t value) { member(name, std::int64_t{value}); }
    void member(std::string_view name, std::int64_t value);
    void member(std::string_view name, bool value);
    void numbers(std::string_view name, const std::vector<double>& values);

    /// What was written; the writer is spent. A line feed ends it.
    [[nodiscard]] std::string take();

 private:
    struct Level {
        char close;
        Shape shape;
        bool isEmpty = true;
    };

    void begin(char open, char close, Shape shape);
    void separate();
    void newLine();
    void quote(std::string_view utf8);

    std::string out;
    std::vector<Level> levels;
    bool afterKey = false;
};

}  // namespace tarnova
