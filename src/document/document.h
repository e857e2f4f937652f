// Everything the engine needs of a page-layout document, as abstract operations in the groups in which a reader would
// look for them. The engine's logic depends on nothing else, so it runs against any model that offers these.
//
// Positions in a story are indexes of code points. A `textSpanRec` is a start and a length. Lengths are in points.
// Operations that change a document return 0 on success and a code otherwise; a document that refused a change is as
// it was before.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "document/document_pictures.h"
#include "document/document_tables.h"
#include "document/geometry.h"
#include "document/text_attributes.h"
#include "document/text_span.h"
#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

/// An anchored item and the position of its anchor in the story.
struct ownedItemRec {
    std::int32_t position = 0;
    UID item = kInvalidUID;
};

/// Class of a page item as the walk tells them apart. A `node` is the hierarchy node of a layer on a spread.
enum class ItemClass : std::uint8_t { none, node, splineItem, textColumnItem, group, graphic };

enum class ContentKind : std::uint8_t { unassigned, graphic, text };

/// The page that an item lies on.
struct pageOfItemRec {
    UID page = kInvalidUID;  // none: the pasteboard
    bool isMaster = false;
};

struct pathInfoRec {
    std::int32_t pathCount = 0;
    enum class Kind : std::uint8_t { none, rectangle, ellipse, line, polygon } firstKind = Kind::none;
};

struct transformValuesRec {
    double rotationDegrees = 0;
    double scaleX = 1;
    double scaleY = 1;
    double skewDegrees = 0;
};

/// A section start as the build of a document copies it.
struct sectionRec {
    UID startPage = kInvalidUID;
    std::string prefix;
    std::string marker;
    std::int32_t startNumber = 1;
    std::int32_t numberingStyle = 0;
    bool continues = false;
    bool includePrefix = false;
};

/// Names of the filters by which text is imported.
inline constexpr std::string_view textImportFilters[] = {"InDesign Tagged Text", "RTF Import Filter",
                                                         "Text Import Filter"};

/// What is imported: bytes, or a file when there is a path.
struct textSourceRec {
    std::string_view bytes;
    std::string filePath;
};

/// Changes go through named sequences that undo takes as one step. Sequences nest: only the outermost is a step.
class DocumentCommands {
 public:
    /// Begins a sequence. With `undoable` clear nothing of it is kept, and steps before it can't be undone any more;
    /// inside another sequence that holds for the outer one as a whole.
    [[nodiscard]] virtual errorWord BeginCommandSequence(std::string_view name, bool undoable = true) = 0;
    virtual void EndCommandSequence() = 0;
    /// Undoes the last step when it has this name; says whether it did.
    virtual bool undoNamedStep(std::string_view name) = 0;

 protected:
    ~DocumentCommands() = default;
};

/// Spreads, pages, masters and layers, all in document order.
class DocumentPages {
 public:
    [[nodiscard]] virtual std::int32_t spreadCount() const = 0;
    [[nodiscard]] virtual UID spreadAt(std::int32_t index) const = 0;
    [[nodiscard]] virtual std::int32_t masterCount() const = 0;
    [[nodiscard]] virtual UID masterAt(std::int32_t index) const = 0;
    [[nodiscard]] virtual std::string masterName(UID master) const = 0;
    /// The master is applied to a page, directly or through a master based on it.
    [[nodiscard]] virtual bool masterInUse(UID master) const = 0;

    /// Index 0 is the pages layer, which holds no items; the engine's layers start at 1.
    [[nodiscard]] virtual std::int32_t layerCount() const = 0;
    [[nodiscard]] virtual UID layerAt(std::int32_t index) const = 0;
    [[nodiscard]] virtual bool layerVisible(UID layer) const = 0;
    [[nodiscard]] virtual bool layerLocked(UID layer) const = 0;
    virtual void setLayerLocked(UID layer, bool locked) = 0;
    /// The hierarchy node of a layer on a spread or master spread.
    [[nodiscard]] virtual UID spreadLayerNode(UID spread, UID layer) const = 0;

