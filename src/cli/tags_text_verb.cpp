// `tarnova tags to-links` and `tags to-text`: text tags into links and back.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>

#include "cli/engine_client.h"
#include "cli/job_setup.h"
#include "cli/tags_change.h"
#include "cli/verb.h"
#include "engine/session/session.h"
#include "tags/tag_list.h"
#include "tags/tag_syntax.h"

namespace tarnova {
namespace {

constexpr std::uint32_t commandConvertForMerge = 1257;
constexpr std::uint32_t commandConvertForPrice = 1233;

const char* faultOf(std::int32_t errorCode) {
    switch (errorCode) {
        case tagErrorOutline:
            return "it has no > of its own, or its <!!> stands before it";
        case tagErrorNoEnd:
            return "it has neither text behind its colon nor a closing <!!>";
        case tagErrorTwoColons:
            return "two colons stand behind its last semicolon; write a colon in a field as %3A";
        case tagErrorTooLong:
            return "a field is too long, or a colon stands in front of its last semicolon; write that as %3A";
        case tagErrorMissing:
            return "a field that its kind needs is empty";
        case tagErrorNoColon:
            return "no colon stands behind its last semicolon";
        case tagErrorSeparators:
            return "it needs from 1 to 13 semicolons, and a colon behind the last";
        case tagErrorMemory:
            return "there is no memory for its media data";
        case tagErrorMedia:
            return "its media data must be pairs of hexadecimal digits";
        case tagErrorEscape:
            return "a % in a field must be followed by two hexadecimal digits";
        default:
            return "it couldn't become a link";
    }
}

/// Tells the text tags that a layout still has, with their places; gives how many have a fault.
std::size_t tellRemaining(const DocumentModel& layout, const std::string& path) {
    std::size_t count = 0;
    for (const UID story : layout.stories()) {
        const std::u32string text = layout.textRead(story, 0, layout.totalLength(story));
        std::string bytes(text.size(), ' ');
        reduceTagText(text, bytes.data());
        std::uint16_t status = 0;
        const parsedTagList list = tagTextParse(static_cast<std::int32_t>(bytes.size()), bytes.data(), status);
        for (const parsedTag* tag = list.get(); tag != nullptr; tag = tag->next) {
            if (tag->errorCode == 0 && tag->tagMode == tagModeCheckOnly) continue;
            ++count;
            sayError(fmt::format("{}: story {} at {}: a text tag stays: {}", path, story, tag->tagStart,
                                 faultOf(tag->errorCode)));
        }
    }
    return count;
}

bool convert(DocumentModel& layout, const tagsChangeRec& options, bool toText) {
    const std::uint16_t store = session().engineMode;
    const std::size_t before = listTags(layout, store).size();
    UIDRef document = layout.ref();
    std::uint8_t direction = toText ? 1 : 0;
    EngineCommand command(options.price ? commandConvertForPrice : commandConvertForMerge);
    if (command.item(0, document).item(1, direction).run() != 0) return false;
    const std::size_t behind = listTags(layout, store).size();
    if (toText) {
        fmt::print("{}: {} written as text\n", options.outputPath, countOf(before - behind, "link"));
        return true;
    }
    const std::size_t remaining = tellRemaining(layout, options.outputPath);
    fmt::print("{}: {} made, {} left\n", options.outputPath, countOf(behind - before, "link"),
               countOf(remaining, "text tag"));
    return true;
}

void addVerb(CLI::App& tags, verbContext& context, const char* name, const char* does, const char* footer,
             bool toText) {
    const auto options = std::make_shared<tagsChangeRec>();
    CLI::App& verb = *tags.add_subcommand(name, does);
    addTagsChangeOptions(verb, *options);
    verb.footer(footer);
    verb.callback([options, &context, toText] {
        changeTags(*options, context, [&](DocumentModel& layout) { return convert(layout, *options, toText); });
    });
}

}  // namespace

void addTagsTextVerbs(CLI::App& tags, verbContext& context) {
    addVerb(
        tags, context, "to-links", "Make links of the tags that are written out in text",
        "A tag is <!$key; link; rule; style; :text> or <!$key; link; : >text<!!>; [ and ] may stand for < and >. One\n"
        "that is wrong is told with its place and stays as it is. Frames under tag frames get their links too.\n"
        "Example: tarnova tags to-links incoming.tvd -o card.tvd",
        false);
    addVerb(tags, context, "to-text", "Write the links on text out as tags",
            "Notes, locks and further keys of a link aren't written. Links of frames stay.\n"
            "Example: tarnova tags to-text card.tvd -o outgoing.tvd",
            true);
}

}  // namespace tarnova
