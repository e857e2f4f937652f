// A story: its text with attributes, shared between copies until one of them changes it.

#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "document/document.h"
#include "host/model/format.h"
#include "host/model/page_characters.h"
#include "host/model/story_chunks.h"

namespace tarnova {

class Story;
class DocumentModel;

/// Interned attributes of a run: what it says of its own and, resolved, what composition needs. Two runs with the same
/// attributes hold the same pointer; it lives as long as the document and its copies (see `attribute_pool.h`).
class RunAttributes : public AttributeBossList {
 public:
    std::int32_t characterStyle = -1;  // index into the document's character styles, or -1
    CharOverrides overrides;
    std::shared_ptr<const TagAttribute> tags[2];  // by store: Kelvane, Tallyra

    [[nodiscard]] const TextAttribute* QueryByClassID(TextAttributeClass attributeClass) const override;

    /// Answers of `QueryByClassID` for the number attributes that the run sets of its own.
    std::vector<std::shared_ptr<const NumberAttribute>> numbers;
    virtual ~RunAttributes() = default;
};

/// A paragraph's format: the style and what the paragraph says of its own, interned like runs.
struct ParagraphAttributes {
    std::int32_t style = 0;  // index into the document's paragraph styles
    ParaOverrides overrides;
    CharOverrides charOverrides;  // of the whole paragraph, below its runs
};

/// The content of a story at one moment: all threads, the main text first. Never changed while more than one story
/// holds it. How it may be changed stands in `story_text.h`, how it is read in `story_reader.h`.
struct StoryText {
    StoryTree tree;

    [[nodiscard]] std::int32_t length() const { return tree->sums.characters; }
    [[nodiscard]] std::int32_t paragraphCount() const { return tree->sums.paragraphs; }
    [[nodiscard]] std::int32_t threadCount() const { return tree->sums.threads; }
    [[nodiscard]] bool hasOwned() const { return tree->sums.owned > 0; }
    /// How many of the characters are some (page_characters.h).
    [[nodiscard]] std::int32_t pageCharacters() const { return tree->sums.pageCharacters; }
};

/// Where the character of an anchored item was set: the coordinates are the inner ones of the frame.
struct AnchorPoint {
    std::int32_t frameIndex = 0;  // in `Story::frames`
    PMRect column;                // that shows it, insets taken off
    double x = 0;                 // of the character; of an item above the line, of its left side
    double baseline = 0;
    double top = 0;       // of an item above the line
    PMPoint along{1, 0};  // direction of the baseline, a vector of length 1; an item on a path turns with it
};

/// The part of a line that shows some text, in the coordinates of its frame.
struct LineBounds {
    std::int32_t frameIndex = 0;  // in `Story::frames`
    PMRect bounds;                // from the line's ascent to its descent
};

/// What composition knows of a story; made by `Composer`, never changed afterwards, shared by copies of the story.
class StoryLayout {
 public:
    virtual ~StoryLayout() = default;
    /// Positions below this are placed or known to be overset.
    [[nodiscard]] virtual std::int32_t composedThrough() const = 0;
    /// How many of the story's first frames are filled; what is overset is known when all are.
    [[nodiscard]] virtual std::int32_t filledFrames() const { return std::numeric_limits<std::int32_t>::max(); }
    /// The column (counted through all frames of the story) that shows a position, or -1 when it is overset.
    [[nodiscard]] virtual std::int32_t columnOf(std::int32_t position) const = 0;
    [[nodiscard]] virtual bool isOverset() const = 0;
    /// Where the anchor at a position stands; nothing when it is overset.
    [[nodiscard]] virtual std::optional<AnchorPoint> anchorAt(std::int32_t position) const = 0;
    /// Appends the parts of lines that show [start, limit).
    virtual void addBounds(std::int32_t start, std::int32_t limit, std::vector<LineBounds>& out) const = 0;
    /// The places of frames on their pages had a say, so that it is stale when one of them moves.
    [[nodiscard]] virtual bool dependsOnPlaces() const { return false; }
    /// The composition of a changed text in the same frames can use parts of this one.
    [[nodiscard]] virtual bool mayBeTakenUp() const { return false; }

    /// What the story's page characters show here. A layout with other texts than hold now is stale.
    StoryPageTexts pageTexts;
};

/// Turns a story into lines. `host/text` implements it and gives it to the model.
class Composer {
 public:
    virtual ~Composer() = default;
    /// Composes the story in its frames, at least through the position (it may go further), with the help of what
    /// `story.layout` or `story.earlier` hold. `pageTexts` has what the story's page characters show in each frame, and
    /// is empty when it has none.
    [[nodiscard]] virtual std::shared_ptr<const StoryLayout> compose(const DocumentModel& document, const Story& story,
                                                                     std::int32_t through,
                                                                     const StoryPageTexts& pageTexts) = 0;
    /// Whether there is a font of that family, under this name or another one of it.
    [[nodiscard]] virtual bool hasFont(const std::string& family, const std::string& style) const = 0;
};

/// How a story lies on the path of its frame. Lengths are points along the path, or across it.
struct PathTextOptions {
    double start = 0;   // of the path's length, left free in front
    double end = 0;     // and behind
    double offset = 0;  // away from the path, to where the text's upper side is
    /// The height of the text that lies on the path.
    enum class Align : std::uint8_t { baseline, ascender, descender, center } align = Align::baseline;
    /// Glyphs turn with the path, or all stand upright.
    enum class Effect : std::uint8_t { follow, upright } effect = Effect::follow;
    bool flip = false;  // the text runs from the path's end to its start, on its other side
    friend bool operator==(const PathTextOptions&, const PathTextOptions&) = default;
};

class Story {
 public:
    UID uid = kInvalidUID;
    std::vector<UID> frames;  // text frames of the main thread, in thread order
    std::shared_ptr<StoryText> content;
    /// How it lies on the path of its only frame; null: it flows inside of its frames.
    std::shared_ptr<const PathTextOptions> onPath;

    /// Two stories with one stamp hold the same text in frames of the same shape: copies keep it, a change takes a new
    /// one. So it names the composed lines too, but for what page characters show.
    std::uint64_t stamp = 0;
    /// What its text runs around, as one number; 0: nothing. The stamp holds for this only.
    std::uint64_t wrapKey = 0;
    /// The cached composition of this stamp, or null. Copies share it.
    mutable std::shared_ptr<const StoryLayout> layout;
    /// Without `layout`: one of an earlier text in the same frames that may be taken up, or null.
    mutable std::shared_ptr<const StoryLayout> earlier;
    /// The document's revision for which the texts of page characters in `layout` were found to hold.
    mutable std::uint64_t pageTextsRevision = 0;

    [[nodiscard]] std::int32_t length() const { return content->length(); }
};

}  // namespace tarnova
