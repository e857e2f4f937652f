// Threads of text frames across the copies of a template. A copied spread loses the thread to frames on other spreads,
// so before the expansion each frame is marked with its place, and behind it the frames of each slot are joined again;
// then the marks have served.

#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "document/frame_callback.h"
#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// The mark, the entry `itemDataThreadCopies`: number of the thread and position of the frame in it, both from 0,
/// 32 bits each, big-endian.
inline constexpr std::size_t threadMarkBytes = 8;

/// Collects marked frames with the slot of their page; frames on no page of the page map are left out.
class ZavoThreadedTextFramesCallback final : public ZavoFrameCallback {
 public:
    struct markedFrameRec {
        std::int32_t slot;
        std::uint32_t thread;
        std::uint32_t position;
        UID frame;
        friend auto operator<=>(const markedFrameRec&, const markedFrameRec&) = default;
    };

    ZavoThreadedTextFramesCallback() { SetSignature(itemDataThreadCopies); }
    bool TagIsMine(std::string_view data) override { return data.size() == threadMarkBytes; }
    std::int32_t TagProcess() override;

    std::vector<markedFrameRec> frames;
};

/// Marks the frames of each thread that runs over more than one page, in the store of the engine's mode. Marks from
/// before are taken away. `outThreadCount` is the number of threads.
[[nodiscard]] errorWord markThreads(UIDRef document, std::int32_t& outThreadCount, errorWord priorError);

/// Joins the marked frames of each slot as their marks say, from position 0 to the first that is missing, and takes the
/// marks away.
[[nodiscard]] errorWord rebuildThreads(UIDRef document, errorWord priorError);

}  // namespace tarnova
