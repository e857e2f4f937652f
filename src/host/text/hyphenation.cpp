#include "host/text/hyphenation.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>

#include "host/text/hyphen_patterns.h"

namespace tarnova {

namespace {

constexpr std::string_view dictionaryFolder = "/usr/share/hyphen/";
constexpr std::size_t languagesKept = 32;

/// The region whose dictionary serves a language that names none, or one that has no dictionary of its own.
struct MainRegion {
    std::string_view language, region;
};
constexpr MainRegion mainRegions[] = {{"cs", "CZ"}, {"da", "DK"}, {"de", "DE"}, {"en", "US"}, {"es", "ES"},
                                      {"fr", "FR"}, {"it", "IT"}, {"nl", "NL"}, {"pl", "PL"}, {"pt", "PT"}};

bool isLetters(std::string_view text, std::size_t least, std::size_t most) {
    return text.size() >= least && text.size() <= most &&
           std::all_of(text.begin(), text.end(), [](char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; });
}

std::string changeCase(std::string_view text, bool upper) {
    std::string out(text);
    for (char& c : out)
        c = static_cast<char>(upper ? c & ~0x20 : c | 0x20);
    return out;
}

/// File names of the dictionaries that may serve a tag, the best first. Of the tag (RFC 5646) only the language and the
/// region are looked at, and both are letters, so that no tag leads out of the folder.
std::vector<std::string> dictionaryNames(std::string_view tag) {
    const std::size_t languageEnd = std::min(tag.find('-'), tag.size());
    if (!isLetters(tag.substr(0, languageEnd), 2, 3)) return {};
    const std::string language = changeCase(tag.substr(0, languageEnd), false);
    std::vector<std::string> names;
    for (std::size_t at = languageEnd; at < tag.size();) {
        const std::size_t end = std::min(tag.find('-', at + 1), tag.size());
        const std::string_view part = tag.substr(at + 1, end - at - 1);
        if (isLetters(part, 2, 2)) names.push_back(language + '_' + changeCase(part, true));
        at = end;
    }
    names.push_back(language);
    for (const MainRegion& row : mainRegions)
        if (row.language == language) names.push_back(language + '_' + std::string(row.region));
    return names;
}

/// The dictionary for a language tag, or null. Each file is read once in the process.
const HyphenPatterns* dictionaryFor(std::string_view tag) {
    static std::mutex mutex;
    static std::map<std::string, std::unique_ptr<HyphenPatterns>> byPath;
    const std::lock_guard<std::mutex> lock(mutex);
    for (const std::string& name : dictionaryNames(tag)) {
        std::error_code error;
        const auto file = std::filesystem::canonical(std::string(dictionaryFolder) + "hyph_" + name + ".dic", error);
        if (error) continue;
        auto found = byPath.find(file.string());
        if (found == byPath.end()) found = byPath.emplace(file.string(), HyphenPatterns::open(file.string())).first;
        if (found->second != nullptr) return found->second.get();
    }
    return nullptr;
}

}  // namespace

std::uint64_t Hyphenator::pointsOf(std::string_view language, std::u32string_view word) {
    if (word.empty() || word.size() > longestHyphenatedWord) return 0;
    Language& its = languageOf(language);
    if (its.dictionary == nullptr) return 0;
    lowered_.clear();
    for (char32_t c : word)
        lowered_.push_back(static_cast<char32_t>(u_tolower(static_cast<UChar32>(c))));
    const auto known = its.words.find(lowered_);
    if (known != its.words.end()) return known->second;
    if (its.words.size() == hyphenatedWordsKept) its.words.clear();
    return its.words.emplace(lowered_, its.dictionary->pointsOf(lowered_)).first->second;
}

Hyphenator::Language& Hyphenator::languageOf(std::string_view tag) {
    const auto found =
        std::find_if(languages_.begin(), languages_.end(), [&](const Language& known) { return known.tag == tag; });
    if (found != languages_.end()) return *found;
    if (languages_.size() == languagesKept) languages_.clear();
    return languages_.emplace_back(Language{std::string(tag), dictionaryFor(tag), {}});
}

}  // namespace tarnova
