// `tarnova tags set` and `tarnova tags show`: one link of a layout.

#include <fmt/format.h>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <CLI/CLI.hpp>
#include <memory>
#include <vector>

#include "cli/engine_client.h"
#include "cli/job_setup.h"
#include "cli/tags_change.h"
#include "cli/verb.h"
#include "engine/toolkit/pstring.h"
#include "merge/pdf_options.h"

namespace tarnova {
namespace {

constexpr std::int32_t noLinkThere = 1;
constexpr std::int32_t noSuchObject = -6005;

/// Numbers of the commands in merge mode and in price mode.
struct commandPair {
    std::uint32_t merge;
    std::uint32_t price;
};
constexpr commandPair tagFrame = {1270, 1244}, tagText = {1271, 557}, frameLink = {598, 591}, textLink = {597, 592};
constexpr std::uint32_t commandSetPdfPage = 1279;

std::uint32_t numberOf(const commandPair& pair, bool price) {
    return price ? pair.price : pair.merge;
}

/// Where a link lies: on a frame, or on a range of a text.
struct linkPlaceOptions {
    UID frame = kInvalidUID;
    UID story = kInvalidUID;
    std::int32_t start = 0;
    std::int32_t length = 0;
};

struct tagsSetRec {
    tagsChangeRec change;
    linkPlaceOptions place;
    std::string link, key = "1", style, rule, criteria;
    bool locked = false;
    std::int32_t pdfPage = 0;  // 0: stays
};

struct tagsShowRec {
    std::string layoutPath;
    linkPlaceOptions place;
    bool price = false;
    bool json = false;
};

void addPlaceOptions(CLI::App& verb, linkPlaceOptions& place) {
    CLI::Option* const frame = verb.add_option("--frame", place.frame, "UID of the frame (see describe --what items)");
    CLI::Option* const story = verb.add_option("--story", place.story, "UID of the text");
    frame->excludes(story);
    verb.add_option("--start", place.start, "First character in the text, from 0")
        ->needs(story)
        ->check(CLI::NonNegativeNumber);
}

bool placeFits(const linkPlaceOptions& place, verbContext& context) {
    if (place.frame != kInvalidUID || place.story != kInvalidUID) return true;
    failVerb(context, "say which link: --frame UID, or --story UID", exitUsage);
    return false;
}

bool sayStatus(const std::string& layoutPath, const linkPlaceOptions& place, std::int32_t status) {
    if (status == 0) return true;
    const std::string object =
        place.frame != kInvalidUID ? fmt::format("frame {}", place.frame) : fmt::format("text {}", place.story);
    if (status == noSuchObject) {
        sayError(fmt::format("{}: there is no {}", layoutPath, object));
    } else if (status == noLinkThere) {
        sayError(fmt::format("{}: {} has no link there", layoutPath, object));
    } else {
        sayError(fmt::format("{}: {}: the link can't be set (code {})", layoutPath, object, status));
    }
    return false;
}

void takeName(Str255& out, const std::string& text) {
    pstrFromView(out, sizeof(out), text);
}

bool setLink(DocumentModel& layout, const tagsSetRec& options) {
    const linkPlaceOptions& place = options.place;
    const bool onFrame = place.frame != kInvalidUID;
    UIDRef target{&layout, onFrame ? place.frame : place.story};
    Str255 key, link, style, rule, criteria;
    takeName(key, options.key);
    takeName(link, options.link);
    takeName(style, options.style);
    takeName(rule, options.rule);
    takeName(criteria, options.criteria);
    std::uint8_t locked = options.locked ? 1 : 0;
    std::int32_t start = place.start, limit = place.start + place.length;
    EngineCommand command(numberOf(onFrame ? tagFrame : tagText, options.change.price));
    command.item(0, target);
    if (!onFrame) command.item(1, start).item(2, limit);
    const unsigned first = onFrame ? 1 : 3;
    command.item(first, key).item(first + 1, link).item(first + 2, style).item(first + 3, rule);
    std::int32_t status = command.item(first + 4, criteria).item(first + 5, locked).run();
    if (status == 0 && options.pdfPage > 0) {
        std::int32_t page = options.pdfPage;
        status = EngineCommand(commandSetPdfPage).item(0, target).item(1, page).run();
    }
    return sayStatus(options.change.layoutPath, place, status);
}

bool setFits(const tagsSetRec& options, verbContext& context) {
    if (!placeFits(options.place, context)) return false;
    if (options.place.story != kInvalidUID && options.place.length < 1) {
        failVerb(context, "say how many characters the link covers: --length N", exitUsage);
        return false;
    }
    return true;
}

/// A link as a command gives it.
struct shownLinkRec {
    Str255 key{}, link{}, style{}, rule{}, criteria{}, notes{};
    std::int32_t start = 0;
    std::int32_t length = 0;
    PMString text;
};

std::int32_t readLink(DocumentModel& layout, const tagsShowRec& options, shownLinkRec& out) {
    const bool onFrame = options.place.frame != kInvalidUID;
    UIDRef target{&layout, onFrame ? options.place.frame : options.place.story};
    std::int32_t from = options.place.start;
    std::uint8_t withText = 1;
    EngineCommand command(numberOf(onFrame ? frameLink : textLink, options.price));
    command.item(0, target);
    if (!onFrame) command.item(1, from).item(8, out.start).item(9, out.length);
    const unsigned first = onFrame ? 1 : 2;
    command.item(first, out.key).item(first + 1, out.link).item(first + 2, out.style).item(first + 3, out.rule);
    command.item(first + 4, out.criteria).item(first + 5, out.notes);
    command.item(onFrame ? 7 : 11, withText).item(onFrame ? 8 : 12, out.text);
    return command.run();
}

struct shownMember {
    const char* name;
    std::string value;
};

std::vector<shownMember> membersOf(DocumentModel& layout, const tagsShowRec& options, const shownLinkRec& link) {
    std::vector<shownMember> members;
    const auto add = [&members](const char* name, const Str255& text) {
        if (text[0] != 0) members.push_back({name, shownName(pstrView(text))});
    };
    add("link", link.link);
    add("key", link.key);
    add("style", link.style);
    add("rule", link.rule);
    add("criteria", link.criteria);
    add("notes", link.notes);
    if (options.place.frame == kInvalidUID) {
        members.push_back({"start", std::to_string(link.start)});
        members.push_back({"length", std::to_string(link.length)});
    } else {
        const UIDRef frame{&layout, options.place.frame};
        members.push_back({"pdfPage", std::to_string(framePdfOptions(frame).page)});
        if (layout.childCount(frame.uid) > 0)
            members.push_back({"picture", layout.linkPath(layout.childAt(frame.uid, 0))});
    }
    members.push_back({"text", link.text.bytes()});
    return members;
}

int showLink(const tagsShowRec& options) {
    EngineClient engine;
    if (options.price) enterPriceMode();
    DocumentModel* const layout = engine.open(options.layoutPath);
    if (layout == nullptr) return exitFailed;
    shownLinkRec link;
    if (!sayStatus(options.layoutPath, options.place, readLink(*layout, options, link))) return exitFailed;
    const std::vector<shownMember> members = membersOf(*layout, options, link);
    if (options.json) {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> json(buffer);
        json.StartObject();
        for (const shownMember& member : members) {
            json.Key(member.name);
            json.String(member.value);
        }
        json.EndObject();
        fmt::print("{}\n", buffer.GetString());
        return exitDone;
    }
    for (const shownMember& member : members)
        if (!member.value.empty()) fmt::print("{}: {}\n", member.name, member.value);
    return exitDone;
}

}  // namespace

void addTagsSetVerbs(CLI::App& tags, verbContext& context) {
    const auto set = std::make_shared<tagsSetRec>();
    CLI::App& setVerb = *tags.add_subcommand("set", "Make a frame or a range of text a link, or change its link");
    addTagsChangeOptions(setVerb, set->change);
    addPlaceOptions(setVerb, set->place);
    setVerb.add_option("--length", set->place.length, "Characters of the text that the link covers")
        ->check(CLI::PositiveNumber);
    setVerb.add_option("--link", set->link, "Name of the link in the definition")->required();
    setVerb.add_option("--key", set->key, "Sequence number on the page, or key of the record in price mode")
        ->capture_default_str();
    setVerb.add_option("--style", set->style, "Price style");
    setVerb.add_option("--rule", set->rule, "Rule");
    setVerb.add_option("--criteria", set->criteria, "Search criteria");
    setVerb.add_flag("--locked", set->locked, "Runs leave the link alone");
    setVerb.add_option("--pdf-page", set->pdfPage, "Page of a PDF that the frame shows, from 1")
        ->check(CLI::PositiveNumber);
    setVerb.footer("Example: tarnova tags set card.tvd --frame 12 --link Photo -o card.tvd");
    setVerb.callback([set, &context] {
        if (!setFits(*set, context)) return;
        changeTags(set->change, context, [&set](DocumentModel& layout) { return setLink(layout, *set); });
    });

    const auto show = std::make_shared<tagsShowRec>();
    CLI::App& showVerb = *tags.add_subcommand("show", "Show all of one link: that of a frame, or the next of a text");
    showVerb.add_option("LAYOUT", show->layoutPath, "The layout (.tvd)")->required();
    addPlaceOptions(showVerb, show->place);
    showVerb.add_flag("--price", show->price, "Links of price mode (Tallyra) in place of merge mode (Kelvane)");
    addJsonFlag(showVerb, show->json);
    showVerb.footer("Example: tarnova tags show card.tvd --frame 12");
    showVerb.callback([show, &context] {
        if (placeFits(show->place, context)) context.exitStatus = showLink(*show);
    });
}

}  // namespace tarnova
