#include "host/model/story_reader.h"

#include <algorithm>

namespace tarnova {

namespace {

/// How many characters from `position` on hold a list; a run never ends inside of a node whose sole run it is.
std::int32_t sameFrom(const StoryNode& node, std::int32_t position, const RunAttributes* attributes) {
    if (node.sums.soleRun != nullptr) {
        return node.sums.soleRun == attributes ? node.sums.characters - position : 0;
    }
    if (node.height == 0) {
        // Only whole leaves are asked for, from their start.
        const AttributeRun& first = static_cast<const StoryLeaf&>(node).chunk.runs.front();
        return first.attributes == attributes ? first.length : 0;
    }
    const auto& branch = static_cast<const StoryBranch&>(node);
    const std::int32_t middle = branch.left->sums.characters;
    if (position >= middle) return sameFrom(*branch.right, position - middle, attributes);
    const std::int32_t front = sameFrom(*branch.left, position, attributes);
    return front < middle - position ? front : front + sameFrom(*branch.right, 0, attributes);
}

/// Threads that end at or in front of a position.
std::int32_t threadsBefore(const StoryNode& tree, std::int32_t position) {
    const StoryNode* node = &tree;
    std::int32_t count = 0;
    while (node->height > 0) {
        const auto& at = static_cast<const StoryBranch&>(*node);
        const bool inLeft = position < at.left->sums.characters;
        if (!inLeft) {
            count += at.left->sums.threads;
            position -= at.left->sums.characters;
        }
        node = inLeft ? at.left.get() : at.right.get();
    }
    for (const ParagraphRun& paragraph : static_cast<const StoryLeaf*>(node)->chunk.paragraphs) {
        position -= paragraph.length;
        if (position < 0) break;
        if (paragraph.endsThread) ++count;
    }
    return count;
}

/// Behind the thread number `index`; 0 for -1.
std::int32_t threadLimit(const StoryNode& tree, std::int32_t index) {
    if (index < 0) return 0;
    const StoryNode* node = &tree;
    std::int32_t limit = 0;
    while (node->height > 0) {
        const auto& at = static_cast<const StoryBranch&>(*node);
        const bool inLeft = index < at.left->sums.threads;
        if (!inLeft) {
            index -= at.left->sums.threads;
            limit += at.left->sums.characters;
        }
        node = inLeft ? at.left.get() : at.right.get();
    }
    for (const ParagraphRun& paragraph : static_cast<const StoryLeaf*>(node)->chunk.paragraphs) {
        limit += paragraph.length;
        if (paragraph.endsThread && index-- == 0) break;
    }
    return limit;
}

void collectOwned(const StoryNode& node, std::int32_t start, std::int32_t from, std::int64_t limit,
                  std::vector<ownedItemRec>& out) {
    if (node.sums.owned == 0 || start >= limit || from >= start + node.sums.characters) return;
    if (node.height > 0) {
        const auto& branch = static_cast<const StoryBranch&>(node);
        collectOwned(*branch.left, start, from, limit, out);
        collectOwned(*branch.right, start + branch.left->sums.characters, from, limit, out);
        return;
    }
    for (ownedItemRec owned : static_cast<const StoryLeaf&>(node).chunk.owned) {
        owned.position += start;
        if (owned.position >= from && owned.position < limit) out.push_back(owned);
    }
}

/// The nodes of a tree from one of its ends, taken apart only where needed.
class NodeWalk {
 public:
    NodeWalk(const StoryTree& tree, bool itIsFromEnd) : isFromEnd(itIsFromEnd), pending{tree.get()} {}

    [[nodiscard]] const StoryNode* at() const { return pending.empty() ? nullptr : pending.back(); }
    void pass() { pending.pop_back(); }
    void takeApart() {
        const auto& branch = static_cast<const StoryBranch&>(*pending.back());
        pending.pop_back();
        pending.push_back(isFromEnd ? branch.left.get() : branch.right.get());
        pending.push_back(isFromEnd ? branch.right.get() : branch.left.get());
    }

 private:
    bool isFromEnd;
    std::vector<const StoryNode*> pending;  // the next one last
};

/// The characters of two chunks, with their formats, from one end.
class ChunkComparison {
 public:
    ChunkComparison(const StoryChunk& itsA, const StoryChunk& itsB) : a(itsA), b(itsB) {}

    [[nodiscard]] std::int32_t same(bool fromEnd) const {
        return fromEnd ? same(a.text.rbegin(), a.text.rend(), b.text.rbegin(), b.text.rend(), a.runs.rbegin(),
                              b.runs.rbegin(), a.paragraphs.rbegin(), a.paragraphs.rend(), b.paragraphs.rbegin(),
                              b.paragraphs.rend())
                       : same(a.text.begin(), a.text.end(), b.text.begin(), b.text.end(), a.runs.begin(),
                              b.runs.begin(), a.paragraphs.begin(), a.paragraphs.end(), b.paragraphs.begin(),
                              b.paragraphs.end());
    }

 private:
    /// Whole paragraphs only; chunks with anchored items count as different.
    template <typename Text, typename Runs, typename Paragraphs>
    [[nodiscard]] std::int32_t same(Text aText, Text aTextEnd, Text bText, Text bTextEnd, Runs aRun, Runs bRun,
                                    Paragraphs aParagraph, Paragraphs aParagraphEnd, Paragraphs bParagraph,
                                    Paragraphs bParagraphEnd) const {
        if (!a.owned.empty() || !b.owned.empty()) return 0;
        const auto characters =
            static_cast<std::int32_t>(std::mismatch(aText, aTextEnd, bText, bTextEnd).first - aText);
        const std::int32_t limit = sameRuns(aRun, bRun, characters);
        std::int32_t length = 0;
        for (; aParagraph != aParagraphEnd && bParagraph != bParagraphEnd; ++aParagraph, ++bParagraph) {
            const bool isSame = aParagraph->length == bParagraph->length &&
                                aParagraph->attributes == bParagraph->attributes &&
                                aParagraph->endsThread == bParagraph->endsThread;
            if (!isSame || aParagraph->length > limit - length) break;
            length += aParagraph->length;
        }
        return length;
    }