    [[nodiscard]] virtual std::int32_t pageCount() const = 0;
    [[nodiscard]] virtual UID pageAt(std::int32_t index) const = 0;
    /// Index of a page in the document, or -1.
    [[nodiscard]] virtual std::int32_t pageIndex(UID page) const = 0;
    /// The printed name: number by section, with its prefix.
    [[nodiscard]] virtual std::string pageName(UID page) const = 0;
    [[nodiscard]] virtual UID spreadOfPage(UID page) const = 0;
    /// Pages of a spread, left to right.
    [[nodiscard]] virtual std::vector<UID> pagesOfSpread(UID spread) const = 0;
    /// Copies a spread with its pages, items, stories and item data behind the last spread. A story with frames on
    /// other spreads too is not copied whole: the copied frames get a story of their own, with the text when the
    /// story's first frame is among them and empty otherwise.
    [[nodiscard]] virtual errorWord duplicateSpread(UID spread) = 0;
    /// Adds empty pages of the first page's size at the end, each on a spread of its own; in a document with facing
    /// pages each as the left page of a new spread or the right page of the last one, and the document's first page on
    /// the right.
    [[nodiscard]] virtual errorWord addPages(std::int32_t count) = 0;
    /// Deletes pages with the items on them; a spread that loses its last page goes too. The other pages stay where
    /// they are: they aren't paired anew, and a left page stays a left one.
    [[nodiscard]] virtual errorWord removePages(const std::vector<UID>& pages) = 0;
    /// The master spread applied to a page, of a master's page the one that it is based on, or `kInvalidUID`.
    [[nodiscard]] virtual UID masterOfPage(UID page) const = 0;
    /// Gives pages of the document another master, or none (`kInvalidUID`).
    [[nodiscard]] virtual errorWord applyMaster(const std::vector<UID>& pages, UID master) = 0;
    /// Makes the items of the pages' masters, and of those that they are based on, items of the pages: on the same
    /// layer, behind what is there, with stories of their own. The master's items aren't drawn on those pages any more.
    /// Items that are overridden already stay as they are, and so do those on a master's pasteboard.
    [[nodiscard]] virtual errorWord overrideMasterItems(const std::vector<UID>& pages) = 0;
    /// The master's item in whose place an item of a page (or of a master based on it) stands, or `kInvalidUID`.
    [[nodiscard]] virtual UID overriddenItem(UID item) const = 0;
    /// Makes the items on master spreads forget what they override: each counts as an item of its own master then.
    virtual void clearOverriddenMarks() = 0;
    /// Sections that start on pages, in page order.
    [[nodiscard]] virtual std::vector<sectionRec> sections() const = 0;
    [[nodiscard]] virtual errorWord createSection(const sectionRec& section) = 0;
    /// Says that the document is a part of a longer output, with so many pages in front of its own and behind them.
    /// Printed numbers count on from there where no section says otherwise. It isn't saved.
    virtual void setPlaceInOutput(std::int32_t pagesInFront, std::int32_t pagesBehind) = 0;

 protected:
    ~DocumentPages() = default;
};

/// Page items and what lies on them.
class PageItems {
 public:
    [[nodiscard]] virtual ItemClass itemClass(UID item) const = 0;
    [[nodiscard]] virtual bool itemExists(UID item) const = 0;
    [[nodiscard]] virtual UID parent(UID item) const = 0;
    /// Children from back to front.
    [[nodiscard]] virtual std::int32_t childCount(UID item) const = 0;
    [[nodiscard]] virtual UID childAt(UID item, std::int32_t index) const = 0;
    [[nodiscard]] virtual pageOfItemRec pageOfItem(UID item) const = 0;

    [[nodiscard]] virtual bool isGroup(UID item) const = 0;
    [[nodiscard]] virtual bool isTextFrame(UID item) const = 0;
    [[nodiscard]] virtual bool isGraphicFrame(UID item) const = 0;
    [[nodiscard]] virtual ContentKind contentKind(UID item) const = 0;
    /// Says what a frame is for. A frame with a picture may become unassigned and back; for text the picture goes, and
    /// the frame gets a story. From text the frame leaves its story, which is refused when text would be lost with it.
    /// Lines, and items without a path, take no text.
    [[nodiscard]] virtual errorWord setContentKind(UID item, ContentKind kind) = 0;
    /// Makes a text frame of a frame that isn't one: `setContentKind` with text.
    [[nodiscard]] virtual errorWord convertToTextFrame(UID item) = 0;
    [[nodiscard]] virtual pathInfoRec pathInfo(UID item) const = 0;
    /// Bounds in the coordinates of the spread.
    [[nodiscard]] virtual PMRect boundsInSpread(UID item) const = 0;
    [[nodiscard]] virtual transformValuesRec transformValues(UID item) const = 0;
    [[nodiscard]] virtual bool itemLocked(UID item) const = 0;
    virtual void setItemLocked(UID item, bool locked) = 0;

