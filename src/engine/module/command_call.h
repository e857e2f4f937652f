// What a worker sees of a command block. Own to this folder.

#pragma once

#include <algorithm>

#include "document/uid.h"
#include "engine/module/command_table.h"
#include "engine/toolkit/id_file.h"
#include "engine/toolkit/pm_string.h"
#include "engine/toolkit/types.h"

namespace tarnova {

// The codes of commands.
inline constexpr std::int32_t commandDone = 0;
inline constexpr std::int32_t commandFailed = -1;
inline constexpr std::int32_t commandDefinition = -6002;     // no definition, or it can't be loaded
inline constexpr std::int32_t commandFieldList = -6003;      // the data file's field list can't be read
inline constexpr std::int32_t commandDocument = -6005;       // no document
inline constexpr std::int32_t commandLink = -6006;           // no such link
inline constexpr std::int32_t commandMemory = -6007;         // out of memory
inline constexpr std::int32_t commandTranslation = -6015;    // a translation table can't be loaded
inline constexpr std::int32_t commandCount = -6017;          // the records can't be counted
inline constexpr std::int32_t commandDataFile = -6018;       // the data file can't be opened
inline constexpr std::int32_t commandControlFrames = -6019;  // two control frames of a kind
inline constexpr std::int32_t commandRangeBehind = -6020;    // the range starts behind the file
inline constexpr std::int32_t commandDriver = -6021;         // output driver not registered
inline constexpr std::int32_t commandRunState = -6022;       // a run is active, or isn't armed
inline constexpr std::int32_t commandNoLinks = -6024;        // the document has no links
inline constexpr std::int32_t commandFolder = -6025;         // folder missing, or no folder
inline constexpr std::int32_t commandRange = -6026;          // bad range
inline constexpr std::int32_t commandPathsFull = -6027;      // the ten search paths are taken
inline constexpr std::int32_t commandLookUp = -6028;         // a look-up failed
inline constexpr std::int32_t commandBadTag = -6029;         // the link or what it names doesn't exist
inline constexpr std::int32_t commandSeparator = -6031;      // of file names, above 3 characters
inline constexpr std::int32_t commandChunk = -6032;          // chunk of records above 250
inline constexpr std::int32_t commandFormatMissing = -6033;
inline constexpr std::int32_t commandExtensionEmpty = -6034;
inline constexpr std::int32_t commandExtensionLong = -6035;
inline constexpr std::int32_t commandFormat = -6036;           // no such format code
inline constexpr std::int32_t commandReportExtension = -6037;  // above 3 characters
inline constexpr std::int32_t commandLinkKinds = -6038;
inline constexpr std::int32_t commandCopyfit = -6039;
inline constexpr std::int32_t commandResetDefinitions = -6040;
inline constexpr std::int32_t commandResetPreferences = -6041;
inline constexpr std::int32_t commandFetch = -6042;        // a fetch failed, or the record lies behind the file
inline constexpr std::int32_t commandFieldNumber = -6048;  // no field of that number,
inline constexpr std::int32_t commandFieldName = -6049;    // of that name
inline constexpr std::int32_t commandNoRulesModule = -6050;
inline constexpr std::int32_t commandReportEnd = -6052;  // the report has no further entry
inline constexpr std::int32_t commandAssetIndex = -6070;
inline constexpr std::int32_t commandLinkNameEmpty = -6072;
inline constexpr std::int32_t commandLinkUnknown = -6073;
inline constexpr std::int32_t commandSecondLinkUnknown = -6074;
inline constexpr std::int32_t commandLinkTypeLow = -6077;   // type of links asked for: below
inline constexpr std::int32_t commandLinkTypeHigh = -6078;  // and above those that there are
inline constexpr std::int32_t commandLayoutCode = -6081;
inline constexpr std::int32_t commandLabelSort = -6082;  // the document's settings of the label sort can't be used

/// The block of a command whose worker runs: both records are there, cleared ones where the sender gave none.
struct commandCall {
    commandBlock& block;
    commandReply& reply;
    commandArgs& args;

    /// Item `index` as what the row says that it is; null when it isn't given.
    template <typename T>
    [[nodiscard]] T* item(unsigned index) const {
        return static_cast<T*>(itemAt(args, index));
    }
    [[nodiscard]] bool given(unsigned index) const { return itemAt(args, index) != nullptr; }
    /// Value of a given item, else `fallback`.
    template <typename T>
    [[nodiscard]] T valueOr(unsigned index, T fallback) const {
        const T* const value = item<T>(index);
        return value == nullptr ? fallback : *value;
    }
    /// Puts a value into an out item that is given.
    template <typename T>
    void put(unsigned index, const T& value) const {
        if (T* const at = item<T>(index)) *at = value;
    }
    /// The same for a Pascal string.
    void putPascal(unsigned index, std::string_view text) const;
    void putString(unsigned index, std::string_view text) const {
        if (PMString* const at = item<PMString>(index)) at->set(text);
    }
    /// The same for a text in a block of its own, which becomes the sender's. False without memory.
    [[nodiscard]] bool putOwned(unsigned index, std::string_view text) const;
    /// A Pascal string that comes in; empty when it isn't given.
    [[nodiscard]] std::string_view pascal(unsigned index) const { return pstrView(item<std::uint8_t>(index)); }
    [[nodiscard]] std::string_view string(unsigned index) const {
        const PMString* const at = item<PMString>(index);
        return at == nullptr ? std::string_view() : at->view();
    }
};

/// Shows an error that a step of a command met, when the command ends, and gives the command's own code for it.
[[nodiscard]] std::int32_t failWith(errorWord error, std::int32_t code);

}  // namespace tarnova
