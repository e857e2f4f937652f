#include "data/index_build.h"

#include <sys/resource.h>

#include <algorithm>
#include <map>
#include <random>

#include "data/record_entry.h"
#include "tests/data/data_fixture.h"

namespace tarnova {
namespace {

// Limits at which a few records already make many runs, merge passes and windows.
indexBuildLimits smallLimits() {
    indexBuildLimits limits;
    limits.batchBytes = entryMaxSize;
    limits.readBytes = 64;
    limits.writeBytes = 512;
    limits.mergeWays = 2;
    limits.mergeBytes = entryMaxSize;
    limits.windowRecords = 64;
    limits.windowBufferBytes = 60;
    return limits;
}

// Records with repeated keys, quotes, doubled quotes and line ends in quotes.
std::string makeRecords(std::size_t count, std::uint32_t seed, std::size_t keys) {
    std::mt19937 random(seed);
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string key = "key" + std::to_string(random() % keys);
        text += random() % 3 == 0 ? "\"" + key + "\"" : key;
        text += "," + std::to_string(i) + ",\"say \"\"" + std::to_string(random() % 100) + "\"\"\"";
        if (random() % 10 == 0) text += ",\"two\nlines\"";
        text += "\n";
    }
    return text;
}

class IndexBuild : public DataTest {
 protected:
    // Builds and gives the bytes of the index.
    std::string build(const recordDefRec& definition, const indexBuildLimits& limits) {
        error = buildIndexFile(definition, definition.databasePath, data.c_str(), limits, false, 0);
        return readFile(definition.databasePath);
    }
    std::vector<std::string> leftovers() {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(state.indexFolder))
            if (entry.path().extension() == ".tmp" || entry.path().extension() == ".TMP")
                names.push_back(entry.path().filename());
        return names;
    }
    std::string data;
};

std::uint32_t wordAt(const std::string& bytes, std::size_t at) {
    return load32(reinterpret_cast<const std::uint8_t*>(bytes.data()) + at);
}

TEST_F(IndexBuild, WritesTheDocumentedBytes) {
    const auto definition = makeDefinition({"Key", "Value"});
    data = useData(*definition, "b,1\na,\"2\"\nb,\n");
    setDate(data, 1000000);
    const std::string index = build(*definition, {});
    ASSERT_EQ(error, 0);

    std::string expected;
    const auto words = [&](std::initializer_list<std::uint32_t> list) {
        for (const std::uint32_t word : list)
            expected.append(reinterpret_cast<const char*>(&word), sizeof word);
    };
    const auto text = [&](std::string_view bytes) { expected.append(bytes); };
    words({0, 9, 9, 10, 19, 10});  // keys "", "a", "b": place and length of their groups
    words({0, 32}), text(std::string_view("\0", 1));
    words({32, 36}), text(
                         "\x01"
                         "a");
    words({68, 72}), text(
                         "\x01"
                         "b");
    words({32, 0, 13, 0, 3, 1, 0, 0});     // the empty record behind the last delimiter
    words({36, 1, 4, 6, 1, 2, 1, 1, 3});   // a,"2"
    words({36, 1, 0, 4, 0, 2, 1, 1, 1});   // b,1
    words({36, 1, 10, 3, 2, 2, 1, 1, 0});  // b,
    words({2, 0, 1, 0, 2, 36, 0, 0});      // record numbers 0 to 3
    EXPECT_EQ(index.substr(indexHeaderSize), expected);

    EXPECT_EQ(index.substr(0, 4), "\x03r14");
    EXPECT_EQ(std::string(index.c_str() + 256), data);
    EXPECT_EQ(wordAt(index, 1280), 1000000u);
    EXPECT_EQ(wordAt(index, 1284), 0u);
    const std::uint32_t sections[] = {75072, 24, 75096, 29, 75125, 140, 75265, 32};
    for (std::size_t i = 0; i < std::size(sections); ++i)
        EXPECT_EQ(wordAt(index, 1288 + 4 * i), sections[i]) << i;
    EXPECT_EQ(index.substr(1320 + 53604, 4), "\x03Key");
    EXPECT_EQ(index[1320 + 12], 0) << "the definition's own path is emptied";
}

