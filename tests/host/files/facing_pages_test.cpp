// Facing pages: how pages become spreads, and which page of a master serves which.

#include <gtest/gtest.h>

#include <cmath>

#include "tests/host/files/layout_kit.h"

namespace tarnova {
namespace {

/// The pages of all spreads as "[left edge..right edge ...]".
std::string spreadsOf(const DocumentModel& document) {
    std::string out;
    for (std::int32_t i = 0; i < document.spreadCount(); ++i) {
        out += '[';
        for (const UID page : document.pagesOfSpread(document.spreadAt(i))) {
            const PMRect& bounds = document.page(page)->bounds;
            if (out.back() != '[') out += ' ';
            out += std::to_string(std::lround(bounds.left)) + ".." + std::to_string(std::lround(bounds.right));
        }
        out += ']';
    }
    return out;
}

/// Names of the items drawn on a page, counted from 1.
std::string drawnOn(const DocumentModel& document, std::int32_t number) {
    std::vector<const PageItem*> items;
    document.drawnItems(document.pageAt(number - 1), items);
    std::string out;
    for (const PageItem* item : items)
        out += item->name + " ";
    return out;
}

std::string facing(const std::string& members) {
    return R"({"tarnovaLayout": 1, "facing": true, "pageSize": [100, 50], )" + members + "}";
}

TEST(FacingPages, AreLaidOutFromTheSpine) {
    struct testRow {
        const char* name;
        const char* members;
        const char* spreads;
    };
    const testRow rows[] = {
        {"one page", R"("pages": [{}])", "[0..100]"},
        {"an odd number", R"("pages": [{}, {}, {}])", "[0..100][-100..0 0..100]"},
        {"the last alone", R"("pages": [{}, {}, {}, {}])", "[0..100][-100..0 0..100][-100..0]"},
        {"sizes of their own", R"("pages": [{}, {"size": [70, 50]}, {"size": [30, 50]}])", "[0..100][-70..0 0..30]"},
        {"edges stand", R"("pages": [{"edges": [5, 0, 50, 50]}, {}])", "[5..50][-100..0]"},
        {"spreads", R"("spreads": [{"pages": [{}, {}]}, {"pages": [{}]}, {"pages": [{}, {}, {}, {}]}])",
         "[-100..0 0..100][-100..0][-200..-100 -100..0 0..100 100..200]"},
        {"three pages", R"("spreads": [{"pages": [{}, {}, {}]}, {"pages": [{}, {}, {}]}])",
         "[-100..0 0..100 100..200][-200..-100 -100..0 0..100]"},
    };
    for (const auto& [name, members, spreads] : rows) {
        const auto document = opened(facing(members));
        ASSERT_NE(document, nullptr) << name;
        EXPECT_EQ(spreadsOf(*document), spreads) << name;
        expectStable(*document);
    }
}

TEST(FacingPages, ItemsLieOnTheirPageInWhateverSpread) {
    const auto document = opened(facing(R"("pages": [{}, {}, {"items": [{"bounds": [10, 5, 20, 10]}]}, {"items": [
        {"bounds": [10, 5, 20, 10]}]}])"));
    for (const int number : {3, 4}) {
        std::vector<const PageItem*> items;
        document->drawnItems(document->pageAt(number - 1), items);
        ASSERT_EQ(items.size(), 1U) << number;
        EXPECT_EQ(document->boundsInSpread(items[0]->uid).left, number == 3 ? 10 : -90);
        EXPECT_EQ(document->pageOfItem(items[0]->uid).page, document->pageAt(number - 1));
    }
}

TEST(FacingPages, GrowFromTheLastSpread) {
    const auto document = opened(facing("\"pages\": []"));
    const char* grown[] = {"[0..100]", "[0..100][-100..0]", "[0..100][-100..0 0..100]",
                           "[0..100][-100..0 0..100][-100..0]"};
    for (const char* spreads : grown) {
        ASSERT_EQ(document->addPages(1), 0);
        EXPECT_EQ(spreadsOf(*document), spreads);
    }
    ASSERT_EQ(document->duplicateSpread(document->spreadAt(0)), 0);
    EXPECT_EQ(spreadsOf(*document), std::string(grown[3]) + "[0..100]") << "a copy keeps its side";
    ASSERT_EQ(document->addPages(2), 0);
    EXPECT_EQ(spreadsOf(*document), std::string(grown[3]) + "[0..100][-100..0 0..100]");
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(document->undo());
    EXPECT_EQ(spreadsOf(*document), grown[2]);
    expectStable(*document);
}

