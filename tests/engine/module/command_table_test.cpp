#include "engine/module/command_table.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

#include "source_folder.h"
#include "tests/engine/toolkit/temp_folder.h"

namespace tarnova {
namespace {

/// Numbers and stretches of them: "59 503-504".
std::set<std::uint32_t> numbersOf(const std::string& text) {
    std::set<std::uint32_t> numbers;
    std::istringstream parts(text);
    for (std::string part; parts >> part;) {
        const auto first = static_cast<std::uint32_t>(std::stoul(part));
        const std::size_t hyphen = part.find('-');
        const auto last = hyphen == std::string::npos ? first : std::stoul(part.substr(hyphen + 1));
        for (std::uint32_t number = first; number <= last; ++number)
            numbers.insert(number);
    }
    return numbers;
}

TEST(CommandTable, HasEveryNumberOnce) {
    std::set<std::uint32_t> present;
    for (const commandRow& row : commandTable())
        EXPECT_TRUE(present.insert(row.number).second) << row.number << " stands there twice";
    EXPECT_EQ(present, numbersOf("59 243 246 401 503-504 506 508 512 525 528-534 537-543 545-550 553 556-562 566-573 "
                                 "575-577 579-599 609-621 1203-1214 1216-1223 1229-1235 1237-1242 1244 1246 1248 "
                                 "1250-1258 1260-1267 1269-1275 1277-1279 1288-1294 1296 1306 1400-1401 1404-1408 "
                                 "2021 2024-2025"));
}

TEST(CommandTable, ModesAreThoseOfTheTwoLists) {
    const auto merge = numbersOf(
        "506 508 541 579 593-594 596-598 610-611 613 1203-1213 1215-1216 1220-1222 1229-1232 1235 1240-1241 1245-1248 "
        "1250-1251 1255 1257-1258 1261 1270-1271 1293-1294");
    const auto price = numbersOf("550 553 557-562 566-567 590-592 599 1233 1238 1242 1244 1254 1264-1269 1272-1273");
    for (const commandRow& row : commandTable()) {
        const commandMode expected = merge.contains(row.number)   ? commandMode::merge
                                     : price.contains(row.number) ? commandMode::price
                                                                  : commandMode::any;
        EXPECT_EQ(row.mode, expected) << row.number;
    }
}

TEST(CommandTable, FirstStageIsTheseNumbers) {
    const auto expected =
        numbersOf("243 246 401 503 512 525 528-529 545-546 556 569 585 609 619 1292 1400-1401 2021 2024-2025");
    for (const commandRow& row : commandTable())
        EXPECT_EQ(row.stage == commandStage::first, expected.contains(row.number)) << row.number;
}

TEST(CommandTable, ArgumentsHaveAPlaceEach) {
    for (const commandRow& row : commandTable()) {
        std::set<std::string> names;
        for (const commandArgument& argument : row.arguments) {
            const std::string name = argumentName(argument);
            EXPECT_TRUE(names.insert(name).second) << row.number << " has " << name << " twice";
            const unsigned capacity = argument.place == argumentPlace::item     ? commandItemCount
                                      : argument.place == argumentPlace::number ? commandNumberCount
                                      : argument.place == argumentPlace::flag   ? commandFlagCount
                                                                                : replyFieldCount;
            EXPECT_LT(argument.index, capacity) << row.number << " " << name;
        }
    }
}

TEST(CommandTable, ReferencePageIsUpToDate) {
    std::string page;
    ASSERT_EQ(fileReadWhole(TARNOVA_SOURCE_FOLDER "/docs/commands.md", page, 1 << 20, 0), 0);
    EXPECT_TRUE(page == commandReference()) << "run: tarnova exec --reference > docs/commands.md";
}

}  // namespace
}  // namespace tarnova
