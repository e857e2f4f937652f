#include "host/files/json_tree.h"

// Its stack compares addresses that it hasn't allocated yet, which clang's sanitizer counts as a fault of ours.
#if defined(__clang__)
#pragma clang attribute push(__attribute__((no_sanitize("pointer-overflow"))), apply_to = function)
#endif
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#if defined(__clang__)
#pragma clang attribute pop
#endif

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "host/files/layout_fault.h"

namespace tarnova {

namespace {

constexpr std::size_t valuesInBlock = 1024;
constexpr std::size_t textBlockBytes = 65536;

}  // namespace

/// Takes the parser's events. Lines are counted along the way: the parser's place in the bytes only moves forward.
class JsonTreeMaker {
 public:
    JsonTreeMaker(JsonTree& itsTree, std::string_view itsBytes, const rapidjson::MemoryStream& itsStream)
        : tree(itsTree), bytes(itsBytes), stream(itsStream) {}

    bool Null() { return add(JsonValue::Type::null) != nullptr; }
    bool Bool(bool flag) {
        JsonValue* value = add(JsonValue::Type::boolean);
        value->flag = flag;
        return true;
    }
    bool RawNumber(const char* text, rapidjson::SizeType length, bool) {
        JsonValue* value = add(JsonValue::Type::number);
        const auto [end, code] = std::from_chars(text, text + length, value->number);
        if (code == std::errc::result_out_of_range && value->number == 0) return true;
        if (code != std::errc() || end != text + length || !std::isfinite(value->number)) {
            throw LayoutFault(value->line,
                              "The number " + std::string(text, std::min<std::size_t>(length, 40)) + " is too large.");
        }
        return true;
    }
    bool String(const char* text, rapidjson::SizeType length, bool) {
        add(JsonValue::Type::string)->text = keepText({text, length});
        return true;
    }
    bool Key(const char* text, rapidjson::SizeType length, bool) {
        name = keepText({text, length});
        return true;
    }
    bool StartObject() { return open(JsonValue::Type::object); }
    bool StartArray() { return open(JsonValue::Type::array); }
    bool EndObject(rapidjson::SizeType) { return close(); }
    bool EndArray(rapidjson::SizeType) { return close(); }

    // Numbers come as RawNumber; the parser's template asks for these all the same.
    bool Int(int) { return false; }
    bool Uint(unsigned) { return false; }
    bool Int64(std::int64_t) { return false; }
    bool Uint64(std::uint64_t) { return false; }
    bool Double(double) { return false; }

    int lineAt(std::size_t offset) {
        const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(counted);
        const std::size_t limit = std::max(std::min(offset, bytes.size()), counted);
        line += static_cast<int>(std::count(from, bytes.begin() + static_cast<std::ptrdiff_t>(limit), '\n'));
        counted = limit;
        return line;
    }

 private:
    struct OpenValue {
        JsonValue* value;
        JsonValue* last;
    };

    JsonValue* add(JsonValue::Type type) {
        if (tree.blocks.empty() || tree.blocks.back().size() == valuesInBlock) {
            tree.blocks.emplace_back().reserve(valuesInBlock);
        }
        JsonValue& value = tree.blocks.back().emplace_back();
        value.type = type;
        value.line = lineAt(stream.Tell());
        if (opened.empty()) return &value;
        OpenValue& in = opened.back();
        value.parent = in.value;
        if (in.value->is(JsonValue::Type::object)) value.name = name;
        (in.last == nullptr ? in.value->first : in.last->next) = &value;
        in.last = &value;
        ++in.value->count;
        return &value;
    }

    bool open(JsonValue::Type type) {
        JsonValue* value = add(type);
        if (opened.size() == jsonDepthLimit) {
            throw LayoutFault(value->line, "Values are nested more than " + std::to_string(jsonDepthLimit) +
                                               " deep; a layout needs no such depth.");
        }
        opened.push_back({value, nullptr});
        return true;
    }

    bool close() {
        opened.pop_back();
        return true;
    }

    std::string_view keepText(std::string_view text) {
        if (text.empty()) return {};
        if (text.size() > textLeft) {
            textLeft = std::max(textBlockBytes, text.size());
            tree.textBlocks.push_back(std::make_unique<char[]>(textLeft));
            textAt = tree.textBlocks.back().get();
        }
        std::memcpy(textAt, text.data(), text.size());
        const std::string_view kept(textAt, text.size());
        textAt += text.size();
        textLeft -= text.size();
        return kept;
    }

    JsonTree& tree;
    std::string_view bytes;
    const rapidjson::MemoryStream& stream;
    std::vector<OpenValue> opened;
    std::string_view name;
    std::size_t counted = 0;
    int line = 1;
    char* textAt = nullptr;
    std::size_t textLeft = 0;
};

JsonTree::JsonTree(std::string_view bytes) {
    if (bytes.substr(0, 3) == "\xEF\xBB\xBF") bytes.remove_prefix(3);
    if (bytes.size() > jsonBytesLimit) throw LayoutFault(0, "The file is larger than 1 GiB, which is no layout.");
    rapidjson::MemoryStream stream(bytes.data(), bytes.size());
    JsonTreeMaker maker(*this, bytes, stream);
    if (const std::size_t zero = bytes.find('\0'); zero != std::string_view::npos) {
        throw LayoutFault(maker.lineAt(zero), "A zero byte stands here; a layout is UTF-8 text.");
    }
    constexpr unsigned flags =
        rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag | rapidjson::kParseNumbersAsStringsFlag;
    rapidjson::Reader reader;
    const rapidjson::ParseResult result = reader.Parse<flags>(stream, maker);
    if (result.IsError()) {
        throw LayoutFault(maker.lineAt(result.Offset()),
                          std::string("This is no valid JSON: ") + rapidjson::GetParseError_En(result.Code()));
    }
}

JsonTree::~JsonTree() = default;

const JsonValue& JsonTree::root() const {
    return blocks.front().front();
}

}  // namespace tarnova
