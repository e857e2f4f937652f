// Text tags into variable links and back, for a story and for a whole document.

#pragma once

#include <cstdint>

#include "document/text_span.h"
#include "document/walk.h"
#include "tags/tag_record.h"

namespace tarnova {

/// Lengths of the marks that a tag was written with.
struct tagMarksRec {
    std::int32_t opening = 0;
    std::int32_t closing = 0;
};

/// What became of the text tags of a story.
enum class tagConversion : std::uint8_t { done, aborted, noMemory };

/// Makes links of the text tags in a range of a story, the last one first. A tag that can't be
/// made a link is asked about, and stays as text; so does one that is only to be checked, without a word. When the user
/// aborts, the tags in front of that one are text still. Nothing happens without a story or a length.
[[nodiscard]] tagConversion convertTagText(UIDRef story, textSpanRec range);
/// The same for the first `length` characters, as a result: 0, or -1 without memory for the text.
std::int32_t tagTextConvert(UIDRef story, std::int32_t length);

/// Writes `tag` as text around the data of the link at `position`, which is no link any more then; without a link there
/// the data is empty. Key, link, rule or search criteria, and style are written as they stand. The marks are small and
/// magenta, so that they can be told from text. Gives the document's error; what was done until then stays.
[[nodiscard]] errorWord tagTextWrite(UIDRef story, std::int32_t position, const tagDataRec& tag, tagMarksRec& outMarks);

/// Converts the text tags of each story. Ends the walk when the user aborts.
class ZavoConvertStoryCallback final : public ZavoStoryCallback {
 public:
    ZavoConvertStoryCallback();
    /// Does all there is to do and says that the story needs no scan.
    bool StoryBegin(UIDRef story) override;
    [[nodiscard]] bool failed() const { return hasFailed; }
    [[nodiscard]] bool aborted() const { return isAborted; }

 private:
    std::int32_t walked = 0;  // characters of the stories so far, as they were
    bool hasFailed = false;
    bool isAborted = false;
};

/// Writes each text link of the store as a text tag. A link whose record can't be read stays.
class ZavoConvertLinksToTagsCallback final : public ZavoStoryCallback {
 public:
    ZavoConvertLinksToTagsCallback();
    bool TagIsMine(UIDRef story, const TagAttribute& attribute) override;
    std::int32_t TagProcess(UIDRef story) override;
    [[nodiscard]] bool failed() const { return hasFailed; }

 private:
    tagDataRec tag{};
    bool hasFailed = false;
};

/// Converts all stories of a document, and behind them, unless the user aborts, its tag frames (tag_frames.h), in one
/// step that can be undone. False after telling the user that it failed.
bool convertTextToLinks(UIDRef document);

/// Converts the text links of all stories, in one step. False after telling the user that it failed.
bool convertLinksToText(UIDRef document);

}  // namespace tarnova
