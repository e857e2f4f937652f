// `tarnova price`: the links of a catalog filled again, each from the record that its key finds.

#include <fmt/format.h>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <set>

#include "cli/interrupt.h"
#include "cli/job_setup.h"
#include "cli/render_verb.h"
#include "cli/run_job.h"
#include "cli/verb.h"
#include "data/data_source.h"
#include "engine/session/session.h"
#include "host/render/page_range.h"
#include "merge/link_report.h"
#include "tags/link_names.h"

namespace tarnova {
namespace {

constexpr std::uint32_t commandAttachPriceMode = 1401;
constexpr std::uint32_t commandEnterPriceMode = 1262;
constexpr std::uint32_t commandArmPriceRun = 550;
constexpr std::uint32_t commandOpenData = 559;
constexpr std::uint32_t commandSetOptions = 561;

constexpr std::size_t toldKeys = 5;  // of those without a record; the JSON answer has them all

constexpr std::int32_t kindsBoth = 0, kindsText = 1, kindsFrames = 2;
const std::map<std::string, std::int32_t> kindCodes = {{"text", kindsText}, {"frame", kindsFrames}};

struct priceOptionsRec {
    std::string layoutPath;
    std::vector<std::string> outputs;  // none: the layout itself
    std::string pages;
    std::vector<std::int32_t> kinds = {kindsText, kindsFrames};
    bool keepsMissing = false;
    bool json = false;
    dataChoiceRec data;
};

/// The keys without a record, in the order in which they were met, for as long as it lives.
class MissingKeys {
 public:
    MissingKeys() {
        linkReport().listener = [this](const linkReportRec& link) { note(link); };
    }
    ~MissingKeys() { linkReport().listener = nullptr; }
    MissingKeys(const MissingKeys&) = delete;
    MissingKeys& operator=(const MissingKeys&) = delete;

    [[nodiscard]] const std::vector<std::string>& keys() const { return keys_; }
    /// Tells the first of them on standard error.
    void tell(const std::string& dataPath) const {
        for (std::size_t i = 0; i < std::min(keys_.size(), toldKeys); ++i)
            sayError(fmt::format("{}: no record has the key \"{}\"", dataPath, keys_[i]));
        if (keys_.size() > toldKeys) {
            sayError(fmt::format("{}: {} more keys have no record; --json lists them all", dataPath,
                                 keys_.size() - toldKeys));
        }
    }

 private:
    void note(const linkReportRec& link) {
        if (link.status != fetchNoMatch) return;
        const std::string key = shownName(pstrView(link.tag.searchKey));
        if (known_.insert(key).second) keys_.push_back(key);
    }

