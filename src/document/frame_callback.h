// What a walk does with a page item.

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "document/item_data.h"
#include "document/uid.h"
#include "engine/toolkit/memory.h"
#include "engine/toolkit/pm_string.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// Visitor of page items. An object lives for one walk; one whose `GetInitError` isn't 0 isn't used.
class IFrameCallback {
 public:
    /// Visits an item. `frame` comes back as the item that stands there now, when the visit replaced it. A result other
    /// than 0 ends the walk with that value. `cancel` is the walk's word and never null; a non-zero word ends the walk.
    virtual std::int32_t Process(UIDRef& frame, std::uint16_t* cancel) = 0;
    virtual ~IFrameCallback() = default;
    /// 0 when construction succeeded.
    [[nodiscard]] virtual std::uint16_t GetInitError() const = 0;
    /// The number of items of the walk, for the progress.
    virtual void SetTotal(std::int32_t itemTotal) = 0;
    /// Which entry of the item's data is read (item_data.h); the frame tag until it is set.
    virtual void SetSignature(std::uint32_t type) = 0;
    /// Says whether the item is looked at.
    virtual bool FrameBegin() = 0;
    /// Its result is the result of `Process`.
    virtual std::int32_t FrameEnd() = 0;
    /// Says whether the stored data is for this callback. `data` is valid for the call, and as long as the document
    /// isn't changed.
    virtual bool TagIsMine(std::string_view data) = 0;
    /// Works on the frame tag; the result is ignored.
    virtual std::int32_t TagProcess() = 0;
};

/// The visit of an item in its fixed order. Subclasses say what is theirs and what is done with it; here every item is
/// looked at, no tag is taken, and nothing ends the walk.
class ZavoFrameCallback : public IFrameCallback {
 public:
    /// With `withProgress` a status dialog with the text `statusText` is there as long as the object, and moves at each
    /// further tenth of `SetTotal`.
    ZavoFrameCallback(bool withProgress, PMString statusText);
    ZavoFrameCallback() : ZavoFrameCallback(false, PMString{}) {}
    ~ZavoFrameCallback() override;
    ZavoFrameCallback(const ZavoFrameCallback&) = delete;
    ZavoFrameCallback& operator=(const ZavoFrameCallback&) = delete;

    std::int32_t Process(UIDRef& frame, std::uint16_t* cancelWord) override;
    [[nodiscard]] std::uint16_t GetInitError() const override { return initError; }
    void SetTotal(std::int32_t itemTotal) override { total = itemTotal; }
    void SetSignature(std::uint32_t type) override { signature = type; }
    bool FrameBegin() override { return true; }
    std::int32_t FrameEnd() override { return 0; }
    bool TagIsMine(std::string_view) override { return false; }
    std::int32_t TagProcess() override { return 0; }

 protected:
    /// The tag's bytes during `TagProcess`, in a copy that a change of the document leaves alone.
    [[nodiscard]] std::string_view tagBytes() const {
        return {reinterpret_cast<const char*>(tagData.get()), blockSize(tagData.get())};
    }

    /// Replaces the entry of the signature on the item under visit, or takes it away. Gives errFailed when the document
    /// refuses.
    [[nodiscard]] errorWord replaceTagData(std::optional<std::string_view> data);

    std::uint16_t initError = 1;  // a subclass whose own construction fails sets it again
    std::uint16_t showProgress = 0;
    std::int32_t total = 0;
    PMString message;
    std::int32_t processed = 0;
    std::int32_t lastPercent = 0;
    UIDRef frameRef;  // the item under visit; a visit that replaces the item sets it
    std::uint32_t signature = itemDataFrameTag;
    blockPtr<> tagData;
    std::uint16_t* cancel = nullptr;

 private:
    void lookAtTag();
    void moveProgress();
};

}  // namespace tarnova
