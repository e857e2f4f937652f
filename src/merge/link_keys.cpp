#include "merge/link_keys.h"

#include <algorithm>
#include <optional>

#include "definitions/definition_state.h"
#include "definitions/record_def_set.h"
#include "document/document.h"
#include "engine/toolkit/pstring.h"
#include "engine/toolkit/text_encoding.h"
#include "tags/tag_attribute.h"

namespace tarnova {
namespace {

constexpr std::int32_t longestKey = 64;  // characters of a text that becomes a key

std::string textAsKey(UIDRef story, std::int32_t start, std::int32_t length) {
    const textSpanRec thread = story.database->threadSpan(story.uid, start);
    const std::int32_t inThread = thread.start + thread.length - 1 - start;  // its closing mark is no text
    const std::int32_t count = std::min({length, inThread, longestKey});
    const std::string text = utf32ToUtf8(story.database->textRead(story.uid, start, count));
    Str255 key;
    pstrFromView(key, sizeof(key), text);
    pstrStripEscapes(key);
    return pstrString(key);
}

/// A link further on in the story.
struct laterLink {
    std::int32_t start = 0;
    std::int32_t length = 0;
    tagDataRec tag;
};

bool hasOwnKey(const tagDataRec& tag) {
    const recordDefRec* const definition = definitionState().currentRecordDef;
    extractionRec* link = nullptr;
    if (definition == nullptr || findExtraction(definition, tag.extractionRecordName, link, 0) != 0) return false;
    return link != nullptr && link->magicKeyNumbers[0] == keyTypeOwn;
}

/// The nearest link behind a place that has a key of its own, of a name or of any.
std::optional<laterLink> nextLink(UIDRef story, std::int32_t from, std::string_view name) {
    const Document& document = *story.database;
    std::optional<laterLink> found;
    std::uint32_t foundId = 0;
    for (std::int32_t at = from; at < document.totalLength(story.uid);) {
        const attributeRunRec run = document.attributeRunAt(story.uid, at);
        const TagAttribute* const attribute = ownTagOf(run.attributes);
        const bool goesOn = found && attribute != nullptr && attribute->tagId() == foundId;
        if (found && !goesOn) return found;
        if (goesOn) {
            found->length += run.length;
        } else if (attribute != nullptr) {
            laterLink candidate{at, run.length, {}};
            const bool isRead = tagRecordDecode(attribute->data(), &candidate.tag, nullptr, nullptr, 0) == 0;
            const bool isNamed = name.empty() || pstrView(candidate.tag.extractionRecordName) == name;
            if (isRead && isNamed && hasOwnKey(candidate.tag)) {
                found = candidate;
                foundId = attribute->tagId();
            }
        }
        at += std::max(run.length, 1);
    }
    return found;
}

std::optional<std::string> keyOnPage(const linkPlaceRec& place, const extractionRec& link,
                                     FirstOnLinkTracker* tracker) {
    if (tracker == nullptr || place.page == kInvalidUID) return std::nullopt;
    const Document& document = *place.story.database;
    const firstOnOrderRec order{link.magicKeyNumbers[1], link.magicKeyNumbers[2]};
    const std::string_view name = pstrView(link.magicKey);
    tagDataRec first{};
    bool found = false;
    if (link.magicKeyNumbers[0] == keyTypeFirstOnPage) {
        found = tracker->firstOnPage(document.pageIndex(place.page), order, name, first);
    } else {
        std::int32_t spread = 0;
        while (spread < document.spreadCount() && document.spreadAt(spread) != document.spreadOfPage(place.page))
            ++spread;
        found = tracker->firstOnSpread(spread, order, name, first);
    }
    return found ? std::optional(pstrString(first.searchKey)) : std::nullopt;
}

}  // namespace

bool keyStandsOnPage(const extractionRec& link) {
    return link.magicKeyNumbers[0] == keyTypeFirstOnPage || link.magicKeyNumbers[0] == keyTypeFirstOnSpread;
}

void LinkKeys::pass(const linkPlaceRec& place, const tagDataRec& tag) {
    passed_.push_back({pstrString(tag.extractionRecordName), pstrString(tag.searchKey), place.start, place.length});
}

const LinkKeys::passedLink* LinkKeys::before(std::string_view name) const {
    const auto found = std::find_if(passed_.rbegin(), passed_.rend(),
                                    [&](const passedLink& link) { return name.empty() || link.name == name; });
    return found == passed_.rend() ? nullptr : &*found;
}

void LinkKeys::settle(const linkPlaceRec& place, const extractionRec& link, FirstOnLinkTracker* tracker,
                      tagDataRec& tag) const {
    const std::string_view name = pstrView(link.magicKey);
    const std::int16_t keyType = link.magicKeyNumbers[0];
    std::optional<std::string> key;
    switch (keyType) {
        case keyTypeOwn:
            return;
        case keyTypeFirstOnPage:
        case keyTypeFirstOnSpread:
            key = keyOnPage(place, link, tracker);
            break;
        case keyTypeTextBefore:
        case keyTypeKeyBefore:
            if (const passedLink* const earlier = before(name))
                key = keyType == keyTypeKeyBefore ? earlier->key
                                                  : textAsKey(place.story, earlier->start, earlier->length);
            break;
        case keyTypeTextBehind:
        case keyTypeKeyBehind:
            if (const auto later = nextLink(place.story, place.start + place.length, name))
                key = keyType == keyTypeKeyBehind ? pstrString(later->tag.searchKey)
                                                  : textAsKey(place.story, later->start, later->length);
            break;
        case keyTypeTextHere:
            key = textAsKey(place.story, place.start, place.length);
            break;
        default:
            break;
    }
    pstrFromView(tag.searchKey, sizeof(tag.searchKey), key ? std::string_view(*key) : noLinkKey);
}

}  // namespace tarnova
