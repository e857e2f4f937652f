#include "host/files/inline_links.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <utility>

namespace tarnova {

namespace {

constexpr std::size_t noPlace = std::string_view::npos;

bool startsAt(std::string_view text, std::size_t at, std::string_view mark) {
    return text.substr(at, mark.size()) == mark;
}

bool longLinkAt(std::string_view text, std::size_t at) {
    return startsAt(text, at, "<!$") || startsAt(text, at, "[!$");
}

/// Bytes of what has a meaning of its own at a place: 2 for "{{", 3 for the long form's mark, 1 for a line feed, else
/// 0.
std::size_t specialAt(std::string_view text, std::size_t at) {
    if (startsAt(text, at, "{{")) return 2;
    if (longLinkAt(text, at)) return 3;
    return startsAt(text, at, "\n") ? 1 : 0;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == noPlace) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string_view withoutLeadingBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    return first == noPlace ? std::string_view() : text.substr(first);
}

std::string withLineFeeds(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r') out += text[i];
        if (text[i] == '\r' && !startsAt(text, i + 1, "\n")) out += '\n';
    }
    return out;
}

class InlineParser {
 public:
    InlineParser(std::string_view itsText, std::string& itsProblem) : text(itsText), problem(itsProblem) {}

    std::vector<InlinePiece> parse() {
        while (at < text.size() && problem.empty()) {
            if (text[at] == '\\') {
                takeBackslashes();
            } else if (startsAt(text, at, "{{")) {
                takeShortLink();
            } else if (longLinkAt(text, at)) {
                takeLongLink();
            } else {
                plain() += text[at] == '\n' ? '\r' : text[at];
                ++at;
            }
        }
        return std::move(pieces);
    }

 private:
    std::string& plain() {
        if (pieces.empty() || pieces.back().kind != InlinePiece::Kind::text) pieces.emplace_back();
        return pieces.back().text;
    }

    void takeBackslashes() {
        std::size_t limit = text.find_first_not_of('\\', at);
        if (limit == noPlace) limit = text.size();
        const std::size_t count = limit - at;
        const std::size_t special = specialAt(text, limit);
        at = limit;
        plain().append(special == 0 ? count : count / 2, '\\');
        if (special == 0 || count % 2 == 0) return;
        plain() += text.substr(limit, special);
        at += special;
    }

    void addLink(TagFields tag, std::string shown) {
        if (shown.empty()) problem = "The link \"" + tag.link + "\" has no text that it stands on.";
        if (tag.kind != 1 && tag.key.empty()) problem = "A link has no key in front of its name.";
        if (tag.kind != 1 && tag.link.empty()) problem = "A link has no name.";
        std::replace(shown.begin(), shown.end(), '\n', '\r');
        pieces.push_back({InlinePiece::Kind::link, std::move(shown), std::move(tag)});
    }

    void limitBytes(const std::string& value, std::size_t limit, const char* what) {
        if (value.size() <= limit) return;
        problem = std::string("The ") + what + " \"" + value.substr(0, 40) + "\" of a link is longer than " +
                  std::to_string(limit) + " bytes.";
    }

    /// "{{" [key ":"] name ["|" shown text] "}}"; a backslash takes the next character as it stands.
    void takeShortLink() {
        std::string parts[3];  // key, name, shown text
        std::size_t part = 1;
        bool hasKey = false, hasShown = false;
        std::size_t i = at + 2;
        for (; i < text.size() && !startsAt(text, i, "}}") && text[i] != '\n'; ++i) {
            if (text[i] == '\\' && i + 1 < text.size()) {
                parts[part] += text[++i];
            } else if (text[i] == ':' && !hasKey && !hasShown) {
                hasKey = true;
                parts[0] = std::exchange(parts[1], std::string());
            } else if (text[i] == '|' && !hasShown) {
                hasShown = true;
                part = 2;
            } else {
                parts[part] += text[i];
            }
        }
        if (!startsAt(text, i, "}}")) {
            problem = "A link begins with \"{{\" and has no \"}}\" on its line; write \\{{ for two plain braces.";
            return;
        }
        at = i + 2;
        TagFields tag;
        if (hasKey) tag.key = trimmed(parts[0]);
        tag.link = trimmed(parts[1]);
        limitBytes(tag.key, tagKeyBytes, "key");
        limitBytes(tag.link, tagNameBytes, "name");
        std::string shown = hasShown ? parts[2] : tag.link;
        addLink(std::move(tag), std::move(shown));
    }

    /// The opening mark, its ">", and the colon behind the last separator.
    struct LongLink {
        std::string_view fields;
        std::string data;
        std::size_t limit = 0;
    };

