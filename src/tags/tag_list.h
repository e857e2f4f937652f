// A list of all tags of a document, for people and programs that want to see its links at one glance.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "document/document.h"
#include "tags/tag_record.h"

namespace tarnova {

struct tagListRec {
    std::uint16_t store = 0;  // 0 `Kelvane`, 1 `Tallyra`
    UID owner = kInvalidUID;  // the story of a text tag, the frame of a frame tag
    bool onFrame = false;
    std::int32_t pageIndex = -1;  // from 0; -1 on a pasteboard, on a master or in an overset part
    bool onMaster = false;
    std::int32_t start = 0;  // of a text tag, in characters of its story
    std::int32_t length = 0;
    std::u32string text;  // what it covers
    tagDataRec tag{};     // without further keys
    std::uint16_t storedKind = 0;
    errorWord readError = 0;  // of the stored record; `tag` then holds what could be read
};

/// All text and frame tags of one store, in the order of a walk over everything, hidden layers and the pasteboard
/// included. Text tags of stories that no frame shows aren't among them.
[[nodiscard]] std::vector<tagListRec> listTags(Document& document, std::uint16_t store);

}  // namespace tarnova
