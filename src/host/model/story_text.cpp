#include "host/model/story_text.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace tarnova {

namespace {

/// The last run or paragraph in front of a position's, and where it starts.
struct RunPlace {
    std::size_t index = 0;
    std::int32_t start = 0;
};

template <typename Run>
RunPlace findRun(const std::vector<Run>& runs, std::int32_t position) {
    RunPlace at;
    while (position >= at.start + runs[at.index].length)
        at.start += runs[at.index++].length;
    return at;
}

template <typename Run>
bool addsUp(const std::vector<Run>& runs, std::size_t length) {
    std::size_t sum = 0;
    for (const Run& run : runs) {
        if (run.length <= 0 || run.attributes == nullptr) return false;
        sum += static_cast<std::size_t>(run.length);
    }
    return sum == length;
}

bool runsAreCanonical(const StoryChunk& chunk) {
    const auto same = [](const AttributeRun& a, const AttributeRun& b) { return a.attributes == b.attributes; };
    return std::adjacent_find(chunk.runs.begin(), chunk.runs.end(), same) == chunk.runs.end();
}

/// One paragraph for each return.
bool paragraphsMatchReturns(const StoryChunk& chunk) {
    std::size_t limit = 0;
    for (const ParagraphRun& paragraph : chunk.paragraphs) {
        const auto start = chunk.text.begin() + static_cast<std::ptrdiff_t>(limit);
        limit += static_cast<std::size_t>(paragraph.length);
        const auto last = chunk.text.begin() + static_cast<std::ptrdiff_t>(limit) - 1;
        if (std::find(start, last + 1, returnCharacter) != last) return false;
    }
    return true;
}

bool anchorsStandInOrder(const StoryChunk& chunk) {
    std::int32_t last = -1;
    for (const ownedItemRec& owned : chunk.owned) {
        if (owned.position <= last || owned.position >= static_cast<std::int32_t>(chunk.text.size())) return false;
        if (chunk.text[static_cast<std::size_t>(owned.position)] != anchorCharacter) return false;
        last = owned.position;
    }
    return true;
}

bool chunkIsConsistent(const StoryChunk& chunk) {
    const std::size_t length = chunk.text.size();
    return length > 0 && (length <= chunkLimit || chunk.paragraphs.size() == 1) && addsUp(chunk.runs, length) &&
           addsUp(chunk.paragraphs, length) && runsAreCanonical(chunk) && paragraphsMatchReturns(chunk) &&
           anchorsStandInOrder(chunk) && chunk.pageCharacters == countPageCharacters(chunk.text);
}

bool equal(const StorySums& a, const StorySums& b) {
    return a.characters == b.characters && a.paragraphs == b.paragraphs && a.threads == b.threads &&
           a.owned == b.owned && a.pageCharacters == b.pageCharacters && a.soleRun == b.soleRun;
}

bool treeIsConsistent(const StoryNode& node) {
    if (node.height == 0) {
        const StoryChunk& chunk = static_cast<const StoryLeaf&>(node).chunk;
        return chunkIsConsistent(chunk) && equal(node.sums, sumsOf(chunk));
    }
    const auto& branch = static_cast<const StoryBranch&>(node);
    const std::int32_t lower = std::min(branch.left->height, branch.right->height);
    const std::int32_t higher = std::max(branch.left->height, branch.right->height);
    return equal(node.sums, sumsOf(branch.left->sums, branch.right->sums)) && node.height == higher + 1 &&
           higher - lower <= 1 && treeIsConsistent(*branch.left) && treeIsConsistent(*branch.right);
}

/// The chunks that a change touches, taken out of a story as one. `finish` puts it back.
class ChunkEdit {
 public:
    /// Takes the chunks from that of the position `first` through that of `last`.
    ChunkEdit(StoryText& itsStory, std::int32_t first, std::int32_t last) : story(itsStory) {
        if (story.tree->height == 0) {
            takeSoleLeaf();
            return;
        }
        start = leafAt(*story.tree, first).start;
        const LeafPlace end = leafAt(*story.tree, last);
        const std::int32_t limit = end.start + end.leaf->sums.characters;
        visitLeaves(*story.tree, start, [&](const StoryLeaf& leaf, std::int32_t leafStart) {
            appendChunk(chunk, leaf.chunk);
            return leafStart + leaf.sums.characters < limit;
        });
        StoryTree touched;
        std::tie(front, touched) = splitTree(story.tree, start);
        behind = splitTree(touched, limit - start).second;
    }

