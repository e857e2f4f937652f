#include "cli/job_setup.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>

#include "data/key_index.h"
#include "data/quick_setup.h"
#include "definitions/ddf.h"
#include "definitions/definition_state.h"
#include "definitions/record_def_set.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/pstring.h"
#include "engine/toolkit/text_encoding.h"
#include "host/files/layout_file.h"
#include "host/text/composer.h"
#include "merge/keyword_links.h"
#include "tags/link_names.h"

namespace tarnova {
namespace {

bool fileExists(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored);
}

recordDefSetRec* newSetFor(const std::string& path) {
    Str255 setName;
    pstrFromView(setName, sizeof(setName), std::filesystem::path(path).filename().string());
    recordDefSetRec* set = nullptr;
    const errorWord error = recordDefSetNew(setName, path.c_str(), session().currentDefSet, set, 0);
    if (error != 0) sayError(fmt::format("{}: {}", path, takeErrorText(error)));
    return set;
}

recordDefRec* definitionAt(const recordDefSetRec& set, std::int32_t index) {
    recordDefRec* definition = nullptr;
    return recordDefAt(&set, index, definition, 0) == 0 ? definition : nullptr;
}

std::string definitionNames(const recordDefSetRec& set) {
    std::string names;
    for (std::int32_t i = 0; i < recordDefCount(&set); ++i) {
        names += fmt::format("{}\"{}\"", names.empty() ? "" : ", ", pstrView(definitionAt(set, i)->name));
    }
    return names;
}

recordDefSetRec* readDdf(const std::string& path) {
    recordDefSetRec* set = nullptr;
    ddfReadReport report;
    const errorWord error = ddfReadFile(path.c_str(), session().currentDefSet, set, &report, 0);
    if (error == 0) return set;
    const std::string reason = report.reason.empty() ? takeErrorText(error) : report.reason;
    sayError(report.line > 0 ? fmt::format("{}:{}: {}", path, report.line, reason)
                             : fmt::format("{}: {}", path, reason));
    return nullptr;
}

/// The definition that was asked for by name, or the only one.
recordDefRec* definitionOfDdf(const dataChoiceRec& choice, const recordDefSetRec& set) {
    if (choice.definitionName.empty()) {
        if (recordDefCount(&set) == 1) return definitionAt(set, 0);
        sayError(recordDefCount(&set) == 0 ? fmt::format("{}: the file holds no definition", choice.ddfPath)
                                           : fmt::format("{}: say which definition with --definition: {}",
                                                         choice.ddfPath, definitionNames(set)));
        return nullptr;
    }
    Str31 name;
    pstrFromView(name, sizeof(name), choice.definitionName);
    recordDefRec* definition = nullptr;
    if (findRecordDef(&set, name, definition, 0) != 0 || definition == nullptr) {
        sayError(fmt::format("{}: no definition \"{}\"; the file holds {}", choice.ddfPath, choice.definitionName,
                             definitionNames(set)));
    }
    return definition;
}

recordDefRec* definitionOfFirstLine(const dataChoiceRec& choice) {
    quickSetupAnalysis analysis;
    const errorWord error = quickSetupAnalyze(choice.dataPath.c_str(), analysis, 0);
    if (error == 0 && !analysis.cancelled) return defineData(choice.dataPath, analysis, choicesForPeople());
    sayError(fmt::format("{}: {}", choice.dataPath, error != 0 ? takeErrorText(error) : "not a text file"));
    return nullptr;
}

/// The link of a name; null when there is none. With `keywordsToo` one that is a keyword is made.
extractionRec* linkOf(recordDefRec& definition, std::string_view name, bool keywordsToo) {
    extractionRec asKeyword{};
    pstrFromView(asKeyword.name, sizeof(asKeyword.name), name);
    extractionRec* record = nullptr;
    if (findExtraction(&definition, asKeyword.name, record, 0) == 0 && record != nullptr) return record;
    if (!keywordsToo || !keywordOf(asKeyword)) return nullptr;
    return insertExtraction(*session().currentDefSet, definition, asKeyword.name, record, 0) == 0 ? record : nullptr;
}

}  // namespace

recordDefRec* defineData(const std::string& dataPath, const quickSetupAnalysis& analysis,
                         const quickSetupChoices& choices) {
    recordDefSetRec* const set = newSetFor(dataPath);
    if (set == nullptr) return nullptr;
    Str31 name;
    defaultDefName(name);
    recordDefRec* definition = nullptr;
    const errorWord error = quickSetupDefinition(*set, name, analysis, choices, definition, 0);
    if (error == 0) return definition;
    if (error != errFailed) sayError(fmt::format("{}: {}", dataPath, takeErrorText(error)));  // else it was shown
    return nullptr;
}

