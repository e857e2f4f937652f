#include "host/text/line_breaks.h"

#include <unicode/ubrk.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>
#include <string>

#include "host/text/icu_text.h"

namespace tarnova {

namespace {

/// The classes of UAX 14 that Latin text has; HH is the hyphen U+2010, which ICU tells from other BA;
/// `other` stands for all the rest.
enum class BreakClass : std::uint8_t {
    other,
    AL,
    BA,
    BB,
    B2,
    BK,
    CL,
    CP,
    EX,
    GL,
    HH,
    HY,
    IN,
    IS,
    NU,
    OP,
    PO,
    PR,
    QU,
    SP,
    SY
};

BreakClass classFromIcu(char32_t character) {
    switch (u_getIntPropertyValue(static_cast<UChar32>(character), UCHAR_LINE_BREAK)) {
        case U_LB_ALPHABETIC:
        case U_LB_AMBIGUOUS:
            return BreakClass::AL;
        case U_LB_BREAK_AFTER:
            return BreakClass::BA;
        case U_LB_BREAK_BEFORE:
            return BreakClass::BB;
        case U_LB_BREAK_BOTH:
            return BreakClass::B2;
        case U_LB_CLOSE_PUNCTUATION:
            return BreakClass::CL;
        case U_LB_CLOSE_PARENTHESIS:
            return BreakClass::CP;
        case U_LB_EXCLAMATION:
            return BreakClass::EX;
        case U_LB_GLUE:
            return BreakClass::GL;
        case U_LB_HYPHEN:
            return BreakClass::HY;
        case U_LB_INSEPARABLE:
            return BreakClass::IN;
        case U_LB_INFIX_NUMERIC:
            return BreakClass::IS;
        case U_LB_NUMERIC:
            return BreakClass::NU;
        case U_LB_OPEN_PUNCTUATION:
            return BreakClass::OP;
        case U_LB_POSTFIX_NUMERIC:
            return BreakClass::PO;
        case U_LB_PREFIX_NUMERIC:
            return BreakClass::PR;
        case U_LB_QUOTATION:
            return BreakClass::QU;
        case U_LB_SPACE:
            return BreakClass::SP;
        case U_LB_BREAK_SYMBOLS:
            return BreakClass::SY;
        default:
            return BreakClass::other;
    }
}

constexpr char32_t latinLimit = 0x250;
constexpr char32_t punctuationStart = 0x2010;
constexpr char32_t punctuationLimit = 0x20C0;

/// Classes by character, asked once of ICU's compiled properties, which need no data file.
struct ClassTable {
    std::array<BreakClass, latinLimit> latin{};
    std::array<BreakClass, punctuationLimit - punctuationStart> punctuation{};

    ClassTable() {
        for (char32_t c = 0; c < latinLimit; ++c)
            latin[c] = classFromIcu(c);
        for (char32_t c = punctuationStart; c < punctuationLimit; ++c) {
            const bool embeds =
                u_getIntPropertyValue(static_cast<UChar32>(c), UCHAR_BIDI_CLASS) >= U_LEFT_TO_RIGHT_EMBEDDING &&
                u_hasBinaryProperty(static_cast<UChar32>(c), UCHAR_BIDI_CONTROL);
            punctuation[c - punctuationStart] = embeds ? BreakClass::other : classFromIcu(c);
        }
        latin['\n'] = latin[0x0B] = latin[0x0C] = latin['\r'] = latin[0x85] = BreakClass::other;
        punctuation[0x2010 - punctuationStart] = BreakClass::HH;
        punctuation[0x2028 - punctuationStart] = BreakClass::BK;
    }

    BreakClass of(char32_t c) const {
        if (c < latinLimit) return latin[c];
        if (c >= punctuationStart && c < punctuationLimit) return punctuation[c - punctuationStart];
        return BreakClass::other;
    }
};

const ClassTable& classTable() {
    static const ClassTable table;
    return table;
}

using Set = std::uint32_t;
constexpr Set setOf(std::initializer_list<BreakClass> classes) {
    Set set = 0;
    for (BreakClass c : classes)
        set |= Set{1} << static_cast<unsigned>(c);
    return set;
}
constexpr bool isIn(BreakClass c, Set set) {
    return (set >> static_cast<unsigned>(c) & 1) != 0;
}

/// Walks over Latin text and says of each border whether it is an opportunity. The rule numbers are those of UAX 14,
/// revision 49; numbers follow the regular expression of its example 7 in section 8.2, as ICU does.
class LatinBreaker {
 public:
    /// True when nothing happens in front of further letters (LB28), and nothing changes by them.
    bool isInWord() const { return prev == C::AL && !spaces; }

