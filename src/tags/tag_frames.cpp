#include "tags/tag_frames.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>

#include "document/document_looks.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/text_encoding.h"
#include "rules/rule_info.h"
#include "tags/tag_manager.h"

namespace tarnova {

namespace {

constexpr std::string_view tagFrameName = "_QELTAGGEDTEXT_";
constexpr std::string_view tagFrameSwatch = "C=0 M=100 Y=0 K=0";
constexpr double tagFrameWeight = 10;
constexpr double tagFrameTint = 1;
constexpr double sameNumber = 1e-8;
constexpr double partnerTolerance = 1.99999999;
constexpr PMRect pageMarkerBounds{0, 0, 72, 72};
constexpr std::size_t markLength = 4;  // of "<BT>"

bool near(double a, double b, double tolerance) {
    return std::abs(a - b) < tolerance;
}

bool near(const PMRect& a, const PMRect& b, double tolerance) {
    return near(a.left, b.left, tolerance) && near(a.top, b.top, tolerance) && near(a.right, b.right, tolerance) &&
           near(a.bottom, b.bottom, tolerance);
}

/// The characters between the start of a mark and its end mark; nothing unless both are there.
std::optional<textSpanRec> pairIn(std::u32string_view text, std::u32string_view mark, std::u32string_view endMark) {
    const std::size_t start = text.find(mark);
    if (start == std::u32string_view::npos) return std::nullopt;
    const std::size_t limit = text.find(endMark, start + markLength);
    if (limit == std::u32string_view::npos) return std::nullopt;
    return textSpanRec{static_cast<std::int32_t>(start), static_cast<std::int32_t>(limit - start)};
}

/// A rule's name between two marks, behind one separator character; nothing without the pair.
std::optional<ruleInfoRec> ruleIn(std::u32string_view text, std::u32string_view mark, std::u32string_view endMark) {
    const std::optional<textSpanRec> pair = pairIn(text, mark, endMark);
    if (!pair) return std::nullopt;
    const std::size_t from = static_cast<std::size_t>(pair->start) + markLength + 1;
    const std::size_t limit = static_cast<std::size_t>(pair->start + pair->length);
    ruleInfoRec info{};
    if (from < limit) pstrSet(info.ruleName, utf32ToUtf8(text.substr(from, limit - from)));
    return info;
}

/// Without a rules module there is nothing to attach rules to, and that is no failure.
bool wasTaken(std::int16_t answer) {
    return answer == 0 || errorOfCode(answer) == errModuleMissing;
}

class TagFrames {
 public:
    explicit TagFrames(Document& itsDocument) : document(itsDocument) {
        const auto noteNodes = [this](UID spread) {
            for (std::int32_t i = 1; i < document.layerCount(); ++i)
                spreads[document.spreadLayerNode(spread, document.layerAt(i))] = spread;
        };
        for (std::int32_t i = 0; i < document.spreadCount(); ++i)
            noteNodes(document.spreadAt(i));
        for (std::int32_t i = 0; i < document.masterCount(); ++i)
            noteNodes(document.masterAt(i));
        walkDocument(document, &frames, nullptr, 0, 0, WalkScope::everything, false, false, nullptr, nullptr, nullptr,
                     true);
        for (const UID frame : frames.otherFrames)
            framesBySpread[spreadOf(frame)].push_back({frame, document.boundsInSpread(frame)});
    }

    bool convert() {
        bool good = true;
        for (const UID tagFrame : frames.tagFrames)
            good = convertOne(tagFrame) && good;
        if (withoutPartner > 0) {
            reportErrorString(PMString("This document contains ")
                                  .appendNumber(withoutPartner)
                                  .append(" Qel Tag frame(s) with no corresponding standard frame."));
        }
        return good;
    }

 private:
    struct framePlaceRec {
        UID frame;
        PMRect bounds;
    };