    StoryChunk chunk;
    std::int32_t start = 0;  // of the chunk in the story

    void finish() {
        joinNeighbour();
        if (own != nullptr && chunk.text.size() <= chunkLimit) {
            own->sums = sumsOf(chunk);
            own->chunk = std::move(chunk);
            return;
        }
        story.tree = joinTrees(joinTrees(std::move(front), treeOf(std::move(chunk))), std::move(behind));
    }

 private:
    /// A short text is one leaf, which is changed in place when nothing else holds it.
    void takeSoleLeaf() {
        const auto* leaf = static_cast<const StoryLeaf*>(story.tree.get());
        if (story.tree.use_count() > 1) {
            chunk = leaf->chunk;
            return;
        }
        own = const_cast<StoryLeaf*>(leaf);
        chunk = std::move(own->chunk);
    }

    /// What has become short is put together with a chunk beside it.
    void joinNeighbour() {
        if (chunk.text.size() >= chunkLimit / 4) return;
        if (behind != nullptr) {
            const StoryLeaf& next = *leafAt(*behind, 0).leaf;
            const std::int32_t length = next.sums.characters;
            appendChunk(chunk, next.chunk);
            behind = splitTree(behind, length).second;
        } else if (front != nullptr) {
            const LeafPlace last = leafAt(*front, front->sums.characters - 1);
            StoryChunk joined = last.leaf->chunk;
            appendChunk(joined, chunk);
            chunk = std::move(joined);
            front = splitTree(front, last.start).first;
        }
    }

    StoryText& story;
    StoryLeaf* own = nullptr;
    StoryTree front, behind;
};

void joinRuns(StoryChunk& chunk) {
    std::size_t kept = 0;
    for (const AttributeRun& run : chunk.runs) {
        if (run.length == 0) continue;
        if (kept > 0 && chunk.runs[kept - 1].attributes == run.attributes) {
            chunk.runs[kept - 1].length += run.length;
        } else {
            chunk.runs[kept++] = run;
        }
    }
    chunk.runs.resize(kept);
}

/// Makes a boundary between runs at a position and gives the index of the run that begins there.
std::size_t splitRunAt(StoryChunk& chunk, std::int32_t position) {
    if (position >= static_cast<std::int32_t>(chunk.text.size())) return chunk.runs.size();
    const RunPlace at = findRun(chunk.runs, position);
    if (at.start == position) return at.index;
    AttributeRun behind = chunk.runs[at.index];
    behind.length -= position - at.start;
    chunk.runs[at.index].length = position - at.start;
    chunk.runs.insert(chunk.runs.begin() + static_cast<std::ptrdiff_t>(at.index) + 1, behind);
    return at.index + 1;
}

/// Takes `count` characters from the runs at `start` and adds `added` to the run `into`, which is the run of the first
/// replaced character, or of the insertion.
void replaceInRuns(StoryChunk& chunk, std::int32_t start, std::int32_t count, std::int32_t added, RunPlace into) {
    std::vector<AttributeRun>& runs = chunk.runs;
    const std::int32_t inside = std::min(count, into.start + runs[into.index].length - start);
    if (inside >= 0 && inside == count && runs[into.index].length - count + added > 0) {
        runs[into.index].length += added - count;
        return;
    }
    std::int32_t left = count;
    std::int32_t offset = start - into.start;
    for (std::size_t i = into.index; left > 0; ++i, offset = 0) {
        const std::int32_t taken = std::min(left, runs[i].length - offset);
        runs[i].length -= taken;
        left -= taken;
    }
    runs[into.index].length += added;
    joinRuns(chunk);
}

/// What a replacement does to the paragraphs, worked out before the text changes.
class ParagraphChange {
 public:
    ParagraphChange(const StoryChunk& chunk, std::int32_t start, std::int32_t count)
        : first(findRun(chunk.paragraphs, start)), last(findRun(chunk.paragraphs, start + count)) {
        prefix = start - first.start;
        suffix = last.start + chunk.paragraphs[last.index].length - (start + count);
        lastIsWhole = last.index != first.index && start + count == last.start;
    }

