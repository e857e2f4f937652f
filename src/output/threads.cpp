#include "output/threads.h"

#include <algorithm>

#include "document/document.h"
#include "document/walk.h"
#include "engine/toolkit/byte_order.h"
#include "output/build_tables.h"

namespace tarnova {
namespace {

constexpr std::size_t markPositionOffset = 4;

/// Visits every item that lies on a page.
void walkPages(UIDRef document, IFrameCallback& callback) {
    walkDocument(*document.database, &callback, nullptr, 0, 0, WalkScope::pagesOnly, false, true, nullptr, nullptr,
                 nullptr, true);
}

errorWord removeMark(UIDRef frame) {
    const std::uint16_t store = walkState().engineMode;
    const bool done = itemDataSet(frame, ItemDataPlace::pageItem, itemDataThreadCopies, nullptr, 0, store) != 0;
    return done ? 0 : errFailed;
}

/// Takes away the mark of each item that has one, whatever it says.
class MarkRemoval final : public ZavoFrameCallback {
 public:
    MarkRemoval() { SetSignature(itemDataThreadCopies); }
    bool TagIsMine(std::string_view) override { return true; }
    std::int32_t TagProcess() override {
        if (replaceTagData(std::nullopt) != 0) failed = true;
        return 0;
    }
    bool failed = false;
};

/// The thread runs over more than one page of the document.
bool crossesPages(const Document& document, const std::vector<UID>& frames) {
    if (frames.empty() || document.pageOfItem(frames.front()).isMaster) return false;
    const UID first = document.pageOfItem(frames.front()).page;
    return std::any_of(frames.begin(), frames.end(),
                       [&](UID frame) { return document.pageOfItem(frame).page != first; });
}

errorWord markFrames(UIDRef document, const std::vector<UID>& frames, std::int32_t thread) {
    char mark[threadMarkBytes];
    storeBig32(mark, static_cast<std::uint32_t>(thread));
    std::uint32_t position = 0;
    for (const UID frame : frames) {
        storeBig32(mark + markPositionOffset, position++);
        const std::uint16_t store = walkState().engineMode;
        const UIDRef item{document.database, frame};
        if (itemDataSet(item, ItemDataPlace::pageItem, itemDataThreadCopies, mark, sizeof mark, store) == 0) {
            return errFailed;
        }
    }
    return 0;
}

}  // namespace

std::int32_t ZavoThreadedTextFramesCallback::TagProcess() {
    const Document& document = *frameRef.database;
    const pageMapRec* const page = pageMapAt(document.pageIndex(document.pageOfItem(frameRef.uid).page));
    if (page == nullptr) return 0;
    const char* const mark = tagBytes().data();
    frames.push_back({page->slot, loadBig32(mark), loadBig32(mark + markPositionOffset), frameRef.uid});
    return 0;
}

errorWord markThreads(UIDRef document, std::int32_t& outThreadCount, errorWord priorError) {
    outThreadCount = 0;
    if (priorError != 0) return priorError;
    MarkRemoval removal;
    walkPages(document, removal);
    errorWord error = removal.failed ? errFailed : 0;
    for (const UID story : document.database->stories()) {
        const std::vector<UID> frames = document.database->framesOfStory(story);
        if (error != 0 || !crossesPages(*document.database, frames)) continue;
        error = markFrames(document, frames, outThreadCount++);
    }
    return error;
}

errorWord rebuildThreads(UIDRef document, errorWord priorError) {
    if (priorError != 0) return priorError;
    ZavoThreadedTextFramesCallback marked;
    walkPages(document, marked);
    std::vector<ZavoThreadedTextFramesCallback::markedFrameRec>& frames = marked.frames;
    std::sort(frames.begin(), frames.end());
    errorWord error = 0;
    bool isWhole = false;  // no position of the thread was missing so far
    for (std::size_t i = 0; i < frames.size() && error == 0; ++i) {
        const auto& frame = frames[i];
        error = removeMark({document.database, frame.frame});
        const bool begins = i == 0 || frames[i - 1].slot != frame.slot || frames[i - 1].thread != frame.thread;
        if (begins) {
            isWhole = frame.position == 0;
            continue;
        }
        isWhole = isWhole && frame.position == frames[i - 1].position + 1;
        if (isWhole && error == 0) error = document.database->linkFrames(frames[i - 1].frame, frame.frame);
    }
    return error;
}

}  // namespace tarnova
