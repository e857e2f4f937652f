// The document behind the engine's operations: spreads, layers, items, stories, styles and swatches.
//
// What a reader of the model (composition, drawing, the layout file) needs beyond the engine's operations is here as
// plain accessors. Building a document from scratch, as the layout reader does, goes through `DocumentBuilder`
// (document_builder.h); every other change goes through the engine's operations and so through commands.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "document/document.h"
#include "host/model/format.h"
#include "host/model/page_item.h"
#include "host/model/story.h"

namespace tarnova {

/// How many steps can be undone one after the other, and done again.
inline constexpr std::size_t undoStepCapacity = 64;

/// The highest number at which a section may start.
inline constexpr std::int32_t sectionNumberLimit = 1'000'000'000;

struct Page {
    UID uid = kInvalidUID;
    UID spread = kInvalidUID;
    PMRect bounds;             // in the coordinates of its spread
    UID master = kInvalidUID;  // master spread applied to it; of a master's page, the master that it is based on
    std::int32_t index = -1;   // in the document; -1 on a master
};

struct Spread {
    UID uid = kInvalidUID;
    bool isMaster = false;
    std::string name;             // of a master spread
    std::vector<UID> pages;       // left to right
    std::vector<UID> layerNodes;  // by layer index; [0], the pages layer, is kInvalidUID
};

struct Layer {
    UID uid = kInvalidUID;
    std::string name;
    bool visible = true;
    bool locked = false;
    bool printable = true;
    friend bool operator==(const Layer&, const Layer&) = default;
};

/// An anchored item, and the way from the coordinates that its `toParent` leads to into the inner ones of the frame
/// that shows it.
struct AnchoredItem {
    const PageItem* item = nullptr;
    PMMatrix toFrame;
};

class AttributePool;

class DocumentModel : public Document {
 public:
    // What composition and drawing read. Unknown UIDs give null.
    [[nodiscard]] virtual const std::string& title() const = 0;
    /// Width and height of a page that says nothing else, in points.
    [[nodiscard]] virtual PMPoint pageSize() const = 0;
    /// Of frames that have none of their own, from the top of the page.
    [[nodiscard]] virtual const BaselineGrid& baselineGrid() const = 0;
    /// The pages are bound as in a book, with the spine where the coordinates of each spread begin: pages to the left
    /// of it show the left pages of their masters, those to the right the right ones.
    [[nodiscard]] virtual bool facingPages() const = 0;
    [[nodiscard]] virtual const std::vector<Swatch>& swatches() const = 0;
    [[nodiscard]] virtual const std::vector<CharacterStyle>& characterStyles() const = 0;
    [[nodiscard]] virtual const std::vector<ParagraphStyle>& paragraphStyles() const = 0;
    [[nodiscard]] virtual const std::vector<Layer>& layers() const = 0;
    [[nodiscard]] virtual const Page* page(UID uid) const = 0;
    [[nodiscard]] virtual const Spread* spread(UID uid) const = 0;
    [[nodiscard]] virtual const PageItem* item(UID uid) const = 0;
    [[nodiscard]] virtual const Story* story(UID uid) const = 0;
    /// The top items of a spread that touch the page (bounds with stroke), back to front over the layers, hidden and
    /// non-printing ones left out. A single page's spread gives all its items. The items of the page's master stand in
    /// front of the list, those of the master that it is based on in front of them; they lie in the coordinates of
    /// their own spread (`pageOrigin`). Items of masters that others on the page override are left out.
    virtual void drawnItems(UID page, std::vector<const PageItem*>& out) const = 0;
    /// The top left corner of the page in the coordinates of the spread that the item lies on. For an item of a master
    /// it is the corner of the master's page that serves this page.
    [[nodiscard]] virtual PMPoint pageOrigin(UID page, const PageItem& item) const = 0;
    /// The matrix from the item's inner coordinates to those of its spread. An item that is anchored in a text lies
    /// where that is set, so this composes it; in an overset part it lies at the top left of the last frame.
    [[nodiscard]] virtual PMMatrix toSpread(const PageItem& item) const = 0;
    /// Bounds, without strokes, in the coordinates that `toParent` leads to.
    [[nodiscard]] virtual PMRect boundsInParent(const PageItem& item) const = 0;
    /// The items anchored in a text that a frame shows, in it or on its path, in text order, where the text's layout
    /// has them; what doesn't print is left out.
    virtual void anchoredInFrame(const PageItem& frame, const Story& text, const StoryLayout& layout,
                                 std::vector<AnchoredItem>& out) const = 0;

