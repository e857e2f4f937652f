// What the data tests share: a folder of their own, definitions in few words, and fresh states.
#pragma once

#include <gtest/gtest.h>
#include <utime.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "data/data_source.h"
#include "data/data_state.h"
#include "data/key_index.h"
#include "data/record_parser.h"
#include "definitions/definition_state.h"
#include "definitions/record_def_set.h"
#include "engine/session/preferences.h"
#include "engine/toolkit/toolkit_state.h"

namespace tarnova {

inline void writeFile(const std::string& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}
inline std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

/// A definition that reads comma files with LF ends and double quotes, keyed by the first of its fields.
inline std::unique_ptr<recordDefRec> makeDefinition(const std::vector<std::string>& fields) {
    auto definition = std::make_unique<recordDefRec>();
    pstrSet(definition->name, "Test");
    for (std::size_t i = 0; i < fields.size(); ++i) {
        Str31 name;
        pstrSet(name, fields[i]);
        insertFieldName(*definition, static_cast<std::uint16_t>(i + 1), name);
    }
    if (!fields.empty()) pstrSet(definition->keyField, fields[0]);
    definition->useKeyfieldCase = 1;
    definition->fileType = fileTypeComma;
    definition->osType = osTypeLf;
    definition->dataType = dataTypeEightBit;
    definition->textQualifier.enable = 1;
    pstrSet(definition->textQualifier.string, "\"");
    return definition;
}

/// Fresh states, and a folder that goes with the test.
class DataTest : public testing::Test {
 protected:
    void SetUp() override {
        std::string pattern = testing::TempDir() + "tarnova-data-XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder = pattern + "/";
        resetPreferences(false);  // makes the session, which installs states of its own
        installDataState(&state);
        installToolkitState(&toolkit);
        installDefinitionState(&definitions);
        state.indexFolder = folder + "indexes";
    }
    void TearDown() override {
        dataSourceCloseAll();
        recordDefSetDiscard(sets, definitions.currentDefSet);
        installDefinitionState(nullptr);
        installDataState(nullptr);
        installToolkitState(nullptr);
        std::filesystem::remove_all(folder);
    }

    /// Writes a data file and points the definition at a placeholder index for it.
    std::string useData(recordDefRec& definition, std::string_view bytes, const std::string& name = "data.csv") {
        const std::string path = folder + name;
        writeFile(path, bytes);
        const std::string index = stableIndexPath(definition, path);
        EXPECT_TRUE(prepareIndexFile(index, path));
        std::memset(definition.databasePath, 0, sizeof definition.databasePath);
        index.copy(definition.databasePath, pathCapacity - 1);
        return path;
    }

    dataSourceRec* open(const recordDefRec& definition) {
        dataSourceRec* source = nullptr;
        error = dataSourceOpen(&definition, 1, 0, 0, source, openStatus, nullptr, nullptr, nullptr, 0);
        return source;
    }

    std::uint32_t count(const dataSourceRec* source, bool trim = true) {
        std::uint32_t records = 0;
        EXPECT_EQ(dataSourceRecordCount(source, trim ? 1 : 0, records, 0), 0);
        return records;
    }

    /// Fetches `field` and gives the value, or the stand-in text.
    std::string fetch(dataSourceRec* source, fetchRequest& request, std::string_view field) {
        extractionRec link{};
        pstrSet(link.field, field);
        request.extraction = &link;
        void* value = nullptr;
        std::uint32_t length = 0;
        EXPECT_EQ(dataSourceFetch(source, &request, 0, value, length, status, 0), 0);
        request.extraction = nullptr;
        const std::string text(static_cast<const char*>(value), length);
        freeBlock(value);
        return text;
    }
    std::string fetchNumber(dataSourceRec* source, std::int32_t number, std::string_view field) {
        fetchRequest request{};
        request.recordNumber = number;
        return fetch(source, request, field);
    }
    std::string fetchKey(dataSourceRec* source, std::string_view key, std::string_view field,
                         const searchCriteriaRec* criteria = nullptr) {
        Str255 text;
        pstrSet(text, key);
        fetchRequest request{};
        request.recordNumber = -1;
        request.key = text;
        request.criteria = criteria;
        const std::string value = fetch(source, request, field);
        foundNumber = request.recordNumber;
        return value;
    }

    static void setDate(const std::string& path, std::int64_t seconds) {
        const utimbuf times{seconds, seconds};
        ASSERT_EQ(utime(path.c_str(), &times), 0);
    }

    std::string folder;
    toolkitStateRec toolkit;
    definitionStateRec definitions{};
    dataStateRec state;
    recordDefSetRec* sets = nullptr;
    std::int16_t openStatus = 0;
    std::int16_t status = 0;
    std::int32_t foundNumber = -1;
    errorWord error = 0;
};

}  // namespace tarnova
