#include "host/text/hyphen_patterns.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <array>
#include <bit>
#include <fstream>
#include <iterator>
#include <utility>

namespace tarnova {

namespace {

constexpr std::size_t fileLimit = 64u << 20;  // bytes
constexpr std::size_t longestWord = 64;       // letters, one for each bit
constexpr std::size_t longestPattern = 100;   // letters and digits
constexpr std::uint32_t mostLetters = 50;     // that a setting can ask for

bool isDigit(char32_t c) {
    return c >= U'0' && c <= U'9';
}

/// What a setting says of the parts of compounds; where it says nothing, they are like words.
std::size_t lettersAtBorder(std::int32_t setting, std::size_t ofWords) {
    return setting > 0 ? static_cast<std::size_t>(setting) : ofWords;
}

/// Bits 0 to `count` - 1.
std::uint64_t lowBits(std::size_t count) {
    return count >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
}

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(file), {}};
    return content.size() <= fileLimit ? content : std::string();
}

struct ConverterCloser {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};

/// The text behind the first line, which names the character set; empty when that isn't known.
std::u32string decoded(const std::string& content) {
    const std::size_t nameEnd = std::min(content.find_first_of("\r\n"), content.size());
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<UConverter, ConverterCloser> converter(ucnv_open(content.substr(0, nameEnd).c_str(), &error));
    if (U_FAILURE(error)) return {};
    std::u32string out;
    const char* at = content.data() + nameEnd;
    const char* const end = content.data() + content.size();
    while (at < end) {
        const UChar32 c = ucnv_getNextUChar(converter.get(), &at, end, &error);
        if (U_FAILURE(error)) break;
        out.push_back(static_cast<char32_t>(c));
    }
    return out;
}

}  // namespace

void HyphenLevel::add(std::u32string_view pattern, bool changesSpelling) {
    if (pattern.size() > longestPattern) return;
    std::vector<std::uint8_t> values(1);
    std::uint32_t node = 0;
    for (char32_t c : pattern) {
        if (isDigit(c)) {
            values.back() = static_cast<std::uint8_t>(c - U'0');
            continue;
        }
        std::uint32_t next = childOf(node, c);
        if (next == 0) {
            next = static_cast<std::uint32_t>(nodes_.size());
            nodes_.push_back({.letter = c, .sibling = nodes_[node].child});
            nodes_[node].child = next;
        }
        node = next;
        values.push_back(0);
    }
    Node& end = nodes_[node];
    end.values = static_cast<std::uint32_t>(values_.size());
    end.valueCount = static_cast<std::uint32_t>(values.size());
    end.changesSpelling = changesSpelling;
    values_.insert(values_.end(), values.begin(), values.end());
}

std::uint32_t HyphenLevel::childOf(std::uint32_t node, char32_t letter) const {
    std::uint32_t at = nodes_[node].child;
    while (at != 0 && nodes_[at].letter != letter)
        at = nodes_[at].sibling;
    return at;
}

/// Where several patterns give a place a value, the highest holds; an odd one allows a hyphen. Of the beginnings of
/// patterns that end at one letter only the longest counts: the files are made so that it knows what the others say.
std::uint64_t HyphenLevel::pointsOf(std::u32string_view word) const {
    struct Place {
        std::uint8_t value = 0;
        bool changesSpelling = false;
    };
    std::array<Place, longestWord + 4> places{};
    std::array<bool, longestWord + 4> isDecided{};                      // by the letter at which a pattern ends
    const std::size_t length = std::min(word.size(), longestWord) + 2;  // with both edges
    const auto letterAt = [&](std::size_t i) { return i == 0 || i + 1 == length ? U'.' : word[i - 1]; };
    for (std::size_t start = 0; start < length; ++start) {
        std::uint32_t node = 0;
        for (std::size_t at = start; at < length && (node = childOf(node, letterAt(at))) != 0; ++at) {
            if (std::exchange(isDecided[at], true)) continue;
            const Node& its = nodes_[node];
            for (std::uint32_t i = 0; i < its.valueCount; ++i)
                if (values_[its.values + i] > places[start + i].value) {
                    places[start + i] = {values_[its.values + i], its.changesSpelling};
                }
        }
    }
    std::uint64_t points = 0;
    for (std::size_t i = 0; i + 3 < length; ++i) {
        const Place& behind = places[i + 2];  // the value in front of the next letter
        if (behind.value % 2 != 0 && !behind.changesSpelling) points |= std::uint64_t{1} << i;
    }
    return points;
}

std::unique_ptr<HyphenPatterns> HyphenPatterns::open(const std::string& path) {
    const std::u32string text = decoded(contentOf(path));
    if (text.empty()) return nullptr;
    std::unique_ptr<HyphenPatterns> out(new HyphenPatterns);
    std::u32string_view left = text;
    while (!left.empty()) {
        const std::size_t end = std::min(left.find_first_of(U"\r\n"), left.size());
        out->readLine(left.substr(0, end));
        left.remove_prefix(std::min(end + 1, left.size()));
    }
    return out;
}

void HyphenPatterns::readLine(std::u32string_view line) {
    line = line.substr(0, line.find_last_not_of(U" \t") + 1);
    if (line.empty() || line.front() == U'%' || line.front() == U'#' || readSetting(line)) return;
    const std::size_t slash = line.find(U'/');
    words_.add(line.substr(0, slash), slash != line.npos);
}

/// Words of letters have none of the characters that NOHYPHEN names.
bool HyphenPatterns::readSetting(std::u32string_view line) {
    if (line == U"NEXTLEVEL") {
        hasCompounds_ = true;
        compounds_ = std::exchange(words_, {});
        return true;
    }
    const std::pair<std::u32string_view, std::int32_t*> numbers[] = {{U"LEFTHYPHENMIN ", &lettersBefore_},
                                                                     {U"RIGHTHYPHENMIN ", &lettersAfter_},
                                                                     {U"COMPOUNDLEFTHYPHENMIN ", &beforeInPart_},
                                                                     {U"COMPOUNDRIGHTHYPHENMIN ", &afterInPart_}};
    for (const auto& [name, number] : numbers) {
        if (!line.starts_with(name)) continue;
        std::uint32_t value = 0;
        for (char32_t c : line.substr(name.size()))
            value = isDigit(c) ? std::min<std::uint32_t>(value * 10 + (c - U'0'), mostLetters) : value;
        if (value > 0) *number = static_cast<std::int32_t>(value);
        return true;
    }
    return line.starts_with(U"NOHYPHEN");
}

std::uint64_t HyphenPatterns::pointsOf(std::u32string_view word) const {
    const auto before = static_cast<std::size_t>(lettersBefore_), after = static_cast<std::size_t>(lettersAfter_);
    if (word.size() > longestWord || word.size() < before + after) return 0;
    std::uint64_t points = hasCompounds_ ? compounds_.pointsOf(word) : 0;
    const std::uint64_t parts = points | (std::uint64_t{1} << (word.size() - 1));
    std::size_t start = 0;
    for (std::uint64_t left = parts; left != 0; left &= left - 1) {
        const auto limit = static_cast<std::size_t>(std::countr_zero(left)) + 1;
        std::uint64_t inPart = words_.pointsOf(word.substr(start, limit - start));
        if (start > 0) inPart &= ~lowBits(lettersAtBorder(beforeInPart_, before) - 1);
        if (limit < word.size())
            inPart &= lowBits(limit - start - std::min(limit - start, lettersAtBorder(afterInPart_, after)));
        points |= inPart << start;
        start = limit;
    }
    return points & lowBits(word.size() - after) & ~lowBits(before - 1);
}

}  // namespace tarnova
