// JSON as a tree in which every value knows its line. Numbers are finite, texts are UTF-8, and nesting is limited, so
// that a hostile file ends in a fault.

#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tarnova {

inline constexpr std::size_t jsonDepthLimit = 256;
inline constexpr std::size_t jsonBytesLimit = std::size_t{1} << 30;

struct JsonValue {
    enum class Type : std::uint8_t { null, boolean, number, string, array, object } type = Type::null;
    bool flag = false;
    int line = 0;
    double number = 0;
    std::string_view text;
    std::string_view name;    // of a member
    std::uint32_t count = 0;  // members or elements
    const JsonValue* parent = nullptr;
    const JsonValue* first = nullptr;  // of the members or elements
    const JsonValue* next = nullptr;   // its neighbour

    [[nodiscard]] bool is(Type which) const { return type == which; }

    class Iterator {
     public:
        using iterator_category = std::input_iterator_tag;
        using value_type = JsonValue;
        using difference_type = std::ptrdiff_t;
        using pointer = const JsonValue*;
        using reference = const JsonValue&;

        explicit Iterator(const JsonValue* at) : value(at) {}
        reference operator*() const { return *value; }
        Iterator& operator++() {
            value = value->next;
            return *this;
        }
        friend bool operator==(const Iterator&, const Iterator&) = default;

     private:
        const JsonValue* value;
    };
    [[nodiscard]] Iterator begin() const { return Iterator(first); }
    [[nodiscard]] static Iterator end() { return Iterator(nullptr); }
};

class JsonTree {
 public:
    /// Reads one JSON text (RFC 8259), which may begin with a byte order mark. Throws LayoutFault.
    explicit JsonTree(std::string_view bytes);
    ~JsonTree();
    JsonTree(const JsonTree&) = delete;
    JsonTree& operator=(const JsonTree&) = delete;

    [[nodiscard]] const JsonValue& root() const;
    /// Calls `visit(value)` for every value, in the order of the file.
    template <typename Visit>
    void forEach(Visit visit) const {
        for (const auto& block : blocks) {
            for (const JsonValue& value : block)
                visit(value);
        }
    }

 private:
    friend class JsonTreeMaker;
    std::vector<std::vector<JsonValue>> blocks;  // none grows beyond what it reserved, so that values stay in place
    std::vector<std::unique_ptr<char[]>> textBlocks;
};

}  // namespace tarnova
