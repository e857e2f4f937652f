#include "host/model/story_text.h"

#include <algorithm>
#include <utility>

namespace tarnova {

namespace {

template <typename Run>
RunCursor findRun(const std::vector<Run>& runs, RunCursor from, std::int32_t position) {
    while (position < from.start)
        from.start -= runs[--from.index].length;
    while (position >= from.start + runs[from.index].length)
        from.start += runs[from.index++].length;
    return from;
}

template <typename Run>
bool addsUp(const std::vector<Run>& runs, std::size_t length) {
    std::size_t sum = 0;
    for (const Run& run : runs) {
        if (run.length <= 0) return false;
        sum += static_cast<std::size_t>(run.length);
    }
    return sum == length;
}

bool runsAreCanonical(const StoryText& story) {
    for (std::size_t i = 0; i < story.runs.size(); ++i) {
        if (story.runs[i].attributes == nullptr) return false;
        if (i > 0 && story.runs[i].attributes == story.runs[i - 1].attributes) return false;
    }
    return true;
}

/// One paragraph for each return.
bool paragraphsMatchReturns(const StoryText& story) {
    std::size_t limit = 0;
    for (const ParagraphRun& paragraph : story.paragraphs) {
        const auto start = story.text.begin() + static_cast<std::ptrdiff_t>(limit);
        limit += static_cast<std::size_t>(paragraph.length);
        const auto last = story.text.begin() + static_cast<std::ptrdiff_t>(limit) - 1;
        if (paragraph.attributes == nullptr || std::find(start, last + 1, returnCharacter) != last) return false;
    }
    return true;
}

bool threadsEndInReturns(const StoryText& story) {
    std::size_t limit = 0;
    for (const StoryThread& thread : story.threads) {
        limit += static_cast<std::size_t>(thread.length);
        if (story.text[limit - 1] != returnCharacter) return false;
    }
    return true;
}

bool anchorsStandInOrder(const StoryText& story) {
    std::int32_t last = -1;
    for (const ownedItemRec& owned : story.owned) {
        if (owned.position <= last || owned.position >= static_cast<std::int32_t>(story.text.size())) return false;
        if (story.text[static_cast<std::size_t>(owned.position)] != anchorCharacter) return false;
        last = owned.position;
    }
    return true;
}

std::int32_t countPageCharacters(std::u32string_view characters) {
    return static_cast<std::int32_t>(std::count_if(characters.begin(), characters.end(), isPageCharacter));
}

/// Takes `count` characters from the runs at `start` and adds `added` to the run at the index `into`, which is the run
/// of the first replaced character, or of the insertion.
void replaceInRuns(StoryText& story, std::int32_t start, std::int32_t count, std::int32_t added, RunCursor into) {
    std::vector<AttributeRun>& runs = story.runs;
    const std::int32_t inside = std::min(count, into.start + runs[into.index].length - start);
    if (inside >= 0 && inside == count && runs[into.index].length - count + added > 0) {
        runs[into.index].length += added - count;
        story.runCursor = into;
        return;
    }
    std::int32_t left = count;
    std::int32_t offset = start - into.start;
    for (std::size_t i = into.index; left > 0; ++i, offset = 0) {
        const std::int32_t taken = std::min(left, runs[i].length - offset);
        runs[i].length -= taken;
        left -= taken;
    }
    runs[into.index].length += added;
    joinRuns(story);
}

/// The run whose attributes new text at `start` takes.
RunCursor runOfNewText(const StoryText& story, std::int32_t start, std::int32_t count) {
    const bool takesFront = count == 0 && start > threadAt(story, start).start;
    return runAt(story, takesFront ? start - 1 : start);
}

/// What a replacement does to the paragraphs, worked out before the text changes.
class ParagraphChange {
 public:
    ParagraphChange(const StoryText& story, std::int32_t start, std::int32_t count)
        : first(paragraphRunAt(story, start)), last(paragraphRunAt(story, start + count)) {
        prefix = start - first.start;
        suffix = last.start + story.paragraphs[last.index].length - (start + count);
        lastIsWhole = last.index != first.index && start + count == last.start;
    }

