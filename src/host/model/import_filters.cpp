#include <algorithm>
#include <utility>

#include "document/document.h"
#include "engine/toolkit/text_encoding.h"
#include "host/model/imported_text.h"

namespace tarnova {

namespace {

constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";

/// UTF-8, with or without its mark.
class PlainTextFilter final : public TextImportFilter {
 public:
    [[nodiscard]] std::string_view name() const override { return textImportFilters[2]; }
    [[nodiscard]] Answer takes(std::string_view bytes) const override {
        return isUtf8(bytes) ? Answer::maybe : Answer::no;
    }
    [[nodiscard]] bool read(std::string_view bytes, ImportedText& out) const override {
        if (bytes.starts_with(utf8Mark)) bytes.remove_prefix(utf8Mark.size());
        if (!isUtf8(bytes)) return false;
        out.hasLooks = false;
        const std::u32string text = utf8ToUtf32(bytes);
        std::u32string line;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] == U'\n' && i > 0 && text[i - 1] == U'\r') continue;
            if (text[i] == U'\n' || text[i] == U'\r') {
                out.paragraphs.push_back({{{std::exchange(line, {}), {}}}, {}, {}});
            } else {
                line += text[i];
            }
        }
        out.paragraphs.push_back({{{std::move(line), {}}}, {}, {}});
        return true;
    }
};

std::vector<std::unique_ptr<TextImportFilter>>& filterList() {
    static std::vector<std::unique_ptr<TextImportFilter>> filters = [] {
        std::vector<std::unique_ptr<TextImportFilter>> list;
        list.push_back(std::make_unique<PlainTextFilter>());
        return list;
    }();
    return filters;
}

}  // namespace

const std::vector<std::unique_ptr<TextImportFilter>>& importFilters() {
    return filterList();
}

void addImportFilter(std::unique_ptr<TextImportFilter> filter) {
    auto& filters = filterList();
    const auto known = std::find_if(filters.begin(), filters.end(),
                                    [&](const auto& other) { return other->name() == filter->name(); });
    if (known != filters.end()) {
        *known = std::move(filter);
    } else {
        filters.insert(filters.end() - 1, std::move(filter));
    }
}

}  // namespace tarnova
