#include "definitions/definition_store.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <random>

#include "engine/session/preferences_file.h"
#include "engine/session/session.h"
#include "tests/definitions/definition_fixture.h"
#include "tests/engine/toolkit/temp_folder.h"

namespace tarnova {
namespace {

class DefinitionStore : public testing::Test {
 protected:
    DefinitionStore() { start(); }
    ~DefinitionStore() override { sessionReset(); }

    void start() {
        sessionReset();
        settleDataFolder(home.path("app"), home.path("roaming"));
    }
    static std::string names() {
        std::string all;
        recordDefRec* definition = nullptr;
        for (std::int32_t i = 0; recordDefAt(session().currentDefSet, i, definition, 0) == 0 && definition != nullptr;
             ++i)
            all += (all.empty() ? "" : "|") + pstrString(definition->name);
        return all;
    }
    std::string stored() const { return home.bytesOf("roaming/Tarnova/Ostreon Tag Display/Record Definitions"); }
    /// Gives the set `count` links whose notes are `letter`, so that a save takes a while.
    static void fill(char letter, int count) {
        recordDefRec* definition = nullptr;
        EXPECT_EQ(recordDefAt(session().currentDefSet, 0, definition, 0), 0);
        for (int i = 0; i < count; ++i) {
            extractionExchange block{};
            pstrSet(block.name, std::to_string(i));
            pstrSet(block.record.notes, std::string(200, letter));
            block.exchangeOp = exchangeSet;
            EXPECT_EQ(extractionExchangeRun(block, 0), 0);
        }
    }

    TempFolder home;
};

TEST_F(DefinitionStore, ComesUpWithTheDefaults) {
    bool isNew = false;
    EXPECT_EQ(openDefinitionStore(false, &isNew, 0), 0);
    EXPECT_TRUE(isNew);
    EXPECT_EQ(names(), "Default Definition");
    EXPECT_EQ(extractionCount(*session().currentRecordDef), 1);
    EXPECT_EQ(stored(), "") << "the file is made at once and written at the end";
    EXPECT_EQ(openDefinitionStore(false, &isNew, 0), 0);
    EXPECT_TRUE(isNew) << "nobody has saved into it yet";
    EXPECT_EQ(saveDefinitionStore(0), 0);
    EXPECT_EQ(session().currentDefSet->dirty, 0);
    start();
    EXPECT_EQ(openDefinitionStore(false, &isNew, 0), 0);
    EXPECT_FALSE(isNew);
    home.file("roaming/Tarnova/Ostreon Tag Display/Record Definitions", "no definition at all");
    EXPECT_EQ(openDefinitionStore(false, &isNew, 0), 108);
    EXPECT_EQ(names(), "Default Definition") << "the set that was there stays";
    EXPECT_EQ(openDefinitionStore(true, &isNew, 0), 0);
    EXPECT_EQ(stored(), "");
    std::filesystem::remove_all(home.path("roaming"));
    home.file("roaming", "a file in the place of the folder");
    EXPECT_EQ(openDefinitionStore(false, &isNew, 0), errStoreNewFile);
}

TEST_F(DefinitionStore, ImportAndExport) {
    ASSERT_EQ(openDefinitionStore(false, nullptr, 0), 0);
    fill('a', 1);
    const std::string ddf = home.file("in.ddf",
                                      "Zoo recordDefinition; T signature; \"/their/index\" databasePath;\n"
                                      "Alps recordDefinition; T signature;");
    bool cancelled = true;
    EXPECT_EQ(importDefinitions(ddf.c_str(), cancelled, 0), 0);
    EXPECT_FALSE(cancelled);
    EXPECT_EQ(names(), "Alps|Default Definition|Zoo");
    EXPECT_EQ(pstrString(session().currentDefName), "Default Definition") << "each document has its own definition";
    EXPECT_EQ(extractionCount(*session().currentRecordDef), 2) << "the default definition that was there";
    EXPECT_EQ(stored().find("their"), std::string::npos);
    appPrefs().alwaysUseDocumentDDF = 0;
    EXPECT_EQ(importDefinitions(ddf.c_str(), cancelled, 0), 0);
    EXPECT_EQ(pstrString(session().currentDefName), "Alps");

    EXPECT_EQ(importDefinitions(home.file("bad.ddf", "nothing").c_str(), cancelled, 0), 108);
    EXPECT_EQ(importDefinitions(home.path("none.ddf").c_str(), cancelled, 0), 45);
    EXPECT_EQ(names(), "Alps|Default Definition|Zoo");
    EXPECT_EQ(importDefinitions(nullptr, cancelled, 0), 0);
    EXPECT_TRUE(cancelled) << "nobody chooses";

    session().currentDefSet->dirty = 0;
    fill('b', 1);
    EXPECT_EQ(exportDefinitionsToPath(home.path("out.ddf").c_str(), 0), 0);
    EXPECT_EQ(home.bytesOf("out.ddf"), stored());
    EXPECT_NE(stored().find("bbbb"), std::string::npos) << "changes go into the store first";
    EXPECT_EQ(exportDefinitionsToPath(home.path("no/out.ddf").c_str(), 0), errStoreCreate);
    std::filesystem::create_directory(home.path("folder"));
    EXPECT_EQ(exportDefinitionsToPath(home.path("folder").c_str(), 0), errStoreDelete);
    EXPECT_EQ(exportDefinitions(cancelled, 0), 0);
    EXPECT_TRUE(cancelled);
    EXPECT_EQ(resetDefinitions(0), 0);
    EXPECT_EQ(names(), "Default Definition");
    EXPECT_EQ(stored().find("Zoo"), std::string::npos);
}

/// Saves one content and the other in turn until somebody ends it.
[[noreturn]] void saveForEver() {
    for (char letter = 'a';; letter = letter == 'a' ? 'b' : 'a') {
        recordDefRec* definition = session().currentRecordDef;
        for (std::uint16_t i = 0; i < extractionCount(*definition); ++i)
            std::memset(definition->extractions[i]->notes + 1, letter, definition->extractions[i]->notes[0]);
        session().currentDefSet->dirty = 1;
        if (saveDefinitionStore(0) != 0) _exit(1);
    }
}

TEST_F(DefinitionStore, IsWholeWheneverASaveIsKilled) {
    ASSERT_EQ(openDefinitionStore(false, nullptr, 0), 0);
    fill('b', 400);
    ASSERT_EQ(saveDefinitionStore(0), 0);
    const std::string b = stored();
    fill('a', 400);
    ASSERT_EQ(saveDefinitionStore(0), 0);
    const std::string a = stored();
    std::mt19937 random(5);
    int killedInside = 0, sawOther = 0;
    for (int round = 0; round < 60; ++round) {
        const std::string before = stored();
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) saveForEver();
        usleep(1000 + random() % 40000);
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status)) << "a save failed";
        const std::string now = stored();
        ASSERT_TRUE(now == a || now == b) << "round " << round << ": " << now.size() << " bytes";
        if (now != before) ++sawOther;
        if (std::filesystem::exists(home.path("roaming/Tarnova/Ostreon Tag Display/rds.tmp"))) ++killedInside;
    }
    EXPECT_GT(killedInside, 5) << "the kills hit saves";
    EXPECT_GT(sawOther, 5) << "and saves came to their end";
    EXPECT_EQ(openDefinitionStore(false, nullptr, 0), 0);
    EXPECT_EQ(saveDefinitionStore(0), 0);
}

}  // namespace
}  // namespace tarnova
