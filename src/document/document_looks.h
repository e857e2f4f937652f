// What some documents tell and take of looks, by name: colours, styles and formats of text, strokes and names of items.
// The engine needs it only where it writes looks down or reads marks that were made as looks.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "document/document.h"

namespace tarnova {

/// The look in force at a character, whatever says so: its run, a style or the document.
struct textLookRec {
    std::string paragraphStyle;
    std::string characterStyle;  // `noCharacterStyle` without one
    std::string family;
    std::string fontStyle;
    std::string swatch;
    double pointSize = 0;
    std::int32_t alignment = 0;  // of the paragraph: left, centre, right, justified fully, left, centre, right: 0 to 6
};
inline constexpr std::string_view noParagraphStyle = "[No paragraph style]";
inline constexpr std::string_view noCharacterStyle = "[No character style]";

struct strokeLookRec {
    std::string swatch;
    double weight = 0;  // points
    double tint = 0;    // 0 to 1
};

/// Formats that a paragraph and a run have of their own, beside their styles. What they are is the document's business.
class LocalFormats {
 public:
    virtual ~LocalFormats() = default;
    [[nodiscard]] virtual bool empty() const = 0;
};

class DocumentLooks {
 public:
    /// Gives text a colour by the name of its swatch; errFailed when there is none of that name.
    [[nodiscard]] virtual errorWord applySwatch(UID story, std::int32_t start, std::int32_t count,
                                                std::string_view swatch) = 0;
    /// Adds a process colour, C M Y K from 0 to 1, unless a swatch has the name. A swatch is no step of undo: it stays,
    /// also in the document's copies.
    virtual void ensureSwatch(std::string_view swatch, const double (&cmyk)[4]) = 0;
    /// Empty names for a position outside of the text.
    [[nodiscard]] virtual textLookRec textLookAt(UID story, std::int32_t position) const = 0;
    /// What the paragraph and the run at a position set of their own, without font, font style, point size, colour and
    /// where the text leads; of the paragraph without the character position as well. Null outside of the text.
    [[nodiscard]] virtual std::shared_ptr<const LocalFormats> localFormatsAt(UID story,
                                                                             std::int32_t position) const = 0;
    /// Lays such formats over a range, whose own stay where these say nothing.
    [[nodiscard]] virtual errorWord applyLocalFormats(UID story, std::int32_t start, std::int32_t count,
                                                      const LocalFormats& formats) = 0;
    [[nodiscard]] virtual strokeLookRec strokeLook(UID item) const = 0;
    [[nodiscard]] virtual std::string itemName(UID item) const = 0;

 protected:
    ~DocumentLooks() = default;
};

/// Null for a document that knows nothing of looks.
[[nodiscard]] DocumentLooks* looksOf(Document& document);

}  // namespace tarnova