    // Changes of items on a spread and in its groups; a locked item is changed like any other.
    [[nodiscard]] virtual errorWord deleteItem(UID item) = 0;
    /// Copies a frame or group with what it holds, in front of the original. Its texts are copied as by
    /// `duplicateSpread`.
    [[nodiscard]] virtual errorWord duplicateItem(UID item, UID& outCopy) = 0;
    /// Moves an item by a distance in the coordinates of the spread.
    [[nodiscard]] virtual errorWord moveBy(UID item, double dx, double dy) = 0;
    /// Turns an item to the left around the middle of its bounds.
    [[nodiscard]] virtual errorWord rotateBy(UID item, double degrees) = 0;
    /// Makes a group of at least two items of one spread, or of one group, in the place of the frontmost. They keep
    /// their order. Refused when groups would be nested too deep.
    [[nodiscard]] virtual errorWord groupItems(const std::vector<UID>& items, UID& outGroup) = 0;
    /// Puts the members of a group into its place and gives them, back to front. The group's own data goes with it.
    [[nodiscard]] virtual errorWord ungroup(UID group, std::vector<UID>& outMembers) = 0;

    /// Index of a text column in its frame, 0 for the first; 0 for other items.
    [[nodiscard]] virtual std::int32_t columnIndex(UID column) const = 0;
    /// Text on the path of a frame, if it carries one: what `textOfFrame` knows the story of.
    [[nodiscard]] virtual UID textOnPath(UID item) const = 0;

    /// The typed-entry block of one store (0 `Kelvane`, 1 `Tallyra`) on an item, or with `kInvalidUID` on the document;
    /// bytes that the model doesn't read. Null when there is none; valid until the next change of the document.
    [[nodiscard]] virtual const std::string* itemDataBlock(UID item, int store) const = 0;
    /// Replaces the block, in a command; `nullopt` takes it away.
    [[nodiscard]] virtual errorWord setItemDataBlock(UID item, int store, std::optional<std::string> block) = 0;

 protected:
    ~PageItems() = default;
};

/// A font that a text asks for.
struct usedFontRec {
    std::string family;
    std::string style;
    bool isMissing = false;  // another one stands in for it
    friend bool operator==(const usedFontRec&, const usedFontRec&) = default;
};

/// Stories: one flat run of code points each, in threads that end in a closing mark (a return that is no text).
class DocumentText {
 public:
    [[nodiscard]] virtual std::vector<UID> stories() const = 0;
    /// The story of a text frame, of a text column, or of the text on a frame's path; `kInvalidUID` for others.
    [[nodiscard]] virtual UID textOfFrame(UID item) const = 0;
    /// The frames of a story's main thread, in thread order.
    [[nodiscard]] virtual std::vector<UID> framesOfStory(UID story) const = 0;
    /// Takes a text frame out of its story and puts it directly behind another in that one's thread. Only a frame of a
    /// story without any text can go, because nothing may be lost; the story goes with its last frame. A frame that
    /// stands there already stays. A frame of a page and one of a master aren't joined.
    [[nodiscard]] virtual errorWord linkFrames(UID frameBefore, UID frameBehind) = 0;
    /// Characters of all threads, closing marks included.
    [[nodiscard]] virtual std::int32_t totalLength(UID story) const = 0;
    /// The thread that a position lies in, its closing mark included.
    [[nodiscard]] virtual textSpanRec threadSpan(UID story, std::int32_t position) const = 0;
    /// Code points of a range; a range that leaves the story is cut to it.
    [[nodiscard]] virtual std::u32string textRead(UID story, std::int32_t start, std::int32_t length) const = 0;

    /// Replaces `count` characters. New text takes the attributes of the first replaced character; with a `count` of 0
    /// it inserts, with the attributes of the character in front (of the character behind at the story's start). A
    /// closing mark can't be replaced or deleted: such a change is refused. With `keepCharacters` the text is taken as
    /// it stands, else CR LF and LF become CR.
    [[nodiscard]] virtual errorWord textReplace(UID story, std::int32_t start, std::int32_t count,
                                                std::u32string_view text, bool keepCharacters) = 0;
    [[nodiscard]] virtual errorWord textDelete(UID story, std::int32_t start, std::int32_t count) = 0;

    [[nodiscard]] virtual attributeRunRec attributeRunAt(UID story, std::int32_t position) const = 0;
    /// The number in force at a character, whatever says so: its run, a style or the document. A size or shift in
    /// points, kerning in thousandths of an em, a `TextPosition`, 1 for underlined text.
    [[nodiscard]] virtual double numberAttributeAt(UID story, std::int32_t position,
                                                   TextAttributeClass attributeClass) const = 0;
    [[nodiscard]] virtual errorWord attributeApply(UID story, std::int32_t start, std::int32_t count,
                                                   std::shared_ptr<const TextAttribute> attribute) = 0;
    [[nodiscard]] virtual errorWord attributeRemove(UID story, std::int32_t start, std::int32_t count,
                                                    TextAttributeClass attributeClass) = 0;

