// What composition needs of a story and its frames: formats resolved, columns as boxes.

#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "document/geometry.h"
#include "document/uid.h"
#include "host/model/format.h"
#include "host/model/page_item.h"
#include "host/text/composed_story.h"

namespace tarnova {

struct FormatSpan {
    std::int32_t length = 0;
    const CharFormat* format = nullptr;
};

/// A paragraph, its return included.
struct ParagraphSpan {
    std::int32_t length = 0;
    const ParaFormat* format = nullptr;
};

/// A column to fill, in the inner coordinates of its frame, insets taken off.
struct ColumnBox {
    UID frame = kInvalidUID;
    std::int32_t frameIndex = 0;
    std::int32_t columnIndex = 0;
    PMRect box;
    VerticalAlignment verticalAlignment = VerticalAlignment::top;
};

/// Borrowed from the document while composing. The spans cover the text.
struct ComposeInput {
    std::u32string_view text;  // of the main thread, its closing mark included
    std::vector<FormatSpan> formats;
    std::vector<ParagraphSpan> paragraphs;
    std::vector<ColumnBox> columns;  // in the order in which text flows
    std::span<const ShownText> shown;  // what page characters are set as, by position

    void clear() {
        text = {};
        formats.clear();
        paragraphs.clear();
        columns.clear();
        shown = {};
    }
};

}  // namespace tarnova
