#include "host/model/story_chunks.h"

#include <algorithm>

#include "host/model/page_characters.h"

namespace tarnova {

namespace {

const StoryBranch& branchOf(const StoryTree& tree) {
    return static_cast<const StoryBranch&>(*tree);
}

StoryTree branch(StoryTree left, StoryTree right) {
    auto out = std::make_shared<StoryBranch>();
    out->sums = sumsOf(left->sums, right->sums);
    out->height = std::max(left->height, right->height) + 1;
    out->left = std::move(left);
    out->right = std::move(right);
    return out;
}

/// A branch of two trees whose heights differ by two at most.
StoryTree balanced(const StoryTree& left, const StoryTree& right) {
    if (left->height > right->height + 1) {
        const StoryBranch& high = branchOf(left);
        if (high.left->height >= high.right->height) return branch(high.left, branch(high.right, right));
        const StoryBranch& middle = branchOf(high.right);
        return branch(branch(high.left, middle.left), branch(middle.right, right));
    }
    if (right->height > left->height + 1) {
        const StoryBranch& high = branchOf(right);
        if (high.right->height >= high.left->height) return branch(branch(left, high.left), high.right);
        const StoryBranch& middle = branchOf(high.left);
        return branch(branch(left, middle.left), branch(middle.right, high.right));
    }
    return branch(left, right);
}

StoryTree leaf(StoryChunk&& chunk) {
    auto out = std::make_shared<StoryLeaf>();
    out->sums = sumsOf(chunk);
    out->chunk = std::move(chunk);
    return out;
}

void addRun(std::vector<AttributeRun>& runs, AttributeRun run) {
    if (!runs.empty() && runs.back().attributes == run.attributes) {
        runs.back().length += run.length;
    } else {
        runs.push_back(run);
    }
}

/// Cuts a chunk from its start into smaller ones.
class ChunkCutter {
 public:
    explicit ChunkCutter(const StoryChunk& itsWhole) : whole(itsWhole) {}

    /// The next paragraphs, half a chunk's worth of them where so much is left.
    StoryChunk next() {
        StoryChunk out;
        std::size_t length = 0;
        for (; paragraph < whole.paragraphs.size() && length < chunkLimit / 2; ++paragraph) {
            const auto added = static_cast<std::size_t>(whole.paragraphs[paragraph].length);
            if (length > 0 && length + added > chunkLimit) break;
            out.paragraphs.push_back(whole.paragraphs[paragraph]);
            length += added;
        }
        out.text = whole.text.substr(start, length);
        if (whole.pageCharacters > 0) out.pageCharacters = countPageCharacters(out.text);
        takeRuns(out, static_cast<std::int32_t>(length));
        takeOwned(out, start + length);
        start += length;
        return out;
    }

    [[nodiscard]] bool isDone() const { return paragraph == whole.paragraphs.size(); }

 private:
    void takeRuns(StoryChunk& out, std::int32_t length) {
        while (length > 0) {
            const AttributeRun& source = whole.runs[run];
            const std::int32_t taken = std::min(length, source.length - runOffset);
            out.runs.push_back({taken, source.attributes});
            length -= taken;
            runOffset += taken;
            if (runOffset < source.length) continue;
            ++run;
            runOffset = 0;
        }
    }

    void takeOwned(StoryChunk& out, std::size_t limit) {
        for (; item < whole.owned.size() && static_cast<std::size_t>(whole.owned[item].position) < limit; ++item) {
            out.owned.push_back(whole.owned[item]);
            out.owned.back().position -= static_cast<std::int32_t>(start);
        }
    }

    const StoryChunk& whole;
    std::size_t start = 0, paragraph = 0, run = 0, item = 0;
    std::int32_t runOffset = 0;
};

}  // namespace

LeafPlace leafAt(const StoryNode& tree, std::int32_t position) {
    const StoryNode* node = &tree;
    std::int32_t start = 0;
    while (node->height > 0) {
        const auto& at = static_cast<const StoryBranch&>(*node);
        const std::int32_t middle = start + at.left->sums.characters;
        node = position < middle ? at.left.get() : at.right.get();
        if (position >= middle) start = middle;
    }
    return {static_cast<const StoryLeaf*>(node), start};
}

std::int32_t countPageCharacters(std::u32string_view characters) {
    return static_cast<std::int32_t>(std::count_if(characters.begin(), characters.end(), isPageCharacter));
}

StorySums sumsOf(const StoryChunk& chunk) {
    StorySums sums;
    sums.characters = static_cast<std::int32_t>(chunk.text.size());
    sums.paragraphs = static_cast<std::int32_t>(chunk.paragraphs.size());
    sums.threads = static_cast<std::int32_t>(std::count_if(chunk.paragraphs.begin(), chunk.paragraphs.end(),
                                                           [](const ParagraphRun& run) { return run.endsThread; }));
    sums.owned = static_cast<std::int32_t>(chunk.owned.size());
    sums.pageCharacters = chunk.pageCharacters;
    if (chunk.runs.size() == 1) sums.soleRun = chunk.runs.front().attributes;
    return sums;
}

StorySums sumsOf(const StorySums& front, const StorySums& behind) {
    return {front.characters + behind.characters,         front.paragraphs + behind.paragraphs,
            front.threads + behind.threads,               front.owned + behind.owned,
            front.pageCharacters + behind.pageCharacters, front.soleRun == behind.soleRun ? front.soleRun : nullptr};
}

StoryTree treeOf(StoryChunk&& chunk) {
    if (chunk.text.size() <= chunkLimit || chunk.paragraphs.size() == 1) return leaf(std::move(chunk));
    StoryTree tree;
    for (ChunkCutter cutter(chunk); !cutter.isDone();)
        tree = joinTrees(std::move(tree), leaf(cutter.next()));
    return tree;
}

void appendChunk(StoryChunk& chunk, const StoryChunk& added) {
    const auto length = static_cast<std::int32_t>(chunk.text.size());
    chunk.text += added.text;
    chunk.pageCharacters += added.pageCharacters;
    for (const AttributeRun& run : added.runs)
        addRun(chunk.runs, run);
    chunk.paragraphs.insert(chunk.paragraphs.end(), added.paragraphs.begin(), added.paragraphs.end());
    for (ownedItemRec owned : added.owned) {
        owned.position += length;
        chunk.owned.push_back(owned);
    }
}

StoryTree joinTrees(StoryTree left, StoryTree right) {
    if (left == nullptr) return right;
    if (right == nullptr) return left;
    if (left->height > right->height + 1) {
        const StoryBranch& high = branchOf(left);
        return balanced(high.left, joinTrees(high.right, std::move(right)));
    }
    if (right->height > left->height + 1) {
        const StoryBranch& high = branchOf(right);
        return balanced(joinTrees(std::move(left), high.left), high.right);
    }
    return branch(std::move(left), std::move(right));
}

std::pair<StoryTree, StoryTree> splitTree(const StoryTree& tree, std::int32_t position) {
    if (tree == nullptr || position >= tree->sums.characters) return {tree, nullptr};
    if (position <= 0) return {nullptr, tree};
    const StoryBranch& at = branchOf(tree);
    const std::int32_t middle = at.left->sums.characters;
    if (position < middle) {
        auto [front, rest] = splitTree(at.left, position);
        return {std::move(front), joinTrees(std::move(rest), at.right)};
    }
    auto [front, rest] = splitTree(at.right, position - middle);
    return {joinTrees(at.left, std::move(front)), std::move(rest)};
}

}  // namespace tarnova
