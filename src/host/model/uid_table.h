// Objects by UID. UIDs only grow, so the table is an array in pieces: a look-up is two steps, and a piece whose objects
// are all gone is given back, which keeps a document small through which thousands of pages pass.

#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <utility>
#include <variant>
#include <vector>

#include "document/uid.h"
#include "host/model/document_model.h"

namespace tarnova {

/// UIDs stay below this; 45 objects on a page leave room for six million pages.
inline constexpr UID uidLimit = 1u << 28;

using ObjectSlot = std::variant<std::monostate, std::unique_ptr<Page>, std::unique_ptr<Spread>,
                                std::unique_ptr<PageItem>, std::unique_ptr<Story>>;

class UidTable {
 public:
    /// The object of the UID when it is of this class, else null.
    template <typename Object>
    [[nodiscard]] Object* find(UID uid) const {
        ObjectSlot* slot = slotOf(uid);
        if (slot == nullptr) return nullptr;
        const auto* held = std::get_if<std::unique_ptr<Object>>(slot);
        return held == nullptr ? nullptr : held->get();
    }

    [[nodiscard]] bool contains(UID uid) const {
        const ObjectSlot* slot = slotOf(uid);
        return slot != nullptr && slot->index() != 0;
    }

    /// What stands under the UID; the empty slot when nothing does.
    [[nodiscard]] const ObjectSlot& slot(UID uid) const {
        static const ObjectSlot empty;
        const ObjectSlot* found = slotOf(uid);
        return found == nullptr ? empty : *found;
    }

    /// Puts an object into a free slot; `uid` is below `uidLimit`.
    template <typename Object>
    Object* put(UID uid, std::unique_ptr<Object> object) {
        Object* raw = object.get();
        const std::size_t piece = uid / pieceSize;
        if (piece >= pieces.size()) pieces.resize(piece + 1);
        if (pieces[piece] == nullptr) pieces[piece] = std::make_unique<Piece>();
        pieces[piece]->slots[uid % pieceSize] = std::move(object);
        ++pieces[piece]->used;
        return raw;
    }

    /// Takes the object out; the slot is free, and the UID isn't used again.
    ObjectSlot take(UID uid) {
        ObjectSlot* slot = slotOf(uid);
        if (slot == nullptr || slot->index() == 0) return {};
        ObjectSlot out = std::exchange(*slot, ObjectSlot{});
        std::unique_ptr<Piece>& piece = pieces[uid / pieceSize];
        if (--piece->used == 0) piece.reset();
        return out;
    }

    /// Calls `visit(uid, slot)` for every object, by UID.
    template <typename Visit>
    void forEach(Visit visit) const {
        for (std::size_t p = 0; p < pieces.size(); ++p) {
            if (pieces[p] == nullptr) continue;
            for (std::size_t i = 0; i < pieceSize && pieces[p] != nullptr; ++i) {
                const ObjectSlot& slot = pieces[p]->slots[i];
                if (slot.index() != 0) visit(static_cast<UID>(p * pieceSize + i), slot);
            }
        }
    }

 private:
    static constexpr std::size_t pieceSize = 64;
    struct Piece {
        std::array<ObjectSlot, pieceSize> slots;
        std::size_t used = 0;
    };

    [[nodiscard]] ObjectSlot* slotOf(UID uid) const {
        const std::size_t piece = uid / pieceSize;
        if (piece >= pieces.size() || pieces[piece] == nullptr) return nullptr;
        return &pieces[piece]->slots[uid % pieceSize];
    }

    std::vector<std::unique_ptr<Piece>> pieces;
};

}  // namespace tarnova
