// The merge of frames: fills the frame of each link by its value. A text frame takes the value as its whole text, any
// other frame the picture that the value names.

#pragma once

#include <cstdint>
#include <string>
#include <unordered_set>

#include "document/frame_callback.h"
#include "merge/link_merge.h"
#include "merge/picture_placing.h"

namespace tarnova {

/// Texts of the report's notes.
inline constexpr std::string_view pictureNoteMissing = "missing";
inline constexpr std::string_view pictureNoteDamaged = "damaged";

/// Which frames a walk merges.
enum class FrameScope : std::uint16_t { textFrames = 0, otherFrames = 1, both = 2 };

/// A visitor for one walk of a pass. A link's tag stays on its frame, so that the next pass can merge it again. A frame
/// that a pass has made another kind of frame goes on `changedFrames`, and isn't merged twice in it.
class ZavoPullFrameCallback final : public ZavoFrameCallback, private LinkMerge {
 public:
    /// Opens the data of the current definition; a failure is in `engineError` and makes `GetInitError` non-zero. With
    /// a text in `statusText` the progress is shown. `changedWord` (borrowed, may be null) gets what changed.
    ZavoPullFrameCallback(PMString statusText, FrameScope itsScope, std::uint16_t* changedWord);

    bool FrameBegin() override;
    bool TagIsMine(std::string_view data) override;
    std::int32_t TagProcess() override;
    std::int32_t FrameEnd() override;

 private:
    [[nodiscard]] keywordPlaceRec placeOfLink() override;
    [[nodiscard]] std::string pageName() const;
    [[nodiscard]] bool isMerged() const { return mergeOn != 0 && !lockedLink; }
    [[nodiscard]] bool isChanged();
    void noteChanged();

    errorWord prepareFrameTag(bool& isMergedNow, errorWord priorError);
    errorWord settleKey(const extractionRec& link);
    errorWord fetchModuleImage(errorWord priorError);
    errorWord mergeTextFrame(errorWord priorError);
    errorWord replaceFrameText(UID story);
    errorWord deleteFrame(std::string_view noticeKey);
    [[nodiscard]] std::string frameText() const;
    void reportFrame();

    // The asset of a frame (pull_frame_asset.cpp).
    errorWord findFrameAsset(errorWord priorError);
    errorWord findPath(const std::string& name);
    errorWord applyFrameValue(errorWord priorError);
    errorWord applyStatus();
    errorWord clearPassThrough();
    errorWord showProblem();
    void tellDamaged();
    errorWord showText(std::u32string_view text);
    [[nodiscard]] bool promptsAreOn() const;
    std::uint16_t placeAsset();
    std::uint16_t askForAsset();
    std::uint16_t missingSubstitute();
    std::uint16_t placeFound();
    errorWord readArticle();
    void noteProblem();

    FrameScope scope;
    std::uint16_t* sharedChanged;
    std::uint8_t mergeOn;  // the session's flag at construction
    std::unordered_set<UID> changedKnown;
    std::size_t changedRead = 0;  // entries of `changedFrames` that the set holds

    // The frame.
    std::uint16_t changed = 0;  // bit 0: it was touched
    bool hadTag = false;
    std::int32_t pageEntry = 0;  // of its page in the document

    // Its tag, from TagIsMine on.
    bool isTextContent = false;  // the frame takes the value as text
    bool assetFound = false;
    std::uint32_t assetKind = 0;
    pictureFitRec fit;
    pdfPlacePrefsRec pdf;
    std::uint16_t frameResult = framePlaced;
    std::string oldPath;  // of the picture that the frame shows (for the report its text),
    std::string newPath;  // and from the value
};

}  // namespace tarnova
