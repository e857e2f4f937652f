// The string that people get to see: UTF-8 text, or a key that the string tables turn into text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarnova {

class PMString {
 public:
    PMString() = default;
    /// UTF-8 text. Translatable text is a key until `translate` replaces it.
    explicit PMString(std::string_view text, bool isTranslatable = false)
        : bytes_(text), translatable_(isTranslatable) {}
    explicit PMString(std::u32string_view text);

    /// The text of a string key; the key itself when it has none.
    static PMString ofKey(std::string_view key);

    const std::string& bytes() const { return bytes_; }
    std::string_view view() const { return bytes_; }
    const char* cstr() const { return bytes_.c_str(); }
    bool empty() const { return bytes_.empty(); }
    void clear() { bytes_.clear(); }
    void set(std::string_view text) { bytes_.assign(text); }

    bool translatable() const { return translatable_; }
    void setTranslatable(bool isTranslatable) { translatable_ = isTranslatable; }
    /// Replaces a key by its text and ends translatability; plain text stays as it is.
    PMString& translate();

    PMString& append(std::string_view text) {
        bytes_.append(text);
        return *this;
    }
    PMString& append(const PMString& other) { return append(other.view()); }
    PMString& appendCodePoint(char32_t codePoint);
    PMString& appendNumber(std::int64_t number) { return append(std::to_string(number)); }

    /// Code points, with U+FFFD for bytes that are no UTF-8.
    std::size_t codePointCount() const;
    std::u32string codePoints() const;
    /// Calls `visit` with each code point in order.
    template <typename Visit>
    void forEachCodePoint(Visit visit) const {
        for (const char32_t codePoint : codePoints())
            visit(codePoint);
    }

    /// The whole text as a decimal number with blanks around it and a sign allowed; nothing for any other text, a blank
    /// between digits or a number that 32 bits don't hold.
    std::optional<std::int32_t> number() const;

    bool equalNoCase(const PMString& other) const;  // A to Z fold, other characters don't
    friend bool operator==(const PMString& a, const PMString& b) { return a.bytes_ == b.bytes_; }
    friend bool operator<(const PMString& a, const PMString& b) { return a.bytes_ < b.bytes_; }  // by unsigned bytes

    /// The text for changing in place; must stay UTF-8.
    std::string& edit() { return bytes_; }

 private:
    std::string bytes_;
    bool translatable_ = false;
};

/// Makes a string from a Pascal string and marks it.
void pmFromPstr(PMString& out, const std::uint8_t* pstr, bool isTranslatable);
/// Reads the text out as a Pascal string of up to 255 characters, cut between characters.
void pstrFromPm(const PMString& s, std::uint8_t* dst);
/// The text of `key` as a Pascal string of up to 255 characters.
void pstrFromKey(std::string_view key, std::uint8_t* dst);

/// Replaces every occurrence from left to right; what was put in isn't searched again. Returns how many. An empty
/// `what` replaces nothing.
std::size_t pmReplaceAll(PMString& s, std::string_view what, std::string_view by);

/// Joins a list with the separator between items; an empty item leaves neither text nor separator.
PMString pmJoin(const std::vector<PMString>& list, std::string_view separator);

enum class trimMode : std::uint16_t { leftEnd = 0, rightEnd = 1, bothEnds = 2, everywhere = 3 };
/// Removes tabs and blanks from the ends; `everywhere` removes each character below 33. Returns how many went.
std::size_t pmTrim(PMString& s, trimMode mode);

/// Fills the markers "^0" to "^3". The parameters that aren't null are taken in order; each replaces one marker, the
/// first "^0", else the first "^1", and so on: a null parameter shifts the later ones down. What is left over on either
/// side stays out or stands as it is. Markers inside a parameter are text.
void pmSubstitute(PMString& s, const PMString* p0, const PMString* p1 = nullptr, const PMString* p2 = nullptr,
                  const PMString* p3 = nullptr);

}  // namespace tarnova
