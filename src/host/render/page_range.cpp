#include "host/render/page_range.h"

#include <fmt/format.h>

#include <charconv>

namespace tarnova {

namespace {

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

/// A page number of 1 to `pageCount`; else 0, with the reason in `error`.
std::int32_t pageNumber(std::string_view text, std::int32_t pageCount, std::string& error) {
    const std::string_view digits = trimmed(text);
    std::int32_t number = 0;
    const auto [end, problem] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    const bool isNumber = !digits.empty() && digits.front() != '-' && end == digits.data() + digits.size();
    if (!isNumber || (problem != std::errc() && problem != std::errc::result_out_of_range)) {
        error = fmt::format("\"{}\" is no page number; write pages like 1-3,5", digits);
        return 0;
    }
    if (problem != std::errc() || number < 1 || number > pageCount) {
        error = fmt::format("there is no page {}; the document has pages 1 to {}", digits, pageCount);
        return 0;
    }
    return number;
}

/// Reads "3", "1-3" or "4-". False, with the reason in `error`.
bool readPart(std::string_view part, std::int32_t pageCount, std::int32_t& first, std::int32_t& last,
              std::string& error) {
    const std::size_t dash = part.find('-');
    first = pageNumber(part.substr(0, dash), pageCount, error);
    if (first == 0) return false;
    last = first;
    if (dash == std::string_view::npos) return true;
    const std::string_view behind = trimmed(part.substr(dash + 1));
    last = behind.empty() ? pageCount : pageNumber(behind, pageCount, error);
    if (last == 0) return false;
    if (last < first) error = fmt::format("\"{}\" runs backward; the smaller number comes first", trimmed(part));
    return last >= first;
}

}  // namespace

bool parsePageRange(std::string_view text, std::int32_t pageCount, std::vector<std::int32_t>& pages,
                    std::string& error) {
    pages.clear();
    std::vector<bool> wanted(static_cast<std::size_t>(pageCount > 0 ? pageCount : 0));
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t comma = std::min(text.find(',', start), text.size());
        std::int32_t first = 0, last = 0;
        if (!readPart(text.substr(start, comma - start), pageCount, first, last, error)) return false;
        for (std::int32_t number = first; number <= last; ++number)
            wanted[static_cast<std::size_t>(number - 1)] = true;
        start = comma + 1;
    }
    for (std::int32_t index = 0; index < pageCount; ++index) {
        if (wanted[static_cast<std::size_t>(index)]) pages.push_back(index);
    }
    return true;
}

}  // namespace tarnova
