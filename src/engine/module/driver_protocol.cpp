#include "engine/module/driver_protocol.h"

#include <memory>

#include "engine/module/execute.h"
#include "engine/session/session.h"

namespace tarnova {
namespace {

template <typename Record>
std::int32_t callModule(std::uint32_t signature, std::uint32_t command, Record& record, driverArgsRec* args) {
    commandBlock block{resultNobodyAnswered, command, reinterpret_cast<commandReply*>(&record),
                       reinterpret_cast<commandArgs*>(args)};
    moduleCall(signature, 0, block);
    return block.result != 0 ? block.result : record.status;
}

}  // namespace

std::int32_t callDriver(std::uint32_t signature, std::uint32_t command, driverStartRec& record, driverArgsRec& args) {
    return callModule(signature, command, record, &args);
}

std::int32_t callDriver(std::uint32_t signature, std::uint32_t command, driverAnswerRec& record) {
    return callModule(signature, command, record, nullptr);
}

void answerDriver(std::int32_t status, UIDRef document, bool cancelled) {
    auto& run = session();
    const std::uint32_t signature = run.deferredSignature;
    if (signature == 0) return;
    const auto answer = std::make_unique<driverAnswerRec>();
    answer->status = status;
    answer->command = run.deferredCommand;
    answer->document = document;
    answer->cancelled = cancelled ? 1 : 0;
    run.deferredSignature = 0;
    run.deferredCommand = 0;
    static_cast<void>(callDriver(signature, driverDone, *answer));  // a driver that is gone has nothing to say
}

}  // namespace tarnova
