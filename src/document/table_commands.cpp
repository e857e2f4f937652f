#include "document/table_commands.h"

#include "document/document.h"

namespace tarnova {

errorWord NokClearTableOverridesCmd::Do(Document& document) {
    for (const UID table : data.tables) {
        ITableCommands* commands = document.tableCommands(table);
        if (commands == nullptr || !commands->CanApplyOverrides()) return errFailed;
        if (const errorWord error = commands->ApplyOverride(nullptr); error != 0) return error;
    }
    return 0;
}

}  // namespace tarnova
