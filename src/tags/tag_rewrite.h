// A stored tag that is read, changed and written again.

#pragma once

#include <optional>
#include <string_view>

#include "engine/toolkit/memory.h"
#include "tags/tag_record.h"

namespace tarnova {

/// Keeps what a decoded record alone would lose: its further keys and its kind. Used again from tag to tag.
class TagRewrite {
 public:
    TagRewrite() : keys(newHandle(0)) { tag.auxKeys = keys.get(); }
    TagRewrite(const TagRewrite&) = delete;
    TagRewrite& operator=(const TagRewrite&) = delete;

    /// False for a record that can't be read whole; it must not be written again then.
    [[nodiscard]] bool read(std::string_view stored) {
        std::uint16_t storedKind = 0;
        if (tag.auxKeys == nullptr || tagRecordDecode(stored, &tag, nullptr, &storedKind, 0) != 0) return false;
        tag.tagKind = storedKind / 2;
        return true;
    }
    /// The record's bytes, valid until the next call; nothing without memory, or when the further keys are too many.
    [[nodiscard]] std::optional<std::string_view> written() {
        std::byte* stored = nullptr;
        if (tagRecordEncode(&tag, &stored, 0) != 0) return std::nullopt;
        block.reset(stored);
        return std::string_view(reinterpret_cast<const char*>(stored), blockSize(stored));
    }

    tagDataRec tag{};

 private:
    handlePtr keys;
    blockPtr<> block;
};

}  // namespace tarnova
