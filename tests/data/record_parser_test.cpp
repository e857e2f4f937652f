#include "data/record_parser.h"

#include <algorithm>
#include <random>

#include "data/record_entry.h"
#include "data/record_scan.h"
#include "tests/data/data_fixture.h"

namespace tarnova {
namespace {

struct parsed {
    std::uint32_t flags, offset, length, number, delimiterLength;
    std::string key;
    std::vector<std::uint32_t> fields;
    bool operator==(const parsed&) const = default;
};

parsed readEntry(const std::uint8_t* at) {
    parsed record{load32(at + 4), load32(at + 8), load32(at + 12), load32(at + 16), 0, pstrString(at + 20), {}};
    const std::uint8_t* rest = at + 21 + record.key.size();
    record.delimiterLength = load32(rest + 4);
    for (std::uint32_t i = 0; i < load32(rest); ++i)
        record.fields.push_back(load32(rest + 8 + 4 * i));
    EXPECT_EQ(load32(at), 29 + record.key.size() + 4 * record.fields.size());
    return record;
}

parserConfig makeConfig(std::string_view field, std::string_view qualifier, std::string_view record,
                        std::int16_t keyField = 1) {
    parserConfig config{};
    pstrSet(config.fieldDelimiter, field);
    pstrSet(config.textQualifier, qualifier);
    pstrSet(config.recordDelimiter, record);
    config.keyFieldNumber = keyField;
    return config;
}

enum class way { either, machine };

// Parses `text`, offered in pieces of `pieceSize` bytes, with a batch of `batchSize` bytes.
std::vector<parsed> parse(const parserConfig& config, std::string_view text, way how = way::either,
                          std::size_t pieceSize = 4096, bool isUtf8 = false, std::size_t batchSize = entryMaxSize,
                          errorWord expected = 0) {
    const auto state = newRecord<parserState>();
    std::vector<std::uint8_t> bytes(batchSize);
    std::vector<std::uint32_t> references(batchSize / 33 + 1);
    entryBatch batch{bytes.data(), bytes.size(), 0, references.data(), references.size(), 0, false};
    std::vector<parsed> records;
    std::size_t offered = 0;
    parserInput input{reinterpret_cast<const std::uint8_t*>(text.data()), 0, 0, false};
    errorWord err = 0;
    while (err == 0 && state->finished == 0) {
        if (!batch.full) offered = std::min(text.size(), offered + pieceSize);
        input.size =
            offered - static_cast<std::size_t>(input.bytes - reinterpret_cast<const std::uint8_t*>(text.data()));
        input.endOfFile = offered == text.size();
        err = how == way::machine && !state->entryPending ? stepRecords(config, *state, input, batch)
                                                          : parseRecords(config, *state, input, batch, isUtf8, 0);
        input.bytes += input.used;
        input.used = 0;
        for (std::size_t i = 0; i < batch.referenceCount; ++i)
            records.push_back(readEntry(bytes.data() + references[i]));
        batch.used = batch.referenceCount = 0;
        if (how == way::machine) batch.full = state->entryPending != 0;
    }
    EXPECT_EQ(err, expected);
    return records;
}

// The texts of the fields of a record, raw.
std::vector<std::string> fieldsOf(std::string_view text, const parsed& record) {
    std::vector<std::string> fields;
    std::size_t at = record.offset;
    for (const std::uint32_t length : record.fields) {
        fields.emplace_back(text.substr(at, length));
        at += length + record.delimiterLength;
    }
    return fields;
}

TEST(RecordParser, CutsRecordsFieldsAndKeys) {
    using strings = std::vector<std::string>;
    struct row {
        const char* name;
        parserConfig config;
        std::string text;
        std::vector<strings> records;
        strings keys;
    };
    const parserConfig comma = makeConfig(",", "\"", "\n");
    const row rows[] = {
        {"plain", comma, "a,b\nc,d", {{"a", "b"}, {"c", "d"}}, {"a", "c"}},
        {"final delimiter", comma, "a\n", {{"a"}, {""}}, {"a", ""}},
        {"empty file", comma, "", {{""}}, {""}},
        {"only delimiters", comma, "\n\n", {{""}, {""}, {""}}, {"", "", ""}},
        {"doubled qualifier", comma, "\"a\"\"b\",c", {{"\"a\"\"b\"", "c"}}, {"a\"b"}},
        {"pair of qualifiers", comma, "\"\",c", {{"\"\"", "c"}}, {""}},
        {"delimiters in quotes", comma, "\"a,\r\nb\",c\nd", {{"\"a,\r\nb\"", "c"}, {"d"}}, {"a,\r\nb", "d"}},
        {"qualifier in the middle", comma, "a\"b,c\"d,e", {{"a\"b,c\"d", "e"}}, {"ab,cd"}},
        {"file ends in quotes", comma, "\"a\nb", {{"\"a\nb"}}, {"a\nb"}},
        {"CR LF",
         makeConfig(",", "\"", "\r\n"),
         "a\rb,c\r\r\nd\n\r\n",
         {{"a\rb", "c\r"}, {"d\n"}, {""}},
         {"a\rb", "d\n", ""}},
        {"CR at the end", makeConfig(",", "\"", "\r\n"), "a,b\r", {{"a", "b\r"}}, {"a"}},
        {"CR in front of a delimiter",
         makeConfig(",", "\"", "\r\n"),
         "a\r,\r\"b\"\r\n",
         {{"a\r", "\r\"b\""}, {""}},
         {"a\r", ""}},
        {"no record delimiter", makeConfig(";", "", "\r"), "a;b\nc;d", {{"a", "b\nc", "d"}}, {"a"}},
        {"two-byte delimiter", makeConfig("||", "", "\n"), "a|b||c|\n|||d", {{"a|b", "c|"}, {"", "|d"}}, {"a|b", ""}},
        {"two-byte qualifier",
         makeConfig(",", "''", "\n"),
         "''a,'b''''c'',d\n",
         {{"''a,'b''''c''", "d"}, {""}},
         {"a,'b''c", ""}},
        {"failed run begins anew", makeConfig("aab", "", "\n"), "aaabx\naa", {{"a", "x"}, {"aa"}}, {"a", "aa"}},
        {"second field is the key", makeConfig("\t", "\"", "\n", 2), "a\t\"b\"\nc", {{"a", "\"b\""}, {"c"}}, {"b", ""}},
        {"no key field", makeConfig(",", "\"", "\n", -1), "a,b", {{"a", "b"}}, {""}},
    };
    for (const auto& [name, config, text, records, keys] : rows) {
        for (const std::size_t pieceSize : {std::size_t{3}, std::size_t{4096}}) {
            const std::vector<parsed> got = parse(config, text, way::either, pieceSize);
            ASSERT_EQ(got.size(), records.size()) << name;
            for (std::size_t i = 0; i < got.size(); ++i) {
                EXPECT_EQ(fieldsOf(text, got[i]), records[i]) << name << " record " << i;
                EXPECT_EQ(got[i].key, keys[i]) << name << " record " << i;
                EXPECT_EQ(got[i].number, i) << name;
            }
        }
    }
}

TEST(RecordParser, ByteOrderMarkIsNoFieldInUtf8Only) {
    const std::string text = "\xEF\xBB\xBFkey,b\n";
    const parserConfig config = makeConfig(",", "\"", "\n");
    EXPECT_EQ(parse(config, text, way::either, 4096, true)[0].key, "key");
    EXPECT_EQ(parse(config, text, way::either, 4096, true)[0].offset, 3u);
    EXPECT_EQ(parse(config, text, way::either, 1, true)[0].key, "key");
    EXPECT_EQ(parse(config, text, way::either, 4096, false)[0].key, "\xEF\xBB\xBFkey");
    EXPECT_EQ(parse(config, "\xEF\xBB", way::either, 1, true)[0].key, "\xEF\xBB");
}

TEST(RecordParser, KeysAreCutAtTheirCapacity) {
    const std::string longKey(70, 'k'), quoted = "\"" + std::string(63, 'k') + "\"\"\"\"z\"";
    EXPECT_EQ(parse(makeConfig(",", "\"", "\n"), longKey + ",b")[0].key, std::string(64, 'k'));
    EXPECT_EQ(parse(makeConfig(",", "\"", "\n"), quoted + ",b")[0].key, std::string(63, 'k') + "\"");
}

TEST(RecordParser, FieldCapacityAndOneAbove) {
    toolkitStateRec toolkit;
    installToolkitState(&toolkit);
    const std::string full(recordFieldCapacity - 1, ','), over(recordFieldCapacity, ',');
    for (const auto& config : {makeConfig(",", "\"", "\n"), makeConfig(",", "", "|\n")}) {
        const std::string end(pstrView(config.recordDelimiter));
        EXPECT_EQ(parse(config, full + "x" + end)[0].fields.size(), recordFieldCapacity);
        EXPECT_EQ(parse(config, over)[0].fields.size(), recordFieldCapacity + 1) << "no further byte came";
        parse(config, "a" + end + over + end, way::either, 4096, false, 2 * entryMaxSize, errTooManyFields);
        EXPECT_EQ(pstrView(toolkit.pendingErrorParam), "2");
        parse(config, over + end, way::either, recordFieldCapacity, false, entryMaxSize, errTooManyFields);
    }
    installToolkitState(nullptr);
}

// A splitter that knows the whole text: at each byte it looks back for the delimiter that has just become whole.
std::vector<parsed> splitPlainly(const parserConfig& config, std::string_view text) {
    const std::string_view field = pstrView(config.fieldDelimiter), qualifier = pstrView(config.textQualifier),
                           record = pstrView(config.recordDelimiter);
    std::vector<parsed> records(1);
    std::string raw;
    bool inQuotes = false;
    std::size_t settled = 0, recordStart = 0;
    const auto endsWith = [&](std::string_view what, std::size_t end) {
        return !what.empty() && end - settled >= what.size() && text.substr(end - what.size(), what.size()) == what;
    };
    const auto keyOf = [&](std::string_view bytes) {
        std::string key;
        for (std::size_t i = 0; i < bytes.size();) {
            const bool isQualifier = !qualifier.empty() && bytes.substr(i, qualifier.size()) == qualifier;
            if (!isQualifier) {
                key += bytes[i++];
                continue;
            }
            const bool doubled = i > 0 && bytes.substr(i + qualifier.size(), qualifier.size()) == qualifier;
            if (doubled) key += qualifier;
            i += qualifier.size() * (doubled ? 2 : 1);
        }
        return key.substr(0, 64);
    };
    const auto endField = [&](std::size_t end) {
        const std::string_view bytes = text.substr(settled, end - settled);
        raw += bytes;
        parsed& now = records.back();
        now.fields.push_back(static_cast<std::uint32_t>(raw.size()));
        if (!raw.empty()) now.flags = 1;
        if (static_cast<int>(now.fields.size()) == config.keyFieldNumber) now.key = keyOf(raw);
        raw.clear();
    };
    const auto endRecord = [&](std::size_t end, std::size_t next) {
        endField(end);
        parsed& now = records.back();
        now.offset = static_cast<std::uint32_t>(recordStart);
        now.length = static_cast<std::uint32_t>(next - recordStart);
        now.number = static_cast<std::uint32_t>(records.size() - 1);
        now.delimiterLength = now.fields.size() > 1 ? static_cast<std::uint32_t>(field.size()) : 0;
        recordStart = next;
    };
    for (std::size_t end = 1; end <= text.size(); ++end) {
        if (endsWith(qualifier, end)) {
            inQuotes = !inQuotes;
            raw += text.substr(settled, end - settled);
        } else if (!inQuotes && endsWith(record, end)) {
            endRecord(end - record.size(), end);
            records.emplace_back();
        } else if (!inQuotes && endsWith(field, end)) {
            endField(end - field.size());
        } else {
            continue;
        }
        settled = end;
    }
    endRecord(text.size(), text.size());
    return records;
}

std::string randomText(std::mt19937& random, std::string_view alphabet, std::size_t size) {
    std::uniform_int_distribution<std::size_t> pick(0, alphabet.size() - 1);
    std::string text(size, ' ');
    for (char& byte : text)
        byte = alphabet[pick(random)];
    return text;
}

// Where delimiters overlap in quotes the splitter's look back could begin inside them; so it gets no such alphabets.
TEST(RecordParser, AgreesWithAPlainSplitter) {
    const parserConfig configs[] = {
        makeConfig("||", "\"", "\r\n"), makeConfig(",", "\"", "\r\n", 2), makeConfig(",", "\"", "\n"),
        makeConfig("\t", "", "\r", 3),  makeConfig("|-", "\"", "\n"),     makeConfig("||", "", "\r\n", 2),
    };
    std::mt19937 random(4711);
    for (int round = 0; round < 3000; ++round) {
        const parserConfig& config = configs[static_cast<std::size_t>(round) % std::size(configs)];
        const std::string text = randomText(random, "a|-,\t\r\n\"b\"\r", random() % 200);
        const std::size_t pieceSize = 1 + random() % 70;
        ASSERT_EQ(parse(config, text, way::either, pieceSize, false, 2 * entryMaxSize), splitPlainly(config, text))
            << "round " << round << ": " << testing::PrintToString(text);
    }
}

TEST(RecordParser, FastScanGivesTheEntriesOfTheByteMachine) {
    const parserConfig configs[] = {makeConfig(",", "\"", "\n"), makeConfig("\t", "", "\r\n", 2),
                                    makeConfig(";", "'", "\r", 3), makeConfig("^", "\"", "\r\n")};
    std::mt19937 random(11);
    for (int round = 0; round < 4000; ++round) {
        const parserConfig& config = configs[static_cast<std::size_t>(round) % std::size(configs)];
        ASSERT_TRUE(scanApplies(config));
        const std::string text = randomText(random, "abcd,\t;^'\"\r\n\r\nxyz", random() % 400);
        const std::vector<parsed> machine = parse(config, text, way::machine);
        ASSERT_EQ(parse(config, text, way::either, 1 + random() % 300), machine)
            << "round " << round << ": " << testing::PrintToString(text);
        std::uint64_t end = 0;
        for (const parsed& record : machine) {
            ASSERT_EQ(record.offset, end) << "each byte belongs to one record";
            end += record.length;
        }
        ASSERT_EQ(end, text.size());
    }
}

TEST(RecordParser, ScanIsLeftToTheMachineForOddDelimiters) {
    EXPECT_FALSE(scanApplies(makeConfig("||", "\"", "\n")));
    EXPECT_FALSE(scanApplies(makeConfig(",", "''", "\n")));
    EXPECT_FALSE(scanApplies(makeConfig(",", ",", "\n")));
    EXPECT_FALSE(scanApplies(makeConfig("\r", "\"", "\r\n")));
}

class ParserConfigure : public DataTest {};

TEST_F(ParserConfigure, TakesDelimitersFromDefinitionAndFile) {
    struct row {
        const char* name;
        std::int16_t fileType, osType, dataType;
        const char* custom;
        std::string bytes;
        std::string field, record;
        std::uint16_t encoding;
        errorWord err;
    };
    const row rows[] = {
        {"tab and CR", 0, 0, 0, "", "a", "\t", "\r", 0, 0},
        {"caret and CR LF", 4, 1, 1, "", "a", "^", "\r\n", 1, 0},
        {"custom", 5, 2, 0, "||", "a", "||", "\n", 0, 0},
        {"custom and empty", 5, 2, 0, "", "a", "", "", 0, errNoFieldDelimiter},
        {"most frequent wins", 1, 3, 0, "", "a\r\nb\r\nc\nd\r\n", ",", "\r\n", 0, 0},
        {"no record delimiter", 1, 3, 0, "", "a,b", ",", "\r", 0, 0},
        {"UTF-8 found", 1, 2, 2, "", "\xC3\xA4\n", ",", "\n", 1, 0},
        {"only ASCII", 1, 2, 2, "", "a\n", ",", "\n", 0, 0},
        {"mark alone", 1, 2, 2, "",
         "\xEF\xBB\xBF"
         "a\n",
         ",", "\n", 1, 0},
        {"8-bit found", 1, 2, 2, "", "\xE4\n", ",", "\n", 0, 0},
    };
    for (const row& each : rows) {
        const auto definition = makeDefinition({"One", "Two"});
        definition->fileType = each.fileType;
        definition->osType = each.osType;
        definition->dataType = each.dataType;
        pstrSet(definition->fDelimiter, each.custom);
        pstrSet(definition->keyField, "tWO");
        const std::string path = folder + "data";
        writeFile(path, each.bytes);
        parserConfig config;
        std::uint16_t encoding = 9;
        EXPECT_EQ(parserConfigure(*definition, path.c_str(), config, encoding, 0), each.err) << each.name;
        if (each.err != 0) continue;
        EXPECT_EQ(pstrView(config.fieldDelimiter), each.field) << each.name;
        EXPECT_EQ(pstrView(config.recordDelimiter), each.record) << each.name;
        EXPECT_EQ(pstrView(config.textQualifier), "\"") << each.name;
        EXPECT_EQ(encoding, each.encoding) << each.name;
        EXPECT_EQ(config.keyFieldNumber, 2) << each.name;
    }
}

}  // namespace
}  // namespace tarnova
