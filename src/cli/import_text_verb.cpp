// `tarnova import-text`: a file of text, formatted or plain, into a text of a layout.

#include "cli/import_text_verb.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <map>
#include <memory>

#include "cli/engine_client.h"
#include "cli/job_setup.h"
#include "cli/render_verb.h"
#include "cli/verb.h"
#include "document/walk.h"
#include "engine/toolkit/pm_string.h"
#include "tags/tagged_text.h"

namespace tarnova {
namespace {

enum class ImportKind : std::uint8_t { asked, tagged, rtf, plain, xpress, xpressMarkup };
const std::map<std::string, ImportKind> importKinds = {
    {"tagged", ImportKind::tagged},
    {"rtf", ImportKind::rtf},
    {"text", ImportKind::plain},
    {"xpress", ImportKind::xpress},
    {"xpress-markup", ImportKind::xpressMarkup},
};

struct importOptionsRec {
    std::string layoutPath, filePath, outputPath;
    std::string frame;  // name or UID; empty: the only text
    ImportKind kind = ImportKind::asked;
    std::int32_t at = 0, length = 0;
    bool whole = true;  // neither place nor length were given
};

/// Finds the frame with a name.
class NamedFrame final : public ZavoFrameCallback {
 public:
    NamedFrame(const DocumentModel& itsLayout, const std::string& itsName) : layout(itsLayout), name(itsName) {}
    bool FrameBegin() override {
        const PageItem* const item = layout.item(frameRef.uid);
        if (found == kInvalidUID && item != nullptr && item->name == name) found = frameRef.uid;
        return false;
    }
    UID found = kInvalidUID;

 private:
    const DocumentModel& layout;
    const std::string& name;
};

UID frameOf(DocumentModel& layout, const std::string& wanted) {
    const std::optional<std::int32_t> number = PMString(wanted).number();
    if (number && layout.item(static_cast<UID>(*number)) != nullptr) return static_cast<UID>(*number);
    NamedFrame search(layout, wanted);
    walkDocument(layout, &search, nullptr, 0, 0, WalkScope::everything, false, false, nullptr, nullptr, nullptr, true);
    return search.found;
}

/// The text that is meant; none after telling why.
UID storyOf(DocumentModel& layout, const importOptionsRec& options) {
    const auto fail = [&](const std::string& why) {
        sayError(fmt::format("{}: {}", options.layoutPath, why));
        return kInvalidUID;
    };
    if (options.frame.empty()) {
        const std::vector<UID> stories = layout.stories();
        if (stories.size() == 1) return stories.front();
        return fail(fmt::format("it has {} texts; name a frame with --frame", stories.size()));
    }
    const UID frame = frameOf(layout, options.frame);
    if (frame == kInvalidUID) return fail(fmt::format("it has no item \"{}\"; describe lists them", options.frame));
    const UID story = layout.textOfFrame(frame);
    return story != kInvalidUID ? story : fail(fmt::format("frame \"{}\" holds no text", options.frame));
}

ImportKind kindOf(const importOptionsRec& options) {
    if (options.kind != ImportKind::asked) return options.kind;
    return std::filesystem::path(options.filePath).extension() == ".xtg" ? ImportKind::xpress : ImportKind::asked;
}

/// Through a filter of the host, the given one or the first that takes the file.
bool importByFilter(DocumentModel& layout, UID story, const importOptionsRec& options, std::string& filter) {
    switch (options.kind) {
        case ImportKind::tagged:
            filter = textImportFilters[0];
            break;
        case ImportKind::rtf:
            filter = textImportFilters[1];
            break;
        case ImportKind::plain:
            filter = textImportFilters[2];
            break;
        default:
            filter = layout.importFilterFor(options.filePath);
    }
    textSourceRec source;
    source.filePath = options.filePath;
    const std::int32_t length = options.whole ? layout.threadSpan(story, 0).length - 1 : options.length;
    std::int32_t imported = 0;
    if (!filter.empty() && layout.importText(story, options.at, length, source, filter, imported) == 0) return true;
    sayError(fmt::format("{}: {}", options.filePath,
                         filter.empty() ? "it isn't there, or no filter reads it; a plain text must be UTF-8"
                                        : fmt::format("\"{}\" can't read it or put it at {}", filter, options.at)));
    return false;
}

bool importFile(DocumentModel& layout, const importOptionsRec& options) {
    const UID story = storyOf(layout, options);
    if (story == kInvalidUID) return false;
    const std::int32_t before = layout.totalLength(story);
    const ImportKind kind = kindOf(options);
    std::string filter = "XPress Tags";
    if (kind == ImportKind::xpress || kind == ImportKind::xpressMarkup) {
        const bool convert = kind == ImportKind::xpress;
        if (importTaggedFile({&layout, story}, options.filePath, convert, options.at, options.length) != 0)
            return false;
    } else if (!importByFilter(layout, story, options, filter)) {
        return false;
    }
    fmt::print("{}: {} imported, the text had {} characters and has {}\n", options.outputPath, filter, before - 1,
               layout.totalLength(story) - 1);
    return true;
}

void runImport(const importOptionsRec& options, verbContext& context) {
    if (!outputFits(options.outputPath, context)) return;
    context.exitStatus = exitFailed;
    EngineClient engine;
    DocumentModel* const layout = engine.open(options.layoutPath);
    if (layout == nullptr || !importFile(*layout, options) || !writeOutput(*layout, options.outputPath)) return;
    context.exitStatus = exitDone;
}

}  // namespace

void addImportTextVerb(CLI::App& app, verbContext& context) {
    const auto options = std::make_shared<importOptionsRec>();
    CLI::App& verb = *app.add_subcommand("import-text", "Import a file of text, formatted or plain, into a layout");
    verb.add_option("LAYOUT", options->layoutPath, "The layout (.tvd)")->required();
    verb.add_option("FILE", options->filePath, "The file: tagged text, RTF, plain UTF-8 text or XPress Tags")
        ->required();
    verb.add_option("--frame", options->frame, "Name or UID of the text frame; not needed when there is one text");
    verb.add_option(
            "--as", options->kind,
            "tagged, rtf, text, xpress, or xpress-markup, which shows what XPress Tags are converted to; without "
            "it the filters are asked, and .xtg is XPress Tags")
        ->type_name("KIND")
        ->transform(CLI::CheckedTransformer(importKinds, CLI::ignore_case));
    CLI::Option* const at =
        verb.add_option("--at", options->at, "Character at which to import, from 0")->check(CLI::NonNegativeNumber);
    CLI::Option* const length = verb.add_option("--length", options->length, "How many characters to replace (0)")
                                    ->check(CLI::NonNegativeNumber);
    verb.add_option("-o,--output", options->outputPath,
                    "What to make: a .tvd, which may be LAYOUT itself, or a picture")
        ->type_name("OUT")
        ->required();
    verb.footer(
        "Without --at and --length the whole text is replaced.\n"
        "Example: tarnova import-text leaflet.tvd story.rtf --frame Body -o leaflet.tvd");
    verb.callback([options, at, length, &context] {
        options->whole = at->count() == 0 && length->count() == 0;
        runImport(*options, context);
    });
}

}  // namespace tarnova
