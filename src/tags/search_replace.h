// Search and replace over the links of a document: their keys, further keys, names, search criteria and styles.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "document/walk.h"
#include "engine/toolkit/pstring.h"
#include "tags/tag_rewrite.h"

namespace tarnova {

/// What is looked for and what becomes of it. A search text of "*" matches everything. Kept in the preferences.
struct searchReplaceRec {
    std::uint8_t keyEnabled;
    Str31 keySearch;
    std::uint8_t reserved33;
    std::uint16_t keyMode;     // changeString
    std::uint8_t removeEmpty;  // a tag whose key or link name is empty in the end is removed
    Str31 keyReplace;          // the operand of the change
    std::uint8_t auxEnabled;
    Str31 auxSearch;
    std::uint16_t auxMode;
    Str31 auxReplace;
    std::uint8_t matchCase;  // of keys; names are compared without case whatever it says
    std::uint8_t linkEnabled;
    Str31 linkSearch;
    Str31 linkReplace;
    std::uint8_t criteriaEnabled;
    Str31 criteriaSearch;
    Str31 criteriaReplace;
    std::uint8_t styleEnabled;
    Str31 styleSearch;
    Str31 styleReplace;
};

/// The settings of the preferences, and their exchange.
[[nodiscard]] searchReplaceRec lastSearchReplace();
void keepSearchReplace(const searchReplaceRec& settings);

// Modes of changeString.
inline constexpr std::uint16_t changeReplace = 1;
inline constexpr std::uint16_t changePrefix = 2;
inline constexpr std::uint16_t changeCutPrefix = 3;
inline constexpr std::uint16_t changeSuffix = 4;
inline constexpr std::uint16_t changeCutSuffix = 5;
inline constexpr std::uint16_t changeDropCharacters = 6;
inline constexpr std::uint16_t changeLower = 7;  // A to Z
inline constexpr std::uint16_t changeUpper = 8;

/// The settings of the first search: replace, and match the case.
[[nodiscard]] inline searchReplaceRec searchReplaceDefaults() {
    searchReplaceRec settings{};
    settings.keyMode = settings.auxMode = changeReplace;
    settings.matchCase = 1;
    return settings;
}

/// The value changed: it becomes the operand, or gets it in front or behind, loses it there when it stands there
/// exactly, loses every character that the operand has, or changes its case. Another mode acts as changeReplace.
[[nodiscard]] std::string changeString(std::uint16_t mode, std::string_view operand, std::string_view value);

/// The texts of the dialog, before they are cut to the record.
struct searchReplaceTexts {
    bool keyEnabled = false, auxEnabled = false, linkEnabled = false, criteriaEnabled = false, styleEnabled = false;
    std::uint16_t keyMode = changeReplace, auxMode = changeReplace;
    bool removeEmpty = false, matchCase = true;
    std::string keySearch, keyReplace, auxSearch, auxReplace, linkSearch, linkReplace, criteriaSearch, criteriaReplace,
        styleSearch, styleReplace;
};

/// Key of the message that says what is wrong with the texts, the first fault; empty when nothing is.
[[nodiscard]] std::string searchReplaceFault(const searchReplaceTexts& texts);
/// The record of texts without a fault; each is cut at 31 characters.
[[nodiscard]] searchReplaceRec searchReplaceOf(const searchReplaceTexts& texts);

/// Changes the fields of a tag as the settings say; true when any is another now. Keys are cut at 64 characters, names
/// at 31, further keys at 255. `tag.auxKeys` may be null.
bool applySearchReplace(const searchReplaceRec& settings, tagDataRec& tag);

/// What a search and replace did.
struct searchReplaceCounts {
    std::int32_t changed = 0;
    std::int32_t removed = 0;
};

/// A tag without key or name goes with `removeEmpty`, else it stays as it was.
class ZavoSrchRplcPhFrameCallback final : public ZavoFrameCallback {
 public:
    ZavoSrchRplcPhFrameCallback(const searchReplaceRec& itsSettings, searchReplaceCounts& itsCounts);
    bool TagIsMine(std::string_view data) override;
    std::int32_t TagProcess() override;
    [[nodiscard]] bool failed() const { return hasFailed; }

 private:
    const searchReplaceRec& settings;
    searchReplaceCounts& counts;
    TagRewrite open;
    bool hasFailed = false;
};

class ZavoSrchRplcPhTextCallback final : public ZavoStoryCallback {
 public:
    ZavoSrchRplcPhTextCallback(const searchReplaceRec& itsSettings, searchReplaceCounts& itsCounts);
    bool TagIsMine(UIDRef story, const TagAttribute& attribute) override;
    std::int32_t TagProcess(UIDRef story) override;
    [[nodiscard]] bool failed() const { return hasFailed; }

 private:
    const searchReplaceRec& settings;
    searchReplaceCounts& counts;
    TagRewrite open;
    bool hasFailed = false;
};

/// All frames of the document, then all its texts, in one step. False after telling the user that it failed.
bool searchReplaceDocument(UIDRef document, const searchReplaceRec& settings, searchReplaceCounts& outCounts);

}  // namespace tarnova