    void apply(StoryText& story, std::u32string_view characters) const {
        std::vector<ParagraphRun>& paragraphs = story.paragraphs;
        const ParagraphAttributes* format = paragraphs[first.index].attributes;
        const ParagraphAttributes* lastFormat = paragraphs[last.index].attributes;
        story.paragraphCursor = first;
        std::size_t from = 0;
        std::size_t at = characters.find(returnCharacter);
        if (at == std::u32string_view::npos && first.index == last.index) {
            paragraphs[first.index].length = prefix + static_cast<std::int32_t>(characters.size()) + suffix;
            return;
        }
        std::vector<ParagraphRun> pieces;
        std::int32_t length = prefix;
        for (; at != std::u32string_view::npos; from = at + 1, at = characters.find(returnCharacter, from)) {
            pieces.push_back({length + static_cast<std::int32_t>(at + 1 - from), format});
            length = 0;
        }
        length += static_cast<std::int32_t>(characters.size() - from);
        pieces.push_back({length + suffix, length == 0 && lastIsWhole ? lastFormat : format});
        const auto begin = paragraphs.begin() + static_cast<std::ptrdiff_t>(first.index);
        const auto end = paragraphs.begin() + static_cast<std::ptrdiff_t>(last.index) + 1;
        paragraphs.insert(paragraphs.erase(begin, end), pieces.begin(), pieces.end());
    }

