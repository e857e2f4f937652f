// The character level of DDF text: from bytes to statements, each a stack of tokens. A token is kept with a 0 byte for
// each quote that was no part of the text.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "definitions/ddf.h"

namespace tarnova {

/// What ended a call of ddfLex.
enum class ddfLexStop : std::uint8_t { endOfBytes, endOfStatement };

/// Takes bytes from the front of `bytes` until a statement with at least one token ends, or nothing is left. After an
/// end of statement its tokens stay until ddfDropTokens. Errors: errDdfNoMemoryTokenBuffer, errDdfNoMemoryToken.
[[nodiscard]] errorWord ddfLex(ddfLexerRec& lexer, std::string_view& bytes, ddfLexStop& stop, errorWord priorError);

void ddfDropTokens(ddfLexerRec& lexer);

/// Frees the buffers and clears the record.
void ddfLexerClose(ddfLexerRec& lexer);

/// Token `index` (from 0, in file order) of the statement, quote marks included; valid until ddfDropTokens.
[[nodiscard]] std::string_view ddfToken(const ddfLexerRec& lexer, std::size_t index);

/// Value of a token: with exactly two quote marks, what lies between its first and last other byte; else the token.
[[nodiscard]] std::string_view ddfTokenValue(std::string_view token);

/// A decimal number with an optional sign, ended by a colon or the end, at most 32 characters; nothing for anything
/// else. A number of more than 18 digits comes out as one that no field can hold.
[[nodiscard]] std::optional<std::int64_t> ddfTokenNumber(std::string_view token);

}  // namespace tarnova
