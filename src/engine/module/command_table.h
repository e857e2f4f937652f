// The command table: one row for each number of the engine's front door. From the row come the dispatch, the clearing
// of out items, what the automation protocol takes and gives, and the reference in docs/commands.md.

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "engine/module/command_block.h"

namespace tarnova {

/// The mode that the engine is switched into before a command.
enum class commandMode : std::uint8_t { any, merge, price };

/// Commands of the first stage run at once; those of the second need a reply record and come behind the mode switch.
enum class commandStage : std::uint8_t { first, second };

/// Where in the block an argument lies. `reply` and `registration` count through the enumerations below.
enum class argumentPlace : std::uint8_t { item, number, flag, text, reply, registration, version };

enum class replyField : std::uint8_t {
    inValue,
    outValue,
    outPointer,
    outFlag,
    outWord,
    text,
    auxPointer,
    count,
    hasHeader,
    headerHint,
    isSubset,
    callerSignature
};
inline constexpr unsigned replyFieldCount = 12;

enum class registrationField : std::uint8_t {
    driverId,
    driverGroup,
    driverFlagA,
    driverFlagB,
    driverFlagC,
    driverName,
    driverModule
};

/// What an argument is. For an item: what its pointer leads to.
enum class argumentType : std::uint8_t {
    u8,
    i16,
    u16,
    i32,
    u32,
    signature,     // u32, four characters
    string,        // PMString
    pascal,        // Pascal string; as an item it has room for 255 characters
    cString,       // text with a terminator, the sender's
    ownedText,     // char*: a new block (freeBlock) with a terminator, owned by the sender
    constantText,  // const char*: a text that stays the engine's
    file,          // IDFile
    uidRef,        // UIDRef
    uidList,       // UIDList
    strings,       // std::vector<PMString>
    numbers,       // std::vector<std::int32_t>
    signatures,    // std::vector<std::uint32_t>: four-character codes
    valueGroups,   // std::vector<valueGroup>
};
inline constexpr unsigned argumentTypeCount = 18;

/// One pair of names of a group whose values are joined (command 1234).
struct linkAndStyleRec {
    Str31 linkName;
    Str31 styleName;
};
using valueGroup = std::vector<linkAndStyleRec>;

enum class argumentWay : std::uint8_t { in, out, inOut };

struct commandArgument {
    argumentPlace place;
    std::uint8_t index;  // from 0, of the item, number, flag or text; a replyField or registrationField
    argumentType type;
    argumentWay way;
    const char* meaning;  // a few words for the reference
};

struct commandCall;
/// Gives the command's status.
using commandWorker = std::int32_t (*)(commandCall& call);

struct commandRow {
    std::uint32_t number;
    const char* name;
    commandMode mode;
    commandStage stage;
    commandWorker worker;  // null: not yet available; the command answers -1
    std::span<const commandArgument> arguments;
    const char* summary;  // one sentence for the reference
};

/// All rows, by number.
[[nodiscard]] std::span<const commandRow> commandTable();
/// The row of a number, or null.
[[nodiscard]] const commandRow* findCommand(std::uint32_t number);

/// "item3", "num0", "flag1", "text0", "reply.count": how a sender writes the argument.
[[nodiscard]] std::string argumentName(const commandArgument& argument);
[[nodiscard]] const char* argumentTypeName(argumentType type);
[[nodiscard]] const char* replyFieldName(replyField field);

/// The reference of all commands as Markdown, the text of docs/commands.md.
[[nodiscard]] std::string commandReference();

}  // namespace tarnova
