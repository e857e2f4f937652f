// The data tag manager: the one place that knows how a tag sits in a document. A text tag is an attribute over a run of
// characters, a frame tag an entry of the frame's item data. Everything else sees a tag's bytes or its `tagDataRec`.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

#include "document/document.h"
#include "tags/tag_attribute.h"
#include "tags/tag_record.h"

namespace tarnova {

inline constexpr std::int32_t tagNotFound = -1;  // found position and found length without a tag

/// A text tag's extent, and its attribute, which is the document's and valid until the story changes.
struct textTagRec {
    std::int32_t start = tagNotFound;
    std::int32_t length = tagNotFound;
    const TagAttribute* attribute = nullptr;  // null: no tag
};

/// Finds the tag of the engine mode's store at a position, or the first one in a range, without copying anything. With
/// a `length` of 0 `position` is a caret: a tag that ends there counts as well. A run that holds an anchored item or a
/// table is no tag, nor is one of a single character at its thread's end.
[[nodiscard]] textTagRec findTextTag(const Document& document, UID story, std::int32_t position, std::int32_t length);

/// The first tag that begins at or behind `position`.
[[nodiscard]] textTagRec findNextTextTag(const Document& document, UID story, std::int32_t position);

/// The last tag that ends at or in front of `position`.
[[nodiscard]] textTagRec findPreviousTextTag(const Document& document, UID story, std::int32_t position);

/// What is done with a tag's extent, or with a target, inside a command sequence.
using textTagAction = std::function<std::int32_t(UIDRef story, std::int32_t start, std::int32_t length)>;
using targetAction = std::function<std::int32_t(UIDRef target)>;

/// Results are 0 for done and 1 for failed unless told otherwise. A `std::byte** outData` may be null; it gets a copy
/// of the stored bytes, or null, and the caller frees it with freeBlock. Positions and lengths are in characters. Of
/// the strings that go in only `TagText`, `TagTable` and `TagTableCommands` make use; where they come out
/// (`tagStrings*`) null is allowed.
class IZavoDataTagManager {
 public:
    virtual ~IZavoDataTagManager() = default;

    // 1 to 6: text.

    /// Removes every tag in the range, then lays one with this data over it. Without data it only removes. The last
    /// character of a story is never tagged: `length` comes back shortened.
    virtual std::int32_t TagText(UIDRef story, const tagStrings& strings, std::string_view data, std::int32_t& position,
                                 std::int32_t& length) = 0;
    /// Finds the tag at the position, or the first in the range, and widens position and length to its extent. Without
    /// a tag the found position and length are -1, and position and length stay. 0 either way.
    virtual std::int32_t GetTextTag(UIDRef story, tagStrings* outStrings, std::int32_t& position, std::int32_t& length,
                                    std::byte** outData, std::int32_t& outFoundPosition,
                                    std::int32_t& outFoundLength) = 0;
    /// The same for the first tag behind the range, and the last in front of it.
    virtual std::int32_t GetNextTextTag(UIDRef story, tagStrings* outStrings, std::int32_t& position,
                                        std::int32_t& length, std::byte** outData, std::int32_t& outFoundPosition,
                                        std::int32_t& outFoundLength) = 0;
    virtual std::int32_t GetPreviousTextTag(UIDRef story, tagStrings* outStrings, std::int32_t& position,
                                            std::int32_t& length, std::byte** outData, std::int32_t& outFoundPosition,
                                            std::int32_t& outFoundLength) = 0;
    /// Clears every tag in the range from its whole extent; with a length of 0, the tag at the position.
    virtual std::int32_t RemoveTextTag(UIDRef story, const tagStrings& strings, std::int32_t& position,
                                       std::int32_t& length) = 0;
    /// Calls the action with the extent of the tag at the position, inside a sequence named `title`, and gives back the
    /// extent as it is afterwards. The story's closing character is never part of it. The action's result; 0 without a
    /// tag, or when the sequence can't be begun, which is shown.
    virtual std::int32_t WithTextTag(UIDRef story, const textTagAction& action, std::string_view title,
                                     std::int32_t& position, std::int32_t& length) = 0;

    // 7 to 11: the frame tag, in the store of the engine mode. `GetFrameTag` gives 0 when there is one.
    virtual std::int32_t SetFrameTag(UIDRef frame, const tagStrings& strings, std::string_view data) = 0;
    virtual std::int32_t GetFrameTag(UIDRef frame, const tagStrings& strings, std::byte** outData) = 0;
    /// Reserved: clear the data and give 1.
    virtual std::int32_t Reserved9(UIDRef frame, const tagStrings& strings, std::byte** outData) = 0;
    virtual std::int32_t Reserved10(UIDRef frame, const tagStrings& strings, std::byte** outData) = 0;
    virtual std::int32_t RemoveFrameTag(UIDRef frame) = 0;

    /// 12: calls the action with the target inside a sequence named `title` of the story's document, and gives its
    /// result; 0 when the sequence can't be begun, which is shown.
    virtual std::int32_t RunTagSequence(UIDRef story, UIDRef target, const targetAction& action,
                                        std::string_view title) = 0;

