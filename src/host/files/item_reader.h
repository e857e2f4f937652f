// Page items of a layout file, and the stories of their text frames.

#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/files/format_members.h"
#include "host/files/shape_members.h"
#include "host/files/shared_looks.h"
#include "host/files/text_members.h"
#include "host/files/uid_reader.h"
#include "host/model/document_builder.h"
#include "host/model/story_text.h"

namespace tarnova {

/// Index of a layer by its name, from 1.
using LayerIndex = std::unordered_map<std::string, std::size_t>;

/// The engine's typed-entry blocks of an item or the document, by store.
struct DataBlocks {
    std::shared_ptr<const std::string> blocks[2];
};
[[nodiscard]] DataBlocks readDataBlocks(const JsonValue& value);

class ItemReader {
 public:
    /// Relative paths of pictures count from `itsFolder`.
    ItemReader(DocumentBuilder& itsBuilder, UidReader& itsUids, const LayoutNames& itsNames,
               const LayerIndex& itsLayers, const std::string& itsFolder)
        : builder(itsBuilder), uids(itsUids), names(itsNames), layers(itsLayers), folder(itsFolder) {}

    /// Shapes and texts that items name by their index; each may be null. Before the items.
    void readShared(const JsonValue* shapeList, const JsonValue* textList);
    /// The items of a spread or page, from back to front; `origin` is where their coordinates begin on the spread.
    void readItems(const JsonValue* list, UID spread, PMPoint origin);
    /// When all items are there: puts those that override others in their place.
    void placeOverrides();
    /// When all items are there: joins frames that flow from each other and gives them their text.
    void makeStories();

 private:
    struct ItemTarget;

    /// Where an item stands, and where its coordinates begin there.
    struct Place {
        enum class Kind : std::uint8_t { layer, group, text, pathText } kind;
        UID holder;  // the spread, the group or the story
        PMPoint origin;
    };

    /// Items in the text of a path, which are read with the stories.
    struct PathItems {
        std::vector<AnchoredValue> anchored;
        UID story = kInvalidUID;
        StampTape* tape = nullptr;  // whose first stamp is the story's; null: it has none of its own
    };

    /// A text frame whose story isn't made yet.
    struct Frame {
        UID uid = kInvalidUID;
        const JsonValue* value = nullptr;      // for messages
        const JsonValue* text = nullptr;       // of its own
        const JsonValue* shared = nullptr;     // index of a shared text
        const JsonValue* flowsFrom = nullptr;  // name or UID of the frame in front
        const JsonValue* storyUid = nullptr;
        std::vector<UID> columns;
        std::size_t shapeKey = 0;  // one for each shared shape, 0 for others
        std::size_t next = 0;      // index of the frame behind and 1; 0: the last
        bool isPlaced = false;
    };

    /// Items on different spreads with one shared shape in one place are copies of each other.
    using StampKey = std::pair<std::size_t, std::array<double, 6>>;

    [[nodiscard]] static std::vector<Member<ItemTarget>> placedMembers();
    [[nodiscard]] static const std::vector<Member<ItemTarget>>& itemMembers();
    [[nodiscard]] static const std::vector<Member<ItemTarget>>& pictureMembers();
    UID readItem(const JsonValue& value, const Place& place);
    [[nodiscard]] UID parentOf(const ItemTarget& target, const Place& place) const;
    void readGroup(ItemTarget& target, UID parent);
    void readFrame(ItemTarget& target, UID parent, bool onLayer);
    void readPicture(const JsonValue& value, UID frame, const PMRect& frameBounds);
    static void takeLinks(ItemTarget& target);
    static void takeFlow(ItemTarget& target, const Place& place);
    void takeBounds(ItemTarget& target) const;
    void takeShape(ItemTarget& target) const;
    void noteFrame(const ItemTarget& target, UID uid, std::int32_t columns, const std::string& name);
    [[nodiscard]] UID overriddenBy(const JsonValue& value) const;
    [[nodiscard]] std::size_t frameInFrontOf(const Frame& frame, std::size_t first) const;
    void makeStoriesFrom(std::size_t first);
    void makeStory(std::size_t first);
    void readAnchored(const AnchoredValue& anchored, const Place& place);
    void makePathStory(const JsonValue& value, UID frame, const ItemShape& shape, std::size_t shapeKey);
    void readPathItems(const PathItems& items);
    [[nodiscard]] StampTape* tapeFor(const JsonValue& text, std::size_t shapeKey);
    [[nodiscard]] std::shared_ptr<StoryText> textOf(const JsonValue* own, const JsonValue* shared, TextReader& reader);

    DocumentBuilder& builder;
    UidReader& uids;
    const LayoutNames& names;
    const LayerIndex& layers;
    const std::string& folder;
    std::size_t groupDepth = 0;   // of the groups around the item under reading, to the page or text that they are in
    std::size_t anchorDepth = 0;  // of the texts around it
    std::vector<std::shared_ptr<const ItemShape>> shapes;
    std::vector<std::shared_ptr<StoryText>> texts;
    std::vector<Frame> frames;
    std::vector<std::pair<UID, const JsonValue*>> overriding;  // items, and what they override by name or UID
    std::unordered_map<std::string, std::vector<UID>> masterItemsByName;
    std::unordered_map<UID, std::size_t> frameByUid;
    std::unordered_map<std::string, std::vector<std::size_t>> framesByName;
    std::map<StampKey, std::uint64_t> itemStamps;
    std::vector<PathItems> pathItems;
    SharedLooks looks;
};

}  // namespace tarnova
