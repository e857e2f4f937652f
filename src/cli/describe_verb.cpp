// `tarnova describe`: what a layout holds, with the UIDs by which other messages name it.

#include <fmt/format.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string>
#include <unordered_set>
#include <variant>
#include <vector>

#include "cli/describe_verb.h"
#include "cli/engine_client.h"
#include "cli/job_setup.h"
#include "cli/tags_verb.h"
#include "cli/verb.h"
#include "document/item_data.h"
#include "engine/toolkit/text_encoding.h"

namespace tarnova {
namespace {

constexpr std::int32_t shownCharacters = 60;  // of a story's text
constexpr const char* storeNames[] = {"Kelvane", "Tallyra"};
constexpr const char* classNames[] = {"none", "node", "splineItem", "textColumnItem", "group", "graphic"};

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

struct describeOptionsRec {
    std::string layoutPath;
    std::string what;  // empty: everything
    bool json = false;
};

struct fieldRec {
    const char* name;
    std::variant<std::string, std::int64_t, bool, std::vector<UID>, PMRect, PMPoint> value;
};
using FieldRow = std::vector<fieldRec>;
using FieldRows = std::vector<FieldRow>;

/// A field that is left out when there is no such object.
void addUid(FieldRow& row, const char* name, UID uid) {
    if (uid != kInvalidUID) row.push_back({name, std::int64_t{uid}});
}

FieldRows pageRows(DocumentModel& layout) {
    FieldRows rows;
    for (std::int32_t i = 0; i < layout.pageCount(); ++i) {
        const Page& page = *layout.page(layout.pageAt(i));
        FieldRow& row = rows.emplace_back(FieldRow{{"uid", std::int64_t{page.uid}},
                                                   {"index", std::int64_t{i}},
                                                   {"name", layout.pageName(page.uid)},
                                                   {"size", PMPoint{page.bounds.width(), page.bounds.height()}},
                                                   {"spread", std::int64_t{page.spread}}});
        addUid(row, "master", page.master);
    }
    return rows;
}

FieldRows layerRows(DocumentModel& layout) {
    FieldRows rows;
    for (std::size_t i = 1; i < layout.layers().size(); ++i) {  // the pages layer, 0, holds no items
        const Layer& layer = layout.layers()[i];
        rows.push_back({{"uid", std::int64_t{layer.uid}},
                        {"name", layer.name},
                        {"visible", layer.visible},
                        {"locked", layer.locked},
                        {"printable", layer.printable}});
    }
    return rows;
}

/// The item and what is in it, each in front of its children.
void addTree(const DocumentModel& layout, UID uid, std::vector<UID>& items) {
    const PageItem* const item = layout.item(uid);
    if (item == nullptr) return;
    if (item->itemClass != ItemClass::node) items.push_back(uid);
    for (const UID child : item->children)
        addTree(layout, child, items);
}

/// All items: of the spreads, of the masters, and those anchored in text.
std::vector<UID> allItems(DocumentModel& layout) {
    std::vector<UID> items;
    const auto addSpread = [&](UID spread) {
        for (const UID node : layout.spread(spread)->layerNodes)
            addTree(layout, node, items);
    };
    for (std::int32_t i = 0; i < layout.spreadCount(); ++i)
        addSpread(layout.spreadAt(i));
    for (std::int32_t i = 0; i < layout.masterCount(); ++i)
        addSpread(layout.masterAt(i));
    const std::unordered_set<UID> known(items.begin(), items.end());
    for (const UID story : layout.stories()) {
        for (const ownedItemRec& owned : layout.ownedItems(story, 0, layout.totalLength(story))) {
            if (known.count(owned.item) == 0) addTree(layout, owned.item, items);
        }
    }
    return items;
}

FieldRows itemRows(DocumentModel& layout) {
    FieldRows rows;
    for (const UID uid : allItems(layout)) {
        const PageItem& item = *layout.item(uid);
        FieldRow& row = rows.emplace_back(
            FieldRow{{"uid", std::int64_t{uid}}, {"class", classNames[static_cast<int>(item.itemClass)]}});
        addUid(row, "parent", item.parent);
        addUid(row, "page", layout.pageOfItem(uid).page);
        row.push_back({"bounds", layout.boundsInSpread(uid)});
        if (!item.name.empty()) row.push_back({"name", item.name});
        addUid(row, "story", item.story);
        addUid(row, "pathStory", item.pathStory);
    }
    return rows;
}

FieldRows storyRows(DocumentModel& layout) {
    FieldRows rows;
    for (const UID uid : layout.stories()) {
        rows.push_back({{"uid", std::int64_t{uid}},
                        {"frames", layout.framesOfStory(uid)},
                        {"length", std::int64_t{layout.totalLength(uid)}},
                        {"overset", layout.isOverset(uid)},
                        {"text", utf32ToUtf8(layout.textRead(uid, 0, shownCharacters))}});
    }
    return rows;
}

std::uint32_t bigEndian(std::string_view bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value = value << 8 | static_cast<std::uint8_t>(bytes[at + i]);
    return value;
}

void addEntries(const std::string& block, const FieldRow& place, FieldRows& rows) {
    std::string_view rest = block;
    const auto add = [&](const char* name, std::string text) {
        rows.push_back(place);
        rows.back().push_back({name, std::move(text)});
    };
    if (rest.size() < itemDataHeaderBytes || bigEndian(rest, 0) != rest.size() - itemDataHeaderBytes) {
        return add("error", "the sizes of the block don't hold");
    }
    rest.remove_prefix(itemDataHeaderBytes);
    while (!rest.empty()) {
        if (rest.size() < itemDataHeaderBytes || rest.size() - itemDataHeaderBytes < bigEndian(rest, 0)) {
            return add("error", "the size of an entry doesn't hold");
        }
        const std::uint32_t size = bigEndian(rest, 0);
        std::string type(rest.substr(4, 4));
        const bool isPlain = std::all_of(type.begin(), type.end(), [](char c) { return c >= ' ' && c < 0x7F; });
        add("type", isPlain ? type : fmt::format("{:08x}", bigEndian(rest, 4)));
        rows.back().push_back({"size", std::int64_t{size}});
        rest.remove_prefix(itemDataHeaderBytes + size);
    }
}

FieldRows itemDataRows(DocumentModel& layout) {
    FieldRows rows;
    std::vector<UID> owners = allItems(layout);
    owners.insert(owners.begin(), kInvalidUID);  // the document
    for (const UID owner : owners) {
        for (int store = 0; store < 2; ++store) {
            const std::string* const block = layout.itemDataBlock(owner, store);
            if (block == nullptr) continue;
            FieldRow place;
            if (owner == kInvalidUID) {
                place.push_back({"owner", "document"});
            } else {
                place.push_back({"owner", std::int64_t{owner}});
            }
            place.push_back({"store", storeNames[store]});
            addEntries(*block, place, rows);
        }
    }
    return rows;
}

/// The tables that stand in texts.
FieldRows tableRows(DocumentModel& layout) {
    FieldRows rows;
    for (const UID story : layout.stories()) {
        for (const ownedItemRec& owned : layout.ownedItems(story, 0, layout.totalLength(story))) {
            const UID table = layout.tableOfOwnedItem(owned.item);
            if (table == kInvalidUID) continue;
            rows.push_back({{"uid", std::int64_t{table}},
                            {"story", std::int64_t{story}},
                            {"position", std::int64_t{owned.position}},
                            {"rows", std::int64_t{layout.rowCount(table)}},
                            {"columns", std::int64_t{layout.columnCount(table)}},
                            {"variable", layout.tableAttribute(table) != nullptr}});
        }
    }
    return rows;
}

/// A part of the answer; without `rows` it is the list of tags, which `tarnova tags list` gives too.
struct partRec {
    const char* key;
    FieldRows (*rows)(DocumentModel& layout);
};

constexpr partRec parts[] = {{"pages", pageRows},       {"layers", layerRows}, {"items", itemRows},
                             {"stories", storyRows},    {"tags", nullptr},     {"tables", tableRows},
                             {"itemData", itemDataRows}};

/// A value as JSON.
struct JsonValueWriter {
    JsonWriter& json;
    void operator()(const std::string& text) const { json.String(text); }
    void operator()(std::int64_t number) const { json.Int64(number); }
    void operator()(bool flag) const { json.Bool(flag); }
    void operator()(const std::vector<UID>& uids) const {
        json.StartArray();
        for (const UID uid : uids)
            json.Uint(uid);
        json.EndArray();
    }
    void operator()(const PMRect& r) const { numbers({r.left, r.top, r.right, r.bottom}); }
    void operator()(const PMPoint& size) const { numbers({size.x, size.y}); }
    void numbers(std::initializer_list<double> values) const {
        json.StartArray();
        for (const double value : values)
            json.Double(value);
        json.EndArray();
    }
};

/// A value for people, on one line.
struct PlainValue {
    std::string operator()(const std::string& text) const {
        std::string line = text;
        std::replace_if(
            line.begin(), line.end(), [](char c) { return c >= 0 && c < ' '; }, ' ');
        return '"' + line + '"';
    }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(bool flag) const { return flag ? "yes" : "no"; }
    std::string operator()(const std::vector<UID>& uids) const {
        return uids.empty() ? "none" : fmt::format("{}", fmt::join(uids, " "));
    }
    std::string operator()(const PMRect& r) const {
        return fmt::format("{:.2f} {:.2f} {:.2f} {:.2f}", r.left, r.top, r.right, r.bottom);
    }
    std::string operator()(const PMPoint& size) const { return fmt::format("{:.2f} x {:.2f} pt", size.x, size.y); }
};

void printPart(const partRec& part, DocumentModel& layout) {
    fmt::print("{}:\n", part.key);
    if (part.rows == nullptr) return printTagLines(layout);
    for (const FieldRow& row : part.rows(layout)) {
        std::string line;
        for (const fieldRec& field : row) {
            if (!line.empty()) line += ", ";
            line += std::string(field.name) + ' ' + std::visit(PlainValue{}, field.value);
        }
        fmt::print("{}\n", line);
    }
}

void writePart(JsonWriter& json, const partRec& part, DocumentModel& layout) {
    json.Key(part.key);
    if (part.rows == nullptr) return writeTagArray(json, layout);
    json.StartArray();
    for (const FieldRow& row : part.rows(layout)) {
        json.StartObject();
        for (const fieldRec& field : row) {
            json.Key(field.name);
            std::visit(JsonValueWriter{json}, field.value);
        }
        json.EndObject();
    }
    json.EndArray();
}

int describe(const describeOptionsRec& options) {
    EngineClient engine;
    DocumentModel* const layout = engine.open(options.layoutPath);
    if (layout == nullptr) return exitFailed;
    rapidjson::StringBuffer buffer;
    JsonWriter json(buffer);
    json.StartObject();
    for (const partRec& part : parts) {
        if (!options.what.empty() && options.what != part.key) continue;
        if (options.json) {
            writePart(json, part, *layout);
        } else {
            printPart(part, *layout);
        }
    }
    json.EndObject();
    if (options.json) fmt::print("{}\n", buffer.GetString());
    return exitDone;
}

}  // namespace

std::string describeAsJson(DocumentModel& layout, std::string_view what) {
    const auto* const part =
        std::find_if(std::begin(parts), std::end(parts), [what](const partRec& known) { return known.key == what; });
    if (part == std::end(parts)) return {};
    rapidjson::StringBuffer buffer;
    JsonWriter json(buffer);
    json.StartObject();
    writePart(json, *part, layout);
    json.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

void addDescribeVerb(CLI::App& app, verbContext& context) {
    const auto options = std::make_shared<describeOptionsRec>();
    CLI::App* const verb = app.add_subcommand("describe", "Tell what a layout holds, with the UIDs of its objects");
    verb->add_option("LAYOUT", options->layoutPath, "The layout (.tvd)")->required();
    std::vector<std::string> keys;
    for (const partRec& part : parts)
        keys.emplace_back(part.key);
    verb->add_option("--what", options->what, "Only this part")->check(CLI::IsMember(keys));
    addJsonFlag(*verb, options->json);
    verb->footer("Example: tarnova describe card.tvd --what stories");
    verb->callback([options, &context] { context.exitStatus = describe(*options); });
}

}  // namespace tarnova
