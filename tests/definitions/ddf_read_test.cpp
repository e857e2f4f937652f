#include "tests/definitions/definition_fixture.h"

namespace tarnova {

namespace {

class DdfRead : public DefinitionTest {
 protected:
    /// Reads `statements` into a definition "d" behind its signature.
    const recordDefRec& readInto(std::string_view statements, errorWord expected = 0) {
        startOver();
        EXPECT_EQ(read("d recordDefinition; T signature; " + std::string(statements)), expected) << statements;
        return *find("d");
    }

    const extractionRec& readLink(std::string_view statements) {
        return *readInto("l extractionRecord; " + std::string(statements)).extractions[0];
    }
    const searchCriteriaRec& readCriteria(std::string_view statements) {
        return *readInto("c searchCriteria; " + std::string(statements)).searchCriteria[0];
    }
    const styleRec& readStyle(std::string_view statements) {
        return *readInto("s styleRecord; " + std::string(statements)).styles[0];
    }

    std::string fields(const recordDefRec& definition) {
        std::string all;
        for (std::uint16_t index = 0; index < fieldCountOf(definition); ++index) {
            const fieldNameEntry& entry = definition.fields[index];
            all += std::to_string(entry.fieldNumber) + "=" + pstrString(entry.fieldName) + " ";
        }
        return all;
    }

