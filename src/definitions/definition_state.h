// The definition that the session works with. The session's own record derives from definitionStateRec and installs
// itself, so that this folder needs to know nothing else of a session.

#pragma once

#include <cstdint>

#include "definitions/document_settings.h"
#include "definitions/record_def_set.h"

namespace tarnova {

struct definitionStateRec {
    recordDefSetRec* currentDefSet;        // the loaded set, head of the session's list of sets; null: none loaded
    recordDefRec* currentRecordDef;        // into currentDefSet; found anew by currentDefName before each exchange run
    Str255 currentDefName;                 // selects currentRecordDef
    std::uint8_t importingDefinitions;     // 1: reading a DDF ignores its databasePath statements
    documentSettingsRec documentSettings;  // image of those of the document in front
    /// Hands a definition's rule data to the rules module, or with null takes all rules from it; null without one.
    void (*putDefinitionRules)(const recordDefRec* definition);
};

/// The installed state, or a built-in one when nothing is installed.
[[nodiscard]] definitionStateRec& definitionState();

/// Makes `state` the one that definitionState gives; null puts the built-in one back. `state` stays the caller's and
/// must outlive its installation.
void installDefinitionState(definitionStateRec* state);

/// Name of the default record definition (message 18) into `name`, which has room for 31 characters.
void defaultDefName(std::uint8_t* name);

/// Sets currentRecordDef to the definition of currentDefSet that currentDefName names; null when there is none.
[[nodiscard]] errorWord reselectCurrentRecordDef(errorWord priorError);

}  // namespace tarnova
