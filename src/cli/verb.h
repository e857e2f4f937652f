// What the verbs of the program share: exit statuses, the answer's form, and how a failure is told.

#pragma once

#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace tarnova {

inline constexpr int exitDone = 0;
inline constexpr int exitFailed = 1;  // the run failed
inline constexpr int exitUsage = 2;   // wrong usage

/// One for the whole program; each verb's callback leaves its outcome here.
struct verbContext {
    int exitStatus = exitDone;
};

/// Writes "tarnova: <text>" to standard error and sets the status.
void failVerb(verbContext& context, std::string_view text, int status = exitFailed);

/// The `--json` flag, worded the same for each verb that answers something.
void addJsonFlag(CLI::App& verb, bool& json);

// Each adds its verbs (with help and an example) to the program.
void addMergeVerb(CLI::App& app, verbContext& context);
void addPriceVerb(CLI::App& app, verbContext& context);
void addProofVerb(CLI::App& app, verbContext& context);
void addRenderVerb(CLI::App& app, verbContext& context);
void addDataVerb(CLI::App& app, verbContext& context);
void addDdfVerb(CLI::App& app, verbContext& context);
void addTagsVerb(CLI::App& app, verbContext& context);
void addDescribeVerb(CLI::App& app, verbContext& context);
void addExecVerb(CLI::App& app, verbContext& context);

}  // namespace tarnova
