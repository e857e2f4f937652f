// What an import filter makes of a file or a value: text with looks that name styles and colours. The document looks
// the names up, or takes over what the text defines.

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/model/format.h"

namespace tarnova {

/// What text says of its look. A colour is the name of a swatch, which stands beside the overrides.
struct ImportedLook {
    std::string characterStyle;  // empty: none
    CharOverrides overrides;
    std::optional<std::string> color;
    friend bool operator==(const ImportedLook&, const ImportedLook&) = default;
};

struct ImportedRun {
    std::u32string text;  // without returns
    ImportedLook look;
};

struct ImportedParagraph {
    std::vector<ImportedRun> runs;
    std::optional<std::string> style;  // absent: that of the place
    ParaOverrides overrides;
};

struct ImportedStyle {
    std::string name;
    std::string basedOn;  // empty: nothing
    ImportedLook look;    // its character style isn't used
    ParaOverrides paragraph;
    bool ofCharacters = false;
};

/// A text. Its last paragraph isn't ended: what stands behind the place goes on in it.
struct ImportedText {
    std::vector<ImportedParagraph> paragraphs;
    bool hasLooks = true;               // false: the text looks like what it takes the place of
    bool keepsLocalLooks = false;       // looks are laid over those of the place, else they take their place
    std::vector<Swatch> swatches;       // those that the document hasn't are added,
    std::vector<ImportedStyle> styles;  // and so are styles
};

class TextImportFilter {
 public:
    /// How sure a filter is that it reads some bytes.
    enum class Answer { no, maybe, yes };

    virtual ~TextImportFilter() = default;
    [[nodiscard]] virtual std::string_view name() const = 0;
    [[nodiscard]] virtual Answer takes(std::string_view bytes) const = 0;
    /// False for bytes that it can't read; `out` is then of no use.
    [[nodiscard]] virtual bool read(std::string_view bytes, ImportedText& out) const = 0;
};

/// The filters in use, in the order in which they are asked. The plain text filter is always there, as the last.
[[nodiscard]] const std::vector<std::unique_ptr<TextImportFilter>>& importFilters();
/// Puts a filter in front of the plain text filter, behind those that were added before; one of its name is replaced.
void addImportFilter(std::unique_ptr<TextImportFilter> filter);

}  // namespace tarnova
