#include "tests/engine/module/command_fixture.h"

namespace tarnova {
namespace {

class OptionCommands : public CommandTest {
 protected:
    void SetUp() override {
        CommandTest::SetUp();
        EXPECT_EQ(send(1400), 0);
    }
    /// What the file holds now.
    std::uint8_t savedByte(std::size_t offset) const {
        return static_cast<std::uint8_t>(home.bytesOf("roaming/Tarnova/Config/Ostreon Tag Display.prf").at(offset));
    }
};

TEST_F(OptionCommands, RecordRange) {
    struct testRow {
        std::int32_t first, last, status;
    };
    const testRow rows[] = {{1, 50, 0}, {5, 2, -6026}, {-1, 5, -6026}, {0, -3, -6026}, {0, 0, 0}, {7, 7, 0}};
    std::uint8_t header = 0;
    for (auto [first, last, status] : rows) {
        EXPECT_EQ(send(506, {&first, &last, &header}), status) << first << " " << last;
        if (status != 0) continue;
        EXPECT_EQ(session().rangeFirst, static_cast<std::uint32_t>(first));
        EXPECT_EQ(appPrefs().rangeTo, static_cast<std::uint32_t>(last));
    }
    EXPECT_EQ(savedByte(22144), 7);
    EXPECT_EQ(savedByte(22126), 0) << "the header flag";
    session().runStage = runStageRunning;
    EXPECT_EQ(send(506), -6022);
    EXPECT_EQ(send(610), -6022);
    EXPECT_EQ(send(1205), -6022);
}

TEST_F(OptionCommands, RangeTexts) {
    PMString text("2-3,9");
    std::int32_t step = 4;
    std::uint32_t layout = 4;
    EXPECT_EQ(send(610, {&text, nullptr, &step, &layout}), 0);
    EXPECT_EQ(session().recordList, (std::vector<std::int32_t>{1, 2, 8}));
    EXPECT_EQ(session().rangeLast, 3U);
    EXPECT_EQ(session().stepBy, 4U);
    EXPECT_EQ(session().recordPassMode, 1U);
    EXPECT_EQ(appPrefs().labelSort.labelSortOn, 1);
    EXPECT_EQ(send(529), 0);
    EXPECT_EQ(reply.isSubset, 1);
    EXPECT_EQ(reply.count, 3U);
    char* list = nullptr;
    EXPECT_EQ(send(1294, {&list}), 0);
    EXPECT_STREQ(list, "2,3,9");
    freeBlock(list);

    PMString bad("3,2");
    EXPECT_EQ(send(610, {&bad}), -6026);
    EXPECT_EQ(alerts.shown.size(), 1U);
    EXPECT_EQ(session().recordList.size(), 3U) << "the old list stays";
    layout = 5;
    EXPECT_EQ(send(610, {nullptr, nullptr, nullptr, &layout}), -6081);
    PMString none;
    EXPECT_EQ(send(610, {&none}), 0);
    EXPECT_TRUE(session().recordList.empty());
    EXPECT_EQ(session().rangeFirst, 0U);
}

TEST_F(OptionCommands, RunOptionsAreTestedInTheirOrder) {
    struct testRow {
        const char* name;
        std::int32_t first, last, step;
        std::uint32_t layout;
        std::int32_t copyfit, kinds, status;
        std::uint32_t rangeLast, passMode;
        int level;
    };
    const testRow rows[] = {
        {"all well", 1, 50, 2, 1, 5, 1, 0, 50, 3, 5},
        {"copy-fit 11", 1, 60, 3, 0, 11, 0, -6039, 50, 3, 5},
        {"copy-fit -3", 1, 60, 3, 0, -3, 0, -6039, 50, 3, 5},
        {"kinds 3 comes before copy-fit", 1, 60, 3, 0, 11, 3, -6038, 50, 3, 5},
        {"kinds -1", 1, 60, 3, 0, 1, -1, -6038, 50, 3, 5},
        {"bad range", 9, 2, 3, 0, -2, 0, -6026, 50, 3, 5},
        {"bad layout", 1, 70, 3, 5, -2, 0, -6081, 70, 3, 5},
        {"copy-fit unchanged", 1, 80, 0, 2, -2, 2, 0, 80, 5, 5},
        {"copy-fit off", 0, 0, 0, 3, -1, 0, 0, 0, 4, 5},
        {"copy-fit of the module", 0, 0, 0, 0, 0, 0, 0, 0, 1, 12},
    };
    for (testRow row : rows) {
        EXPECT_EQ(send(1205, {&row.first, &row.last, nullptr, &row.step, &row.layout, &row.copyfit, &row.kinds}),
                  row.status)
            << row.name;
        EXPECT_EQ(session().rangeLast, row.rangeLast) << row.name;
        EXPECT_EQ(appPrefs().recordPassMode, row.passMode) << row.name;
        EXPECT_EQ(appPrefs().copyfitLevel, row.level) << row.name;
        if (std::string_view(row.name) == "copy-fit off") {
            EXPECT_EQ(appPrefs().copyfitEnabled, 0);
        }
    }
    EXPECT_EQ(appPrefs().copyfitEnabled, 1);
    EXPECT_EQ(appPrefs().rangeStep, 3U);
    std::uint8_t off = 0;
    EXPECT_EQ(send(1205, {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &off, &off, &off, &off, &off}),
              0);
    for (const std::size_t offset : {8626, 8780, 19065, 19066, 19067})
        EXPECT_EQ(savedByte(offset), 0) << offset;
}

TEST_F(OptionCommands, PriceRunOptions) {
    EXPECT_EQ(send(1401), 0);
    std::int32_t first = 2, last = 5, copyfit = 11, kinds = 3;
    EXPECT_EQ(send(561, {&first, &last, &copyfit, &kinds}), -6038);
    kinds = 1;
    EXPECT_EQ(send(561, {&first, &last, &copyfit, &kinds}), -6039);
    EXPECT_EQ(session().walkLastPage, 0);
    copyfit = 3;
    EXPECT_EQ(send(561, {&first, &last, &copyfit, &kinds}), 0);
    EXPECT_EQ(session().walkLastPage, 5);
    EXPECT_EQ(appPrefs().linkKinds, 1);
    EXPECT_EQ(send(560, {&last, &first}), -6026);
    session().priceActive = 1;
    EXPECT_EQ(send(561), -6022);
    EXPECT_EQ(send(560, {&first, &last}), -6022);
}

TEST_F(OptionCommands, ReportOptions) {
    std::uint8_t yes = 1, no = 0;
    PMString extension("csv");
    EXPECT_EQ(send(1229, {&no, &no, &yes, &yes, &extension, &no}), 0);
    EXPECT_EQ(appPrefs().flagTextErrors, 2);
    EXPECT_EQ(appPrefs().flagPictureErrors, 1);
    EXPECT_EQ(appPrefs().reportOption8786, 1);
    EXPECT_EQ(savedByte(8625), 0);
    PMString longer("json");
    EXPECT_EQ(send(1229, {&yes, nullptr, nullptr, nullptr, &longer, &yes}), -6037);
    EXPECT_EQ(appPrefs().logMissing, 1) << "fields in front stay set";
    EXPECT_EQ(appPrefs().reportOption8786, 1) << "fields behind aren't";
    EXPECT_EQ(savedByte(8625), 0) << "and nothing is saved";
    std::uint8_t log = 9, text = 9, picture = 9, byte = 9, option = 9;
    PMString got;
    EXPECT_EQ(send(1289, {&log, &text, &picture, &byte, &got, &option}), 0);
    EXPECT_EQ(log, 1);
    EXPECT_EQ(text, 0);
    EXPECT_EQ(picture, 1);
    EXPECT_EQ(byte, 1);
    EXPECT_EQ(got.bytes(), "csv");
    EXPECT_EQ(option, 0);
}

TEST_F(OptionCommands, StandInTexts) {
    PMString noData("nix"), picture("no picture"), article("no article");
    EXPECT_EQ(send(1230, {&noData, &picture, &article}), 0);
    EXPECT_EQ(pstrView(appPrefs().textDefaults.noData.string), "nix");
    EXPECT_EQ(pstrView(appPrefs().pictureDefaults.noData.string), "nix");
    EXPECT_EQ(pstrView(appPrefs().pictureDefaults.missingAsset.string), "no picture");
    EXPECT_EQ(pstrView(appPrefs().textDefaults.missingAsset.string), "no article");
    PMString got[5];
    EXPECT_EQ(send(1290, {&got[0], &got[1], &got[2], &got[3], &got[4]}), 0);
    EXPECT_EQ(got[1].bytes(), "no picture");
    EXPECT_EQ(got[2].bytes(), "no article");
    EXPECT_EQ(got[3].bytes(), pstrView(appPrefs().textDefaults.endOfFile.string)) << "one that wasn't given stays";
}

TEST_F(OptionCommands, OutputOptionsStopAtTheFirstError) {
    struct testRow {
        const char* name;
        std::uint32_t format;
        const char* extension;
        const char* separator;
        std::uint32_t chunk;
        std::int32_t status;
    };
    const testRow rows[] = {
        {"all well", 3, ".xpdf", "--", 250, 0},       {"no format", 0, ".pdf", "_", 5, -6033},
        {"no extension", 3, "", "_", 5, -6034},       {"long extension", 3, ".pdfxx", "_", 5, -6035},
        {"unknown format", 9, ".pdf", "_", 5, -6036}, {"long separator", 3, ".pdf", "____", 5, -6031},
        {"large chunk", 3, ".pdf", "_", 251, -6032},  {"automatic chunk", 3, ".pdf", "_", 0, 0},
    };
    for (testRow row : rows) {
        PMString extension(row.extension), separator(row.separator);
        std::uint8_t flag = row.status == 0 ? 0 : 1;
        EXPECT_EQ(send(1231, {&row.format, &extension, &flag, &separator, &row.chunk, nullptr, nullptr, nullptr, &flag,
                              &flag}),
                  row.status)
            << row.name;
        EXPECT_EQ(appPrefs().workingCopyHidden, 0) << row.name << ": fields behind an error aren't set";
    }
    std::uint32_t format = 3, chunk = 9;
    std::uint8_t behind = 9, hidden = 9, inverse = 9;
    PMString extension, separator;
    EXPECT_EQ(
        send(1291, {&format, &extension, &behind, &separator, &chunk, nullptr, nullptr, nullptr, &hidden, &inverse}),
        0);
    EXPECT_EQ(extension.bytes(), ".pdf");
    EXPECT_EQ(separator.bytes(), "_");
    EXPECT_EQ(chunk, 0U);
    EXPECT_EQ(behind, 0);
    EXPECT_EQ(hidden, 0);
    EXPECT_EQ(inverse, 0);
    EXPECT_EQ(appPrefs().driverOptionC, 1);
    format = 8;
    EXPECT_EQ(send(1291, {&format, &extension}), -6036);
}

TEST_F(OptionCommands, FlagsByTheirOffsets) {
    const std::size_t offsets[] = {19069, 3129, 3139, 8626, 8625, 19040, 8617, 19039, 22124, 19068, 19610, 19632};
    std::uint8_t values[12];
    std::uint8_t got[12] = {};
    for (const std::uint8_t start : {0, 1}) {
        args = {};
        for (unsigned i = 0; i < 12; ++i) {
            values[i] = (i + start) % 2 == 0 ? 0 : 7;
            itemAt(args, i) = &values[i];
        }
        EXPECT_EQ(send(1261), 0);
        for (unsigned i = 0; i < 12; ++i) {
            EXPECT_EQ(savedByte(offsets[i]), (i + start) % 2) << offsets[i];
            itemAt(args, i) = &got[i];
        }
        EXPECT_EQ(send(1288), 0);
        for (unsigned i = 0; i < 12; ++i)
            EXPECT_EQ(got[i], (i + start) % 2);
    }
}

TEST_F(OptionCommands, SearchPaths) {
    std::uint8_t no = 0, yes = 1;
    IDFile folder(home.path("pictures"));
    EXPECT_EQ(send(1222, {&folder, &yes}), -6025) << "it isn't there";
    EXPECT_EQ(appPrefs().searchOwnFolder, 0);
    IDFile plain(home.file("plain", "x"));
    EXPECT_EQ(send(1222, {&plain}), -6025) << "no folder";
    std::filesystem::create_directories(folder.path());
    EXPECT_EQ(send(1222, {&folder, &yes, &no, &no, &no}), 0);
    EXPECT_EQ(send(1222, {&folder}), 0) << "it is there already";
    EXPECT_EQ(appPrefs().searchPaths[1][0], 0);
    for (int i = 1; i < 10; ++i) {
        IDFile more(home.path("more" + std::to_string(i)));
        std::filesystem::create_directories(more.path());
        EXPECT_EQ(send(1222, {&more}), 0);
    }
    IDFile last(home.path("last"));
    std::filesystem::create_directories(last.path());
    EXPECT_EQ(send(1222, {&last}), -6027);
    EXPECT_EQ(send(1222, {&folder}), 0) << "one that is listed succeeds in a full table";
    std::uint8_t flags[4] = {9, 9, 9, 9};
    std::vector<PMString> folders;
    EXPECT_EQ(send(1255, {&flags[0], &flags[1], &flags[2], &flags[3], &folders}), 0);
    EXPECT_EQ(flags[0], 1);
    EXPECT_EQ(flags[1] + flags[2] + flags[3], 0);
    ASSERT_EQ(folders.size(), 10U);
    EXPECT_EQ(folders[0].bytes(), folder.path());
    EXPECT_EQ(send(1221), 0);
    EXPECT_EQ(appPrefs().searchPaths[9][0], 0);
    EXPECT_EQ(appPrefs().searchOwnFolder, 0);
}

TEST_F(OptionCommands, DuplicationAndLabelSort) {
    std::uint32_t copies = 3, got = 9;
    PMString field, gotField("x");
    EXPECT_EQ(send(613, {nullptr, &copies, &field, nullptr, &got, &gotField}), 0);
    EXPECT_EQ(got, 3U);
    EXPECT_EQ(appPrefs().duplicationKind, 1U);
    field.set("Copies");
    EXPECT_EQ(send(613, {nullptr, &copies, &field, nullptr, &got, &gotField}), 0);
    EXPECT_EQ(got, 0U) << "a name wins";
    EXPECT_EQ(gotField.bytes(), "Copies");
    EXPECT_EQ(appPrefs().duplicationKind, 2U);
    std::uint8_t ask = 1;
    EXPECT_EQ(send(613, {&ask}), -1);

    std::uint32_t columns = 2, rows = 0, order = 1, outColumns = 0, outRows = 0;
    EXPECT_EQ(send(611, {nullptr, nullptr, &columns, &rows, &order, nullptr, nullptr, nullptr, &outColumns, &outRows}),
              0);
    EXPECT_EQ(outColumns, 2U);
    EXPECT_EQ(outRows, 1U) << "at least one";
    EXPECT_EQ(savedByte(26192), 1) << "along a row";
}

TEST_F(OptionCommands, ResetOfTheEnvironment) {
    useCustomers();
    const std::string index = session().indexFolder, temp = tempFilesFolder();
    for (const std::string& folder : {index, temp}) {
        std::filesystem::create_directories(folder + "/below");
        ASSERT_EQ(fileWriteWhole((folder + "/file").c_str(), "x", 0), 0);
    }
    std::uint8_t yes = 1, no = 0;
    std::uint32_t selector = 3, standard = 1, none = 0, forget = 2;
    EXPECT_EQ(send(1232, {&no, &yes, &selector}), -6040);
    EXPECT_TRUE(std::filesystem::is_empty(temp));
    EXPECT_FALSE(std::filesystem::is_empty(index));
    EXPECT_EQ(send(1232, {&yes, &no, &none, &selector}), -6041);
    EXPECT_TRUE(std::filesystem::is_empty(index));

    EXPECT_EQ(send(1232, {&no, &no, &standard}), 0);
    EXPECT_EQ(recordDefCount(session().currentDefSet), 1);
    EXPECT_NE(session().currentRecordDef, nullptr);
    EXPECT_EQ(send(1232, {&no, &no, &forget}), 0);
    EXPECT_TRUE(std::filesystem::exists(definitionStorePath()));

    appPrefs().rangeStep = 9;
    appPrefs().modulePresence[0] = 1;
    EXPECT_EQ(send(1232, {&no, &no, &none, &standard}), 0);
    EXPECT_EQ(appPrefs().rangeStep, 1U);
    EXPECT_EQ(appPrefs().modulePresence[0], 1) << "modules stay announced";
    EXPECT_EQ(send(1232, {&no, &no, &none, &forget}), 0);
    loadPreferences();
    EXPECT_TRUE(alerts.shown.empty()) << "the next start says nothing";
    EXPECT_EQ(appPrefs().modulePresence[0], 0);
}

}  // namespace
}  // namespace tarnova
