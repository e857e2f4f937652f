// Importing text through a filter: the text takes the place of a range, and its looks find styles and swatches by name.

#include <algorithm>

#include "engine/toolkit/files.h"
#include "host/model/imported_text.h"
#include "host/model/model_document.h"
#include "host/model/override_layers.h"
#include "host/model/story_text.h"

namespace tarnova {

namespace {

constexpr std::size_t importBytesLimit = std::size_t{1} << 28;

template <typename Named>
std::int32_t placeOf(const std::vector<Named>& list, std::string_view name) {
    const auto at = std::find_if(list.begin(), list.end(), [name](const Named& entry) { return entry.name == name; });
    return at == list.end() ? -1 : static_cast<std::int32_t>(at - list.begin());
}

CharOverrides overridesOf(const ImportedLook& look, const DocumentFormats& formats) {
    CharOverrides overrides = look.overrides;
    const std::int32_t swatch = look.color ? placeOf(formats.swatches, *look.color) : -1;
    if (swatch >= 0) overrides.color = Paint{swatch, overrides.color ? overrides.color->tint : 1};
    if (swatch < 0) overrides.color.reset();
    return overrides;
}

/// Adds what the text defines and the document hasn't. A style may be based on one that was there or stands in front.
void takeDefinitions(const ImportedText& text, DocumentFormats& formats) {
    for (const Swatch& swatch : text.swatches)
        if (placeOf(formats.swatches, swatch.name) < 0) formats.swatches.push_back(swatch);
    for (const ImportedStyle& style : text.styles) {
        if (style.ofCharacters && placeOf(formats.characterStyles, style.name) < 0) {
            formats.characterStyles.push_back(
                {style.name, placeOf(formats.characterStyles, style.basedOn), overridesOf(style.look, formats)});
        } else if (!style.ofCharacters && placeOf(formats.paragraphStyles, style.name) < 0) {
            formats.paragraphStyles.push_back({style.name, placeOf(formats.paragraphStyles, style.basedOn),
                                               overridesOf(style.look, formats), style.paragraph});
        }
    }
}

std::u32string charactersOf(const ImportedText& text) {
    std::u32string all;
    for (std::size_t i = 0; i < text.paragraphs.size(); ++i) {
        if (i > 0) all += returnCharacter;
        for (const ImportedRun& run : text.paragraphs[i].runs)
            all += run.text;
    }
    return all;
}

/// Lays the looks of a text over its characters, which stand in the story already.
class LookLayer {
 public:
    LookLayer(StoryText& itsContent, DocumentFormats& itsFormats, bool itsKeepsLocal)
        : content(itsContent), formats(itsFormats), keepsLocal(itsKeepsLocal) {}

    void lay(const ImportedText& text, std::int32_t start) {
        std::int32_t at = start;
        for (std::size_t i = 0; i < text.paragraphs.size(); ++i) {
            const ImportedParagraph& paragraph = text.paragraphs[i];
            const std::int32_t paragraphStart = at;
            for (const ImportedRun& run : paragraph.runs)
                at += layRun(run.look, at, static_cast<std::int32_t>(run.text.size()));
            const bool hasReturn = i + 1 < text.paragraphs.size();
            if (hasReturn && !paragraph.runs.empty()) layRun(paragraph.runs.back().look, at, 1);
            if (hasReturn) ++at;
            if (at > paragraphStart) layParagraph(paragraph, paragraphStart, at - paragraphStart);
        }
    }

 private:
    std::int32_t layRun(const ImportedLook& look, std::int32_t start, std::int32_t count) {
        const CharOverrides overrides = overridesOf(look, formats);
        const std::int32_t style = placeOf(formats.characterStyles, look.characterStyle);
        changeRuns(content, start, count, [&](const RunAttributes& list) {
            RunDescription description = AttributePool::describe(list);
            if (!keepsLocal) description.overrides = {};
            if (!keepsLocal || style >= 0) description.characterStyle = style;
            layOver(overrides, description.overrides);
            return formats.attributes.run(description);
        });
        return count;
    }

    /// A paragraph that changes its style loses its own formats; within its style it keeps them.
    void layParagraph(const ImportedParagraph& paragraph, std::int32_t start, std::int32_t count) {
        const std::int32_t style = paragraph.style ? placeOf(formats.paragraphStyles, *paragraph.style) : -1;
        changeParagraphs(content, start, count, [&](const ParagraphAttributes& list) {
            ParagraphAttributes changed = list;
            if (style >= 0 && style != list.style) changed = {style, {}, {}};
            layOver(paragraph.overrides, changed.overrides);
            return formats.attributes.paragraph(changed);
        });
    }

    StoryText& content;
    DocumentFormats& formats;
    bool keepsLocal;
};

}  // namespace

errorWord ModelDocument::importText(UID uid, std::int32_t start, std::int32_t count, const textSourceRec& source,
                                    std::string_view filter, std::int32_t& outLength) {
    outLength = 0;
    const auto& filters = importFilters();
    const auto found =
        std::find_if(filters.begin(), filters.end(), [&](const auto& known) { return known->name() == filter; });
    std::string fileBytes;
    if (found == filters.end()) return errImportFilter;
    if (!source.filePath.empty() && fileReadWhole(source.filePath.c_str(), fileBytes, importBytesLimit, 0) != 0) {
        return errImportFilter;
    }
    ImportedText text;
    if (!(*found)->read(source.filePath.empty() ? source.bytes : std::string_view(fileBytes), text)) {
        return errImportFilter;
    }
    const Story* const target = story(uid);
    if (target == nullptr || !mayReplace(*target->content, start, count)) return errFailed;
    const std::u32string characters = storyCharacters(charactersOf(text), true);
    Command command(*this, "Import Text");
    const errorWord error = textReplace(uid, start, count, characters, true);
    if (error != 0) return error;
    outLength = static_cast<std::int32_t>(characters.size());
    if (!text.hasLooks || characters.empty()) return 0;
    takeDefinitions(text, *formats);
    LookLayer(*changeableText(uid)->content, *formats, text.keepsLocalLooks).lay(text, start);
    return 0;
}

std::string ModelDocument::importFilterFor(const std::string& filePath) const {
    std::string bytes;
    if (fileReadWhole(filePath.c_str(), bytes, importBytesLimit, 0) != 0) return {};
    const TextImportFilter* best = nullptr;
    for (const auto& filter : importFilters()) {
        const TextImportFilter::Answer answer = filter->takes(bytes);
        if (answer == TextImportFilter::Answer::yes) return std::string(filter->name());
        if (answer == TextImportFilter::Answer::maybe && best == nullptr) best = filter.get();
    }
    return best == nullptr ? std::string() : std::string(best->name());
}

}  // namespace tarnova
