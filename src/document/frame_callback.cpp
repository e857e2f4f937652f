#include "document/frame_callback.h"

#include <cstring>
#include <utility>

#include "document/walk_state.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/toolkit_state.h"

namespace tarnova {

namespace {

constexpr std::int32_t progressStepPercent = 10;

/// Rule attributes lie in the `Kelvane` store in either mode.
std::uint16_t storeOf(std::uint32_t signature) {
    return signature == itemDataActionFrame ? 0 : walkState().engineMode;
}

}  // namespace

ZavoFrameCallback::ZavoFrameCallback(bool withProgress, PMString statusText)
    : showProgress(withProgress ? 1 : 0), message(std::move(statusText)) {
    statusDialog(message, 0, showProgress != 0, false, toolkitState().engineError);
    initError = 0;
}

ZavoFrameCallback::~ZavoFrameCallback() {
    statusDialog(message, -1, showProgress != 0, false, toolkitState().engineError);
}

std::int32_t ZavoFrameCallback::Process(UIDRef& frame, std::uint16_t* cancelWord) {
    tagData.reset();
    cancel = cancelWord;
    frameRef = frame;
    if (FrameBegin()) lookAtTag();
    const std::int32_t result = FrameEnd();
    ++processed;
    if (showProgress != 0) moveProgress();
    frame = frameRef;
    return result;
}

// The bytes are copied only for a tag that is worked on: most visits look and go on.
void ZavoFrameCallback::lookAtTag() {
    const std::optional<std::string_view> stored =
        itemDataView(frameRef, ItemDataPlace::pageItem, signature, storeOf(signature));
    if (!stored || !TagIsMine(*stored)) return;
    tagData.reset(static_cast<std::byte*>(newBlock(stored->size())));
    if (tagData == nullptr) {
        if (toolkitState().engineError == 0) toolkitState().engineError = errRunMemory;
        return;
    }
    if (!stored->empty()) std::memcpy(tagData.get(), stored->data(), stored->size());
    TagProcess();
    tagData.reset();
}

errorWord ZavoFrameCallback::replaceTagData(std::optional<std::string_view> data) {
    const void* bytes = data ? data->data() : nullptr;
    const std::size_t size = data ? data->size() : 0;
    const bool stored = itemDataSet(frameRef, ItemDataPlace::pageItem, signature, bytes, size, storeOf(signature)) == 1;
    return stored ? 0 : errFailed;
}

void ZavoFrameCallback::moveProgress() {
    const std::int32_t percent =
        total <= 0 ? 100 : static_cast<std::int32_t>(static_cast<std::int64_t>(processed) * 100 / total);
    if (percent - lastPercent < progressStepPercent) return;
    lastPercent = percent;
    statusDialog(message, percent, true, false, toolkitState().engineError);
}

}  // namespace tarnova
