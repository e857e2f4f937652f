#include "host/model/link_target.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

namespace tarnova {

namespace {

constexpr std::string_view pagePrefix = "#page=";
constexpr std::string_view schemes[] = {"http:", "https:", "mailto:", "tel:"};
constexpr std::string_view notInUris = " \"<>\\^`{|}";

bool beginsWithScheme(std::string_view text, std::string_view scheme) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
    return text.size() > scheme.size() &&
           std::equal(scheme.begin(), scheme.end(), text.begin(), [&](char s, char t) { return s == lower(t); });
}

bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

std::string percentEncoded(std::string_view text) {
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80 && notInUris.find(c) == std::string_view::npos) {
            out += c;
        } else {
            out += fmt::format("%{:02X}", byte);
        }
    }
    return out;
}

std::optional<LinkTarget> readPage(std::string_view digits, std::string& problem) {
    LinkTarget target;
    const char* const limit = digits.data() + digits.size();
    const auto [behind, error] = std::from_chars(digits.data(), limit, target.pageNumber);
    if (error == std::errc() && behind == limit && target.pageNumber > 0) return target;
    problem = "must name a page by its number from 1, as in \"#page=3\"";
    return std::nullopt;
}

}  // namespace

std::optional<LinkTarget> readLinkTarget(std::string_view text, std::string& problem) {
    if (text.size() > linkBytesLimit) {
        problem = fmt::format("must have at most {} bytes", linkBytesLimit);
        return std::nullopt;
    }
    if (std::any_of(text.begin(), text.end(), isControl)) {
        problem = "can't hold control characters";
        return std::nullopt;
    }
    if (text.starts_with(pagePrefix)) return readPage(text.substr(pagePrefix.size()), problem);
    const auto fits = [text](std::string_view scheme) { return beginsWithScheme(text, scheme); };
    if (std::any_of(std::begin(schemes), std::end(schemes), fits)) return LinkTarget{percentEncoded(text), 0};
    problem = "must begin with \"http:\", \"https:\", \"mailto:\" or \"tel:\", or name a page as in \"#page=3\"";
    return std::nullopt;
}

}  // namespace tarnova