    void apply(StoryChunk& chunk, std::u32string_view characters) const {
        std::vector<ParagraphRun>& paragraphs = chunk.paragraphs;
        const ParagraphAttributes* format = paragraphs[first.index].attributes;
        const ParagraphRun end = paragraphs[last.index];
        std::size_t from = 0;
        std::size_t at = characters.find(returnCharacter);
        if (at == std::u32string_view::npos && first.index == last.index) {
            paragraphs[first.index].length = prefix + static_cast<std::int32_t>(characters.size()) + suffix;
            return;
        }
        std::vector<ParagraphRun> pieces;
        std::int32_t length = prefix;
        for (; at != std::u32string_view::npos; from = at + 1, at = characters.find(returnCharacter, from)) {
            pieces.push_back({length + static_cast<std::int32_t>(at + 1 - from), format});
            length = 0;
        }
        length += static_cast<std::int32_t>(characters.size() - from);
        pieces.push_back({length + suffix, length == 0 && lastIsWhole ? end.attributes : format, end.endsThread});
        const auto begin = paragraphs.begin() + static_cast<std::ptrdiff_t>(first.index);
        const auto limit = paragraphs.begin() + static_cast<std::ptrdiff_t>(last.index) + 1;
        paragraphs.insert(paragraphs.erase(begin, limit), pieces.begin(), pieces.end());
    }

 private:
    RunPlace first, last;
    std::int32_t prefix = 0;  // characters of the first paragraph in front of the change
    std::int32_t suffix = 0;  // of the last one behind it
    bool lastIsWhole = false;
};

void replaceInOwned(StoryChunk& chunk, std::int32_t start, std::int32_t count, std::int32_t delta) {
    std::erase_if(chunk.owned,
                  [=](const ownedItemRec& owned) { return owned.position >= start && owned.position < start + count; });
    for (ownedItemRec& owned : chunk.owned) {
        if (owned.position >= start) owned.position += delta;
    }
}

}  // namespace

std::shared_ptr<StoryText> emptyStoryText(const ParagraphAttributes* paragraph, const RunAttributes* run) {
    StoryTextBuilder builder;
    builder.endParagraph(paragraph, run);
    builder.endThread();
    return builder.finish();
}

void StoryTextBuilder::append(std::u32string_view characters, const RunAttributes* run) {
    if (characters.empty()) return;
    chunk.text += characters;
    chunk.pageCharacters += countPageCharacters(characters);
    const auto length = static_cast<std::int32_t>(characters.size());
    if (chunk.runs.empty() || chunk.runs.back().attributes != run) {
        chunk.runs.push_back({length, run});
    } else {
        chunk.runs.back().length += length;
    }
}

void StoryTextBuilder::endParagraph(const ParagraphAttributes* paragraph, const RunAttributes* run) {
    append(std::u32string_view(&returnCharacter, 1), run);
    chunk.paragraphs.push_back({static_cast<std::int32_t>(chunk.text.size() - paragraphStart), paragraph});
    paragraphStart = chunk.text.size();
}

std::shared_ptr<StoryText> StoryTextBuilder::finish() {
    auto story = std::make_shared<StoryText>();
    story->tree = treeOf(std::move(chunk));
    return story;
}

bool storyIsConsistent(const StoryText& story) {
    if (story.tree == nullptr || !treeIsConsistent(*story.tree)) return false;
    const LeafPlace last = leafAt(*story.tree, story.length() - 1);
    return last.leaf->chunk.paragraphs.back().endsThread;
}

std::u32string storyCharacters(std::u32string_view text, bool keepCharacters) {
    std::u32string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t c = text[i];
        if (!keepCharacters && c == U'\n') {
            if (i == 0 || text[i - 1] != U'\r') out.push_back(returnCharacter);
        } else if ((c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF) {
            out.push_back(U'\uFFFD');
        } else {
            out.push_back(c);
        }
    }
    return out;
}

bool mayReplace(const StoryText& story, std::int32_t start, std::int32_t count) {
    const std::int32_t length = story.length();
    if (start < 0 || count < 0 || start >= length || count > length - start) return false;
    const textSpanRec thread = threadAt(story, start);
    return start + count < thread.start + thread.length;
}

