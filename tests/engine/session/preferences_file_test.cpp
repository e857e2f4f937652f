#include "engine/session/preferences_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "engine/session/folder_test.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "tests/engine/toolkit/recording_alerts.h"
#include "tests/engine/toolkit/temp_folder.h"

namespace tarnova {
namespace {

constexpr const char* filePath = "Tarnova/Config/Ostreon Tag Display.prf";

class PreferencesFile : public ::testing::Test {
 protected:
    void SetUp() override { start(); }
    void TearDown() override { sessionReset(); }

    void start() {
        sessionReset();
        settleDataFolder(home.path("app"), home.path("roaming"));
    }
    std::string file() const { return home.bytesOf(std::string("roaming/") + filePath); }
    void write(const std::string& bytes) const {
        std::filesystem::create_directories(home.path("roaming/Tarnova/Config"));
        home.file(std::string("roaming/") + filePath, bytes);
    }
    std::string goodBytes() {
        appPrefs().rangeStep = 7;
        appPrefs().reserved8616 = 99;
        return {reinterpret_cast<const char*>(&appPrefs()), sizeof(appPrefsRec)};
    }

    TempFolder home;
    RecordingAlerts alerts;
};

TEST_F(PreferencesFile, IsTheRecordAndComesBackWhole) {
    const std::string written = goodBytes();
    std::filesystem::create_directories(home.path("roaming/Tarnova/Config"));
    savePreferences();
    EXPECT_EQ(file(), written);
    start();
    loadPreferences();
    EXPECT_EQ(appPrefs().rangeStep, 7U);
    EXPECT_EQ(appPrefs().reserved8616, 99) << "reserved bytes are kept";
    EXPECT_EQ(file(), written) << "a good file isn't written again";
    EXPECT_TRUE(alerts.shown.empty());
}

TEST_F(PreferencesFile, WhatIsNoFileOfOursGivesDefaults) {
    const std::string good = goodBytes();
    const auto changed = [&good](std::size_t offset, std::string_view by) {
        return std::string(good).replace(offset, by.size(), by);
    };
    struct testRow {
        const char* name;
        std::string bytes;
        bool taken;
        std::vector<int> shown;
    };
    const testRow rows[] = {
        {"as it should be", good, true, {}},
        {"owner in another case", changed(1, "OSTREON TAG DISPLAY"), true, {}},
        {"another owner", changed(1, "Some other program."), false, {201}},
        {"an owner longer than its field", changed(0, "\xFF"), false, {201}},
        {"another version", changed(32, std::string_view("\xCC\0\0\0", 4)), false, {201}},
        {"a version to be forgotten", changed(32, "\xFF\xFF\xFF\xFF"), false, {}},
        {"no bytes", "", false, {}},
        {"one byte", "\x13", false, {201}},
        {"all zero", std::string(prefsSizeBytes, '\0'), false, {201}},
        {"a byte short", good.substr(1), false, {201}},
        {"cut short", good.substr(0, prefsSizeBytes - 1), false, {201}},
        {"a byte too many", good + "x", false, {201}},
    };
    for (const testRow& row : rows) {
        start();
        alerts.shown.clear();
        write(row.bytes);
        loadPreferences();
        EXPECT_EQ(appPrefs().rangeStep, row.taken ? 7U : 1U) << row.name;
        EXPECT_EQ(appPrefs().loadStamp, row.taken ? 0U : 1453102303U) << row.name;
        EXPECT_EQ(alerts.numbers(), row.shown) << row.name;
        const auto* const live = reinterpret_cast<const char*>(&appPrefs());
        EXPECT_EQ(file(), row.taken ? row.bytes : std::string(live, sizeof(appPrefsRec))) << row.name;
    }
}

TEST_F(PreferencesFile, DamagedStringsStayInTheirFields) {
    std::string bytes = goodBytes();
    for (std::size_t i = 36; i < bytes.size(); ++i)
        bytes[i] = '\xFF';
    write(bytes);
    loadPreferences();
    const appPrefsRec& prefs = appPrefs();
    EXPECT_EQ(prefs.reportExtension[0], 3);
    EXPECT_EQ(prefs.fileAffixSeparator[0], 3);
    EXPECT_EQ(prefs.extensionTable[9].extension[0], 7);
    EXPECT_EQ(prefs.driverTable[9].driverName[0], 65);
    EXPECT_EQ(prefs.processDefinitionName[0], 33);
    EXPECT_EQ(prefs.linkDefaults.dataFormat[0], 31);
    EXPECT_EQ(prefs.criteriaDefaults.fieldSearch[2].string[0], 31);
    EXPECT_EQ(prefs.searchPaths[9][1023], 0);
    EXPECT_EQ(prefs.rangeTextLong[1023], 0);
    EXPECT_EQ(prefs.textDefaults.stackPad.string[0], 255) << "all of its field";
}

TEST_F(PreferencesFile, AFileThatCantBeWrittenIsLeftAndNothingIsSaid) {
    const std::string good = goodBytes();
    write(good);
    const std::string path = home.path(std::string("roaming/") + filePath);
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    appPrefs().rangeStep = 8;
    savePreferences();
    EXPECT_EQ(file(), good);
    ASSERT_EQ(::chmod(path.c_str(), 0644), 0);
    savePreferences();
    EXPECT_EQ(static_cast<int>(file()[22152]), 8);

    // A file stands where the folder should be.
    settleDataFolder(home.path("app"), path);
    loadPreferences();
    savePreferences();
    EXPECT_TRUE(alerts.shown.empty());
    EXPECT_EQ(appPrefs().rangeStep, 1U);
}

TEST_F(PreferencesFile, DataFolderLiesInTheApplicationWhenItsConfigDoes) {
    EXPECT_EQ(session().dataFolder, home.path("roaming/Tarnova"));
    EXPECT_EQ(session().dataFolderInApp, 0);
    std::filesystem::create_directories(home.path("app/Plug-Ins/Tarnova"));
    start();
    EXPECT_EQ(session().dataFolderInApp, 0) << "no Config";
    std::filesystem::create_directories(home.path("app/Plug-Ins/Tarnova/Config"));
    start();
    EXPECT_EQ(session().dataFolder, home.path("app/Plug-Ins/Tarnova"));
    EXPECT_EQ(session().dataFolderInApp, 1);
    EXPECT_EQ(session().indexFolder, home.path("app/Plug-Ins/Tarnova/Ostreon Tag Display/Index Files"));
    loadPreferences();
    EXPECT_EQ(home.bytesOf(std::string("app/Plug-Ins/") + filePath).size(), prefsSizeBytes);
}

TEST_F(PreferencesFile, FoldersAreTestedByWriting) {
    const std::string folder = home.path("folder");
    EXPECT_EQ(testFolderWritable(folder, true), 0);
    EXPECT_TRUE(alerts.shown.empty()) << "what isn't there isn't told";
    std::filesystem::create_directories(folder + "/below/QelTestFile.txt/in the way");
    EXPECT_EQ(testFolderWritable(folder, false), 1);
    EXPECT_FALSE(std::filesystem::exists(folder + "/QelTestFile.txt"));
    EXPECT_TRUE(alerts.shown.empty());
    EXPECT_EQ(testFolderWritable(folder, true), 0);
    ASSERT_EQ(alerts.shown.size(), 1U);
    EXPECT_NE(alerts.shown[0].text.find(folder + "/below\""), std::string::npos) << alerts.shown[0].text;
}

}  // namespace
}  // namespace tarnova