    /// What the text of a frame runs around: areas in its inner coordinates that touch it. Items of its spread act on
    /// it, in front of it and behind it, and items of masters that its page shows. Text of an anchored frame and of one
    /// that says so runs around nothing.
    virtual void wrapsAround(const PageItem& frame, std::vector<WrapArea>& out) const = 0;

    /// The format of a run in a paragraph: default, paragraph style chain, paragraph overrides, character style chain,
    /// run overrides. The result is interned: equal formats have one address for the life of the document and its
    /// copies.
    [[nodiscard]] virtual const CharFormat* resolveChar(const ParagraphAttributes& paragraph,
                                                        const RunAttributes& run) const = 0;
    [[nodiscard]] virtual const ParaFormat* resolvePara(const ParagraphAttributes& paragraph) const = 0;

    /// The composition of a story at least through the position, from the cache or made now. Valid until the document
    /// changes. Page characters show what holds where the story's frames lie.
    [[nodiscard]] virtual const StoryLayout* layoutOf(UID story, std::int32_t through) const = 0;
    /// The same, at least through a frame, by its index in `Story::frames`.
    [[nodiscard]] virtual const StoryLayout* layoutThroughFrame(UID story, std::int32_t frameIndex) const = 0;
    /// The whole composition of a master's story with page characters as a page of the document shows it, made anew
    /// for each call.
    [[nodiscard]] virtual std::shared_ptr<const StoryLayout> layoutOnPage(UID story, UID page) const = 0;

    /// Puts an empty story on the path of a frame, or changes how the one that is there lies; `nullopt` takes it away.
    /// `errFailed`: the item isn't a frame with a path, or a length isn't one that a layout file takes.
    [[nodiscard]] virtual errorWord setPathText(UID frame, const std::optional<PathTextOptions>& options) = 0;

    /// Undoes the last step and gives its name; nothing when there is none or a sequence is open. As many steps can be
    /// undone one after the other as `undoStepCapacity` says.
    virtual std::optional<std::string> undo() = 0;
    /// Does the step that was undone last again and gives its name. A new step drops what could be done again.
    virtual std::optional<std::string> redo() = 0;

    /// Says what text has to do with an item: how it stands in its own when it is anchored, and how others run around
    /// it. Refused when a length isn't within the limits of coordinates.
    [[nodiscard]] virtual errorWord setItemFlow(UID item, const ItemFlow& flow) = 0;

    /// Who composes; set once by the program. Null: nothing can be asked that needs composition.
    virtual void setComposer(std::shared_ptr<Composer> composer) = 0;

    /// Stamps below this were made before `markTemplate`: an item or story that has one repeats unchanged on the copies
    /// of its page. 0: nothing is known to repeat.
    [[nodiscard]] virtual std::uint64_t templateStamp() const = 0;

    /// Records where the document lies now and that it is saved as it is; the layout file's writer and reader call it.
    /// Undo and redo back to this state make the document a saved one again.
    virtual void setLocation(std::string folder, std::string name) = 0;
    /// Takes over all that another document of `makeDocument` is, which is spent then; only who composes stays. Refused
    /// inside a sequence.
    [[nodiscard]] virtual errorWord replaceBy(DocumentModel& other) = 0;

    // What only the layout file needs.
    [[nodiscard]] virtual UID nextUid() const = 0;
    [[nodiscard]] virtual std::uint32_t nextTagId() const = 0;
    [[nodiscard]] virtual AttributePool& attributePool() const = 0;
};

/// An empty document: one layer "Layer 1" besides the pages layer, the swatches "None" and "Black", the paragraph style
/// "Basic Paragraph", and no pages.
[[nodiscard]] std::unique_ptr<DocumentModel> makeDocument();

}  // namespace tarnova
