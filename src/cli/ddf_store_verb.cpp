// The verbs of the definition store: `tarnova ddf import`, `export`, `list` and `use`.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>

#include "cli/ddf_verb.h"
#include "cli/definition_list.h"
#include "cli/engine_client.h"
#include "cli/job_setup.h"
#include "cli/verb.h"
#include "definitions/definition_state.h"
#include "definitions/document_definition.h"
#include "engine/session/session.h"
#include "engine/toolkit/choosers.h"
#include "host/text/composer.h"
#include "shell/document_watch.h"

namespace tarnova {

namespace {

constexpr std::uint32_t commandSetDefinition = 1207;
constexpr std::uint32_t commandExport = 1404;
constexpr std::uint32_t commandImport = 1405;
constexpr std::uint32_t commandAttachMergeMode = 1400;

struct storeOptionsRec {
    std::string path;
    std::string name;
    std::string home;
    bool json = false;
};

/// Nobody is there to be asked: a text stays as it is suggested.
class SuggestedTexts final : public ChooserService {
 public:
    bool chooseFile(const fileChoiceRec&, std::string&) override { return false; }
    bool askText(const PMString&, std::size_t, std::string&) override { return true; }
};

/// The session with the user's own definitions, which are saved at its end.
class StoreSession {
 public:
    explicit StoreSession(const std::string& home) : documents(makeComposer()) {
        error = shell.Startup(programFolder(), home.empty() ? userDataFolder() : home);
        documents.setWatch(&watch);
        session().documentHost = &documents;
        installChooserService(&texts);
        EngineCommand(commandAttachMergeMode).run();
    }
    ~StoreSession() {
        installChooserService(nullptr);
        session().documentHost = nullptr;
        if (const errorWord saving = shell.Shutdown(); saving != 0) sayError(takeErrorText(saving));
    }
    StoreSession(const StoreSession&) = delete;
    StoreSession& operator=(const StoreSession&) = delete;

    /// Why the session could not be started; 0 when it could.
    errorWord error = 0;
    ZavoDocWatchResponder watch;
    OpenDocuments documents;

 private:
    ZavoStartupShutdown shell;
    SuggestedTexts texts;
};

int fail(const std::string& path, std::string_view reason) {
    sayError(fmt::format("{}: {}", path, reason));
    return exitFailed;
}

bool isLayout(const std::string& path) {
    return std::filesystem::path(path).extension() == ".tvd";
}

int importFromLayout(StoreSession& store, const std::string& path) {
    Str31 name;
    const errorWord error = importDefinitionFromDocument(path, false, name, 0);
    if (error == errDocumentOpen) return fail(path, store.documents.lastFailure());
    return error == 0 ? exitDone : fail(path, takeErrorText(error));
}

/// What a command has to say of a failure it shows itself.
int importInto(StoreSession& store, const storeOptionsRec& options) {
    if (isLayout(options.path)) return importFromLayout(store, options.path);
    IDFile file(options.path);
    return EngineCommand(commandImport).item(0, file).run() == 0 ? exitDone : exitFailed;
}

int exportFrom(StoreSession&, const storeOptionsRec& options) {
    IDFile file(options.path);
    return EngineCommand(commandExport).item(0, file).run() == 0 ? exitDone : exitFailed;
}

int listStore(StoreSession&, const storeOptionsRec& options) {
    const recordDefSetRec& set = *definitionState().currentDefSet;
    if (!options.json) {
        printDefinitions(set);
        return exitDone;
    }
    rapidjson::StringBuffer buffer;
    DefinitionWriter json(buffer);
    json.StartObject();
    json.Key("current");
    json.String(shownName(pstrView(definitionState().currentDefName)));
    json.Key("definitions");
    writeDefinitions(json, set);
    json.EndObject();
    fmt::print("{}\n", buffer.GetString());
    return exitDone;
}

std::string reasonOf(std::int32_t status, const storeOptionsRec& options) {
    switch (status) {
        case documentDefinitionMissing:
            return fmt::format("there is no definition \"{}\"; \"tarnova ddf list\" tells which there are",
                               options.name);
        case documentDefinitionUnread:
            return "the layout carries no definition";
        case documentDefinitionTable:
            return "the import translation table of the definition can't be loaded";
        default:
            return fmt::format("the definition can't be used ({})", status);
    }
}

/// With a name the layout is given that definition; without one the store takes the layout's.
int useFor(StoreSession& store, const storeOptionsRec& options) {
    UIDRef document;
    if (store.documents.documentOpen(options.path, options.name.empty(), document) != 0)
        return fail(options.path, store.documents.lastFailure());
    Str255 name;
    pstrSet(name, options.name);
    const std::int32_t status = EngineCommand(commandSetDefinition).item(0, document).item(1, name).run();
    if (status != 0) return fail(options.path, reasonOf(status, options));
    if (options.name.empty() || store.documents.documentSave(document) == 0) return exitDone;
    return fail(options.path, store.documents.lastFailure());
}

using StoreVerb = int (*)(StoreSession& store, const storeOptionsRec& options);

int runVerb(StoreVerb verb, const storeOptionsRec& options) {
    StoreSession store(options.home);
    if (store.error == 0) return verb(store, options);
    sayError("the definitions can't be opened: " + takeErrorText(store.error));
    return exitFailed;
}

CLI::App& addVerb(CLI::App& ddf, verbContext& context, const std::shared_ptr<storeOptionsRec>& options,
                  const char* name, const char* help, StoreVerb run) {
    CLI::App& verb = *ddf.add_subcommand(name, help);
    verb.add_option("--home", options->home, "Folder in place of the user's data folder");
    verb.callback([options, &context, run] { context.exitStatus = runVerb(run, *options); });
    return verb;
}

}  // namespace

void addDdfStoreVerbs(CLI::App& ddf, verbContext& context) {
    const auto options = std::make_shared<storeOptionsRec>();
    CLI::App& import = addVerb(ddf, context, options, "import",
                               "Replace your definitions by those of a DDF, or take the one of a layout", importInto);
    import.add_option("FILE", options->path, "The DDF, or a .tvd layout that carries a definition")->required();
    import.footer("Example: tarnova ddf import orders.ddf");
    CLI::App& exported = addVerb(ddf, context, options, "export", "Write your definitions to a DDF", exportFrom);
    exported.add_option("FILE", options->path, "The DDF to make")->required();
    exported.footer("Example: tarnova ddf export orders.ddf");
    CLI::App& list = addVerb(ddf, context, options, "list", "Tell what your definitions hold", listStore);
    addJsonFlag(list, options->json);
    list.footer("Example: tarnova ddf list");
    CLI::App& use =
        addVerb(ddf, context, options, "use",
                "Store one of your definitions in a layout, or take over the one that a layout carries", useFor);
    use.add_option("LAYOUT", options->path, "The layout, a .tvd file")->required();
    use.add_option("NAME", options->name, "The definition; without it the layout's own becomes yours");
    use.footer("Example: tarnova ddf use letter.tvd Customers");
}

}  // namespace tarnova
