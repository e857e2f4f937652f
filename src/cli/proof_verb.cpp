// `tarnova proof`: a layout with each link shown by its name in place of data.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>

#include "cli/interrupt.h"
#include "cli/job_setup.h"
#include "cli/render_verb.h"
#include "cli/run_job.h"
#include "cli/verb.h"
#include "engine/run/start_run.h"
#include "engine/session/session.h"

namespace tarnova {
namespace {

struct proofOptionsRec {
    std::string layoutPath;
    std::string outputPath;
    dataChoiceRec data;
};

void runProof(const proofOptionsRec& options, verbContext& context) {
    context.exitStatus = exitFailed;
    RunJob job;
    DocumentModel* const layout = job.open(options.layoutPath);
    if (layout == nullptr || !selectData(options.data)) return;
    const bool defined = linksAreDefined(*layout, options.layoutPath, options.data);
    appPrefs().mergeRunType = mergeRunProof;
    const bool done = job.runStarted(startMergeRun(0, false));
    if (wasInterrupted()) context.exitStatus = exitInterrupted;
    if (!done || !writeOutput(*layout, options.outputPath)) return;
    fmt::print("{}: {} link{} shown\n", options.outputPath, session().allLinkCount,
               session().allLinkCount == 1 ? "" : "s");
    if (defined) context.exitStatus = exitDone;
}

}  // namespace

void addProofVerb(CLI::App& app, verbContext& context) {
    const auto options = std::make_shared<proofOptionsRec>();
    CLI::App* const verb = app.add_subcommand("proof", "Show the links of a layout by their names in place of data");
    verb->add_option("LAYOUT", options->layoutPath, "The layout, a .tvd file with links")->required();
    addDataOptions(*verb, options->data);
    verb->add_option("-o,--output", options->outputPath, "What to make: .pdf, .png, .svg, .ps, .eps or .tvd")
        ->required();
    verb->footer("Example: tarnova proof letter.tvd --data customers.csv -o proof.pdf");
    verb->callback([options, &context] { runProof(*options, context); });
}

}  // namespace tarnova