    /// How many of `characters` have the same attributes.
    template <typename Runs>
    static std::int32_t sameRuns(Runs aRun, Runs bRun, std::int32_t characters) {
        std::int32_t length = 0;
        while (length < characters && aRun->attributes == bRun->attributes) {
            length += std::min(aRun->length, bRun->length);
            if (aRun->length != bRun->length) break;
            ++aRun;
            ++bRun;
        }
        return std::min(length, characters);
    }

    const StoryChunk& a;
    const StoryChunk& b;
};

/// Characters that two trees have in common from their start or their end.
std::int32_t sameLength(const StoryTree& before, const StoryTree& after, bool fromEnd) {
    NodeWalk a(before, fromEnd), b(after, fromEnd);
    std::int32_t length = 0;
    while (a.at() != nullptr && b.at() != nullptr) {
        if (a.at() == b.at()) {
            length += a.at()->sums.characters;
            a.pass();
            b.pass();
        } else if (a.at()->height == 0 && b.at()->height == 0) {
            return length + ChunkComparison(static_cast<const StoryLeaf*>(a.at())->chunk,
                                            static_cast<const StoryLeaf*>(b.at())->chunk)
                                .same(fromEnd);
        } else if (b.at()->height == 0 || (a.at()->height > 0 && a.at()->sums.characters >= b.at()->sums.characters)) {
            a.takeApart();
        } else {
            b.takeApart();
        }
    }
    return length;
}

}  // namespace

template <typename Run>
void StoryReader::moveTo(RunCursor& cursor, const std::vector<Run>& runs, std::int32_t position) {
    while (position < cursor.start)
        cursor.start -= runs[--cursor.index].length;
    while (position >= cursor.start + runs[cursor.index].length)
        cursor.start += runs[cursor.index++].length;
}

void StoryReader::enter(std::int32_t position) {
    const bool isInside = place.leaf != nullptr && position >= place.start &&
                          position - place.start < place.leaf->sums.characters;
    if (isInside) return;
    place = leafAt(*story.tree, position);
    run = paragraph = {};
}

StoryParagraph StoryReader::paragraphAt(std::int32_t position) {
    enter(position);
    const StoryChunk& chunk = place.leaf->chunk;
    moveTo(paragraph, chunk.paragraphs, position - place.start);
    const ParagraphRun& found = chunk.paragraphs[paragraph.index];
    const std::u32string_view text(chunk.text);
    return {place.start + paragraph.start,
            text.substr(static_cast<std::size_t>(paragraph.start), static_cast<std::size_t>(found.length)),
            found.attributes, found.endsThread};
}

RunSpan StoryReader::runInChunkAt(std::int32_t position) {
    enter(position);
    const StoryChunk& chunk = place.leaf->chunk;
    moveTo(run, chunk.runs, position - place.start);
    return {place.start + run.start + chunk.runs[run.index].length, chunk.runs[run.index].attributes};
}

RunSpan StoryReader::runAt(std::int32_t position) {
    RunSpan found = runInChunkAt(position);
    const bool mayGoOn = found.limit == place.start + place.leaf->sums.characters && found.limit < story.length();
    if (mayGoOn) found.limit += sameFrom(*story.tree, found.limit, found.attributes);
    return found;
}

textSpanRec threadAt(const StoryText& story, std::int32_t position) {
    if (position < 0 || position >= story.length()) return {};
    return threadNumber(story, threadsBefore(*story.tree, position));
}

textSpanRec threadNumber(const StoryText& story, std::int32_t index) {
    const std::int32_t start = threadLimit(*story.tree, index - 1);
    return {start, threadLimit(*story.tree, index) - start};
}

std::u32string charactersOf(const StoryText& story, std::int32_t start, std::int32_t limit) {
    std::u32string out;
    if (start >= limit) return out;
    out.reserve(static_cast<std::size_t>(limit - start));
    visitLeaves(*story.tree, start, [&](const StoryLeaf& leaf, std::int32_t leafStart) {
        const std::int32_t from = std::max(start - leafStart, 0);
        out.append(leaf.chunk.text, static_cast<std::size_t>(from),
                   static_cast<std::size_t>(std::min(limit - leafStart, leaf.sums.characters) - from));
        return leafStart + leaf.sums.characters < limit;
    });
    return out;
}

void ownedIn(const StoryText& story, std::int32_t start, std::int64_t limit, std::vector<ownedItemRec>& out) {
    collectOwned(*story.tree, 0, start, limit, out);
}

std::vector<ownedItemRec> allOwned(const StoryText& story) {
    std::vector<ownedItemRec> out;
    ownedIn(story, 0, story.length(), out);
    return out;
}

StoryDifference differenceOf(const StoryText& before, const StoryText& after) {
    const std::int32_t shorter = std::min(before.length(), after.length());
    const std::int32_t start = sameLength(before.tree, after.tree, false);
    return {start, std::min(sameLength(before.tree, after.tree, true), shorter - start)};
}

}  // namespace tarnova
