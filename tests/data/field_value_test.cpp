#include "data/field_value.h"

#include "tests/data/data_fixture.h"

namespace tarnova {
namespace {

flaggedStr31Rec flagged(std::string_view text) {
    flaggedStr31Rec field{};
    field.enable = text.empty() ? 0 : 1;
    pstrSet(field.string, text);
    return field;
}

std::string valueOf(std::string_view raw, std::string_view qualifier, std::string_view vt = "") {
    std::string value(raw.size(), '?');
    const std::uint32_t length =
        copyFieldValue(reinterpret_cast<std::uint8_t*>(value.data()), reinterpret_cast<const std::uint8_t*>(raw.data()),
                       static_cast<std::uint32_t>(raw.size()), flagged(qualifier), flagged(vt));
    return value.substr(0, length);
}

TEST(FieldValue, StripsQualifiersAndReplacesVerticalTabs) {
    struct row {
        std::string raw;
        const char* qualifier;
        const char* vt;
        std::string value;
    };
    const row rows[] = {
        {"plain", "\"", "", "plain"},
        {"\"a\"\"b\"", "\"", "", "a\"b"},
        {"\"\"", "\"", "", ""},
        {"\"\"\"\"", "\"", "", "\""},
        {"a\"b\"c", "\"", "", "abc"},
        {"a\"\"b", "\"", "", "a\"b"},
        {"\"a\"", "", "", "\"a\""},
        {"''a''", "''", "", "''a''"},
        {"a\x0B"
         "b",
         "", "\\n", "a\rb"},
        {"a\x0B"
         "b",
         "", "\\r", "a\nb"},
        {"a\x0B"
         "b",
         "", "x",
         "a\x0B"
         "b"},
        {"a\x0B"
         "b",
         "", "",
         "a\x0B"
         "b"},
    };
    for (const auto& [raw, qualifier, vt, value] : rows)
        EXPECT_EQ(valueOf(raw, qualifier, vt), value) << raw;
}

class FieldWriter : public DataTest {};

TEST_F(FieldWriter, WritesWhatTheParserReads) {
    const auto definition = makeDefinition({});
    definition->vtTranslation = flagged("\\n");
    for (const std::size_t capacity : {std::size_t{1}, std::size_t{1000}}) {
        const std::string path = folder + "out";
        std::filesystem::remove(path);
        fileHandle file = noFile;
        ASSERT_EQ(fileOpen(path.c_str(), fileReadWrite, &file, nullptr, fileCreate(path.c_str(), 0)), 0);
        std::vector<std::uint8_t> buffer(capacity);
        delimitedOutput out{file, definition.get(), buffer.data(), capacity, 0, false};
        errorWord err = 0;
        for (const std::string& value : {std::string("a\"b"), std::string("c,\rd"), std::string("gone")})
            err = writeDelimitedField(out, reinterpret_cast<const std::uint8_t*>(value.data()), value.size(),
                                      value == "gone", err);
        err = writeDelimitedBytes(out, "\n", 1, err);
        EXPECT_EQ(flushDelimitedOutput(out, err), 0);
        fileClose(file);
        EXPECT_EQ(readFile(path),
                  "\"a\"\"b\",\"c,\x0B"
                  "d\",\"\"\n");

        ASSERT_EQ(fileOpen(path.c_str(), fileReadOnly, &file, nullptr, 0), 0);
        out = {file, definition.get(), buffer.data(), capacity, 0, false};
        err = writeDelimitedField(out, buffer.data(), 1, false, 0);
        EXPECT_EQ(flushDelimitedOutput(out, err), errFieldWrite);
        fileClose(file);
    }
}

}  // namespace
}  // namespace tarnova
