// What the statements of a DDF work on while it is read, and the operations by which they take their operands.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "definitions/ddf.h"
#include "definitions/ddf_lexer.h"

namespace tarnova {

// Kinds of objects that statements act on; bits, so that a statement can name all that it may stand under.
using ddfTargetSet = std::uint16_t;
inline constexpr ddfTargetSet targetNone = 1 << 0;
inline constexpr ddfTargetSet targetDefinition = 1 << 1;
inline constexpr ddfTargetSet targetPictureSearch = 1 << 2;
inline constexpr ddfTargetSet targetCriteria = 1 << 3;
inline constexpr ddfTargetSet targetFieldTest = 1 << 4;
inline constexpr ddfTargetSet targetExtraction = 1 << 5;
inline constexpr ddfTargetSet targetStyle = 1 << 6;
inline constexpr ddfTargetSet targetPrice = 1 << 7;
inline constexpr ddfTargetSet targetCurrency = 1 << 8;
inline constexpr ddfTargetSet targetSpentTest = 1 << 9;    // a field test beyond the third
inline constexpr ddfTargetSet targetSpentGroup = 1 << 10;  // a price or currency block beyond the third
inline constexpr ddfTargetSet targetAny = 0xFFFF;

// The words of `context` and `format`, at the index of their value.
inline constexpr std::array<const char*, 3> ddfContextWords = {"none", "and", "or"};
inline constexpr std::array<const char*, 4> ddfFormatWords = {"none", "dollars", "cents", "all"};

/// One read. Lives on the stack of ddfReadStream.
struct ddfReaderRec {
    ddfReaderRec(recordDefSetRec& newSet, ddfLexerRec& newLexer, ddfReadReport* newReport)
        : set(newSet), lexer(newLexer), report(newReport) {}

    recordDefSetRec& set;
    ddfLexerRec& lexer;
    ddfReadReport* report;  // may be null

    ddfTargetSet readTarget = targetNone;  // exactly one bit
    std::byte* object = nullptr;           // the object of that kind; null for none and the spent ones
    recordDefRec* definition = nullptr;    // the one being read
    searchCriteriaRec* criteria = nullptr;
    styleRec* style = nullptr;
    std::uint16_t fieldTestCount = 0;  // of criteria
    std::uint16_t priceCount = 0;      // of style
    std::uint16_t currencyCount = 0;   // of style
    bool signatureRead = false;

    std::string_view keyword;      // of the statement under way
    std::size_t operandsLeft = 0;  // taken from the last to the first
    std::uint32_t statementLine = 0;
};

/// One keyword under the objects that it may stand under. `offset` and `size` say which member of the object it sets.
struct ddfStatementRow {
    const char* keyword;
    ddfTargetSet targets;
    errorWord (*act)(ddfReaderRec& reader, const ddfStatementRow& row);
    std::uint32_t offset;  // bytes from the start of the object
    std::uint32_t size;    // bytes of the member
};

/// Carries out the statement whose tokens the lexer holds. Errors: those of reading.
[[nodiscard]] errorWord ddfCarryOut(ddfReaderRec& reader, errorWord priorError);

/// Makes `object` what the following statements act on.
void ddfSetTarget(ddfReaderRec& reader, ddfTargetSet target, void* object);

/// The next operand from the end, quote marks included; nothing when there is none left.
[[nodiscard]] std::optional<std::string_view> ddfNextOperand(ddfReaderRec& reader);
/// Its value.
[[nodiscard]] std::optional<std::string_view> ddfNextText(ddfReaderRec& reader);
/// Whether it is the word "true".
[[nodiscard]] std::optional<bool> ddfNextFlag(ddfReaderRec& reader);
/// Its number when it lies from `lowest` to `highest`; otherwise, with a remark, nothing, and the operands before it
/// fall away.
[[nodiscard]] std::optional<std::int64_t> ddfNextNumber(ddfReaderRec& reader, std::int64_t lowest,
                                                        std::int64_t highest);

/// Clears the Pascal string field of `size` bytes and puts `text` in, cut to fit.
void ddfSetPascal(ddfReaderRec& reader, std::uint8_t* field, std::size_t size, std::string_view text);

/// Notes in the report, if there is one, why the statement under way did less than it says.
void ddfRemark(ddfReaderRec& reader, std::string_view text);

/// A word of the file in quotes, shortened when it is long.
[[nodiscard]] std::string ddfQuotedWord(std::string_view word);

// The actions that many statements share. Each sets the member of the row.

errorWord ddfActNumber16(ddfReaderRec& reader, const ddfStatementRow& row);
errorWord ddfActNumber32Unsigned(ddfReaderRec& reader, const ddfStatementRow& row);
errorWord ddfActFlag(ddfReaderRec& reader, const ddfStatementRow& row);
/// An absent operand counts as set.
errorWord ddfActFlagOrOn(ddfReaderRec& reader, const ddfStatementRow& row);
/// Sets for "true", clears for "false", and leaves the flag for anything else.
errorWord ddfActTrueOrFalse(ddfReaderRec& reader, const ddfStatementRow& row);
/// No operands: the flag is set.
errorWord ddfActSetFlag(ddfReaderRec& reader, const ddfStatementRow& row);
errorWord ddfActText(ddfReaderRec& reader, const ddfStatementRow& row);
errorWord ddfActPath(ddfReaderRec& reader, const ddfStatementRow& row);
/// A flag and a text; the flag is left alone when there is only a text.
errorWord ddfActFlaggedText(ddfReaderRec& reader, const ddfStatementRow& row);
/// The same, but a text alone sets the flag.
errorWord ddfActFlaggedTextOrOn(ddfReaderRec& reader, const ddfStatementRow& row);
/// A text, which sets its flag.
errorWord ddfActTextSetsFlag(ddfReaderRec& reader, const ddfStatementRow& row);
/// Reads the operands and does nothing.
errorWord ddfActNothing(ddfReaderRec& reader, const ddfStatementRow& row);

}  // namespace tarnova
