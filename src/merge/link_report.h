// What a run came to at each link: counted, and told to whoever listens.

#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "document/uid.h"
#include "tags/tag_record.h"

namespace tarnova {

enum class LinkState : std::uint8_t { unchanged, changed, deleted };

/// One link behind its visit. Lives for the call.
struct linkReportRec {
    const tagDataRec& tag;
    UIDRef item;                 // its story
    std::int32_t pageEntry = 0;  // position of its page in the document, from 0; see `wantsPages`
    bool locked = false;
    std::int16_t status = 0;  // fetchStatus
    LinkState state = LinkState::unchanged;
    std::u32string oldText{};
    std::u32string newText{};
};

/// Links of a run; the kinds behind `links` add up to it.
struct linkCountsRec {
    std::uint32_t links = 0;
    std::uint32_t changed = 0;        // found their value, and it was another text
    std::uint32_t unchanged = 0;      // have the text that they had
    std::uint32_t emptied = 0;        // lost their text, as their record has no value
    std::uint32_t withoutRecord = 0;  // no record has their key
    std::uint32_t refused = 0;        // name what the definition doesn't have, or were refused by a rule
    std::int16_t lowestStatus = 0;    // fetchStatus of the worst link,
    std::string lowestText;           // the first of them: its name, and its key in brackets
};

struct linkReportStateRec {
    bool isOn = false;        // while it is off nobody asks for texts
    bool wantsPages = false;  // the listener reads pages: to find them a text that several frames show is composed
    linkCountsRec counts;
    std::function<void(const linkReportRec&)> listener;  // may be empty
};
[[nodiscard]] linkReportStateRec& linkReport();

/// Clears the counts and switches the report on; the counts stay behind its end.
void startLinkReport();
void endLinkReport();

/// Counts a link and tells the listener.
void reportLink(const linkReportRec& link);

}  // namespace tarnova