TEST_F(IndexBuild, FileIsTheSameForAnyLimits) {
    const auto definition = makeDefinition({"Key", "Value"});
    for (const std::uint8_t useCase : {1, 0}) {
        definition->useKeyfieldCase = useCase;
        std::string text = makeRecords(3000, 5, 700);
        for (std::size_t at = 0; at < text.size(); at += 5)
            if (text[at] == 'k') text[at] = 'K';
        data = useData(*definition, text);
        const std::string large = build(*definition, {});
        ASSERT_EQ(error, 0);
        const std::string small = build(*definition, smallLimits());
        ASSERT_EQ(error, 0);
        EXPECT_TRUE(large == small) << "case " << int{useCase};
        EXPECT_EQ(leftovers(), std::vector<std::string>{});
    }
}

TEST_F(IndexBuild, EqualKeysKeepFileOrder) {
    const auto definition = makeDefinition({"Key", "Number"});
    data = useData(*definition, makeRecords(2000, 9, 3));
    build(*definition, smallLimits());
    ASSERT_EQ(error, 0);
    dataSourceRec* const source = open(*definition);
    ASSERT_NE(source, nullptr);
    const keyIndexRec& index = *source->keyIndex;
    ASSERT_EQ(keyIndexKeyCount(index), 4u) << "three keys, and the empty one of the last record";
    for (std::uint32_t key = 0; key < 4; ++key) {
        Str255 text;
        bool found = false;
        ASSERT_EQ(dataSourceKeyAt(source, key, text, found, 0), 0);
        const entryRange group = keyIndexFindGroup(index, text, nullptr, nullptr);
        std::int64_t last = -1;
        indexEntry entry;
        for (std::uint32_t at = group.offset; at < group.offset + group.length; at += entry.length) {
            ASSERT_TRUE(keyIndexReadEntry(index, at, group.offset + group.length, entry));
            ASSERT_GT(entry.recordNumber, last);
            last = entry.recordNumber;
        }
    }
}

TEST_F(IndexBuild, FailureLeavesTheOldIndex) {
    const auto definition = makeDefinition({"Key", "Value"});
    data = useData(*definition, makeRecords(50, 1, 10));
    const std::string old = build(*definition, {});
    ASSERT_EQ(error, 0);
    const auto expectUntouched = [&](const char* name) {
        EXPECT_EQ(readFile(definition->databasePath), old) << name;
        EXPECT_EQ(leftovers(), std::vector<std::string>{}) << name;
    };

    writeFile(data, "a,b\n" + std::string(1501, ',') + "\n");
    build(*definition, {});
    EXPECT_EQ(error, errTooManyFields);
    EXPECT_EQ(pstrView(toolkit.pendingErrorParam), "2");
    expectUntouched("too many fields");

    std::filesystem::remove(data);
    build(*definition, {});
    EXPECT_EQ(error, errDataFileDate);
    EXPECT_EQ(pstrView(toolkit.pendingErrorParam), data);
    expectUntouched("data file gone");
}

// A limit on the size of files stands in for a full disk.
TEST_F(IndexBuild, FullDiskLeavesTheOldIndex) {
    const auto definition = makeDefinition({"Key", "Value"});
    data = useData(*definition, makeRecords(50, 1, 10));
    const std::string old = build(*definition, {});
    writeFile(data, makeRecords(3000, 2, 700));
    const std::string whole = [&] {
        const std::string kept = definition->databasePath;
        writeFile(kept + "2", readFile(kept));
        auto copy = std::make_unique<recordDefRec>(*definition);
        (kept + "2").copy(copy->databasePath, pathCapacity - 1);
        return build(*copy, {});
    }();
    ASSERT_EQ(error, 0);

    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    signal(SIGXFSZ, SIG_IGN);
    int failures = 0;
    for (const double part : {0.02, 0.1, 0.3, 0.6, 0.9, 0.9999}) {
        rlimit limit = before;
        limit.rlim_cur = static_cast<rlim_t>(static_cast<double>(whole.size()) * part);
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
        build(*definition, smallLimits());
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
        EXPECT_NE(error, 0) << part;
        failures += error != 0;
        EXPECT_TRUE(readFile(definition->databasePath) == old) << part;
        EXPECT_EQ(leftovers(), std::vector<std::string>{}) << part;
    }
    EXPECT_EQ(failures, 6);
}

