// UIDs that a layout file gives, and how many objects it may make.

#pragma once

#include <cstddef>
#include <unordered_set>
#include <vector>

#include "host/files/json_values.h"
#include "host/model/document_builder.h"

namespace tarnova {

/// UIDs in a file stay this far below the limit of the model, so that there is room for what the reader adds.
inline constexpr UID fileUidLimit = 1u << 27;
/// Objects that one file may make.
inline constexpr std::size_t fileObjectLimit = std::size_t{1} << 26;

class UidReader {
 public:
    explicit UidReader(DocumentBuilder& itsBuilder) : builder(itsBuilder) {}

    /// The UID that the file gives; a new one when it gives none (null). Throws LayoutFault when it is taken.
    [[nodiscard]] UID uidOf(const JsonValue* value);
    /// The UIDs of an array; none for null.
    [[nodiscard]] std::vector<UID> uidsOf(const JsonValue* value);
    /// Throws LayoutFault when the file makes too many objects.
    void countObjects(const JsonValue& value, std::size_t count);

 private:
    DocumentBuilder& builder;
    std::unordered_set<UID> taken;
    std::size_t objectCount = 0;
};

}  // namespace tarnova
