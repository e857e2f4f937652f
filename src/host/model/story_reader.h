// Look-ups in a story's content. Each costs the depth of its tree; a `StoryReader` that goes on near its last place
// costs less still.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/model/story.h"

namespace tarnova {

/// A run, from the position that was asked for on.
struct RunSpan {
    std::int32_t limit = 0;
    const RunAttributes* attributes = nullptr;
};

struct StoryParagraph {
    std::int32_t start = 0;
    std::u32string_view text;  // its return included; valid as long as the content
    const ParagraphAttributes* attributes = nullptr;
    bool endsThread = false;

    [[nodiscard]] std::int32_t limit() const { return start + static_cast<std::int32_t>(text.size()); }
};

/// Positions that are asked for lie in the text. Borrows the content, which stays unchanged meanwhile.
class StoryReader {
 public:
    explicit StoryReader(const StoryText& itsStory) : story(itsStory) {}

    [[nodiscard]] StoryParagraph paragraphAt(std::int32_t position);
    /// The run at a position to its end.
    [[nodiscard]] RunSpan runAt(std::int32_t position);
    /// The same, but no further than the chunk goes: at least to the end of the paragraph or of the run.
    [[nodiscard]] RunSpan runInChunkAt(std::int32_t position);

 private:
    struct RunCursor {
        std::size_t index = 0;
        std::int32_t start = 0;  // in the chunk, of the run with that index
    };
    template <typename Run>
    static void moveTo(RunCursor& cursor, const std::vector<Run>& runs, std::int32_t position);
    void enter(std::int32_t position);

    const StoryText& story;
    LeafPlace place;
    RunCursor run;
    RunCursor paragraph;
};

[[nodiscard]] inline StoryParagraph paragraphAt(const StoryText& story, std::int32_t position) {
    return StoryReader(story).paragraphAt(position);
}
[[nodiscard]] inline RunSpan runAt(const StoryText& story, std::int32_t position) {
    return StoryReader(story).runAt(position);
}

/// The thread at a position; an empty span outside the text.
[[nodiscard]] textSpanRec threadAt(const StoryText& story, std::int32_t position);
/// The thread number `index`, from 0.
[[nodiscard]] textSpanRec threadNumber(const StoryText& story, std::int32_t index);

/// The characters of a range that lies in the text.
[[nodiscard]] std::u32string charactersOf(const StoryText& story, std::int32_t start, std::int32_t limit);

/// Appends the anchored items of a range, by position.
void ownedIn(const StoryText& story, std::int32_t start, std::int64_t limit, std::vector<ownedItemRec>& out);
/// All of them.
[[nodiscard]] std::vector<ownedItemRec> allOwned(const StoryText& story);

/// Where two contents differ.
struct StoryDifference {
    std::int32_t start = 0;      // characters that are the same at the start, to the end of a paragraph
    std::int32_t sameAtEnd = 0;  // and at the end; together they are no longer than the shorter content
};
/// Compares by what the contents share, so that an edit is found at the cost of the tree's depth. Text that is equal
/// without being shared may count as different.
[[nodiscard]] StoryDifference differenceOf(const StoryText& before, const StoryText& after);

}  // namespace tarnova
