// Where a word may be hyphenated, by the dictionary of its language.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tarnova {

inline constexpr std::size_t longestHyphenatedWord = 64;  // letters
inline constexpr std::size_t hyphenatedWordsKept = 4096;  // of a language, for each thread

class HyphenPatterns;

/// Hyphenates words and remembers them. Belongs to one thread.
class Hyphenator {
 public:
    /// Bit `i` is set where a hyphen may stand behind letter `i` of the word, which is letters only, in any case. No
    /// bit for a language (BCP 47) without a dictionary, and for a word that is longer than `longestHyphenatedWord`.
    /// Places at which hyphenation would change the spelling are left out.
    [[nodiscard]] std::uint64_t pointsOf(std::string_view language, std::u32string_view word);

 private:
    struct Language {
        std::string tag;
        const HyphenPatterns* dictionary = nullptr;  // null: there is none
        std::unordered_map<std::u32string, std::uint64_t> words;
    };
    [[nodiscard]] Language& languageOf(std::string_view tag);

    std::vector<Language> languages_;
    std::u32string lowered_;
};

}  // namespace tarnova
