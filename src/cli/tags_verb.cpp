// `tarnova tags list`: the variable links of a layout.

#include "cli/tags_verb.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "cli/engine_client.h"
#include "cli/job_setup.h"
#include "cli/tags_change.h"
#include "cli/verb.h"
#include "engine/toolkit/text_encoding.h"
#include "tags/tag_list.h"

namespace tarnova {
namespace {

constexpr const char* storeNames[] = {"Kelvane", "Tallyra"};

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

struct tagsOptionsRec {
    std::string layoutPath;
    bool json = false;
};

/// Covered text on one line.
std::string shownText(const std::u32string& text) {
    std::string line = utf32ToUtf8(text);
    for (char& c : line)
        if (c == '\r' || c == '\n' || c == '\t') c = ' ';
    return line;
}

std::string pageOf(const DocumentModel& layout, const tagListRec& entry) {
    if (entry.onMaster) return "master";
    return entry.pageIndex < 0 ? "no page" : layout.pageName(layout.pageAt(entry.pageIndex));
}

/// Why a stored record couldn't be read whole; empty when it could.
std::string readFault(const tagListRec& entry) {
    if (entry.readError == 0) return {};
    return entry.readError == errTagFieldUnknown ? "the stored record has an unknown field"
                                                 : "the sizes in the stored record don't hold";
}

void writeMember(JsonWriter& json, const char* name, const std::string& text) {
    json.Key(name);
    json.String(text);
}

void writeEntry(JsonWriter& json, const DocumentModel& layout, const tagListRec& entry) {
    json.StartObject();
    writeMember(json, "store", storeNames[entry.store]);
    writeMember(json, "page", pageOf(layout, entry));
    json.Key(entry.onFrame ? "frame" : "story");
    json.Uint(entry.owner);
    if (!entry.onFrame) {
        json.Key("start");
        json.Int(entry.start);
        json.Key("length");
        json.Int(entry.length);
    }
    writeMember(json, "key", shownName(pstrView(entry.tag.searchKey)));
    writeMember(json, "link", shownName(pstrView(entry.tag.extractionRecordName)));
    writeMember(json, "rule", shownName(pstrView(entry.tag.ruleName)));
    writeMember(json, "criteria", shownName(pstrView(entry.tag.searchCriteriaName)));
    writeMember(json, "style", shownName(pstrView(entry.tag.styleRecordName)));
    json.Key("locked");
    json.Bool(entry.tag.linkLocked != 0);
    if (!entry.onFrame) writeMember(json, "text", utf32ToUtf8(entry.text));
    if (entry.readError != 0) writeMember(json, "error", readFault(entry));
    json.EndObject();
}

/// Of both stores, one behind the other.
std::vector<tagListRec> allTags(DocumentModel& layout) {
    std::vector<tagListRec> entries;
    for (const std::uint16_t store : {0, 1})
        for (tagListRec& entry : listTags(layout, store))
            entries.push_back(std::move(entry));
    return entries;
}

void printJson(DocumentModel& layout) {
    rapidjson::StringBuffer buffer;
    JsonWriter json(buffer);
    json.StartObject();
    json.Key("tags");
    writeTagArray(json, layout);
    json.EndObject();
    fmt::print("{}\n", buffer.GetString());
}

/// " rule Big, style Bold" and the like; nothing for a plain link.
std::string extrasOf(const tagListRec& entry) {
    std::string extras;
    const auto add = [&](const char* what, const std::uint8_t* name) {
        if (name[0] != 0) extras += fmt::format(", {} \"{}\"", what, shownName(pstrView(name)));
    };
    add("rule", entry.tag.ruleName);
    add("criteria", entry.tag.searchCriteriaName);
    add("style", entry.tag.styleRecordName);
    if (entry.tag.linkLocked != 0) extras += ", locked";
    if (entry.readError != 0) extras += fmt::format(", damaged: {}", readFault(entry));
    return extras;
}

void printLine(const DocumentModel& layout, const tagListRec& entry) {
    const std::string place = entry.onFrame ? fmt::format("frame {}", entry.owner)
                                            : fmt::format("story {} at {}+{}", entry.owner, entry.start, entry.length);
    const std::string covered = entry.onFrame ? std::string() : fmt::format(" over \"{}\"", shownText(entry.text));
    fmt::print("{} page {}, {}: \"{}\" with key \"{}\"{}{}\n", storeNames[entry.store], pageOf(layout, entry), place,
               shownName(pstrView(entry.tag.extractionRecordName)), shownName(pstrView(entry.tag.searchKey)), covered,
               extrasOf(entry));
}

int listLayoutTags(const tagsOptionsRec& options) {
    EngineClient engine;
    DocumentModel* const layout = engine.open(options.layoutPath);
    if (layout == nullptr) return exitFailed;
    if (options.json) {
        printJson(*layout);
    } else {
        printTagLines(*layout);
    }
    return exitDone;
}

}  // namespace

void printTagLines(DocumentModel& layout) {
    for (const tagListRec& entry : allTags(layout))
        printLine(layout, entry);
}

void writeTagArray(rapidjson::Writer<rapidjson::StringBuffer>& json, DocumentModel& layout) {
    json.StartArray();
    for (const tagListRec& entry : allTags(layout))
        writeEntry(json, layout, entry);
    json.EndArray();
}

void addTagsVerb(CLI::App& app, verbContext& context) {
    const auto options = std::make_shared<tagsOptionsRec>();
    CLI::App& tags = *app.add_subcommand("tags", "Look at the variable links of a layout, and change them");
    tags.require_subcommand(1);
    tags.footer("Example: tarnova tags list card.tvd");

    CLI::App& list = *tags.add_subcommand(
        "list", "List every link on text and on frames: page, place, link name, key and what goes with it");
    list.add_option("LAYOUT", options->layoutPath, "The layout (.tvd)")->required();
    addJsonFlag(list, options->json);
    list.footer(
        "A line for each link, first of merge mode (Kelvane), then of price mode (Tallyra). Places are\n"
        "start+length in characters of the story.\nExample: tarnova tags list card.tvd --json");
    list.callback([options, &context] { context.exitStatus = listLayoutTags(*options); });

    addTagsSetVerbs(tags, context);
    addTagsTextVerbs(tags, context);
    addTagsBulkVerbs(tags, context);
}

}  // namespace tarnova