    /// What may happen between the text so far and a character of class `cur`, which `next` and `afterNext` follow.
    LineBreak step(BreakClass cur, BreakClass next, BreakClass afterNext) {
        const bool numberFollows = next == C::NU || (next == C::IS && afterNext == C::NU);
        const LineBreak result = judge(cur, next, numberFollows);
        remember(cur, result);
        return result;
    }

 private:
    using C = BreakClass;

    LineBreak judge(C cur, C next, bool numberFollows) const {
        if (atStart) return LineBreak::none;
        if (prev == C::BK && !spaces) return LineBreak::mandatory;  // LB4
        if (cur == C::SP || cur == C::BK) return LineBreak::none;   // LB6, LB7
        const bool kept = spaces ? holdsOverSpaces(cur, next) : holds(cur, numberFollows);
        return kept ? LineBreak::none : LineBreak::allowed;
    }

    bool holdsOverSpaces(C cur, C next) const {
        if (isIn(cur, setOf({C::CL, C::CP, C::EX, C::SY}))) return true;  // LB13
        if (prev == C::OP) return true;                                   // LB14
        if (cur == C::IS) return next != C::NU;                           // LB14a of ICU: " .5" may break
        return (prev == C::QU && cur == C::OP) ||                         // LB15
               (prev == C::B2 && cur == C::B2);                           // LB17
    }

    bool holds(C cur, bool numberFollows) const {
        constexpr Set letters = setOf({C::AL, C::NU}), affixes = setOf({C::PR, C::PO});
        if (prev == C::GL) return true;                                                    // LB12
        if (cur == C::GL) return !isIn(prev, setOf({C::BA, C::HH, C::HY}));                // LB12a
        if (isIn(cur, setOf({C::CL, C::CP, C::EX, C::IS, C::SY}))) return true;            // LB13
        if (prev == C::OP || prev == C::QU || cur == C::QU) return true;                   // LB14, LB19
        if (prev == C::B2 && cur == C::B2) return true;                                    // LB17
        if (isIn(cur, setOf({C::BA, C::HH, C::HY, C::IN})) || prev == C::BB) return true;  // LB21, LB22
        if (isIn(prev, letters) && isIn(cur, letters)) return true;                        // LB23, LB25, LB28
        if (isIn(prev, affixes) && cur == C::AL) return true;                              // LB24
        if (prev == C::AL && isIn(cur, affixes)) return true;                              // LB24
        if (holdsNumber(cur, numberFollows)) return true;                                  // LB25
        if (prev == C::IS && cur == C::AL) return true;                                    // LB29
        if (isIn(prev, letters) && cur == C::OP) return true;                              // LB30
        if (prev == C::CP && isIn(cur, letters)) return true;                              // LB30
        return isIn(prev, setOf({C::HH, C::HY})) && hyphenLeads && cur == C::AL;           // LB20.09 of ICU
    }

    bool holdsNumber(C cur, bool numberFollows) const {
        constexpr Set affixes = setOf({C::PR, C::PO});
        if (cur == C::NU) return inNumber || isIn(prev, affixes) || isIn(prev, setOf({C::HY, C::IS}));
        if (isIn(cur, affixes)) return inNumber || numberClosed;
        return isIn(prev, affixes) && cur == C::OP && numberFollows;
    }

    void remember(C cur, LineBreak before) {
        const bool wasInNumber = inNumber;
        if (cur == C::SP) {
            spaces = true;
            inNumber = numberClosed = false;
            atStart = false;
            if (prev == C::BK) prev = C::other;
            return;
        }
        inNumber = cur == C::NU || (wasInNumber && !spaces && isIn(cur, setOf({C::SY, C::IS})));
        numberClosed = wasInNumber && !spaces && isIn(cur, setOf({C::CL, C::CP}));
        if (isIn(cur, setOf({C::HH, C::HY}))) hyphenLeads = atStart || before != LineBreak::none;
        spaces = atStart = false;
        prev = cur;
    }

