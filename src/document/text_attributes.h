// What the engine sees of the attributes of a text run, and the tag attribute that makes a run a link.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace tarnova {

/// Classes of text attributes by which a run's list is asked. The tag attribute has a class for each store, so that
/// one store doesn't see the tags of the other.
enum class TextAttributeClass : std::uint8_t {
    kelvaneTag,
    tallyraTag,
    pointSize,
    baselineShift,
    kerning,
    position,
    underline,
};

/// Character position of the position attribute.
enum class TextPosition : std::uint8_t { normal, superscript, subscript };

class TextAttribute {
 public:
    virtual ~TextAttribute() = default;
    [[nodiscard]] virtual TextAttributeClass attributeClass() const = 0;
};

/// A number in points, or 0/1 for the underline, or a `TextPosition`.
class NumberAttribute final : public TextAttribute {
 public:
    NumberAttribute(TextAttributeClass itsClass, double itsValue) : kind(itsClass), number(itsValue) {}
    [[nodiscard]] TextAttributeClass attributeClass() const override { return kind; }
    [[nodiscard]] double value() const { return number; }

 private:
    TextAttributeClass kind;
    double number;
};

/// The attribute of a text link. It is shared, unchanged, by every run that carries it.
class TagAttribute final : public TextAttribute {
 public:
    /// Text for display and identity of the run's tag; `data` is the stored tag record.
    struct Content {
        std::string ownerName;        // the store: "Kelvane" or "Tallyra"
        std::string highlightMode;    // "Highlight"
        std::string highlightColour;  // "Green"
        std::string spare;            // "Spare"
        std::uint32_t tagId = 0;      // two adjacent runs with one tagId are one tag
        std::string data;             // bytes
    };

    TagAttribute(TextAttributeClass store, Content content) : kind(store), content_(std::move(content)) {}
    [[nodiscard]] TextAttributeClass attributeClass() const override { return kind; }
    [[nodiscard]] const std::string& ownerName() const { return content_.ownerName; }
    [[nodiscard]] const std::string& highlightMode() const { return content_.highlightMode; }
    [[nodiscard]] const std::string& highlightColour() const { return content_.highlightColour; }
    [[nodiscard]] const std::string& spare() const { return content_.spare; }
    /// The attribute's text for display: the four strings in one.
    [[nodiscard]] std::string label() const {
        return "<" + content_.ownerName + "_" + content_.highlightMode + "_" + content_.highlightColour + "_" +
               content_.spare + ">";
    }
    [[nodiscard]] std::uint32_t tagId() const { return content_.tagId; }
    [[nodiscard]] const std::string& data() const { return content_.data; }
    [[nodiscard]] const Content& content() const { return content_; }

 private:
    TextAttributeClass kind;
    Content content_;
};

/// The attributes of one run. Owned by the document, valid until the story changes.
class AttributeBossList {
 public:
    /// The run's own attribute of the class, or null.
    [[nodiscard]] virtual const TextAttribute* QueryByClassID(TextAttributeClass attributeClass) const = 0;

 protected:
    ~AttributeBossList() = default;
};

/// A run of equal attributes as seen from one position of it.
struct attributeRunRec {
    const AttributeBossList* attributes = nullptr;  // null: the position is outside the text
    std::int32_t length = 0;                        // characters from the position to the run's end
};

}  // namespace tarnova
