// How a story holds its text: in chunks of whole paragraphs under a balanced tree. Chunks and trees are never changed
// once others can see them, so that contents, their copies and the steps of undo share what they have in common; an
// edit makes the touched chunk anew, and the few nodes above it.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "document/document.h"

namespace tarnova {

class RunAttributes;
struct ParagraphAttributes;

/// A chunk with more characters is cut at the ends of its paragraphs. A longer paragraph stays whole.
inline constexpr std::size_t chunkLimit = 2048;

struct AttributeRun {
    std::int32_t length = 0;
    const RunAttributes* attributes = nullptr;
};

struct ParagraphRun {
    std::int32_t length = 0;  // characters, its return included
    const ParagraphAttributes* attributes = nullptr;
    bool endsThread = false;  // its return is the closing mark of the main text, a cell and the like
};

/// Whole paragraphs. Lengths of runs and of paragraphs each add up to the text's; no run is empty, and no two
/// neighbours hold the same attributes.
struct StoryChunk {
    std::u32string text;  // returns are U+000D
    std::vector<AttributeRun> runs;
    std::vector<ParagraphRun> paragraphs;
    std::vector<ownedItemRec> owned;  // anchored items by position, from the chunk's start (anchor character U+FFFC)
    std::int32_t pageCharacters = 0;  // how many of the text are some (page_characters.h)
};

[[nodiscard]] std::int32_t countPageCharacters(std::u32string_view characters);

/// What a node says of all text below it.
struct StorySums {
    std::int32_t characters = 0;
    std::int32_t paragraphs = 0;
    std::int32_t threads = 0;  // that end here
    std::int32_t owned = 0;
    std::int32_t pageCharacters = 0;
    const RunAttributes* soleRun = nullptr;  // the attributes of all characters; null: they differ
};

/// A leaf, with height 0, or a branch.
struct StoryNode {
    StorySums sums;
    std::int32_t height = 0;
};
using StoryTree = std::shared_ptr<const StoryNode>;  // null holds no text

struct StoryLeaf : StoryNode {
    StoryChunk chunk;
};

struct StoryBranch : StoryNode {
    StoryTree left, right;  // their heights differ by one at most
};

struct LeafPlace {
    const StoryLeaf* leaf = nullptr;
    std::int32_t start = 0;  // of its first character in the tree
};

/// The leaf that a position of the text lies in.
[[nodiscard]] LeafPlace leafAt(const StoryNode& tree, std::int32_t position);

[[nodiscard]] StorySums sumsOf(const StoryChunk& chunk);
[[nodiscard]] StorySums sumsOf(const StorySums& front, const StorySums& behind);
/// A tree of a chunk of any length.
[[nodiscard]] StoryTree treeOf(StoryChunk&& chunk);
/// Puts `added` behind a chunk.
void appendChunk(StoryChunk& chunk, const StoryChunk& added);

/// The text of both, one behind the other.
[[nodiscard]] StoryTree joinTrees(StoryTree left, StoryTree right);
/// What stands in front of a position, at which a leaf begins or the text ends, and what stands behind.
[[nodiscard]] std::pair<StoryTree, StoryTree> splitTree(const StoryTree& tree, std::int32_t position);

/// Calls `visit(leaf, start)` for the leaves from that of `position` on, in order, until it says false.
template <typename Visit>
bool visitLeaves(const StoryNode& tree, std::int32_t position, Visit&& visit, std::int32_t start = 0) {
    if (position >= start + tree.sums.characters) return true;
    if (tree.height == 0) return visit(static_cast<const StoryLeaf&>(tree), start);
    const auto& branch = static_cast<const StoryBranch&>(tree);
    return visitLeaves(*branch.left, position, visit, start) &&
           visitLeaves(*branch.right, position, visit, start + branch.left->sums.characters);
}

}  // namespace tarnova
