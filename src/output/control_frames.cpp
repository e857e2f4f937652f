#include "output/control_frames.h"

#include <algorithm>

#include "document/item_data.h"
#include "document/walk.h"
#include "engine/session/session.h"
#include "engine/toolkit/byte_order.h"
#include "engine/toolkit/messages.h"

namespace tarnova {

namespace {

constexpr std::uint16_t messagePasteboard = 118;

/// Collects the frames with the mark.
class ZavoNameBoxCallback final : public ZavoFrameCallback {
 public:
    ZavoNameBoxCallback() { SetSignature(itemDataControlFrame); }
    bool TagIsMine(std::string_view data) override {
        if (data.size() == sizeof(std::int32_t)) frames.push_back(frameRef.uid);
        return false;
    }

    std::vector<UID> frames;
};

/// The only frame of the kind; `twice` is set when there are more.
UID frameOfKind(Document& document, const std::vector<UID>& frames, std::int32_t kind, bool& twice) {
    UID found = kInvalidUID;
    for (const UID frame : frames) {
        if (controlKindOf({&document, frame}) != kind) continue;
        twice = twice || found != kInvalidUID;
        if (found == kInvalidUID) found = frame;
    }
    return found;
}

}  // namespace

std::optional<std::int32_t> controlKindOf(UIDRef frame) {
    const auto mark = itemDataView(frame, ItemDataPlace::pageItem, itemDataControlFrame, session().engineMode);
    if (!mark || mark->size() != sizeof(std::int32_t)) return std::nullopt;
    return static_cast<std::int32_t>(loadBig32(mark->data()));
}

std::vector<UID> controlFramesOf(Document& document) {
    ZavoNameBoxCallback callback;
    walkDocument(document, &callback, nullptr, 0, 0, WalkScope::pagesOnly, false, false, nullptr, nullptr, nullptr,
                 true);
    return callback.frames;
}

errorWord checkControlFrames(Document& document, bool interactive, controlFrameCheckRec& check, errorWord priorError) {
    check = {};
    if (priorError != 0 || appPrefs().controlFramesEnabled == 0) return priorError;
    const std::vector<UID> frames = controlFramesOf(document);
    if (frames.empty()) return 0;
    check.fileNameFrame = frameOfKind(document, frames, controlKindFileName, check.stopped);
    check.copiesFrame = frameOfKind(document, frames, controlKindCopies, check.stopped);
    if (check.stopped) return errControlFrameTwice;
    const bool onPage = document.pageOfItem(frames.front()).page != kInvalidUID;
    if (interactive && !onPage) check.stopped = !askChoice(messageString(messagePasteboard), true, 1);
    check.usable = !check.stopped;
    return 0;
}

}  // namespace tarnova
