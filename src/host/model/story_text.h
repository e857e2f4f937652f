// Changes and look-ups on the content of a story. Text, runs, paragraphs and threads always add up: every function that
// changes a content leaves it consistent, and a refused change leaves it as it was. Whoever calls has made sure that no
// other story holds the content.
//
// Runs and paragraphs are canonical: no run is empty, and no two neighbours hold the same attributes.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "host/model/attribute_pool.h"
#include "host/model/story.h"

namespace tarnova {

/// A story stays below this many characters.
inline constexpr std::int32_t storyLengthLimit = 1 << 30;

inline constexpr char32_t returnCharacter = U'\r';
inline constexpr char32_t anchorCharacter = U'\uFFFC';

/// A story without text: one thread that holds only its closing mark.
[[nodiscard]] std::shared_ptr<StoryText> emptyStoryText(const ParagraphAttributes* paragraph, const RunAttributes* run);

/// Puts the content of a story together from its start.
class StoryTextBuilder {
 public:
    /// Characters without returns.
    void append(std::u32string_view characters, const RunAttributes* run);
    /// The return of the paragraph, which also is the closing mark when the thread ends here.
    void endParagraph(const ParagraphAttributes* paragraph, const RunAttributes* run);
    /// Behind the last paragraph of a thread.
    void endThread();
    /// The content; every paragraph and thread has been ended.
    [[nodiscard]] std::shared_ptr<StoryText> finish() { return std::move(story); }
    [[nodiscard]] std::size_t length() const { return story->text.size(); }

 private:
    std::shared_ptr<StoryText> story = std::make_shared<StoryText>();
    std::size_t paragraphStart = 0;
    std::size_t threadStart = 0;
};

/// True when runs, paragraphs and threads add up to the text, are canonical, paragraphs end where returns stand, every
/// thread ends in a return, and anchors stand on anchor characters in order.
[[nodiscard]] bool storyIsConsistent(const StoryText& story);

/// Index of the run at a position and where the run starts; the position lies in the text.
[[nodiscard]] RunCursor runAt(const StoryText& story, std::int32_t position);
[[nodiscard]] RunCursor paragraphRunAt(const StoryText& story, std::int32_t position);
/// The thread at a position; an empty span outside the text.
[[nodiscard]] textSpanRec threadAt(const StoryText& story, std::int32_t position);

/// Text as a story takes it: CR LF and LF become CR unless `keepCharacters`; what is no character (surrogates, values
/// above U+10FFFF) becomes U+FFFD.
[[nodiscard]] std::u32string storyCharacters(std::u32string_view text, bool keepCharacters);

/// True when the range may be replaced: it lies in the story and holds no closing mark, and an insertion stands in
/// front of one at most.
[[nodiscard]] bool mayReplace(const StoryText& story, std::int32_t start, std::int32_t count);

/// Replaces a range that `mayReplace` allows by `characters`. The new text takes the attributes of the first replaced
/// character; an insertion those of the character in front, at a thread's start of the one behind. When a whole
/// paragraph goes, the one behind it keeps its format; else what is joined takes the format of the first.
void replaceCharacters(StoryText& story, std::int32_t start, std::int32_t count, std::u32string_view characters);

/// Puts an anchor in front of the character at a position, where an insertion may stand. It takes the attributes that
/// any inserted text takes, but becomes part of a link only when it stands inside of one.
void insertAnchorCharacter(StoryText& story, std::int32_t position, UID item, AttributePool& attributes);
/// Notes an item for an anchor character that stands in the text already.
void noteAnchor(StoryText& story, std::int32_t position, UID item);
/// Takes an anchor character out of the text without a word on its item.
void removeAnchorCharacter(StoryText& story, std::int32_t position);

/// Gives every run of the range the list that `change(list)` answers.
template <typename Change>
void changeRuns(StoryText& story, std::int32_t start, std::int32_t count, Change change);

/// Makes a boundary between runs at a position and gives the index of the run that begins there (the count of the runs
/// at the text's end). `joinRuns` makes the runs canonical again.
std::size_t splitRunAt(StoryText& story, std::int32_t position);
void joinRuns(StoryText& story);

template <typename Change>
void changeRuns(StoryText& story, std::int32_t start, std::int32_t count, Change change) {
    const std::size_t first = splitRunAt(story, start);
    const std::size_t limit = splitRunAt(story, start + count);
    for (std::size_t i = first; i < limit; ++i)
        story.runs[i].attributes = change(*story.runs[i].attributes);
    joinRuns(story);
}

}  // namespace tarnova
