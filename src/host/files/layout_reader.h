// Makes a document from the tree of a layout file.

#pragma once

#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "host/files/format_members.h"
#include "host/files/item_reader.h"
#include "host/files/json_tree.h"
#include "host/files/uid_reader.h"
#include "host/model/document_builder.h"

namespace tarnova {

inline constexpr int layoutVersion = 1;
inline constexpr std::string_view layoutVersionMember = "tarnovaLayout";
inline constexpr std::size_t pagesOfSpreadLimit = 64;
/// How many styles or masters may be based on each other, one on the next.
inline constexpr std::size_t basedOnDepthLimit = 100;
/// Names of the numbering styles, in the order of their numbers.
inline constexpr const char* numberingStyleWords[] = {"arabic", "upperRoman", "lowerRoman", "upperLetters",
                                                      "lowerLetters"};

class LayoutReader {
 public:
    /// `itsFolder` is that of the layout; both are borrowed.
    LayoutReader(const JsonTree& itsTree, const std::string& itsFolder) : tree(itsTree), folder(itsFolder) {}
    /// Once. Throws LayoutFault.
    [[nodiscard]] std::unique_ptr<DocumentModel> read();

 private:
    /// The document's members, each read when what it builds on is there.
    struct Parts {
        const JsonValue* version = nullptr;
        const JsonValue* uid = nullptr;
        const JsonValue* pagesLayerUid = nullptr;
        const JsonValue* nextUid = nullptr;
        const JsonValue* nextTagId = nullptr;
        const JsonValue* title = nullptr;
        const JsonValue* pageSize = nullptr;
        const JsonValue* baselineGrid = nullptr;
        const JsonValue* facing = nullptr;
        const JsonValue* swatches = nullptr;
        const JsonValue* characterStyles = nullptr;
        const JsonValue* paragraphStyles = nullptr;
        const JsonValue* layers = nullptr;
        const JsonValue* shapes = nullptr;
        const JsonValue* texts = nullptr;
        const JsonValue* masters = nullptr;
        const JsonValue* pages = nullptr;
        const JsonValue* spreads = nullptr;
        const JsonValue* sections = nullptr;
        const JsonValue* data = nullptr;
    };

    struct SpreadTarget;
    struct PageTarget;
    struct SectionTarget;

    void reserveIdentities();
    void readHead();
    void readSwatches();
    void readStyles();
    void readLayers();
    void readMasters();
    void checkMasterBases();
    void readSpreads();
    void readSpread(const JsonValue& value, const SpreadTarget& target, UID spread, std::size_t leftCount);
    void readBoundPages();
    void readPages(const std::vector<const JsonValue*>& values, UID spread, std::size_t leftCount);
    [[nodiscard]] PageTarget readPage(const JsonValue& value) const;
    [[nodiscard]] PMRect boundsOf(const PageTarget& target, double left) const;
    void addPage(const PageTarget& target, UID spread, const PMRect& bounds);
    void readSections();
    void readData();

    const JsonTree& tree;
    const std::string& folder;
    Parts parts;
    DocumentBuilder builder;
    UidReader uids{builder};
    LayoutNames names;
    LayerIndex layerIndex;
    ItemReader items{builder, uids, names, layerIndex, folder};
    PMPoint pageSize;
    bool facing = false;
    /// A master that is based on another by way of one of its pages.
    struct MasterBase {
        UID master = kInvalidUID;
        UID base = kInvalidUID;
        const JsonValue* value = nullptr;
    };
    std::vector<MasterBase> masterBases;
    std::vector<UID> pageUids;  // of the document, in order
};

}  // namespace tarnova