    std::vector<std::string> keys_;
    std::set<std::string> known_;
};

/// The pages as numbers from 1, both 0 for all. False after telling why on standard error.
bool choosePages(const DocumentModel& layout, const priceOptionsRec& options, std::int32_t& first, std::int32_t& last) {
    if (options.pages.empty()) return true;
    std::vector<std::int32_t> pages;
    std::string error;
    if (parsePageRange(options.pages, layout.pageCount(), pages, error)) {
        first = pages.front() + 1;
        last = pages.back() + 1;
        if (std::cmp_equal(last - first + 1, pages.size())) return true;
        error = fmt::format("pages {}: only pages that follow each other can be priced", options.pages);
    }
    sayError(fmt::format("{}: {}", options.layoutPath, error));
    return false;
}

bool hasLinks(DocumentModel& layout, const priceOptionsRec& options) {
    if (!linkNamesOf(layout.ref()).empty()) return true;
    sayError(fmt::format("{}: it has no links of price mode; in a layout these are called \"tallyraTag\"",
                         options.layoutPath));
    return false;
}

/// Readies the run with all that was asked for.
bool armRun(RunJob& job, DocumentModel& layout, const priceOptionsRec& options, verbContext& context) {
    UIDRef document = layout.ref();
    IDFile dataOfDefinition;
    std::uint32_t records = 0;
    std::int32_t first = 0, last = 0;
    if (!choosePages(layout, options, first, last)) {
        context.exitStatus = exitUsage;
        return false;
    }
    if (!job.send(EngineCommand(commandArmPriceRun).item(0, document))) return false;
    if (!job.send(EngineCommand(commandOpenData).item(0, dataOfDefinition).item(1, records))) return false;
    const bool isOneKind = std::equal(options.kinds.begin() + 1, options.kinds.end(), options.kinds.begin());
    std::int32_t kinds = isOneKind ? options.kinds.front() : kindsBoth;
    return job.send(EngineCommand(commandSetOptions).item(0, first).item(1, last).item(3, kinds));
}

/// What the run does where a key has no record or a record no value. A definition of the user's own says the latter;
/// without one a text that tells it takes the place of the price and keeps its link, which then finds the next price.
void settleStandIns(const priceOptionsRec& options) {
    if (options.keepsMissing) appPrefs().textDefaults.noMatch.enable = 0;
    if (!options.data.ddfPath.empty()) return;
    recordDefRec& definition = *session().currentRecordDef;
    for (std::uint16_t i = 0; i < extractionCount(definition); ++i)
        definition.extractions[i]->nodata = nodataGlobal;
}

std::int64_t oversetStories(DocumentModel& layout) {
    const std::vector<UID> stories = layout.stories();
    return std::count_if(stories.begin(), stories.end(), [&](UID story) { return layout.isOverset(story); });
}

void answerJson(const std::vector<std::string>& outputs, const MissingKeys& missing, std::int64_t overset) {
    const linkCountsRec& counts = linkReport().counts;
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    const auto texts = [&](const char* name, const std::vector<std::string>& list) {
        writer.Key(name);
        writer.StartArray();
        for (const std::string& text : list)
            writer.String(text);
        writer.EndArray();
    };
    const std::pair<const char*, std::uint32_t> numbers[] = {
        {"links", counts.links},     {"changed", counts.changed}, {"unchanged", counts.unchanged},
        {"emptied", counts.emptied}, {"refused", counts.refused}, {"withoutRecord", counts.withoutRecord},
    };
    writer.StartObject();
    texts("outputs", outputs);
    for (const auto& [name, number] : numbers) {
        writer.Key(name);
        writer.Uint(number);
    }
    texts("keysWithoutRecord", missing.keys());
    writer.Key("oversetStories");
    writer.Int64(overset);
    writer.EndObject();
    fmt::print("{}\n", buffer.GetString());
}

void answerText(const std::vector<std::string>& outputs) {
    const linkCountsRec& counts = linkReport().counts;
    std::string refused;
    if (counts.refused > 0) refused = fmt::format(", {} refused", counts.refused);
    fmt::print("{}: {} link{}: {} changed, {} unchanged, {} emptied, {} without a record{}\n", fmt::join(outputs, ", "),
               counts.links, counts.links == 1 ? "" : "s", counts.changed, counts.unchanged, counts.emptied,
               counts.withoutRecord, refused);
}

void runPrice(const priceOptionsRec& options, verbContext& context) {
    std::vector<std::string> outputs = options.outputs;
    if (outputs.empty()) outputs.push_back(options.layoutPath);
    for (const std::string& output : outputs)
        if (!outputFits(output, context)) return;
    context.exitStatus = exitFailed;
    RunJob job;
    const MissingKeys missing;
    if (!job.send(commandAttachPriceMode) || !job.send(commandEnterPriceMode)) return;
    DocumentModel* const layout = job.open(options.layoutPath);
    if (layout == nullptr || !hasLinks(*layout, options) || !selectData(options.data)) return;
    if (!linksAreDefined(*layout, options.layoutPath, options.data) || !armRun(job, *layout, options, context)) return;
    settleStandIns(options);
    const bool done = job.runPrice();
    if (wasInterrupted()) context.exitStatus = exitInterrupted;
    if (!done) return;
    for (const std::string& output : outputs)
        if (!writeOutput(*layout, output)) return;
    missing.tell(options.data.dataPath);
    const std::int64_t overset = oversetStories(*layout);
    if (overset > 0) {
        sayError(fmt::format("{}: text doesn't fit its frame in {} place{}; make the frames larger or the text smaller",
                             outputs.front(), overset, overset == 1 ? "" : "s"));
    }
    options.json ? answerJson(outputs, missing, overset) : answerText(outputs);
    context.exitStatus = exitDone;
}

}  // namespace

void addPriceVerb(CLI::App& app, verbContext& context) {
    const auto options = std::make_shared<priceOptionsRec>();
    CLI::App* const verb = app.add_subcommand("price", "Update the prices of a catalog, each by its key");
    verb->add_option("LAYOUT", options->layoutPath, "The catalog, a .tvd file with links of price mode")->required();
    addDataOptions(*verb, options->data);
    verb->add_option("--key", options->data.keyField,
                     "Field that holds the keys of the links. Without it: the definition's, or the first");
    verb->add_option("--pages", options->pages, "Pages to update, counted from 1: 3, 3-8 or 4- (all)");
    verb->add_option("--kinds", options->kinds, "Links to update: text, frame or text,frame (both)")
        ->transform(CLI::CheckedTransformer(kindCodes).description(""))
        ->type_name("KINDS")
        ->delimiter(',');
    verb->add_flag("--keep-missing", options->keepsMissing,
                   "A link whose key has no record keeps its text; else it says so in its place");
    verb->add_option("-o,--output", options->outputs,
                     "What to make: .tvd, .pdf, .ps, .png, .svg or .eps; may be given several times. Without it the "
                     "catalog is updated in place")
        ->type_name("OUT")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    addJsonFlag(*verb, options->json);
    verb->footer("Example: tarnova price catalog.tvd --data articles.csv --key Number -o catalog.tvd -o catalog.pdf");
    verb->callback([options, &context] { runPrice(*options, context); });
}

}  // namespace tarnova
