// What a walk does with a story: the scan of its attribute runs for tags.

#pragma once

#include <cstdint>
#include <string_view>

#include "document/text_attributes.h"
#include "document/uid.h"
#include "engine/toolkit/pm_string.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// Visitor of stories. An object lives for one walk; one whose `GetInitError` isn't 0 isn't used.
class IStoryCallback {
 public:
    /// Visits a range of the story, in characters. `start` and `length` come back as the range's own values after the
    /// changes of the visit. `frame` is the frame through which the walk came to the story. `cancel` is the walk's word
    /// and never null; a non-zero word ends the scan. The result doesn't stop a walk.
    virtual std::int32_t Process(UIDRef story, std::int32_t& start, std::int32_t& length, UIDRef frame,
                                 std::uint16_t* cancel) = 0;
    virtual ~IStoryCallback() = default;
    /// 0 when construction succeeded.
    [[nodiscard]] virtual std::uint16_t GetInitError() const = 0;
    /// The number of characters of the whole walk, for the progress.
    virtual void SetTotal(std::int32_t characterTotal) = 0;
    /// Says whether this story is walked.
    virtual bool StoryBegin(UIDRef story) = 0;
    /// The last step of a story.
    virtual std::int32_t StoryEnd(UIDRef story) = 0;
    /// Says whether a tag run is for this callback. The attribute is the document's and valid until the story changes.
    virtual bool TagIsMine(UIDRef story, const TagAttribute& attribute) = 0;
    /// Works on the open tag; a non-zero result ends the story.
    virtual std::int32_t TagProcess(UIDRef story) = 0;
};

/// The scan of a story. A tag is worked on whole, and only after its end was seen, so `TagProcess` may replace its
/// text: it then sets `position` and `storyEnd` itself. Subclasses say which tags are theirs and what is done with
/// them; here every story is walked and no tag is taken.
class ZavoStoryCallback : public IStoryCallback {
 public:
    /// With `withProgress` a status dialog with the text `statusText` is there as long as the object, and moves at each
    /// further tenth of `SetTotal`.
    ZavoStoryCallback(bool withProgress, PMString statusText);
    ZavoStoryCallback() : ZavoStoryCallback(false, PMString{}) {}
    ~ZavoStoryCallback() override;
    ZavoStoryCallback(const ZavoStoryCallback&) = delete;
    ZavoStoryCallback& operator=(const ZavoStoryCallback&) = delete;

    /// An `engineError` that is set ends the scan; a tag that is open then is still worked on, as at any end.
    std::int32_t Process(UIDRef story, std::int32_t& start, std::int32_t& length, UIDRef frame,
                         std::uint16_t* cancelWord) override;
    [[nodiscard]] std::uint16_t GetInitError() const override { return initError; }
    void SetTotal(std::int32_t characterTotal) override { total = characterTotal; }
    bool StoryBegin(UIDRef) override { return true; }
    std::int32_t StoryEnd(UIDRef) override { return 0; }
    bool TagIsMine(UIDRef, const TagAttribute&) override { return false; }
    std::int32_t TagProcess(UIDRef) override { return 0; }

 protected:
    // What visitors do with the open tag in `TagProcess`; the tag's length and the scan's place follow. Each gives the
    // document's error, and then nothing has changed.

    /// Replaces the tag's text, its thread's closing mark left alone; the tag stays on the new text. An empty text
    /// takes the characters away and their tag with them.
    [[nodiscard]] errorWord replaceTagText(UIDRef story, std::u32string_view text, bool keepCharacters);
    /// Gives the tag other data; its identity and its strings stay.
    [[nodiscard]] errorWord replaceTagData(UIDRef story, std::string_view data);
    /// Takes the tag off its text.
    [[nodiscard]] errorWord removeTag(UIDRef story);

    std::uint16_t initError = 1;  // a subclass whose own construction fails sets it again
    std::uint16_t showProgress = 0;
    std::int32_t total = 0;
    std::int32_t storyBase = 0;  // characters walked in earlier stories
    PMString message;
    std::int32_t position = 0;  // the run under the scan, while `TagIsMine` is asked: the start of the tag's run
    std::int32_t storyEnd = 0;
    std::int32_t runLength = 0;  // characters of that run, clipped to its thread
    bool runEndsThread = false;  // the run holds its thread's closing mark
    std::int32_t tagStart = 0;
    std::int32_t tagLength = 0;  // 0: no tag is open
    std::int32_t tagTail = 0;    // 1 when the tag ends at its thread's end
    std::uint32_t tagId = 0;
    /// The frame that shows the tag's first character; no item when that is overset in a story of several frames. A
    /// story with a single frame gives that one, overset or not.
    UIDRef frameRef;
    /// Cleared by a callback that doesn't read `frameRef`: finding it may have to compose the story.
    bool wantsFrame = true;
    std::uint16_t* cancel = nullptr;

 private:
    void readRun(UIDRef story);
    [[nodiscard]] bool continuesTag() const;
    void openTag();
    std::int32_t closeTag(UIDRef story);
    [[nodiscard]] UID frameOfTag(UIDRef story) const;
    std::int32_t scan(UIDRef story);
    void moveProgress();

    const TagAttribute* runTag = nullptr;  // of the run under the scan
    std::int32_t threadStart = 0;          // the thread that the run lies in; an empty one is asked for anew
    std::int32_t threadLimit = 0;
    std::int32_t tagThreadLimit = 0;
    std::int32_t lastTenth = 0;
};

}  // namespace tarnova