    bool convertOne(UID tagFrame) {
        const PMRect bounds = document.boundsInSpread(tagFrame);
        const UID story = document.textOfFrame(tagFrame);
        const std::u32string text = document.textRead(story, 0, document.threadSpan(story, 0).length);
        bool good = true;
        if (near(bounds, pageMarkerBounds, sameNumber)) {
            good = attachPageRule(tagFrame, text);
        } else {
            const UID partner = partnerOf(tagFrame, bounds);
            if (partner == kInvalidUID) {
                ++withoutPartner;
                return true;
            }
            good = tagPartner({&document, partner}, story, text);
        }
        return document.deleteItem(tagFrame) == 0 && good;
    }

    /// The spread on whose layers an item lies. What is anchored in a text belongs to no spread here: its place is
    /// that of its text.
    [[nodiscard]] UID spreadOf(UID item) const {
        while (document.itemClass(item) != ItemClass::node && document.parent(item) != kInvalidUID)
            item = document.parent(item);
        const auto found = spreads.find(item);
        return found == spreads.end() ? kInvalidUID : found->second;
    }

    [[nodiscard]] UID partnerOf(UID tagFrame, const PMRect& bounds) const {
        const auto onSpread = framesBySpread.find(spreadOf(tagFrame));
        if (onSpread == framesBySpread.end()) return kInvalidUID;
        const auto& places = onSpread->second;
        const auto found = std::find_if(places.begin(), places.end(), [&](const framePlaceRec& place) {
            return near(place.bounds, bounds, partnerTolerance);
        });
        return found == places.end() ? kInvalidUID : found->frame;
    }

    bool tagPartner(UIDRef frame, UID story, std::u32string_view text) const {
        std::optional<textSpanRec> pair = pairIn(text, U"<BT>", U"</BT>");
        if (!pair) pair = pairIn(text, U"<PT>", U"</PT>");
        bool good = true;
        if (pair) {
            constexpr auto mark = static_cast<std::int32_t>(markLength);
            const textTagRec found = findTextTag(document, story, pair->start + mark, pair->length - mark);
            const bool inRange = found.attribute != nullptr && found.start < pair->start + pair->length;
            if (inRange) good = dataTagManager().SetFrameTag(frame, {}, std::string(found.attribute->data())) == 0;
        }
        if (const auto rule = ruleIn(text, U"<BR>", U"</BR>")) good = wasTaken(setBoxRule(frame, *rule)) && good;
        return good;
    }

    bool attachPageRule(UID marker, std::u32string_view text) const {
        const auto rule = ruleIn(text, U"<PR>", U"</PR>");
        const std::int32_t page = document.pageIndex(document.pageOfItem(marker).page);
        return !rule || page < 0 || wasTaken(setPageRule(document.ref(), page + 1, *rule));
    }

    Document& document;
    ZavoConvertFrameTagsToLinksCallback frames;
    std::unordered_map<UID, UID> spreads;  // by node
    std::map<UID, std::vector<framePlaceRec>> framesBySpread;
    std::int32_t withoutPartner = 0;
};

}  // namespace

bool isTagFrame(UIDRef frame) {
    const DocumentLooks* const looks = looksOf(*frame.database);
    if (looks == nullptr || !frame.database->isTextFrame(frame.uid)) return false;
    const strokeLookRec stroke = looks->strokeLook(frame.uid);
    return stroke.swatch == tagFrameSwatch && near(stroke.weight, tagFrameWeight, sameNumber) &&
           stroke.tint == tagFrameTint && looks->itemName(frame.uid).find(tagFrameName) != std::string::npos;
}

bool ZavoConvertFrameTagsToLinksCallback::FrameBegin() {
    if (frameRef.database->itemClass(frameRef.uid) != ItemClass::splineItem) return false;
    std::vector<UID>& list = isTagFrame(frameRef) ? tagFrames : otherFrames;
    list.push_back(frameRef.uid);
    return false;
}

bool convertTagFrames(Document& document) {
    return TagFrames(document).convert();
}

}  // namespace tarnova
