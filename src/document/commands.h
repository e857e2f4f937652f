// Changes as objects: a command is made, gets what it needs, and is processed as a step of its own, or as part of the
// sequence that is open.

#pragma once

#include <memory>
#include <string_view>
#include <utility>

#include "document/uid.h"
#include "engine/toolkit/types.h"

namespace tarnova {

class ICommand {
 public:
    virtual ~ICommand() = default;
    /// How undo calls the step.
    [[nodiscard]] virtual std::string_view name() const = 0;
    /// Makes the change; 0 is success.
    [[nodiscard]] virtual errorWord Do(Document& document) = 0;
};

namespace CmdUtils {

template <typename Command, typename... Arguments>
[[nodiscard]] std::unique_ptr<Command> CreateCommand(Arguments&&... arguments) {
    return std::make_unique<Command>(std::forward<Arguments>(arguments)...);
}

/// The command's result; errCommandSequence when the document begins no sequence, and then nothing was changed.
[[nodiscard]] errorWord ProcessCommand(Document& document, ICommand& command);

}  // namespace CmdUtils

}  // namespace tarnova