void replaceCharacters(StoryText& story, std::int32_t start, std::int32_t count, std::u32string_view characters) {
    const auto added = static_cast<std::int32_t>(characters.size());
    const bool takesFront = count == 0 && start > threadAt(story, start).start;
    const std::int32_t source = takesFront ? start - 1 : start;
    ChunkEdit edit(story, source, start + count);
    StoryChunk& chunk = edit.chunk;
    const std::int32_t at = start - edit.start;
    const ParagraphChange paragraphs(chunk, at, count);
    replaceInRuns(chunk, at, count, added, findRun(chunk.runs, source - edit.start));
    paragraphs.apply(chunk, characters);
    if (!chunk.owned.empty()) replaceInOwned(chunk, at, count, added - count);
    const std::u32string_view replaced(chunk.text.data() + at, static_cast<std::size_t>(count));
    chunk.pageCharacters += countPageCharacters(characters) - countPageCharacters(replaced);
    chunk.text.replace(static_cast<std::size_t>(at), static_cast<std::size_t>(count), characters);
    edit.finish();
}

void changeRuns(StoryText& story, std::int32_t start, std::int32_t count, const RunChange& change) {
    if (count == 0) return;
    ChunkEdit edit(story, start, start + count - 1);
    const std::int32_t at = start - edit.start;
    const std::size_t first = splitRunAt(edit.chunk, at);
    const std::size_t limit = splitRunAt(edit.chunk, at + count);
    for (std::size_t i = first; i < limit; ++i)
        edit.chunk.runs[i].attributes = change(*edit.chunk.runs[i].attributes);
    joinRuns(edit.chunk);
    edit.finish();
}

void changeParagraphs(StoryText& story, std::int32_t start, std::int32_t count,
                      const ParagraphAttributesChange& change) {
    if (count == 0) return;
    ChunkEdit edit(story, start, start + count - 1);
    std::vector<ParagraphRun>& paragraphs = edit.chunk.paragraphs;
    const std::size_t first = findRun(paragraphs, start - edit.start).index;
    const std::size_t last = findRun(paragraphs, start + count - 1 - edit.start).index;
    for (std::size_t i = first; i <= last; ++i)
        paragraphs[i].attributes = change(*paragraphs[i].attributes);
    edit.finish();
}

namespace {

/// The run that the position lies in goes on over the character in front of it with the same link of this store.
bool isInsideLink(const StoryText& story, std::int32_t position, std::size_t store) {
    if (position == 0) return false;
    const TagAttribute* tag = runAt(story, position).attributes->tags[store].get();
    const TagAttribute* before = runAt(story, position - 1).attributes->tags[store].get();
    return tag != nullptr && before != nullptr && tag->tagId() == before->tagId();
}

}  // namespace

void insertAnchorCharacter(StoryText& story, std::int32_t position, UID item, AttributePool& attributes) {
    static constexpr TextAttributeClass stores[2] = {TextAttributeClass::kelvaneTag, TextAttributeClass::tallyraTag};
    const bool keeps[2] = {isInsideLink(story, position, 0), isInsideLink(story, position, 1)};
    replaceCharacters(story, position, 0, {&anchorCharacter, 1});
    for (std::size_t store = 0; store < 2; ++store) {
        if (keeps[store]) continue;
        changeRuns(story, position, 1,
                   [&](const RunAttributes& run) { return attributes.without(run, stores[store]); });
    }
    noteAnchor(story, position, item);
}

void noteAnchor(StoryText& story, std::int32_t position, UID item) {
    ChunkEdit edit(story, position, position);
    std::vector<ownedItemRec>& items = edit.chunk.owned;
    const std::int32_t inChunk = position - edit.start;
    const auto at =
        std::lower_bound(items.begin(), items.end(), inChunk,
                         [](const ownedItemRec& owned, std::int32_t wanted) { return owned.position < wanted; });
    if (at != items.end() && at->position == inChunk) {
        at->item = item;
    } else {
        items.insert(at, {inChunk, item});
    }
    edit.finish();
}

void removeAnchorCharacter(StoryText& story, std::int32_t position) {
    replaceCharacters(story, position, 1, {});
}

}  // namespace tarnova
