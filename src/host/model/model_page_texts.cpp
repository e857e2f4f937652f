// What the page characters of stories show.

#include <algorithm>

#include "engine/toolkit/text_encoding.h"
#include "host/model/model_document.h"

namespace tarnova {

namespace {

std::u32string& textOf(PageTexts& texts, PageCharacter which) {
    return texts[static_cast<std::size_t>(which)];
}

std::u32string figures(std::int32_t number) {
    return utf8ToUtf32(std::to_string(number));
}

/// A master's page has no number: it shows the first letter of the master's name in its place.
std::u32string placeholderOf(const std::string& masterName) {
    return utf8ToUtf32(masterName).substr(0, 1);
}

}  // namespace

/// What a page shows but for the characters that tell of other pages; the pasteboard only knows the document's pages.
PageTexts ModelDocument::pageTextsOn(UID uid) const {
    PageTexts out;
    const std::int32_t all = pagesInFront + pageCount() + pagesBehind;
    textOf(out, PageCharacter::pageCount) = figures(all);
    textOf(out, PageCharacter::sectionPageCount) = figures(all);
    const Page* on = page(uid);
    if (on == nullptr) return out;
    const std::string name = pageName(uid);
    textOf(out, PageCharacter::pageNumber) = on->index < 0 ? placeholderOf(name) : utf8ToUtf32(name);
    if (on->index < 0 || lists.sections.empty()) return out;
    const std::optional<std::size_t> section = sectionAt(on->index);
    const std::size_t behind = section ? *section + 1 : 0;
    const bool isLast = behind == lists.sections.size();
    const std::int32_t limit = isLast ? pageCount() : pageIndex(lists.sections[behind].startPage);
    const std::int32_t start = section ? pageIndex(lists.sections[*section].startPage) : -pagesInFront;
    textOf(out, PageCharacter::sectionPageCount) = figures(limit - start);
    if (section) textOf(out, PageCharacter::sectionMarker) = utf8ToUtf32(lists.sections[*section].marker);
    return out;
}

StoryPageTexts ModelDocument::pageTextsOf(const Story& from) const {
    StoryPageTexts out;
    if (from.content->pageCharacters() == 0) return out;
    std::vector<UID> on;
    for (UID frame : from.frames) {
        on.push_back(pageOfItem(frame).page);
        const bool asBefore = on.size() > 1 && on.back() == on[on.size() - 2];
        out.push_back(asBefore ? PageTexts(out.back()) : pageTextsOn(on.back()));
    }
    const auto number = [&out](std::size_t frame) { return textOf(out[frame], PageCharacter::pageNumber); };
    for (std::size_t i = 1; i < on.size(); ++i) {
        const bool goesOn = on[i] == on[i - 1];
        std::u32string& previous = textOf(out[i], PageCharacter::previousPageNumber);
        previous = goesOn ? textOf(out[i - 1], PageCharacter::previousPageNumber) : number(i - 1);
    }
    for (std::size_t i = on.size(); i-- > 1;) {
        const bool goesOn = on[i] == on[i - 1];
        std::u32string& next = textOf(out[i - 1], PageCharacter::nextPageNumber);
        next = goesOn ? textOf(out[i], PageCharacter::nextPageNumber) : number(i);
    }
    return out;
}

/// The page characters of the cached layout show what holds now. That is looked up once for each state of the document.
bool ModelDocument::showsItsPages(const Story& from) const {
    if (from.pageTextsRevision == revision) return true;
    if (from.layout->pageTexts != pageTextsOf(from)) return false;
    from.pageTextsRevision = revision;
    return true;
}

std::shared_ptr<const StoryLayout> ModelDocument::layoutOnPage(UID uid, UID pageUid) const {
    const Story* found = story(uid);
    if (found == nullptr || composer == nullptr) return nullptr;
    const StoryPageTexts texts(found->frames.size(), pageTextsOn(pageUid));
    return composer->compose(*this, *found, found->length() - 1, texts);
}

}  // namespace tarnova