 private:
    RunCursor first, last;
    std::int32_t prefix = 0;  // characters of the first paragraph in front of the change
    std::int32_t suffix = 0;  // of the last one behind it
    bool lastIsWhole = false;
};

void replaceInThreads(StoryText& story, std::int32_t start, std::int32_t delta) {
    std::int32_t limit = 0;
    for (StoryThread& thread : story.threads) {
        limit += thread.length;
        if (start >= limit) continue;
        thread.length += delta;
        return;
    }
}

void replaceInOwned(StoryText& story, std::int32_t start, std::int32_t count, std::int32_t delta) {
    std::erase_if(story.owned,
                  [=](const ownedItemRec& owned) { return owned.position >= start && owned.position < start + count; });
    for (ownedItemRec& owned : story.owned) {
        if (owned.position >= start) owned.position += delta;
    }
}

}  // namespace

std::shared_ptr<StoryText> emptyStoryText(const ParagraphAttributes* paragraph, const RunAttributes* run) {
    auto out = std::make_shared<StoryText>();
    out->text.assign(1, returnCharacter);
    out->runs.push_back({1, run});
    out->paragraphs.push_back({1, paragraph});
    out->threads.push_back({1});
    return out;
}

void StoryTextBuilder::append(std::u32string_view characters, const RunAttributes* run) {
    if (characters.empty()) return;
    story->text += characters;
    story->pageCharacters += countPageCharacters(characters);
    const auto length = static_cast<std::int32_t>(characters.size());
    if (story->runs.empty() || story->runs.back().attributes != run) {
        story->runs.push_back({length, run});
    } else {
        story->runs.back().length += length;
    }
}

void StoryTextBuilder::endParagraph(const ParagraphAttributes* paragraph, const RunAttributes* run) {
    append(std::u32string_view(&returnCharacter, 1), run);
    story->paragraphs.push_back({static_cast<std::int32_t>(story->text.size() - paragraphStart), paragraph});
    paragraphStart = story->text.size();
}

void StoryTextBuilder::endThread() {
    story->threads.push_back({static_cast<std::int32_t>(story->text.size() - threadStart)});
    threadStart = story->text.size();
}

bool storyIsConsistent(const StoryText& story) {
    const std::size_t length = story.text.size();
    return length > 0 && addsUp(story.runs, length) && addsUp(story.paragraphs, length) &&
           addsUp(story.threads, length) && runsAreCanonical(story) && paragraphsMatchReturns(story) &&
           threadsEndInReturns(story) && anchorsStandInOrder(story) &&
           story.pageCharacters == countPageCharacters(story.text);
}

RunCursor runAt(const StoryText& story, std::int32_t position) {
    return story.runCursor = findRun(story.runs, story.runCursor, position);
}

RunCursor paragraphRunAt(const StoryText& story, std::int32_t position) {
    return story.paragraphCursor = findRun(story.paragraphs, story.paragraphCursor, position);
}

textSpanRec threadAt(const StoryText& story, std::int32_t position) {
    std::int32_t start = 0;
    if (position < 0) return {};
    for (const StoryThread& thread : story.threads) {
        if (position < start + thread.length) return {start, thread.length};
        start += thread.length;
    }
    return {};
}

std::u32string storyCharacters(std::u32string_view text, bool keepCharacters) {
    std::u32string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t c = text[i];
        if (!keepCharacters && c == U'\n') {
            if (i == 0 || text[i - 1] != U'\r') out.push_back(returnCharacter);
        } else if ((c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF) {
            out.push_back(U'\uFFFD');
        } else {
            out.push_back(c);
        }
    }
    return out;
}

bool mayReplace(const StoryText& story, std::int32_t start, std::int32_t count) {
    const auto length = static_cast<std::int32_t>(story.text.size());
    if (start < 0 || count < 0 || start >= length || count > length - start) return false;
    const textSpanRec thread = threadAt(story, start);
    return start + count < thread.start + thread.length;
}

void replaceCharacters(StoryText& story, std::int32_t start, std::int32_t count, std::u32string_view characters) {
    const auto added = static_cast<std::int32_t>(characters.size());
    const RunCursor into = runOfNewText(story, start, count);
    const ParagraphChange paragraphs(story, start, count);
    replaceInRuns(story, start, count, added, into);
    paragraphs.apply(story, characters);
    replaceInThreads(story, start, added - count);
    if (!story.owned.empty()) replaceInOwned(story, start, count, added - count);
    const std::u32string_view replaced(story.text.data() + start, static_cast<std::size_t>(count));
    story.pageCharacters += countPageCharacters(characters) - countPageCharacters(replaced);
    story.text.replace(static_cast<std::size_t>(start), static_cast<std::size_t>(count), characters);
}

namespace {

/// The run that the position lies in goes on over the character in front of it with the same link of this store.
bool isInsideLink(const StoryText& story, std::int32_t position, std::size_t store) {
    const auto tagAt = [&](std::int32_t at) { return story.runs[runAt(story, at).index].attributes->tags[store]; };
    if (position == 0 || tagAt(position) == nullptr || tagAt(position - 1) == nullptr) return false;
    return tagAt(position)->tagId() == tagAt(position - 1)->tagId();
}

}  // namespace

void insertAnchorCharacter(StoryText& story, std::int32_t position, UID item, AttributePool& attributes) {
    static constexpr TextAttributeClass stores[2] = {TextAttributeClass::kelvaneTag, TextAttributeClass::tallyraTag};
    const bool keeps[2] = {isInsideLink(story, position, 0), isInsideLink(story, position, 1)};
    replaceCharacters(story, position, 0, {&anchorCharacter, 1});
    for (std::size_t store = 0; store < 2; ++store) {
        if (keeps[store]) continue;
        changeRuns(story, position, 1,
                   [&](const RunAttributes& run) { return attributes.without(run, stores[store]); });
    }
    noteAnchor(story, position, item);
}

void noteAnchor(StoryText& story, std::int32_t position, UID item) {
    const auto behind =
        std::upper_bound(story.owned.begin(), story.owned.end(), position,
                         [](std::int32_t at, const ownedItemRec& owned) { return at < owned.position; });
    story.owned.insert(behind, {position, item});
}

void removeAnchorCharacter(StoryText& story, std::int32_t position) {
    replaceCharacters(story, position, 1, {});
}

std::size_t splitRunAt(StoryText& story, std::int32_t position) {
    if (position >= static_cast<std::int32_t>(story.text.size())) return story.runs.size();
    const RunCursor at = runAt(story, position);
    if (at.start == position) return at.index;
    AttributeRun behind = story.runs[at.index];
    behind.length -= position - at.start;
    story.runs[at.index].length = position - at.start;
    story.runs.insert(story.runs.begin() + static_cast<std::ptrdiff_t>(at.index) + 1, behind);
    return at.index + 1;
}

void joinRuns(StoryText& story) {
    std::size_t kept = 0;
    for (const AttributeRun& run : story.runs) {
        if (run.length == 0) continue;
        if (kept > 0 && story.runs[kept - 1].attributes == run.attributes) {
            story.runs[kept - 1].length += run.length;
        } else {
            story.runs[kept++] = run;
        }
    }
    story.runs.resize(kept);
    story.runCursor = {};
}

}  // namespace tarnova
