// Which texts of a layout look the same, so that copies share what is drawn of them as they did before they were saved.

#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>

#include "host/files/json_tree.h"
#include "host/model/document_builder.h"

namespace tarnova {

class SharedLooks {
 public:
    /// The tape of a text, with the items in it, that stands in or on frames of one shared shape: one for all texts
    /// that are written alike but for UIDs. `text` is what the file has of it: the text, its index among the shared
    /// ones, or a text on a path. Valid as long as this.
    [[nodiscard]] StampTape& tapeOf(const JsonValue& text, std::size_t shapeKey);

 private:
    std::unordered_map<std::string, StampTape> tapes;  // by shape and text
};

}  // namespace tarnova
