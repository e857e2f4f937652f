#include "definitions/ddf_lexer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace tarnova {

namespace {

enum byteClass : std::uint8_t { literalByte, separatorByte, semicolonByte, lineEndByte, quoteByte, backslashByte };

constexpr std::array<byteClass, 256> makeByteClasses() {
    std::array<byteClass, 256> classes{};
    for (char c : {'\t', ' ', ','})
        classes[static_cast<unsigned char>(c)] = separatorByte;
    for (char c : {'\r', '\n'})
        classes[static_cast<unsigned char>(c)] = lineEndByte;
    for (char c : {'"', '\''})
        classes[static_cast<unsigned char>(c)] = quoteByte;
    classes[';'] = semicolonByte;
    classes['\\'] = backslashByte;
    return classes;
}
constexpr std::array<byteClass, 256> byteClasses = makeByteClasses();

byteClass classOf(char c) {
    return byteClasses[static_cast<unsigned char>(c)];
}

constexpr std::size_t tokenStackStep = 256;  // entries
constexpr std::size_t numberCapacity = 32;   // characters of a number
constexpr std::size_t numberDigits = 18;     // always fit into 64 bits

/// A block of `size` bytes in the place of `old`, whose first `used` bytes it takes over.
void* grownBlock(void* old, std::size_t used, std::size_t size) {
    void* const grown = newBlock(size);
    if (grown == nullptr) return nullptr;
    if (used > 0) std::memcpy(grown, old, used);
    freeBlock(old);
    return grown;
}

errorWord growTokenBuffer(ddfLexerRec& lexer, std::size_t needed) {
    // By half its size at least, so that a long token is copied a few times and not once a block.
    const std::size_t wanted = std::max(needed, lexer.tokenBufferSize + lexer.tokenBufferSize / 2);
    const std::size_t size = (wanted + ddfBlockSize - 1) / ddfBlockSize * ddfBlockSize;
    void* const grown = grownBlock(lexer.tokenBuffer, lexer.tokenLength, size);
    if (grown == nullptr) return errDdfNoMemoryTokenBuffer;
    lexer.tokenBuffer = static_cast<char*>(grown);
    lexer.tokenBufferSize = size;
    return 0;
}

errorWord addBytes(ddfLexerRec& lexer, const char* bytes, std::size_t count) {
    if (lexer.tokenBufferSize - lexer.tokenLength < count) {
        const errorWord err = growTokenBuffer(lexer, lexer.tokenLength + count);
        if (err != 0) return err;
    }
    std::memcpy(lexer.tokenBuffer + lexer.tokenLength, bytes, count);
    lexer.tokenLength += count;
    return 0;
}

std::size_t tokenStart(const ddfLexerRec& lexer, std::size_t index) {
    return index == 0 ? 0 : lexer.ddfTokenStack[index - 1];
}

errorWord endToken(ddfLexerRec& lexer) {
    if (lexer.tokenLength == tokenStart(lexer, lexer.tokenDepth)) return 0;
    if (lexer.tokenDepth == lexer.tokenStackSize) {
        const std::size_t entries = std::max(tokenStackStep, 2 * lexer.tokenStackSize);
        void* const grown =
            grownBlock(lexer.ddfTokenStack, lexer.tokenDepth * sizeof(std::size_t), entries * sizeof(std::size_t));
        if (grown == nullptr) return errDdfNoMemoryToken;
        lexer.ddfTokenStack = static_cast<std::size_t*>(grown);
        lexer.tokenStackSize = entries;
    }
    lexer.ddfTokenStack[lexer.tokenDepth++] = lexer.tokenLength;
    return 0;
}

/// Count of bytes at the front that are added as they are.
std::size_t literalRun(const ddfLexerRec& lexer, std::string_view bytes) {
    const auto isLiteral = [inQuotes = lexer.inQuotes != 0](char c) {
        const byteClass of = classOf(c);
        return of == literalByte || (inQuotes && (of == separatorByte || of == semicolonByte));
    };
    return static_cast<std::size_t>(std::find_if_not(bytes.begin(), bytes.end(), isLiteral) - bytes.begin());
}

/// Takes a byte that isn't literal; `ended` says that a statement ends with it.
errorWord takeSpecialByte(ddfLexerRec& lexer, char c, bool& ended) {
    const bool escaped = lexer.escaped != 0;
    lexer.escaped = 0;
    switch (classOf(c)) {
        case backslashByte:
            if (escaped) return addBytes(lexer, &c, 1);
            lexer.escaped = 1;
            return 0;
        case quoteByte:
            if (escaped) return addBytes(lexer, &c, 1);
            lexer.inQuotes = lexer.inQuotes == 0 ? 1 : 0;
            return addBytes(lexer, "", 1);
        case separatorByte:
            return endToken(lexer);
        case semicolonByte: {
            const errorWord err = endToken(lexer);
            ended = err == 0 && lexer.tokenDepth > 0;
            return err;
        }
        case lineEndByte:
        case literalByte:
            break;
    }
    return 0;
}

}  // namespace

errorWord ddfLex(ddfLexerRec& lexer, std::string_view& bytes, ddfLexStop& stop, errorWord priorError) {
    if (priorError != 0) return priorError;
    stop = ddfLexStop::endOfBytes;
    errorWord err = 0;
    while (err == 0 && !bytes.empty()) {
        const std::size_t run = literalRun(lexer, bytes);
        if (run > 0) {
            lexer.escaped = 0;
            err = addBytes(lexer, bytes.data(), run);
            bytes.remove_prefix(run);
            continue;
        }
        bool ended = false;
        err = takeSpecialByte(lexer, bytes.front(), ended);
        bytes.remove_prefix(1);
        if (!ended) continue;
        stop = ddfLexStop::endOfStatement;
        break;
    }
    return err;
}

void ddfDropTokens(ddfLexerRec& lexer) {
    lexer.tokenDepth = 0;
    lexer.tokenLength = 0;
}

void ddfLexerClose(ddfLexerRec& lexer) {
    freeBlock(lexer.tokenBuffer);
    freeBlock(lexer.ddfTokenStack);
    lexer = {};
}

std::string_view ddfToken(const ddfLexerRec& lexer, std::size_t index) {
    const std::size_t start = tokenStart(lexer, index);
    return {lexer.tokenBuffer + start, lexer.ddfTokenStack[index] - start};
}

std::string_view ddfTokenValue(std::string_view token) {
    if (std::count(token.begin(), token.end(), '\0') != 2) return token;
    const std::size_t first = token.find_first_not_of('\0');
    if (first == std::string_view::npos) return {};
    return token.substr(first, token.find_last_not_of('\0') - first + 1);
}

std::optional<std::int64_t> ddfTokenNumber(std::string_view token) {
    std::string_view digits = ddfTokenValue(token.substr(0, token.find(':')));
    if (digits.size() > numberCapacity || digits.empty()) return std::nullopt;
    const bool negative = digits.front() == '-';
    if (negative || digits.front() == '+') digits.remove_prefix(1);
    const bool allDigits = std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (digits.empty() || !allDigits) return std::nullopt;
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size() - 1));
    if (digits.size() > numberDigits) return std::numeric_limits<std::int64_t>::max();
    std::int64_t value = 0;
    for (char digit : digits)
        value = value * 10 + (digit - '0');
    return negative ? -value : value;
}

}  // namespace tarnova
