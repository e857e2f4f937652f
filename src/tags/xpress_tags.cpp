#include "tags/xpress_tags.h"

#include <utility>

namespace tarnova {

namespace {

constexpr std::size_t growth = 4;  // of the output, on average at most
constexpr std::size_t outputSpare = 4096;
constexpr std::size_t styleNameReach = 65;  // bytes behind an "@" within which the ":" of a name stands
constexpr std::size_t noPlace = std::string_view::npos;
constexpr std::string_view fileHead = "<v1.70><e1>";

/// The straight quote, and the curly ones of Mac OS Roman.
bool isQuote(char c) {
    return c == '"' || c == '\xD2' || c == '\xD3';
}

struct replacementRec {
    std::string_view input;
    std::string_view output;
};

/// Tags that always become the same.
constexpr replacementRec plainTags[] = {
    {"<#13>", "<0x000D>"},          {"<#9>", "\t"},
    {"<*L>", "<pta:><pta:Left>"},   {"<*R>", "<pta:><pta:Right>"},
    {"<*C>", "<pta:><pta:Center>"}, {"<*J>", "<pta:><pta:JustifyLeft>"},
    {"<\\#13>", "<0x000D>"},        {"<\\#9>", "\t"},
    {"<\\s>", "<0x0020>"},          {"<\\e>", "<0x2002>"},
    {"<\\m>", "<0x2003>"},          {"<\\{>", "<0x200A>"},
    {"<\\^>", "<0x2006>"},          {"<\\$>", "<0x2005>"},
    {"<\\#>", "<0x2004>"},          {"<\\f>", "<0x2001>"},
    {"<\\8>", "<0x2007>"},          {"<\\[>", "<0x2009>"},
    {"<\\o>", "<0x3000>"},          {"<\\p>", "<0x0020>"},
    {"<\\->", "<0x002D>"},          {"<\\h>", "<0x00AD>"},
    {"<\\_>", "<0x2014>"},          {"<\\a>", "<0x2013>"},
};

class XpressConverter {
 public:
    XpressConverter(std::string_view itsInput, bool itsSoftReturnIsCR)
        : input(itsInput), softReturnIsCR(itsSoftReturnIsCR) {
        out.reserve(input.size() * growth + outputSpare);
    }

    std::string convert() {
        while (at < input.size()) {
            const char c = input[at];
            if (c == '\\') {
                takeLiteral();
            } else if (c == '@') {
                takeAt();
            } else if (c == '<') {
                takeTag();
            } else if (c == '\n') {
                if (at == 0 || input[at - 1] != '\r') out += '\r';
                ++at;
            } else {
                out += c;
                ++at;
            }
        }
        return std::move(out);
    }

 private:
    [[nodiscard]] bool stands(std::string_view mark) const { return input.substr(at, mark.size()) == mark; }

    /// Copies what is left, for a construct without an end.
    void copyRest() {
        out += input.substr(at);
        at = input.size();
    }

    void takeLiteral() {
        if (at + 1 >= input.size()) return copyRest();
        out += input[at + 1];
        at += 2;
    }

    /// "@name:", unless a "." comes first.
    void takeAt() {
        const std::string_view reach = input.substr(at + 1, styleNameReach);
        const std::size_t end = reach.find_first_of(":.");
        if (end == noPlace || reach[end] == '.') {
            out += '@';
            ++at;
            return;
        }
        const std::string_view name = reach.substr(0, end);
        if (name.empty()) {
            out += "<cstyle:><pstyle:>";
        } else if (name == "$") {
            out += "<pstyle:NormalParagraphStyle>";
        } else {
            out.append(inTag ? "<cstyle:" : "<pstyle:").append(name).append(">");
        }
        at += 1 + end + 1;
    }

    void takeTag() {
        if (stands(fileHead)) return skipHead();
        if (stands("<!!>")) {
            out += "[!!]";
            inTag = false;
            at += 4;
            return;
        }
        if (stands("<!")) return takeTextTag();
        if (stands("<@")) return takeCharacterStyle();
        const char kind = at + 1 < input.size() ? input[at + 1] : '\0';
        const bool hasQuote = at + 2 < input.size() && isQuote(input[at + 2]);
        if (kind == 'f' && hasQuote) return takeValue(3, "<cFont:");
        if (kind == 'c' && hasQuote) return takeValue(3, "<cColor:");
        if (kind == 'z') return takeValue(2, "<cSize:");
        if (takePlainTag() || takeSwitch()) return;
        out += '<';
        ++at;
    }

