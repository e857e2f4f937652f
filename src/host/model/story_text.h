// Changes of the content of a story; `story_reader.h` has the look-ups. Text, runs, paragraphs and threads always add
// up: every function that changes a content leaves it consistent, and a refused change leaves it as it was. Whoever
// calls has made sure that no other story holds the content. A change costs what the chunks do that it touches, not the
// story.

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "host/model/attribute_pool.h"
#include "host/model/story.h"
#include "host/model/story_reader.h"

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
    void endThread() { chunk.paragraphs.back().endsThread = true; }
    /// The content; every paragraph and thread has been ended.
    [[nodiscard]] std::shared_ptr<StoryText> finish();
    [[nodiscard]] std::size_t length() const { return chunk.text.size(); }

 private:
    StoryChunk chunk;
    std::size_t paragraphStart = 0;
};

/// True when the sums of the tree and the lengths of runs and paragraphs add up, runs are canonical, chunks keep their
/// limit, paragraphs end where returns stand, the last one ends a thread, and anchors stand on anchor characters in
/// order.
[[nodiscard]] bool storyIsConsistent(const StoryText& story);

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

/// The attributes that a run gets in place of its own.
using RunChange = std::function<const RunAttributes*(const RunAttributes&)>;
/// Gives every run of a range, which lies in the text, the attributes that `change` answers.
void changeRuns(StoryText& story, std::int32_t start, std::int32_t count, const RunChange& change);

/// The attributes that a paragraph gets in place of its own.
using ParagraphAttributesChange = std::function<const ParagraphAttributes*(const ParagraphAttributes&)>;
/// The same for the paragraphs that a range, which lies in the text, has characters of.
void changeParagraphs(StoryText& story, std::int32_t start, std::int32_t count,
                      const ParagraphAttributesChange& change);

/// Puts an anchor in front of the character at a position, where an insertion may stand. It takes the attributes that
/// any inserted text takes, but becomes part of a link only when it stands inside of one.
void insertAnchorCharacter(StoryText& story, std::int32_t position, UID item, AttributePool& attributes);
/// Lets an anchor character that stands in the text already be that of an item.
void noteAnchor(StoryText& story, std::int32_t position, UID item);
/// Takes an anchor character out of the text without a word on its item.
void removeAnchorCharacter(StoryText& story, std::int32_t position);

}  // namespace tarnova
