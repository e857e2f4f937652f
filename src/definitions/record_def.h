// The records of a record definition: where the data lies, what its fields are called, and the variable links, search
// criteria and price styles that exist for it. Plain fixed-size records in machine byte order; they start cleared.
// Their sizes are fixed because the preferences record and the data index store them whole.

#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/toolkit/memory.h"
#include "engine/toolkit/pstring.h"

namespace tarnova {

inline constexpr std::uint16_t fieldNameCapacity = 1500;
inline constexpr std::uint16_t extractionCapacity = 1500;
inline constexpr std::uint16_t searchCriteriaCapacity = 500;
inline constexpr std::uint16_t styleCapacity = 100;
inline constexpr std::uint16_t fieldSearchCapacity = 3;  // field tests of one search criteria record
inline constexpr std::uint16_t priceGroupCapacity = 3;   // price and currency groups of one style
inline constexpr std::uint16_t magicKeyNumberCount = 3;
inline constexpr std::size_t definitionPathSize = 1024;  // bytes of a path field, terminator included

/// A string of 31 characters behind its enable flag; with the flag 0 the text is kept but has no effect.
struct flaggedStr31Rec {
    std::uint8_t enable;
    Str31 string;
};

/// As flaggedStr31Rec, for 255 characters.
struct flaggedStr255Rec {
    std::uint8_t enable;
    Str255 string;
};

// Values of recordDefFixedRec::dataAccessMode.
inline constexpr std::int16_t dataAccessText = 0;
inline constexpr std::int16_t dataAccessOdbc = 1;
inline constexpr std::int16_t dataAccessHttp = 2;

// Values of recordDefFixedRec::dataType, the encoding of a text file.
inline constexpr std::int16_t dataTypeEightBit = 0;
inline constexpr std::int16_t dataTypeUtf8 = 1;
inline constexpr std::int16_t dataTypeFromBytes = 2;  // decided from the file's own bytes

// Values of recordDefFixedRec::fileType, the field delimiter.
inline constexpr std::int16_t fileTypeTab = 0;
inline constexpr std::int16_t fileTypeComma = 1;
inline constexpr std::int16_t fileTypeSpace = 2;
inline constexpr std::int16_t fileTypeSemicolon = 3;
inline constexpr std::int16_t fileTypeCaret = 4;
inline constexpr std::int16_t fileTypeCustom = 5;  // the string in fDelimiter

// Values of recordDefFixedRec::osType, the record delimiter.
inline constexpr std::int16_t osTypeCr = 0;
inline constexpr std::int16_t osTypeCrLf = 1;
inline constexpr std::int16_t osTypeLf = 2;
inline constexpr std::int16_t osTypeFromFile = 3;  // found out from the file

/// One entry of the field list. An empty name ends the list. Two entries may carry the same number: names are aliases
/// of positions in a record.
struct fieldNameEntry {
    std::uint16_t fieldNumber;  // position in a record, from 1
    Str31 fieldName;
};

/// Where pictures are looked for.
struct pictureSearchRec {
    std::uint8_t enable;
    char searchPath[definitionPathSize];  // a folder, UTF-8
    std::uint8_t subDirs;                 // 1: folders below it as well
};

// Values of extractionRec::type.
inline constexpr std::int16_t linkTypeText = 0;
inline constexpr std::int16_t linkTypePicture = 1;
inline constexpr std::int16_t linkTypeArticle = 2;
inline constexpr std::int16_t linkTypeGroupPicture = 3;
inline constexpr std::int16_t linkTypeVxImage = 4;

// Values of extractionRec::nodata.
inline constexpr std::int16_t nodataGlobal = 0;
inline constexpr std::int16_t nodataPlaceholder = 1;
inline constexpr std::int16_t nodataDelete = 2;
inline constexpr std::int16_t nodataCustom = 3;

// Values of extractionRec::deleteline: what goes with the text of a link that is deleted for want of data.
inline constexpr std::int16_t deletelineNothing = 0;
inline constexpr std::int16_t deletelineWhenBlank = 1;  // its paragraph, when nothing but white space is left there
inline constexpr std::int16_t deletelineAlways = 2;     // its paragraph in any case

// Values of extractionRec::missingasset.
inline constexpr std::int16_t missingAssetDefaultText = 0;
inline constexpr std::int16_t missingAssetKeepFrame = 1;
inline constexpr std::int16_t missingAssetDeleteFrame = 2;
inline constexpr std::int16_t missingAssetSubstitute = 3;

// Values of extractionRec::importFilter; any other value but 0 imports plain text.
inline constexpr std::int16_t importFilterNone = 0;
inline constexpr std::int16_t importFilterHostTags = 1;
inline constexpr std::int16_t importFilterRtf = 2;
inline constexpr std::int16_t importFilterTaggedText = 4;

/// One variable link: which field it takes and what happens to the value. Its name is what a designer sees.
struct extractionRec {
    Str31 name;
    Str31 reservedName;  // not part of a DDF; carries the same text as `name` and `field` in the link defaults
    std::uint8_t useColorAttr;
    std::uint16_t colorRed, colorGreen, colorBlue;  // display colour, 0 to 65,535
    Str31 field;                                    // may be empty: a keyword function takes no field
    flaggedStr255Rec sqlFragment;
    flaggedStr255Rec reqFragment;
    std::uint8_t locked;
    std::uint8_t associateMe;
    std::uint8_t shared;
    std::uint8_t mailMerge;
    std::uint8_t ignoreLink;
    std::int16_t type;  // linkType...
    std::int16_t pdfExportType;
    Str255 notes;
    std::int16_t nodata;  // nodata...
    Str31 nodatastring;
    std::int16_t deleteline;  // deleteline...
    flaggedStr255Rec prefix;
    flaggedStr255Rec suffix;
    std::int16_t magicKeyNumbers[magicKeyNumberCount];
    Str255 magicKey;
    std::int16_t missingasset;                    // missingAsset...
    char missingassetstring[definitionPathSize];  // path, UTF-8
    std::int16_t importFilter;                    // importFilter...
    std::uint8_t resetStyles;
    std::uint8_t isafile;
    Str31 dataFunction;
    Str31 dataFormat;
    std::uint8_t useDataFormat;
    std::int16_t picturePosition;  // 0 to 8
    std::int16_t hAlign;
    std::int16_t vAlign;
    std::int16_t pictureBoxAction;
    std::uint8_t addPicBoxToGroup;
    std::int16_t importPosition;
    std::uint8_t reserved[36];  // zero
};
static_assert(offsetof(extractionRec, reservedName) == 32);
static_assert(offsetof(extractionRec, useColorAttr) == 64);
static_assert(offsetof(extractionRec, field) == 72);
static_assert(sizeof(extractionRec) == 2840);

/// One test of a search criteria record. An empty field name ends the list of tests.
struct fieldSearchRec {
    std::uint8_t enable;
    Str31 field;
    Str31 string;
};

// Values of searchCriteriaRec::context.
inline constexpr std::int16_t searchContextNone = 0;
inline constexpr std::int16_t searchContextAnd = 1;
inline constexpr std::int16_t searchContextOr = 2;

/// How a record is searched for.
struct searchCriteriaRec {
    Str31 name;
    flaggedStr31Rec prefix;
    flaggedStr31Rec suffix;
    fieldSearchRec fieldSearch[fieldSearchCapacity];
    flaggedStr255Rec sqlFragment;
    flaggedStr255Rec reqFragment;
    std::int16_t context;       // searchContext...
    std::uint8_t caseSense;     // 1: the tests compare case-sensitively
    std::uint8_t reserved[37];  // zero
};
static_assert(offsetof(searchCriteriaRec, fieldSearch) == 98);
static_assert(sizeof(searchCriteriaRec) == 848);

// Values of priceFormatRec::format.
inline constexpr std::int16_t priceFormatNone = 0;
inline constexpr std::int16_t priceFormatDollars = 1;
inline constexpr std::int16_t priceFormatCents = 2;
inline constexpr std::int16_t priceFormatAll = 3;

inline constexpr std::int32_t fixedHundredPercent = 0x10000;  // 16.16 fixed value

struct priceFormatRec {
    std::int16_t format;  // priceFormat...
    std::int16_t useRadix;
    std::uint8_t underline;
    std::uint8_t specialCents;  // the cents are set apart
    std::int32_t centsSize;     // 16.16 fixed value
    std::int32_t centsShift;    // 16.16 fixed value
    std::uint8_t kernCents;
    std::int32_t centsKerning;
    Str255 xpressTagString;
};
static_assert(sizeof(priceFormatRec) == 280);

struct currencySymbolRec {
    std::uint8_t enable;
    Str255 string;
    std::uint8_t insAfter;     // the symbol goes behind the number
    std::uint8_t superior;     // the symbol is set superior
    std::uint8_t sizeSymbol;   // the symbol is resized
    std::int32_t symbolSize;   // 16.16 fixed value
    std::int32_t symbolShift;  // 16.16 fixed value
    std::uint8_t kernSymbol;
    std::int32_t symbolKerning;
};
static_assert(sizeof(currencySymbolRec) == 276);

/// One of the three alternatives of a style.
struct priceGroupRec {
    priceFormatRec price;
    currencySymbolRec currency;
};

/// One price style.
struct styleRec {
    Str31 name;
    std::uint8_t checkPrice;
    priceGroupRec groups[priceGroupCapacity];
    std::uint8_t reserved[60];  // zero
};
static_assert(offsetof(styleRec, groups) == 36);
static_assert(sizeof(styleRec) == 1764);

/// The fixed part of a definition: what an exchange block carries. A definition's `signature` and rule data belong to
/// the pool of its set.
struct recordDefFixedRec {
    std::uint8_t* signature;  // Pascal string of up to 255 characters; null counts as empty
    std::uint32_t lastUpdate;
    char
        databasePath[definitionPathSize];  // text files: full path of the index file; empty: no data file is chosen yet
    Str255 odbcDataSourceName;
    Str255 odbcUserId;
    Str255 odbcPassword;  // plain text
    Str255 httpDataSourceName;
    Str255 httpUserId;
    Str255 httpPassword;  // plain text
    Str31 name;
    fieldNameEntry fields[fieldNameCapacity];  // by name, empty entries at the end
    Str31 keyField;
    std::uint8_t useKeyfieldCase;  // 1: keys are compared case-sensitively
    std::int16_t dataAccessMode;   // dataAccess...
    std::int16_t dataType;         // dataType...
    std::int16_t fileType;         // fileType...
    Str31 fDelimiter;
    flaggedStr31Rec textQualifier;
    flaggedStr31Rec vtTranslation;  // the flag is never set by reading a DDF
    flaggedStr255Rec importTransTable;
    flaggedStr255Rec exportTransTable;
    flaggedStr31Rec importSrSet;
    flaggedStr31Rec exportSrSet;
    flaggedStr31Rec ruleSet;
    blockHandle ruleSetData2;  // never null in a definition of a set; see also recordDefExchange
    std::int16_t osType;       // osType...
    flaggedStr255Rec sqlPrologue;
    flaggedStr255Rec sqlEpilogue;
    flaggedStr255Rec sqlRowCount;
    flaggedStr255Rec reqPrologue;
    flaggedStr255Rec reqEpilogue;
    flaggedStr255Rec reqRowCount;
    pictureSearchRec pictureSearch;
};
static_assert(sizeof(fieldNameEntry) == 34);
static_assert(sizeof(pictureSearchRec) == 1026);
static_assert(offsetof(recordDefFixedRec, lastUpdate) == 8);
static_assert(offsetof(recordDefFixedRec, databasePath) == 12);
static_assert(offsetof(recordDefFixedRec, odbcDataSourceName) == 1036);
static_assert(offsetof(recordDefFixedRec, httpDataSourceName) == 1804);
static_assert(offsetof(recordDefFixedRec, name) == 2572);
static_assert(offsetof(recordDefFixedRec, fields) == 2604);
static_assert(offsetof(recordDefFixedRec, keyField) == 53604);
static_assert(offsetof(recordDefFixedRec, useKeyfieldCase) == 53636);
static_assert(offsetof(recordDefFixedRec, dataAccessMode) == 53638);
static_assert(offsetof(recordDefFixedRec, dataType) == 53640);
static_assert(offsetof(recordDefFixedRec, fileType) == 53642);
static_assert(offsetof(recordDefFixedRec, fDelimiter) == 53644);
static_assert(offsetof(recordDefFixedRec, textQualifier) == 53676);
static_assert(offsetof(recordDefFixedRec, textQualifier.string) == 53677);
static_assert(offsetof(recordDefFixedRec, ruleSetData2) == 54360);
static_assert(offsetof(recordDefFixedRec, osType) == 54368);
static_assert(offsetof(recordDefFixedRec, sqlPrologue) == 54370);
static_assert(offsetof(recordDefFixedRec, pictureSearch) == 55912);

/// One record definition. The references are null behind the last record, unless the array is full.
struct recordDefRec : recordDefFixedRec {
    searchCriteriaRec* searchCriteria[searchCriteriaCapacity];
    extractionRec* extractions[extractionCapacity];
    styleRec* styles[styleCapacity];
    blockHandle ruleSetData;  // earlier form of the rule data; may be null
};
static_assert(sizeof(recordDefRec) == 73752);

// Values of exchangeOp in the exchange blocks.
inline constexpr std::int16_t exchangeGet = 1;
inline constexpr std::int16_t exchangeSet = 2;  // of a definition: save and remove the one with the source name
inline constexpr std::int16_t exchangeDelete = 3;
inline constexpr std::int16_t exchangeSaveKeeping = 4;  // definitions only: save and keep the one with the source name

inline constexpr std::int16_t exchangeNotFound = -1;  // exchangeResult: nothing of that name; no error

/// Carries a definition's fixed part between a set and its callers. `name` is the target name, `record.name` the source
/// name. `record.ruleSetData2` isn't a handle here but the address of the caller's handle variable, set and read with
/// exchangeRuleData below; null means that the caller takes and brings no rule data. A `record.signature` that came out
/// of a get stays the set's and lives as long as the definition.
struct recordDefExchange {
    Str31 name;
    recordDefFixedRec record;
    std::int16_t exchangeOp;
    std::int16_t exchangeResult;
};

struct extractionExchange {
    Str31 name;
    extractionRec record;
    std::int16_t exchangeOp;
    std::int16_t exchangeResult;
};

struct searchCriteriaExchange {
    Str31 name;
    searchCriteriaRec record;
    std::int16_t exchangeOp;
    std::int16_t exchangeResult;
};

struct styleExchange {
    Str31 name;
    styleRec record;
    std::int16_t exchangeOp;
    std::int16_t exchangeResult;
};

/// Address of the caller's handle variable in `block`, or null.
[[nodiscard]] inline blockHandle* exchangeRuleData(const recordDefExchange& block) {
    return reinterpret_cast<blockHandle*>(block.record.ruleSetData2);
}

/// Makes `callersHandle` the variable through which `block` gives and takes rule data. After a get it holds a private
/// copy (the caller's to free with freeHandle) or null; for a save a handle in it, which stays the caller's, brings new
/// rule data.
inline void setExchangeRuleData(recordDefExchange& block, blockHandle* callersHandle) {
    block.record.ruleSetData2 = reinterpret_cast<blockHandle>(callersHandle);
}

}  // namespace tarnova
