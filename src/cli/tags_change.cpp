#include "cli/tags_change.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "cli/engine_client.h"
#include "cli/job_setup.h"
#include "cli/render_verb.h"
#include "cli/verb.h"

namespace tarnova {

namespace {

constexpr std::uint32_t commandAttachPriceMode = 1401;
constexpr std::uint32_t commandEnterPriceMode = 1262;

}  // namespace

void addTagsChangeOptions(CLI::App& verb, tagsChangeRec& options) {
    verb.add_option("LAYOUT", options.layoutPath, "The layout (.tvd)")->required();
    verb.add_option("-o,--output", options.outputPath, "What to make: a .tvd, which may be LAYOUT itself, or a picture")
        ->type_name("OUT")
        ->required();
    verb.add_flag("--price", options.price, "Links of price mode (Tallyra) in place of merge mode (Kelvane)");
}

void changeTags(const tagsChangeRec& options, verbContext& context, const std::function<bool(DocumentModel&)>& change) {
    if (!outputFits(options.outputPath, context)) return;
    context.exitStatus = exitFailed;
    EngineClient engine;
    if (options.price) enterPriceMode();
    DocumentModel* const layout = engine.open(options.layoutPath);
    if (layout == nullptr || !change(*layout) || !writeOutput(*layout, options.outputPath)) return;
    context.exitStatus = exitDone;
}

void enterPriceMode() {
    for (const std::uint32_t command : {commandAttachPriceMode, commandEnterPriceMode})
        EngineCommand(command).run();
}

std::string countOf(std::size_t count, const char* what) {
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

}  // namespace tarnova
