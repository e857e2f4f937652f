// References to the objects of a document: what the engine holds instead of pointers.

#pragma once

#include <cstdint>
#include <vector>

namespace tarnova {

class Document;

/// Identity of an object within its document: unique there, never used again, kept by save and open. 0 is no object.
using UID = std::uint32_t;
inline constexpr UID kInvalidUID = 0;

/// A document and one of its objects. Borrowed: it doesn't keep the document open, and it stays valid until its object
/// is deleted (`PageItems::itemExists` tells).
struct UIDRef {
    Document* database = nullptr;
    UID uid = kInvalidUID;

    friend bool operator==(const UIDRef&, const UIDRef&) = default;
    explicit operator bool() const { return database != nullptr && uid != kInvalidUID; }
};

/// The reference to nothing.
inline constexpr UIDRef kInvalidUIDRef{};

/// Objects of one document, in order.
struct UIDList {
    Document* database = nullptr;
    std::vector<UID> uids;
};

}  // namespace tarnova