TEST_F(IndexBuild, GivesTheFetchesOfAPlainScan) {
    constexpr std::size_t recordCount = 1000000;
    const auto definition = makeDefinition({"Key", "Number", "Text"});
    const std::string text = makeRecords(recordCount, 77, 60000);
    useData(*definition, text);
    dataSourceRec* const source = open(*definition);
    ASSERT_NE(source, nullptr) << error;
    ASSERT_EQ(count(source), recordCount);

    std::map<std::string, std::size_t> firstOfKey;  // read off the text, line by line
    std::vector<std::string> keys(recordCount);
    std::size_t line = 0;
    for (std::size_t i = 0; i < recordCount; ++i) {
        std::string_view rest = std::string_view(text).substr(line);
        const std::size_t comma = rest.find(',');
        keys[i] = rest.substr(rest[0] == '"' ? 1 : 0, rest[0] == '"' ? comma - 2 : comma);
        firstOfKey.emplace(keys[i], i);
        line += rest.find("\"\"\"") + 3;
        line += text[line] == ',' ? std::string_view(",\"two\nlines\"\n").size() : 1;
    }
    EXPECT_EQ(keyIndexKeyCount(*source->keyIndex), firstOfKey.size() + 1);
    std::mt19937 random(3);
    for (int i = 0; i < 20000; ++i) {
        const std::size_t number = random() % recordCount;
        ASSERT_EQ(fetchNumber(source, static_cast<std::int32_t>(number), "Number"), std::to_string(number));
        ASSERT_EQ(fetchNumber(source, static_cast<std::int32_t>(number), "Key"), keys[number]);
        ASSERT_EQ(fetchKey(source, keys[number], "Number"), std::to_string(firstOfKey[keys[number]]));
        ASSERT_EQ(foundNumber, static_cast<std::int32_t>(firstOfKey[keys[number]]));
    }
    fetchKey(source, "key60001", "Number");
    EXPECT_EQ(status, fetchNoMatch);
}

TEST_F(IndexBuild, DamagedIndexNeverCrashesAFetch) {
    const auto definition = makeDefinition({"Key", "Number", "Text"});
    data = useData(*definition, makeRecords(40, 21, 9));
    setDate(data, 1000);
    const std::string good = build(*definition, {});
    std::mt19937 random(8);
    const auto useIndex = [&](const std::string& bytes) {
        dataSourceRec loaded{};
        std::memcpy(loaded.indexPath, definition->databasePath, pathCapacity);
        writeFile(loaded.indexPath, bytes);
        ASSERT_EQ(keyIndexLoad(loaded, *definition, 0), 0);
        if (loaded.keyIndex == nullptr) return;
        dataSourceRec* const source = &loaded;
        count(source);
        for (std::int32_t i = 0; i < 45; ++i)
            for (const char* field : {"Key", "Number", "Text"})
                fetchNumber(source, i, field);
        searchCriteriaRec criteria{};
        criteria.fieldSearch[0].enable = 1;
        pstrSet(criteria.fieldSearch[0].field, "Number");
        for (int i = 0; i < 9; ++i)
            fetchKey(source, "key" + std::to_string(i), "Text", &criteria);
        keyIndexClose(loaded);
    };
    for (int round = 0; round < 1000; ++round) {
        std::string bytes = good;
        const std::size_t from = round % 3 == 0 ? 1280 : indexHeaderSize;  // the header's words, or the sections
        const std::size_t limit = round % 3 == 0 ? 1320 : bytes.size();
        for (int i = 0; i < 4; ++i)
            bytes[from + random() % (limit - from)] = static_cast<char>(random() % 5 == 0 ? 255 : random());
        useIndex(bytes);
    }
    for (std::size_t size = 75000; size < good.size(); size += 37)
        useIndex(good.substr(0, size));
}

}  // namespace
}  // namespace tarnova
