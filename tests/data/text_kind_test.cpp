#include "data/text_kind.h"

#include "data/delimiter_scan.h"
#include "tests/data/data_fixture.h"

namespace tarnova {
namespace {

std::string utf16(std::string_view text, bool little) {
    std::string bytes;
    for (const char each : text) {
        if (!little) bytes += '\0';
        bytes += each;
        if (little) bytes += '\0';
    }
    return bytes;
}

class TextKind : public DataTest {};

TEST_F(TextKind, RecognisesBytesAndFilesAlike) {
    const std::string zero(1, '\0');
    struct row {
        const char* name;
        std::string bytes;
        textKind kind;
        encodingClass folded;
    };
    const row rows[] = {
        {"empty", "", textKind::ascii, encodingClass::ascii},
        {"ASCII", "plain, text\n", textKind::ascii, encodingClass::ascii},
        {"UTF-8", "caf\xC3\xA9 and more", textKind::utf8, encodingClass::utf8},
        {"UTF-8 with mark", "\xEF\xBB\xBFplain", textKind::utf8Marked, encodingClass::utf8},
        {"four bytes", "x\xF0\x9F\x98\x80", textKind::utf8, encodingClass::utf8},
        {"cut inside a sequence", "abc\xE2\x82", textKind::utf8, encodingClass::utf8},
        {"cut behind its first byte", "abc\xC3", textKind::ascii, encodingClass::ascii},
        {"8-bit", "caf\xE9 and more", textKind::eightBit, encodingClass::eightBit},
        {"overlong start", "\xC0\x80", textKind::eightBit, encodingClass::eightBit},
        {"lone continuation", "a\x80", textKind::eightBit, encodingClass::eightBit},
        {"UTF-16 little with mark", "\xFF\xFE" + utf16("a", true), textKind::utf16LittleMarked, encodingClass::utf16},
        {"UTF-16 big with mark", "\xFE\xFF" + utf16("a", false), textKind::utf16BigMarked, encodingClass::utf16},
        {"UTF-16 little, line end", utf16("one\ntwo", true), textKind::utf16Little, encodingClass::utf16},
        {"UTF-16 big, line end", utf16("one\rtwo", false), textKind::utf16Big, encodingClass::utf16},
        {"UTF-16 little, zeros", utf16("abcdefgh", true), textKind::utf16Little, encodingClass::utf16},
        {"UTF-16 big, zeros", utf16("abcdefgh", false), textKind::utf16Big, encodingClass::utf16},
        {"both line ends", utf16("\n", true) + utf16("\n", false) + "\xE9", textKind::none, encodingClass::binary},
        {"binary", "a" + zero + "bcdefghijk", textKind::none, encodingClass::binary},
    };
    for (const auto& [name, bytes, kind, folded] : rows) {
        EXPECT_EQ(detectTextKind({}, bytes.data(), bytes.size()), kind) << name;
        EXPECT_EQ(encodingClassOf(bytes.data(), bytes.size()), folded) << name;
        writeFile(folder + "text", bytes);
        textKind fromFile = textKind::none;
        EXPECT_EQ(detectFileTextKind((folder + "text").c_str(), -1, fromFile, 0), 0);
        EXPECT_EQ(fromFile, kind) << name;
    }
    const textKindSettings lenient{false, 70, 10};
    EXPECT_EQ(detectTextKind(lenient, "a\0\xE9!", 4), textKind::eightBit);
}

TEST_F(TextKind, CheckFollowsTheDefinition) {
    struct row {
        const char* bytes;
        std::int16_t dataType;
        std::int16_t status;  // with nobody to ask, each question is answered by yes
    };
    const row rows[] = {
        {"plain", 0, 0}, {"plain", 1, 0}, {"\xC3\xA9", 1, 0}, {"\xC3\xA9", 2, 0}, {"\xC3\xA9", 0, 4},
        {"\xE9!", 0, 0}, {"\xE9!", 2, 0}, {"\xE9!", 1, 4},    {"\xFF\xFE", 0, 2}, {"\xFE\xFF", 1, 2},
    };
    toolkit.unattended = 1;
    for (const auto& [bytes, dataType, expected] : rows) {
        const auto definition = makeDefinition({"Key"});
        definition->dataType = dataType;
        writeFile(folder + "text", bytes);
        bool accepted = false;
        EXPECT_EQ(checkDataFileEncodingOf(*definition, (folder + "text").c_str(), accepted, openStatus, 0), 0);
        EXPECT_TRUE(accepted);
        EXPECT_EQ(openStatus, expected) << testing::PrintToString(bytes) << " as " << dataType;
    }
    bool accepted = false;
    EXPECT_EQ(checkDataFileEncodingOf(*makeDefinition({}), "/nowhere", accepted, openStatus, 0), errDataRead);
    EXPECT_EQ(pstrView(toolkit.pendingErrorParam), "/nowhere");
}

class DelimiterScan : public DataTest {
 protected:
    delimiterDecision decide(std::string_view bytes, std::int16_t fileType = fileTypeTab, const char* custom = "") {
        writeFile(folder + "data", bytes);
        const auto definition = makeDefinition({});
        definition->fileType = fileType;
        definition->osType = osTypeCr;
        pstrSet(definition->fDelimiter, custom);
        delimiterDecision decision{};
        EXPECT_EQ(scanDelimiters((folder + "data").c_str(), counts, 0), 0);
        error = decideDelimiters(counts, *definition, decision, 0);
        delimiterCounts lines;
        EXPECT_EQ(scanRecordDelimiters((folder + "data").c_str(), lines, 0), 0);
        EXPECT_TRUE(std::equal(std::begin(lines.record), std::end(lines.record), std::begin(counts.record)));
        return decision;
    }
    delimiterCounts counts;
};

TEST_F(DelimiterScan, DecidesByCounts) {
    struct row {
        const char* name;
        std::string bytes;
        std::int16_t fileType;
        const char* custom;
        std::int16_t osType, found;
        std::uint32_t fields;
    };
    const row rows[] = {
        {"CR LF over LF", "a,b\r\nc,d\r\ne\n", fileTypeComma, "", osTypeCrLf, fileTypeComma, 2},
        {"tie: the first", "a\rb\nc", fileTypeTab, "", osTypeCr, -1, 1},
        {"own delimiter first", "a;b\tc\n", fileTypeSemicolon, "", osTypeLf, fileTypeSemicolon, 2},
        {"tab before comma", "a,b\tc\n", fileTypeCaret, "", osTypeLf, fileTypeTab, 2},
        {"blank comes last", "a b;c\n", fileTypeCaret, "", osTypeLf, fileTypeSemicolon, 2},
        {"most fields of a line", "a,b\na,b,c\na\n", fileTypeComma, "", osTypeLf, fileTypeComma, 3},
        {"quotes hide", "\"a,b\n\",c\n", fileTypeComma, "", osTypeLf, fileTypeComma, 2},
        {"custom that is a candidate", "a;b\n", fileTypeCustom, ";", osTypeLf, fileTypeCustom, 2},
        {"custom that is none", "a|b\n", fileTypeCustom, "|", osTypeLf, -1, 1},
        {"no record delimiter", "a,b,c", fileTypeComma, "", osTypeCr, fileTypeComma, 3},
    };
    for (const auto& [name, bytes, fileType, custom, osType, found, fields] : rows) {
        const delimiterDecision decision = decide(bytes, fileType, custom);
        EXPECT_EQ(error, 0) << name;
        EXPECT_EQ(decision.osType, osType) << name;
        EXPECT_EQ(decision.fileType, found) << name;
        EXPECT_EQ(decision.fieldCount, fields) << name;
    }
    decide("a\n", fileTypeCustom);
    EXPECT_EQ(error, errNoFieldDelimiter);
    decide("a\n", fileTypeTab);
    EXPECT_EQ(error, 0) << "only a custom delimiter can be missing";
    decide("a,b,c\nd\n", fileTypeComma);
    EXPECT_EQ(counts.fieldMinimum[osTypeLf][fileTypeComma], 0u);
    EXPECT_EQ(counts.fieldMaximum[osTypeLf][fileTypeComma], 2u);
}

TEST_F(DelimiterScan, VerifyReportsWithoutAsking) {
    const std::string path = folder + "data";
    writeFile(path, "a;b\r\n");
    const auto definition = makeDefinition({"One", "Two", "Three"});
    bool goOn = false;
    Str255 report = {};
    openStatus = 0;
    EXPECT_EQ(verifyDataFile(*definition, 0, path.c_str(), goOn, openStatus, report, 0), 0);
    EXPECT_TRUE(goOn);
    EXPECT_EQ(openStatus, 0) << "the preference is off";

    appPrefs().verifyDataFiles = 1;
    EXPECT_EQ(verifyDataFile(*definition, 0, path.c_str(), goOn, openStatus, report, 0), 0);
    EXPECT_TRUE(goOn);
    EXPECT_EQ(openStatus, openStatusDifference);
    EXPECT_GT(report[0], 0);

    writeFile(path, "a,b,c\n");
    report[0] = 0;
    openStatus = 0;
    EXPECT_EQ(verifyDataFile(*definition, 0, path.c_str(), goOn, openStatus, report, 0), 0);
    EXPECT_EQ(openStatus, 0);
    EXPECT_EQ(report[0], 0);
}

}  // namespace
}  // namespace tarnova
