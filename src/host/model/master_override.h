// Makes items of masters items of the pages that show them.

#pragma once

#include <array>
#include <map>
#include <unordered_set>
#include <vector>

#include "host/model/model_document.h"
#include "host/model/tree_copy.h"

namespace tarnova {

class MasterOverride {
 public:
    explicit MasterOverride(ModelDocument& itsDocument) : document(itsDocument) {}
    /// Plans the items of the masters of a page. Before `make`.
    void add(const Page& page);
    /// Gives 0, or an error when the document has no UIDs left or an item would lie too far out; then nothing was
    /// changed.
    [[nodiscard]] errorWord make();

 private:
    /// A master's item on its way to a page.
    struct Planned {
        UID original;
        std::size_t layer;
        PMPoint move;
    };
    /// What pages of one spread take of masters at one level (1: their own, 2: what that is based on), and no page of a
    /// master twice: so frames that belong to one story of a master belong to one again.
    struct Batch {
        UID spread;
        std::size_t level;
        std::unordered_set<UID> masterPages;
        std::vector<Planned> items;  // from back to front
    };
    /// An original and how far it was moved: such copies draw the same.
    using StampKey = std::pair<UID, std::array<double, 2>>;

    Batch& batchFor(UID spread, std::size_t level, UID masterPage);
    [[nodiscard]] bool staysInReach(const Planned& planned) const;
    void makeBatch(const Batch& batch);
    void settle(UID copy, const PageItem& original, PMPoint move);

    ModelDocument& document;
    std::vector<Batch> batches;
    std::map<StampKey, std::uint64_t> stamps;
};

}  // namespace tarnova
