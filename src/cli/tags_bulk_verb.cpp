// `tarnova tags replace`, `tags sequence` and `tags remove`: changes of many links at once.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <map>
#include <memory>
#include <vector>

#include "cli/job_setup.h"
#include "cli/tags_change.h"
#include "cli/verb.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/pm_string.h"
#include "merge/proof_callback.h"
#include "tags/remove_tags.h"
#include "tags/search_replace.h"
#include "tags/sequence_items.h"

namespace tarnova {
namespace {

const std::map<std::string, std::uint16_t> changeModes = {
    {"replace", changeReplace}, {"prefix", changePrefix},        {"cut-prefix", changeCutPrefix},
    {"suffix", changeSuffix},   {"cut-suffix", changeCutSuffix}, {"drop", changeDropCharacters},
    {"lower", changeLower},     {"upper", changeUpper},
};
const std::map<std::string, std::uint16_t> itemKinds = {{"all", 1}, {"text", 2}, {"graphic", 3}, {"groups", 4}};

/// A search text and what takes its place.
using SearchPair = std::vector<std::string>;

struct replaceOptionsRec {
    tagsChangeRec layout;
    SearchPair key, aux, link, criteria, style;
    bool ignoreCase = false;
    searchReplaceTexts texts;
};

bool takePair(const SearchPair& pair, std::string& search, std::string& replace) {
    if (pair.size() != 2) return false;
    search = pair[0];
    replace = pair[1];
    return true;
}

bool replaceTags(DocumentModel& layout, replaceOptionsRec& options) {
    const searchReplaceRec settings = searchReplaceOf(options.texts);
    keepSearchReplace(settings);
    searchReplaceCounts counts;
    if (!searchReplaceDocument(layout.ref(), settings, counts)) return false;
    fmt::print("{}: {} changed, {} removed\n", options.layout.outputPath,
               countOf(static_cast<std::size_t>(counts.changed), "link"), counts.removed);
    return true;
}

void runReplace(replaceOptionsRec& options, verbContext& context) {
    searchReplaceTexts& texts = options.texts;
    texts.keyEnabled = takePair(options.key, texts.keySearch, texts.keyReplace);
    texts.auxEnabled = takePair(options.aux, texts.auxSearch, texts.auxReplace);
    texts.linkEnabled = takePair(options.link, texts.linkSearch, texts.linkReplace);
    texts.criteriaEnabled = takePair(options.criteria, texts.criteriaSearch, texts.criteriaReplace);
    texts.styleEnabled = takePair(options.style, texts.styleSearch, texts.styleReplace);
    texts.matchCase = !options.ignoreCase;
    const bool isAny = texts.keyEnabled || texts.auxEnabled || texts.linkEnabled || texts.criteriaEnabled ||
                       texts.styleEnabled || texts.removeEmpty;
    if (!isAny) return failVerb(context, "say what to replace: --key, --aux, --link, --criteria or --style", exitUsage);
    const std::string fault = searchReplaceFault(texts);
    if (!fault.empty()) return failVerb(context, PMString::ofKey(fault).view(), exitUsage);
    changeTags(options.layout, context, [&](DocumentModel& layout) { return replaceTags(layout, options); });
}

void addReplaceVerb(CLI::App& tags, verbContext& context) {
    const auto options = std::make_shared<replaceOptionsRec>();
    CLI::App& verb = *tags.add_subcommand("replace", "Search and replace in the links of text and frames");
    addTagsChangeOptions(verb, options->layout);
    const auto addPair = [&verb](const char* name, SearchPair& pair, const char* what) {
        verb.add_option(name, pair, what)->type_name("FROM TO")->expected(2);
    };
    addPair("--key", options->key, "Keys that are FROM, or all with *");
    addPair("--aux", options->aux, "Further keys");
    addPair("--link", options->link, "Names of links");
    addPair("--criteria", options->criteria, "Names of search criteria");
    addPair("--style", options->style, "Names of styles");
    const auto addMode = [&verb](const char* name, std::uint16_t& mode) {
        verb.add_option(
                name, mode,
                "What TO does to a key: replace it, prefix, cut-prefix, suffix, cut-suffix, drop its characters, "
                "or lower and upper, which need no TO (write '')")
            ->type_name("MODE")
            ->transform(CLI::CheckedTransformer(changeModes, CLI::ignore_case));
    };
    addMode("--key-mode", options->texts.keyMode);
    addMode("--aux-mode", options->texts.auxMode);
    verb.add_flag("--ignore-case", options->ignoreCase, "Keys match whatever their case, as names always do");
    verb.add_flag("--remove-empty", options->texts.removeEmpty, "Remove links whose key or name is empty in the end");
    verb.footer("Example: tarnova tags replace card.tvd --link Name FullName --key '*' 2 -o card.tvd");
    verb.callback([options, &context] { runReplace(*options, context); });
}

struct sequenceOptionsRec {
    tagsChangeRec layout;
    sequenceItemsRec settings{1, 1, sequenceScopeDocument, 0, 1, 1, 72, 0, 0, 1, 0};
    std::int32_t page = 0;
    bool proof = false, restart = false, members = false;
};

void proofItem(UIDRef item) {
    ZavoProofFrameCallback frames;
    ZavoProofStoryCallback texts;
    std::uint16_t cancel = 0;
    walkItem(item, &frames, &texts, &cancel);
}

bool sequenceTags(DocumentModel& layout, const sequenceOptionsRec& options) {
    sequenceItemsRec settings = options.settings;
    settings.proofAfter = options.proof ? 1 : 0;
    settings.restartPerPage = options.restart ? 1 : 0;
    settings.groupsAsOne = options.members ? 0 : 1;
    sequenceChoiceRec choice;
    choice.proof = proofItem;
    if (options.page > layout.pageCount()) {
        sayError(fmt::format("{}: it has no page {}, only {}", options.layout.layoutPath, options.page,
                             countOf(static_cast<std::size_t>(layout.pageCount()), "page")));
        return false;
    }
    if (options.page > 0) {
        settings.scope = sequenceScopePage;
        choice.currentPage = layout.pageAt(options.page - 1);
    }
    appPrefs().sequenceGrid = settings;
    std::int32_t count = 0;
    if (!sequencePageItems(layout.ref(), settings, choice, count)) {
        const errorWord error = session().engineError;
        sayError(fmt::format("{}: {}", options.layout.layoutPath, takeErrorText(error != 0 ? error : errFailed)));
        return false;
    }
    fmt::print("{}: {} numbered\n", options.layout.outputPath, countOf(static_cast<std::size_t>(count), "item"));
    return true;
}

void addSequenceVerb(CLI::App& tags, verbContext& context) {
    const auto options = std::make_shared<sequenceOptionsRec>();
    CLI::App& verb = *tags.add_subcommand("sequence", "Give the frames that have links running numbers as their keys");
    addTagsChangeOptions(verb, options->layout);
    sequenceItemsRec& settings = options->settings;
    verb.add_option(
            "--order", settings.sortOrder,
            "1 to 4 along rows: down to the right (1), down to the left (2), up to the right (3), up to the left "
            "(4); 5 to 8 along columns: to the right downward (5), to the left downward (6), to the right upward "
            "(7), to the left upward (8)")
        ->check(CLI::Range(1, 8));
    verb.add_option("--kind", settings.itemKind, "Which items: all frames, text or graphic frames, or groups")
        ->type_name("KIND")
        ->transform(CLI::CheckedTransformer(itemKinds, CLI::ignore_case));
    verb.add_option("--page", options->page, "Only this page, from 1")->check(CLI::PositiveNumber);
    verb.add_option("--first", settings.firstNumber, "The first number (1)");
    verb.add_option("--increment", settings.increment, "From one number to the next (1)");
    verb.add_option("--grid", settings.gridSize, "Points; items within half of them make one row or column (72)")
        ->check(CLI::Range(0, 1000000));
    verb.add_flag("--restart", options->restart, "Each page begins at the first number");
    verb.add_flag("--members", options->members, "Members of groups are items of their own");
    verb.add_flag("--proof", options->proof, "Show the links of each numbered item in place of its text");
    verb.footer("Example: tarnova tags sequence labels.tvd --order 5 -o labels.tvd");
    verb.callback([options, &context] {
        changeTags(options->layout, context, [&](DocumentModel& layout) { return sequenceTags(layout, *options); });
    });
}

void addRemoveVerb(CLI::App& tags, verbContext& context) {
    const auto options = std::make_shared<tagsChangeRec>();
    CLI::App& verb = *tags.add_subcommand("remove", "Take all links off a layout");
    addTagsChangeOptions(verb, *options);
    verb.footer(
        "Texts and frames stay, and so do names of frames.\nExample: tarnova tags remove card.tvd -o plain.tvd");
    verb.callback([options, &context] {
        changeTags(*options, context, [&](DocumentModel& layout) {
            removedInfoCounts counts;
            if (!removeAllTags(layout.ref(), counts)) return false;
            fmt::print("{}: {} removed from text, {} from frames\n", options->outputPath,
                       countOf(static_cast<std::size_t>(counts.texts), "link"), counts.frames);
            return true;
        });
    });
}

}  // namespace

void addTagsBulkVerbs(CLI::App& tags, verbContext& context) {
    addReplaceVerb(tags, context);
    addSequenceVerb(tags, context);
    addRemoveVerb(tags, context);
}

}  // namespace tarnova
