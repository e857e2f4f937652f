#include "tags/search_replace.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/text_encoding.h"
#include "tags/tag_attribute.h"

namespace tarnova {

namespace {

static_assert(sizeof(searchReplaceRec) <= sizeof(appPrefsRec::searchReplace));
static_assert(std::is_trivially_copyable_v<searchReplaceRec>);

constexpr std::string_view anything = "*";
constexpr std::size_t keyTextLimit = 63;
constexpr std::size_t nameTextLimit = 31;

std::string withoutCharacters(std::string_view value, std::string_view dropped) {
    if (!isUtf8(value) || !isUtf8(dropped)) {
        std::string kept(value);
        std::erase_if(kept, [dropped](char c) { return dropped.find(c) != std::string_view::npos; });
        return kept;
    }
    std::u32string kept = utf8ToUtf32(value);
    const std::u32string characters = utf8ToUtf32(dropped);
    std::erase_if(kept, [&](char32_t c) { return characters.find(c) != std::u32string::npos; });
    return utf32ToUtf8(kept);
}

template <typename Fold>
std::string folded(std::string_view value, Fold fold) {
    std::string out(value);
    std::transform(out.begin(), out.end(), out.begin(), fold);
    return out;
}

bool areEqual(std::string_view a, std::string_view b, bool matchCase) {
    return matchCase ? a == b : ascii::equalNoCase(a, b);
}

bool isWanted(std::string_view search, std::string_view value, bool matchCase) {
    return search == anything || areEqual(search, value, matchCase);
}

/// Puts a value into a field; true when that is another one.
template <std::size_t size>
bool put(std::uint8_t (&field)[size], std::string_view value) {
    const std::string before = pstrString(field);
    pstrSet(field, value);
    return pstrView(field) != before;
}

bool changeKey(const searchReplaceRec& settings, tagDataRec& tag) {
    const std::string_view search = pstrView(settings.keySearch), operand = pstrView(settings.keyReplace);
    const bool matchCase = settings.matchCase != 0;
    if (settings.keyEnabled == 0 || areEqual(search, operand, matchCase)) return false;
    if (!isWanted(search, pstrView(tag.searchKey), matchCase)) return false;
    return put(tag.searchKey, changeString(settings.keyMode, operand, pstrView(tag.searchKey)));
}

bool changeAuxKeys(const searchReplaceRec& settings, tagDataRec& tag) {
    const std::string_view search = pstrView(settings.auxSearch), operand = pstrView(settings.auxReplace);
    const bool matchCase = settings.matchCase != 0;
    const std::size_t size = handleSize(tag.auxKeys);
    if (settings.auxEnabled == 0 || size == 0 || areEqual(search, operand, matchCase)) return false;
    const std::string before(reinterpret_cast<const char*>(*tag.auxKeys), size);
    std::string_view left = before;
    std::string changed;
    while (!left.empty()) {
        const std::size_t length = std::min<std::size_t>(static_cast<std::uint8_t>(left.front()), left.size() - 1);
        const std::string_view key = left.substr(1, length);
        std::string value(key);
        if (isWanted(search, key, matchCase)) value = changeString(settings.auxMode, operand, key);
        value.resize(utf8CutLength(value, pstrMaxLength));
        changed += static_cast<char>(static_cast<std::uint8_t>(value.size()));
        changed += value;
        left.remove_prefix(1 + length);
    }
    if (changed == before || resizeHandle(tag.auxKeys, changed.size()) != 0) return false;
    std::memcpy(*tag.auxKeys, changed.data(), changed.size());
    return true;
}

bool changeName(std::uint8_t enabled, const Str31& search, const Str31& replace, Str31& name) {
    if (enabled == 0 || pstrEqualNoCase(search, replace) == 0) return false;
    return isWanted(pstrView(search), pstrView(name), false) && put(name, pstrView(replace));
}

bool isEmptied(const tagDataRec& tag) {
    return tag.searchKey[0] == 0 || tag.extractionRecordName[0] == 0;
}

}  // namespace

searchReplaceRec lastSearchReplace() {
    searchReplaceRec settings;
    std::memcpy(&settings, appPrefs().searchReplace, sizeof settings);
    return settings;
}

void keepSearchReplace(const searchReplaceRec& settings) {
    std::memcpy(appPrefs().searchReplace, &settings, sizeof settings);
}

std::string changeString(std::uint16_t mode, std::string_view operand, std::string_view value) {
    switch (mode) {
        case changePrefix:
            return std::string(operand).append(value);
        case changeCutPrefix:
            return std::string(value.starts_with(operand) ? value.substr(operand.size()) : value);
        case changeSuffix:
            return std::string(value).append(operand);
        case changeCutSuffix:
            return std::string(value.ends_with(operand) ? value.substr(0, value.size() - operand.size()) : value);
        case changeDropCharacters:
            return withoutCharacters(value, operand);
        case changeLower:
            return folded(value, [](char c) { return ascii::lower(c); });
        case changeUpper:
            return folded(value, [](char c) { return ascii::upper(c); });
        default:
            return std::string(operand);
    }
}

std::string searchReplaceFault(const searchReplaceTexts& texts) {
    using T = searchReplaceTexts;
    const auto isTooLong = [&texts](std::string T::*text, std::size_t limit) {
        return codePointCount(texts.*text) > limit;
    };
    for (std::string T::*key : {&T::keySearch, &T::keyReplace, &T::auxSearch, &T::auxReplace})
        if (isTooLong(key, keyTextLimit)) return "kZavoErrorSearchReplaceItemTooLong";
    for (std::string T::*name :
         {&T::linkSearch, &T::linkReplace, &T::criteriaSearch, &T::criteriaReplace, &T::styleSearch, &T::styleReplace})
        if (isTooLong(name, nameTextLimit)) return "kZavoErrorSearchReplaceItemTooLong";
    const bool foldsCase = texts.keyMode == changeLower || texts.keyMode == changeUpper;
    if (texts.keyEnabled && texts.keySearch.empty()) return "kZavoErrorSearchReplaceNoSearchKey";
    if (texts.keyEnabled && texts.keyReplace.empty() && !texts.removeEmpty && !foldsCase)
        return "kZavoErrorSearchReplaceCantRemoveSearchKey";
    if (texts.auxEnabled && texts.auxSearch.empty()) return "kZavoErrorSearchReplaceNoAuxSearchKey";
    if (texts.linkEnabled && texts.linkSearch.empty()) return "kZavoErrorSearchReplaceNoExtractionRecord";
    if (texts.linkEnabled && texts.linkReplace.empty() && !texts.removeEmpty)
        return "kZavoErrorSearchReplaceCantRemoveExtractionRecord";
    const bool replacesByAnything = (texts.keyEnabled && texts.keyReplace == anything) ||
                                    (texts.auxEnabled && texts.auxReplace == anything) ||
                                    (texts.linkEnabled && texts.linkReplace == anything) ||
                                    (texts.criteriaEnabled && texts.criteriaReplace == anything) ||
                                    (texts.styleEnabled && texts.styleReplace == anything);
    return replacesByAnything ? "kZavoErrorSearchReplaceInvalidArgument" : "";
}

searchReplaceRec searchReplaceOf(const searchReplaceTexts& texts) {
    searchReplaceRec settings = searchReplaceDefaults();
    settings.keyEnabled = texts.keyEnabled ? 1 : 0;
    settings.auxEnabled = texts.auxEnabled ? 1 : 0;
    settings.linkEnabled = texts.linkEnabled ? 1 : 0;
    settings.criteriaEnabled = texts.criteriaEnabled ? 1 : 0;
    settings.styleEnabled = texts.styleEnabled ? 1 : 0;
    settings.removeEmpty = texts.removeEmpty ? 1 : 0;
    settings.matchCase = texts.matchCase ? 1 : 0;
    settings.keyMode = texts.keyMode;
    settings.auxMode = texts.auxMode;
    pstrSet(settings.keySearch, texts.keySearch);
    pstrSet(settings.keyReplace, texts.keyReplace);
    pstrSet(settings.auxSearch, texts.auxSearch);
    pstrSet(settings.auxReplace, texts.auxReplace);
    pstrSet(settings.linkSearch, texts.linkSearch);
    pstrSet(settings.linkReplace, texts.linkReplace);
    pstrSet(settings.criteriaSearch, texts.criteriaSearch);
    pstrSet(settings.criteriaReplace, texts.criteriaReplace);
    pstrSet(settings.styleSearch, texts.styleSearch);
    pstrSet(settings.styleReplace, texts.styleReplace);
    return settings;
}

bool applySearchReplace(const searchReplaceRec& settings, tagDataRec& tag) {
    bool changed = changeKey(settings, tag);
    changed = changeAuxKeys(settings, tag) || changed;
    changed = changeName(settings.linkEnabled, settings.linkSearch, settings.linkReplace, tag.extractionRecordName) ||
              changed;
    changed = changeName(settings.criteriaEnabled, settings.criteriaSearch, settings.criteriaReplace,
                         tag.searchCriteriaName) ||
              changed;
    return changeName(settings.styleEnabled, settings.styleSearch, settings.styleReplace, tag.styleRecordName) ||
           changed;
}

ZavoSrchRplcPhFrameCallback::ZavoSrchRplcPhFrameCallback(const searchReplaceRec& itsSettings,
                                                         searchReplaceCounts& itsCounts)
    : ZavoFrameCallback(true, PMString::ofKey("kZavoProcessingDocumentFramesMessageStringKey")),
      settings(itsSettings),
      counts(itsCounts) {}

bool ZavoSrchRplcPhFrameCallback::TagIsMine(std::string_view data) {
    return open.read(data);
}

std::int32_t ZavoSrchRplcPhFrameCallback::TagProcess() {
    const bool isChanged = applySearchReplace(settings, open.tag);
    errorWord error = 0;
    if (isEmptied(open.tag)) {
        if (settings.removeEmpty == 0) return 0;
        error = replaceTagData(std::nullopt);
        if (error == 0) ++counts.removed;
    } else if (isChanged) {
        const std::optional<std::string_view> stored = open.written();
        error = stored ? replaceTagData(stored) : errTagMemory;
        if (error == 0) ++counts.changed;
    }
    hasFailed = hasFailed || error != 0;
    return 0;
}

ZavoSrchRplcPhTextCallback::ZavoSrchRplcPhTextCallback(const searchReplaceRec& itsSettings,
                                                       searchReplaceCounts& itsCounts)
    : ZavoStoryCallback(true, PMString::ofKey("kZavoProcessingDocumentTextMessageStringKey")),
      settings(itsSettings),
      counts(itsCounts) {
    wantsFrame = false;
}

bool ZavoSrchRplcPhTextCallback::TagIsMine(UIDRef, const TagAttribute& attribute) {
    return tagIsOwn(attribute) && open.read(attribute.data());
}

std::int32_t ZavoSrchRplcPhTextCallback::TagProcess(UIDRef story) {
    const bool isChanged = applySearchReplace(settings, open.tag);
    errorWord error = 0;
    if (isEmptied(open.tag)) {
        if (settings.removeEmpty == 0) return 0;
        error = removeTag(story);
        if (error == 0) ++counts.removed;
    } else if (isChanged) {
        const std::optional<std::string_view> stored = open.written();
        error = stored ? replaceTagData(story, *stored) : errTagMemory;
        if (error == 0) ++counts.changed;
    }
    hasFailed = hasFailed || error != 0;
    return 0;
}

bool searchReplaceDocument(UIDRef document, const searchReplaceRec& settings, searchReplaceCounts& outCounts) {
    outCounts = {};
    const PMString title = PMString::ofKey("kZavoSearchReplaceSequenceStringKey");
    bool good = document.database != nullptr && document.database->BeginCommandSequence(title.view()) == 0;
    if (good) {
        Document& target = *document.database;
        std::int32_t items = 0, characters = 0;
        std::uint16_t cancel = 0;
        const auto walk = [&](IFrameCallback* frames, IStoryCallback* stories) {
            walkDocument(target, frames, stories, 0, 0, WalkScope::everything, false, false, &items, &characters,
                         &cancel, true);
        };
        walk(nullptr, nullptr);
        {
            ZavoSrchRplcPhFrameCallback frames(settings, outCounts);
            frames.SetTotal(items);
            walk(&frames, nullptr);
            good = !frames.failed();
        }
        ZavoSrchRplcPhTextCallback stories(settings, outCounts);
        stories.SetTotal(characters);
        if (good) walk(nullptr, &stories);
        good = good && !stories.failed();
        target.EndCommandSequence();
    }
    if (!good) reportErrorKey("kZavoErrorSearchReplaceSequenceFailed");
    return good;
}

}  // namespace tarnova
