// `tarnova ddf`: looking at, laying out and making definition files.

#pragma once

#include <cstdint>
#include <string>

namespace CLI {
class App;
}

namespace tarnova {

struct verbContext;

struct ddfVerbRec {
    std::string path;            // what is read
    std::string outputPath;      // empty: standard output
    std::string definitionName;  // of a new definition; empty: the default name
    bool json = false;
};

// Each gives the program's exit status, after telling on standard error what went wrong.

/// Prints what a DDF holds, and what in it has no effect.
[[nodiscard]] int checkDdf(const ddfVerbRec& options);

/// Writes a DDF in our own layout.
[[nodiscard]] int formatDdf(const ddfVerbRec& options);

/// Makes a DDF from the first line of a data file.
[[nodiscard]] int makeDdfFromData(const ddfVerbRec& options);

/// Adds the verbs that work on the user's own definitions (ddf_store_verb.cpp).
void addDdfStoreVerbs(CLI::App& ddf, verbContext& context);

}  // namespace tarnova
