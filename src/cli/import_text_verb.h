// `tarnova import-text`: a file of text into a layout.

#pragma once

namespace CLI {
class App;
}

namespace tarnova {

struct verbContext;

/// Adds the verb, with help and an example, to the program.
void addImportTextVerb(CLI::App& app, verbContext& context);

}  // namespace tarnova
