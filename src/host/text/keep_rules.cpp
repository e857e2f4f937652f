#include "host/text/keep_rules.h"

#include <algorithm>

namespace tarnova {

namespace {

enum class Demands : std::uint8_t { all, endsOnly };

class ColumnEnd {
 public:
    ColumnEnd(const ComposeInput& input, const std::vector<LineMark>& lines, const LineMark& next,
              std::int32_t linesLeft)
        : input_(input), lines_(lines), next_(next), linesLeft_(linesLeft) {}

    /// The column may end in front of its line `at`, which may be the one that has no room.
    [[nodiscard]] bool mayEndAt(std::size_t at, Demands demands) const {
        const LineMark& line = at < lines_.size() ? lines_[at] : next_;
        if (line.continuesLine) return false;
        const ParaFormat& format = formatOf(line);
        if (demands == Demands::all && isKeptWithLineAbove(at, line)) return false;
        if (line.line == 0 || format.keepLines == KeepLines::none) return true;
        if (format.keepLines == KeepLines::all) return demands == Demands::endsOnly;
        return line.line >= format.keepFirstLines && lineCountOf(line) - line.line >= format.keepLastLines;
    }

 private:
    [[nodiscard]] const ParaFormat& formatOf(const LineMark& line) const {
        return *input_.paragraphs[line.paragraph].format;
    }

    /// The paragraph in front, which ends in this column, wants to have the line in it too.
    [[nodiscard]] bool isKeptWithLineAbove(std::size_t at, const LineMark& line) const {
        if (line.paragraph == 0) return false;
        const auto isOfParagraphAbove = [&](const LineMark& other) { return other.paragraph + 1 == line.paragraph; };
        const auto limit = lines_.begin() + static_cast<std::ptrdiff_t>(at);
        return std::any_of(lines_.begin(), limit, isOfParagraphAbove) &&
               line.line < input_.paragraphs[line.paragraph - 1].format->keepWithNext;
    }

    [[nodiscard]] std::int32_t lineCountOf(const LineMark& line) const {
        if (line.paragraph == next_.paragraph) return next_.line + linesLeft_;
        const auto isBehind = [&](const LineMark& other) { return other.paragraph > line.paragraph; };
        const auto behind = std::find_if(lines_.begin(), lines_.end(), isBehind);
        return (behind - 1)->line + 1;
    }

    const ComposeInput& input_;
    const std::vector<LineMark>& lines_;
    const LineMark& next_;
    std::int32_t linesLeft_;
};

}  // namespace

std::size_t linesThatStay(const ComposeInput& input, const std::vector<LineMark>& lines, const LineMark& next,
                          std::int32_t linesLeft) {
    const ColumnEnd end(input, lines, next, linesLeft);
    for (const Demands demands : {Demands::all, Demands::endsOnly})
        for (std::size_t at = lines.size(); at > 0; --at)
            if (end.mayEndAt(at, demands)) return at;
    return lines.size();
}

}  // namespace tarnova
