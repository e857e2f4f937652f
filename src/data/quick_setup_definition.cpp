#include "data/quick_setup.h"

#include <cstring>
#include <memory>

#include "data/record_parser.h"
#include "definitions/record_lists.h"
#include "engine/session/preferences.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/pm_string.h"

namespace tarnova {

namespace {

constexpr std::string_view temporaryLinkName = "__*Default*__";
constexpr std::int16_t setupPicturePosition = 2;

std::int16_t fileTypeOf(std::uint8_t delimiter) {
    switch (delimiter) {
        case '\t':
            return fileTypeTab;
        case ',':
            return fileTypeComma;
        case ' ':
            return fileTypeSpace;
        case ';':
            return fileTypeSemicolon;
        case '^':
            return fileTypeCaret;
        default:
            return fileTypeCustom;
    }
}

// A new setup starts from nothing but the definition's name, signature and rule data; keys are compared as they stand,
// as in every new definition.
void clearSettings(recordDefFixedRec& definition) {
    const auto cleared = std::make_unique<recordDefFixedRec>();
    cleared->signature = definition.signature;
    cleared->ruleSetData2 = definition.ruleSetData2;
    pstrCopy(cleared->name, definition.name);
    cleared->useKeyfieldCase = 1;
    definition = *cleared;
}

bool isSelected(const quickSetupChoices& choices, std::size_t field) {
    return choices.selected.empty() || (field < choices.selected.size() && choices.selected[field]);
}

void fillLink(extractionRec& link, const quickSetupField& field, const quickSetupChoices& choices) {
    link = appPrefs().linkDefaults;
    pstrSet(link.name, field.name);
    pstrSet(link.field, field.name);
    link.reservedName[0] = 0;
    link.type = field.isPicture ? linkTypePicture : linkTypeText;
    if (field.isPicture) {
        link.picturePosition = setupPicturePosition;
        link.vAlign = 0;
    }
    link.nodata = choices.nodata;
    pstrCopy(link.nodatastring, choices.nodatastring);
    link.deleteline = choices.deleteline;
    link.importFilter = importFilterNone;
}

errorWord addLink(recordDefSetRec& set, recordDefRec& definition, const quickSetupField& field,
                  const quickSetupChoices& choices, errorWord priorError) {
    Str31 name;
    pstrSet(name, field.name);
    extractionRec* link = nullptr;
    const errorWord err = insertExtraction(set, definition, name, link, priorError);
    if (err == 0 && link != nullptr) fillLink(*link, field, choices);
    return err;
}

// Takes the temporary link out again, once; `temporary` is null from then on.
void removeTemporary(recordDefSetRec& set, recordDefRec& definition, extractionRec*& temporary) {
    for (std::size_t i = 0; temporary != nullptr && i < extractionCount(definition); ++i) {
        if (definition.extractions[i] != temporary) continue;
        removeRecordAt<extractionRec>(set, definition, i);
        temporary = nullptr;
    }
}

// Removes the links from the last to the first, but for `kept`.
void removeLinks(recordDefSetRec& set, recordDefRec& definition, const extractionRec* kept) {
    for (std::size_t left = extractionCount(definition); left > 0; --left)
        if (definition.extractions[left - 1] != kept) removeRecordAt<extractionRec>(set, definition, left - 1);
}

// The list is never empty while its links are replaced: a temporary one stands in until the first new one is there.
errorWord replaceLinks(recordDefSetRec& set, recordDefRec& definition, const quickSetupAnalysis& analysis,
                       const quickSetupChoices& choices, errorWord priorError) {
    Str31 temporaryName, none;
    Str255 noneText;
    pstrSet(temporaryName, temporaryLinkName);
    pstrFromKey("kZavoDefaultNoneString", noneText);
    pstrCopyBounded(none, noneText, sizeof none);
    extractionRec* temporary = nullptr;
    errorWord err = insertExtraction(set, definition, temporaryName, temporary, priorError);
    if (temporary != nullptr) pstrCopy(temporary->field, none);
    if (err == 0) removeLinks(set, definition, temporary);

    for (std::size_t i = 0; i < analysis.fields.size() && err == 0; ++i) {
        if (!isSelected(choices, i)) continue;
        err = addLink(set, definition, analysis.fields[i], choices, err);
        if (err == 0) removeTemporary(set, definition, temporary);
    }
    if (err == 0) removeTemporary(set, definition, temporary);
    return err;
}

}  // namespace

void applyQuickSetup(recordDefFixedRec& definition, const quickSetupAnalysis& analysis,
                     const quickSetupChoices& choices) {
    if (choices.isNew) clearSettings(definition);
    std::memset(definition.fields, 0, sizeof definition.fields);
    for (std::size_t i = 0; i < analysis.fields.size(); ++i) {
        Str31 name;
        pstrSet(name, analysis.fields[i].name);
        insertFieldName(definition, static_cast<std::uint16_t>(i + 1), name);
    }
    pstrSet(definition.keyField, analysis.fields.empty() ? std::string_view{} : analysis.fields[0].name);
    definition.fileType = fileTypeOf(analysis.delimiter);
    pstrSet(definition.fDelimiter, std::string_view(reinterpret_cast<const char*>(&analysis.delimiter), 1));
    definition.textQualifier.enable = analysis.qualifier != 0 ? 1 : 0;
    if (analysis.qualifier != 0)
        pstrSet(definition.textQualifier.string,
                std::string_view(reinterpret_cast<const char*>(&analysis.qualifier), 1));
    definition.dataType = analysis.dataType;
    definition.osType = choices.detectLineEnd ? osTypeFromFile : analysis.osType;
    definition.vtTranslation.enable = 0;
    pstrSet(definition.vtTranslation.string, "\\n");
}

errorWord quickSetupDefinition(recordDefSetRec& set, const std::uint8_t* name, const quickSetupAnalysis& analysis,
                               const quickSetupChoices& choices, recordDefRec*& definition, errorWord priorError) {
    if (priorError != 0) return priorError;
    definition = nullptr;
    if (analysis.fields.empty()) {
        reportErrorKey("kZavoErrorNoFieldNamesDefined");
        return errFailed;
    }
    errorWord err = findRecordDef(&set, name, definition, 0);
    if (err == 0 && definition == nullptr) err = recordDefNew(set, name, definition, err);
    if (err != 0) return err;
    applyQuickSetup(*definition, analysis, choices);
    set.dirty = 1;
    return choices.isNew ? replaceLinks(set, *definition, analysis, choices, err) : err;
}

std::vector<std::size_t> unmappedExtractions(const recordDefRec& definition) {
    std::vector<std::size_t> unmapped;
    for (std::size_t i = 0; i < extractionCount(definition); ++i) {
        const std::uint8_t* const field = definition.extractions[i]->field;
        if (field[0] != 0 && fieldNumberOf(definition, field) < 0) unmapped.push_back(i);
    }
    return unmapped;
}

}  // namespace tarnova