bool useDefinition(recordDefRec& definition, const std::string& dataPath, bool hasHeader) {
    const std::string indexPath = stableIndexPath(definition, dataPath);
    if (indexPath.empty() || !prepareIndexFile(indexPath, dataPath)) {
        sayError(fmt::format("{}: no index can be made for it in {}", dataPath, indexFolderPath()));
        return false;
    }
    pstrFromView(session().currentDefName, sizeof(Str255), pstrView(definition.name));
    definition.databasePath[indexPath.copy(definition.databasePath, sizeof definition.databasePath - 1)] = 0;
    appPrefs().hasHeaderRecord = hasHeader ? 1 : 0;
    return true;
}

quickSetupChoices choicesForPeople() {
    quickSetupChoices choices;
    choices.nodata = nodataDelete;
    choices.deleteline = deletelineWhenBlank;
    return choices;
}

std::string shownName(std::string_view text) {
    return isUtf8(text) ? std::string(text) : windows1252ToUtf8(text);
}

std::string takeErrorText(errorWord error) {
    auto& pending = session().pendingErrorParam;
    const std::string text = fillMarkers(errorString(error).view(), pending).bytes();
    pending[0] = 0;
    session().engineError = 0;
    return text.empty() ? fmt::format("failed with code {}", codeOfError(error)) : text;
}

void sayError(const std::string& text) {
    fmt::print(stderr, "tarnova: {}\n", text);
}

std::unique_ptr<DocumentModel> openLayoutForVerb(const std::string& path) {
    layoutError error;
    std::unique_ptr<DocumentModel> document = openLayout(path, error);
    if (!document) {
        sayError(error.line > 0 ? fmt::format("{}:{}: {}", path, error.line, error.message)
                                : fmt::format("{}: {}", path, error.message));
        return nullptr;
    }
    document->setComposer(makeComposer());
    return document;
}

bool selectData(const dataChoiceRec& choice) {
    if (!fileExists(choice.dataPath)) {
        sayError(fmt::format("{}: no such data file", choice.dataPath));
        return false;
    }
    recordDefRec* definition = nullptr;
    if (choice.ddfPath.empty()) {
        definition = definitionOfFirstLine(choice);
    } else if (const recordDefSetRec* const set = readDdf(choice.ddfPath)) {
        definition = definitionOfDdf(choice, *set);
    }
    return definition != nullptr && chooseKeyField(*definition, choice.keyField, choice.dataPath) &&
           useDefinition(*definition, choice.dataPath, choice.hasHeader);
}

bool chooseKeyField(recordDefRec& definition, const std::string& keyField, const std::string& dataPath) {
    if (keyField.empty()) return true;
    Str31 name;
    pstrFromView(name, sizeof(name), keyField);
    if (fieldNumberOf(definition, name) < 0) {
        sayError(fmt::format("{}: no field \"{}\"; `tarnova data inspect` lists the fields", dataPath, keyField));
        return false;
    }
    pstrCopy(definition.keyField, name);
    return true;
}

bool linksAreDefined(DocumentModel& layout, const std::string& layoutPath, const dataChoiceRec& choice) {
    if (reselectCurrentRecordDef(0) != 0 || session().currentRecordDef == nullptr) return false;
    recordDefRec* const definition = session().currentRecordDef;
    bool good = true;
    for (const std::string& name : linkNamesOf(layout.ref())) {
        if (linkOf(*definition, name, choice.ddfPath.empty()) != nullptr) continue;
        sayError(fmt::format("{}: the link \"{}\" isn't in the definition of {}", layoutPath, name,
                             choice.ddfPath.empty() ? choice.dataPath : choice.ddfPath));
        good = false;
    }
    if (good) return true;
    std::string names;
    for (std::uint16_t i = 0; i < extractionCount(*definition); ++i) {
        names += fmt::format("{}\"{}\"", names.empty() ? "" : ", ", pstrView(definition->extractions[i]->name));
    }
    sayError("it has the links " + names);
    return false;
}

void addDataOptions(CLI::App& verb, dataChoiceRec& choice) {
    verb.add_option("--data", choice.dataPath, "The data: delimited text with a record a line")->required();
    verb.add_option("--ddf", choice.ddfPath,
                    "A definition of the data; without it the data's first line gives the field names");
    verb.add_option("--definition", choice.definitionName, "Which definition of the DDF");
    verb.add_flag_callback(
        "--no-header", [&choice] { choice.hasHeader = false; },
        "The first line is a record and no header (with --ddf)");
}

}  // namespace tarnova
