#include <algorithm>
#include <cstring>
#include <limits>

#include "definitions/ddf_reader.h"

namespace tarnova {

namespace {

constexpr std::size_t shownWordLength = 40;  // bytes of a word in a remark

std::byte* memberOf(const ddfReaderRec& reader, const ddfStatementRow& row) {
    return reader.object + row.offset;
}

std::uint8_t* byteMember(const ddfReaderRec& reader, const ddfStatementRow& row) {
    return reinterpret_cast<std::uint8_t*>(memberOf(reader, row));
}

template <typename Number>
errorWord actNumber(ddfReaderRec& reader, const ddfStatementRow& row, std::int64_t lowest) {
    const auto value = ddfNextNumber(reader, lowest, std::numeric_limits<Number>::max());
    if (!value) return 0;
    const auto number = static_cast<Number>(*value);
    std::memcpy(memberOf(reader, row), &number, sizeof(number));
    return 0;
}

/// The text of a flag-and-text member; false when there is no operand.
bool takeFlaggedText(ddfReaderRec& reader, const ddfStatementRow& row) {
    const auto text = ddfNextText(reader);
    if (!text) return false;
    ddfSetPascal(reader, byteMember(reader, row) + 1, row.size - 1, *text);
    return true;
}

}  // namespace

void ddfSetTarget(ddfReaderRec& reader, ddfTargetSet target, void* object) {
    reader.readTarget = target;
    reader.object = static_cast<std::byte*>(object);
}

std::optional<std::string_view> ddfNextOperand(ddfReaderRec& reader) {
    if (reader.operandsLeft == 0) return std::nullopt;
    return ddfToken(reader.lexer, --reader.operandsLeft);
}

std::optional<std::string_view> ddfNextText(ddfReaderRec& reader) {
    const auto token = ddfNextOperand(reader);
    if (!token) return std::nullopt;
    return ddfTokenValue(*token);
}

std::optional<bool> ddfNextFlag(ddfReaderRec& reader) {
    const auto text = ddfNextText(reader);
    if (!text) return std::nullopt;
    return ascii::equalNoCase(*text, "true");
}

std::optional<std::int64_t> ddfNextNumber(ddfReaderRec& reader, std::int64_t lowest, std::int64_t highest) {
    const auto token = ddfNextOperand(reader);
    if (!token) return std::nullopt;
    const auto number = ddfTokenNumber(*token);
    if (number && *number >= lowest && *number <= highest) return number;
    reader.operandsLeft = 0;
    if (reader.report != nullptr) {
        ddfRemark(reader,
                  ddfQuotedWord(ddfTokenValue(*token)) + (number ? " is too large a number" : " is not a number"));
    }
    return std::nullopt;
}

void ddfSetPascal(ddfReaderRec& reader, std::uint8_t* field, std::size_t size, std::string_view text) {
    std::memset(field, 0, size);
    pstrFromView(field, size, text);
    if (text.size() >= size && reader.report != nullptr) {
        ddfRemark(reader, "the text is cut to " + std::to_string(size - 1) + " bytes");
    }
}

void ddfRemark(ddfReaderRec& reader, std::string_view text) {
    if (reader.report == nullptr) return;
    if (reader.report->remarks.size() == ddfRemarkCapacity) {
        ++reader.report->remarksLeftOut;
        return;
    }
    reader.report->remarks.push_back({reader.statementLine, ddfQuotedWord(reader.keyword) + ": " + std::string(text)});
}

std::string ddfQuotedWord(std::string_view word) {
    Str255 shown{};
    pstrFromView(shown, shownWordLength + 1, word);
    std::string quoted = "\"" + pstrString(shown) + (word.size() > shownWordLength ? "...\"" : "\"");
    for (char& c : quoted) {
        if (static_cast<unsigned char>(c) < ' ') c = ' ';
    }
    return quoted;
}

errorWord ddfActNumber16(ddfReaderRec& reader, const ddfStatementRow& row) {
    return actNumber<std::int16_t>(reader, row, std::numeric_limits<std::int16_t>::min());
}

errorWord ddfActNumber32Unsigned(ddfReaderRec& reader, const ddfStatementRow& row) {
    // A date of before 1970 or of a signed writer keeps its bits.
    return actNumber<std::uint32_t>(reader, row, std::numeric_limits<std::int32_t>::min());
}

errorWord ddfActFlag(ddfReaderRec& reader, const ddfStatementRow& row) {
    if (const auto flag = ddfNextFlag(reader)) *byteMember(reader, row) = *flag ? 1 : 0;
    return 0;
}

errorWord ddfActFlagOrOn(ddfReaderRec& reader, const ddfStatementRow& row) {
    *byteMember(reader, row) = ddfNextFlag(reader).value_or(true) ? 1 : 0;
    return 0;
}

errorWord ddfActTrueOrFalse(ddfReaderRec& reader, const ddfStatementRow& row) {
    const auto text = ddfNextText(reader);
    if (!text) return 0;
    if (ascii::equalNoCase(*text, "true")) *byteMember(reader, row) = 1;
    if (ascii::equalNoCase(*text, "false")) *byteMember(reader, row) = 0;
    return 0;
}

errorWord ddfActSetFlag(ddfReaderRec& reader, const ddfStatementRow& row) {
    *byteMember(reader, row) = 1;
    return 0;
}

errorWord ddfActText(ddfReaderRec& reader, const ddfStatementRow& row) {
    if (const auto text = ddfNextText(reader)) ddfSetPascal(reader, byteMember(reader, row), row.size, *text);
    return 0;
}

errorWord ddfActPath(ddfReaderRec& reader, const ddfStatementRow& row) {
    const auto text = ddfNextText(reader);
    if (!text) return 0;
    const std::string_view path = text->substr(0, std::min<std::size_t>(text->find('\0'), row.size - 1));
    std::memset(memberOf(reader, row), 0, row.size);
    std::memcpy(memberOf(reader, row), path.data(), path.size());
    if (path.size() < text->size()) ddfRemark(reader, "the path is cut to " + std::to_string(path.size()) + " bytes");
    return 0;
}

errorWord ddfActFlaggedText(ddfReaderRec& reader, const ddfStatementRow& row) {
    return takeFlaggedText(reader, row) ? ddfActFlag(reader, row) : 0;
}

errorWord ddfActFlaggedTextOrOn(ddfReaderRec& reader, const ddfStatementRow& row) {
    return takeFlaggedText(reader, row) ? ddfActFlagOrOn(reader, row) : 0;
}

errorWord ddfActTextSetsFlag(ddfReaderRec& reader, const ddfStatementRow& row) {
    return takeFlaggedText(reader, row) ? ddfActSetFlag(reader, row) : 0;
}

errorWord ddfActNothing(ddfReaderRec&, const ddfStatementRow&) {
    return 0;
}

}  // namespace tarnova
