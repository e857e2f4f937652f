#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "definitions/ddf_reader.h"
#include "definitions/definition_state.h"

namespace tarnova {

namespace {

template <typename Record>
Record& objectOf(const ddfReaderRec& reader) {
    return *reinterpret_cast<Record*>(reader.object);
}

recordDefFixedRec& definitionOf(const ddfReaderRec& reader) {
    return objectOf<recordDefFixedRec>(reader);
}

template <typename Number>
std::optional<Number> nextNumber(ddfReaderRec& reader) {
    using limits = std::numeric_limits<Number>;
    const auto number = ddfNextNumber(reader, limits::min(), limits::max());
    if (!number) return std::nullopt;
    return static_cast<Number>(*number);
}

/// An object without a name can't be found by anyone, so it isn't made, and its statements fall away.
std::optional<std::string_view> nextName(ddfReaderRec& reader) {
    auto name = ddfNextText(reader);
    // What the name's field will hold of it counts: a long run of quotes is nothing but marks there.
    if (name && name->substr(0, sizeof(Str31) - 1).find_first_not_of('\0') != std::string_view::npos) return name;
    ddfRemark(reader, "without a name it is dropped, and what belongs to it too");
    ddfSetTarget(reader, targetNone, nullptr);
    return std::nullopt;
}

void remarkBeyondLimit(ddfReaderRec& reader, std::uint16_t limit) {
    if (reader.report == nullptr) return;
    ddfRemark(reader, "there are " + std::to_string(limit) + " already; it is dropped, and what belongs to it too");
}

// Objects.

errorWord actRecordDefinition(ddfReaderRec& reader, const ddfStatementRow&) {
    reader.definition = nullptr;
    const auto text = nextName(reader);
    if (!text) return 0;
    Str31 name{};
    ddfSetPascal(reader, name, sizeof(name), *text);
    const errorWord err = recordDefNew(reader.set, name, reader.definition, 0);
    if (err != 0) return err;
    ddfSetTarget(reader, targetDefinition, static_cast<recordDefFixedRec*>(reader.definition));
    return 0;
}

template <typename Record>
errorWord makeRecord(ddfReaderRec& reader, ddfTargetSet target, std::uint16_t capacity, Record*& record,
                     errorWord (*insert)(recordDefSetRec&, recordDefRec&, const std::uint8_t*, Record*&, errorWord)) {
    record = nullptr;
    if (reader.definition == nullptr) {
        ddfRemark(reader, "it stands outside a record definition and is dropped");
        return 0;
    }
    const auto text = nextName(reader);
    if (!text) return 0;
    Str31 name{};
    ddfSetPascal(reader, name, sizeof(name), *text);
    const errorWord err = insert(reader.set, *reader.definition, name, record, 0);
    if (err == 0 && record == nullptr) remarkBeyondLimit(reader, capacity);
    ddfSetTarget(reader, record != nullptr ? target : targetNone, record);
    return err;
}

errorWord actSearchCriteria(ddfReaderRec& reader, const ddfStatementRow&) {
    reader.fieldTestCount = 0;
    return makeRecord(reader, targetCriteria, searchCriteriaCapacity, reader.criteria, insertSearchCriteria);
}

errorWord actExtractionRecord(ddfReaderRec& reader, const ddfStatementRow&) {
    extractionRec* record = nullptr;
    return makeRecord(reader, targetExtraction, extractionCapacity, record, insertExtraction);
}

errorWord actStyleRecord(ddfReaderRec& reader, const ddfStatementRow&) {
    reader.priceCount = reader.currencyCount = 0;
    return makeRecord(reader, targetStyle, styleCapacity, reader.style, insertStyle);
}

errorWord actFieldSearch(ddfReaderRec& reader, const ddfStatementRow&) {
    const auto text = nextName(reader);
    if (!text || reader.fieldTestCount == fieldSearchCapacity) {
        if (text) remarkBeyondLimit(reader, fieldSearchCapacity);
        ddfSetTarget(reader, targetSpentTest, nullptr);
        return 0;
    }
    fieldSearchRec& test = reader.criteria->fieldSearch[reader.fieldTestCount++];
    ddfSetPascal(reader, test.field, sizeof(test.field), *text);
    ddfSetTarget(reader, targetFieldTest, &test);
    return 0;
}

errorWord actPrice(ddfReaderRec& reader, const ddfStatementRow&) {
    if (reader.priceCount == priceGroupCapacity) {
        remarkBeyondLimit(reader, priceGroupCapacity);
        ddfSetTarget(reader, targetSpentGroup, nullptr);
        return 0;
    }
    ddfSetTarget(reader, targetPrice, &reader.style->groups[reader.priceCount++].price);
    return 0;
}

errorWord actCurrency(ddfReaderRec& reader, const ddfStatementRow&) {
    if (reader.currencyCount == priceGroupCapacity) {
        remarkBeyondLimit(reader, priceGroupCapacity);
        ddfSetTarget(reader, targetSpentGroup, nullptr);
        return 0;
    }
    ddfSetTarget(reader, targetCurrency, &reader.style->groups[reader.currencyCount++].currency);
    return 0;
}

errorWord actPictureSearch(ddfReaderRec& reader, const ddfStatementRow&) {
    if (reader.readTarget == targetPictureSearch) {
        ddfRemark(reader, "the definition has one already; it is dropped, and what belongs to it too");
        ddfSetTarget(reader, targetNone, nullptr);
        return 0;
    }
    ddfSetTarget(reader, targetPictureSearch, &definitionOf(reader).pictureSearch);
    return 0;
}

// Statements of a definition.

errorWord actSignature(ddfReaderRec& reader, const ddfStatementRow&) {
    const auto text = ddfNextText(reader);
    if (!text) return 0;
    Str255 signature{};
    ddfSetPascal(reader, signature, sizeof(signature), *text);
    reader.signatureRead = true;
    return recordDefSetSignature(reader.set, *reader.definition, signature, 0);
}

errorWord actDatabasePath(ddfReaderRec& reader, const ddfStatementRow& row) {
    return definitionState().importingDefinitions != 0 ? 0 : ddfActPath(reader, row);
}

errorWord actVtTranslation(ddfReaderRec& reader, const ddfStatementRow&) {
    flaggedStr31Rec& translation = definitionOf(reader).vtTranslation;
    const auto text = ddfNextText(reader);
    if (!text) return 0;
    ddfSetPascal(reader, translation.string, sizeof(translation.string), *text);
    translation.enable = 0;
    return 0;
}

/// A flag and a text for `exportOffset`, then the same for `importOffset`; one pair alone is the one for import.
errorWord takeBothWays(ddfReaderRec& reader, const ddfStatementRow& row, std::size_t exportOffset,
                       std::size_t importOffset, std::size_t size) {
    ddfStatementRow member = row;
    member.size = static_cast<std::uint32_t>(size);
    errorWord err = 0;
    for (const std::size_t offset : {importOffset, exportOffset}) {
        member.offset = static_cast<std::uint32_t>(offset);
        if (err == 0) err = ddfActFlaggedText(reader, member);
    }
    return err;
}

errorWord actTransTable(ddfReaderRec& reader, const ddfStatementRow& row) {
    return takeBothWays(reader, row, offsetof(recordDefFixedRec, exportTransTable),
                        offsetof(recordDefFixedRec, importTransTable), sizeof(flaggedStr255Rec));
}

errorWord actBsrSet(ddfReaderRec& reader, const ddfStatementRow& row) {
    return takeBothWays(reader, row, offsetof(recordDefFixedRec, exportSrSet), offsetof(recordDefFixedRec, importSrSet),
                        sizeof(flaggedStr31Rec));
}

/// The name of a field list item, which is what stands behind the number's colon.
std::string_view itemName(std::string_view behindColon, char& codedName) {
    if (!behindColon.empty() && behindColon.front() == '\0') {
        behindColon.remove_prefix(1);
        return behindColon.substr(0, behindColon.find('\0'));
    }
    constexpr std::string_view nameEnds(":\0", 2);
    const std::string_view name = behindColon.substr(0, behindColon.find_first_of(nameEnds));
    const auto code = ddfTokenNumber(name);
    if (!code || *code < 1 || *code > 255) return name;
    codedName = static_cast<char>(*code);
    return {&codedName, 1};
}

errorWord actFieldName(ddfReaderRec& reader, const ddfStatementRow&) {
    recordDefFixedRec& definition = definitionOf(reader);
    while (reader.operandsLeft > 0) {
        const std::string_view item = ddfToken(reader.lexer, reader.operandsLeft - 1);
        const auto number = nextNumber<std::uint16_t>(reader);
        if (!number) return 0;
        const std::size_t colon = item.find(':');
        char codedName = 0;
        const std::string_view text =
            colon == std::string_view::npos ? std::string_view{} : itemName(item.substr(colon + 1), codedName);
        if (text.empty()) {
            ddfRemark(reader, "a field without a name is dropped");
            continue;
        }
        Str31 name{};
        ddfSetPascal(reader, name, sizeof(name), text);
        if (definition.fields[fieldNameCapacity - 1].fieldName[0] != 0) {
            remarkBeyondLimit(reader, fieldNameCapacity);
            return 0;
        }
        insertFieldName(definition, *number, name);
    }
    return 0;
}

/// Value of a hexadecimal digit; 16 for what may stand between digits, 17 for anything else.
constexpr std::uint8_t hexSkip = 16;
constexpr std::uint8_t hexBad = 17;

constexpr std::array<std::uint8_t, 256> makeHexValues() {
    std::array<std::uint8_t, 256> values{};
    values.fill(hexBad);
    for (char c : {'\t', ' ', '\r', '\n', '\0'})
        values[static_cast<unsigned char>(c)] = hexSkip;
    for (std::uint8_t digit = 0; digit < 16; ++digit) {
        values[static_cast<unsigned char>("0123456789ABCDEF"[digit])] = digit;
        values[static_cast<unsigned char>("0123456789abcdef"[digit])] = digit;
    }
    return values;
}
constexpr std::array<std::uint8_t, 256> hexValues = makeHexValues();

/// Turns the digits of `token` into bytes at `bytes`, which has room for half as many.
errorWord decodeHex(std::string_view token, std::byte* bytes, std::size_t& count) {
    std::size_t digits = 0;
    std::uint8_t high = 0;
    for (const char c : token) {
        const std::uint8_t value = hexValues[static_cast<unsigned char>(c)];
        if (value == hexSkip) continue;
        if (value == hexBad) return errDdfHexBadCharacter;
        if (digits % 2 == 1) bytes[digits / 2] = static_cast<std::byte>(high << 4 | value);
        high = value;
        ++digits;
    }
    count = digits / 2;
    return digits % 2 == 0 ? 0 : errDdfHexOddDigits;
}

errorWord readHex(ddfReaderRec& reader, blockPtr<>& bytes, std::size_t& count) {
    const auto token = ddfNextOperand(reader);
    if (!token) return 0;
    bytes.reset(static_cast<std::byte*>(newBlock(token->size() / 2 + 1)));
    return bytes != nullptr ? decodeHex(*token, bytes.get(), count) : errDdfHexNoMemory;
}

errorWord storeRuleData(blockHandle& data, const blockPtr<>& bytes, std::size_t count, errorWord priorError) {
    if (priorError != 0 || bytes == nullptr) return priorError;
    return setRuleData(data, bytes.get(), count, 0) == 0 ? 0 : errDdfHexNoMemory;
}

errorWord actRuleData(ddfReaderRec& reader, const ddfStatementRow&) {
    blockPtr<> bytes;
    std::size_t count = 0;
    errorWord err = readHex(reader, bytes, count);
    err = storeRuleData(reader.definition->ruleSetData, bytes, count, err);
    if (handleSize(reader.definition->ruleSetData2) > 0) return err;
    return storeRuleData(reader.definition->ruleSetData2, bytes, count, err);
}

errorWord actRuleData2(ddfReaderRec& reader, const ddfStatementRow&) {
    blockPtr<> bytes;
    std::size_t count = 0;
    const errorWord err = readHex(reader, bytes, count);
    return storeRuleData(reader.definition->ruleSetData2, bytes, count, err);
}

/// The codes of an older delimiter statement, in file order; none when one is no code.
std::string delimiterCodes(ddfReaderRec& reader) {
    std::string codes;
    while (reader.operandsLeft > 0) {
        const auto code = ddfNextNumber(reader, 0, 255);
        if (!code) return {};
        codes.insert(codes.begin(), static_cast<char>(*code));
        if (codes.size() > 2) return {};
    }
    return codes;
}

errorWord actFieldDelimiter(ddfReaderRec& reader, const ddfStatementRow&) {
    const std::string codes = delimiterCodes(reader);
    if (codes == "\t") definitionOf(reader).fileType = fileTypeTab;
    if (codes == ",") definitionOf(reader).fileType = fileTypeComma;
    return 0;
}

errorWord actRecordDelimiter(ddfReaderRec& reader, const ddfStatementRow&) {
    const std::string codes = delimiterCodes(reader);
    if (codes == "\r") definitionOf(reader).osType = osTypeCr;
    if (codes == "\r\n") definitionOf(reader).osType = osTypeCrLf;
    if (codes == "\n") definitionOf(reader).osType = osTypeLf;
    return 0;
}

// Statements of the other objects.

/// Index of the operand among `words`, or -1.
template <std::size_t count>
std::int16_t nextWord(ddfReaderRec& reader, const std::array<const char*, count>& words) {
    const auto text = ddfNextText(reader);
    if (!text) return -1;
    for (std::size_t index = 0; index < count; ++index) {
        if (ascii::equalNoCase(*text, words[index])) return static_cast<std::int16_t>(index);
    }
    if (reader.report != nullptr) ddfRemark(reader, ddfQuotedWord(*text) + " is none of its words");
    return -1;
}

errorWord actContext(ddfReaderRec& reader, const ddfStatementRow&) {
    const bool absent = reader.operandsLeft == 0;
    const std::int16_t context = nextWord(reader, ddfContextWords);
    if (absent) objectOf<searchCriteriaRec>(reader).context = searchContextNone;
    if (context >= 0) objectOf<searchCriteriaRec>(reader).context = context;
    return 0;
}

errorWord actUseColorAttr(ddfReaderRec& reader, const ddfStatementRow&) {
    extractionRec& link = objectOf<extractionRec>(reader);
    if (reader.operandsLeft < 4) {
        ddfRemark(reader, "it needs red, green, blue and a flag");
        return 0;
    }
    const bool use = ddfNextFlag(reader).value_or(false);
    const auto blue = nextNumber<std::uint16_t>(reader);
    const auto green = nextNumber<std::uint16_t>(reader);
    const auto red = nextNumber<std::uint16_t>(reader);
    if (!red || !green || !blue) return 0;
    link.colorRed = *red;
    link.colorGreen = *green;
    link.colorBlue = *blue;
    link.useColorAttr = use ? 1 : 0;
    return 0;
}

errorWord actMagicKey(ddfReaderRec& reader, const ddfStatementRow& row) {
    extractionRec& link = objectOf<extractionRec>(reader);
    const errorWord err = ddfActText(reader, row);
    for (std::size_t index = magicKeyNumberCount; index-- > 0;) {
        const auto number = nextNumber<std::int16_t>(reader);
        if (!number) return err;
        link.magicKeyNumbers[index] = *number;
    }
    return err;
}

errorWord actXpressTags(ddfReaderRec& reader, const ddfStatementRow&) {
    if (ddfNextFlag(reader).value_or(false)) objectOf<extractionRec>(reader).importFilter = importFilterTaggedText;
    return 0;
}

errorWord actDataFormat(ddfReaderRec& reader, const ddfStatementRow& row) {
    const errorWord err = ddfActText(reader, row);
    if (const auto flag = ddfNextFlag(reader)) objectOf<extractionRec>(reader).useDataFormat = *flag ? 1 : 0;
    return err;
}

errorWord actFormat(ddfReaderRec& reader, const ddfStatementRow&) {
    const std::int16_t format = nextWord(reader, ddfFormatWords);
    if (format >= 0) objectOf<priceFormatRec>(reader).format = format;
    return 0;
}

errorWord actDeleteRadix(ddfReaderRec& reader, const ddfStatementRow&) {
    objectOf<priceFormatRec>(reader).useRadix = ddfNextFlag(reader).value_or(false) ? 1 : 0;
    return 0;
}

/// Shift, size and flag, in file order.
errorWord takeSizeAndShift(ddfReaderRec& reader, std::uint8_t& flag, std::int32_t& size, std::int32_t& shift) {
    if (const auto on = ddfNextFlag(reader)) flag = *on ? 1 : 0;
    const auto newSize = nextNumber<std::int32_t>(reader);
    if (newSize) size = *newSize;
    const auto newShift = nextNumber<std::int32_t>(reader);
    if (newShift) shift = *newShift;
    return 0;
}

/// Kerning and flag, in file order.
errorWord takeKerning(ddfReaderRec& reader, std::uint8_t& flag, std::int32_t& kerning) {
    if (const auto on = ddfNextFlag(reader)) flag = *on ? 1 : 0;
    if (const auto number = nextNumber<std::int32_t>(reader)) kerning = *number;
    return 0;
}

errorWord actSpecialCents(ddfReaderRec& reader, const ddfStatementRow&) {
    auto& price = objectOf<priceFormatRec>(reader);
    return takeSizeAndShift(reader, price.specialCents, price.centsSize, price.centsShift);
}

errorWord actKernCents(ddfReaderRec& reader, const ddfStatementRow&) {
    auto& price = objectOf<priceFormatRec>(reader);
    return takeKerning(reader, price.kernCents, price.centsKerning);
}

errorWord actSizeSymbol(ddfReaderRec& reader, const ddfStatementRow&) {
    auto& currency = objectOf<currencySymbolRec>(reader);
    return takeSizeAndShift(reader, currency.sizeSymbol, currency.symbolSize, currency.symbolShift);
}

errorWord actKernSymbol(ddfReaderRec& reader, const ddfStatementRow&) {
    auto& currency = objectOf<currencySymbolRec>(reader);
    return takeKerning(reader, currency.kernSymbol, currency.symbolKerning);
}

// Rows that set one member: keyword, where it may stand, action, and the member of the same name.
#define MEMBER(record, member) offsetof(record, member), sizeof(record::member)
#define DEFINITION(member, act) \
    { #member, targetDefinition, act, MEMBER(recordDefFixedRec, member) }
#define PICTURES(member, act) \
    { #member, targetPictureSearch, act, MEMBER(pictureSearchRec, member) }
#define CRITERIA(member, act) \
    { #member, targetCriteria, act, MEMBER(searchCriteriaRec, member) }
#define FIELD_TEST(member, act) \
    { #member, targetFieldTest, act, MEMBER(fieldSearchRec, member) }
#define EXTRACTION(member, act) \
    { #member, targetExtraction, act, MEMBER(extractionRec, member) }
#define PRICE(member, act) \
    { #member, targetPrice, act, MEMBER(priceFormatRec, member) }
#define CURRENCY(member, act) \
    { #member, targetCurrency, act, MEMBER(currencySymbolRec, member) }

constexpr ddfTargetSet targetsOfTests = targetCriteria | targetFieldTest | targetSpentTest;
constexpr ddfTargetSet targetsOfGroups = targetStyle | targetPrice | targetCurrency | targetSpentGroup;

constexpr ddfStatementRow statementRows[] = {
    {"recordDefinition", targetAny, actRecordDefinition, 0, 0},
    {"searchCriteria", targetAny, actSearchCriteria, 0, 0},
    {"extractionRecord", targetAny, actExtractionRecord, 0, 0},
    {"styleRecord", targetAny, actStyleRecord, 0, 0},
    {"pictureSearch", targetDefinition | targetPictureSearch, actPictureSearch, 0, 0},
    {"fieldSearch", targetsOfTests, actFieldSearch, 0, 0},
    {"price", targetsOfGroups, actPrice, 0, 0},
    {"currency", targetsOfGroups, actCurrency, 0, 0},

    DEFINITION(signature, actSignature),
    DEFINITION(databasePath, actDatabasePath),
    DEFINITION(odbcDataSourceName, ddfActText),
    DEFINITION(odbcUserId, ddfActText),
    DEFINITION(odbcPassword, ddfActText),
    DEFINITION(httpDataSourceName, ddfActText),
    DEFINITION(httpUserId, ddfActText),
    DEFINITION(httpPassword, ddfActText),
    DEFINITION(lastUpdate, ddfActNumber32Unsigned),
    {"fieldName", targetDefinition, actFieldName, 0, 0},
    DEFINITION(keyField, ddfActText),
    DEFINITION(useKeyfieldCase, ddfActFlag),
    DEFINITION(sqlPrologue, ddfActFlaggedTextOrOn),
    DEFINITION(sqlEpilogue, ddfActFlaggedTextOrOn),
    DEFINITION(sqlRowCount, ddfActFlaggedTextOrOn),
    DEFINITION(reqPrologue, ddfActFlaggedTextOrOn),
    DEFINITION(reqEpilogue, ddfActFlaggedTextOrOn),
    DEFINITION(reqRowCount, ddfActFlaggedTextOrOn),
    DEFINITION(dataAccessMode, ddfActNumber16),
    DEFINITION(dataType, ddfActNumber16),
    DEFINITION(fileType, ddfActNumber16),
    DEFINITION(osType, ddfActNumber16),
    DEFINITION(fDelimiter, ddfActText),
    DEFINITION(textQualifier, ddfActFlaggedTextOrOn),
    DEFINITION(vtTranslation, actVtTranslation),
    {"transTable", targetDefinition, actTransTable, 0, 0},
    {"bsrSet", targetDefinition, actBsrSet, 0, 0},
    DEFINITION(ruleSet, ddfActFlaggedText),
    {"ruleSetData", targetDefinition, actRuleData, 0, 0},
    {"ruleSetData2", targetDefinition, actRuleData2, 0, 0},
    {"fieldDelimiter", targetDefinition, actFieldDelimiter, 0, 0},
    {"recordDelimiter", targetDefinition, actRecordDelimiter, 0, 0},
    {"maxFields", targetDefinition, ddfActNothing, 0, 0},

    PICTURES(enable, ddfActFlagOrOn),
    PICTURES(searchPath, ddfActPath),
    PICTURES(subDirs, ddfActFlag),

    CRITERIA(prefix, ddfActTextSetsFlag),
    CRITERIA(suffix, ddfActTextSetsFlag),
    CRITERIA(context, actContext),
    CRITERIA(caseSense, ddfActSetFlag),
    CRITERIA(sqlFragment, ddfActFlaggedTextOrOn),
    CRITERIA(reqFragment, ddfActFlaggedTextOrOn),
    FIELD_TEST(string, ddfActText),
    FIELD_TEST(enable, ddfActSetFlag),

    EXTRACTION(useColorAttr, actUseColorAttr),
    EXTRACTION(locked, ddfActSetFlag),
    EXTRACTION(mailMerge, ddfActSetFlag),
    EXTRACTION(ignoreLink, ddfActSetFlag),
    EXTRACTION(associateMe, ddfActSetFlag),
    EXTRACTION(shared, ddfActSetFlag),
    EXTRACTION(nodata, ddfActNumber16),
    EXTRACTION(deleteline, ddfActNumber16),
    EXTRACTION(missingasset, ddfActNumber16),
    EXTRACTION(pdfExportType, ddfActNumber16),
    EXTRACTION(type, ddfActNumber16),
    EXTRACTION(importFilter, ddfActNumber16),
    EXTRACTION(picturePosition, ddfActNumber16),
    EXTRACTION(hAlign, ddfActNumber16),
    EXTRACTION(vAlign, ddfActNumber16),
    EXTRACTION(pictureBoxAction, ddfActNumber16),
    EXTRACTION(importPosition, ddfActNumber16),
    EXTRACTION(nodatastring, ddfActText),
    EXTRACTION(notes, ddfActText),
    EXTRACTION(dataFunction, ddfActText),
    EXTRACTION(missingassetstring, ddfActPath),
    EXTRACTION(magicKey, actMagicKey),
    EXTRACTION(prefix, ddfActTextSetsFlag),
    EXTRACTION(suffix, ddfActTextSetsFlag),
    {"xpressTags", targetExtraction, actXpressTags, 0, 0},
    EXTRACTION(resetStyles, ddfActTrueOrFalse),
    EXTRACTION(isafile, ddfActTrueOrFalse),
    EXTRACTION(addPicBoxToGroup, ddfActTrueOrFalse),
    EXTRACTION(dataFormat, actDataFormat),
    EXTRACTION(field, ddfActText),
    EXTRACTION(sqlFragment, ddfActFlaggedTextOrOn),
    EXTRACTION(reqFragment, ddfActFlaggedTextOrOn),

    {"checkPrice", targetStyle, ddfActFlagOrOn, MEMBER(styleRec, checkPrice)},
    PRICE(format, actFormat),
    PRICE(underline, ddfActFlag),
    PRICE(useRadix, ddfActNumber16),
    {"deleteRadix", targetPrice, actDeleteRadix, 0, 0},
    PRICE(specialCents, actSpecialCents),
    PRICE(kernCents, actKernCents),
    PRICE(xpressTagString, ddfActText),
    {"superior", targetPrice, ddfActNothing, 0, 0},
    CURRENCY(enable, ddfActFlag),
    CURRENCY(string, ddfActText),
    CURRENCY(insAfter, ddfActFlagOrOn),
    CURRENCY(superior, ddfActFlag),
    CURRENCY(sizeSymbol, actSizeSymbol),
    CURRENCY(kernSymbol, actKernSymbol),
};

#undef CURRENCY
#undef PRICE
#undef EXTRACTION
#undef FIELD_TEST
#undef CRITERIA
#undef PICTURES
#undef DEFINITION
#undef MEMBER

constexpr std::size_t rowCount = std::size(statementRows);
constexpr std::uint16_t noRow = 0xFFFF;

// Look-up: rows chained by a hash of their keyword, in the order of the table.
struct rowIndexRec {
    std::array<std::uint16_t, 256> first{};
    std::array<std::uint16_t, rowCount> next{};
};

constexpr std::uint8_t keywordHash(std::string_view keyword) {
    std::uint32_t hash = 2166136261u;
    for (const char c : keyword)
        hash = (hash ^ static_cast<std::uint8_t>(ascii::lower(c))) * 16777619u;
    return static_cast<std::uint8_t>(hash ^ hash >> 8 ^ hash >> 16);
}

constexpr rowIndexRec makeRowIndex() {
    rowIndexRec index;
    index.first.fill(noRow);
    for (std::size_t row = rowCount; row-- > 0;) {
        std::uint16_t& first = index.first[keywordHash(statementRows[row].keyword)];
        index.next[row] = first;
        first = static_cast<std::uint16_t>(row);
    }
    return index;
}
constexpr rowIndexRec rowIndex = makeRowIndex();

/// The row of a keyword under the present target; `known` says whether the keyword exists at all.
const ddfStatementRow* findRow(const ddfReaderRec& reader, bool& known) {
    known = false;
    for (std::uint16_t row = rowIndex.first[keywordHash(reader.keyword)]; row != noRow; row = rowIndex.next[row]) {
        if (!ascii::equalNoCase(reader.keyword, statementRows[row].keyword)) continue;
        known = true;
        if ((statementRows[row].targets & reader.readTarget) != 0) return &statementRows[row];
    }
    return nullptr;
}

}  // namespace

errorWord ddfCarryOut(ddfReaderRec& reader, errorWord priorError) {
    if (priorError != 0) return priorError;
    reader.operandsLeft = reader.lexer.tokenDepth - 1;
    reader.keyword = ddfTokenValue(ddfToken(reader.lexer, reader.operandsLeft));
    bool known = false;
    const ddfStatementRow* const row = findRow(reader, known);
    if (row != nullptr) return row->act(reader, *row);
    ddfRemark(reader, known ? "it means nothing at this place and is dropped" : "unknown keyword, dropped");
    return 0;
}

}  // namespace tarnova
