#include "host/model/attribute_pool.h"

#include <algorithm>
#include <utility>

#include "host/model/hash.h"

namespace tarnova {

namespace {

std::size_t hashOf(const CharOverrides& o) {
    Hasher h;
    h.add(o.family).add(o.fontStyle).add(o.language).add(o.pointSize).add(o.leading).add(o.tracking).add(o.kerning);
    h.add(o.baselineShift).add(o.horizontalScale).add(o.verticalScale).add(o.color).add(o.pairKerning);
    return h.add(o.ligatures).add(o.underline).add(o.strikeThrough).add(o.position).add(o.caps).add(o.link).value();
}

std::size_t hashOf(const RunDescription& d) {
    return Hasher().add(d.characterStyle).add(hashOf(d.overrides)).add(d.tags[0].get()).add(d.tags[1].get()).value();
}

std::size_t hashOf(const ParagraphAttributes& p) {
    Hasher h;
    h.add(p.style).add(hashOf(p.charOverrides)).add(p.overrides.alignment).add(p.overrides.leftIndent);
    h.add(p.overrides.rightIndent).add(p.overrides.firstLineIndent).add(p.overrides.spaceBefore);
    return h.add(p.overrides.spaceAfter).add(p.overrides.tabs).add(p.overrides.keepLines).value();
}

std::size_t hashOf(TextAttributeClass store, const TagAttribute::Content& c) {
    Hasher h;
    h.add(store).add(c.tagId).add(c.data).add(c.ownerName).add(c.highlightMode).add(c.highlightColour).add(c.spare);
    return h.value();
}

bool equal(const TagAttribute::Content& a, const TagAttribute::Content& b) {
    return a.tagId == b.tagId && a.data == b.data && a.ownerName == b.ownerName && a.highlightMode == b.highlightMode &&
           a.highlightColour == b.highlightColour && a.spare == b.spare;
}

bool equal(const RunAttributes& list, const RunDescription& d) {
    return list.characterStyle == d.characterStyle && list.tags[0] == d.tags[0] && list.tags[1] == d.tags[1] &&
           list.overrides == d.overrides;
}

bool equal(const ParagraphAttributes& a, const ParagraphAttributes& b) {
    return a.style == b.style && a.overrides == b.overrides && a.charOverrides == b.charOverrides;
}

std::vector<std::shared_ptr<const NumberAttribute>> numbersOf(const CharOverrides& o) {
    std::vector<std::shared_ptr<const NumberAttribute>> out;
    const auto add = [&out](TextAttributeClass kind, double value) {
        out.push_back(std::make_shared<const NumberAttribute>(kind, value));
    };
    if (o.pointSize) add(TextAttributeClass::pointSize, *o.pointSize);
    if (o.baselineShift) add(TextAttributeClass::baselineShift, *o.baselineShift);
    if (o.kerning) add(TextAttributeClass::kerning, *o.kerning);
    if (o.position) add(TextAttributeClass::position, static_cast<double>(*o.position));
    if (o.underline) add(TextAttributeClass::underline, *o.underline ? 1 : 0);
    return out;
}

bool isTag(TextAttributeClass kind) {
    return kind == TextAttributeClass::kelvaneTag || kind == TextAttributeClass::tallyraTag;
}

std::size_t storeOf(TextAttributeClass kind) {
    return kind == TextAttributeClass::kelvaneTag ? 0 : 1;
}

/// Sets the override of a number attribute's class, or takes it away.
void setNumber(CharOverrides& o, TextAttributeClass kind, std::optional<double> value) {
    switch (kind) {
        case TextAttributeClass::pointSize:
            o.pointSize = value;
            break;
        case TextAttributeClass::baselineShift:
            o.baselineShift = value;
            break;
        case TextAttributeClass::kerning:
            o.kerning = value;
            break;
        case TextAttributeClass::position:
            o.position = value ? std::optional(static_cast<TextPosition>(std::clamp(*value, 0.0, 2.0))) : std::nullopt;
            break;
        case TextAttributeClass::underline:
            o.underline = value ? std::optional(*value != 0) : std::nullopt;
            break;
        case TextAttributeClass::kelvaneTag:
        case TextAttributeClass::tallyraTag:
            break;
    }
}

}  // namespace

const TextAttribute* RunAttributes::QueryByClassID(TextAttributeClass attributeClass) const {
    if (isTag(attributeClass)) return tags[storeOf(attributeClass)].get();
    for (const auto& number : numbers) {
        if (number->attributeClass() == attributeClass) return number.get();
    }
    return nullptr;
}

RunDescription AttributePool::describe(const RunAttributes& list) {
    return {list.characterStyle, list.overrides, {list.tags[0], list.tags[1]}};
}

const RunAttributes* AttributePool::run(const RunDescription& description) {
    const std::size_t hash = hashOf(description);
    const auto [first, last] = runs.equal_range(hash);
    for (auto at = first; at != last; ++at) {
        if (equal(*at->second, description)) return at->second.get();
    }
    auto made = std::make_unique<RunAttributes>();
    made->characterStyle = description.characterStyle;
    made->overrides = description.overrides;
    made->tags[0] = description.tags[0];
    made->tags[1] = description.tags[1];
    made->numbers = numbersOf(description.overrides);
    return runs.emplace(hash, std::move(made))->second.get();
}

const RunAttributes* AttributePool::with(const RunAttributes& list,
                                         const std::shared_ptr<const TextAttribute>& attribute) {
    RunDescription description = describe(list);
    const TextAttributeClass kind = attribute->attributeClass();
    if (isTag(kind)) {
        auto wanted = std::dynamic_pointer_cast<const TagAttribute>(attribute);
        description.tags[storeOf(kind)] = wanted == nullptr ? nullptr : tag(std::move(wanted));
    } else if (const auto* number = dynamic_cast<const NumberAttribute*>(attribute.get())) {
        setNumber(description.overrides, kind, number->value());
    }
    return run(description);
}

const RunAttributes* AttributePool::without(const RunAttributes& list, TextAttributeClass attributeClass) {
    RunDescription description = describe(list);
    if (isTag(attributeClass)) {
        description.tags[storeOf(attributeClass)].reset();
    } else {
        setNumber(description.overrides, attributeClass, std::nullopt);
    }
    return run(description);
}

const ParagraphAttributes* AttributePool::paragraph(const ParagraphAttributes& attributes) {
    const std::size_t hash = hashOf(attributes);
    const auto [first, last] = paragraphs.equal_range(hash);
    for (auto at = first; at != last; ++at) {
        if (equal(*at->second, attributes)) return at->second.get();
    }
    return paragraphs.emplace(hash, std::make_unique<const ParagraphAttributes>(attributes))->second.get();
}

std::shared_ptr<const TagAttribute> AttributePool::tag(std::shared_ptr<const TagAttribute> wanted) {
    const std::size_t hash = hashOf(wanted->attributeClass(), wanted->content());
    const auto [first, last] = tags.equal_range(hash);
    for (auto at = first; at != last; ++at) {
        const TagAttribute& known = *at->second;
        if (known.attributeClass() == wanted->attributeClass() && equal(known.content(), wanted->content())) {
            return at->second;
        }
    }
    return tags.emplace(hash, std::move(wanted))->second;
}

}  // namespace tarnova
