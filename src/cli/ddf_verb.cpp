#include "cli/ddf_verb.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>

#include "cli/definition_list.h"
#include "cli/job_setup.h"
#include "cli/verb.h"
#include "data/quick_setup.h"
#include "definitions/ddf.h"
#include "definitions/definition_state.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/text_encoding.h"
#include "engine/toolkit/toolkit_state.h"

namespace tarnova {

namespace {

/// A list with the one set that a verb works on.
class OneSet {
 public:
    OneSet() = default;
    ~OneSet() { recordDefSetDiscard(list, set); }
    OneSet(const OneSet&) = delete;
    OneSet& operator=(const OneSet&) = delete;

    recordDefSetRec* list = nullptr;
    recordDefSetRec* set = nullptr;
};

/// Reads the file of a verb; tells a refusal with its line.
errorWord readDdf(const ddfVerbRec& options, OneSet& holder, ddfReadReport& report) {
    const errorWord error = ddfReadFile(options.path.c_str(), holder.list, holder.set, &report, 0);
    if (error == 0) return 0;
    const std::string reason = report.reason.empty() ? takeErrorText(error) : report.reason;
    sayError(report.line > 0 ? fmt::format("{}:{}: {}", options.path, report.line, reason)
                             : fmt::format("{}: {}", options.path, reason));
    return error;
}

void writeRemarksJson(DefinitionWriter& json, const ddfReadReport& report) {
    json.Key("remarks");
    json.StartArray();
    for (const ddfRemarkRec& remark : report.remarks) {
        json.StartObject();
        json.Key("line");
        json.Uint(remark.line);
        json.Key("text");
        json.String(shownName(remark.text));
        json.EndObject();
    }
    json.EndArray();
    json.Key("remarksLeftOut");
    json.Uint(report.remarksLeftOut);
}

void printJson(const ddfVerbRec& options, const recordDefSetRec* set, const ddfReadReport& report) {
    rapidjson::StringBuffer buffer;
    DefinitionWriter json(buffer);
    json.StartObject();
    json.Key("file");
    json.String(shownName(options.path));
    json.Key("good");
    json.Bool(set != nullptr);
    if (set != nullptr) {
        json.Key("definitions");
        writeDefinitions(json, *set);
    } else {
        json.Key("line");
        json.Uint(report.line);
        json.Key("offset");
        json.Uint64(report.offset);
        json.Key("reason");
        json.String(report.reason);
    }
    writeRemarksJson(json, report);
    json.EndObject();
    fmt::print("{}\n", buffer.GetString());
}

void printText(const ddfVerbRec& options, const recordDefSetRec& set, const ddfReadReport& report) {
    printDefinitions(set);
    for (const ddfRemarkRec& remark : report.remarks) {
        fmt::print("{}:{}: {}\n", options.path, remark.line, shownName(remark.text));
    }
    if (report.remarksLeftOut > 0) fmt::print("{}: and {} more remarks\n", options.path, report.remarksLeftOut);
}

int writeToStandardOutput(const recordDefSetRec& set) {
    const handlePtr text(newHandle(0));
    const errorWord error = ddfWriteSet(set, {noFile, text.get()}, 0);
    if (error != 0) {
        sayError(takeErrorText(error));
        return exitFailed;
    }
    const std::size_t size = handleSize(text.get());
    const bool written = std::fwrite(*text, 1, size, stdout) == size && std::fflush(stdout) == 0;
    if (!written) sayError("standard output can't be written");
    return written ? exitDone : exitFailed;
}

int writeToFile(const std::string& path, recordDefSetRec& set) {
    const errorWord error = ddfWriteFile(path.c_str(), set, 0);
    if (error == 0) return exitDone;
    sayError(fmt::format("{}: {}", path, takeErrorText(error)));
    return exitFailed;
}

int writeOut(const ddfVerbRec& options, recordDefSetRec& set) {
    return options.outputPath.empty() ? writeToStandardOutput(set) : writeToFile(options.outputPath, set);
}

/// A definition for the fields of a data file. A link whose field is empty takes its line away when nothing else stands
/// there, as a merge without a definition file has it.
errorWord defineFromData(const ddfVerbRec& options, recordDefSetRec& set, bool& cancelled) {
    quickSetupAnalysis analysis;
    errorWord error = quickSetupAnalyze(options.path.c_str(), analysis, 0);
    cancelled = analysis.cancelled;
    if (error != 0 || cancelled) return error;
    const quickSetupChoices choices = choicesForPeople();
    Str31 name{};
    defaultDefName(name);
    if (!options.definitionName.empty()) pstrSet(name, options.definitionName);
    recordDefRec* definition = nullptr;
    return quickSetupDefinition(set, name, analysis, choices, definition, error);
}

CLI::App& addSubverb(CLI::App& parent, verbContext& context, const std::shared_ptr<ddfVerbRec>& options,
                     const char* name, const char* help, int (*run)(const ddfVerbRec&)) {
    CLI::App& verb = *parent.add_subcommand(name, help);
    verb.callback([options, &context, run] { context.exitStatus = run(*options); });
    return verb;
}

}  // namespace

int checkDdf(const ddfVerbRec& options) {
    OneSet holder;
    ddfReadReport report;
    const errorWord error = readDdf(options, holder, report);
    if (options.json) printJson(options, holder.set, report);
    if (error != 0) return exitFailed;
    if (!options.json) printText(options, *holder.set, report);
    return exitDone;
}

int formatDdf(const ddfVerbRec& options) {
    OneSet holder;
    ddfReadReport report;
    if (readDdf(options, holder, report) != 0) return exitFailed;
    const std::size_t dropped = report.remarks.size() + report.remarksLeftOut;
    if (dropped > 0) {
        sayError(fmt::format("{}: {} left out or cut short; \"tarnova ddf check\" tells where", options.path,
                             dropped == 1 ? "1 statement is" : fmt::format("{} statements are", dropped)));
    }
    return writeOut(options, *holder.set);
}

int makeDdfFromData(const ddfVerbRec& options) {
    if (fileIsPlain(options.path.c_str()) == 0) {
        sayError(fmt::format("{}: no such data file", options.path));
        return exitFailed;
    }
    OneSet holder;
    bool cancelled = false;
    errorWord error = recordDefSetNew(nullptr, options.outputPath.c_str(), holder.list, holder.set, 0);
    if (error == 0) error = defineFromData(options, *holder.set, cancelled);
    if (error != 0 || cancelled) {
        sayError(fmt::format("{}: {}", options.path, cancelled ? "this is no text file" : takeErrorText(error)));
        return exitFailed;
    }
    return writeOut(options, *holder.set);
}

void addDdfVerb(CLI::App& app, verbContext& context) {
    const auto options = std::make_shared<ddfVerbRec>();
    CLI::App& ddf =
        *app.add_subcommand("ddf", "Check, lay out and make definition files (DDF), and look after your definitions");
    ddf.require_subcommand(1);
    ddf.footer("Example: tarnova ddf check orders.ddf");

    CLI::App& check =
        addSubverb(ddf, context, options, "check", "Tell what a DDF holds and what in it has no effect", checkDdf);
    check.add_option("FILE", options->path, "The DDF")->required();
    addJsonFlag(check, options->json);
    check.footer(
        "Exit status 0: the file is good, remarks or not; 1: it is refused.\nExample: tarnova ddf check orders.ddf");

    CLI::App& format = addSubverb(ddf, context, options, "format", "Write a DDF in our own layout", formatDdf);
    format.add_option("FILE", options->path, "The DDF")->required();
    format.add_option("-o,--output", options->outputPath,
                      "Where to write; may be FILE itself. Without it: standard output");
    format.footer("Example: tarnova ddf format orders.ddf -o orders.ddf");

    CLI::App& fromData = addSubverb(
        ddf, context, options, "from-data",
        "Make a DDF from a data file: its fields, how it is read, and a link for each field", makeDdfFromData);
    fromData.add_option("FILE", options->path, "Delimited text whose first line holds the field names")->required();
    fromData.add_option("-o,--output", options->outputPath, "The DDF to make")->required();
    fromData.add_option("--name", options->definitionName, "Name of the definition, up to 31 bytes")
        ->check([](const std::string& name) {
            const bool special = std::any_of(name.begin(), name.end(),
                                             [](char c) { return isNameSpecialChar(static_cast<std::uint8_t>(c)); });
            if (name.empty() || name.size() > 31) return std::string("a name has 1 to 31 bytes");
            return std::string(special ? "a name can't hold a line end or any of ! / : ; < > ^ &" : "");
        });
    fromData.footer("Example: tarnova ddf from-data customers.csv -o customers.ddf");
    addDdfStoreVerbs(ddf, context);
}

}  // namespace tarnova
