// Makes a document from nothing: what the layout file's reader and the tests use. What a finished document goes through
// afterwards are the operations of document.h.
//
// Wherever a UID can be given, 0 takes the next free one. A UID that is given must be free.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/model/document_model.h"

namespace tarnova {

class ModelDocument;

/// The stamps of objects in the order in which they were added.
struct StampTape {
    std::vector<std::uint64_t> stamps;
    std::size_t next = 0;
};

class DocumentBuilder {
 public:
    /// Starts with what `makeDocument` gives.
    DocumentBuilder();
    ~DocumentBuilder();
    DocumentBuilder(const DocumentBuilder&) = delete;
    DocumentBuilder& operator=(const DocumentBuilder&) = delete;

    void setTitle(std::string title);
    void setPageSize(PMPoint size);
    [[nodiscard]] PMPoint pageSize() const;
    void setBaselineGrid(const BaselineGrid& grid);
    void setFacingPages(bool facing);

    [[nodiscard]] UID newUid();
    /// UIDs that are handed out from here on are not below `next`.
    void reserveUids(UID next);
    /// The next identity of a tag: 1, 2, 3 and so on, from `first` on.
    void reserveTagIds(std::uint32_t first);
    [[nodiscard]] std::uint32_t newTagId();
    [[nodiscard]] AttributePool& attributePool();

    // Each gives the index in its list. A name that is there already is replaced where it stands.
    std::int32_t addSwatch(Swatch swatch);
    std::int32_t addCharacterStyle(CharacterStyle style);
    std::int32_t addParagraphStyle(ParagraphStyle style);
    /// The layers besides the pages layer, at least one, from back to front. Before the first spread.
    void setLayers(const std::vector<Layer>& layers);

    /// `nodes` are the UIDs of the layers' nodes, from the layer with index 1 on; empty: new ones.
    UID addSpread(UID uid = kInvalidUID, const std::vector<UID>& nodes = {});
    UID addMaster(std::string name, UID uid = kInvalidUID, const std::vector<UID>& nodes = {});
    /// `bounds` in the coordinates of the spread. `master` is kInvalidUID for none.
    UID addPage(UID spread, const PMRect& bounds, UID master = kInvalidUID, UID uid = kInvalidUID);
    [[nodiscard]] UID spreadOf(UID page) const;
    [[nodiscard]] bool isMasterSpread(UID spread) const;
    /// The node of a layer, counted as in the document, on a spread or master.
    [[nodiscard]] UID layerNode(UID spread, std::size_t layer) const;

    /// Adds an item in front of the others of its parent, a node or a group; or, not in a place yet (`setAnchor`), to a
    /// story. Reads of `item` its class (spline item or
    /// group), UID, shape, matrix, flags, name, data and, unless it is 0, the stamp. A text frame must then get its
    /// story
    /// (`addStory`).
    UID addItem(UID parent, PageItem item);
    /// Anchors an item that was added to a story at the anchor character that stands there.
    void setAnchor(UID story, std::int32_t position, UID item);
    /// Puts an item that lies below a node in the place of a master's one.
    void setOverrides(UID item, UID masterItem);
    /// The item lies below a node of a master spread.
    [[nodiscard]] bool isMasterItem(UID item) const;
    /// Gives text to frames, in thread order; `columns` are the UIDs of their columns, all frames in one list, or
    /// empty.
    UID addStory(const std::vector<UID>& frames, std::shared_ptr<StoryText> content, UID uid = kInvalidUID,
                 const std::vector<UID>& columns = {});
    /// Puts a story on the path of a frame, which has none there yet.
    UID addPathStory(UID frame, const PathTextOptions& options, std::shared_ptr<StoryText> content,
                     UID uid = kInvalidUID);
    [[nodiscard]] std::uint64_t stampOf(UID itemOrStory) const;
    /// Items and stories that are added from here on get the stamps of the tape from its place on, which is how objects
    /// that look the same share what is drawn of them; behind its end new ones, which are noted there. Null: new ones.
    /// Borrowed until another takes its place.
    void useTape(StampTape* tape) { stamps = tape; }
    [[nodiscard]] StampTape* tape() const { return stamps; }

    /// A section on a page of a spread; takes its place when the document is finished.
    void addSection(sectionRec section);
    void setDocumentData(int store, std::string block);
    /// The UIDs of what every document has.
    void setOwnUids(UID document, UID pagesLayer);

    // Short forms. Bounds are in the coordinates of the page's spread; items go to the layer with index 1.
    UID addSinglePage(double width, double height);
    UID addRectangle(UID page, const PMRect& bounds, Paint fill);
    /// A frame with plain text in "Basic Paragraph"; a return (U+000D) or line feed ends a paragraph.
    UID addTextFrame(UID page, const PMRect& bounds, std::u32string_view text);

    /// The document, with nothing to undo; the builder is spent.
    [[nodiscard]] std::unique_ptr<DocumentModel> finish();

 private:
    [[nodiscard]] std::uint64_t nextStamp();
    UID addSpreadOf(UID uid, bool isMaster, std::string name, const std::vector<UID>& nodes);

    std::unique_ptr<ModelDocument> document;
    StampTape* stamps = nullptr;
    std::vector<sectionRec> sections;
    std::unordered_map<std::string, std::size_t> swatchPlaces, characterStylePlaces, paragraphStylePlaces;  // by name
};

}  // namespace tarnova