    void skipHead() {
        at += fileHead.size();
        if (at < input.size() && input[at] == '\r') ++at;
        if (at < input.size() && input[at] == '\n') ++at;
    }

    /// A tag of a link: its opening mark up to the ">" goes over with square brackets.
    void takeTextTag() {
        const std::size_t close = input.find('>', at);
        if (close == noPlace) return copyRest();
        out.append("[").append(input.substr(at + 1, close - at - 1)).append("]");
        inTag = true;
        at = close + 1;
    }

    void takeCharacterStyle() {
        const std::size_t end = input.find_first_of(":>", at + 2);
        if (end == noPlace) return copyRest();
        out.append("<cstyle:").append(input.substr(at + 2, end - at - 2)).append(">");
        at = end + 1;
    }

    /// A value from `skip` bytes on up to the ">", without a quote that closes it.
    void takeValue(std::size_t skip, std::string_view tag) {
        const std::size_t close = input.find('>', at);
        if (close == noPlace) return copyRest();
        std::string_view value = input.substr(at + skip, close > at + skip ? close - at - skip : 0);
        if (!value.empty() && isQuote(value.back())) value.remove_suffix(1);
        out.append(tag).append(value).append(">");
        at = close + 1;
    }

    bool takePlainTag() {
        if (stands("<\\n>")) {
            out += softReturnIsCR ? "<0x000D>" : "<0x000A>";
            at += 4;
            return true;
        }
        for (const replacementRec& row : plainTags) {
            if (!stands(row.input)) continue;
            out += row.output;
            at += row.input.size();
            return true;
        }
        return false;
    }

    /// Switches of type style, position, rules and case. False for another tag.
    bool takeSwitch() {
        const std::size_t close = input.substr(at, 4).find('>');
        if (close == noPlace) return false;
        const std::string_view tag = input.substr(at + 1, close - 1);
        if (tag == "P") {
            endAll();
        } else if (tag == "B" || tag == "b" || tag == "/B" || tag == "/b") {
            bold = tag.size() == 1 && !bold;
            writeStyle();
        } else if (tag == "I" || tag == "i" || tag == "/I" || tag == "/i") {
            italic = tag.size() == 1 && !italic;
            writeStyle();
        } else if (tag == "V" || tag == "+") {
            flip(superscript, "<cp:Superscript>", "<cp:>");
        } else if (tag == "-") {
            flip(subscript, "<cp:Subscript>", "<cp:>");
        } else if (tag == "U" || tag == "u") {
            flip(underline, "<cu:1>", "<cu:>");
        } else if (tag == "/U" || tag == "/u") {
            if (underline) flip(underline, "", "<cu:>");
        } else if (tag == "/") {
            flip(strikeout, "<cstrike:1>", "<cstrike:>");
        } else if (tag == "K") {
            flip(allCaps, "<ccase:All Caps>", "<ccase:>");
        } else if (tag == "H") {
            flip(smallCaps, "<ccase:Small Caps>", "<ccase:>");
        } else {
            return false;
        }
        at += close + 1;
        return true;
    }

    void flip(bool& isOn, std::string_view onTag, std::string_view offTag) {
        isOn = !isOn;
        out += isOn ? onTag : offTag;
    }

    void writeStyle() {
        out += "<ct:>";
        if (bold) out += italic ? "<ct:Bold Italic>" : "<ct:Bold>";
        if (italic && !bold) out += "<ct:Italic>";
    }

    void endAll() {
        if (superscript || subscript) out += "<cp:>";
        out += "<ct:>";
        if (underline) out += "<cu:>";
        if (strikeout) out += "<cstrike:>";
        if (allCaps || smallCaps) out += "<ccase:>";
        bold = italic = superscript = subscript = underline = strikeout = allCaps = smallCaps = false;
        inTag = false;
    }

    std::string_view input;
    bool softReturnIsCR;
    std::string out;
    std::size_t at = 0;
    bool inTag = false;  // from the opening mark of a text tag to its closing one
    bool bold = false, italic = false;
    bool superscript = false, subscript = false, underline = false, strikeout = false;
    bool allCaps = false, smallCaps = false;
};

}  // namespace

std::string xpressTagsConvert(std::string_view input, bool softReturnIsCR) {
    return XpressConverter(input, softReturnIsCR).convert();
}

}  // namespace tarnova
