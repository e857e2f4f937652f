#include "merge/asset_search.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "tests/document/fake_document.h"
#include "tests/engine/toolkit/temp_folder.h"

namespace tarnova {
namespace {

class AssetSearch : public ::testing::Test {
 protected:
    void SetUp() override {
        sessionReset();
        for (const char* name : {"listed/both", "data/deep/in data", "document/near", "definition/deep/both",
                                 "definition/layout.TVD", "listed/deep/in list"}) {
            std::filesystem::create_directories(std::filesystem::path(home.path(name)).parent_path());
            home.file(name, "x");
        }
        document.folder = home.path("document");
        search.document = &document;
        search.searchFolder = home.path("definition");
        std::strcpy(appPrefs().searchPaths[3], home.path("listed").c_str());
        std::strcpy(session().currentDataFilePath, home.path("data/customers.csv").c_str());
    }
    void TearDown() override { sessionReset(); }

    /// What is found, below the test's folder.
    std::string find(const std::string& name) {
        std::string path;
        bool found = false;
        search.name = name;
        EXPECT_EQ(findAsset(search, path, found, kind, 0), 0);
        EXPECT_EQ(found, !path.empty());
        const std::string root = home.path("");
        return path.starts_with(root) ? path.substr(root.size()) : path;
    }

    TempFolder home;
    FakeDocument document;
    assetSearchRec search;
    std::uint32_t kind = 99;
};

TEST_F(AssetSearch, StagesInTheirOrder) {
    struct testRow {
        const char *name, *flat, *deep;  // what is found without and with folders below
    };
    const testRow rows[] = {
        {"near", "document/near", "document/near"},
        {"in data", "", "data/deep/in data"},
        {"in list", "", "listed/deep/in list"},
        {"both", "listed/both", "definition/deep/both"},
        {"no\\such\\folder/both", "listed/both", "definition/deep/both"},
        {"layout.TVD", "definition/layout.TVD", "definition/layout.TVD"},
        {"./near", "document/near", "document/near"},
        {"./both", "", ""},
        {"C:\\near", "", ""},
        {"http://host/near", "", ""},
        {"", "", ""},
    };
    for (const auto& [name, flat, deep] : rows) {
        for (const bool below : {false, true}) {
            session().assetMemo.clear();
            appPrefs().searchSubfolders = below ? 1 : 0;
            search.searchBelow = below;
            EXPECT_EQ(find(name), below ? deep : flat) << name;
        }
    }
    EXPECT_EQ(find(home.path("data/deep/in data")), "data/deep/in data");
    EXPECT_EQ(find(home.path("data")), "") << "a folder";
    appPrefs().searchDocumentFolder = 0;
    session().assetMemo.clear();
    EXPECT_EQ(find("near"), "");
    EXPECT_EQ(find(home.path("document") + "\\near"), "document/near") << "either separator";
}

TEST_F(AssetSearch, AMemoOfFindsAndFailures) {
    EXPECT_EQ(find("late"), "");
    home.file("document/late", "x");
    EXPECT_EQ(find("late"), "") << "it isn't looked for again";
    search.useMemo = false;
    EXPECT_EQ(find("late"), "document/late");
    search.useMemo = true;
    session().engineMode = modePrice;
    EXPECT_EQ(find("late"), "document/late") << "price mode keeps no memo";
    session().engineMode = modeMerge;
    resetRunLists();
    EXPECT_EQ(find("late"), "document/late") << "nor does the next run";
    EXPECT_EQ(kind, assetKindFile);
    EXPECT_EQ(find("layout.TVD"), "definition/layout.TVD");
    EXPECT_EQ(kind, assetKindDocument);
    document.addMaster();
    document.nameOfMasters = "Cover";
    search.useMasters = true;
    EXPECT_EQ(find("Cover"), "Cover");
    EXPECT_EQ(kind, assetKindMaster);
}

}  // namespace
}  // namespace tarnova
