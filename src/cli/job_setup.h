// What the verbs that run a job have in common: opening a layout, and making a definition current for a data file.

#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "data/quick_setup.h"
#include "engine/toolkit/types.h"
#include "host/model/document_model.h"

namespace CLI {
class App;
}

namespace tarnova {

/// Opens a layout with a composer in place. Null after telling why on standard error.
[[nodiscard]] std::unique_ptr<DocumentModel> openLayoutForVerb(const std::string& path);

struct dataChoiceRec {
    std::string dataPath;
    std::string ddfPath;         // empty: the definition comes from the data's first line
    std::string definitionName;  // empty: the only one of the DDF
    std::string keyField;        // the field that holds a record's key; empty: the definition's own
    bool hasHeader = true;
};

/// Makes the definition for a data file the session's current one, with an index path of its own. False after telling
/// why on standard error.
[[nodiscard]] bool selectData(const dataChoiceRec& choice);

/// Makes a definition of its own set for a data file that was analysed. Null after telling why on standard error.
[[nodiscard]] recordDefRec* defineData(const std::string& dataPath, const quickSetupAnalysis& analysis,
                                       const quickSetupChoices& choices);

/// Makes a definition of the session's current set the current one for a data file, with an index path of its own.
/// False after telling why on standard error.
[[nodiscard]] bool useDefinition(recordDefRec& definition, const std::string& dataPath, bool hasHeader);

/// False after telling that the definition has no such field, and `dataPath` with it. An empty name changes nothing.
[[nodiscard]] bool chooseKeyField(recordDefRec& definition, const std::string& keyField, const std::string& dataPath);

/// False after telling of links of the layout whose name the current definition doesn't have: such a link would end a
/// run at its first page. A definition that was made of the data's first line gets the links whose names are keywords.
[[nodiscard]] bool linksAreDefined(DocumentModel& layout, const std::string& layoutPath, const dataChoiceRec& choice);

/// Adds --data, --ddf, --definition and --no-header to a verb.
void addDataOptions(CLI::App& verb, dataChoiceRec& choice);

/// How links are made of a data file's first line: an empty field takes its link's text away and, when nothing else
/// stands there, its line, which is what a person expects of an address.
[[nodiscard]] quickSetupChoices choicesForPeople();

/// A name of a stored record as UTF-8: old records may hold either encoding.
[[nodiscard]] std::string shownName(std::string_view text);

/// Text of an error for people, its parameter filled in; the session's error and parameter are cleared.
[[nodiscard]] std::string takeErrorText(errorWord error);

/// Writes "tarnova: <text>" to standard error.
void sayError(const std::string& text);

}  // namespace tarnova
