// The engine as a verb of the program meets it: a session that is started and shut down as for every program of ours, a
// host with open documents, and the commands of the front door in few words.

#pragma once

#include <optional>
#include <string>
#include <type_traits>

#include "engine/module/command_table.h"
#include "engine/toolkit/id_file.h"
#include "engine/toolkit/pm_string.h"
#include "host/files/open_documents.h"
#include "modules/drivers/page_driver.h"
#include "shell/startup.h"

namespace tarnova {

struct recordDefSetRec;

/// Where the session of a program lives when nobody says otherwise: the folder of the installed program, and
/// `$XDG_DATA_HOME` or `~/.local/share`.
[[nodiscard]] std::string programFolder();
[[nodiscard]] std::string userDataFolder();

/// Why a start of the session failed, for people, behind the folder in which the session's files lie.
[[nodiscard]] std::string startFailure(errorWord error);

/// Starts the session for the time of a verb, in merge mode and with alerts shown. A step of the start that fails is
/// told, and the session goes on without it. The definitions of the session are the verb's own, and what its options
/// change in the preferences holds for its time alone: those of the user stay as they are. One at a time.
class EngineClient {
 public:
    EngineClient();
    ~EngineClient();
    EngineClient(const EngineClient&) = delete;
    EngineClient& operator=(const EngineClient&) = delete;

    /// Opens a layout in front of the others. Null after telling why on standard error.
    [[nodiscard]] DocumentModel* open(const std::string& path);
    [[nodiscard]] OpenDocuments& documents() { return host; }
    /// What the last run to an output couldn't show.
    [[nodiscard]] const PictureProblems& pictureProblems() const { return driver->pictureProblems(); }

 private:
    ZavoStartupShutdown shell;
    OpenDocuments host;
    std::optional<PageDriver> driver;  // registers once the session is there
    recordDefSetRec* storedDefinitions;
};

/// One command: what it is given, its run, and what came out. Items are buffers of the caller that live until the run.
class EngineCommand {
 public:
    explicit EngineCommand(std::uint32_t itsNumber);

    /// Gives item `index`, which the command reads or fills. Throws std::logic_error when the command's row has no such
    /// item, or has it of another type.
    template <typename Buffer>
    EngineCommand& item(unsigned index, Buffer& buffer) {
        requireType(index, typesOf<Buffer>());
        itemAt(args, index) = &buffer;
        return *this;
    }
    /// Runs the command; its status. What the engine has to say of a failure it shows as an alert.
    std::int32_t run();

    commandArgs args{};
    commandReply reply{};

 private:
    using TypeSet = std::uint32_t;  // a bit for each argumentType
    static constexpr TypeSet bitOf(argumentType type) { return TypeSet{1} << static_cast<unsigned>(type); }
    template <typename Buffer>
    static constexpr TypeSet typesOf() {
        if constexpr (std::is_same_v<Buffer, std::uint8_t>) return bitOf(argumentType::u8);
        if constexpr (std::is_same_v<Buffer, std::int16_t>) return bitOf(argumentType::i16);
        if constexpr (std::is_same_v<Buffer, std::uint16_t>) return bitOf(argumentType::u16);
        if constexpr (std::is_same_v<Buffer, std::int32_t>) return bitOf(argumentType::i32);
        if constexpr (std::is_same_v<Buffer, std::uint32_t>)
            return bitOf(argumentType::u32) | bitOf(argumentType::signature);
        if constexpr (std::is_same_v<Buffer, PMString>) return bitOf(argumentType::string);
        if constexpr (std::is_same_v<Buffer, Str255>) return bitOf(argumentType::pascal);
        if constexpr (std::is_same_v<Buffer, char*>) return bitOf(argumentType::ownedText);
        if constexpr (std::is_same_v<Buffer, const char*>) return bitOf(argumentType::constantText);
        if constexpr (std::is_same_v<Buffer, IDFile>) return bitOf(argumentType::file);
        if constexpr (std::is_same_v<Buffer, UIDRef>) return bitOf(argumentType::uidRef);
        if constexpr (std::is_same_v<Buffer, UIDList>) return bitOf(argumentType::uidList);
        if constexpr (std::is_same_v<Buffer, std::vector<PMString>>) return bitOf(argumentType::strings);
        if constexpr (std::is_same_v<Buffer, std::vector<std::int32_t>>) return bitOf(argumentType::numbers);
        if constexpr (std::is_same_v<Buffer, std::vector<std::uint32_t>>) return bitOf(argumentType::signatures);
        if constexpr (std::is_same_v<Buffer, std::vector<valueGroup>>) return bitOf(argumentType::valueGroups);
        return 0;
    }
    void requireType(unsigned index, TypeSet types) const;

    std::uint32_t number;
};

}  // namespace tarnova