    bool outlineLongLink(LongLink& link) {
        std::size_t segmentLimit = at + 3;
        while (segmentLimit < text.size() && !longLinkAt(text, segmentLimit))
            ++segmentLimit;
        const std::string_view segment = text.substr(0, segmentLimit);
        const std::size_t close = segment.find_first_of(">]", at + 3);
        const auto refuse = [this](const char* why) {
            problem = std::string("A link begins with \"<!$\" and ") + why + "; write \\<!$ for plain characters.";
            return false;
        };
        if (close == noPlace || startsAt(segment, close - 3, "<!!") || startsAt(segment, close - 3, "[!!")) {
            return refuse("has no \">\" of its own");
        }
        const std::string_view inside = segment.substr(at + 3, close - at - 3);
        const auto separators = std::count(inside.begin(), inside.end(), ';');
        if (separators < 1 || separators > 13) return refuse("must have from 1 to 13 semicolons");
        const std::size_t colon = inside.find(':');
        if (colon == noPlace || colon < inside.rfind(';') || inside.find(':', colon + 1) != noPlace) {
            return refuse("must have one colon, behind its last semicolon (a colon in a field is written %3A)");
        }
        link.fields = inside.substr(0, colon);
        link.data = withoutLeadingBlanks(inside.substr(colon + 1));
        link.limit = close + 1;
        if (!link.data.empty()) return true;
        const std::size_t end = std::min(segment.find("<!!>", close), segment.find("[!!]", close));
        if (end == noPlace) return refuse("has neither text behind its colon nor a closing <!!>");
        link.data = withoutLeadingBlanks(segment.substr(close + 1, end - close - 1));
        link.limit = end + 4;
        return true;
    }

    void takeLongLink() {
        LongLink link;
        if (!outlineLongLink(link)) return;
        std::vector<std::string> fields;
        for (std::size_t from = 0; from <= link.fields.size();) {
            const std::size_t limit = std::min(link.fields.find(';', from), link.fields.size());
            fields.push_back(unescaped(withoutLeadingBlanks(link.fields.substr(from, limit - from))));
            from = limit + 1;
        }
        fields.resize(14);
        if (!problem.empty()) return;
        if (fields[9] == "1") {  // only checked, stays text
            plain() += text.substr(at, link.limit - at);
            at = link.limit;
            return;
        }
        at = link.limit;
        addLongLink(fields, std::move(link.data));
    }

    void addLongLink(std::vector<std::string>& fields, std::string shown) {
        TagFields tag;
        tag.key = fields[0];
        tag.link = fields[1];
        tag.rule = fields[2];
        tag.style = fields[3];
        for (std::size_t i = 0; i < 3; ++i)
            tag.notes[i] = fields[4 + i];
        tag.kind = fields[7] == "1" ? 1 : fields[7] == "2" ? 2 : 0;
        limitBytes(tag.key, tagKeyBytes, "key");
        limitBytes(tag.link, tagNameBytes, "name");
        limitBytes(tag.rule, tagNameBytes, "rule");
        limitBytes(tag.style, tagNameBytes, "style");
        for (const std::string& notes : tag.notes)
            limitBytes(notes, tagNotesBytes, "notes field");
        checkMedia(fields[8], tag.kind != 0);
        addLink(std::move(tag), std::move(shown));
    }

    void checkMedia(const std::string& media, bool needed) {
        const bool digits =
            std::all_of(media.begin(), media.end(), [](unsigned char c) { return std::isxdigit(c) != 0; });
        if (!digits || media.size() % 2 != 0) problem = "The media data of a link must be pairs of hexadecimal digits.";
        if (needed && media.empty()) problem = "A link of kind 1 or 2 needs media data in its ninth field.";
    }

    /// "%" and two hexadecimal digits stand for a byte.
    std::string unescaped(std::string_view field) {
        std::string out;
        for (std::size_t i = 0; i < field.size(); ++i) {
            if (field[i] != '%') {
                out += field[i];
                continue;
            }
            const std::string digits(field.substr(i + 1, 2));
            const auto isDigit = [](unsigned char c) { return std::isxdigit(c) != 0; };
            if (digits.size() != 2 || !std::all_of(digits.begin(), digits.end(), isDigit)) {
                problem = "In a link's field a \"%\" must be followed by two hexadecimal digits; write %25 for itself.";
                return out;
            }
            out += static_cast<char>(std::stoi(digits, nullptr, 16));
            i += 2;
        }
        return out;
    }

    std::string_view text;
    std::string& problem;
    std::size_t at = 0;
    std::vector<InlinePiece> pieces;
};

}  // namespace

std::vector<InlinePiece> parseInlineText(std::string_view text, std::string& problem) {
    const std::string clean = withLineFeeds(text);
    return InlineParser(clean, problem).parse();
}

std::string escapeInlineText(std::string_view text) {
    std::string out;
    std::size_t backslashes = 0;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t special = specialAt(text, i);
        if (special == 0) {
            backslashes = text[i] == '\\' ? backslashes + 1 : 0;
            out += text[i++];
            continue;
        }
        out.append(std::exchange(backslashes, 0) + 1, '\\');
        out += text.substr(i, special);
        i += special;
    }
    return out;
}

}  // namespace tarnova
