// The program `tarnova`: wires the engine to its stand-in host and gives each verb its turn.

#include <CLI/CLI.hpp>
#include <exception>

#include "cli/console_alerts.h"
#include "cli/import_text_verb.h"
#include "cli/verb.h"
#include "engine/session/session.h"
#include "output/build_tables.h"

namespace tarnova {
namespace {

int runProgram(int argumentCount, char** arguments) {
    CLI::App app{
        "Tarnova pours data into page layouts: merge records, update prices, draw pages, look at data and "
        "definitions."};
    app.name("tarnova");
    app.set_version_flag("--version", "tarnova " TARNOVA_VERSION);
    app.require_subcommand(0, 1);
    app.footer("Each verb has its own help: tarnova merge --help");
    verbContext context;
    addMergeVerb(app, context);
    addPriceVerb(app, context);
    addProofVerb(app, context);
    addRenderVerb(app, context);
    addDataVerb(app, context);
    addDdfVerb(app, context);
    addTagsVerb(app, context);
    addImportTextVerb(app, context);
    addDescribeVerb(app, context);
    addExecVerb(app, context);

    ConsoleAlerts alerts;
    installAlertService(&alerts);
    sessionInit();
    try {
        app.parse(argumentCount, arguments);
        if (app.get_subcommands().empty()) failVerb(context, "say what to do\n\n" + app.help(), exitUsage);
    } catch (const CLI::ParseError& error) {
        const bool isAnswer = app.exit(error) == 0;  // help and version
        context.exitStatus = isAnswer ? exitDone : exitUsage;
    } catch (const std::exception& error) {
        failVerb(context, error.what());
    }
    freeBuildTables();
    installAlertService(nullptr);
    return context.exitStatus;
}

}  // namespace
}  // namespace tarnova

int main(int argumentCount, char** arguments) {
    return tarnova::runProgram(argumentCount, arguments);
}
