#include "host/text/font_catalog.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <tuple>

namespace tarnova {

namespace {

struct FamilyAlias {
    std::string_view name;
    std::string_view family;
};

constexpr FamilyAlias familyAliases[] = {
    {"helvetica", "Nimbus Sans"},
    {"helvetica narrow", "Nimbus Sans Narrow"},
    {"times", "Nimbus Roman"},
    {"courier", "Nimbus Mono PS"},
    {"arial", "Liberation Sans"},
    {"times new roman", "Liberation Serif"},
    {"courier new", "Liberation Mono"},
    {"avant garde", "URW Gothic"},
    {"bookman", "URW Bookman"},
    {"new century schoolbook", "C059"},
    {"palatino", "P052"},
    {"symbol", "Standard Symbols PS"},
    {"zapf chancery", "Z003"},
    {"zapf dingbats", "D050000L"},
};

std::string lowerAscii(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return out;
}

bool containsAny(std::string_view text, std::initializer_list<std::string_view> words) {
    return std::any_of(words.begin(), words.end(), [&](std::string_view word) { return text.find(word) != text.npos; });
}

std::vector<std::string> strings(const FcPattern* pattern, const char* object) {
    std::vector<std::string> out;
    FcChar8* value = nullptr;
    for (int i = 0; FcPatternGetString(pattern, object, i, &value) == FcResultMatch; ++i) {
        out.emplace_back(reinterpret_cast<const char*>(value));
    }
    return out;
}

int number(const FcPattern* pattern, const char* object, int fallback) {
    int value = 0;
    return FcPatternGetInteger(pattern, object, 0, &value) == FcResultMatch ? value : fallback;
}

/// Outlines we can subset and embed: TrueType or CFF in an OpenType file, and no variable font.
bool isUsable(const FcPattern* pattern) {
    FcBool variable = FcFalse;
    if (FcPatternGetBool(pattern, FC_VARIABLE, 0, &variable) == FcResultMatch && variable) return false;
    const std::vector<std::string> paths = strings(pattern, FC_FILE);
    if (paths.empty()) return false;
    const std::string lower = lowerAscii(paths.front());
    return lower.ends_with(".otf") || lower.ends_with(".ttf") || lower.ends_with(".ttc");
}

FontFileEntry entryOf(const FcPattern* pattern) {
    FontFileEntry entry;
    entry.path = strings(pattern, FC_FILE).front();
    entry.faceIndex = number(pattern, FC_INDEX, 0);
    entry.families = strings(pattern, FC_FAMILY);
    entry.styles = strings(pattern, FC_STYLE);
    entry.weight = number(pattern, FC_WEIGHT, FC_WEIGHT_REGULAR);
    entry.slant = number(pattern, FC_SLANT, FC_SLANT_ROMAN);
    entry.width = number(pattern, FC_WIDTH, FC_WIDTH_NORMAL);
    FcCharSet* characters = nullptr;
    if (FcPatternGetCharSet(pattern, FC_CHARSET, 0, &characters) == FcResultMatch) entry.characters = characters;
    return entry;
}

/// How far a face is from a wish; the smallest is taken.
int distance(const FontFileEntry& entry, const StyleWish& wish) {
    const int weight = std::abs(entry.weight - (wish.bold ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR));
    const bool italic = entry.slant != FC_SLANT_ROMAN;
    const int width = std::abs(entry.width - FC_WIDTH_NORMAL);
    return weight + (italic != wish.italic ? 1000 : 0) + width * 10;
}

bool hasStyleName(const FontFileEntry& entry, const std::string& lowerName) {
    return std::any_of(entry.styles.begin(), entry.styles.end(),
                       [&](const std::string& style) { return lowerAscii(style) == lowerName; });
}

/// An element of fontconfig's XML.
std::string element(const std::string& name, const std::string& content) {
    std::string out = "<" + name + ">";
    for (const char c : content)
        out += c == '&' ? "&amp;" : c == '<' ? "&lt;" : std::string(1, c);
    return out + "</" + name + ">";
}

constexpr const char* baseFolders[] = {
    "/usr/share/fonts/opentype/urw-base35",
    "/usr/share/fonts/truetype/liberation2",
    "/usr/share/fonts/truetype/dejavu",
};
constexpr const char* furtherFolders[] = {
    "/usr/share/fonts/truetype/noto",
    "/usr/share/fonts/opentype/noto",
};

std::vector<const char*> allFolders() {
    std::vector<const char*> out(std::begin(baseFolders), std::end(baseFolders));
    out.insert(out.end(), std::begin(furtherFolders), std::end(furtherFolders));
    return out;
}

}  // namespace

StyleWish parseStyle(std::string_view style) {
    const std::string lower = lowerAscii(style);
    return {lower, containsAny(lower, {"bold", "demi", "black", "heavy"}), containsAny(lower, {"italic", "oblique"})};
}

std::string_view familyBehindAlias(std::string_view family) {
    const std::string lower = lowerAscii(family);
    for (const FamilyAlias& alias : familyAliases) {
        if (alias.name == lower) return alias.family;
    }
    return family;
}

FontCatalog::FontCatalog(const std::vector<const char*>& folders, const std::vector<std::string>& cacheFolders) {
    std::string text = "<?xml version=\"1.0\"?><fontconfig>";
    std::error_code missing;
    for (const char* folder : folders) {
        if (std::filesystem::is_directory(folder, missing)) text += element("dir", folder);
    }
    // The caches hold what the files say and nothing of anybody's preferences; without them each start reads each file.
    const FontCacheFolder ownCache(cacheFolders);
    for (const std::string& folder : cacheFolders)
        text += element("cachedir", folder);
    if (!ownCache.path().empty()) text += element("cachedir", ownCache.path());
    text += "</fontconfig>";
    configuration.reset(FcConfigCreate());
    FcConfigParseAndLoadFromMemory(configuration.get(), reinterpret_cast<const FcChar8*>(text.c_str()), FcTrue);
    FcConfigBuildFonts(configuration.get());
    const FcFontSet* fonts = FcConfigGetFonts(configuration.get(), FcSetSystem);
    for (int i = 0; fonts != nullptr && i < fonts->nfont; ++i) {
        if (isUsable(fonts->fonts[i])) entries.push_back(entryOf(fonts->fonts[i]));
    }
    std::sort(entries.begin(), entries.end(), [](const FontFileEntry& a, const FontFileEntry& b) {
        return std::tie(a.path, a.faceIndex) < std::tie(b.path, b.faceIndex);
    });
}

const FontFileEntry* FontCatalog::match(std::string_view family, const StyleWish& style) const {
    const std::string wanted = lowerAscii(family);
    const FontFileEntry* best = nullptr;
    int bestDistance = 0;
    for (const FontFileEntry& entry : entries) {
        const bool named = std::any_of(entry.families.begin(), entry.families.end(),
                                       [&](const std::string& name) { return lowerAscii(name) == wanted; });
        if (!named) continue;
        const int d = hasStyleName(entry, style.name) ? -1 : distance(entry, style);
        if (best == nullptr || d < bestDistance) {
            best = &entry;
            bestDistance = d;
        }
    }
    return best;
}

const FontFileEntry* FontCatalog::covering(char32_t character, const StyleWish& style, bool serif) const {
    // DejaVu before the fonts of single scripts; of these the plain families, which have the shortest names.
    using Rank = std::tuple<bool, bool, std::size_t, int, std::string_view>;
    const FontFileEntry* best = nullptr;
    Rank bestRank;
    for (const FontFileEntry& entry : entries) {
        if (entry.characters == nullptr || entry.families.empty()) continue;
        if (!FcCharSetHasChar(entry.characters, character)) continue;
        const std::string_view family = entry.families.front();
        const bool dejavu = family == (serif ? "DejaVu Serif" : "DejaVu Sans");
        const bool sameKind = (family.find("Serif") != family.npos) == serif;
        const Rank rank{!dejavu, !sameKind, family.size(), distance(entry, style), entry.path};
        if (best == nullptr || rank < bestRank) {
            best = &entry;
            bestRank = rank;
        }
    }
    return best;
}

const FontCatalog& baseFonts() {
    static const FontCatalog catalog({std::begin(baseFolders), std::end(baseFolders)});
    return catalog;
}

const FontCatalog& allFonts() {
    static const FontCatalog catalog(allFolders());
    return catalog;
}

}  // namespace tarnova
