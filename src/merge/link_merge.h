// One link under visit, as the merges of text and of frames have it alike: which record it shows, its value as text,
// and what becomes of it.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/toolkit/types.h"
#include "merge/field_markers.h"
#include "merge/keyword_links.h"
#include "merge/tag_value.h"
#include "tags/tag_record.h"

namespace tarnova {

[[nodiscard]] bool isPriceRun();

/// A base for the visitors. The steps run in the order of their declarations, each only without an error.
class LinkMerge {
 public:
    LinkMerge(const LinkMerge&) = delete;
    LinkMerge& operator=(const LinkMerge&) = delete;

 protected:
    /// `itsDefaultSet` says which set of the preferences stands in for values: `defaultSetText` or `defaultSetFrame`.
    explicit LinkMerge(std::uint16_t itsDefaultSet);
    ~LinkMerge() = default;

    /// Opens the data of the current definition; a failure is in `engineError`.
    [[nodiscard]] static bool openData();

    /// Clears what is known of the last link and reads the stored tag of the next; a failure is in `engineError`.
    [[nodiscard]] bool readTag(std::string_view stored);

    /// The record and its value: of a price run by the link's key, else by page and sequence number.
    [[nodiscard]] errorWord chooseRecord(errorWord priorError);
    /// The value as it will stand in the document, in `newText`: blanks off both ends, keywords, prefix and suffix
    /// around what was found, field markers.
    [[nodiscard]] errorWord prepareValue(errorWord priorError);
    /// Counts and decides what becomes of the link; a link that ends the run sets bit 0 of `cancelWord`.
    void decideAction(std::uint16_t& cancelWord);

    /// Where the link stands. Asked for only where it matters, since finding the page may compose.
    [[nodiscard]] virtual keywordPlaceRec placeOfLink() = 0;

    tagDataRec tagRec{};
    tagValueRec value;
    std::int32_t recordPosition = 0;  // of the record in the run, from 0 with the header counted
    std::u32string newText;           // the value as characters; its room is used again
    bool hasValue = false;            // a value takes the link's place
    bool deleteMode = false;          // what the link stands on goes, for want of data
    bool lockedLink = false;

 private:
    errorWord fetchAt(const tagDataRec& tag, tagValueRec& out);
    errorWord fetchMarker(std::string_view name, std::int32_t record, markerValueRec& out);
    void refuseTag(std::uint16_t& cancelWord);

    std::uint16_t defaultSet;
};

}  // namespace tarnova
