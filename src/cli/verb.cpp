#include "cli/verb.h"

#include <CLI/CLI.hpp>
#include <string>

#include "cli/job_setup.h"

namespace tarnova {

void failVerb(verbContext& context, std::string_view text, int status) {
    sayError(std::string(text));
    context.exitStatus = status;
}

void addJsonFlag(CLI::App& verb, bool& json) {
    verb.add_flag("--json", json, "Answer as one JSON object on standard output");
}

}  // namespace tarnova
