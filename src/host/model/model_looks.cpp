// Looks by name, and the formats that text has of its own.

#include <algorithm>

#include "host/model/model_document.h"
#include "host/model/override_layers.h"
#include "host/model/story_text.h"

namespace tarnova {

namespace {

class ModelFormats final : public LocalFormats {
 public:
    [[nodiscard]] bool empty() const override {
        return paragraph == ParaOverrides{} && ofParagraph == CharOverrides{} && ofRun == CharOverrides{};
    }
    ParaOverrides paragraph;
    CharOverrides ofParagraph;
    CharOverrides ofRun;
};

/// The overrides without those that imported text brings itself, and without where its text leads.
CharOverrides withoutFont(CharOverrides overrides) {
    overrides.family.reset();
    overrides.fontStyle.reset();
    overrides.pointSize.reset();
    overrides.color.reset();
    overrides.link.reset();
    return overrides;
}

template <typename Named>
std::string nameAt(const std::vector<Named>& list, std::int32_t index, std::string_view otherwise) {
    const bool isThere = index >= 0 && static_cast<std::size_t>(index) < list.size();
    return isThere ? list[static_cast<std::size_t>(index)].name : std::string(otherwise);
}

std::int32_t numberOf(Alignment alignment) {
    switch (alignment) {
        case Alignment::left:
            return 0;
        case Alignment::center:
            return 1;
        case Alignment::right:
            return 2;
        case Alignment::justifyAll:
            return 3;
        case Alignment::justifyLeft:
            return 4;
        case Alignment::justifyCenter:
            return 5;
        case Alignment::justifyRight:
            return 6;
    }
    return 0;
}

}  // namespace

errorWord ModelDocument::applySwatch(UID uid, std::int32_t start, std::int32_t count, std::string_view swatch) {
    const auto at =
        std::find_if(swatches().begin(), swatches().end(), [&](const Swatch& s) { return s.name == swatch; });
    if (at == swatches().end() || !holdsRange(uid, start, count)) return errFailed;
    if (count == 0) return 0;
    const Paint paint{static_cast<std::int32_t>(at - swatches().begin()), 1};
    Command command(*this, "Apply Attribute");
    changeRuns(*changeableText(uid)->content, start, count, [&](const RunAttributes& list) {
        RunDescription description = AttributePool::describe(list);
        description.overrides.color = paint;
        return formats->attributes.run(description);
    });
    return 0;
}

void ModelDocument::ensureSwatch(std::string_view swatch, const double (&cmyk)[4]) {
    std::vector<Swatch>& list = formats->swatches;
    if (std::any_of(list.begin(), list.end(), [&](const Swatch& s) { return s.name == swatch; })) return;
    Swatch added{std::string(swatch), Swatch::Space::cmyk};
    std::copy(std::begin(cmyk), std::end(cmyk), std::begin(added.values));
    list.push_back(std::move(added));
    noteChange();
}

textLookRec ModelDocument::textLookAt(UID uid, std::int32_t position) const {
    textLookRec look;
    if (!holdsRange(uid, position, 1)) return look;
    StoryReader reader(*story(uid)->content);
    const ParagraphAttributes& paragraph = *reader.paragraphAt(position).attributes;
    const RunAttributes& run = *reader.runAt(position).attributes;
    const CharFormat& format = *resolveChar(paragraph, run);
    look.paragraphStyle = nameAt(paragraphStyles(), paragraph.style, noParagraphStyle);
    look.characterStyle = nameAt(characterStyles(), run.characterStyle, noCharacterStyle);
    look.family = format.family;
    look.fontStyle = format.fontStyle;
    look.swatch = nameAt(swatches(), format.color.swatch, {});
    look.pointSize = format.pointSize;
    look.alignment = numberOf(resolvePara(paragraph)->alignment);
    return look;
}

std::shared_ptr<const LocalFormats> ModelDocument::localFormatsAt(UID uid, std::int32_t position) const {
    if (!holdsRange(uid, position, 1)) return nullptr;
    StoryReader reader(*story(uid)->content);
    const ParagraphAttributes& paragraph = *reader.paragraphAt(position).attributes;
    const auto own = std::make_shared<ModelFormats>();
    own->paragraph = paragraph.overrides;
    own->ofParagraph = withoutFont(paragraph.charOverrides);
    own->ofParagraph.position.reset();
    own->ofRun = withoutFont(reader.runAt(position).attributes->overrides);
    return own;
}

errorWord ModelDocument::applyLocalFormats(UID uid, std::int32_t start, std::int32_t count,
                                           const LocalFormats& wanted) {
    const auto* own = dynamic_cast<const ModelFormats*>(&wanted);
    if (own == nullptr || !holdsRange(uid, start, count)) return errFailed;
    if (count == 0 || own->empty()) return 0;
    Command command(*this, "Apply Attribute");
    StoryText& content = *changeableText(uid)->content;
    changeParagraphs(content, start, count, [&](const ParagraphAttributes& list) {
        ParagraphAttributes changed = list;
        layOver(own->paragraph, changed.overrides);
        layOver(own->ofParagraph, changed.charOverrides);
        return formats->attributes.paragraph(changed);
    });
    changeRuns(content, start, count, [&](const RunAttributes& list) {
        RunDescription description = AttributePool::describe(list);
        layOver(own->ofRun, description.overrides);
        return formats->attributes.run(description);
    });
    return 0;
}

strokeLookRec ModelDocument::strokeLook(UID uid) const {
    const PageItem* const found = item(uid);
    if (found == nullptr || found->shape == nullptr) return {};
    const Stroke& stroke = found->shape->stroke;
    return {nameAt(swatches(), stroke.paint.swatch, {}), stroke.weight, stroke.paint.tint};
}

std::string ModelDocument::itemName(UID uid) const {
    const PageItem* const found = item(uid);
    return found == nullptr ? std::string() : found->name;
}

}  // namespace tarnova
