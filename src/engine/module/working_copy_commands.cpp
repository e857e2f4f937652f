// Commands by which a driver saves, opens and closes the working copy and the user's document. The answer comes to the
// driver's own door (driverDone), and the host does its part at once, so it comes before the command returns.

#include "engine/module/command_call.h"
#include "engine/module/command_rows.h"
#include "engine/module/driver_protocol.h"
#include "output/working_copy.h"

namespace tarnova {

namespace {

std::int32_t answer(errorWord error, UIDRef document) {
    answerDriver(codeOfError(error), document, false);
    return error == 0 ? commandDone : failWith(error, commandFailed);
}

std::int32_t saveCopy(commandCall& call) {
    const auto document = call.valueOr<UIDRef>(0, {});
    return answer(saveWorkingCopy(document, call.args.flag0 != 0, 0), document);
}

std::int32_t saveSource(commandCall& call) {
    const auto document = call.valueOr<UIDRef>(0, {});
    return answer(saveSourceDocument(document, 0), document);
}

template <errorWord (*operation)(UIDRef&, errorWord)>
std::int32_t giveDocument(commandCall& call) {
    UIDRef document;
    const errorWord error = operation(document, 0);
    call.put(0, document);
    return answer(error, document);
}

using enum commandStage;
constexpr auto any = commandMode::any;
using enum argumentType;

constexpr commandArgument saveCopyArgs[] = {
    itemIn(0, uidRef, "the document"),
    flagIn(0, "copies the folder Document fonts beside the document"),
};
constexpr commandArgument documentInArgs[] = {itemIn(0, uidRef, "the document")};
constexpr commandArgument documentOutArgs[] = {itemOut(0, uidRef, "the document")};

constexpr commandRow rows[] = {
    {530, "kKelvaneCmdSaveWorkingCopy", any, second, saveCopy, saveCopyArgs,
     "Saves a working copy of the document. Deferred: the driver is answered."},
    {531, "kKelvaneCmdOpenWorkingCopy", any, second, giveDocument<openWorkingCopy>, documentOutArgs,
     "Opens the working copy again. Deferred."},
    {532, "kKelvaneCmdCloseWorkingCopy", any, second, giveDocument<closeWorkingCopy>, documentOutArgs,
     "Closes the working copy. Deferred."},
    {533, "kKelvaneCmdSaveSourceDocument", any, second, saveSource, documentInArgs,
     "Saves the user's document to its own file. Deferred."},
    {534, "kKelvaneCmdReopenSourceDocument", any, second, giveDocument<reopenSourceDocument>, documentOutArgs,
     "Opens the user's document again. Deferred."},
};

}  // namespace

std::span<const commandRow> workingCopyRows() {
    return rows;
}

}  // namespace tarnova
