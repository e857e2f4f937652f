#include "document/commands.h"

#include "document/document.h"

namespace tarnova::CmdUtils {

errorWord ProcessCommand(Document& document, ICommand& command) {
    if (document.BeginCommandSequence(command.name()) != 0) return errCommandSequence;
    const errorWord error = command.Do(document);
    document.EndCommandSequence();
    return error;
}

}  // namespace tarnova::CmdUtils