    std::string remarks() const {
        std::string all;
        for (const ddfRemarkRec& remark : report_.remarks)
            all += std::to_string(remark.line) + " " + remark.text + "\n";
        return all;
    }
};

TEST_F(DdfRead, Tokens) {
    struct testRow {
        const char* name;
        std::string text;  // operands and keyword of a keyField statement
        const char* value;
    };
    const testRow rows[] = {
        {"bare word", "Name keyField", "Name"},
        {"keyword in any case", "Name KEYFIELD", "Name"},
        {"separators in a row", "\t, Name ,,\t keyField", "Name"},
        {"separators in quotes", "\" a,\tb;c \" keyField", " a,\tb;c "},
        {"double quote closed by a single one", "\"Name' keyField", "Name"},
        {"single quotes", "'Name' keyField", "Name"},
        {"escaped quotes", "\"a\\\"b\\'c\" keyField", "a\"b'c"},
        {"escaped backslash", "\"a\\\\b\" keyField", "a\\b"},
        {"backslash before another byte", "\"a\\bc\" keyField", "abc"},
        {"backslash before a separator", "a\\ b keyField", "b"},
        {"line end clears the escape", "\"a\\\r\n\"  keyField", "a"},
        {"broken by line ends", "Na\r\nme key\rField", "Name"},
        {"broken in quotes", "\"Na\nme\" keyField", "Name"},
        {"quotes inside a word", "a\"b\" keyField", "a"},
        {"bytes above 127", "\"\xC3\xA4\" keyField", "\xC3\xA4"},
        {"empty", "\"\" keyField", ""},
        {"the last operand counts", "a b keyField", "b"},
        {"no operand", "x keyField; keyField", "x"},
        {"cut to its field", "abcdefghijklmnopqrstuvwxyz0123456789 keyField", "abcdefghijklmnopqrstuvwxyz01234"},
        {"statement without a token", "x keyField; ; ,; \"\";", "x"},
        {"never ended", "x keyField; y keyField \"", "x"},
    };
    for (const auto& [name, text, value] : rows) {
        const bool whole = text.back() == '"' && std::string_view(name) == "never ended";
        const recordDefRec& definition = readInto(text + (whole ? "" : ";"));
        // Quotes that don't surround the whole token stay in it as 0 bytes; what is compared ends there.
        const std::string key = pstrString(definition.keyField);
        EXPECT_EQ(key.substr(0, key.find('\0')), value) << name;
    }
}

TEST_F(DdfRead, Numbers) {
    struct testRow {
        const char* token;
        std::int64_t lastUpdate;  // 7: left as it was
        std::int16_t dataType;
    };
    const testRow rows[] = {
        {"0", 0, 0},
        {"+12", 12, 12},
        {"\"12\"", 12, 12},
        {"12:34", 12, 12},
        {"00000000000000000000000000000012", 12, 12},
        {"000000000000000000000000000000012", 7, 7},
        {"32767", 32767, 32767},
        {"32768", 32768, 7},
        {"4294967295", 4294967295, 7},
        {"4294967296", 7, 7},
        {"99999999999999999999", 7, 7},
        {"1x", 7, 7},
        {"-", 7, 7},
        {":", 7, 7},
        {"0x10", 7, 7},
        {"", 7, 7},
    };
    for (const auto& [token, lastUpdate, dataType] : rows) {
        const std::string t = token;
        const recordDefRec& definition =
            readInto("7 lastUpdate; 7 dataType; " + t + " lastUpdate; " + t + " dataType;");
        EXPECT_EQ(definition.lastUpdate, lastUpdate) << token;
        EXPECT_EQ(definition.dataType, dataType) << token;
    }
    EXPECT_EQ(readInto("-32768 dataType;").dataType, -32768);
}

TEST_F(DdfRead, FlagsAndTexts) {
    const recordDefRec& definition = readInto(
        "FALSE '' sqlPrologue; only sqlEpilogue; TRUE b sqlRowCount; yes c reqPrologue; sqlRowCount;"
        "text ruleSet; FALSE textQualifier; true \"VT\" vtTranslation;"
        "TRUE out FALSE in transTable; TRUE one bsrSet; false useKeyfieldCase;");
    EXPECT_EQ(definition.sqlPrologue.enable, 0);
    EXPECT_EQ(definition.sqlPrologue.string[0], 0);
    EXPECT_EQ(definition.sqlEpilogue.enable, 1);
    EXPECT_EQ(pstrView(definition.sqlEpilogue.string), "only");
    EXPECT_EQ(definition.sqlRowCount.enable, 1);
    EXPECT_EQ(definition.reqPrologue.enable, 0) << "only true is true";
    EXPECT_EQ(definition.ruleSet.enable, 0);
    EXPECT_EQ(pstrView(definition.ruleSet.string), "text");
    EXPECT_EQ(definition.textQualifier.enable, 1) << "one operand is the text";
    EXPECT_EQ(pstrView(definition.textQualifier.string), "FALSE");
    EXPECT_EQ(definition.vtTranslation.enable, 0) << "never set by reading";
    EXPECT_EQ(pstrView(definition.vtTranslation.string), "VT");
    EXPECT_EQ(definition.exportTransTable.enable, 1);
    EXPECT_EQ(pstrView(definition.exportTransTable.string), "out");
    EXPECT_EQ(definition.importTransTable.enable, 0);
    EXPECT_EQ(pstrView(definition.importTransTable.string), "in");
    EXPECT_EQ(pstrView(definition.importSrSet.string), "one") << "one pair is for import";
    EXPECT_EQ(definition.importSrSet.enable, 1);
    EXPECT_EQ(definition.exportSrSet.string[0], 0);
    EXPECT_EQ(definition.useKeyfieldCase, 0);
}

TEST_F(DdfRead, FieldLists) {
    struct testRow {
        const char* name;
        std::string text;
        const char* fields;
    };
    const testRow rows[] = {
        {"by name", "1:\"b\", 2:\"a\"", "2=a 1=b "},
        {"a code for a name", "7:65", "7=A "},
        {"a number that is no code", "7:256", "7=256 "},
        {"a word for a name", "7:City", "7=City "},
        {"text behind the name", "7:City:x 8:\"Zip\":y", "7=City 8=Zip "},
        {"a colon in the name", "7:\"a:b\"", "7=a:b "},
        {"malformed from the end", "1:a 2:b x:c 4:d", "4=d "},
        {"too large a number", "1:a 65536:b 65535:c", "65535=c "},
        {"no name", "1:\"\" 2 3: 4:d", "4=d "},
        {"equal names stand from the last to the first", "1:\"a\", 2:\"a\"", "2=a 1=a "},
        {"broken over lines", "1:\"a\",\r\n\t2:\"b\"", "1=a 2=b "},
    };
    for (const auto& [name, text, expected] : rows)
        EXPECT_EQ(fields(readInto(text + " fieldName;")), expected) << name;

    std::string full;
    for (int number = 1; number <= fieldNameCapacity + 1; ++number)
        full += std::to_string(number) + ":f" + std::to_string(number) + " ";
    const recordDefRec& definition = readInto(full + "fieldName;");
    EXPECT_EQ(fieldCountOf(definition), fieldNameCapacity);
    EXPECT_EQ(fieldNumberOf(definition, Pascal("f1")), -1) << "the first in the file is the one too many";
    EXPECT_EQ(fieldNumberOf(definition, Pascal("f1501")), 1501);
}

TEST_F(DdfRead, OlderForms) {
    struct testRow {
        const char* text;
        std::int16_t fileType, osType;  // 5 and 3 before
    };
    const testRow rows[] = {
        {"9 fieldDelimiter; 13 recordDelimiter;", 0, 0},  {"44 fieldDelimiter; 13 10 recordDelimiter;", 1, 1},
        {"59 fieldDelimiter; 10 recordDelimiter;", 5, 2}, {"9 9 fieldDelimiter; 10 13 recordDelimiter;", 5, 3},
        {"x 9 fieldDelimiter; recordDelimiter;", 5, 3},   {"13 10 10 recordDelimiter; 100 maxFields;", 5, 3},
    };
    for (const auto& [text, fileType, osType] : rows) {
        const recordDefRec& definition = readInto("5 fileType; 3 osType; " + std::string(text));
        EXPECT_EQ(definition.fileType, fileType) << text;
        EXPECT_EQ(definition.osType, osType) << text;
    }
    const priceFormatRec& price = readStyle("price; TRUE deleteRadix; price; 5 useRadix; deleteRadix;").groups[0].price;
    EXPECT_EQ(price.useRadix, 1);
    EXPECT_EQ(find("d")->styles[0]->groups[1].price.useRadix, 0);
    EXPECT_EQ(readLink("TRUE xpressTags;").importFilter, importFilterTaggedText);
    EXPECT_EQ(readLink("2 importFilter; FALSE xpressTags;").importFilter, importFilterRtf);
}

TEST_F(DdfRead, RuleDataInHexadecimal) {
    struct testRow {
        const char* text;
        errorWord err;
        std::string first, second;
    };
    const testRow rows[] = {
        {"\"4a 4B\r\n\t4c\" ruleSetData2;", 0, "", "JKL"},
        {"\"4a\" ruleSetData;", 0, "J", "J"},
        {"\"4a\" ruleSetData2; \"4b\" ruleSetData;", 0, "K", "J"},
        {"\"4a\" ruleSetData; \"4b4c\" ruleSetData2;", 0, "J", "KL"},
        {"\"4a4b\" ruleSetData2; \"4c\" ruleSetData2;", 0, "", "L"},
        {"\"4a\" ruleSetData2; ruleSetData2;", 0, "", "J"},
        {"\"\" ruleSetData2;", 0, "", ""},
        {"\"4g\" ruleSetData2; x keyField;", errDdfHexBadCharacter, "", ""},
        {"\"4a4\" ruleSetData2; x keyField;", errDdfHexOddDigits, "", ""},
    };
    const auto bytes = [](blockHandle data) {
        return data == nullptr ? std::string() : std::string(reinterpret_cast<const char*>(*data), handleSize(data));
    };
    for (const auto& [text, err, first, second] : rows) {
        const recordDefRec& definition = readInto(text, err);
        EXPECT_EQ(bytes(definition.ruleSetData), first) << text;
        EXPECT_EQ(bytes(definition.ruleSetData2), second) << text;
        EXPECT_EQ(definition.keyField[0], 0) << "an error stops at once: " << text;
    }
}

TEST_F(DdfRead, SearchCriteria) {
    const searchCriteriaRec& criteria = readCriteria(
        "pre prefix; OR context; xor context; a fieldSearch; 1 string; enable; caseSense; b fieldSearch; c fieldSearch;"
        "d fieldSearch; 4 string; enable; e fieldSearch;");
    EXPECT_EQ(criteria.prefix.enable, 1);
    EXPECT_EQ(criteria.context, searchContextOr);
    EXPECT_EQ(criteria.caseSense, 0) << "it stands behind the first field test";
    EXPECT_EQ(pstrView(criteria.fieldSearch[0].string), "1");
    EXPECT_EQ(criteria.fieldSearch[0].enable, 1);
    EXPECT_EQ(pstrView(criteria.fieldSearch[2].field), "c");
    EXPECT_EQ(criteria.fieldSearch[2].string[0], 0) << "what belongs to the fourth falls away";
    EXPECT_EQ(readCriteria("and context; context; caseSense;").context, searchContextNone);
    EXPECT_EQ(find("d")->searchCriteria[0]->caseSense, 1);
}

TEST_F(DdfRead, VariableLinks) {
    const extractionRec& link = readLink(
        "1 2 3 TRUE useColorAttr; 9 9 TRUE useColorAttr; 9 x 9 FALSE useColorAttr; locked; maybe isafile; TRUE isafile;"
        "5 6 7 key magicKey; 8 x 9 new magicKey; TRUE EAN dataFormat; UPC dataFormat; suf suffix;"
        "b databasePath; b keyField; enable;");
    EXPECT_EQ(link.useColorAttr, 1) << "all four or none";
    EXPECT_EQ(link.colorRed, 1);
    EXPECT_EQ(link.colorBlue, 3);
    EXPECT_EQ(link.isafile, 1);
    EXPECT_EQ(pstrView(link.magicKey), "new");
    EXPECT_EQ(link.magicKeyNumbers[0], 5);
    EXPECT_EQ(link.magicKeyNumbers[2], 9);
    EXPECT_EQ(link.useDataFormat, 1);
    EXPECT_EQ(pstrView(link.dataFormat), "UPC");
    EXPECT_EQ(link.suffix.enable, 1);
    EXPECT_EQ(find("d")->keyField[0], 0) << "there is no way back to the definition";
}

TEST_F(DdfRead, PriceStyles) {
    const styleRec& style = readStyle(
        "FALSE checkPrice; checkPrice; price; ALL format; FALSE TRUE underline; 1 2 TRUE specialCents; superior;"
        "currency; insAfter; x 9 FALSE sizeSymbol; -4 TRUE kernSymbol; price; currency; price; price; 8 useRadix;"
        "currency; $ string; currency; EUR string; n notes;");
    EXPECT_EQ(style.checkPrice, 1);
    EXPECT_EQ(style.groups[0].price.format, priceFormatAll);
    EXPECT_EQ(style.groups[0].price.underline, 1);
    EXPECT_EQ(style.groups[0].price.centsShift, 1);
    EXPECT_EQ(style.groups[0].price.centsSize, 2);
    EXPECT_EQ(style.groups[0].currency.insAfter, 1);
    EXPECT_EQ(style.groups[0].currency.symbolSize, 9) << "what stands behind a malformed number counts";
    EXPECT_EQ(style.groups[0].currency.sizeSymbol, 0);
    EXPECT_EQ(style.groups[0].currency.symbolKerning, -4);
    EXPECT_EQ(style.groups[2].price.useRadix, 0) << "a fourth price falls away";
    EXPECT_EQ(pstrView(style.groups[2].currency.string), "$") << "the third currency behind it doesn't";
    EXPECT_EQ(style.groups[1].currency.symbolSize, fixedHundredPercent);
    // Counts start anew with each style.
    EXPECT_EQ(pstrView(readStyle("price; t styleRecord; price; B xpressTagString;").name), "s");
    EXPECT_EQ(pstrView(find("d")->styles[1]->groups[0].price.xpressTagString), "B");
}

TEST_F(DdfRead, PictureSearchOnceForADefinition) {
    const recordDefRec& definition = readInto(
        "pictureSearch; enable; /p searchPath; pictureSearch; FALSE enable; /q searchPath; x keyField;"
        "e recordDefinition; pictureSearch; TRUE subDirs;");
    EXPECT_EQ(definition.pictureSearch.enable, 1);
    EXPECT_STREQ(definition.pictureSearch.searchPath, "/p");
    EXPECT_EQ(definition.keyField[0], 0);
    EXPECT_EQ(find("e")->pictureSearch.subDirs, 1);
}

TEST_F(DdfRead, PathsTake1023BytesAndImportingLeavesTheDatabasePath) {
    const std::string fits(1023, 'p');
    EXPECT_EQ(readInto(fits + " databasePath;").databasePath, fits);
    EXPECT_EQ(readInto(fits + "x databasePath;").databasePath, fits);
    EXPECT_EQ(readLink(fits + "x missingassetstring; short missingassetstring;").missingassetstring[6], 0);
    state_.importingDefinitions = 1;
    EXPECT_EQ(readInto("/data/list databasePath;").databasePath[0], 0);
}

TEST_F(DdfRead, ObjectsBeyondTheirLimitFallAwayWithTheirStatements) {
    struct testRow {
        const char* keyword;
        int capacity;
        std::uint16_t (*count)(const recordDefRec&);
    };
    const testRow rows[] = {
        {"searchCriteria", 500, searchCriteriaCount},
        {"extractionRecord", 1500, extractionCount},
        {"styleRecord", 100, styleCount},
    };
    for (const auto& [keyword, capacity, count] : rows) {
        std::string text;
        for (int number = 0; number <= capacity; ++number) {
            text += "n" + std::to_string(99999 - number) + " " + keyword + ";";
        }
        const recordDefRec& definition = readInto(text + "p prefix; price; 9 useRadix;");
        EXPECT_EQ(count(definition), capacity) << keyword;
        EXPECT_NE(remarks().find("there are " + std::to_string(capacity) + " already"), std::string::npos) << keyword;
        const std::string written = write(*set_);
        EXPECT_EQ(written.find("prefix"), std::string::npos) << keyword;
        EXPECT_EQ(written.find("9 useRadix"), std::string::npos) << keyword;
    }
}

TEST_F(DdfRead, ObjectsWithoutANameAndWithoutADefinitionAreDropped) {
    EXPECT_EQ(read("l extractionRecord; a recordDefinition; x signature; \"\" searchCriteria; p prefix;"
                   "recordDefinition; y keyField; l extractionRecord;"),
              0);
    EXPECT_EQ(names(), "a");
    EXPECT_EQ(searchCriteriaCount(*find("a")), 0);
    EXPECT_EQ(extractionCount(*find("a")), 0);
    EXPECT_EQ(find("a")->keyField[0], 0);
}

TEST_F(DdfRead, TheSignatureStandsInTheFirstBlock) {
    const std::string start = "d recordDefinition;";
    const std::string signature = "T signature;";
    const std::string fits = start + std::string(ddfBlockSize - start.size() - signature.size(), ' ') + signature;
    struct testRow {
        const char* name;
        std::string text;
        errorWord err;
        std::size_t left;
    };
    const testRow rows[] = {
        {"nothing at all", "", errDdfNoSignature, 0},
        {"no statement", "some text", errDdfNoSignature, 0},
        {"outside a definition", "T signature; d recordDefinition;", errDdfNoSignature, 0},
        {"without its text", start + "signature;", errDdfNoSignature, 0},
        {"at the end of the block", fits + "x keyField;", 0, 0},
        {"one byte further", " " + fits, errDdfNoSignature, 1},
        {"an empty text will do", start + "\"\" signature;", 0, 0},
    };
    for (const auto& [name, text, err, left] : rows) {
        startOver();
        EXPECT_EQ(read(text), err) << name;
        EXPECT_EQ(leftInHandle_, left) << name << ": bytes go as they are read";
        EXPECT_EQ(report_.reason.empty(), err == 0) << name;
    }
}

TEST_F(DdfRead, TokensCrossBlocks) {
    std::string hex;
    for (int byte = 0; byte < 3 * 8192; ++byte)
        hex += "4A";
    const recordDefRec& definition = readInto("\"" + hex + "\" ruleSetData2; x keyField;");
    EXPECT_EQ(handleSize(definition.ruleSetData2), hex.size() / 2);
    EXPECT_EQ(pstrView(definition.keyField), "x");
    // Every place of the border of blocks within a statement.
    for (std::size_t place = 0; place < 24; ++place) {
        const std::string start = "d recordDefinition; T signature;";
        startOver();
        ASSERT_EQ(read(start + std::string(ddfBlockSize - start.size() - place, ' ') + "\"a\\\"b;c\" keyField;  "), 0);
        EXPECT_EQ(pstrView(find("d")->keyField), "a\"b;c") << place;
    }
}

TEST_F(DdfRead, TheReportTellsWhatWasDroppedAndWhere) {
    readInto(
        "\r\nx nonsense;\r\n\r\n  1\n x\r lastUpdate; l extractionRecord;\n y keyField;\n"
        "12345678901234567890123456789012345 field; open");
    EXPECT_EQ(remarks(),
              "2 \"nonsense\": unknown keyword, dropped\n"
              "4 \"lastUpdate\": \"x\" is not a number\n"
              "7 \"keyField\": it means nothing at this place and is dropped\n"
              "8 \"field\": the text is cut to 31 bytes\n"
              "8 \"end of file\": the last statement has no semicolon and is dropped\n");
    const std::string text = "d recordDefinition;\nT signature;\n\n\"4x\"\n ruleSetData;\nmore";
    EXPECT_EQ(read(text), errDdfHexBadCharacter);
    EXPECT_EQ(report_.line, 4u);
    EXPECT_EQ(report_.offset, text.find("\nmore"));
    EXPECT_NE(report_.reason.find("hexadecimal"), std::string::npos);

    std::string many;
    for (std::size_t number = 0; number < ddfRemarkCapacity + 5; ++number)
        many += "x y;";
    readInto(many);
    EXPECT_EQ(report_.remarks.size(), ddfRemarkCapacity);
    EXPECT_EQ(report_.remarksLeftOut, 5u);
}

TEST_F(DdfRead, OutOfMemoryStopsWithTheCodeOfItsObject) {
    const std::string text =
        "d recordDefinition; T signature; c searchCriteria; l extractionRecord; s styleRecord;"
        "e recordDefinition; \"4a\" ruleSetData2; n keyField;";
    const handlePtr kept(newHandle(text.size()));
    std::memcpy(*kept, text.data(), text.size());
    // In the order in which memory is asked for, one more allowed at each go.
    const errorWord expected[] = {errDdfNoMemoryTokenBuffer,   errDdfNoMemoryToken,
                                  errNoMemoryDefinition,       errNoMemoryDefinitionString,
                                  errNoMemoryRuleData,         errNoMemoryRuleData,
                                  errNoMemoryDefinitionString, errNoMemorySearchCriteria,
                                  errNoMemoryExtraction,       errNoMemoryStyle,
                                  errNoMemoryDefinition,       errNoMemoryDefinitionString,
                                  errNoMemoryRuleData,         errNoMemoryRuleData,
                                  errDdfHexNoMemory,           errDdfHexNoMemory,
                                  errDdfHexNoMemory,           0};
    for (int allowed = 0; allowed < static_cast<int>(std::size(expected)); ++allowed) {
        startOver();
        blockHandle copy = kept.get();
        ASSERT_EQ(cloneHandle(copy), 0);
        const handlePtr source(copy);
        ddfLexerRec lexer{};
        const ScarceMemory scarce(allowed);
        EXPECT_EQ(ddfReadStream({noFile, source.get()}, *set_, lexer, nullptr, 0), expected[allowed]) << allowed;
        EXPECT_EQ(lexer.tokenBuffer, nullptr);
    }
}

TEST_F(DdfRead, ARunningErrorReadsNothing) {
    const handlePtr handle(newHandle(10));
    ddfLexerRec lexer{};
    EXPECT_EQ(ddfReadStream({noFile, handle.get()}, *set_, lexer, nullptr, 64), 64);
    EXPECT_EQ(handleSize(handle.get()), 10u);
    EXPECT_EQ(ddfReadStream({12345, nullptr}, *set_, lexer, nullptr, 0), errFileRead) << "no file is open";
}

}  // namespace

}  // namespace tarnova