    C prev = C::other;  // class of the last character that is no space
    bool atStart = true;
    bool spaces = false;  // between it and the border
    bool inNumber = false;
    bool numberClosed = false;
    bool hyphenLeads = false;  // a break may stand in front of the hyphen
};

struct BreakIteratorCloser {
    void operator()(UBreakIterator* iterator) const { ubrk_close(iterator); }
};
using BreakIterator = std::unique_ptr<UBreakIterator, BreakIteratorCloser>;

/// A thread has one iterator of each kind: to open one costs more than to break a paragraph.
UBreakIterator* iteratorFor(BreakIterator& kept, UBreakIteratorType type, const IcuText& text) {
    UErrorCode error = U_ZERO_ERROR;
    if (kept == nullptr) kept.reset(ubrk_open(type, "", nullptr, 0, &error));
    ubrk_setText(kept.get(), text.units.data(), text.unitCount(), &error);
    if (U_FAILURE(error)) throw std::runtime_error(std::string("ICU can't break text: ") + u_errorName(error));
    return kept.get();
}

}  // namespace

bool isPlainLatin(std::u32string_view text) {
    const ClassTable& table = classTable();
    return std::all_of(text.begin(), text.end(), [&](char32_t c) { return table.of(c) != BreakClass::other; });
}

namespace {

/// Goes behind the letters at a place inside a word, and on over single spaces to further letters: there a line may end
/// (LB18), and for what follows it is as if there was one word.
std::size_t behindWords(std::u32string_view text, std::size_t at, std::vector<LineBreak>& breaks) {
    const ClassTable& table = classTable();
    const auto isLetter = [&](std::size_t i) { return i < text.size() && table.of(text[i]) == BreakClass::AL; };
    while (true) {
        while (isLetter(at))
            ++at;
        if (at >= text.size() || text[at] != U' ' || !isLetter(at + 1)) return at;
        breaks[at++] = LineBreak::allowed;
    }
}

}  // namespace

void findLatinBreaks(std::u32string_view text, std::vector<LineBreak>& breaks) {
    breaks.assign(text.size(), LineBreak::none);
    if (text.empty()) return;
    const ClassTable& table = classTable();
    LatinBreaker breaker;
    const auto classAt = [&](std::size_t i) { return i < text.size() ? table.of(text[i]) : BreakClass::other; };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (breaker.isInWord()) {
            i = behindWords(text, i, breaks);
            if (i == text.size()) return;
        }
        const LineBreak before = breaker.step(classAt(i), classAt(i + 1), classAt(i + 2));
        if (i > 0) breaks[i - 1] = before;
    }
}

void findBreaks(std::u32string_view text, std::vector<LineBreak>& breaks) {
    static thread_local BreakIterator lines;
    static thread_local IcuText icu;
    breaks.assign(text.size(), LineBreak::none);
    if (text.empty()) return;
    icu.assign(text);
    UBreakIterator* iterator = iteratorFor(lines, UBRK_LINE, icu);
    for (std::int32_t at = ubrk_next(iterator); at != UBRK_DONE && at < icu.unitCount(); at = ubrk_next(iterator)) {
        const bool hard = ubrk_getRuleStatus(iterator) >= UBRK_LINE_HARD;
        breaks[static_cast<std::size_t>(icu.characterOf[static_cast<std::size_t>(at)]) - 1] =
            hard ? LineBreak::mandatory : LineBreak::allowed;
    }
}

std::size_t graphemeBorder(std::u32string_view text, std::size_t limit) {
    static thread_local BreakIterator graphemes;
    static thread_local IcuText icu;
    icu.assign(text);
    UBreakIterator* iterator = iteratorFor(graphemes, UBRK_CHARACTER, icu);
    std::size_t border = 0;
    for (std::int32_t at = ubrk_next(iterator); at != UBRK_DONE; at = ubrk_next(iterator)) {
        const auto character = static_cast<std::size_t>(icu.characterOf[static_cast<std::size_t>(at)]);
        if (border != 0 && character > limit) break;
        border = character;
    }
    return border;
}

}  // namespace tarnova
