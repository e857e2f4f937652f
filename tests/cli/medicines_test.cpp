// A catalog of thousands of real articles, made with the prices of one year and updated from the file of another; what
// the program counts is counted from the two files by awk as well.

#include "tests/cli/program_fixture.h"

namespace tarnova {
namespace {

constexpr const char* definitionText = R"("Medicines" recordDefinition;
	TARNOVAJNT signature;
	3:"Label", 7:"Code", 10:"Price" fieldName;
	"Code" keyField;
	0 dataType; 0 fileType; 2 osType; FALSE "" textQualifier;
	"Label" extractionRecord; "Label" field;
	"Price" extractionRecord; 3 nodata; "none" nodatastring; "Price" field;
)";

// 40 articles a page, each "code: label, price" with two links.
constexpr const char* makeCatalog = R"(BEGIN { FS = "\t"; print "{\"tarnovaLayout\": 1, \"pages\": [" }
function link(name) { return "{\"text\": \"" name "\", \"tallyraTag\": {\"link\": \"" name "\", \"key\": \"" $7 "\"}}" }
NR % 40 == 1 { if (NR > 1) print "]}]},"; print "{\"items\": [{\"bounds\": [20, 20, 560, 800], \"text\": [" }
{ print (NR % 40 == 1 ? "" : ",") "{\"size\": 5, \"text\": [\"" $7 ": \", " link("Label") ", \", \", " link("Price") "]}" }
END { print "]}]}]}" }
)";

// The answer of the update, from the files alone. A link shows its field, or "none" for an empty price.
constexpr const char* count = R"(BEGIN { FS = "\t" }
FILENAME == "2022" { known[$7] = 1; label[$7] = $3; price[$7] = $10; next }
{ links += 2
  if (!($7 in known)) { missing += 2; keys = keys (keys == "" ? "" : ",") "\"" $7 "\"" }
  else {
    $3 == label[$7] ? ++same : ++changed
    if ($10 == price[$7]) ++same; else if (price[$7] == "") ++emptied; else ++changed } }
END { printf "{\"outputs\":[\"catalog.tvd\"],\"links\":%d,\"changed\":%d,\"unchanged\":%d,\"emptied\":%d,\"refused\":0," \
             "\"withoutRecord\":%d,\"keysWithoutRecord\":[%s],", links, changed, same, emptied, missing, keys }
)";

TEST_F(ProgramTest, ThousandsOfPricesAreUpdatedAsTheFilesSay) {
    write("medicines.ddf", definitionText);
    write("catalog.awk", makeCatalog);
    write("count.awk", count);
    for (const std::string year : {"2017", "2022"})
        ASSERT_EQ(
            shell("gunzip -c " + source("tests/cli/medicines/presentations-" + year + ".txt.gz") + " >" + year).status,
            0);
    ASSERT_EQ(shell("awk -f catalog.awk 2017 >catalog.tvd").status, 0);
    const std::string prices = "price catalog.tvd --ddf medicines.ddf --no-header --json --data ";
    ASSERT_EQ(run(prices + "2017").status, 0);
    const std::string ofLastYear = read("catalog.tvd");
    const outcomeRec updated = run(prices + "2022");
    const std::string counted = shell("LC_ALL=C awk -f count.awk 2022 2017").output;
    ASSERT_GT(counted.size(), 100U);
    EXPECT_EQ(updated.output.substr(0, counted.size()), counted);
    const std::string ofThisYear = read("catalog.tvd");
    EXPECT_NE(ofThisYear, ofLastYear);
    run(prices + "2022");
    EXPECT_EQ(read("catalog.tvd"), ofThisYear) << "updated twice";
}

}  // namespace
}  // namespace tarnova