    // 13 to 17: the same for the frame's second tag, of a chart.
    virtual std::int32_t SetChartTag(UIDRef frame, const tagStrings& strings, std::string_view data) = 0;
    virtual std::int32_t GetChartTag(UIDRef frame, const tagStrings& strings, std::byte** outData) = 0;
    virtual std::int32_t Reserved15(UIDRef frame, const tagStrings& strings, std::byte** outData) = 0;
    virtual std::int32_t Reserved16(UIDRef frame, const tagStrings& strings, std::byte** outData) = 0;
    virtual std::int32_t RemoveChartTag(UIDRef frame) = 0;

    // 18 to 21: tables. A table that takes no commands answers 1.

    /// Lays an attribute with this data over the table. Without data it does nothing and gives 0.
    virtual std::int32_t TagTable(UIDRef table, const tagStrings& strings, std::string_view data) = 0;
    /// 0 when the table has an attribute, whoever owns it: the strings tell.
    virtual std::int32_t GetTableTag(UIDRef table, tagStrings* outStrings, std::byte** outData) = 0;
    /// Lays an attribute without data over the table of the commands; null counts as a table that takes none.
    virtual std::int32_t TagTableCommands(ITableCommands* tableCommands, const tagStrings& strings) = 0;
    virtual std::int32_t RemoveTableTag(UIDRef table, const tagStrings& strings) = 0;

    // 22 to 24: a frame's rule attributes (JSON text), always in the `Kelvane` store.
    virtual std::int32_t SetActionFrameAttr(UIDRef frame, const tagStrings& strings, std::string_view data) = 0;
    /// 0 also when nothing is found: test the data and not the result.
    virtual std::int32_t GetActionFrameAttr(UIDRef frame, const tagStrings& strings, std::byte** outData) = 0;
    virtual std::int32_t RemoveActionFrameAttr(UIDRef frame) = 0;
};

class ZavoDataTagManager final : public IZavoDataTagManager {
 public:
    std::int32_t TagText(UIDRef story, const tagStrings& strings, std::string_view data, std::int32_t& position,
                         std::int32_t& length) override;
    std::int32_t GetTextTag(UIDRef story, tagStrings* outStrings, std::int32_t& position, std::int32_t& length,
                            std::byte** outData, std::int32_t& outFoundPosition, std::int32_t& outFoundLength) override;
    std::int32_t GetNextTextTag(UIDRef story, tagStrings* outStrings, std::int32_t& position, std::int32_t& length,
                                std::byte** outData, std::int32_t& outFoundPosition,
                                std::int32_t& outFoundLength) override;
    std::int32_t GetPreviousTextTag(UIDRef story, tagStrings* outStrings, std::int32_t& position, std::int32_t& length,
                                    std::byte** outData, std::int32_t& outFoundPosition,
                                    std::int32_t& outFoundLength) override;
    std::int32_t RemoveTextTag(UIDRef story, const tagStrings& strings, std::int32_t& position,
                               std::int32_t& length) override;
    std::int32_t WithTextTag(UIDRef story, const textTagAction& action, std::string_view title, std::int32_t& position,
                             std::int32_t& length) override;
    std::int32_t SetFrameTag(UIDRef frame, const tagStrings& strings, std::string_view data) override;
    std::int32_t GetFrameTag(UIDRef frame, const tagStrings& strings, std::byte** outData) override;
    std::int32_t Reserved9(UIDRef frame, const tagStrings& strings, std::byte** outData) override;
    std::int32_t Reserved10(UIDRef frame, const tagStrings& strings, std::byte** outData) override;
    std::int32_t RemoveFrameTag(UIDRef frame) override;
    std::int32_t RunTagSequence(UIDRef story, UIDRef target, const targetAction& action,
                                std::string_view title) override;
    std::int32_t SetChartTag(UIDRef frame, const tagStrings& strings, std::string_view data) override;
    std::int32_t GetChartTag(UIDRef frame, const tagStrings& strings, std::byte** outData) override;
    std::int32_t Reserved15(UIDRef frame, const tagStrings& strings, std::byte** outData) override;
    std::int32_t Reserved16(UIDRef frame, const tagStrings& strings, std::byte** outData) override;
    std::int32_t RemoveChartTag(UIDRef frame) override;
    std::int32_t TagTable(UIDRef table, const tagStrings& strings, std::string_view data) override;
    std::int32_t GetTableTag(UIDRef table, tagStrings* outStrings, std::byte** outData) override;
    std::int32_t TagTableCommands(ITableCommands* tableCommands, const tagStrings& strings) override;
    std::int32_t RemoveTableTag(UIDRef table, const tagStrings& strings) override;
    std::int32_t SetActionFrameAttr(UIDRef frame, const tagStrings& strings, std::string_view data) override;
    std::int32_t GetActionFrameAttr(UIDRef frame, const tagStrings& strings, std::byte** outData) override;
    std::int32_t RemoveActionFrameAttr(UIDRef frame) override;
};

/// The manager of the session. It holds nothing, so there is one for all.
[[nodiscard]] IZavoDataTagManager& dataTagManager();

/// Reads the frame's tag record. Without one `tagStatus` is -1 and the error stays; errors are those of
/// tagRecordDecode.
[[nodiscard]] errorWord readFrameTag(UIDRef frame, tagDataRec& tag, errorWord priorError);

/// Encodes `tag` and makes it the frame's tag; errFailed when the document refuses it.
[[nodiscard]] errorWord writeFrameTag(UIDRef frame, const tagDataRec& tag, errorWord priorError);

}  // namespace tarnova
