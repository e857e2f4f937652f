// Hyphenation by patterns (F. M. Liang, "Word Hy-phen-a-tion by Com-put-er", 1983), read from a dictionary file.
//
// The file begins with the name of its character set. Each further line is a pattern, letters with digits between them
// and "." for a word's edge, or one of a few settings; "%" and "#" begin comments. Patterns in front of the line
// NEXTLEVEL part compound words, those behind it the words that they are made of.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tarnova {

/// The patterns of one level, in a tree by their letters.
class HyphenLevel {
 public:
    /// Adds a pattern as a file writes it. `changesSpelling` is set for one whose hyphens need other letters.
    void add(std::u32string_view pattern, bool changesSpelling);
    /// Bit `i` is set where a hyphen may stand behind letter `i` of the word.
    [[nodiscard]] std::uint64_t pointsOf(std::u32string_view word) const;

 private:
    struct Node {
        char32_t letter = 0;
        std::uint32_t child = 0;    // the first one; 0: none
        std::uint32_t sibling = 0;  // the next one
        std::uint32_t values = 0;   // where those of the pattern that ends here begin
        std::uint32_t valueCount = 0;
        bool changesSpelling = false;
    };
    [[nodiscard]] std::uint32_t childOf(std::uint32_t node, char32_t letter) const;

    std::vector<Node> nodes_ = std::vector<Node>(1);
    std::vector<std::uint8_t> values_;
};

class HyphenPatterns {
 public:
    /// Reads a file. Null when that can't be done, or its character set isn't known.
    [[nodiscard]] static std::unique_ptr<HyphenPatterns> open(const std::string& path);
    /// Bit `i` is set where a hyphen may stand behind letter `i` of a word in lower case, of at most 64 letters. Places
    /// at which the spelling would change are left out.
    [[nodiscard]] std::uint64_t pointsOf(std::u32string_view word) const;

 private:
    HyphenPatterns() = default;
    void readLine(std::u32string_view line);
    [[nodiscard]] bool readSetting(std::u32string_view line);

    HyphenLevel compounds_;
    HyphenLevel words_;
    bool hasCompounds_ = false;
    std::int32_t lettersBefore_ = 2;  // a hyphen, at least
    std::int32_t lettersAfter_ = 2;
    std::int32_t beforeInPart_ = 0;  // of a compound; 0: as in words
    std::int32_t afterInPart_ = 0;
};

}  // namespace tarnova