    /// Imports a text with its formats in place of `count` characters and gives the new length. `filter` is the name of
    /// a filter (`textImportFilters`); errImportFilter when there is none of this name, or it can't read the source.
    [[nodiscard]] virtual errorWord importText(UID story, std::int32_t start, std::int32_t count,
                                               const textSourceRec& source, std::string_view filter,
                                               std::int32_t& outLength) = 0;
    /// The first filter that takes the file: one that is sure wins over one that might; empty when none does.
    [[nodiscard]] virtual std::string importFilterFor(const std::string& filePath) const = 0;

    /// Anchored items in a range, by position.
    [[nodiscard]] virtual std::vector<ownedItemRec> ownedItems(UID story, std::int32_t start,
                                                               std::int32_t count) const = 0;
    /// True when the range holds an anchored item or a table; the quick question of the tag tests.
    [[nodiscard]] virtual bool hasOwnedItem(UID story, std::int32_t start, std::int32_t count) const = 0;
    /// For an anchored item, or one in an anchored group: the story and position of the anchor.
    [[nodiscard]] virtual std::optional<std::pair<UID, std::int32_t>> inlinePosition(UID item) const = 0;
    /// Takes a frame or group off its layer and anchors it in a text, in the line, by a character in front of the one
    /// at the position. Refused for members of groups, for text on a path, for an item that shows this text itself or
    /// a part of a text that goes on elsewhere, and where anchored items would be nested too deep.
    [[nodiscard]] virtual errorWord anchorItem(UID item, UID story, std::int32_t position) = 0;
    /// Puts an anchored item on the layer of the frame that shows it, where it stands; its character is deleted.
    [[nodiscard]] virtual errorWord releaseItem(UID item) = 0;
    /// The paragraph at a position, its return included.
    [[nodiscard]] virtual textSpanRec paragraphAt(UID story, std::int32_t position) const = 0;

    /// The fonts that the document's texts ask for, each once, by name.
    [[nodiscard]] virtual std::vector<usedFontRec> usedFonts() const = 0;

    /// Composes the whole document, or a story at least to the position. Asking below does it by itself.
    virtual void composeDocument() = 0;
    virtual void composeStoryThrough(UID story, std::int32_t position) = 0;
    /// The frame that shows a position, or `kInvalidUID` in an overset part. This composes as far as the position
    /// unless it is known already; `soleFrame` is the quick question. With nobody there to compose, every text is taken
    /// to fit into its first frame.
    [[nodiscard]] virtual UID frameAt(UID story, std::int32_t position) = 0;
    /// The frame of a story that has just one, else `kInvalidUID`. Never composes, and so says nothing of overset: it
    /// is for callers that only want the page on which the text would stand.
    [[nodiscard]] virtual UID soleFrame(UID story) const = 0;
    [[nodiscard]] virtual bool isOverset(UID story) = 0;
    /// Bounds of the lines of a range, in the coordinates of the spread that shows its first shown character; what
    /// other spreads show is left out. Nothing when no part of it is shown.
    [[nodiscard]] virtual std::optional<PMRect> textBounds(UID story, std::int32_t start, std::int32_t count) = 0;

 protected:
    ~DocumentText() = default;
};

/// Where the document lives and what state it is in.
class DocumentStorage {
 public:
    /// Folder and file name (UTF-8); empty for a document that was never saved.
    [[nodiscard]] virtual std::string documentFolder() const = 0;
    [[nodiscard]] virtual std::string documentName() const = 0;
    [[nodiscard]] virtual bool documentIsSaved() const = 0;
    /// A copy in memory with the same UIDs, which knows this document's folder and name but isn't saved. It shares all
    /// content with this document until one of them changes it, so it costs little, and what is still shared is known
    /// to repeat (see `markTemplate`).
    [[nodiscard]] virtual std::unique_ptr<Document> documentCopy() const = 0;
    /// Says that the pages as they are now will be repeated: what a copied page keeps unchanged from here on is written
    /// once by an output that can share.
    virtual void markTemplate() = 0;

 protected:
    ~DocumentStorage() = default;
};

/// A document: all groups in one, and the owner of the `UID`s.
class Document : public DocumentCommands,
                 public DocumentPages,
                 public PageItems,
                 public DocumentText,
                 public DocumentTables,
                 public DocumentPictures,
                 public SnapshotUtils,
                 public DocumentStorage {
 public:
    virtual ~Document() = default;
    /// The object that stands for the document itself in a `UIDRef`.
    [[nodiscard]] virtual UID documentUid() const = 0;
    [[nodiscard]] UIDRef ref() { return {this, documentUid()}; }
};

}  // namespace tarnova
