// `tarnova exec`: the engine's front door for programs.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>

#include "cli/engine_client.h"
#include "cli/exec/exec_session.h"
#include "cli/job_setup.h"
#include "cli/verb.h"
#include "engine/module/command_table.h"
#include "modules/drivers/page_driver.h"

namespace tarnova {
namespace {

struct execOptionsRec {
    std::string path;
    std::string home;
    std::string app;
    bool commands = false;
    bool reference = false;
};

void listCommands() {
    constexpr const char* modeNames[] = {"", "  merge mode", "  price mode"};
    for (const commandRow& row : commandTable())
        fmt::print("{:>5}  {}{}{}\n", row.number, row.name, modeNames[static_cast<unsigned>(row.mode)],
                   row.worker == nullptr ? "  not yet available" : "");
}

int answerLines(std::istream& in) {
    ExecSession session;
    session.run(in, std::cout);
    return session.hadError() ? exitUsage : exitDone;
}

int runExec(const execOptionsRec& options) {
    if (options.commands || options.reference) {
        if (options.commands) listCommands();
        if (options.reference) fmt::print("{}", commandReference());
        return exitDone;
    }
    std::ifstream file;
    if (!options.path.empty()) file.open(options.path);
    if (!options.path.empty() && !file) {
        sayError(fmt::format("{}: the file can't be read", options.path));
        return exitFailed;
    }
    ZavoStartupShutdown shell;
    const errorWord error = shell.Startup(options.app.empty() ? programFolder() : options.app,
                                          options.home.empty() ? userDataFolder() : options.home);
    if (error != 0) {
        sayError("the session could not be started: " + startFailure(error));
        return exitFailed;
    }
    const PageDriver driver;
    const int status = answerLines(options.path.empty() ? std::cin : file);
    if (const errorWord saving = shell.Shutdown(); saving != 0) sayError(takeErrorText(saving));
    return status;
}

}  // namespace

void addExecVerb(CLI::App& app, verbContext& context) {
    const auto options = std::make_shared<execOptionsRec>();
    CLI::App* const verb = app.add_subcommand("exec", "Take commands as JSON, one a line, and answer each with a line");
    verb->add_option("FILE", options->path, "The lines; without it standard input");
    verb->add_option("--home", options->home, "Folder in place of the user's data folder");
    verb->add_option("--app", options->app, "Folder in place of the program's");
    verb->add_flag("--commands", options->commands, "List the commands and which are available");
    verb->add_flag("--reference", options->reference, "Print the reference of the commands as Markdown");
    verb->footer("Example: echo '{\"command\":401}' | tarnova exec\nSee docs/automation.md and docs/commands.md.");
    verb->callback([options, &context] { context.exitStatus = runExec(*options); });
}

}  // namespace tarnova
