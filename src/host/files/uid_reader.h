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
/// Objects that one file may make besides one for each value in it. A file that says all of its objects, as those do
/// that we write, stays below; a short one can't fill the memory by way of what it leaves out.
inline constexpr std::size_t fileObjectsBeside = std::size_t{1} << 18;

class UidReader {
 public:
    explicit UidReader(DocumentBuilder& itsBuilder) : builder(itsBuilder) {}

    /// The UID that the file gives; a new one when it gives none (null). Throws LayoutFault when it is taken.
    [[nodiscard]] UID uidOf(const JsonValue* value);
    /// The UIDs of an array; none for null.
    [[nodiscard]] std::vector<UID> uidsOf(const JsonValue* value);
    /// Counts a value of the file. Before the first object.
    void allowObject() { ++objectLimit; }
    /// Throws LayoutFault when the file makes too many objects.
    void countObjects(const JsonValue& value, std::size_t count);

 private:
    DocumentBuilder& builder;
    std::unordered_set<UID> taken;
    std::size_t objectCount = 0;
    std::size_t objectLimit = fileObjectsBeside;
};

}  // namespace tarnova
