// Links written inside text: "Dear {{Name}}", "{{2:Name|shown text}}" and the long form "<!$2;Name;;;:shown text>".

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/files/tag_fields.h"

namespace tarnova {

struct InlinePiece {
    enum class Kind { text, link } kind = Kind::text;
    std::string text;  // UTF-8; "\r" ends a paragraph, "\n" is a forced line break
    TagFields tag;     // of a link
};

/// Takes a text apart. A line feed (or CR LF, or CR) ends a paragraph. A backslash in front of "{{", "<!$", "[!$" or a
/// line feed takes its meaning away: the marks are plain text then, the line feed a forced line break; backslashes in
/// front of that one come in pairs. Everywhere else a backslash is itself. When a link is wrong, `problem` says what to
/// do.
[[nodiscard]] std::vector<InlinePiece> parseInlineText(std::string_view text, std::string& problem);

/// The text for which `parseInlineText` gives `text`, without returns, back as one piece.
[[nodiscard]] std::string escapeInlineText(std::string_view text);

}  // namespace tarnova
