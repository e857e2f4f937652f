// What the verbs have in common that change the links of a layout: open, change, save.

#pragma once

#include <functional>
#include <string>

#include "host/model/document_model.h"

namespace CLI {
class App;
}

namespace tarnova {

struct verbContext;

struct tagsChangeRec {
    std::string layoutPath;
    std::string outputPath;
    bool price = false;  // links of price mode
};

/// Adds LAYOUT, --output and --price to a verb.
void addTagsChangeOptions(CLI::App& verb, tagsChangeRec& options);

/// Opens the layout with the engine in the mode that was asked for, changes it and writes it out. `change` gives false
/// after telling why on standard error, and then nothing is written.
void changeTags(const tagsChangeRec& options, verbContext& context, const std::function<bool(DocumentModel&)>& change);

/// Brings the session of an EngineClient into price mode.
void enterPriceMode();

/// "1 link", "2 links".
[[nodiscard]] std::string countOf(std::size_t count, const char* what);

// Each adds its verbs to those of `tags`.
void addTagsTextVerbs(CLI::App& tags, verbContext& context);
void addTagsSetVerbs(CLI::App& tags, verbContext& context);
void addTagsBulkVerbs(CLI::App& tags, verbContext& context);

}  // namespace tarnova