TEST(FacingPages, StayWhereTheyAreWhenOthersGo) {
    const auto document = opened(facing(R"("pages": [{}, {}, {}, {"items": [{"name": "left", "bounds": [5, 5, 9, 9]}]},
        {"items": [{"name": "right", "bounds": [5, 5, 9, 9]}]}], "sections": [{"page": 4, "prefix": "B", "includePrefix": true}])"));
    ASSERT_EQ(document->removePages({document->pageAt(1), document->pageAt(3)}), 0);
    EXPECT_EQ(spreadsOf(*document), "[0..100][0..100][0..100]");
    EXPECT_EQ(drawnOn(*document, 3), "right ");
    EXPECT_EQ(document->pageName(document->pageAt(2)), "B1") << "the section begins on the next page that stays";
    expectStable(*document);
    ASSERT_TRUE(document->undo());
    EXPECT_EQ(spreadsOf(*document), "[0..100][-100..0 0..100][-100..0 0..100]");
    EXPECT_EQ(drawnOn(*document, 4), "left ");
}

TEST(FacingPages, TakeTheSideOfTheirMaster) {
    const auto document = opened(facing(R"("masters": [
        {"name": "Both", "pages": [{"items": [{"name": "L", "bounds": [1, 1, 9, 9]}]},
                                   {"items": [{"name": "R", "bounds": [90, 1, 9, 9]}]}]},
        {"name": "Single", "pages": [{"items": [{"name": "S", "bounds": [1, 1, 9, 9]}]}]},
        {"name": "Derived", "pages": [{"master": "Both"}, {"master": "Both"}]},
        {"name": "Wide", "pages": [{"items": [{"name": "LL", "bounds": [1, 1, 9, 9]}]}, {"items": [{"name": "L1", "bounds": [1, 1, 9, 9]}]},
                                   {"items": [{"name": "R1", "bounds": [1, 1, 9, 9]}]}, {"items": [{"name": "RR", "bounds": [1, 1, 9, 9]}]}]}],
        "spreads": [{"pages": [{"master": "Both"}]},
                    {"pages": [{"master": "Derived"}, {"master": "Derived"}]},
                    {"pages": [{"master": "Single"}, {"master": "Single"}]},
                    {"pages": [{"master": "Wide"}, {"master": "Both"}, {"master": "Both"}, {"master": "Wide"}]},
                    {"pages": [{"master": "Wide"}]}])"));
    const char* expected[] = {"R ", "L ", "R ", "S ", "S ", "LL ", "L ", "R ", "RR ", "L1 "};
    for (std::int32_t number = 1; number <= document->pageCount(); ++number)
        EXPECT_EQ(drawnOn(*document, number), expected[number - 1]) << number;

    // The page alone on the right shows the master's right page, which lies at the same place of the spread.
    std::vector<const PageItem*> items;
    document->drawnItems(document->pageAt(0), items);
    EXPECT_EQ(document->pageOrigin(document->pageAt(0), *items[0]), PMPoint({0, 0}));
    ASSERT_EQ(document->overrideMasterItems({document->pageAt(2), document->pageAt(1)}), 0);
    EXPECT_EQ(drawnOn(*document, 2), "L ");
    std::vector<const PageItem*> own;
    document->drawnItems(document->pageAt(1), own);
    EXPECT_EQ(document->boundsInSpread(own[0]->uid).left, -99) << "an overridden item lies where the master's one did";
    EXPECT_EQ(document->pageOfItem(own[0]->uid).page, document->pageAt(1));
}

TEST(FacingPages, AreNoMatterWithoutTheMember) {
    const auto document = opened(R"({"tarnovaLayout": 1, "pageSize": [100, 50], "masters": [
        {"name": "M", "pages": [{"items": [{"name": "first", "bounds": [1, 1, 9, 9]}]}, {"items": [{"name": "second", "bounds": [1, 1, 9, 9]}]}]}],
        "spreads": [{"pages": [{"master": "M", "edges": [-100, 0, 0, 50]}, {"master": "M"}, {"master": "M"}]}]})");
    EXPECT_EQ(spreadsOf(*document), "[-100..0 0..100 100..200]");
    EXPECT_EQ(drawnOn(*document, 1), "first ");
    EXPECT_EQ(drawnOn(*document, 2), "second ");
    EXPECT_EQ(drawnOn(*document, 3), "second ") << "the outermost";
    EXPECT_EQ(writeLayout(*document).find("facing"), std::string::npos);
}

}  // namespace
}  // namespace tarnova
