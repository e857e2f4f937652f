#include "cli/verb.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>

namespace tarnova {

void failVerb(verbContext& context, std::string_view text, int status) {
    std::fprintf(stderr, "tarnova: %.*s\n", static_cast<int>(text.size()), text.data());
    context.exitStatus = status;
}

void addJsonFlag(CLI::App& verb, bool& json) {
    verb.add_flag("--json", json, "Answer as one JSON object on standard output");
}

}  // namespace tarnova
